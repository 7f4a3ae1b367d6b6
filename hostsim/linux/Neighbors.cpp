#include "hostsim/linux/Neighbors.h"

#include <arpa/inet.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "hostctl/HostCtlException.h"

namespace HostSim::Linux {

using Live::NeighborRecord;

namespace {

// An entry as the table's dump has it.
struct Entry {
    int index = 0;
    std::uint16_t state = 0;
    std::uint8_t flags = 0;
    std::string address;
    std::string mac;
    std::optional<std::uint32_t> confirmed;  // ticks since the neighbour was last confirmed
};

// The entries of a family's table in the kernel's order. Those the kernel keeps for a link
// itself (NOARP, as on a link without ARP) and those without a state are no neighbours.
std::vector<Entry> DumpEntries(NetlinkSocket& socket, int addressFamily) {
    Message request(RTM_GETNEIGH, NLM_F_DUMP);
    request.PutExtra<ndmsg>()->ndm_family = static_cast<unsigned char>(addressFamily);
    std::vector<Entry> entries;
    socket.Exchange(request, [&entries, addressFamily](const nlmsghdr& reply) {
        const auto* header = static_cast<const ndmsg*>(mnl_nlmsg_get_payload(&reply));
        if ((header->ndm_state & NUD_NOARP) != 0 || header->ndm_state == NUD_NONE) {
            return;
        }
        const auto attributes = ParseAttributes(reply, sizeof(ndmsg), NDA_MAX);
        Entry entry;
        entry.index = header->ndm_ifindex;
        entry.state = header->ndm_state;
        entry.flags = header->ndm_flags;
        entry.address = AddressText(addressFamily, attributes[NDA_DST]);
        entry.mac = HardwareAddressText(attributes[NDA_LLADDR]);
        if (const nlattr* cache = attributes[NDA_CACHEINFO];
            cache != nullptr && mnl_attr_get_payload_len(cache) >= sizeof(nda_cacheinfo)) {
            nda_cacheinfo info{};
            std::memcpy(&info, mnl_attr_get_payload(cache), sizeof info);
            entry.confirmed = info.ndm_confirmed;
        }
        entries.push_back(std::move(entry));
    });
    return entries;
}

// The reachable time of each link's table in milliseconds, by link index; at 0 the table's
// own, which a link without parameters of its own follows.
std::map<int, std::uint64_t> DumpReachableTimes(NetlinkSocket& socket, int addressFamily) {
    Message request(RTM_GETNEIGHTBL, NLM_F_DUMP);
    request.PutExtra<ndtmsg>()->ndtm_family = static_cast<unsigned char>(addressFamily);
    std::map<int, std::uint64_t> times;
    socket.Exchange(request, [&times](const nlmsghdr& reply) {
        const auto attributes = ParseAttributes(reply, sizeof(ndtmsg), NDTA_MAX);
        const auto parameters = ParseNested(attributes[NDTA_PARMS], NDTPA_MAX);
        if (parameters[NDTPA_REACHABLE_TIME] != nullptr) {
            times[static_cast<int>(U32Or(parameters[NDTPA_IFINDEX], 0))] =
                mnl_attr_get_u64(parameters[NDTPA_REACHABLE_TIME]);
        }
    });
    return times;
}

// Seconds left before a reachable entry goes stale: its link's reachable time less the time
// since the neighbour was last confirmed.
std::int64_t ReachableSecondsLeft(const Entry& entry, const std::map<int, std::uint64_t>& times) {
    auto time = times.find(entry.index);
    if (time == times.end()) {
        time = times.find(0);
    }
    if (!entry.confirmed || time == times.end()) {
        return 0;
    }
    const std::int64_t ticksPerSecond = sysconf(_SC_CLK_TCK);
    const std::int64_t left = static_cast<std::int64_t>(time->second / 1000) -
                              static_cast<std::int64_t>(*entry.confirmed) / ticksPerSecond;
    return left > 0 ? left : 0;
}

// The text form inet_ntop gives an address, so that any spelling of it compares equal; the
// text itself when it is no address of the family.
std::string NormalAddress(int addressFamily, const std::string& text) {
    unsigned char bytes[16] = {};
    char normal[INET6_ADDRSTRLEN] = {};
    if (inet_pton(addressFamily, text.c_str(), bytes) != 1 ||
        inet_ntop(addressFamily, bytes, normal, sizeof normal) == nullptr) {
        return text;
    }
    return normal;
}

}  // namespace

std::vector<NeighborRecord> Neighbors::LoadAll(const std::string& netstack, int family,
                                               const std::string& interfaceName) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    LinkNames names(socket);
    const int only = names.Index(interfaceName);
    if (!interfaceName.empty() && only == 0) {
        return {};
    }
    const int addressFamily = AddressFamily(family);
    std::vector<Entry> entries = DumpEntries(socket, addressFamily);
    std::erase_if(entries, [only](const Entry& entry) { return only != 0 && entry.index != only; });
    std::map<int, std::uint64_t> times;
    if (std::any_of(entries.begin(), entries.end(),
                    [](const Entry& entry) { return (entry.state & NUD_REACHABLE) != 0; })) {
        times = DumpReachableTimes(socket, addressFamily);
    }
    std::vector<NeighborRecord> neighbors;
    neighbors.reserve(entries.size());
    for (const Entry& entry : entries) {
        NeighborRecord neighbor;
        neighbor.address = entry.address;
        neighbor.mac = entry.mac;
        neighbor.interfaceName = names.Name(entry.index);
        neighbor.state = entry.state;
        neighbor.router = (entry.flags & NTF_ROUTER) != 0;
        neighbor.expiry = (entry.state & NUD_PERMANENT) != 0   ? -1
                          : (entry.state & NUD_REACHABLE) != 0 ? ReachableSecondsLeft(entry, times)
                                                               : 0;
        neighbors.push_back(std::move(neighbor));
    }
    return neighbors;
}

void Neighbors::Remove(const std::string& netstack, int family, const std::string& address,
                       const std::string& interfaceName) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    LinkNames names(socket);
    const int only = names.Index(interfaceName);
    const int addressFamily = AddressFamily(family);
    const std::string wanted = NormalAddress(addressFamily, address);
    std::vector<int> links;
    if (interfaceName.empty() || only != 0) {
        for (const Entry& entry : DumpEntries(socket, addressFamily)) {
            if (entry.address == wanted && (only == 0 || entry.index == only)) {
                links.push_back(entry.index);
            }
        }
    }
    if (links.empty()) {
        throw HostCtl::Lib::HostCtlException(
            "There is no IPv" + std::to_string(family) + " neighbor " + wanted +
            (interfaceName.empty() ? std::string() : " on interface " + interfaceName) +
            " in netstack " + netstack);
    }
    for (const int link : links) {
        Message request(RTM_DELNEIGH, 0);
        auto* header = request.PutExtra<ndmsg>();
        header->ndm_family = static_cast<unsigned char>(addressFamily);
        header->ndm_ifindex = link;
        PutAddress(request, NDA_DST, addressFamily, wanted);
        socket.Exchange(request);
    }
}

}  // namespace HostSim::Linux
