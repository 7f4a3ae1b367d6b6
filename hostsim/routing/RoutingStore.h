// The routing subject's store: the queries and changes of its tables, routes, default gateways,
// neighbour tables, sockets and multicast memberships, per netstack instance.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostctl/IpAddress.h"
#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/routing/RoutingRecord.h"

namespace HostSim::Routing {

// Its section of the built-in default host.
extern const char* const kDefaultSection;

// The routes of an instance of one family and kind, in the order they were made.
std::vector<Route> ReadRoutes(Database& database, const std::string& netstack, int family,
                              bool system);
// Every route of every instance, in the order they were made, with their instance.
std::vector<std::pair<std::string, Route>> ReadAllRoutes(Database& database);
void InsertRoute(Database& database, const std::string& netstack, const Route& route);
// Whether a route to the network and prefix existed.
bool DeleteRoute(Database& database, const std::string& netstack, const Route& route);

Gateways ReadGateways(Database& database, const std::string& netstack);
void WriteGateways(Database& database, const std::string& netstack, const Gateways& gateways);

// The nested tables of an instance, each a JSON array in the form of the profile:
// "connections", "multicast". An instance without a row has empty ones.
Json ReadTable(Database& database, const std::string& netstack, const char* table);
void WriteTable(Database& database, const std::string& netstack, const char* table,
                const Json& rows);
// Every instance that has a row of this subject, in key order.
std::vector<std::string> ReadNetstacks(Database& database);

// A route of a profile, {"network": "192.0.2.0/24", "gateway", "interface", "source",
// "system"}, checked: a network with no bits beyond its prefix, a gateway of the same family.
Route RouteFromJson(const Json& route);
Json RouteToJson(const Route& route);
// Throws HostCtlException when the network in prefix form has bits set beyond its prefix.
void CheckNetwork(const HostCtl::Network::Ipv4Network& network);
void CheckNetwork(const HostCtl::Network::Ipv6Network& network);

// Throws HostCtlException when the host has no netstack instance of that key.
void RequireNetstack(Database& database, const std::string& netstack);
// Drops every row of an instance that is being removed: its routes, gateways, neighbours,
// connections and memberships go with it, as a host's do.
void ForgetNetstack(Database& database, const std::string& netstack);
// Drops the routes through an interface that is being removed, and its neighbours.
void ForgetInterface(Database& database, const std::string& netstack,
                     const std::string& interfaceName);

}  // namespace HostSim::Routing

#include "hostctl/Routing.h"

namespace HostSim::Routing {

// A neighbour entry of the "neighbors" table: {"address", "mac", "interface", "expiry",
// "type": "dynamic", "static" or (IPv6) "router", "state" (IPv6: "incomplete", "reachable",
// "stale", "delay", "probe"), "system"}. The address tells the family.
bool IsIpv6Neighbor(const Json& neighbor);
bool IsSystemNeighbor(const Json& neighbor);
HostCtl::Network::Ipv4Neighbor Ipv4NeighborFromJson(const Json& neighbor);
HostCtl::Network::Ipv6Neighbor Ipv6NeighborFromJson(const Json& neighbor);
// The entry checked and in its normal form; throws HostCtlException naming what is wrong.
Json NormalNeighbor(const Json& neighbor);
// The neighbour table of an instance, a row per entry in the order they were made: adds an
// entry in its normal form, gives the whole table in the form of the profile, and removes the
// entries that are not the system's of a family with the address (on the interface, or on any
// when it is empty), telling whether there were any.
void InsertNeighbor(Database& database, const std::string& netstack, const Json& normal);
Json ReadNeighborTable(Database& database, const std::string& netstack);
bool DeleteNeighbors(Database& database, const std::string& netstack, int family,
                     const std::string& address, const std::string& interfaceName);
// The IPv4 or IPv6 entries of an instance's table, system or not, in their order, on the
// interface `interfaceName` or on any when it is empty.
std::vector<HostCtl::Network::Ipv4Neighbor> ReadIpv4Neighbors(Database& database,
                                                              const std::string& netstack,
                                                              const std::string& interfaceName,
                                                              bool system);
std::vector<HostCtl::Network::Ipv6Neighbor> ReadIpv6Neighbors(Database& database,
                                                              const std::string& netstack,
                                                              const std::string& interfaceName,
                                                              bool system);

// The display words of neighbour states and types.
std::string Ipv6StateWord(std::uint32_t state);
std::string NeighborTypeWord(std::uint32_t flags, bool ipv6);

}  // namespace HostSim::Routing
