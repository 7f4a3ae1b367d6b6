#include "hostsim/linux/Bridges.h"

#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <cerrno>
#include <map>

#include "hostctl/HostCtlException.h"

namespace HostSim::Linux {

using HostCtl::Lib::HostCtlException;
using Live::BridgeRecord;

namespace {

constexpr char kBridgeKind[] = "bridge";

// What the link table says of a link that matters to a bridge.
struct LinkEntry {
    int index = 0;
    std::string name;
    std::string kind;
    std::uint32_t mtu = 0;
    int master = 0;
};

LinkEntry ReadEntry(const nlmsghdr& message) {
    const auto* info = static_cast<const ifinfomsg*>(mnl_nlmsg_get_payload(&message));
    const auto attributes = ParseAttributes(message, sizeof(ifinfomsg), IFLA_MAX);
    LinkEntry entry;
    entry.index = info->ifi_index;
    if (attributes[IFLA_IFNAME] != nullptr) {
        entry.name = mnl_attr_get_str(attributes[IFLA_IFNAME]);
    }
    if (attributes[IFLA_MTU] != nullptr) {
        entry.mtu = mnl_attr_get_u32(attributes[IFLA_MTU]);
    }
    if (attributes[IFLA_MASTER] != nullptr) {
        entry.master = static_cast<int>(mnl_attr_get_u32(attributes[IFLA_MASTER]));
    }
    const auto linkInfo = ParseNested(attributes[IFLA_LINKINFO], IFLA_INFO_MAX);
    if (linkInfo[IFLA_INFO_KIND] != nullptr) {
        entry.kind = mnl_attr_get_str(linkInfo[IFLA_INFO_KIND]);
    }
    return entry;
}

// A link request without counters, for the link of `index` (0: by name, or every link).
Message LinkRequest(std::uint16_t type, std::uint16_t flags, int index = 0) {
    Message request(type, flags);
    auto* info = request.PutExtra<ifinfomsg>();
    info->ifi_family = AF_UNSPEC;
    info->ifi_index = index;
    if (type == RTM_GETLINK) {
        mnl_attr_put_u32(request.Header(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    }
    return request;
}

std::vector<LinkEntry> DumpLinks(NetlinkSocket& route, int master = 0) {
    Message request = LinkRequest(RTM_GETLINK, NLM_F_DUMP);
    if (master != 0) {
        mnl_attr_put_u32(request.Header(), IFLA_MASTER, static_cast<std::uint32_t>(master));
    }
    std::vector<LinkEntry> links;
    route.Exchange(request, [&links](const nlmsghdr& reply) { links.push_back(ReadEntry(reply)); });
    return links;
}

// Empty when there is no link of that name (or index).
std::optional<LinkEntry> FindLink(NetlinkSocket& route, const std::string& name, int index = 0) {
    if (index == 0 && (name.empty() || name.size() >= IFNAMSIZ)) {
        return std::nullopt;
    }
    Message request = LinkRequest(RTM_GETLINK, 0, index);
    if (index == 0) {
        mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    }
    std::optional<LinkEntry> link;
    try {
        route.Exchange(request, [&link](const nlmsghdr& reply) { link = ReadEntry(reply); });
    } catch (const KernelError& error) {
        if (error.Error() == ENODEV) {
            return std::nullopt;
        }
        throw;
    }
    return link;
}

LinkEntry RequireBridge(NetlinkSocket& route, const std::string& name) {
    auto link = FindLink(route, name);
    if (!link || link->kind != kBridgeKind) {
        throw HostCtlException("There is no virtual switch named " + name);
    }
    return *link;
}

void SetMaster(NetlinkSocket& route, int link, int master) {
    Message request = LinkRequest(RTM_NEWLINK, 0, link);
    mnl_attr_put_u32(request.Header(), IFLA_MASTER, static_cast<std::uint32_t>(master));
    route.Exchange(request);
}

}  // namespace

NetlinkSocket& Bridges::Route() {
    if (!route_) {
        route_ = std::make_unique<NetlinkSocket>(NETLINK_ROUTE);
    }
    return *route_;
}

std::vector<BridgeRecord> Bridges::LoadAll() {
    const std::vector<LinkEntry> links = DumpLinks(Route());
    std::vector<BridgeRecord> bridges;
    std::map<int, std::size_t> byIndex;
    for (const LinkEntry& link : links) {
        if (link.kind == kBridgeKind) {
            byIndex[link.index] = bridges.size();
            bridges.push_back({link.name, link.mtu, {}});
        }
    }
    for (const LinkEntry& link : links) {
        if (const auto bridge = byIndex.find(link.master); bridge != byIndex.end()) {
            bridges[bridge->second].ports.push_back(link.name);
        }
    }
    return bridges;
}

std::optional<BridgeRecord> Bridges::Load(const std::string& name) {
    const auto link = FindLink(Route(), name);
    if (!link || link->kind != kBridgeKind) {
        return std::nullopt;
    }
    BridgeRecord bridge{link->name, link->mtu, {}};
    for (const LinkEntry& port : DumpLinks(Route(), link->index)) {
        bridge.ports.push_back(port.name);
    }
    return bridge;
}

void Bridges::Add(const std::string& name) {
    Message request = LinkRequest(RTM_NEWLINK, NLM_F_CREATE | NLM_F_EXCL);
    mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    nlattr* linkInfo = mnl_attr_nest_start(request.Header(), IFLA_LINKINFO);
    mnl_attr_put_strz(request.Header(), IFLA_INFO_KIND, kBridgeKind);
    mnl_attr_nest_end(request.Header(), linkInfo);
    Route().Exchange(request);
}

void Bridges::Remove(const std::string& name) {
    Message request = LinkRequest(RTM_DELLINK, 0, RequireBridge(Route(), name).index);
    Route().Exchange(request);
}

void Bridges::SetMtu(const std::string& name, std::uint32_t mtu) {
    Message request = LinkRequest(RTM_NEWLINK, 0, RequireBridge(Route(), name).index);
    mnl_attr_put_u32(request.Header(), IFLA_MTU, mtu);
    Route().Exchange(request);
}

// The kernel would move a link from another master without a word; a switch takes only a free
// NIC, as the simulated host does.
void Bridges::AddPort(const std::string& bridge, const std::string& link) {
    const LinkEntry master = RequireBridge(Route(), bridge);
    const auto port = FindLink(Route(), link);
    if (!port) {
        throw HostCtlException("There is no NIC named " + link + " on this host");
    }
    if (port->master != 0) {
        const auto holder = FindLink(Route(), {}, port->master);
        const bool bridged = holder && holder->kind == kBridgeKind;
        throw HostCtlException("NIC " + link +
                               (bridged ? " is already an uplink of " : " is already a port of ") +
                               (holder ? holder->name : std::to_string(port->master)));
    }
    SetMaster(Route(), port->index, master.index);
}

void Bridges::RemovePort(const std::string& bridge, const std::string& link) {
    const LinkEntry master = RequireBridge(Route(), bridge);
    const auto port = FindLink(Route(), link);
    if (!port || port->master != master.index) {
        throw HostCtlException("NIC " + link + " is not an uplink of " + bridge);
    }
    SetMaster(Route(), port->index, 0);
}

}  // namespace HostSim::Linux
