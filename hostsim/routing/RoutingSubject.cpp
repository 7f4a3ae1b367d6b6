// The routing subject: routes, default gateways, neighbour tables, sockets and multicast
// memberships of each netstack instance, the "routing" section of a profile, and its default
// data.
#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Subject.h"
#include "hostsim/routing/RoutingStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;
using Routing::Route;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE routing_route ("
    " position INTEGER PRIMARY KEY, netstack TEXT NOT NULL, family INTEGER NOT NULL,"
    " system INTEGER NOT NULL, network TEXT NOT NULL, prefix INTEGER NOT NULL,"
    " gateway TEXT NOT NULL, interface TEXT NOT NULL, source TEXT NOT NULL,"
    " UNIQUE (netstack, family, system, network, prefix));"
    "CREATE TABLE routing_netstack ("
    " netstack TEXT PRIMARY KEY, ipv4_gateway TEXT NOT NULL, ipv4_config_gateway TEXT NOT NULL,"
    " ipv4_source TEXT NOT NULL, ipv6_gateway TEXT NOT NULL, ipv6_config_gateway TEXT NOT NULL,"
    " neighbors TEXT NOT NULL, connections TEXT NOT NULL, multicast TEXT NOT NULL)"
    " WITHOUT ROWID;",
    // Neighbour tables grow to thousands of entries: a row each, read without parsing the
    // whole table, instead of the JSON column that is left empty.
    "CREATE TABLE routing_neighbor ("
    " position INTEGER PRIMARY KEY, netstack TEXT NOT NULL, family INTEGER NOT NULL,"
    " system INTEGER NOT NULL, address TEXT NOT NULL, mac TEXT NOT NULL,"
    " interface TEXT NOT NULL, expiry INTEGER NOT NULL, type TEXT NOT NULL, state TEXT);"
    "INSERT INTO routing_neighbor (netstack, family, system, address, mac, interface, expiry,"
    " type, state)"
    " SELECT r.netstack, iif(instr(n.value ->> 'address', ':') > 0, 6, 4),"
    " coalesce(n.value ->> 'system', 0), n.value ->> 'address', coalesce(n.value ->> 'mac', ''),"
    " n.value ->> 'interface', coalesce(n.value ->> 'expiry', 0),"
    " coalesce(n.value ->> 'type', 'dynamic'), n.value ->> 'state'"
    " FROM routing_netstack AS r, json_each(r.neighbors) AS n ORDER BY r.netstack, n.key;"
    "UPDATE routing_netstack SET neighbors = '[]';",
    "ALTER TABLE routing_netstack DROP COLUMN neighbors;",
};

constexpr const char* kTables[] = {"routing_neighbor", "routing_route", "routing_netstack"};

constexpr const char* kConnectionStates[] = {"CLOSED",      "LISTEN",     "SYN_SENT",   "RCVD",
                                             "ESTABLISHED", "CLOSE_WAIT", "FIN_WAIT_1", "CLOSING",
                                             "LAST_ACK",    "FIN_WAIT_2", "TIME_WAIT"};

// Copies of a scaled host move their addresses into the benchmarking ranges 198.18.0.0/15 and
// 2001:db8:8000::/33, one address per copied entry, so that copies stay apart.
constexpr std::uint32_t kScaledIpv4Base = 0xC6120000;  // 198.18.0.0
constexpr unsigned kScaledIpv4Count = 1u << 17;

std::string ScaledAddress(int family, unsigned long index) {
    if (family == 4) {
        if (index >= kScaledIpv4Count) {
            throw HostCtlException("The scale is too large for the routing tables: at most " +
                                   std::to_string(kScaledIpv4Count) + " copied IPv4 entries");
        }
        return Ipv4Address::FromValue(kScaledIpv4Base + static_cast<std::uint32_t>(index))
            .GetStringAddress();
    }
    char text[64];
    std::snprintf(text, sizeof text, "2001:db8:8000::%lx:%lx", (index >> 16) & 0xffff,
                  index & 0xffff);
    return Ipv6Address(text).GetStringAddress();
}

bool IsDefault(const Route& route) {
    return route.prefixLength == 0;
}

std::string CheckedAddress(const Json& netstack, const char* key, int family) {
    const std::string text = netstack.value(key, family == 4 ? "0.0.0.0" : "::");
    return family == 4 ? Ipv4Address(text).GetStringAddress()
                       : Ipv6Address(text).GetStringAddress();
}

Routing::Gateways GatewaysFromJson(const Json& netstack) {
    Routing::Gateways gateways;
    gateways.ipv4 = CheckedAddress(netstack, "ipv4Gateway", 4);
    gateways.ipv4Config = CheckedAddress(netstack, "ipv4ConfiguredGateway", 4);
    gateways.ipv4Source =
        netstack.value("ipv4GatewaySource",
                       gateways.ipv4 == "0.0.0.0" ? Routing::kSourceNone : Routing::kSourceManual);
    gateways.ipv6 = CheckedAddress(netstack, "ipv6Gateway", 6);
    gateways.ipv6Config = CheckedAddress(netstack, "ipv6ConfiguredGateway", 6);
    return gateways;
}

Json ConnectionFromJson(const Json& connection) {
    const std::string protocol = connection.at("protocol").get<std::string>();
    if (protocol != "tcp" && protocol != "udp" && protocol != "ip") {
        throw HostCtlException("A connection's \"protocol\" is tcp, udp or ip, not \"" + protocol +
                               "\"");
    }
    const std::string state = connection.value("state", "");
    if (!state.empty() && std::find(std::begin(kConnectionStates), std::end(kConnectionStates),
                                    state) == std::end(kConnectionStates)) {
        throw HostCtlException("A connection's \"state\" \"" + state +
                               "\" is no TCP state (CLOSED to TIME_WAIT), nor empty");
    }
    auto address = [&connection](const char* key) {
        const std::string text = connection.at(key).get<std::string>();
        return text.find(':') != std::string::npos ? Ipv6Address(text).GetStringAddress()
                                                   : Ipv4Address(text).GetStringAddress();
    };
    return {{"protocol", protocol},
            {"recvQueue", connection.value("recvQueue", 0u)},
            {"sendQueue", connection.value("sendQueue", 0u)},
            {"localAddress", address("localAddress")},
            {"localPort", connection.value("localPort", std::uint16_t{0})},
            {"foreignAddress", address("foreignAddress")},
            {"foreignPort", connection.value("foreignPort", std::uint16_t{0})},
            {"state", state},
            {"worldId", connection.at("worldId").get<std::uint32_t>()},
            {"worldName", connection.value("worldName", "")},
            {"ccAlgorithm", connection.value("ccAlgorithm", "")}};
}

Json MembershipFromJson(const Json& membership) {
    return {{"interface", membership.at("interface").get<std::string>()},
            {"group", membership.at("group").get<std::string>()},
            {"linkLayer", membership.value("linkLayer", "")},
            {"refcount", membership.value("refcount", 1)}};
}

// The copy `copy` of an instance's tables: names scaled, addresses moved (see ScaledAddress).
struct Tables {
    std::vector<Route> routes;
    Json neighbors = Json::array();
    Json connections = Json::array();
    Json multicast = Json::array();
};

Tables CopyTables(const Tables& tables, const Scale& scale, unsigned copy, unsigned long& ipv4Index,
                  unsigned long& ipv6Index) {
    if (copy == 0) {
        return tables;
    }
    Tables scaled;
    for (Route route : tables.routes) {
        if (IsDefault(route)) {
            continue;
        }
        route.network = ScaledAddress(route.family, route.family == 4 ? ipv4Index++ : ipv6Index++);
        route.prefixLength = route.family == 4 ? 32 : 128;
        route.interfaceName = scale.Name(route.interfaceName, copy);
        scaled.routes.push_back(route);
    }
    for (Json neighbor : tables.neighbors) {
        const int family = Routing::IsIpv6Neighbor(neighbor) ? 6 : 4;
        neighbor["address"] = ScaledAddress(family, family == 4 ? ipv4Index++ : ipv6Index++);
        neighbor["mac"] = Scale::MacAddress(neighbor.at("mac").get<std::string>(), copy);
        neighbor["interface"] = scale.Name(neighbor.at("interface").get<std::string>(), copy);
        scaled.neighbors.push_back(neighbor);
    }
    scaled.connections = tables.connections;
    for (Json membership : tables.multicast) {
        membership["interface"] = scale.Name(membership.at("interface").get<std::string>(), copy);
        scaled.multicast.push_back(membership);
    }
    return scaled;
}

void ImportSection(Database& database, const Json& section, const Scale& scale) {
    std::set<std::string> keys;
    unsigned long ipv4Index = 0;
    unsigned long ipv6Index = 0;
    // The sockets and memberships of each instance, gathered over all copies and written once.
    struct Sockets {
        Json connections = Json::array();
        Json multicast = Json::array();
    };
    std::map<std::string, Sockets> sockets;
    for (const Json& netstack : ArrayMember(section, "netstacks")) {
        const std::string key = netstack.at("netstack").get<std::string>();
        CheckObjectName(key, "netstack instance");
        if (!keys.insert(key).second) {
            throw HostCtlException("Netstack instance " + key +
                                   " appears twice in the routing section");
        }
        const Routing::Gateways gateways = GatewaysFromJson(netstack);
        Tables tables;
        std::set<std::string> networks;
        for (const Json& json : ArrayMember(netstack, "routes")) {
            Route route = Routing::RouteFromJson(json);
            const std::string network = json.at("network").get<std::string>();
            if (IsDefault(route)) {
                throw HostCtlException("The default route of netstack " + key +
                                       " is its gateway, not a route: " + network);
            }
            if (!networks
                     .insert(std::to_string(route.system) + route.network + "/" +
                             std::to_string(route.prefixLength))
                     .second) {
                throw HostCtlException("Netstack " + key + " has two routes to " + network);
            }
            tables.routes.push_back(route);
        }
        for (const Json& neighbor : ArrayMember(netstack, "neighbors")) {
            tables.neighbors.push_back(Routing::NormalNeighbor(neighbor));
        }
        for (const Json& connection : ArrayMember(netstack, "connections")) {
            tables.connections.push_back(ConnectionFromJson(connection));
        }
        for (const Json& membership : ArrayMember(netstack, "multicast")) {
            tables.multicast.push_back(MembershipFromJson(membership));
        }
        for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
            const std::string target = scale.Name(key, copy);
            Routing::RequireNetstack(database, target);
            const Tables copied = CopyTables(tables, scale, copy, ipv4Index, ipv6Index);
            if (copy == 0 || target != key) {
                Routing::WriteGateways(database, target, gateways);
            }
            for (const Route& route : copied.routes) {
                Routing::InsertRoute(database, target, route);
            }
            for (const Json& neighbor : copied.neighbors) {
                Routing::InsertNeighbor(database, target, neighbor);
            }
            Sockets& into = sockets[target];
            into.connections.insert(into.connections.end(), copied.connections.begin(),
                                    copied.connections.end());
            into.multicast.insert(into.multicast.end(), copied.multicast.begin(),
                                  copied.multicast.end());
        }
    }
    for (const auto& [target, gathered] : sockets) {
        Routing::WriteTable(database, target, "connections", gathered.connections);
        Routing::WriteTable(database, target, "multicast", gathered.multicast);
    }
}

Json ExportSection(Database& database) {
    Json netstacks = Json::array();
    const auto routes = Routing::ReadAllRoutes(database);
    for (const std::string& key : Routing::ReadNetstacks(database)) {
        const Routing::Gateways gateways = Routing::ReadGateways(database, key);
        Json netstack = {{"netstack", key}};
        ColumnsToJson(Routing::kGatewayColumns, gateways, netstack);
        Json list = Json::array();
        for (const auto& [owner, route] : routes) {
            if (owner == key) {
                list.push_back(Routing::RouteToJson(route));
            }
        }
        netstack["routes"] = list;
        netstack["neighbors"] = Routing::ReadNeighborTable(database, key);
        netstack["connections"] = Routing::ReadTable(database, key, "connections");
        netstack["multicast"] = Routing::ReadTable(database, key, "multicast");
        netstacks.push_back(netstack);
    }
    return {{"netstacks", netstacks}};
}

}  // namespace

extern const Subject routingSubject;
const Subject routingSubject = {
    .name = "routing",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Routing::kDefaultSection,
    .importSection = ImportSection,
    .exportSection = ExportSection,
};

}  // namespace HostSim
