// The routing subject's records: routes, default gateways and neighbour entries of a netstack
// instance, and their column tables.
#pragma once

#include <cstdint>
#include <string>

#include "hostsim/core/ColumnTable.h"

namespace HostSim::Routing {

inline constexpr const char kSourceManual[] = "MANUAL";
inline constexpr const char kSourceDhcp[] = "DHCP";
inline constexpr const char kSourceNone[] = "N/A";

struct Route {
    int family = 4;       // 4 or 6
    bool system = false;  // a route of the host's system interfaces
    std::string network;  // the network address, canonical text
    unsigned int prefixLength = 0;
    std::string gateway;  // 0.0.0.0 or :: for a network reached directly
    std::string interfaceName;
    std::string source;  // kSourceManual or kSourceDhcp
};

struct Gateways {
    std::string ipv4 = "0.0.0.0";        // in force
    std::string ipv4Config = "0.0.0.0";  // configured
    std::string ipv4Source = kSourceNone;
    std::string ipv6 = "::";
    std::string ipv6Config = "::";
};

// Table routing_route, after its position and netstack instance.
inline constexpr Column<Route> kRouteColumns[] = {
    {.sql = "family", .member = &Route::family},
    {.sql = "system", .member = &Route::system},
    {.sql = "network", .member = &Route::network},
    {.sql = "prefix", .member = &Route::prefixLength},
    {.sql = "gateway", .member = &Route::gateway},
    {.sql = "interface", .member = &Route::interfaceName},
    {.sql = "source", .member = &Route::source},
};

// The gateways of table routing_netstack, after the instance. A profile's gateways are checked
// as they are read.
inline constexpr Column<Gateways> kGatewayColumns[] = {
    {.sql = "ipv4_gateway", .member = &Gateways::ipv4, .json = "ipv4Gateway"},
    {.sql = "ipv4_config_gateway",
     .member = &Gateways::ipv4Config,
     .json = "ipv4ConfiguredGateway"},
    {.sql = "ipv4_source", .member = &Gateways::ipv4Source, .json = "ipv4GatewaySource"},
    {.sql = "ipv6_gateway", .member = &Gateways::ipv6, .json = "ipv6Gateway"},
    {.sql = "ipv6_config_gateway",
     .member = &Gateways::ipv6Config,
     .json = "ipv6ConfiguredGateway"},
};

// An entry of an instance's neighbour table as the store keeps it, in the words of a profile.
struct NeighborRecord {
    int family = 4;
    bool system = false;
    std::string address;
    std::string mac;
    std::string interfaceName;
    std::int64_t expiry = 0;
    std::string type;
    std::string state;  // empty for IPv4
};

// Table routing_neighbor, after its position and instance: the family and kind, which a listing
// selects by, then the entry. A profile tells the family by the address, and has "system" only
// where it is true.
inline constexpr Column<NeighborRecord> kNeighborKindColumns[] = {
    {.sql = "family", .member = &NeighborRecord::family},
    {.sql = "system", .member = &NeighborRecord::system},
};
inline constexpr Column<NeighborRecord> kNeighborColumns[] = {
    {.sql = "address", .member = &NeighborRecord::address, .json = "address", .required = true},
    {.sql = "mac", .member = &NeighborRecord::mac, .json = "mac", .required = true},
    {.sql = "interface",
     .member = &NeighborRecord::interfaceName,
     .json = "interface",
     .required = true},
    {.sql = "expiry", .member = &NeighborRecord::expiry, .json = "expiry", .required = true},
    {.sql = "type", .member = &NeighborRecord::type, .json = "type", .required = true},
    {.sql = "state",
     .member = &NeighborRecord::state,
     .json = "state",
     .nullWhenEmpty = true,
     .omitWhenEmpty = true},
};

}  // namespace HostSim::Routing
