#include "hostsim/routing/RoutingStore.h"

#include <arpa/inet.h>

#include <cstring>

#include "hostctl/HostCtlException.h"

namespace HostSim::Routing {

namespace {

using HostCtl::Lib::HostCtlException;

Route RouteFromRow(const Statement& row, int first) {
    Route route;
    route.family = static_cast<int>(row.Int(first));
    route.system = row.Bool(first + 1);
    route.network = row.Text(first + 2);
    route.prefixLength = static_cast<unsigned int>(row.Int(first + 3));
    route.gateway = row.Text(first + 4);
    route.interfaceName = row.Text(first + 5);
    route.source = row.Text(first + 6);
    return route;
}

// The statement that reads one nested table of an instance; the column can't be a parameter.
Statement SelectTable(Database& database, const char* table) {
    if (std::strcmp(table, "connections") == 0) {
        return database.Query("SELECT connections FROM routing_netstack WHERE netstack = ?1");
    }
    return database.Query("SELECT multicast FROM routing_netstack WHERE netstack = ?1");
}

Statement UpdateTable(Database& database, const char* table) {
    if (std::strcmp(table, "connections") == 0) {
        return database.Query("UPDATE routing_netstack SET connections = ?2 WHERE netstack = ?1");
    }
    return database.Query("UPDATE routing_netstack SET multicast = ?2 WHERE netstack = ?1");
}

// Gives the instance its row, with no gateways and empty tables, when it has none.
void EnsureRow(Database& database, const std::string& netstack) {
    database
        .Query(
            "INSERT OR IGNORE INTO routing_netstack (netstack, ipv4_gateway, ipv4_config_gateway,"
            " ipv4_source, ipv6_gateway, ipv6_config_gateway, neighbors, connections, multicast)"
            " VALUES (?1, '0.0.0.0', '0.0.0.0', 'N/A', '::', '::', '[]', '[]', '[]')")
        .Bind(1, netstack)
        .Run();
}

}  // namespace

std::vector<Route> ReadRoutes(Database& database, const std::string& netstack, int family,
                              bool system) {
    // One pass over the table in its own order: through the unique index the rows would come
    // in network order and need a sort by position, which costs more than the whole table.
    auto row = database.Query(
        "SELECT family, system, network, prefix, gateway, interface, source FROM routing_route"
        " NOT INDEXED WHERE netstack = ?1 AND family = ?2 AND system = ?3 ORDER BY position");
    row.Bind(1, netstack).Bind(2, family).Bind(3, system ? 1 : 0);
    std::vector<Route> routes;
    while (row.Step()) {
        routes.push_back(RouteFromRow(row, 0));
    }
    return routes;
}

std::vector<std::pair<std::string, Route>> ReadAllRoutes(Database& database) {
    auto row = database.Query(
        "SELECT netstack, family, system, network, prefix, gateway, interface, source"
        " FROM routing_route ORDER BY position");
    std::vector<std::pair<std::string, Route>> routes;
    while (row.Step()) {
        routes.emplace_back(row.Text(0), RouteFromRow(row, 1));
    }
    return routes;
}

void InsertRoute(Database& database, const std::string& netstack, const Route& route) {
    database
        .Query(
            "INSERT INTO routing_route (netstack, family, system, network, prefix, gateway,"
            " interface, source) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)")
        .Bind(1, netstack)
        .Bind(2, route.family)
        .Bind(3, route.system ? 1 : 0)
        .Bind(4, route.network)
        .Bind(5, static_cast<std::int64_t>(route.prefixLength))
        .Bind(6, route.gateway)
        .Bind(7, route.interfaceName)
        .Bind(8, route.source)
        .Run();
}

bool DeleteRoute(Database& database, const std::string& netstack, const Route& route) {
    database
        .Query(
            "DELETE FROM routing_route WHERE netstack = ?1 AND family = ?2 AND system = ?3"
            " AND network = ?4 AND prefix = ?5")
        .Bind(1, netstack)
        .Bind(2, route.family)
        .Bind(3, route.system ? 1 : 0)
        .Bind(4, route.network)
        .Bind(5, static_cast<std::int64_t>(route.prefixLength))
        .Run();
    return database.Changes() > 0;
}

Gateways ReadGateways(Database& database, const std::string& netstack) {
    auto row = database.Query(
        "SELECT ipv4_gateway, ipv4_config_gateway, ipv4_source, ipv6_gateway,"
        " ipv6_config_gateway FROM routing_netstack WHERE netstack = ?1");
    row.Bind(1, netstack);
    Gateways gateways;
    if (row.Step()) {
        gateways.ipv4 = row.Text(0);
        gateways.ipv4Config = row.Text(1);
        gateways.ipv4Source = row.Text(2);
        gateways.ipv6 = row.Text(3);
        gateways.ipv6Config = row.Text(4);
    }
    return gateways;
}

void WriteGateways(Database& database, const std::string& netstack, const Gateways& gateways) {
    EnsureRow(database, netstack);
    database
        .Query(
            "UPDATE routing_netstack SET ipv4_gateway = ?2, ipv4_config_gateway = ?3,"
            " ipv4_source = ?4, ipv6_gateway = ?5, ipv6_config_gateway = ?6"
            " WHERE netstack = ?1")
        .Bind(1, netstack)
        .Bind(2, gateways.ipv4)
        .Bind(3, gateways.ipv4Config)
        .Bind(4, gateways.ipv4Source)
        .Bind(5, gateways.ipv6)
        .Bind(6, gateways.ipv6Config)
        .Run();
}

Json ReadTable(Database& database, const std::string& netstack, const char* table) {
    auto row = SelectTable(database, table);
    row.Bind(1, netstack);
    if (!row.Step()) {
        return Json::array();
    }
    return Json::parse(row.Text(0));
}

void WriteTable(Database& database, const std::string& netstack, const char* table,
                const Json& rows) {
    EnsureRow(database, netstack);
    UpdateTable(database, table).Bind(1, netstack).Bind(2, rows.dump()).Run();
}

std::vector<std::string> ReadNetstacks(Database& database) {
    auto row = database.Query("SELECT netstack FROM routing_netstack ORDER BY netstack");
    std::vector<std::string> netstacks;
    while (row.Step()) {
        netstacks.push_back(row.Text(0));
    }
    return netstacks;
}

void RequireNetstack(Database& database, const std::string& netstack) {
    if (!database.Query("SELECT 1 FROM netstack WHERE key = ?1").Bind(1, netstack).Step()) {
        throw HostCtlException("There is no netstack instance named " + netstack);
    }
}

void ForgetNetstack(Database& database, const std::string& netstack) {
    database.Query("DELETE FROM routing_route WHERE netstack = ?1").Bind(1, netstack).Run();
    database.Query("DELETE FROM routing_neighbor WHERE netstack = ?1").Bind(1, netstack).Run();
    database.Query("DELETE FROM routing_netstack WHERE netstack = ?1").Bind(1, netstack).Run();
}

void ForgetInterface(Database& database, const std::string& netstack,
                     const std::string& interfaceName) {
    for (const char* sql :
         {"DELETE FROM routing_route WHERE netstack = ?1 AND interface = ?2",
          "DELETE FROM routing_neighbor WHERE netstack = ?1 AND interface = ?2"}) {
        database.Query(sql).Bind(1, netstack).Bind(2, interfaceName).Run();
    }
}

}  // namespace HostSim::Routing

namespace HostSim::Routing {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;

constexpr const char* kStateWords[] = {"incomplete", "reachable", "stale", "delay", "probe"};
constexpr const char* kStateNames[] = {"Incomplete", "Reachable", "Stale", "Delay", "Probe"};

std::uint32_t StateFromWord(const std::string& word) {
    for (std::uint32_t state = 0; state < std::size(kStateWords); ++state) {
        if (word == kStateWords[state]) {
            return state;
        }
    }
    throw HostCtlException(
        "A neighbor's \"state\" is incomplete, reachable, stale, delay or "
        "probe, not \"" +
        word + "\"");
}

std::uint32_t FlagsFromWord(const std::string& word, bool ipv6) {
    if (word == "dynamic") {
        return 0;
    }
    if (word == "static") {
        return ipv6 ? std::uint32_t{HostCtl::Network::Ipv6NeighborStatic}
                    : std::uint32_t{HostCtl::Network::Ipv4NeighborStatic};
    }
    if (ipv6 && word == "router") {
        return HostCtl::Network::Ipv6NeighborRouter;
    }
    throw HostCtlException(std::string("A neighbor's \"type\" is ") +
                           (ipv6 ? "dynamic, static or router" : "dynamic or static") + ", not \"" +
                           word + "\"");
}

}  // namespace

bool IsIpv6Neighbor(const Json& neighbor) {
    return neighbor.at("address").get<std::string>().find(':') != std::string::npos;
}

bool IsSystemNeighbor(const Json& neighbor) {
    return neighbor.value("system", false);
}

HostCtl::Network::Ipv4Neighbor Ipv4NeighborFromJson(const Json& neighbor) {
    HostCtl::Network::Ipv4Neighbor record;
    record.address = Ipv4Address(neighbor.at("address").get<std::string>());
    record.macAddress = neighbor.value("mac", "");
    record.interfaceName = neighbor.at("interface").get<std::string>();
    record.expiry = neighbor.value("expiry", 0);
    record.flags = FlagsFromWord(neighbor.value("type", "dynamic"), false);
    return record;
}

HostCtl::Network::Ipv6Neighbor Ipv6NeighborFromJson(const Json& neighbor) {
    HostCtl::Network::Ipv6Neighbor record;
    record.address = Ipv6Address(neighbor.at("address").get<std::string>());
    record.macAddress = neighbor.value("mac", "");
    record.interfaceName = neighbor.at("interface").get<std::string>();
    record.expiry = neighbor.value("expiry", 0u);
    record.state = StateFromWord(neighbor.value("state", "reachable"));
    record.flags = FlagsFromWord(neighbor.value("type", "dynamic"), true);
    return record;
}

// The entries of one family of an instance's table, system or not, on the interface ?4 or on
// any when it is ''.
constexpr const char kSelectNeighbors[] =
    "SELECT address, mac, interface, expiry, type, state FROM routing_neighbor"
    " WHERE netstack = ?1 AND family = ?2 AND system = ?3 AND (?4 = '' OR interface = ?4)"
    " ORDER BY position";

namespace {

// The rows of one family's entries, each read into a record of that family: the columns both
// families have, then what `finish` reads of the rest.
template <class Record, class Address, class Finish>
std::vector<Record> ReadNeighbors(Database& database, const std::string& netstack, int family,
                                  const std::string& interfaceName, bool system, Finish finish) {
    auto row = database.Query(kSelectNeighbors);
    row.Bind(1, netstack).Bind(2, std::int64_t{family}).Bind(3, std::int64_t{system});
    row.Bind(4, interfaceName);
    std::vector<Record> neighbors;
    while (row.Step()) {
        Record& record = neighbors.emplace_back();
        record.address = Address(row.Text(0));
        record.macAddress = row.Text(1);
        record.interfaceName = row.Text(2);
        record.expiry = static_cast<decltype(record.expiry)>(row.Int(3));
        finish(row, record);
    }
    return neighbors;
}

}  // namespace

std::vector<HostCtl::Network::Ipv4Neighbor> ReadIpv4Neighbors(Database& database,
                                                              const std::string& netstack,
                                                              const std::string& interfaceName,
                                                              bool system) {
    return ReadNeighbors<HostCtl::Network::Ipv4Neighbor, Ipv4Address>(
        database, netstack, 4, interfaceName, system,
        [](const Statement& row, HostCtl::Network::Ipv4Neighbor& record) {
            record.flags = FlagsFromWord(row.Text(4), false);
        });
}

std::vector<HostCtl::Network::Ipv6Neighbor> ReadIpv6Neighbors(Database& database,
                                                              const std::string& netstack,
                                                              const std::string& interfaceName,
                                                              bool system) {
    return ReadNeighbors<HostCtl::Network::Ipv6Neighbor, Ipv6Address>(
        database, netstack, 6, interfaceName, system,
        [](const Statement& row, HostCtl::Network::Ipv6Neighbor& record) {
            record.state = StateFromWord(row.IsNull(5) ? "reachable" : row.Text(5));
            record.flags = FlagsFromWord(row.Text(4), true);
        });
}

void InsertNeighbor(Database& database, const std::string& netstack, const Json& normal) {
    const bool ipv6 = IsIpv6Neighbor(normal);
    auto insert = database.Query(
        "INSERT INTO routing_neighbor (netstack, family, system, address, mac, interface, expiry,"
        " type, state) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
    insert.Bind(1, netstack)
        .Bind(2, std::int64_t{ipv6 ? 6 : 4})
        .Bind(3, std::int64_t{IsSystemNeighbor(normal)})
        .Bind(4, normal.at("address").get<std::string>())
        .Bind(5, normal.at("mac").get<std::string>())
        .Bind(6, normal.at("interface").get<std::string>())
        .Bind(7, normal.at("expiry").get<std::int64_t>())
        .Bind(8, normal.at("type").get<std::string>());
    if (ipv6) {
        insert.Bind(9, normal.at("state").get<std::string>());
    }
    insert.Run();
}

Json ReadNeighborTable(Database& database, const std::string& netstack) {
    auto row = database.Query(
        "SELECT family, system, address, mac, interface, expiry, type, state"
        " FROM routing_neighbor WHERE netstack = ?1 ORDER BY position");
    row.Bind(1, netstack);
    Json table = Json::array();
    while (row.Step()) {
        Json entry = {{"address", row.Text(2)},
                      {"mac", row.Text(3)},
                      {"interface", row.Text(4)},
                      {"expiry", row.Int(5)},
                      {"type", row.Text(6)}};
        if (row.Int(0) == 6) {
            entry["state"] = row.Text(7);
        }
        if (row.Bool(1)) {
            entry["system"] = true;
        }
        table.push_back(std::move(entry));
    }
    return table;
}

bool DeleteNeighbors(Database& database, const std::string& netstack, int family,
                     const std::string& address, const std::string& interfaceName) {
    database
        .Query(
            "DELETE FROM routing_neighbor WHERE netstack = ?1 AND family = ?2 AND system = 0"
            " AND address = ?3 AND (?4 = '' OR interface = ?4)")
        .Bind(1, netstack)
        .Bind(2, std::int64_t{family})
        .Bind(3, address)
        .Bind(4, interfaceName)
        .Run();
    return database.Changes() > 0;
}

Json NormalNeighbor(const Json& neighbor) {
    Json normal;
    if (IsIpv6Neighbor(neighbor)) {
        const auto record = Ipv6NeighborFromJson(neighbor);
        normal = {{"address", record.address.GetStringAddress()},
                  {"mac", record.macAddress},
                  {"interface", record.interfaceName},
                  {"expiry", record.expiry},
                  {"type", neighbor.value("type", "dynamic")},
                  {"state", kStateWords[record.state]}};
    } else {
        const auto record = Ipv4NeighborFromJson(neighbor);
        normal = {{"address", record.address.GetStringAddress()},
                  {"mac", record.macAddress},
                  {"interface", record.interfaceName},
                  {"expiry", record.expiry},
                  {"type", neighbor.value("type", "dynamic")}};
    }
    if (IsSystemNeighbor(neighbor)) {
        normal["system"] = true;
    }
    return normal;
}

std::string Ipv6StateWord(std::uint32_t state) {
    return state < std::size(kStateNames) ? kStateNames[state] : "Unknown";
}

std::string NeighborTypeWord(std::uint32_t flags, bool ipv6) {
    const std::uint32_t staticFlag = ipv6 ? std::uint32_t{HostCtl::Network::Ipv6NeighborStatic}
                                          : std::uint32_t{HostCtl::Network::Ipv4NeighborStatic};
    if ((flags & staticFlag) != 0) {
        return "Static";
    }
    if (ipv6 && (flags & HostCtl::Network::Ipv6NeighborRouter) != 0) {
        return "Router";
    }
    return "Dynamic";
}

}  // namespace HostSim::Routing

namespace HostSim::Routing {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv4Network;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;

namespace {

std::string PrefixText(const std::string& network, unsigned int prefixLength) {
    return network + "/" + std::to_string(prefixLength);
}

}  // namespace

// Bits set beyond the prefix make no network: the host refuses them rather than guess.
void CheckNetwork(const Ipv4Network& network) {
    const std::uint32_t mask = network.GetNetmask().GetValue();
    const std::uint32_t address = network.GetNetwork().GetValue();
    if ((address & ~mask) != 0) {
        throw HostCtlException(
            "Invalid network " + network.GetStringAddress() + ": bits are set beyond the /" +
            std::to_string(network.GetPrefixLength()) + " prefix, the network is " +
            PrefixText(Ipv4Address::FromValue(address & mask).GetStringAddress(),
                       network.GetPrefixLength()));
    }
}

void CheckNetwork(const Ipv6Network& network) {
    auto bytes = network.GetAddress().GetBytes();
    bool hostBits = false;
    for (unsigned int bit = network.GetNetmask(); bit < 128; ++bit) {
        const auto mask = static_cast<std::uint8_t>(0x80u >> (bit % 8));
        hostBits = hostBits || (bytes[bit / 8] & mask) != 0;
        bytes[bit / 8] &= static_cast<std::uint8_t>(~mask);
    }
    if (hostBits) {
        char masked[INET6_ADDRSTRLEN];
        inet_ntop(AF_INET6, bytes.data(), masked, sizeof masked);
        throw HostCtlException("Invalid network " + network.GetStringAddress() +
                               ": bits are set beyond the /" +
                               std::to_string(network.GetNetmask()) + " prefix, the network is " +
                               PrefixText(masked, network.GetNetmask()));
    }
}

Route RouteFromJson(const Json& json) {
    Route route;
    const std::string network = json.at("network").get<std::string>();
    route.gateway = json.at("gateway").get<std::string>();
    if (network.find(':') != std::string::npos) {
        const Ipv6Network parsed(network);
        CheckNetwork(parsed);
        route.family = 6;
        route.network = parsed.GetAddress().GetStringAddress();
        route.prefixLength = parsed.GetNetmask();
        route.gateway = Ipv6Address(route.gateway).GetStringAddress();
    } else {
        const Ipv4Network parsed(network);
        CheckNetwork(parsed);
        route.network = parsed.GetNetwork().GetStringAddress();
        route.prefixLength = parsed.GetPrefixLength();
        route.gateway = Ipv4Address(route.gateway).GetStringAddress();
    }
    route.interfaceName = json.at("interface").get<std::string>();
    route.source = json.value("source", kSourceManual);
    if (route.source != kSourceManual && route.source != kSourceDhcp) {
        throw HostCtlException("The source of the route to " + network +
                               " is MANUAL or DHCP, not \"" + route.source + "\"");
    }
    route.system = json.value("system", false);
    return route;
}

Json RouteToJson(const Route& route) {
    Json json = {{"network", PrefixText(route.network, route.prefixLength)},
                 {"gateway", route.gateway},
                 {"interface", route.interfaceName},
                 {"source", route.source}};
    if (route.system) {
        json["system"] = true;
    }
    return json;
}

}  // namespace HostSim::Routing
