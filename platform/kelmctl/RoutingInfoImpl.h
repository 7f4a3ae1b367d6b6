// Routes, default gateways and neighbour tables of one netstack instance. The object names the
// instance by its key; every operation reads or changes the host's tables of that instance and
// throws HostCtlException when the host has no such instance.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/IpAddress.h"
#include "hostctl/Routing.h"
#include "hostctl/VirtualSwitch.h"

namespace KelmCtl::Network {

class RoutingInfoImpl {
public:
    // The networks that stand for the default route, 0.0.0.0/0 and ::/0.
    static const HostCtl::Network::Ipv4Network DEFAULT_IPV4_ROUTE;
    static const HostCtl::Network::Ipv6Network DEFAULT_IPV6_ROUTE;

    explicit RoutingInfoImpl(const std::string& netstackKey);
    ~RoutingInfoImpl();

    void SetNetstackInstanceKey(const std::string& netstackKey);
    const std::string& GetNetstackInstanceKey() const;
    // Reads the instance's default gateways from the host again.
    void Refresh();

    // The default gateways: the one in force (learnt by DHCP or configured) and the configured
    // one. 0.0.0.0 and :: when there is none.
    HostCtl::Network::Ipv4Address GetKelmDefaultGateway();
    HostCtl::Network::Ipv4Address GetKelmConfigDefaultGateway();
    HostCtl::Network::Ipv6Address GetIpv6KelmDefaultGateway();
    HostCtl::Network::Ipv6Address GetIpv6KelmConfigDefaultGateway();
    // Configures the default gateway; 0.0.0.0 (or ::) removes it. `fromDhcp` marks a gateway
    // learnt by DHCP, which is in force but not configured.
    void SetKelmDefaultGateway(HostCtl::Network::Ipv4Address gateway, bool fromDhcp);
    void SetIpv6KelmDefaultGateway(HostCtl::Network::Ipv6Address gateway);
    // Where the route to `network` comes from: "MANUAL" or "DHCP"; "N/A" for a network the
    // instance has no route to.
    std::string GetDefaultGatewaySource(HostCtl::Network::Ipv4Network network);

    // Adding the default route sets the default gateway.
    void AddKelmRoute(HostCtl::Network::Ipv4Network network, HostCtl::Network::Ipv4Address gateway);
    void RemoveKelmRoute(HostCtl::Network::Ipv4Network network,
                         HostCtl::Network::Ipv4Address gateway);
    void AddIpv6KelmRoute(HostCtl::Network::Ipv6Network network,
                          HostCtl::Network::Ipv6Address gateway);
    void RemoveIpv6KelmRoute(HostCtl::Network::Ipv6Network network,
                             HostCtl::Network::Ipv6Address gateway);
    // The routing table, the default route first. PortsetGetSystem gives the routes of the
    // host's system interfaces instead of the ordinary ones.
    std::vector<HostCtl::Network::Ipv4Route> GetCurrentKelmRoutes(
        HostCtl::Network::PortsetGetType type);
    std::vector<HostCtl::Network::Ipv6Route> GetCurrentIpv6KelmRoutes(
        HostCtl::Network::PortsetGetType type);

    // The neighbour tables, appended to `neighbors`; an empty interface name means all.
    void GetCurrentIpv4KelmNeighbors(std::vector<HostCtl::Network::Ipv4Neighbor>& neighbors,
                                     const std::string& interfaceName,
                                     HostCtl::Network::PortsetGetType type);
    void GetCurrentIpv6KelmNeighbors(std::vector<HostCtl::Network::Ipv6Neighbor>& neighbors,
                                     const std::string& interfaceName,
                                     HostCtl::Network::PortsetGetType type);
    std::string GetIpv4NeighborType(HostCtl::Network::Ipv4Neighbor neighbor);
    std::string GetIpv6NeighborState(HostCtl::Network::Ipv6Neighbor neighbor);
    std::string GetIpv6NeighborType(HostCtl::Network::Ipv6Neighbor neighbor);
    // Removes the entry of the neighbour's address on its interface, or on every interface
    // when the interface name is empty.
    void RemoveIpv4Neighbor(HostCtl::Network::Ipv4Neighbor neighbor);
    void RemoveIpv6Neighbor(HostCtl::Network::Ipv6Neighbor neighbor);

private:
    struct Cache;
    // The gateways and the sources of the routes, read once for a listing and its rows.
    const Cache& Cached();

    std::string netstackKey_;
    std::unique_ptr<Cache> cache_;
};

}  // namespace KelmCtl::Network
