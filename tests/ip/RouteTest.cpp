// Routes of the netstack instances: what the lists show, the default route as the instance's
// default gateway, changes on another instance, and the host's refusals.
#include "IpServicesTest.h"

namespace {

using IpServicesTesting::Words;

const Words kIpv4Fields{"Network", "Netmask", "Gateway", "Interface", "Source"};
const Words kIpv6Fields{"Network", "Netmask", "Gateway", "Interface"};

class Route : public IpServicesTesting::IpServicesTest {
protected:
    std::vector<Words> Ipv4(const Words& parameters = {}) {
        Words words{"ip", "route", "ipv4", "list"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return Table(words, kIpv4Fields);
    }
    std::vector<Words> Ipv6(const Words& parameters = {}) {
        Words words{"ip", "route", "ipv6", "list"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return Table(words, kIpv6Fields);
    }
};

TEST_F(Route, ListsShowEachInstanceWithItsDefaultRouteFirst) {
    EXPECT_EQ(Ipv4(), (std::vector<Words>{
                          {"default", "0.0.0.0", "192.0.2.1", "kelm0", "MANUAL"},
                          {"192.0.2.0", "255.255.255.0", "0.0.0.0", "kelm0", "MANUAL"},
                          {"203.0.113.64", "255.255.255.192", "192.0.2.254", "kelm0", "MANUAL"},
                      }));
    EXPECT_EQ(Ipv4({"-N", "glidex"}),
              (std::vector<Words>{
                  {"default", "0.0.0.0", "198.51.100.1", "kelm1", "DHCP"},
                  {"198.51.100.0", "255.255.255.0", "0.0.0.0", "kelm1", "DHCP"},
                  {"203.0.113.128", "255.255.255.128", "198.51.100.254", "kelm1", "MANUAL"},
              }));
    EXPECT_EQ(
        Ipv4({"-t", "system", "-N", "defaultTcpipStack"}),
        (std::vector<Words>{{"203.0.113.0", "255.255.255.240", "0.0.0.0", "kelm9", "MANUAL"}}));
    EXPECT_EQ(Ipv6(),
              (std::vector<Words>{
                  {"default", "::", "2001:db8:0:1::1", "kelm0"},
                  {"2001:db8:0:1::", "ffff:ffff:ffff:ffff::", "::", "kelm0"},
                  {"2001:db8:0:100::", "ffff:ffff:ffff:ff00::", "2001:db8:0:1::fe", "kelm0"},
              }));
    EXPECT_EQ(Ipv6({"--type=system"}),
              (std::vector<Words>{{"2001:db8:0:ff::", "ffff:ffff:ffff:ffff::", "::", "kelm9"}}));
}

TEST_F(Route, ARouteAddedOnAnotherInstanceShowsThereOnly) {
    Change({"ip", "route", "ipv4", "add", "-n", "203.0.113.16/28", "-g", "198.51.100.7", "-N",
            "glidex"});
    const Words added{"203.0.113.16", "255.255.255.240", "198.51.100.7", "kelm1", "MANUAL"};
    EXPECT_EQ(Ipv4({"-N", "glidex"}).back(), added);
    EXPECT_EQ(Ipv4().size(), 3u);
    Change({"ip", "route", "ipv4", "remove", "-n", "203.0.113.16/28", "-g", "198.51.100.7", "-N",
            "glidex"});
    EXPECT_EQ(Ipv4({"-N", "glidex"}).size(), 3u);

    // The routes through an interface, and its neighbours, go with it.
    Change({"ip", "interface", "remove", "-i", "kelm1"});
    for (const Words& route : Ipv4({"-N", "glidex"})) {
        EXPECT_EQ(route.front(), "default") << ::testing::PrintToString(route);
    }
    EXPECT_TRUE(Table({"ip", "neighbor", "list", "-N", "glidex"}, {"Kelmnic"}).empty());
}

TEST_F(Route, Ipv6PrefixShowsAsAMask) {
    Change({"ip", "route", "ipv6", "add", "-n", "2001:db8:aa::/48", "-g", "2001:db8:0:1::fe"});
    EXPECT_EQ(Ipv6().back(),
              (Words{"2001:db8:aa::", "ffff:ffff:ffff::", "2001:db8:0:1::fe", "kelm0"}));
    Change({"ip", "route", "ipv6", "add", "-n", "2001:db8:bb::1/128", "-g", "2001:db8:0:1::fe"});
    EXPECT_EQ(Ipv6().back()[1], "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff");
}

TEST_F(Route, TheDefaultRouteIsTheInstancesGateway) {
    Change({"ip", "route", "ipv6", "add", "-n", "default", "-g", "2001:db8:0:1::fe"});
    EXPECT_EQ(Ipv6().front(), (Words{"default", "::", "2001:db8:0:1::fe", "kelm0"}));
    Change({"ip", "route", "ipv6", "remove", "-n", "default", "-g", "2001:db8:0:1::fe"});
    EXPECT_EQ(Ipv6().front()[0], "2001:db8:0:1::");

    // The network written out is the default route too; a gateway of another form is the same.
    Change({"ip", "route", "ipv4", "remove", "-n", "0.0.0.0/0", "-g", "192.0.2.1"});
    EXPECT_EQ(Ipv4().front()[0], "192.0.2.0");
    // On glidex the gateway is learnt by DHCP: in force, not configured, and removable.
    Change(
        {"ip", "route", "ipv4", "remove", "-n", "default", "-g", "198.51.100.1", "-N", "glidex"});
    EXPECT_EQ(Ipv4({"-N", "glidex"}).front()[0], "198.51.100.0");
    Change({"ip", "route", "ipv4", "add", "-n", "default", "-g", "198.51.100.9", "-N", "glidex"});
    EXPECT_EQ(Ipv4({"-N", "glidex"}).front(),
              (Words{"default", "0.0.0.0", "198.51.100.9", "kelm1", "MANUAL"}));
}

TEST_F(Route, RemovingTheDefaultRouteByAnotherGatewayChangesNothing) {
    using Outcome = IpServicesTesting::Outcome;
    EXPECT_EQ(Report({"ip", "route", "ipv4", "remove", "-n", "default", "-g", "192.0.2.77"}),
              (Outcome{{"192.0.2.77 is not a default route."}, true}));
    EXPECT_EQ(
        Report({"ip", "route", "ipv6", "remove", "-n", "default", "-g", "2001:DB8:0:1:0:0:0:fe"}),
        (Outcome{{"2001:db8:0:1::fe is not a default route."}, true}));
    EXPECT_EQ(Ipv4().front()[2], "192.0.2.1");
    EXPECT_EQ(Ipv6().front()[2], "2001:db8:0:1::1");
}

TEST_F(Route, RefusalsLeaveTheTablesAsTheyWere) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"ipv4", "add", "-n", "203.0.113.64/26", "-g", "192.0.2.254"},
         "A route to 203.0.113.64/26 already exists in netstack defaultTcpipStack, via "
         "192.0.2.254"},
        {{"ipv4", "add", "-n", "default", "-g", "192.0.2.1"},
         "The default route via 192.0.2.1 already exists in netstack defaultTcpipStack"},
        {{"ipv4", "add", "-n", "203.0.113.0/24", "-g", "203.0.113.1"},
         "Gateway 203.0.113.1 is unreachable: no interface of netstack defaultTcpipStack is on "
         "its network"},
        {{"ipv4", "add", "-n", "203.0.113.5/24", "-g", "192.0.2.254"},
         "Invalid network 203.0.113.5/24: bits are set beyond the /24 prefix, the network is "
         "203.0.113.0/24"},
        {{"ipv4", "add", "-n", "203.0.113.0", "-g", "192.0.2.254"},
         "'203.0.113.0' is not a valid IPv4 network: expected an address and a prefix length, "
         "192.0.2.0/24"},
        {{"ipv4", "add", "-n", "203.0.113.0/24", "-g", "gateway"},
         "'gateway' is not a valid IPv4 address"},
        {{"ipv4", "add", "-n", "203.0.113.0/24", "-g", "192.0.2.254", "-N", "nosuchstack"},
         "There is no netstack instance named nosuchstack"},
        {{"ipv4", "remove", "-n", "203.0.113.64/26", "-g", "192.0.2.253"},
         "There is no route to 203.0.113.64/26 via 192.0.2.253 in netstack defaultTcpipStack"},
        {{"ipv4", "remove", "-n", "192.0.2.0/24", "-g", "0.0.0.0"},
         "The route to 192.0.2.0/24 is the network of interface kelm0 and goes with its address"},
        {{"ipv4", "list", "-t", "ordinary"}, "Invalid type value, should be 'system'."},
        {{"ipv4", "list", "-t", "system", "-N", "glidex"},
         "Invalid netstack value, should be 'defaultTcpipStack'."},
        {{"ipv4", "list", "-N", "nosuchstack"}, "There is no netstack instance named nosuchstack"},
        {{"ipv6", "add", "-n", "2001:db8:0:100::/56", "-g", "2001:db8:0:1::fe"},
         "An IPv6 route to 2001:db8:0:100::/56 already exists in netstack defaultTcpipStack, via "
         "2001:db8:0:1::fe"},
        {{"ipv6", "add", "-n", "2001:db8:cc::/48", "-g", "fe80::zz"},
         "'fe80::zz' is not a valid IPv6 address"},
        {{"ipv6", "remove", "-n", "2001:db8:cc::/48", "-g", "2001:db8:0:1::fe"},
         "There is no route to 2001:db8:cc::/48 via 2001:db8:0:1::fe in netstack "
         "defaultTcpipStack"},
        {{"ipv6", "list", "-t", "ordinary"}, "Invalid type value, should be 'system'."},
        {{"ipv6", "list", "-t", "system", "-N", "glidex"},
         "Invalid netstack value, should be 'defaultTcpipStack'."},
    };
    const auto ipv4 = Ipv4();
    const auto ipv6 = Ipv6();
    for (const auto& [words, message] : cases) {
        Words line{"ip", "route"};
        line.insert(line.end(), words.begin(), words.end());
        EXPECT_EQ(RunError(line), message) << ::testing::PrintToString(line);
    }
    EXPECT_EQ(Ipv4(), ipv4);
    EXPECT_EQ(Ipv6(), ipv6);
}

}  // namespace
