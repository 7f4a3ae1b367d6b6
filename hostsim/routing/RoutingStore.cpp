#include "hostsim/routing/RoutingStore.h"

#include <arpa/inet.h>

#include <cstring>

#include "hostctl/HostCtlException.h"

namespace HostSim::Routing {

namespace {

using HostCtl::Lib::HostCtlException;

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
            " ipv4_source, ipv6_gateway, ipv6_config_gateway, connections, multicast)"
            " VALUES (?1, '0.0.0.0', '0.0.0.0', 'N/A', '::', '::', '[]', '[]')")
        .Bind(1, netstack)
        .Run();
}

}  // namespace

std::vector<Route> ReadRoutes(Database& database, const std::string& netstack, int family,
                              bool system) {
    // One pass over the table in its own order: through the unique index the rows would come
    // in network order and need a sort by position, which costs more than the whole table.
    static const std::string sql =
        "SELECT " + ColumnNames(kRouteColumns) +
        " FROM routing_route NOT INDEXED WHERE netstack = ?1 AND family = ?2 AND system = ?3"
        " ORDER BY position";
    auto row = database.Query(sql.c_str());
    row.Bind(1, netstack).Bind(2, family).Bind(3, system ? 1 : 0);
    std::vector<Route> routes;
    while (row.Step()) {
        ReadColumns(row, 0, kRouteColumns, routes.emplace_back());
    }
    return routes;
}

std::vector<std::pair<std::string, Route>> ReadAllRoutes(Database& database) {
    static const std::string sql =
        "SELECT netstack, " + ColumnNames(kRouteColumns) + " FROM routing_route ORDER BY position";
    auto row = database.Query(sql.c_str());
    std::vector<std::pair<std::string, Route>> routes;
    while (row.Step()) {
        ReadColumns(row, 1, kRouteColumns, routes.emplace_back(row.Text(0), Route{}).second);
    }
    return routes;
}

void InsertRoute(Database& database, const std::string& netstack, const Route& route) {
    static const std::string sql = "INSERT INTO routing_route (netstack, " +
                                   ColumnNames(kRouteColumns) + ") VALUES (?1, " +
                                   ColumnParameters(2, std::size(kRouteColumns)) + ")";
    auto insert = database.Query(sql.c_str());
    insert.Bind(1, netstack);
    BindColumns(insert, 2, kRouteColumns, route);
    insert.Run();
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
    static const std::string sql =
        "SELECT " + ColumnNames(kGatewayColumns) + " FROM routing_netstack WHERE netstack = ?1";
    auto row = database.Query(sql.c_str());
    row.Bind(1, netstack);
    Gateways gateways;
    if (row.Step()) {
        ReadColumns(row, 0, kGatewayColumns, gateways);
    }
    return gateways;
}

void WriteGateways(Database& database, const std::string& netstack, const Gateways& gateways) {
    EnsureRow(database, netstack);
    static const std::string sql = "UPDATE routing_netstack SET " +
                                   ColumnAssignments(kGatewayColumns, 2) + " WHERE netstack = ?1";
    auto update = database.Query(sql.c_str());
    update.Bind(1, netstack);
    BindColumns(update, 2, kGatewayColumns, gateways);
    update.Run();
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

namespace {

// The rows of one family's entries of an instance's table, system or not, on one interface or on
// any when it is empty, each read into a record of that family: the fields both families have,
// then what `finish` takes of the rest.
template <class Record, class Address, class Finish>
std::vector<Record> ReadNeighbors(Database& database, const std::string& netstack, int family,
                                  const std::string& interfaceName, bool system, Finish finish) {
    static const std::string sql =
        "SELECT " + ColumnNames(kNeighborColumns) +
        " FROM routing_neighbor WHERE netstack = ?1 AND family = ?2 AND system = ?3"
        " AND (?4 = '' OR interface = ?4) ORDER BY position";
    auto row = database.Query(sql.c_str());
    row.Bind(1, netstack).Bind(2, std::int64_t{family}).Bind(3, std::int64_t{system});
    row.Bind(4, interfaceName);
    std::vector<Record> neighbors;
    NeighborRecord stored;
    while (row.Step()) {
        ReadColumns(row, 0, kNeighborColumns, stored);
        Record& record = neighbors.emplace_back();
        record.address = Address(stored.address);
        record.macAddress = std::move(stored.mac);
        record.interfaceName = std::move(stored.interfaceName);
        record.expiry = static_cast<decltype(record.expiry)>(stored.expiry);
        finish(stored, record);
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
        [](const NeighborRecord& stored, HostCtl::Network::Ipv4Neighbor& record) {
            record.flags = FlagsFromWord(stored.type, false);
        });
}

std::vector<HostCtl::Network::Ipv6Neighbor> ReadIpv6Neighbors(Database& database,
                                                              const std::string& netstack,
                                                              const std::string& interfaceName,
                                                              bool system) {
    return ReadNeighbors<HostCtl::Network::Ipv6Neighbor, Ipv6Address>(
        database, netstack, 6, interfaceName, system,
        [](const NeighborRecord& stored, HostCtl::Network::Ipv6Neighbor& record) {
            record.state = StateFromWord(stored.state.empty() ? "reachable" : stored.state);
            record.flags = FlagsFromWord(stored.type, true);
        });
}

void InsertNeighbor(Database& database, const std::string& netstack, const Json& normal) {
    static const std::string sql =
        "INSERT INTO routing_neighbor (netstack, " + ColumnNames(kNeighborKindColumns) + ", " +
        ColumnNames(kNeighborColumns) + ") VALUES (?1, " +
        ColumnParameters(2, std::size(kNeighborKindColumns) + std::size(kNeighborColumns)) + ")";
    NeighborRecord record;
    ColumnsFromJson(kNeighborColumns, normal, record);
    record.family = IsIpv6Neighbor(normal) ? 6 : 4;
    record.system = IsSystemNeighbor(normal);
    auto insert = database.Query(sql.c_str());
    insert.Bind(1, netstack);
    BindColumns(insert, 2, kNeighborKindColumns, record);
    BindColumns(insert, 2 + std::size(kNeighborKindColumns), kNeighborColumns, record);
    insert.Run();
}

Json ReadNeighborTable(Database& database, const std::string& netstack) {
    static const std::string sql = "SELECT " + ColumnNames(kNeighborKindColumns) + ", " +
                                   ColumnNames(kNeighborColumns) +
                                   " FROM routing_neighbor WHERE netstack = ?1 ORDER BY position";
    auto row = database.Query(sql.c_str());
    row.Bind(1, netstack);
    Json::array_t table;
    NeighborRecord record;
    while (row.Step()) {
        ReadColumns(row, 0, kNeighborKindColumns, record);
        ReadColumns(row, std::size(kNeighborKindColumns), kNeighborColumns, record);
        Json& entry = table.emplace_back(Json::object());
        ColumnsToJson(kNeighborColumns, record, entry);
        if (record.system) {
            entry["system"] = true;
        }
    }
    return Json(std::move(table));
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
