// The shared policy functions: splitting uplink lists, the uplink order that failover settings
// make, the words of the failover settings, and shaping values with their units.
#include "VswitchTest.h"
#include "hostctl/NetworkInfo.h"
#include "vswitch/PolicyParameters.h"

namespace {

using VswitchTesting::Adapters;
using VswitchTesting::AdaptersOf;
using VswitchTesting::Words;
using ZanvexCli::NetworkNamespace::SplitUplinks;

TEST(SplitUplinks, KeepsEveryPieceButAnEmptyLastOne) {
    EXPECT_EQ(SplitUplinks(""), Words{});
    EXPECT_EQ(SplitUplinks("hwnic0"), Words{"hwnic0"});
    EXPECT_EQ(SplitUplinks("hwnic0,hwnic3,hwnic7"), (Words{"hwnic0", "hwnic3", "hwnic7"}));
    EXPECT_EQ(SplitUplinks("hwnic0,,hwnic1"), (Words{"hwnic0", "", "hwnic1"}));
    EXPECT_EQ(SplitUplinks("hwnic0,"), Words{"hwnic0"});
    EXPECT_EQ(SplitUplinks(",hwnic0"), (Words{"", "hwnic0"}));
    EXPECT_EQ(SplitUplinks(",,"), (Words{"", ""}));
    EXPECT_EQ(SplitUplinks(","), Words{""});
    EXPECT_EQ(SplitUplinks(" hwnic0, hwnic1 "), (Words{" hwnic0", " hwnic1 "}));
}

// lanswitch0 with three uplinks in its teaming: hwnic0 and hwnic1 active, hwnic4 standby.
class FailoverOrder : public VswitchTesting::VswitchTest {
protected:
    void SetUp() override {
        VswitchTest::SetUp();
        Change({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic4"});
        Change({"policy", "failover", "set", "-v", "lanswitch0", "--active-uplinks=hwnic0,hwnic1",
                "--standby-uplinks=hwnic4"});
        ASSERT_EQ(AdaptersOf(SwitchFailover("lanswitch0")),
                  (Adapters{{"hwnic0", "hwnic1"}, {"hwnic4"}, {}}));
    }

    Words SetFailover(const Words& parameters) {
        Words words{"policy", "failover", "set", "-v", "lanswitch0"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return ChangeReporting(words);
    }

    Adapters Current() { return AdaptersOf(SwitchFailover("lanswitch0")); }
};

TEST_F(FailoverOrder, ActiveListAloneKeepsTheStandbyAdapters) {
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic1"}), Words{});
    EXPECT_EQ(Current(), (Adapters{{"hwnic1"}, {"hwnic4"}, {"hwnic0"}}));
}

TEST_F(FailoverOrder, ActiveListTakesAStandbyAdapterOutOfStandby) {
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic4,hwnic0"}), Words{});
    EXPECT_EQ(Current(), (Adapters{{"hwnic4", "hwnic0"}, {}, {"hwnic1"}}));
}

TEST_F(FailoverOrder, StandbyListAloneKeepsTheOtherActiveAdapters) {
    EXPECT_EQ(SetFailover({"--standby-uplinks=hwnic0"}), Words{});
    EXPECT_EQ(Current(), (Adapters{{"hwnic1"}, {"hwnic0"}, {"hwnic4"}}));
}

TEST_F(FailoverOrder, StandbyListNamingEveryActiveAdapterLeavesNoneActive) {
    EXPECT_EQ(SetFailover({"--standby-uplinks=hwnic1,hwnic0"}), Words{});
    EXPECT_EQ(Current(), (Adapters{{}, {"hwnic1", "hwnic0"}, {"hwnic4"}}));
}

TEST_F(FailoverOrder, EmptyActiveListMakesTheStandbyAdaptersTheWholeOrder) {
    EXPECT_EQ(SetFailover({"--active-uplinks="}), Words{});
    EXPECT_EQ(Current(), (Adapters{{}, {"hwnic4"}, {"hwnic0", "hwnic1"}}));
}

TEST_F(FailoverOrder, BothListsReplaceTheOrder) {
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic4", "--standby-uplinks=hwnic1"}), Words{});
    EXPECT_EQ(Current(), (Adapters{{"hwnic4"}, {"hwnic1"}, {"hwnic0"}}));
}

TEST_F(FailoverOrder, ANameTwiceIsRefusedAndNothingIsWritten) {
    const Words duplicate{"some NICs appear in the input for more than once."};
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic0", "--standby-uplinks=hwnic0"}), duplicate);
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic1,hwnic1"}), duplicate);
    EXPECT_EQ(SetFailover({"--standby-uplinks=hwnic4,hwnic4", "--load-balancing=iphash"}),
              duplicate);
    EXPECT_EQ(Current(), (Adapters{{"hwnic0", "hwnic1"}, {"hwnic4"}, {}}));
    EXPECT_EQ(Testing::Str(SwitchFailover("lanswitch0"), "Load Balancing"), "srcport");
}

TEST_F(FailoverOrder, UnknownAndUnconnectedNamesAreReportedTogetherAndNothingIsWritten) {
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic77,hwnic1", "--standby-uplinks=hwnic5",
                           "--notify-switches=false"}),
              (Words{"Unknown NIC name in active uplinks : hwnic77",
                     "NIC is not connected to the vswitch : hwnic5"}));
    EXPECT_EQ(SetFailover({"--standby-uplinks=hwnic78"}),
              Words{"Unknown NIC name in standby uplinks : hwnic78"});
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic0,,hwnic1"}),
              Words{"Unknown NIC name in active uplinks : "});
    EXPECT_EQ(SetFailover({"--active-uplinks= hwnic0"}),
              Words{"Unknown NIC name in active uplinks :  hwnic0"});
    EXPECT_EQ(Current(), (Adapters{{"hwnic0", "hwnic1"}, {"hwnic4"}, {}}));
    EXPECT_TRUE(Testing::Bool(SwitchFailover("lanswitch0"), "Notify Switches"));
}

TEST_F(FailoverOrder, AnEmptyLastPieceIsNoName) {
    EXPECT_EQ(SetFailover({"--active-uplinks=hwnic1,"}), Words{});
    EXPECT_EQ(Current(), (Adapters{{"hwnic1"}, {"hwnic4"}, {"hwnic0"}}));
}

// A profile may give a policy more active adapters than its order holds. A standby list alone
// then keeps that count and lowers it only by the active names it takes, so what is left stays
// active.
TEST_F(FailoverOrder, StandbyListAloneKeepsACountLargerThanTheOrder) {
    HostSim::Json profile = ExportedHost();
    for (auto& vswitch : profile["vswitches"]) {
        if (vswitch["name"] == "lanswitch0") {
            vswitch["policies"]["teaming"]["maxActiveUplinks"] = 5;
        }
    }
    ImportHost(profile);
    ASSERT_EQ(Current(), (Adapters{{"hwnic0", "hwnic1", "hwnic4"}, {}, {}}));

    EXPECT_EQ(SetFailover({"--standby-uplinks=hwnic1"}), Words{});
    EXPECT_EQ(Current(), (Adapters{{"hwnic0", "hwnic4", "hwnic1"}, {}, {}}));
    const HostSim::Json after = ExportedHost();
    for (const auto& vswitch : after["vswitches"]) {
        if (vswitch["name"] == "lanswitch0") {
            const auto& teaming = vswitch["policies"]["teaming"];
            EXPECT_EQ(teaming["maxActiveUplinks"], 4);
            EXPECT_EQ(teaming["uplinkOrder"], HostSim::Json({"hwnic0", "hwnic4", "hwnic1"}));
        }
    }
}

class FailoverWords : public VswitchTesting::VswitchTest {};

TEST_F(FailoverWords, LoadBalancingReadsBackInTheHostsWords) {
    const std::pair<const char*, const char*> cases[] = {
        {"portid", "srcport"}, {"mac", "srcmac"}, {"iphash", "iphash"}, {"explicit", "explicit"}};
    for (const auto& [given, shown] : cases) {
        Change({"policy", "failover", "set", "-v", "lanswitch0", "-l", given});
        EXPECT_EQ(Testing::Str(SwitchFailover("lanswitch0"), "Load Balancing"), shown) << given;
    }
}

TEST_F(FailoverWords, FailureDetectionNotifyAndFailback) {
    Change({"policy", "failover", "set", "-v", "lanswitch0", "--failure-detection=beacon",
            "--notify-switches=false", "--failback=false"});
    auto failover = SwitchFailover("lanswitch0");
    EXPECT_EQ(Testing::Str(failover, "Network Failure Detection"), "beacon");
    EXPECT_FALSE(Testing::Bool(failover, "Notify Switches"));
    EXPECT_FALSE(Testing::Bool(failover, "Failback"));
    Change({"policy", "failover", "set", "-v", "lanswitch0", "-f", "link", "-n", "true"});
    failover = SwitchFailover("lanswitch0");
    EXPECT_EQ(Testing::Str(failover, "Network Failure Detection"), "link");
    EXPECT_TRUE(Testing::Bool(failover, "Notify Switches"));
}

TEST_F(FailoverWords, FailbackIsStoredAsTheInverseRollingRestoration) {
    ASSERT_FALSE(Testing::Bool(SwitchFailover("storageswitch1"), "Failback"));
    Change({"policy", "failover", "set", "-v", "storageswitch1", "--failback=true"});
    EXPECT_TRUE(Testing::Bool(SwitchFailover("storageswitch1"), "Failback"));
    auto stored = HostCtl::Network::NetworkFactory::GetVirtualSwitchById(
        "storageswitch1", HostCtl::Network::PortsetGetNormal);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->GetTeamingPolicy().rollingRestoration, 0);
}

TEST_F(FailoverWords, OnlyTheSwitchNameWritesTheOwnPolicyBackAsItWas) {
    const auto before = HostCtl::Network::NetworkFactory::GetVirtualSwitchById(
                            "storageswitch1", HostCtl::Network::PortsetGetNormal)
                            ->GetTeamingPolicy();
    Change({"policy", "failover", "set", "-v", "storageswitch1"});
    const auto after = HostCtl::Network::NetworkFactory::GetVirtualSwitchById(
                           "storageswitch1", HostCtl::Network::PortsetGetNormal)
                           ->GetTeamingPolicy();
    EXPECT_EQ(after.setFields, before.setFields);
    EXPECT_EQ(after.uplinkOrder, before.uplinkOrder);
    EXPECT_EQ(after.maxActiveUplinks, before.maxActiveUplinks);
    EXPECT_EQ(after.teamPolicy, before.teamPolicy);
}

// Shaping values go in as Kbps and Kib and are kept as bits per second and bytes.
class ShapingValues : public VswitchTesting::VswitchTest {
protected:
    HostCtl::Network::ShapingPolicy Stored(const std::string& name) {
        return HostCtl::Network::NetworkFactory::GetVirtualSwitchById(
                   name, HostCtl::Network::PortsetGetNormal)
            ->GetEffectiveShapingPolicy();
    }
    static std::vector<long> Numbers(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row) {
        return {Testing::Int(row, "Average Bandwidth"), Testing::Int(row, "Peak Bandwidth"),
                Testing::Int(row, "Burst Size")};
    }
};

TEST_F(ShapingValues, ShapingOffShowsMinusOneWhateverIsStored) {
    auto shaping = SwitchShaping("lanswitch0");
    EXPECT_FALSE(Testing::Bool(shaping, "Enabled"));
    EXPECT_EQ(Numbers(shaping), (std::vector<long>{-1, -1, -1}));
    EXPECT_NE(Stored("lanswitch0").averageBps, 0u);
}

TEST_F(ShapingValues, OneKbpsIsAThousandBitsAndOneKibIs128Bytes) {
    Change({"policy", "shaping", "set", "-v", "lanswitch0", "--enabled=true", "--avg-bandwidth=1",
            "--peak-bandwidth=2", "--burst-size=1"});
    EXPECT_EQ(Numbers(SwitchShaping("lanswitch0")), (std::vector<long>{1, 2, 1}));
    const auto stored = Stored("lanswitch0");
    EXPECT_EQ(stored.averageBps, 1000u);
    EXPECT_EQ(stored.peakBps, 2000u);
    EXPECT_EQ(stored.burstSize, 128u);
}

TEST_F(ShapingValues, RenderingTruncatesTowardZero) {
    auto profile = ExportedHost();
    auto& shaping = profile["vswitches"][0]["policies"]["shaping"];
    shaping = {{"enabled", true}, {"averageBps", 1999}, {"peakBps", 999}, {"burstSize", 255}};
    ImportHost(profile);
    EXPECT_EQ(Numbers(SwitchShaping("lanswitch0")), (std::vector<long>{1, 0, 1}));
}

TEST_F(ShapingValues, EnablingNeedsAllThreeValuesEvenWhenTheyAreStored) {
    EXPECT_EQ(ChangeReporting({"policy", "shaping", "set", "-v", "lanswitch0", "--enabled=true"}),
              (Words{"Missing required parameter --avg-bandwidth",
                     "Missing required parameter --peak-bandwidth",
                     "Missing required parameter --burst-size"}));
    EXPECT_EQ(ChangeReporting(
                  {"policy", "shaping", "set", "-v", "lanswitch0", "-e", "true", "-b", "1000"}),
              (Words{"Missing required parameter --peak-bandwidth",
                     "Missing required parameter --burst-size"}));
    EXPECT_FALSE(Testing::Bool(SwitchShaping("lanswitch0"), "Enabled"));
}

TEST_F(ShapingValues, ValuesOfADisabledShaperAreIgnored) {
    const auto before = Stored("lanswitch0");
    EXPECT_EQ(
        ChangeReporting({"policy", "shaping", "set", "-v", "lanswitch0", "--avg-bandwidth=7"}),
        Words{});
    EXPECT_EQ(Stored("lanswitch0").averageBps, before.averageBps);
}

TEST_F(ShapingValues, AnEnabledShaperTakesEachValueOnItsOwn) {
    Change({"policy", "shaping", "set", "-v", "storageswitch1", "--peak-bandwidth=2000000"});
    EXPECT_EQ(Numbers(SwitchShaping("storageswitch1")),
              (std::vector<long>{500000, 2000000, 409600}));
}

TEST_F(ShapingValues, DisablingKeepsTheOtherValues) {
    Change({"policy", "shaping", "set", "-v", "storageswitch1", "--enabled=false",
            "--avg-bandwidth=1000"});
    EXPECT_EQ(Numbers(SwitchShaping("storageswitch1")), (std::vector<long>{-1, -1, -1}));
    EXPECT_EQ(Stored("storageswitch1").averageBps, 500000000u);
}

TEST_F(ShapingValues, ValuesBelowOneNeverReachTheCommand) {
    RefusedByHost({"policy", "shaping", "set", "-v", "storageswitch1", "--avg-bandwidth=0"});
    RefusedByHost({"policy", "shaping", "set", "-v", "storageswitch1", "--burst-size=-5"});
}

}  // namespace
