// The multicast groups joined on a link: the groups from rtnetlink's multicast dumps, one per
// address family; how many sockets hold each membership from the kernel's IGMP and MLD tables
// (/proc/net/igmp and /proc/net/igmp6 of the namespace), which only they show.
#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "hostsim/linux/Connections.h"
#include "hostsim/linux/Netlink.h"
#include "hostsim/linux/Netstack.h"

namespace HostSim::Linux {

namespace {

using Group = HostCtl::Network::KelmNic::MulticastGroup;
using GroupBytes = std::array<unsigned char, 16>;

// The namespace's tables as the calling thread sees them; it may have moved into another
// namespace than the process's.
constexpr char kIgmpTable[] = "/proc/thread-self/net/igmp";
constexpr char kMldTable[] = "/proc/thread-self/net/igmp6";

struct Link {
    int index = 0;
    bool ethernet = false;
};

Link FindLink(const std::string& name) {
    Link link;
    link.index = static_cast<int>(if_nametoindex(name.c_str()));
    if (link.index == 0) {
        ThrowKernelError(errno, name);
    }
    const int probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        ThrowKernelError(errno);
    }
    ifreq request{};
    std::snprintf(request.ifr_name, sizeof request.ifr_name, "%s", name.c_str());
    const int result = ioctl(probe, SIOCGIFHWADDR, &request);
    const int error = errno;
    close(probe);
    if (result != 0) {
        ThrowKernelError(error, name);
    }
    link.ethernet = request.ifr_hwaddr.sa_family == ARPHRD_ETHER;
    return link;
}

// The Ethernet address a group is sent to, as the kernel maps it: 01:00:5e and the low 23
// bits of an IPv4 group, 33:33 and the low 32 bits of an IPv6 one.
std::string EthernetAddress(int family, const GroupBytes& group) {
    char text[18];
    if (family == AF_INET) {
        std::snprintf(text, sizeof text, "01:00:5e:%02x:%02x:%02x", group[1] & 0x7f, group[2],
                      group[3]);
    } else {
        std::snprintf(text, sizeof text, "33:33:%02x:%02x:%02x:%02x", group[12], group[13],
                      group[14], group[15]);
    }
    return text;
}

using Users = std::map<std::pair<int, GroupBytes>, int>;

// /proc/net/igmp: a line "index device : count querier" per link, then a line "group users
// timer reporter" per group, the group in hexadecimal of its bytes read as a host integer.
void ReadIgmpUsers(Users& users) {
    std::ifstream table(kIgmpTable);
    std::string line;
    std::getline(table, line);
    int index = 0;
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        if (line.empty() || line[0] != '\t') {
            fields >> index;
            continue;
        }
        std::string group;
        int count = 0;
        if (!(fields >> group >> count)) {
            continue;
        }
        const auto value = static_cast<std::uint32_t>(std::strtoul(group.c_str(), nullptr, 16));
        GroupBytes bytes{};
        std::memcpy(bytes.data(), &value, sizeof value);
        users[{index, bytes}] = count;
    }
}

// /proc/net/igmp6: "index device group users flags timer", the group as 32 hexadecimal digits.
void ReadMldUsers(Users& users) {
    std::ifstream table(kMldTable);
    std::string line;
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        int index = 0;
        std::string device;
        std::string group;
        int count = 0;
        if (!(fields >> index >> device >> group >> count) || group.size() != 32) {
            continue;
        }
        GroupBytes bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<unsigned char>(
                std::strtoul(group.substr(2 * i, 2).c_str(), nullptr, 16));
        }
        users[{index, bytes}] = count;
    }
}

}  // namespace

void Multicast::Groups(const std::string& netstack, const std::string& interface,
                       std::vector<Group>& groups) {
    NetstackScope scope(netstack);
    const Link link = FindLink(interface);
    NetlinkSocket route(NETLINK_ROUTE);
    for (const unsigned char family : {AF_INET, AF_INET6}) {
        Users users;
        if (family == AF_INET) {
            ReadIgmpUsers(users);
        } else {
            ReadMldUsers(users);
        }
        Message request(RTM_GETMULTICAST, NLM_F_DUMP);
        auto* filter = request.PutExtra<ifaddrmsg>();
        filter->ifa_family = family;
        filter->ifa_index = static_cast<unsigned>(link.index);
        route.Exchange(request, [&](const nlmsghdr& message) {
            const auto* address = static_cast<const ifaddrmsg*>(mnl_nlmsg_get_payload(&message));
            if (static_cast<int>(address->ifa_index) != link.index ||
                address->ifa_family != family) {
                return;
            }
            const auto attributes = ParseAttributes(message, sizeof(ifaddrmsg), IFA_MULTICAST);
            const nlattr* multicast = attributes[IFA_MULTICAST];
            const std::size_t size = family == AF_INET ? 4 : 16;
            if (multicast == nullptr || mnl_attr_get_payload_len(multicast) != size) {
                return;
            }
            GroupBytes bytes{};
            std::memcpy(bytes.data(), mnl_attr_get_payload(multicast), size);
            char text[INET6_ADDRSTRLEN];
            inet_ntop(family, bytes.data(), text, sizeof text);
            const auto count = users.find({link.index, bytes});
            groups.push_back({interface, text, link.ethernet ? EthernetAddress(family, bytes) : "",
                              count == users.end() ? 0 : count->second});
        });
    }
}

}  // namespace HostSim::Linux
