#include "kelmctl/RoutingInfoImpl.h"

#include <linux/neighbour.h>

#include <unordered_map>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/routing/RoutingStore.h"
#include "hostsim/values/AddressText.h"

namespace KelmCtl::Network {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv4Network;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;
using HostCtl::Network::PortsetGetType;
using HostSim::PassOperation;
using HostSim::Routing::Gateways;
using HostSim::Routing::Route;

std::string PrefixText(const std::string& network, unsigned int prefixLength) {
    return network + "/" + std::to_string(prefixLength);
}

bool Ipv6PrefixMatches(const Ipv6Address& address, const Ipv6Address& network,
                       unsigned int prefixLength) {
    const auto& a = address.GetBytes();
    const auto& n = network.GetBytes();
    for (unsigned int bit = 0; bit < prefixLength && bit < 128; ++bit) {
        const auto mask = static_cast<std::uint8_t>(0x80u >> (bit % 8));
        if ((a[bit / 8] & mask) != (n[bit / 8] & mask)) {
            return false;
        }
    }
    return true;
}

// The interface of the directly reached network that holds `gateway`; empty when none does.
std::string ReachingInterface(const std::vector<Route>& routes, const Ipv4Address& gateway) {
    for (const Route& route : routes) {
        if (route.gateway == "0.0.0.0" &&
            (gateway.GetValue() & HostSim::Ipv4Netmask(route.prefixLength)) ==
                Ipv4Address(route.network).GetValue()) {
            return route.interfaceName;
        }
    }
    return {};
}

std::string ReachingInterface(const std::vector<Route>& routes, const Ipv6Address& gateway) {
    for (const Route& route : routes) {
        if (route.gateway == "::" &&
            Ipv6PrefixMatches(gateway, Ipv6Address(route.network), route.prefixLength)) {
            return route.interfaceName;
        }
    }
    return {};
}

template <class Address>
std::string RequireReachable(const std::vector<Route>& routes, const Address& gateway,
                             const std::string& netstack) {
    const std::string text = gateway.GetStringAddress();
    if (text == "0.0.0.0" || text == "::") {
        throw HostCtlException("Gateway " + text + " is not an address a route can go through");
    }
    std::string interfaceName = ReachingInterface(routes, gateway);
    if (interfaceName.empty()) {
        throw HostCtlException("Gateway " + text + " is unreachable: no interface of netstack " +
                               netstack + " is on its network");
    }
    return interfaceName;
}

// Adds a route of either family, or sets the default gateway for the default route.
void AddRoute(const std::string& netstack, Route route, bool isDefault, const char* duplicate) {
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::Routing::RequireNetstack(database, netstack);
    const auto routes = HostSim::Routing::ReadRoutes(database, netstack, route.family, false);
    const std::string interfaceName =
        route.family == 4 ? RequireReachable(routes, Ipv4Address(route.gateway), netstack)
                          : RequireReachable(routes, Ipv6Address(route.gateway), netstack);
    if (isDefault) {
        Gateways gateways = HostSim::Routing::ReadGateways(database, netstack);
        std::string& inForce = route.family == 4 ? gateways.ipv4 : gateways.ipv6;
        if (inForce == route.gateway) {
            throw HostCtlException(std::string("The default ") + duplicate + " via " +
                                   route.gateway + " already exists in netstack " + netstack);
        }
        inForce = route.gateway;
        (route.family == 4 ? gateways.ipv4Config : gateways.ipv6Config) = route.gateway;
        if (route.family == 4) {
            gateways.ipv4Source = HostSim::Routing::kSourceManual;
        }
        HostSim::Routing::WriteGateways(database, netstack, gateways);
        transaction.Commit();
        return;
    }
    for (const Route& existing : routes) {
        if (existing.network == route.network && existing.prefixLength == route.prefixLength) {
            throw HostCtlException((route.family == 4 ? "A " : "An ") + std::string(duplicate) +
                                   " to " + PrefixText(route.network, route.prefixLength) +
                                   " already exists in netstack " + netstack + ", via " +
                                   existing.gateway);
        }
    }
    route.interfaceName = interfaceName;
    route.source = HostSim::Routing::kSourceManual;
    HostSim::Routing::InsertRoute(database, netstack, route);
    transaction.Commit();
}

void RemoveRoute(const std::string& netstack, const Route& route, bool isDefault) {
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::Routing::RequireNetstack(database, netstack);
    const std::string missing = "There is no route to " +
                                (isDefault ? std::string("the default network")
                                           : PrefixText(route.network, route.prefixLength)) +
                                " via " + route.gateway + " in netstack " + netstack;
    if (isDefault) {
        Gateways gateways = HostSim::Routing::ReadGateways(database, netstack);
        const bool ipv4 = route.family == 4;
        if ((ipv4 ? gateways.ipv4 : gateways.ipv6) != route.gateway &&
            (ipv4 ? gateways.ipv4Config : gateways.ipv6Config) != route.gateway) {
            throw HostCtlException(missing);
        }
        if (ipv4) {
            gateways.ipv4 = gateways.ipv4Config = "0.0.0.0";
            gateways.ipv4Source = HostSim::Routing::kSourceNone;
        } else {
            gateways.ipv6 = gateways.ipv6Config = "::";
        }
        HostSim::Routing::WriteGateways(database, netstack, gateways);
        transaction.Commit();
        return;
    }
    for (const Route& existing :
         HostSim::Routing::ReadRoutes(database, netstack, route.family, false)) {
        if (existing.network != route.network || existing.prefixLength != route.prefixLength ||
            existing.gateway != route.gateway) {
            continue;
        }
        if (existing.gateway == "0.0.0.0" || existing.gateway == "::") {
            throw HostCtlException("The route to " + PrefixText(route.network, route.prefixLength) +
                                   " is the network of interface " + existing.interfaceName +
                                   " and goes with its address");
        }
        HostSim::Routing::DeleteRoute(database, netstack, route);
        transaction.Commit();
        return;
    }
    throw HostCtlException(missing);
}

void SetGateway(const std::string& netstack, int family, const std::string& gateway,
                bool fromDhcp) {
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::Routing::RequireNetstack(database, netstack);
    Gateways gateways = HostSim::Routing::ReadGateways(database, netstack);
    const bool none = gateway == "0.0.0.0" || gateway == "::";
    if (!none) {
        const auto routes = HostSim::Routing::ReadRoutes(database, netstack, family, false);
        if (family == 4) {
            RequireReachable(routes, Ipv4Address(gateway), netstack);
        } else {
            RequireReachable(routes, Ipv6Address(gateway), netstack);
        }
    }
    if (family == 4) {
        gateways.ipv4 = gateway;
        gateways.ipv4Config = fromDhcp ? "0.0.0.0" : gateway;
        gateways.ipv4Source = none       ? HostSim::Routing::kSourceNone
                              : fromDhcp ? HostSim::Routing::kSourceDhcp
                                         : HostSim::Routing::kSourceManual;
    } else {
        gateways.ipv6 = gateways.ipv6Config = gateway;
    }
    HostSim::Routing::WriteGateways(database, netstack, gateways);
    transaction.Commit();
}

Route RouteOf(int family, const std::string& network, unsigned int prefixLength,
              const std::string& gateway) {
    Route route;
    route.family = family;
    route.network = network;
    route.prefixLength = prefixLength;
    route.gateway = gateway;
    return route;
}

template <class Neighbor>
void RemoveNeighbor(const std::string& netstack, const Neighbor& wanted, bool ipv6) {
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::Routing::RequireNetstack(database, netstack);
    if (!HostSim::Routing::DeleteNeighbors(database, netstack, ipv6 ? 6 : 4,
                                           wanted.address.GetStringAddress(),
                                           wanted.interfaceName)) {
        throw HostCtlException(std::string("There is no ") + (ipv6 ? "IPv6" : "IPv4") +
                               " neighbor " + wanted.address.GetStringAddress() +
                               (wanted.interfaceName.empty()
                                    ? std::string()
                                    : " on interface " + wanted.interfaceName) +
                               " in netstack " + netstack);
    }
    transaction.Commit();
}

// The live host, or null on the simulated one. Linux has no system interfaces, and so no
// routes or neighbours of theirs.
HostSim::Live::Host* LiveHostFor(PortsetGetType type) {
    auto* live = HostSim::LiveHost();
    if (live != nullptr && type == HostCtl::Network::PortsetGetSystem) {
        throw HostCtlException(HostSim::Live::kNotAvailable);
    }
    return live;
}

// Empty for the unspecified address, which means none.
template <class Address>
std::string TextOrNone(const Address& address) {
    return address == Address() ? std::string() : address.GetStringAddress();
}

HostSim::Live::RouteRecord LiveRoute(const std::string& network, unsigned int prefixLength,
                                     std::string gateway) {
    return {network, prefixLength, std::move(gateway), {}, {}};
}

// The gateways of a live netstack's default routes in force; the kernel keeps no other.
Gateways LiveGateways(HostSim::Live::Host& live, const std::string& netstack) {
    Gateways gateways;
    if (auto route = live.Routes().LoadDefault(netstack, 4); route && !route->gateway.empty()) {
        gateways.ipv4 = gateways.ipv4Config = route->gateway;
        gateways.ipv4Source = route->source;
    }
    if (auto route = live.Routes().LoadDefault(netstack, 6); route && !route->gateway.empty()) {
        gateways.ipv6 = gateways.ipv6Config = route->gateway;
    }
    return gateways;
}

// The words of the kernel's neighbour states.
std::string LiveNeighborState(std::uint32_t state) {
    switch (state) {
        case NUD_INCOMPLETE:
            return "Incomplete";
        case NUD_REACHABLE:
            return "Reachable";
        case NUD_STALE:
            return "Stale";
        case NUD_DELAY:
            return "Delay";
        case NUD_PROBE:
            return "Probe";
        case NUD_FAILED:
            return "Failed";
        case NUD_PERMANENT:
            return "Permanent";
        default:
            return "Unknown";
    }
}

}  // namespace

namespace {

std::uint64_t SourceKey(std::uint32_t network, unsigned int prefixLength) {
    return (std::uint64_t{network} << 8) | prefixLength;
}

std::uint64_t SourceKey(const Route& route) {
    return SourceKey(Ipv4Address(route.network).GetValue(), route.prefixLength);
}

}  // namespace

struct RoutingInfoImpl::Cache {
    Gateways gateways;
    // The source of each IPv4 route by its network and prefix length (SourceKey).
    std::unordered_map<std::uint64_t, std::string> sources;
    // The routes of the last listing in its order, with their sources. A command asks for the
    // sources of a listing's rows in that order: `next` follows it, and the map is only made
    // for a question out of that order.
    std::vector<std::pair<std::uint64_t, std::string>> listed;
    std::size_t next = 0;
};

// 0.0.0.0/0 and ::/0, as the default values are.
const Ipv4Network RoutingInfoImpl::DEFAULT_IPV4_ROUTE{};
const Ipv6Network RoutingInfoImpl::DEFAULT_IPV6_ROUTE{};

RoutingInfoImpl::RoutingInfoImpl(const std::string& netstackKey) : netstackKey_(netstackKey) {
    PassOperation("RoutingInfoImpl::RoutingInfoImpl", netstackKey);
}

RoutingInfoImpl::~RoutingInfoImpl() = default;

void RoutingInfoImpl::SetNetstackInstanceKey(const std::string& netstackKey) {
    netstackKey_ = netstackKey;
    cache_.reset();
}

const std::string& RoutingInfoImpl::GetNetstackInstanceKey() const {
    return netstackKey_;
}

void RoutingInfoImpl::Refresh() {
    PassOperation("RoutingInfoImpl::Refresh", netstackKey_);
    cache_.reset();
    Cached();
}

const RoutingInfoImpl::Cache& RoutingInfoImpl::Cached() {
    if (!cache_ && HostSim::LiveHost() != nullptr) {
        cache_ = std::make_unique<Cache>();
        cache_->gateways = LiveGateways(*HostSim::LiveHost(), netstackKey_);
    }
    if (!cache_) {
        HostSim::Database& database = HostSim::Store();
        HostSim::Routing::RequireNetstack(database, netstackKey_);
        auto cache = std::make_unique<Cache>();
        cache->gateways = HostSim::Routing::ReadGateways(database, netstackKey_);
        for (const bool system : {false, true}) {
            for (const Route& route :
                 HostSim::Routing::ReadRoutes(database, netstackKey_, 4, system)) {
                cache->sources.emplace(SourceKey(route), route.source);
            }
        }
        cache_ = std::move(cache);
    }
    return *cache_;
}

Ipv4Address RoutingInfoImpl::GetKelmDefaultGateway() {
    PassOperation("RoutingInfoImpl::GetKelmDefaultGateway", netstackKey_);
    return Ipv4Address(Cached().gateways.ipv4);
}

Ipv4Address RoutingInfoImpl::GetKelmConfigDefaultGateway() {
    PassOperation("RoutingInfoImpl::GetKelmConfigDefaultGateway", netstackKey_);
    return Ipv4Address(Cached().gateways.ipv4Config);
}

Ipv6Address RoutingInfoImpl::GetIpv6KelmDefaultGateway() {
    PassOperation("RoutingInfoImpl::GetIpv6KelmDefaultGateway", netstackKey_);
    return Ipv6Address(Cached().gateways.ipv6);
}

Ipv6Address RoutingInfoImpl::GetIpv6KelmConfigDefaultGateway() {
    PassOperation("RoutingInfoImpl::GetIpv6KelmConfigDefaultGateway", netstackKey_);
    return Ipv6Address(Cached().gateways.ipv6Config);
}

void RoutingInfoImpl::SetKelmDefaultGateway(Ipv4Address gateway, bool fromDhcp) {
    PassOperation("RoutingInfoImpl::SetKelmDefaultGateway", netstackKey_);
    cache_.reset();
    if (auto* live = HostSim::LiveHost()) {
        live->Routes().SetDefaultGateway(netstackKey_, 4, TextOrNone(gateway), fromDhcp);
        return;
    }
    SetGateway(netstackKey_, 4, gateway.GetStringAddress(), fromDhcp);
}

void RoutingInfoImpl::SetIpv6KelmDefaultGateway(Ipv6Address gateway) {
    PassOperation("RoutingInfoImpl::SetIpv6KelmDefaultGateway", netstackKey_);
    cache_.reset();
    if (auto* live = HostSim::LiveHost()) {
        live->Routes().SetDefaultGateway(netstackKey_, 6, TextOrNone(gateway), false);
        return;
    }
    SetGateway(netstackKey_, 6, gateway.GetStringAddress(), false);
}

std::string RoutingInfoImpl::GetDefaultGatewaySource(Ipv4Network network) {
    PassOperation("RoutingInfoImpl::GetDefaultGatewaySource", netstackKey_);
    Cached();
    Cache& cache = *cache_;
    const std::uint64_t key = SourceKey(network.GetNetwork().GetValue(), network.GetPrefixLength());
    if (cache.next < cache.listed.size() && cache.listed[cache.next].first == key) {
        return cache.listed[cache.next++].second;
    }
    if (network == DEFAULT_IPV4_ROUTE) {
        return cache.gateways.ipv4Source;
    }
    if (auto* live = HostSim::LiveHost(); live != nullptr && cache.listed.empty()) {
        for (const auto& route : live->Routes().LoadAll(netstackKey_, 4)) {
            cache.listed.emplace_back(SourceKey(route.ipv4Network, route.prefixLength),
                                      route.source);
        }
        cache.next = cache.listed.size();
    }
    if (cache.sources.empty()) {
        cache.sources.insert(cache.listed.begin(), cache.listed.end());
    }
    const auto source = cache.sources.find(key);
    return source == cache.sources.end() ? HostSim::Routing::kSourceNone : source->second;
}

void RoutingInfoImpl::AddKelmRoute(Ipv4Network network, Ipv4Address gateway) {
    PassOperation("RoutingInfoImpl::AddKelmRoute", netstackKey_);
    cache_.reset();
    // The kernel checks the route: a network with bits beyond its prefix, a gateway it can't
    // reach, a route it has already.
    if (auto* live = HostSim::LiveHost()) {
        live->Routes().Add(netstackKey_, 4,
                           LiveRoute(network.GetNetwork().GetStringAddress(),
                                     network.GetPrefixLength(), TextOrNone(gateway)));
        return;
    }
    HostSim::Routing::CheckNetwork(network);
    AddRoute(netstackKey_,
             RouteOf(4, network.GetNetwork().GetStringAddress(), network.GetPrefixLength(),
                     gateway.GetStringAddress()),
             network == DEFAULT_IPV4_ROUTE, "route");
}

void RoutingInfoImpl::RemoveKelmRoute(Ipv4Network network, Ipv4Address gateway) {
    PassOperation("RoutingInfoImpl::RemoveKelmRoute", netstackKey_);
    cache_.reset();
    if (auto* live = HostSim::LiveHost()) {
        live->Routes().Remove(netstackKey_, 4,
                              LiveRoute(network.GetNetwork().GetStringAddress(),
                                        network.GetPrefixLength(), TextOrNone(gateway)));
        return;
    }
    RemoveRoute(netstackKey_,
                RouteOf(4, network.GetNetwork().GetStringAddress(), network.GetPrefixLength(),
                        gateway.GetStringAddress()),
                network == DEFAULT_IPV4_ROUTE);
}

void RoutingInfoImpl::AddIpv6KelmRoute(Ipv6Network network, Ipv6Address gateway) {
    PassOperation("RoutingInfoImpl::AddIpv6KelmRoute", netstackKey_);
    cache_.reset();
    if (auto* live = HostSim::LiveHost()) {
        live->Routes().Add(netstackKey_, 6,
                           LiveRoute(network.GetAddress().GetStringAddress(), network.GetNetmask(),
                                     TextOrNone(gateway)));
        return;
    }
    HostSim::Routing::CheckNetwork(network);
    AddRoute(netstackKey_,
             RouteOf(6, network.GetAddress().GetStringAddress(), network.GetNetmask(),
                     gateway.GetStringAddress()),
             network == DEFAULT_IPV6_ROUTE, "IPv6 route");
}

void RoutingInfoImpl::RemoveIpv6KelmRoute(Ipv6Network network, Ipv6Address gateway) {
    PassOperation("RoutingInfoImpl::RemoveIpv6KelmRoute", netstackKey_);
    cache_.reset();
    if (auto* live = HostSim::LiveHost()) {
        live->Routes().Remove(netstackKey_, 6,
                              LiveRoute(network.GetAddress().GetStringAddress(),
                                        network.GetNetmask(), TextOrNone(gateway)));
        return;
    }
    RemoveRoute(netstackKey_,
                RouteOf(6, network.GetAddress().GetStringAddress(), network.GetNetmask(),
                        gateway.GetStringAddress()),
                network == DEFAULT_IPV6_ROUTE);
}

std::vector<HostCtl::Network::Ipv4Route> RoutingInfoImpl::GetCurrentKelmRoutes(
    PortsetGetType type) {
    PassOperation("RoutingInfoImpl::GetCurrentKelmRoutes", netstackKey_);
    if (auto* live = LiveHostFor(type)) {
        const auto routes = live->Routes().LoadAll(netstackKey_, 4);
        // The listing renews the copy: the sources of its rows, and the gateway of the first
        // default route, which is the one in force.
        cache_ = std::make_unique<Cache>();
        Cache& cache = *cache_;
        cache.listed.reserve(routes.size());
        std::vector<HostCtl::Network::Ipv4Route> result;
        result.reserve(routes.size());
        for (const auto& route : routes) {
            auto network = Ipv4Network::FromValue(route.ipv4Network, route.prefixLength);
            if (route.prefixLength == 0 && cache.gateways.ipv4 == "0.0.0.0" &&
                !route.gateway.empty()) {
                cache.gateways.ipv4 = cache.gateways.ipv4Config = route.gateway;
                cache.gateways.ipv4Source = route.source;
            }
            cache.listed.emplace_back(
                SourceKey(network.GetNetwork().GetValue(), route.prefixLength), route.source);
            result.push_back({std::move(network), Ipv4Address::FromValue(route.ipv4Gateway),
                              route.interfaceName});
        }
        return result;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::Routing::RequireNetstack(database, netstackKey_);
    const bool system = type == HostCtl::Network::PortsetGetSystem;
    const auto routes = HostSim::Routing::ReadRoutes(database, netstackKey_, 4, system);
    // The listing renews the copy, so that the sources of its rows need no further reads.
    cache_ = std::make_unique<Cache>();
    Cache& cache = *cache_;
    cache.gateways = HostSim::Routing::ReadGateways(database, netstackKey_);
    cache.listed.reserve(routes.size());
    std::vector<HostCtl::Network::Ipv4Route> result;
    result.reserve(routes.size() + 1);
    if (!system && cache.gateways.ipv4 != "0.0.0.0") {
        const Ipv4Address gateway(cache.gateways.ipv4);
        result.push_back({DEFAULT_IPV4_ROUTE, gateway, ReachingInterface(routes, gateway)});
    }
    for (const Route& route : routes) {
        Ipv4Network network(PrefixText(route.network, route.prefixLength));
        cache.listed.emplace_back(SourceKey(network.GetNetwork().GetValue(), route.prefixLength),
                                  route.source);
        result.push_back({std::move(network), Ipv4Address(route.gateway), route.interfaceName});
    }
    return result;
}

std::vector<HostCtl::Network::Ipv6Route> RoutingInfoImpl::GetCurrentIpv6KelmRoutes(
    PortsetGetType type) {
    PassOperation("RoutingInfoImpl::GetCurrentIpv6KelmRoutes", netstackKey_);
    cache_.reset();
    if (auto* live = LiveHostFor(type)) {
        std::vector<HostCtl::Network::Ipv6Route> result;
        for (const auto& route : live->Routes().LoadAll(netstackKey_, 6)) {
            result.push_back({Ipv6Network(PrefixText(route.network, route.prefixLength)),
                              route.gateway.empty() ? Ipv6Address() : Ipv6Address(route.gateway),
                              route.interfaceName});
        }
        return result;
    }
    const Cache& cache = Cached();
    const bool system = type == HostCtl::Network::PortsetGetSystem;
    const auto routes = HostSim::Routing::ReadRoutes(HostSim::Store(), netstackKey_, 6, system);
    std::vector<HostCtl::Network::Ipv6Route> result;
    result.reserve(routes.size() + 1);
    if (!system && cache.gateways.ipv6 != "::") {
        const Ipv6Address gateway(cache.gateways.ipv6);
        result.push_back({DEFAULT_IPV6_ROUTE, gateway, ReachingInterface(routes, gateway)});
    }
    for (const Route& route : routes) {
        result.push_back({Ipv6Network(PrefixText(route.network, route.prefixLength)),
                          Ipv6Address(route.gateway), route.interfaceName});
    }
    return result;
}

void RoutingInfoImpl::GetCurrentIpv4KelmNeighbors(
    std::vector<HostCtl::Network::Ipv4Neighbor>& neighbors, const std::string& interfaceName,
    PortsetGetType type) {
    PassOperation("RoutingInfoImpl::GetCurrentIpv4KelmNeighbors", netstackKey_);
    if (auto* live = LiveHostFor(type)) {
        for (const auto& entry : live->Neighbors().LoadAll(netstackKey_, 4, interfaceName)) {
            HostCtl::Network::Ipv4Neighbor neighbor;
            neighbor.address = Ipv4Address(entry.address);
            neighbor.macAddress = entry.mac;
            neighbor.interfaceName = entry.interfaceName;
            neighbor.expiry = static_cast<std::int32_t>(entry.expiry);
            neighbor.flags = (entry.state & NUD_PERMANENT) != 0
                                 ? std::uint32_t{HostCtl::Network::Ipv4NeighborStatic}
                                 : 0u;
            neighbors.push_back(std::move(neighbor));
        }
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::Routing::RequireNetstack(database, netstackKey_);
    const bool system = type == HostCtl::Network::PortsetGetSystem;
    for (auto& record :
         HostSim::Routing::ReadIpv4Neighbors(database, netstackKey_, interfaceName, system)) {
        neighbors.push_back(std::move(record));
    }
}

void RoutingInfoImpl::GetCurrentIpv6KelmNeighbors(
    std::vector<HostCtl::Network::Ipv6Neighbor>& neighbors, const std::string& interfaceName,
    PortsetGetType type) {
    PassOperation("RoutingInfoImpl::GetCurrentIpv6KelmNeighbors", netstackKey_);
    // The state is the kernel's, which GetIpv6NeighborState words.
    if (auto* live = LiveHostFor(type)) {
        for (const auto& entry : live->Neighbors().LoadAll(netstackKey_, 6, interfaceName)) {
            HostCtl::Network::Ipv6Neighbor neighbor;
            neighbor.address = Ipv6Address(entry.address);
            neighbor.macAddress = entry.mac;
            neighbor.interfaceName = entry.interfaceName;
            neighbor.expiry = static_cast<std::uint32_t>(entry.expiry);
            neighbor.state = entry.state;
            neighbor.flags =
                ((entry.state & NUD_PERMANENT) != 0
                     ? std::uint32_t{HostCtl::Network::Ipv6NeighborStatic}
                     : 0u) |
                (entry.router ? std::uint32_t{HostCtl::Network::Ipv6NeighborRouter} : 0u);
            neighbors.push_back(std::move(neighbor));
        }
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::Routing::RequireNetstack(database, netstackKey_);
    const bool system = type == HostCtl::Network::PortsetGetSystem;
    for (auto& record :
         HostSim::Routing::ReadIpv6Neighbors(database, netstackKey_, interfaceName, system)) {
        neighbors.push_back(std::move(record));
    }
}

std::string RoutingInfoImpl::GetIpv4NeighborType(HostCtl::Network::Ipv4Neighbor neighbor) {
    PassOperation("RoutingInfoImpl::GetIpv4NeighborType", netstackKey_);
    return HostSim::Routing::NeighborTypeWord(neighbor.flags, false);
}

std::string RoutingInfoImpl::GetIpv6NeighborState(HostCtl::Network::Ipv6Neighbor neighbor) {
    PassOperation("RoutingInfoImpl::GetIpv6NeighborState", netstackKey_);
    if (HostSim::LiveHost() != nullptr) {
        return LiveNeighborState(neighbor.state);
    }
    return HostSim::Routing::Ipv6StateWord(neighbor.state);
}

std::string RoutingInfoImpl::GetIpv6NeighborType(HostCtl::Network::Ipv6Neighbor neighbor) {
    PassOperation("RoutingInfoImpl::GetIpv6NeighborType", netstackKey_);
    return HostSim::Routing::NeighborTypeWord(neighbor.flags, true);
}

void RoutingInfoImpl::RemoveIpv4Neighbor(HostCtl::Network::Ipv4Neighbor neighbor) {
    PassOperation("RoutingInfoImpl::RemoveIpv4Neighbor", netstackKey_);
    if (auto* live = HostSim::LiveHost()) {
        live->Neighbors().Remove(netstackKey_, 4, neighbor.address.GetStringAddress(),
                                 neighbor.interfaceName);
        return;
    }
    RemoveNeighbor(netstackKey_, neighbor, false);
}

void RoutingInfoImpl::RemoveIpv6Neighbor(HostCtl::Network::Ipv6Neighbor neighbor) {
    PassOperation("RoutingInfoImpl::RemoveIpv6Neighbor", netstackKey_);
    if (auto* live = HostSim::LiveHost()) {
        live->Neighbors().Remove(netstackKey_, 6, neighbor.address.GetStringAddress(),
                                 neighbor.interfaceName);
        return;
    }
    RemoveNeighbor(netstackKey_, neighbor, true);
}

}  // namespace KelmCtl::Network
