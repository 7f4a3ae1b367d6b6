// Neighbour tables, sockets and multicast memberships: what the lists show and select, the
// renderings of their values, and removing neighbours.
#include "IpServicesTest.h"

namespace {

using IpServicesTesting::Words;
using Outcome = IpServicesTesting::Outcome;

const Words kNeighborFields{"Neighbor", "Mac Address", "Kelmnic", "Expiry", "State", "Type"};
const Words kConnectionFields{"Proto", "Recv Q",   "Send Q",  "Local Address", "Foreign Address",
                              "State", "World ID", "CC Algo", "World Name"};

class Neighbor : public IpServicesTesting::IpServicesTest {
protected:
    std::vector<Words> Neighbors(const Words& parameters = {}) {
        Words words{"ip", "neighbor", "list"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return Table(words, kNeighborFields);
    }
};

TEST_F(Neighbor, ListShowsIpv4RowsThenIpv6RowsWithTheirStates) {
    const auto mac = [this](const std::string& address,
                            const std::string& netstack = "defaultTcpipStack") {
        return NeighborMac(netstack, address);
    };
    EXPECT_EQ(Neighbors(),
              (std::vector<Words>{
                  {"192.0.2.1", mac("192.0.2.1"), "kelm0", "1187", "", "Dynamic"},
                  {"192.0.2.254", mac("192.0.2.254"), "kelm0", "-1", "", "Static"},
                  {"192.0.2.31", mac("192.0.2.31"), "kelm0", "642", "", "Dynamic"},
                  {"2001:db8:0:1::1", mac("2001:db8:0:1::1"), "kelm0", "26", "Reachable", "Router"},
                  {"2001:db8:0:1::31", mac("2001:db8:0:1::31"), "kelm0", "0", "Stale", "Dynamic"},
              }));
    EXPECT_EQ(Neighbors({"-N", "glidex", "-v", "6"}),
              (std::vector<Words>{{"2001:db8:0:2::fe", mac("2001:db8:0:2::fe", "glidex"), "kelm1",
                                   "12", "Delay", "Router"}}));
    EXPECT_EQ(
        Neighbors({"-t", "system"}),
        (std::vector<Words>{{"203.0.113.2", mac("203.0.113.2"), "kelm9", "1090", "", "Dynamic"}}));
}

TEST_F(Neighbor, ListSelectsByInterfaceAndVersion) {
    EXPECT_EQ(Column({"ip", "neighbor", "list", "-i", "kelm1", "-N", "glidex"}, "Kelmnic"),
              (Words{"kelm1", "kelm1", "kelm1"}));
    EXPECT_EQ(Column({"ip", "neighbor", "list", "-i", "kelm1"}, "Neighbor"), Words{});
    EXPECT_EQ(Column({"ip", "neighbor", "list", "-v", "4"}, "Neighbor"),
              (Words{"192.0.2.1", "192.0.2.254", "192.0.2.31"}));
    Change({"ip", "set", "--ipv6-enabled=false"});
    EXPECT_EQ(Column({"ip", "neighbor", "list", "-v", "6"}, "Neighbor"), Words{});
    EXPECT_EQ(Column({"ip", "neighbor", "list"}, "State"), (Words{"", "", ""}));
}

TEST_F(Neighbor, ListRefusals) {
    EXPECT_EQ(RunError({"ip", "neighbor", "list", "-t", "dynamic"}),
              "Invalid type value, should be 'system'.");
    EXPECT_EQ(RunError({"ip", "neighbor", "list", "-t", "system", "-N", "glidex"}),
              "Invalid netstack value, should be 'defaultTcpipStack'.");
    EXPECT_EQ(RunError({"ip", "neighbor", "list", "-i", "kelm7"}),
              "Unable to find a Kelm interface with the name kelm7");
    // The system interface is one only with the system type.
    EXPECT_EQ(RunError({"ip", "neighbor", "list", "-i", "kelm9"}),
              "Unable to find a Kelm interface with the name kelm9");
    EXPECT_EQ(Column({"ip", "neighbor", "list", "-i", "kelm9", "-t", "system"}, "Kelmnic"),
              Words{"kelm9"});
}

TEST_F(Neighbor, RemoveByAddressAndInterface) {
    Change({"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.31", "-i", "kelm0"});
    Change({"ip", "neighbor", "remove", "-v", "6", "-a", "2001:DB8:0:1::31"});
    EXPECT_EQ(Column({"ip", "neighbor", "list"}, "Neighbor"),
              (Words{"192.0.2.1", "192.0.2.254", "2001:db8:0:1::1"}));
    // The interface's own instance wins over the netstack parameter.
    Change({"ip", "neighbor", "remove", "-v", "4", "-a", "198.51.100.42", "-i", "kelm1", "-N",
            "defaultTcpipStack"});
    EXPECT_EQ(Column({"ip", "neighbor", "list", "-N", "glidex", "-v", "4"}, "Neighbor"),
              Words{"198.51.100.1"});
}

TEST_F(Neighbor, RemoveRefusals) {
    const std::vector<std::pair<Words, Outcome>> cases = {
        {{"-v", "4", "-a", "192.0.2.99"},
         {{"There is no IPv4 neighbor 192.0.2.99 in netstack defaultTcpipStack"}, false}},
        {{"-v", "4", "-a", "192.0.2.1", "-i", "kelm1"},
         {{"There is no IPv4 neighbor 192.0.2.1 on interface kelm1 in netstack glidex"}, false}},
        {{"-v", "4", "-a", "nobody"}, {{"'nobody' is not a valid IPv4 address"}, false}},
        {{"-v", "6", "-a", "nobody"}, {{"'nobody' is not a valid IPv6 address"}, false}},
        {{"-v", "4", "-a", "192.0.2.1", "-i", "kelm7"},
         {{"Unable to find a Kelm interface with the name kelm7"}, false}},
        {{"-v", "4", "-a", "192.0.2.1", "-N", "nosuchstack"},
         {{"There is no netstack instance named nosuchstack"}, false}},
    };
    for (const auto& [parameters, outcome] : cases) {
        Words line{"ip", "neighbor", "remove"};
        line.insert(line.end(), parameters.begin(), parameters.end());
        EXPECT_EQ(Report(line), outcome) << ::testing::PrintToString(line);
    }
    // With IPv6 off the removal of an IPv6 neighbour does nothing, not even read the address.
    Change({"ip", "set", "-e", "false"});
    Change({"ip", "neighbor", "remove", "-v", "6", "-a", "nobody"});
    EXPECT_EQ(Neighbors().size(), 3u);
}

TEST_F(Neighbor, ConnectionsShowTcpThenUdpThenIp) {
    const auto rows = Table({"ip", "connection", "list"}, kConnectionFields);
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows[0], (Words{"tcp", "0", "0", "0.0.0.0:443", "0.0.0.0:0", "LISTEN", "2099310",
                              "newreno", "kelm-mgmtd"}));
    EXPECT_EQ(rows[2], (Words{"tcp", "0", "517", "192.0.2.10:902", "192.0.2.31:51766", "CLOSE_WAIT",
                              "2099402", "newreno", "tarnd"}));
    EXPECT_EQ(rows[4], (Words{"tcp", "0", "0", "[2001:db8:0:1::10]:22", "[2001:db8:0:1::31]:60122",
                              "TIME_WAIT", "0", "cubic", ""}));
    EXPECT_EQ(rows[6],
              (Words{"udp", "0", "0", "[::]:161", "[::]:0", "", "2099262", "", "kelm-snmpd"}));
    EXPECT_EQ(rows[7][0], "ip");
    EXPECT_EQ(Column({"ip", "connection", "list", "-t", "udp"}, "Proto"), (Words{"udp", "udp"}));
    EXPECT_EQ(Column({"ip", "connection", "list", "-N", "glidex", "-t", "tcp"}, "State"),
              (Words{"LISTEN", "ESTABLISHED", "SYN_SENT"}));
    EXPECT_EQ(RunError({"ip", "connection", "list", "-N", "nosuchstack"}),
              "Unable to get connection list: There is no netstack instance named nosuchstack");
}

TEST_F(Neighbor, MulticastMembershipsOfEveryInterface) {
    EXPECT_EQ(
        Table({"multicast", "group", "list"}, {"Interface", "Refcount", "Group", "Link Layer"}),
        (std::vector<Words>{
            {"kelm0", "1", "224.0.0.1", "01:00:5e:00:00:01"},
            {"kelm0", "1", "ff02::1", "33:33:00:00:00:01"},
            {"kelm0", "2", "ff02::1:ff00:10", "33:33:ff:00:00:10"},
            {"kelm1", "1", "224.0.0.1", "01:00:5e:00:00:01"},
            {"kelm1", "1", "ff02::1", "33:33:00:00:00:01"},
        }));
}

}  // namespace
