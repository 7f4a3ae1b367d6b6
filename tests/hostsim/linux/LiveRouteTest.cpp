// The route commands on the live host, in the test's own namespace, against ip route (which
// nobody here wrote) on the same tables.
#include "hostsim/linux/LiveIpTest.h"

namespace {

using nlohmann::json;
using Testing::kNotAvailable;
using Testing::Rows;
using Testing::Str;

class LiveRoute : public Testing::LiveIpTest {
protected:
    // "network/netmask via gateway dev interface" for each row of a route listing.
    static std::vector<std::string> Listed(
        const std::shared_ptr<CppTools::MetaObj::MetaList>& list) {
        std::vector<std::string> rows;
        for (const auto& row : Rows(list)) {
            rows.push_back(Str(row, "Network") + "/" + Str(row, "Netmask") + " via " +
                           Str(row, "Gateway") + " dev " + Str(row, "Interface"));
        }
        return rows;
    }

    // The same for the unicast routes of the main table as ip shows them, a row for each hop of
    // a multipath route.
    std::vector<std::string> IpRoutes(int family, const std::string& namespaceOption = "") {
        const bool ipv6 = family == 6;
        const json routes = WitnessJson("ip -j " + namespaceOption + (ipv6 ? " -6" : " -4") +
                                        " route show table main type unicast");
        const std::string any = ipv6 ? "::" : "0.0.0.0";
        std::vector<std::string> rows;
        for (const json& route : routes) {
            std::string network = route["dst"];
            unsigned prefix = ipv6 ? 128 : 32;
            if (network == "default") {
                network = "default";
                prefix = 0;
            } else if (const auto slash = network.find('/'); slash != std::string::npos) {
                prefix = static_cast<unsigned>(std::stoul(network.substr(slash + 1)));
                network.erase(slash);
            }
            const std::string head = network + "/" + Mask(ipv6 ? AF_INET6 : AF_INET, prefix);
            const json hops = route.contains("nexthops") ? route["nexthops"] : json::array({route});
            for (const json& hop : hops) {
                rows.push_back(head + " via " + hop.value("gateway", any) + " dev " +
                               hop.value("dev", ""));
            }
        }
        return rows;
    }
};

// Every unicast route of the main table, multipath ones hop by hop, each with who made it.
TEST_F(LiveRoute, TheIpv4ListAgreesWithIpAndTellsWhoMadeEachRoute) {
    Witness("ip addr add 203.0.113.1/24 dev v1");
    Witness("ip route add default via 192.0.2.254");
    Witness("ip route add 198.51.100.0/24 via 192.0.2.253 proto dhcp");
    Witness("ip route add 198.51.100.128/25 via 203.0.113.254 proto bgp");
    Witness("ip route add 10.1.0.0/16 nexthop via 192.0.2.252 nexthop via 203.0.113.252");
    Witness("ip route add blackhole 10.9.0.0/16");
    const auto list = RunList({"ip", "route", "ipv4", "list"});
    EXPECT_EQ(Listed(list), IpRoutes(4));
    EXPECT_EQ(Rows(list).size(), 7u);
    const std::vector<std::pair<std::string, std::string>> sources = {{"default", "MANUAL"},
                                                                      {"198.51.100.0", "DHCP"},
                                                                      {"198.51.100.128", "BGP"},
                                                                      {"192.0.2.0", "MANUAL"},
                                                                      {"10.1.0.0", "MANUAL"}};
    for (const auto& [network, source] : sources) {
        EXPECT_EQ(Str(Testing::RowWhere(list, "Network", network), "Source"), source) << network;
    }
}

TEST_F(LiveRoute, TheIpv6ListAgreesWithIp) {
    Witness("ip addr add 2001:db8::1/64 dev v0");
    Witness("ip -6 route add 2001:db8:1::/48 via 2001:db8::fe");
    Witness("ip -6 route add default via 2001:db8::fe dev v0");
    const auto list = RunList({"ip", "route", "ipv6", "list"});
    EXPECT_EQ(Listed(list), IpRoutes(6));
    EXPECT_EQ(Str(Testing::RowWhere(list, "Network", "2001:db8:1::"), "Netmask"),
              "ffff:ffff:ffff::");
    EXPECT_EQ(Str(Testing::RowWhere(list, "Network", "default"), "Gateway"), "2001:db8::fe");
}

// What users do: add a route, see it in ip, remove it; in the whole process too.
TEST_F(LiveRoute, AnAddedRouteIsInIpAndRemovingItTakesItAway) {
    auto has = [this](const std::string& route) {
        const auto routes = IpRoutes(4);
        return std::find(routes.begin(), routes.end(), route) != routes.end();
    };
    const std::string route = "198.51.100.0/255.255.255.0 via 192.0.2.254 dev v0";
    const auto added = LiveAutocli(
        {"network", "ip", "route", "ipv4", "add", "-n", "198.51.100.0/24", "-g", "192.0.2.254"});
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_TRUE(has(route));
    EXPECT_EQ(WitnessJson("ip -j route show 198.51.100.0/24")[0]["protocol"], "static");
    RunOk({"ip", "route", "ipv4", "remove", "-n", "198.51.100.0/24", "-g", "192.0.2.254"});
    EXPECT_FALSE(has(route));
}

// The kernel checks a route, and says what it refuses in its own words.
TEST_F(LiveRoute, WhatTheKernelRefusesItSaysInItsOwnWords) {
    Witness("ip route add 198.51.100.0/24 via 192.0.2.254");
    const std::vector<std::pair<std::vector<std::string>, std::string>> refusals = {
        {{"add", "-n", "203.0.113.0/24", "-g", "198.18.0.1"},
         "Network is unreachable: Nexthop has invalid gateway"},
        {{"add", "-n", "203.0.113.5/24", "-g", "192.0.2.254"},
         "Invalid argument: Invalid prefix for given prefix length"},
        {{"add", "-n", "198.51.100.0/24", "-g", "192.0.2.254"}, "File exists"},
        {{"remove", "-n", "198.51.100.0/24", "-g", "192.0.2.9"}, "No such process"},
        {{"remove", "-n", "203.0.113.0/24", "-g", "192.0.2.254"}, "No such process"},
        {{"list", "-N", "nosuch"}, "There is no netstack instance nosuch"},
        {{"list", "-t", "system"}, kNotAvailable},
    };
    for (const auto& [words, message] : refusals) {
        std::vector<std::string> line = {"ip", "route", "ipv4"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        EXPECT_EQ(RunError(line), message);
    }
    EXPECT_EQ(IpRoutes(4).size(), 2u);
}

// Removing the default route clears the gateway in force; another gateway is no default
// route, and the command says so beside a true root.
TEST_F(LiveRoute, RemovingTheDefaultRouteTakesTheGatewayInForce) {
    RunOk({"ip", "route", "ipv4", "add", "-n", "default", "-g", "192.0.2.254"});
    EXPECT_EQ(WitnessJson("ip -j route show default")[0]["gateway"], "192.0.2.254");

    const auto wrong = Run({"ip", "route", "ipv4", "remove", "-n", "default", "-g", "192.0.2.9"});
    ASSERT_TRUE(wrong.output);
    EXPECT_EQ(wrong.output->GetErrorMessages(),
              std::vector<std::string>{"192.0.2.9 is not a default route."});
    EXPECT_NE(wrong.output->GetRootObject(), nullptr);
    EXPECT_EQ(WitnessJson("ip -j route show default").size(), 1u);

    RunOk({"ip", "route", "ipv4", "remove", "-n", "0.0.0.0/0", "-g", "192.0.2.254"});
    EXPECT_TRUE(WitnessJson("ip -j route show default").empty());
}

// A netstack is a namespace: its routes are that namespace's and no other's.
TEST_F(LiveRoute, ACommandOnANetstackActsInItsNamespace) {
    AddNamespace("lab");
    Witness(
        "ip link set v1 netns lab && ip -n lab link set v1 up && "
        "ip -n lab addr add 203.0.113.1/24 dev v1");
    RunOk({"ip", "route", "ipv4", "add", "-n", "198.51.100.0/24", "-g", "203.0.113.254", "-N",
           "lab"});
    const auto list = RunList({"ip", "route", "ipv4", "list", "-N", "lab"});
    EXPECT_EQ(Listed(list), IpRoutes(4, "-n lab"));
    EXPECT_EQ(Rows(list).size(), 2u);
    EXPECT_TRUE(WitnessJson("ip -j route show 198.51.100.0/24").empty());
    EXPECT_EQ(RunError({"ip", "route", "ipv4", "list", "-N", "lab", "-t", "system"}),
              "Invalid netstack value, should be 'defaultTcpipStack'.");
}

TEST_F(LiveRoute, AnIpv6RouteAddedIsInIpAndRemovingItTakesItAway) {
    Witness("ip addr add 2001:db8::1/64 dev v0");
    RunOk({"ip", "route", "ipv6", "add", "-n", "2001:db8:1::/48", "-g", "2001:db8::fe"});
    EXPECT_EQ(WitnessJson("ip -j -6 route show 2001:db8:1::/48")[0]["gateway"], "2001:db8::fe");
    RunOk({"ip", "route", "ipv6", "remove", "-n", "2001:db8:1::/48", "-g", "2001:db8::fe"});
    EXPECT_TRUE(WitnessJson("ip -j -6 route show 2001:db8:1::/48").empty());
}

TEST_F(LiveRoute, EveryFaultOfTheLiveRouteCommandsEndsInAnError) {
    Witness("ip route add 198.51.100.0/24 via 192.0.2.254");
    SweepTable({
        {{"ip", "route", "ipv4", "list"},
         {"RoutingInfoImpl::GetCurrentKelmRoutes", "RoutingInfoImpl::GetDefaultGatewaySource"}},
        {{"ip", "route", "ipv6", "list"}, {"RoutingInfoImpl::GetCurrentIpv6KelmRoutes"}},
        {{"ip", "route", "ipv4", "add", "-n", "203.0.113.0/24", "-g", "192.0.2.254"},
         {"RoutingInfoImpl::AddKelmRoute"}},
        {{"ip", "route", "ipv4", "remove", "-n", "198.51.100.0/24", "-g", "192.0.2.254"},
         {"RoutingInfoImpl::RemoveKelmRoute"}},
    });
}

}  // namespace
