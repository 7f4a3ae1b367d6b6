#include "hostsim/linux/Routes.h"

#include <linux/rtnetlink.h>

#include <deque>
#include <utility>

namespace HostSim::Linux {

using Live::RouteRecord;

namespace {

// Who made a route, by the kernel's protocol number: the administrator (by hand, at boot, or
// the kernel for an address), a DHCP client, or a routing protocol.
std::string SourceWord(unsigned protocol) {
    switch (protocol) {
        case RTPROT_UNSPEC:
        case RTPROT_KERNEL:
        case RTPROT_BOOT:
        case RTPROT_STATIC:
            return "MANUAL";
        case RTPROT_DHCP:
            return "DHCP";
        case RTPROT_REDIRECT:
            return "REDIRECT";
        case RTPROT_RA:
            return "RA";
        case RTPROT_ZEBRA:
            return "ZEBRA";
        case RTPROT_BIRD:
            return "BIRD";
        case RTPROT_KEEPALIVED:
            return "KEEPALIVED";
        case RTPROT_BABEL:
            return "BABEL";
        case RTPROT_BGP:
            return "BGP";
        case RTPROT_ISIS:
            return "ISIS";
        case RTPROT_OSPF:
            return "OSPF";
        case RTPROT_RIP:
            return "RIP";
        case RTPROT_EIGRP:
            return "EIGRP";
        default:
            return std::to_string(protocol);
    }
}

std::string AnyAddress(int addressFamily) {
    return addressFamily == AF_INET6 ? "::" : "0.0.0.0";
}

}  // namespace

std::vector<RouteRecord> Routes::LoadAll(const std::string& netstack, int family) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    // Gathered in blocks, which grow without copying what they hold, and moved into a vector
    // of the right size at the end; the freed blocks serve the listing's rows after.
    std::deque<std::pair<RouteRecord, int>> found;
    DumpMainRoutes(socket, AddressFamily(family), [&](const DumpedRoute& route) {
        for (const DumpedRoute::Hop& hop : route.hops) {
            found.emplace_back(RouteRecord{route.network,
                                           route.prefixLength,
                                           hop.gateway,
                                           {},
                                           SourceWord(route.protocol),
                                           route.ipv4Network,
                                           hop.ipv4Gateway},
                               hop.interfaceIndex);
        }
    });
    // Named once the dump is over: the socket answers one request at a time.
    LinkNames names(socket);
    std::vector<RouteRecord> routes;
    routes.reserve(found.size());
    for (auto& [route, link] : found) {
        route.interfaceName = names.Name(link);
        routes.push_back(std::move(route));
    }
    return routes;
}

std::optional<RouteRecord> Routes::LoadDefault(const std::string& netstack, int family) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    std::optional<DumpedRoute> found;
    DumpMainRoutes(socket, AddressFamily(family), [&found](const DumpedRoute& route) {
        if (!found && route.prefixLength == 0 && !route.hops.empty()) {
            found = route;
        }
    });
    if (!found) {
        return std::nullopt;
    }
    LinkNames names(socket);
    const DumpedRoute::Hop& hop = found->hops.front();
    return RouteRecord{found->network,
                       0,
                       hop.gateway,
                       names.Name(hop.interfaceIndex),
                       SourceWord(found->protocol),
                       found->ipv4Network,
                       hop.ipv4Gateway};
}

void Routes::Add(const std::string& netstack, int family, const RouteRecord& route) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    Message request = RouteChange(RTM_NEWROUTE, NLM_F_CREATE | NLM_F_EXCL, AddressFamily(family),
                                  route.network, route.prefixLength, route.gateway, 0);
    socket.Exchange(request);
}

void Routes::Remove(const std::string& netstack, int family, const RouteRecord& route) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    Message request = RouteChange(RTM_DELROUTE, 0, AddressFamily(family), route.network,
                                  route.prefixLength, route.gateway, 0);
    socket.Exchange(request);
}

void Routes::SetDefaultGateway(const std::string& netstack, int family, const std::string& gateway,
                               bool fromDhcp) {
    NetlinkSocket& socket = sockets_.Open(netstack);
    const int addressFamily = AddressFamily(family);
    if (gateway.empty()) {
        // The first default route is the one in force.
        Message request =
            RouteChange(RTM_DELROUTE, 0, addressFamily, AnyAddress(addressFamily), 0, {}, 0);
        static_cast<rtmsg*>(mnl_nlmsg_get_payload(request.Header()))->rtm_scope = RT_SCOPE_NOWHERE;
        socket.Exchange(request);
        return;
    }
    Message request = RouteChange(RTM_NEWROUTE, NLM_F_CREATE | NLM_F_REPLACE, addressFamily,
                                  AnyAddress(addressFamily), 0, gateway, 0);
    if (fromDhcp) {
        static_cast<rtmsg*>(mnl_nlmsg_get_payload(request.Header()))->rtm_protocol = RTPROT_DHCP;
    }
    socket.Exchange(request);
}

}  // namespace HostSim::Linux
