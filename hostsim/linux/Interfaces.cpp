// The interfaces of a namespace: its links but loopback, their primary IPv4 address, their
// IPv6 addresses and switch, and the default routes that leave through them.
#include "hostsim/linux/Interfaces.h"

#include <arpa/inet.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/ipv6.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <cerrno>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Netstack.h"
#include "hostsim/linux/Sysctl.h"

namespace HostSim::Linux {

using Live::InterfaceIp;
using Live::InterfaceRecord;
using Live::Ipv6AddressRecord;

namespace {

// The numbers of Ipv6Network's types and statuses.
constexpr int kTypeStatic = 0;
constexpr int kTypeAutoconf = 7;
constexpr int kStatusPreferred = 1;
constexpr int kStatusTentative = 2;
constexpr int kStatusDuplicated = 3;
constexpr int kStatusDeprecated = 5;
constexpr std::size_t kEthernetAddressLength = 6;

// What the link table says of one link.
struct Link {
    int index = 0;
    unsigned flags = 0;
    std::string name;
    std::string mac;
    std::uint32_t mtu = 0;
    std::uint32_t tsoMss = 0;
    std::uint32_t rxQueues = 0;
    int master = 0;
    bool ipv6Enabled = false;
};

// Whether the link's IPv6 is on: its devconf array, absent when the kernel runs without IPv6.
bool ReadIpv6Enabled(const nlattr* familySpecific) {
    const auto families = ParseNested(familySpecific, AF_INET6);
    const auto inet6 = ParseNested(families[AF_INET6], IFLA_INET6_MAX);
    const nlattr* settings = inet6[IFLA_INET6_CONF];
    if (settings == nullptr ||
        mnl_attr_get_payload_len(settings) < (DEVCONF_DISABLE_IPV6 + 1) * sizeof(std::int32_t)) {
        return false;
    }
    return static_cast<const std::int32_t*>(mnl_attr_get_payload(settings))[DEVCONF_DISABLE_IPV6] ==
           0;
}

Link ReadLink(const nlmsghdr& message) {
    const auto* info = static_cast<const ifinfomsg*>(mnl_nlmsg_get_payload(&message));
    const auto attributes = ParseAttributes(message, sizeof(ifinfomsg), IFLA_MAX);
    Link link;
    link.index = info->ifi_index;
    link.flags = info->ifi_flags;
    if (attributes[IFLA_IFNAME] != nullptr) {
        link.name = mnl_attr_get_str(attributes[IFLA_IFNAME]);
    }
    // Only an Ethernet address is a MAC address: a tunnel's link address is an IP address.
    if (attributes[IFLA_ADDRESS] != nullptr &&
        mnl_attr_get_payload_len(attributes[IFLA_ADDRESS]) == kEthernetAddressLength) {
        link.mac = HardwareAddressText(attributes[IFLA_ADDRESS]);
    }
    link.mtu = U32Or(attributes[IFLA_MTU], 0);
    link.tsoMss = U32Or(attributes[IFLA_GSO_MAX_SIZE], 0);
    link.rxQueues = U32Or(attributes[IFLA_NUM_RX_QUEUES], 0);
    link.master = static_cast<int>(U32Or(attributes[IFLA_MASTER], 0));
    link.ipv6Enabled = ReadIpv6Enabled(attributes[IFLA_AF_SPEC]);
    return link;
}

bool IsInterface(const Link& link) {
    return (link.flags & IFF_LOOPBACK) == 0;
}

InterfaceRecord MakeRecord(const Link& link, const std::string& netstack, std::string master) {
    InterfaceRecord record;
    record.name = link.name;
    record.netstack = netstack;
    record.mac = link.mac;
    record.mtu = link.mtu;
    record.tsoMss = link.tsoMss;
    record.rxQueues = link.rxQueues;
    record.up = (link.flags & IFF_UP) != 0;
    record.master = std::move(master);
    return record;
}

Message LinkDump() {
    Message request(RTM_GETLINK, NLM_F_DUMP);
    request.PutExtra<ifinfomsg>()->ifi_family = AF_UNSPEC;
    mnl_attr_put_u32(request.Header(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    return request;
}

std::vector<Link> DumpLinks(NetlinkSocket& socket) {
    Message request = LinkDump();
    std::vector<Link> links;
    socket.Exchange(request, [&links](const nlmsghdr& reply) { links.push_back(ReadLink(reply)); });
    return links;
}

// The link of that name; empty when there is none, or when it is loopback.
std::optional<Link> ReadNamedLink(NetlinkSocket& socket, const std::string& name) {
    if (name.empty() || name.size() >= IFNAMSIZ) {
        return std::nullopt;
    }
    Message request(RTM_GETLINK, 0);
    request.PutExtra<ifinfomsg>()->ifi_family = AF_UNSPEC;
    mnl_attr_put_u32(request.Header(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    std::optional<Link> link;
    try {
        socket.Exchange(request, [&link](const nlmsghdr& reply) { link = ReadLink(reply); });
    } catch (const KernelError& error) {
        if (error.Error() != ENODEV) {
            throw;
        }
    }
    if (link && !IsInterface(*link)) {
        return std::nullopt;
    }
    return link;
}

Link RequireLink(NetlinkSocket& socket, const std::string& netstack, const std::string& name) {
    auto link = ReadNamedLink(socket, name);
    if (!link) {
        throw HostCtl::Lib::HostCtlException("There is no interface " + name + " in netstack " +
                                             netstack);
    }
    return std::move(*link);
}

// One address of the address table.
struct Address {
    int family = 0;
    int index = 0;
    std::string address;
    unsigned prefixLength = 0;
    std::string broadcast;
    std::uint32_t flags = 0;
    unsigned protocol = 0;
};

// Every address of the namespace, or of one link, in the kernel's order.
std::vector<Address> DumpAddresses(NetlinkSocket& socket, int index) {
    Message request(RTM_GETADDR, NLM_F_DUMP);
    request.PutExtra<ifaddrmsg>()->ifa_family = AF_UNSPEC;
    std::vector<Address> addresses;
    socket.Exchange(request, [&addresses, index](const nlmsghdr& reply) {
        const auto* header = static_cast<const ifaddrmsg*>(mnl_nlmsg_get_payload(&reply));
        if (index != 0 && static_cast<int>(header->ifa_index) != index) {
            return;
        }
        const auto attributes = ParseAttributes(reply, sizeof(ifaddrmsg), IFA_MAX);
        Address address;
        address.family = header->ifa_family;
        address.index = static_cast<int>(header->ifa_index);
        // IFA_ADDRESS is the peer's on a point-to-point link, IFA_LOCAL the link's own.
        const nlattr* local =
            attributes[IFA_LOCAL] != nullptr ? attributes[IFA_LOCAL] : attributes[IFA_ADDRESS];
        address.address = AddressText(address.family, local);
        if (address.address.empty()) {
            return;
        }
        address.prefixLength = header->ifa_prefixlen;
        address.broadcast = AddressText(address.family, attributes[IFA_BROADCAST]);
        address.flags = U32Or(attributes[IFA_FLAGS], header->ifa_flags);
        if (attributes[IFA_PROTO] != nullptr) {
            address.protocol = mnl_attr_get_u8(attributes[IFA_PROTO]);
        }
        addresses.push_back(std::move(address));
    });
    return addresses;
}

// An address the kernel made itself, the link-local one or one from a router's advertisement,
// is autoconfigured; any other one a program set.
Ipv6AddressRecord MakeIpv6Record(const Address& address) {
    Ipv6AddressRecord record;
    record.address = address.address;
    record.prefixLength = address.prefixLength;
    record.type = address.protocol == IFAPROT_KERNEL_LL || address.protocol == IFAPROT_KERNEL_RA
                      ? kTypeAutoconf
                      : kTypeStatic;
    record.status = (address.flags & IFA_F_DADFAILED) != 0    ? kStatusDuplicated
                    : (address.flags & IFA_F_TENTATIVE) != 0  ? kStatusTentative
                    : (address.flags & IFA_F_DEPRECATED) != 0 ? kStatusDeprecated
                                                              : kStatusPreferred;
    return record;
}

// Fills the addresses of `ip` from those of its link, in the kernel's order.
void AddAddress(InterfaceIp& ip, const Address& address) {
    if (address.family == AF_INET) {
        if (ip.ipv4Address.empty() && (address.flags & IFA_F_SECONDARY) == 0) {
            ip.ipv4Address = address.address;
            ip.ipv4PrefixLength = address.prefixLength;
            ip.ipv4Broadcast = address.broadcast;
        }
    } else if (address.family == AF_INET6) {
        ip.ipv6Addresses.push_back(MakeIpv6Record(address));
    }
}

// The gateways of the default routes that leave through each link, the first of each family
// (of the lowest metric), by link index.
struct Gateways {
    std::map<int, std::string> ipv4;
    std::map<int, std::string> ipv6;
};

Gateways DumpDefaultGateways(NetlinkSocket& socket) {
    Gateways gateways;
    DumpMainRoutes(socket, AF_UNSPEC, [&gateways](const DumpedRoute& route) {
        if (route.prefixLength != 0) {
            return;
        }
        auto& byLink = route.addressFamily == AF_INET6 ? gateways.ipv6 : gateways.ipv4;
        for (const DumpedRoute::Hop& hop : route.hops) {
            if (!hop.gateway.empty()) {
                byLink.try_emplace(hop.interfaceIndex, hop.gateway);
            }
        }
    });
    return gateways;
}

std::string GatewayOf(const std::map<int, std::string>& gateways, int index) {
    const auto found = gateways.find(index);
    return found == gateways.end() ? std::string() : found->second;
}

void ChangeAddress(NetlinkSocket& socket, std::uint16_t type, int index, int family,
                   const std::string& address, unsigned prefixLength) {
    Message request(type, type == RTM_NEWADDR ? NLM_F_CREATE | NLM_F_EXCL : 0);
    auto* header = request.PutExtra<ifaddrmsg>();
    header->ifa_family = static_cast<unsigned char>(family);
    header->ifa_prefixlen = static_cast<unsigned char>(prefixLength);
    header->ifa_index = static_cast<unsigned>(index);
    PutAddress(request, IFA_LOCAL, family, address);
    PutAddress(request, IFA_ADDRESS, family, address);
    // The broadcast address of an IPv4 network that has one, as `brd +` gives it.
    if (type == RTM_NEWADDR && family == AF_INET && prefixLength < 31) {
        in_addr value{};
        inet_pton(AF_INET, address.c_str(), &value);
        value.s_addr |= htonl(~0u >> prefixLength);
        mnl_attr_put(request.Header(), IFA_BROADCAST, sizeof value, &value);
    }
    socket.Exchange(request);
}

// Removes an address that may have gone already with another one (a secondary address goes
// with its primary).
void RemoveAddress(NetlinkSocket& socket, int index, const Address& address) {
    try {
        ChangeAddress(socket, RTM_DELADDR, index, address.family, address.address,
                      address.prefixLength);
    } catch (const KernelError& error) {
        if (error.Error() != EADDRNOTAVAIL) {
            throw;
        }
    }
}

void SetIpv4Address(NetlinkSocket& socket, const Link& link, const std::vector<Address>& held,
                    const InterfaceIp& wanted) {
    std::vector<const Address*> ipv4;
    for (const Address& address : held) {
        if (address.family == AF_INET) {
            ipv4.push_back(&address);
        }
    }
    if (wanted.ipv4Address.empty()) {
        // Secondaries ahead of their primaries, which would take them along.
        for (auto address = ipv4.rbegin(); address != ipv4.rend(); ++address) {
            RemoveAddress(socket, link.index, **address);
        }
        return;
    }
    const auto primary = std::find_if(ipv4.begin(), ipv4.end(), [](const Address* address) {
        return (address->flags & IFA_F_SECONDARY) == 0;
    });
    if (primary != ipv4.end() && (*primary)->address == wanted.ipv4Address &&
        (*primary)->prefixLength == wanted.ipv4PrefixLength) {
        return;
    }
    if (primary != ipv4.end()) {
        RemoveAddress(socket, link.index, **primary);
    }
    ChangeAddress(socket, RTM_NEWADDR, link.index, AF_INET, wanted.ipv4Address,
                  wanted.ipv4PrefixLength);
}

void SetIpv6Addresses(NetlinkSocket& socket, const Link& link, const std::vector<Address>& held,
                      const InterfaceIp& wanted) {
    auto same = [](const std::string& address, unsigned prefixLength) {
        return [&address, prefixLength](const auto& other) {
            return other.address == address && other.prefixLength == prefixLength;
        };
    };
    for (const Address& address : held) {
        if (address.family == AF_INET6 &&
            std::none_of(wanted.ipv6Addresses.begin(), wanted.ipv6Addresses.end(),
                         same(address.address, address.prefixLength))) {
            RemoveAddress(socket, link.index, address);
        }
    }
    for (const Ipv6AddressRecord& address : wanted.ipv6Addresses) {
        const bool heldAlready = std::any_of(held.begin(), held.end(), [&](const Address& other) {
            return other.family == AF_INET6 && same(address.address, address.prefixLength)(other);
        });
        if (!heldAlready) {
            ChangeAddress(socket, RTM_NEWADDR, link.index, AF_INET6, address.address,
                          address.prefixLength);
        }
    }
}

// Makes `wanted` the gateway of the netstack's default route through the link; an empty one
// removes the default route through it.
void SetGateway(NetlinkSocket& socket, int family, int index, const std::string& held,
                const std::string& wanted) {
    if (held == wanted) {
        return;
    }
    const std::string any = family == AF_INET6 ? "::" : "0.0.0.0";
    if (!wanted.empty()) {
        Message request =
            RouteChange(RTM_NEWROUTE, NLM_F_CREATE | NLM_F_REPLACE, family, any, 0, wanted, index);
        socket.Exchange(request);
        return;
    }
    Message request = RouteChange(RTM_DELROUTE, 0, family, any, 0, held, index);
    try {
        socket.Exchange(request);
    } catch (const KernelError& error) {
        // It went with the address it was reached through.
        if (error.Error() != ESRCH) {
            throw;
        }
    }
}

}  // namespace

std::vector<InterfaceRecord> Interfaces::LoadAll(const std::string& netstack) {
    const std::vector<Link> links = DumpLinks(sockets_.Open(netstack));
    std::map<int, const std::string*> names;
    for (const Link& link : links) {
        names[link.index] = &link.name;
    }
    std::vector<InterfaceRecord> records;
    records.reserve(links.size());
    for (const Link& link : links) {
        if (IsInterface(link)) {
            const auto master = names.find(link.master);
            records.push_back(MakeRecord(link, netstack,
                                         master == names.end() ? std::string() : *master->second));
        }
    }
    return records;
}

std::optional<InterfaceRecord> Interfaces::Load(const std::string& netstack,
                                                const std::string& name) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    const auto link = ReadNamedLink(socket, name);
    if (!link) {
        return std::nullopt;
    }
    LinkNames names(socket);
    return MakeRecord(*link, netstack, names.Name(link->master));
}

void Interfaces::SetUp(const std::string& netstack, const std::string& name, bool up) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    Message request(RTM_NEWLINK, 0);
    auto* info = request.PutExtra<ifinfomsg>();
    info->ifi_family = AF_UNSPEC;
    info->ifi_index = RequireLink(socket, netstack, name).index;
    info->ifi_change = IFF_UP;
    info->ifi_flags = up ? IFF_UP : 0;
    socket.Exchange(request);
}

void Interfaces::SetMtu(const std::string& netstack, const std::string& name, unsigned mtu) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    Message request(RTM_NEWLINK, 0);
    auto* info = request.PutExtra<ifinfomsg>();
    info->ifi_family = AF_UNSPEC;
    info->ifi_index = RequireLink(socket, netstack, name).index;
    mnl_attr_put_u32(request.Header(), IFLA_MTU, mtu);
    socket.Exchange(request);
}

std::map<std::string, InterfaceIp> Interfaces::LoadIp(const std::string& netstack) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    std::map<int, InterfaceIp*> byIndex;
    std::map<std::string, InterfaceIp> settings;
    for (const Link& link : DumpLinks(socket)) {
        if (IsInterface(link)) {
            InterfaceIp& ip = settings[link.name];
            ip.ipv6Enabled = link.ipv6Enabled;
            byIndex[link.index] = &ip;
        }
    }
    for (const Address& address : DumpAddresses(socket, 0)) {
        if (const auto link = byIndex.find(address.index); link != byIndex.end()) {
            AddAddress(*link->second, address);
        }
    }
    const Gateways gateways = DumpDefaultGateways(socket);
    for (auto& [index, ip] : byIndex) {
        ip->ipv4Gateway = GatewayOf(gateways.ipv4, index);
        ip->ipv6Gateway = GatewayOf(gateways.ipv6, index);
    }
    return settings;
}

void Interfaces::SetIp(const std::string& netstack, const std::string& name,
                       const InterfaceIp& wanted) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    const Link link = RequireLink(socket, netstack, name);
    // Read ahead of the switch, which adds a link-local address when it turns IPv6 on.
    const std::vector<Address> held = DumpAddresses(socket, link.index);
    // The switch first: turning IPv6 on lets addresses be added, turning it off takes them all.
    if (wanted.ipv6Enabled != link.ipv6Enabled) {
        NetstackScope scope(netstack);
        WriteNetSetting("ipv6/conf/" + name + "/disable_ipv6", wanted.ipv6Enabled ? "0" : "1");
    }
    SetIpv4Address(socket, link, held, wanted);
    if (wanted.ipv6Enabled || !link.ipv6Enabled) {
        SetIpv6Addresses(socket, link, held, wanted);
    }
    // Read after the addresses changed: a default route goes with the address it needed.
    const Gateways gateways = DumpDefaultGateways(socket);
    SetGateway(socket, AF_INET, link.index, GatewayOf(gateways.ipv4, link.index),
               wanted.ipv4Gateway);
    SetGateway(socket, AF_INET6, link.index, GatewayOf(gateways.ipv6, link.index),
               wanted.ipv6Gateway);
}

}  // namespace HostSim::Linux
