// The neighbour commands on the live host, in the test's own namespace, against ip neigh
// (which nobody here wrote) on the same tables.
#include "hostsim/linux/LiveIpTest.h"

namespace {

using nlohmann::json;
using Testing::Int;
using Testing::Rows;
using Testing::RowWhere;
using Testing::Str;

class LiveNeighbor : public Testing::LiveIpTest {
protected:
    void SetUp() override {
        LiveIpTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        Witness("ip addr add 203.0.113.1/24 dev v1");
        Witness("ip neigh add 192.0.2.9 lladdr 02:00:00:00:00:09 dev v0 nud permanent");
        Witness("ip neigh add 192.0.2.10 lladdr 02:00:00:00:00:0a dev v0 nud reachable");
        Witness("ip neigh add 192.0.2.11 lladdr 02:00:00:00:00:0b dev v0 nud stale");
        Witness("ip neigh add 203.0.113.9 lladdr 02:00:00:00:01:09 dev v1 nud permanent");
        Witness("ip neigh add 192.0.2.9 lladdr 02:00:00:00:01:0a dev v1 nud permanent");
    }

    // "address lladdr dev" of each row, and of each entry ip lists.
    static std::vector<std::string> Listed(
        const std::shared_ptr<CppTools::MetaObj::MetaList>& list) {
        std::vector<std::string> rows;
        for (const auto& row : Rows(list)) {
            rows.push_back(Str(row, "Neighbor") + " " + Str(row, "Mac Address") + " " +
                           Str(row, "Kelmnic"));
        }
        return rows;
    }
    // Of one family ("-4", "-6"), on one device or on all when it is empty.
    std::vector<std::string> IpNeighbors(const std::string& family,
                                         const std::string& device = "") {
        std::vector<std::string> rows;
        for (const json& entry : WitnessJson("ip -j " + family + " neigh show")) {
            if (device.empty() || entry["dev"] == device) {
                rows.push_back(entry["dst"].get<std::string>() + " " + entry.value("lladdr", "") +
                               " " + entry["dev"].get<std::string>());
            }
        }
        return rows;
    }
};

// The entries ip lists, with their kind and what is left of their reachable time.
TEST_F(LiveNeighbor, TheIpv4TableAgreesWithIp) {
    const auto list = RunList({"ip", "neighbor", "list", "-v", "4"});
    EXPECT_EQ(Listed(list), IpNeighbors("-4"));
    EXPECT_EQ(Rows(list).size(), 5u);
    const auto permanent = RowWhere(list, "Neighbor", "203.0.113.9");
    EXPECT_EQ(Int(permanent, "Expiry"), -1);
    EXPECT_EQ(Str(permanent, "Type"), "Static");
    EXPECT_EQ(Str(permanent, "State"), "");
    const auto reachable = RowWhere(list, "Neighbor", "192.0.2.10");
    EXPECT_EQ(Str(reachable, "Type"), "Dynamic");
    const long base = std::stol(Witness("cat /proc/sys/net/ipv4/neigh/v0/base_reachable_time_ms"));
    EXPECT_GT(Int(reachable, "Expiry"), 0);
    EXPECT_LE(Int(reachable, "Expiry"), base * 3 / 2 / 1000);
    EXPECT_EQ(Int(RowWhere(list, "Neighbor", "192.0.2.11"), "Expiry"), 0);

    EXPECT_EQ(Listed(RunList({"ip", "neighbor", "list", "-v", "4", "-i", "v1"})),
              IpNeighbors("-4", "v1"));
    EXPECT_EQ(RunError({"ip", "neighbor", "list", "-v", "4", "-i", "nosuch"}),
              "Unable to find a Kelm interface with the name nosuch");
}

// Removing an address takes its entries from every interface, or from the one named.
TEST_F(LiveNeighbor, RemovingAnAddressTakesItsEntriesAway) {
    RunOk({"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.9", "-i", "v1"});
    EXPECT_EQ(Witness("ip neigh show 192.0.2.9 | wc -l"), "1\n");
    Witness("ip neigh add 192.0.2.9 lladdr 02:00:00:00:01:0a dev v1 nud permanent");
    RunOk({"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.9"});
    EXPECT_EQ(Witness("ip neigh show 192.0.2.9"), "");
    EXPECT_EQ(RunError({"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.9"}),
              "There is no IPv4 neighbor 192.0.2.9 in netstack defaultTcpipStack");
    EXPECT_EQ(RunError({"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.10", "-i", "v1"}),
              "There is no IPv4 neighbor 192.0.2.10 on interface v1 in netstack "
              "defaultTcpipStack");
    EXPECT_EQ(IpNeighbors("-4").size(), 3u);
}

TEST_F(LiveNeighbor, TheIpv6TableAgreesWithIpAndWordsTheKernelsStates) {
    Witness("ip -6 neigh add 2001:db8::9 lladdr 02:00:00:00:00:19 dev v0 nud permanent");
    Witness("ip -6 neigh add 2001:db8::a lladdr 02:00:00:00:00:1a dev v0 nud stale router");
    const auto list = RunList({"ip", "neighbor", "list", "-v", "6"});
    EXPECT_EQ(Listed(list), IpNeighbors("-6"));
    const auto permanent = RowWhere(list, "Neighbor", "2001:db8::9");
    EXPECT_EQ(Str(permanent, "State"), "Permanent");
    EXPECT_EQ(Str(permanent, "Type"), "Static");
    EXPECT_EQ(Int(permanent, "Expiry"), 4294967295);
    const auto router = RowWhere(list, "Neighbor", "2001:db8::a");
    EXPECT_EQ(Str(router, "State"), "Stale");
    EXPECT_EQ(Str(router, "Type"), "Router");
    RunOk({"ip", "neighbor", "remove", "-v", "6", "-a", "2001:db8::a"});
    EXPECT_EQ(Witness("ip -6 neigh show 2001:db8::a"), "");
}

TEST_F(LiveNeighbor, EveryFaultOfTheLiveNeighborCommandsEndsInAnError) {
    SweepTable({
        {{"ip", "neighbor", "list", "-v", "4"},
         {"RoutingInfoImpl::GetCurrentIpv4KelmNeighbors", "RoutingInfoImpl::GetIpv4NeighborType"},
         {.everyFailureEscapes = true}},
        {{"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.11"},
         {"RoutingInfoImpl::RemoveIpv4Neighbor"},
         {.escapingOperations = {"KelmNicInfoImpl::KelmNicInfoImpl",
                                 "RoutingInfoImpl::RoutingInfoImpl",
                                 "NetworkInfoImpl::NetworkInfoImpl"}}},
    });
}

}  // namespace
