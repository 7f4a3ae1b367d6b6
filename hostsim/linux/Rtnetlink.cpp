#include "hostsim/linux/Rtnetlink.h"

#include <arpa/inet.h>
#include <linux/if.h>
#include <linux/rtnetlink.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Netstack.h"
#include "hostsim/values/AddressText.h"

namespace HostSim::Linux {

NetlinkSocket& RouteSockets::Open(const std::string& netstack) {
    if (netstack == kDefaultNetstack) {
        if (!default_) {
            default_ = std::make_unique<NetlinkSocket>(NETLINK_ROUTE);
        }
        return *default_;
    }
    named_.reset();
    NetstackScope scope(netstack);
    named_ = std::make_unique<NetlinkSocket>(NETLINK_ROUTE);
    return *named_;
}

int AddressFamily(int family) {
    return family == 6 ? AF_INET6 : AF_INET;
}

std::string AddressText(int addressFamily, const nlattr* attribute) {
    if (attribute == nullptr) {
        return {};
    }
    const std::size_t length = addressFamily == AF_INET6 ? 16 : 4;
    if (mnl_attr_get_payload_len(attribute) < length) {
        return {};
    }
    const auto* bytes = static_cast<const unsigned char*>(mnl_attr_get_payload(attribute));
    if (addressFamily == AF_INET) {
        return Ipv4Text(static_cast<std::uint32_t>(bytes[0]) << 24 | bytes[1] << 16 |
                        bytes[2] << 8 | bytes[3]);
    }
    return Ipv6Text(bytes);
}

void PutAddress(Message& message, std::uint16_t type, int addressFamily, const std::string& text) {
    unsigned char bytes[16] = {};
    if (inet_pton(addressFamily, text.c_str(), bytes) != 1) {
        throw HostCtl::Lib::HostCtlException(text + " is not an IPv" +
                                             (addressFamily == AF_INET6 ? "6" : "4") + " address");
    }
    mnl_attr_put(message.Header(), type, addressFamily == AF_INET6 ? 16 : 4, bytes);
}

std::uint32_t Ipv4Value(const nlattr* attribute) {
    if (attribute == nullptr || mnl_attr_get_payload_len(attribute) < 4) {
        return 0;
    }
    const auto* bytes = static_cast<const unsigned char*>(mnl_attr_get_payload(attribute));
    return static_cast<std::uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

std::string HardwareAddressText(const nlattr* attribute) {
    if (attribute == nullptr) {
        return {};
    }
    const auto* bytes = static_cast<const unsigned char*>(mnl_attr_get_payload(attribute));
    std::string text;
    for (std::size_t i = 0; i < mnl_attr_get_payload_len(attribute); ++i) {
        char part[4];
        std::snprintf(part, sizeof part, i == 0 ? "%02x" : ":%02x", bytes[i]);
        text += part;
    }
    return text;
}

std::uint32_t U32Or(const nlattr* attribute, std::uint32_t fallback) {
    return attribute != nullptr ? mnl_attr_get_u32(attribute) : fallback;
}

namespace {

// Asks for one link, by index or by name, without its counters.
Message LinkRequest(int index, const std::string& name) {
    Message request(RTM_GETLINK, 0);
    auto* info = request.PutExtra<ifinfomsg>();
    info->ifi_family = AF_UNSPEC;
    info->ifi_index = index;
    mnl_attr_put_u32(request.Header(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    if (!name.empty()) {
        mnl_attr_put_strz(request.Header(), IFLA_IFNAME, name.c_str());
    }
    return request;
}

}  // namespace

const std::string& LinkNames::Name(int index) {
    const auto emplaced = names_.try_emplace(index);
    const auto known = emplaced.first;
    if (!emplaced.second || index == 0) {
        return known->second;
    }
    Message request = LinkRequest(index, {});
    try {
        socket_.Exchange(request, [known](const nlmsghdr& reply) {
            const auto attributes = ParseAttributes(reply, sizeof(ifinfomsg), IFLA_IFNAME);
            if (attributes[IFLA_IFNAME] != nullptr) {
                known->second = mnl_attr_get_str(attributes[IFLA_IFNAME]);
            }
        });
    } catch (const KernelError& error) {
        if (error.Error() != ENODEV) {
            throw;
        }
    }
    return known->second;
}

int LinkNames::Index(const std::string& name) {
    if (name.empty() || name.size() >= IFNAMSIZ) {
        return 0;
    }
    for (const auto& [index, known] : names_) {
        if (known == name) {
            return index;
        }
    }
    Message request = LinkRequest(0, name);
    int index = 0;
    try {
        socket_.Exchange(request, [&index](const nlmsghdr& reply) {
            index = static_cast<const ifinfomsg*>(mnl_nlmsg_get_payload(&reply))->ifi_index;
        });
    } catch (const KernelError& error) {
        if (error.Error() != ENODEV) {
            throw;
        }
    }
    if (index != 0) {
        names_[index] = name;
    }
    return index;
}

namespace {

// The attributes of a message after its fixed header, by type, into an array of the caller's:
// a dump of many routes parses one a message.
template <std::size_t Count>
void ParseAttributesInto(const nlmsghdr& message, std::size_t extra,
                         std::array<const nlattr*, Count>& attributes) {
    mnl_attr_parse(
        &message, static_cast<unsigned>(extra),
        [](const nlattr* attribute, void* data) {
            auto& found = *static_cast<std::array<const nlattr*, Count>*>(data);
            if (mnl_attr_get_type(attribute) < Count) {
                found[mnl_attr_get_type(attribute)] = attribute;
            }
            return MNL_CB_OK;
        },
        &attributes);
}

// The hops of a multipath route: each rtnexthop with its own attributes after it.
void ReadHops(int addressFamily, const nlattr* multipath, std::vector<DumpedRoute::Hop>& hops) {
    const auto* start = static_cast<const char*>(mnl_attr_get_payload(multipath));
    int left = static_cast<int>(mnl_attr_get_payload_len(multipath));
    for (const auto* hop = reinterpret_cast<const rtnexthop*>(start); RTNH_OK(hop, left);
         left -= RTNH_ALIGN(hop->rtnh_len), hop = RTNH_NEXT(hop)) {
        DumpedRoute::Hop read;
        read.interfaceIndex = hop->rtnh_ifindex;
        int attributesLeft = static_cast<int>(hop->rtnh_len - sizeof(rtnexthop));
        for (const auto* attribute = reinterpret_cast<const nlattr*>(RTNH_DATA(hop));
             mnl_attr_ok(attribute, attributesLeft);
             attributesLeft -= static_cast<int>(MNL_ALIGN(attribute->nla_len)),
                         attribute = mnl_attr_next(attribute)) {
            if (mnl_attr_get_type(attribute) == RTA_GATEWAY) {
                read.gateway = AddressText(addressFamily, attribute);
                read.ipv4Gateway = addressFamily == AF_INET ? Ipv4Value(attribute) : 0;
            }
        }
        hops.push_back(std::move(read));
    }
}

}  // namespace

void DumpMainRoutes(NetlinkSocket& socket, int addressFamily,
                    const std::function<void(const DumpedRoute&)>& visit) {
    // Each family is asked for alone, so that the table filter below goes only to the two
    // families that take it.
    if (addressFamily == AF_UNSPEC) {
        DumpMainRoutes(socket, AF_INET, visit);
        DumpMainRoutes(socket, AF_INET6, visit);
        return;
    }
    Message request(RTM_GETROUTE, NLM_F_DUMP);
    auto* filter = request.PutExtra<rtmsg>();
    filter->rtm_family = static_cast<unsigned char>(addressFamily);
    filter->rtm_table = RT_TABLE_MAIN;
    mnl_attr_put_u32(request.Header(), RTA_TABLE, RT_TABLE_MAIN);
    // With strict checks the kernel dumps the main table alone, not the local one, which holds a
    // route for every address of the host. The checks stay on for this dump only: other
    // requests on the socket are made for the lenient kind.
    struct StrictDump {
        NetlinkSocket& socket;
        explicit StrictDump(NetlinkSocket& held) : socket(held) { socket.SetStrictChecks(true); }
        ~StrictDump() { socket.SetStrictChecks(false); }
    } strict(socket);
    DumpedRoute route;
    socket.Exchange(request, [&route, &visit, addressFamily](const nlmsghdr& reply) {
        const auto* header = static_cast<const rtmsg*>(mnl_nlmsg_get_payload(&reply));
        // A kernel without the family answers with the dump of every family.
        if (header->rtm_family != addressFamily) {
            return;
        }
        std::array<const nlattr*, RTA_MAX + 1> attributes{};
        ParseAttributesInto(reply, sizeof(rtmsg), attributes);
        if (U32Or(attributes[RTA_TABLE], header->rtm_table) != RT_TABLE_MAIN ||
            header->rtm_type != RTN_UNICAST || (header->rtm_flags & RTM_F_CLONED) != 0) {
            return;
        }
        route.addressFamily = header->rtm_family;
        route.network = AddressText(route.addressFamily, attributes[RTA_DST]);
        if (route.network.empty()) {
            route.network = route.addressFamily == AF_INET6 ? "::" : "0.0.0.0";
        }
        route.ipv4Network = route.addressFamily == AF_INET ? Ipv4Value(attributes[RTA_DST]) : 0;
        route.prefixLength = header->rtm_dst_len;
        route.protocol = header->rtm_protocol;
        route.hops.clear();
        if (attributes[RTA_MULTIPATH] != nullptr) {
            ReadHops(route.addressFamily, attributes[RTA_MULTIPATH], route.hops);
        } else if (attributes[RTA_VIA] == nullptr) {
            const nlattr* gateway = attributes[RTA_GATEWAY];
            route.hops.push_back({AddressText(route.addressFamily, gateway),
                                  static_cast<int>(U32Or(attributes[RTA_OIF], 0)),
                                  route.addressFamily == AF_INET ? Ipv4Value(gateway) : 0});
        }
        // A route through a gateway of the other family (RTA_VIA) has no hop of its own family.
        if (!route.hops.empty()) {
            visit(route);
        }
    });
}

Message RouteChange(std::uint16_t type, std::uint16_t flags, int addressFamily,
                    const std::string& network, unsigned prefixLength, const std::string& gateway,
                    int interfaceIndex) {
    Message request(type, flags);
    auto* header = request.PutExtra<rtmsg>();
    header->rtm_family = static_cast<unsigned char>(addressFamily);
    header->rtm_dst_len = static_cast<unsigned char>(prefixLength);
    header->rtm_table = RT_TABLE_MAIN;
    if (type == RTM_NEWROUTE) {
        header->rtm_protocol = RTPROT_STATIC;
        header->rtm_scope = gateway.empty() ? RT_SCOPE_LINK : RT_SCOPE_UNIVERSE;
        header->rtm_type = RTN_UNICAST;
    } else {
        // A removal matches routes of any scope; one without a gateway, only those of the link.
        header->rtm_scope =
            gateway.empty() && addressFamily == AF_INET ? RT_SCOPE_LINK : RT_SCOPE_NOWHERE;
    }
    if (prefixLength > 0) {
        PutAddress(request, RTA_DST, addressFamily, network);
    }
    if (!gateway.empty()) {
        PutAddress(request, RTA_GATEWAY, addressFamily, gateway);
    }
    if (interfaceIndex > 0) {
        mnl_attr_put_u32(request.Header(), RTA_OIF, static_cast<std::uint32_t>(interfaceIndex));
    }
    return request;
}

}  // namespace HostSim::Linux
