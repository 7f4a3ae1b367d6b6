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
    if (std::strcmp(table, "neighbors") == 0) {
        return database.Query("SELECT neighbors FROM routing_netstack WHERE netstack = ?1");
    }
    if (std::strcmp(table, "connections") == 0) {
        return database.Query("SELECT connections FROM routing_netstack WHERE netstack = ?1");
    }
    return database.Query("SELECT multicast FROM routing_netstack WHERE netstack = ?1");
}

Statement UpdateTable(Database& database, const char* table) {
    if (std::strcmp(table, "neighbors") == 0) {
        return database.Query("UPDATE routing_netstack SET neighbors = ?2 WHERE netstack = ?1");
    }
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
    database.Query("DELETE FROM routing_netstack WHERE netstack = ?1").Bind(1, netstack).Run();
}

void ForgetInterface(Database& database, const std::string& netstack,
                     const std::string& interfaceName) {
    database.Query("DELETE FROM routing_route WHERE netstack = ?1 AND interface = ?2")
        .Bind(1, netstack)
        .Bind(2, interfaceName)
        .Run();
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

// The fields of a stored entry, in its normal form.
struct NeighborFields {
    std::string address;
    std::string mac;
    std::string interfaceName;
    std::int64_t expiry = 0;
    std::string type = "dynamic";
    std::string state = "reachable";
    bool system = false;
};

// Reads a stored table entry by entry, as the parser meets them, without making it a Json: a
// listing of a large table would spend most of its time on that.
template <class Visit>
class NeighborReader : public nlohmann::json_sax<Json> {
public:
    explicit NeighborReader(Visit& visit) : visit_(visit) {}

    bool null() override { return true; }
    bool boolean(bool value) override {
        if (key_ == "system") {
            entry_.system = value;
        }
        return true;
    }
    bool number_integer(number_integer_t value) override {
        if (key_ == "expiry") {
            entry_.expiry = value;
        }
        return true;
    }
    bool number_unsigned(number_unsigned_t value) override {
        return number_integer(static_cast<number_integer_t>(value));
    }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t& value) override {
        if (key_ == "address") {
            entry_.address = std::move(value);
        } else if (key_ == "mac") {
            entry_.mac = std::move(value);
        } else if (key_ == "interface") {
            entry_.interfaceName = std::move(value);
        } else if (key_ == "type") {
            entry_.type = std::move(value);
        } else if (key_ == "state") {
            entry_.state = std::move(value);
        }
        return true;
    }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override {
        if (++depth_ == 2) {
            entry_ = NeighborFields();
        }
        return true;
    }
    bool key(string_t& value) override {
        key_ = std::move(value);
        return true;
    }
    bool end_object() override {
        if (depth_-- == 2) {
            visit_(entry_);
        }
        key_.clear();
        return true;
    }
    bool start_array(std::size_t) override {
        ++depth_;
        return true;
    }
    bool end_array() override {
        --depth_;
        return true;
    }
    bool parse_error(std::size_t, const std::string&,
                     const nlohmann::detail::exception& error) override {
        throw HostCtlException(std::string("The neighbor table can't be read: ") + error.what());
    }

private:
    Visit& visit_;
    NeighborFields entry_;
    std::string key_;
    int depth_ = 0;
};

template <class Visit>
void ReadNeighborFields(Database& database, const std::string& netstack, Visit visit) {
    auto row = database.Query("SELECT neighbors FROM routing_netstack WHERE netstack = ?1");
    row.Bind(1, netstack);
    if (row.Step()) {
        NeighborReader<Visit> reader(visit);
        Json::sax_parse(row.Text(0), &reader);
    }
}

// Whether an entry is of the family and kind asked for, on the interface asked for.
bool Wanted(const NeighborFields& entry, bool ipv6, bool system, const std::string& interfaceName) {
    return (entry.address.find(':') != std::string::npos) == ipv6 && entry.system == system &&
           (interfaceName.empty() || entry.interfaceName == interfaceName);
}

}  // namespace

std::vector<HostCtl::Network::Ipv4Neighbor> ReadIpv4Neighbors(Database& database,
                                                              const std::string& netstack,
                                                              const std::string& interfaceName,
                                                              bool system) {
    std::vector<HostCtl::Network::Ipv4Neighbor> neighbors;
    ReadNeighborFields(database, netstack, [&](NeighborFields& entry) {
        if (Wanted(entry, false, system, interfaceName)) {
            HostCtl::Network::Ipv4Neighbor& record = neighbors.emplace_back();
            record.address = Ipv4Address(entry.address);
            record.macAddress = std::move(entry.mac);
            record.interfaceName = std::move(entry.interfaceName);
            record.expiry = static_cast<decltype(record.expiry)>(entry.expiry);
            record.flags = FlagsFromWord(entry.type, false);
        }
    });
    return neighbors;
}

std::vector<HostCtl::Network::Ipv6Neighbor> ReadIpv6Neighbors(Database& database,
                                                              const std::string& netstack,
                                                              const std::string& interfaceName,
                                                              bool system) {
    std::vector<HostCtl::Network::Ipv6Neighbor> neighbors;
    ReadNeighborFields(database, netstack, [&](NeighborFields& entry) {
        if (Wanted(entry, true, system, interfaceName)) {
            HostCtl::Network::Ipv6Neighbor& record = neighbors.emplace_back();
            record.address = Ipv6Address(entry.address);
            record.macAddress = std::move(entry.mac);
            record.interfaceName = std::move(entry.interfaceName);
            record.expiry = static_cast<decltype(record.expiry)>(entry.expiry);
            record.state = StateFromWord(entry.state);
            record.flags = FlagsFromWord(entry.type, true);
        }
    });
    return neighbors;
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
