// The netqueue commands: counts, filter classes, and the load balancer's settings, state and
// plug-ins.
#include "nic/NicDeviceTest.h"

namespace {

using NicDeviceTesting::NicDeviceTest;
using NicDeviceTesting::Words;
using Testing::Rows;
using Testing::Str;

using Pairs = std::vector<std::pair<std::string, std::string>>;

class NicQueueTest : public NicDeviceTest {
protected:
    std::string Count(const std::string& nic, const char* field) {
        return Column({"nic", "queue", "count", "get", "-n", nic}, "NIC", field).front().second;
    }
};

TEST_F(NicQueueTest, CountsListEveryNicWithNetqueuesAndLeaveOutTheOthers) {
    EXPECT_EQ(Column({"nic", "queue", "count", "get"}, "NIC", "Tx netqueue count"),
              (Pairs{{"hwnic0", "4"},
                     {"hwnic1", "4"},
                     {"hwnic2", "8"},
                     {"hwnic3", "8"},
                     {"hwnic4", "16"},
                     {"hwnic5", "8"}}));
    EXPECT_EQ(Count("hwnic1", "Rx netqueue count"), "2");
    EXPECT_EQ(RunError({"nic", "queue", "count", "get", "-n", "hwnic6"}),
              "NIC hwnic6 has no netqueue support");
}

TEST_F(NicQueueTest, CountSetChangesTheSidesItNames) {
    Change({"nic", "queue", "count", "set", "-n", "hwnic2", "--tx=true", "--rx=true", "-q", "4"});
    EXPECT_EQ(Count("hwnic2", "Tx netqueue count"), "4");
    EXPECT_EQ(Count("hwnic2", "Rx netqueue count"), "4");
    Change({"nic", "queue", "count", "set", "-n", "hwnic2", "--tx=false", "-q", "16"});
    EXPECT_EQ(Count("hwnic2", "Tx netqueue count"), "16");
    EXPECT_EQ(Count("hwnic2", "Rx netqueue count"), "4");
    Change({"nic", "queue", "count", "set", "-n", "hwnic6", "-q", "3"});
}

TEST_F(NicQueueTest, CountsOutsideTheRangeAreRefusedAndNothingChanges) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"hwnic2", "--tx=true", "--rx=true", "-q", "0"},
         "Tx netqueue count 0 is out of range (1-16) for NIC hwnic2"},
        {{"hwnic2", "--rx=true", "-q", "17"},
         "Rx netqueue count 17 is out of range (1-16) for NIC hwnic2"},
        {{"hwnic2", "--tx=true", "--rx=true", "-q", "-1"},
         "Tx netqueue count -1 is out of range (1-16) for NIC hwnic2"},
        {{"hwnic7", "--tx=true", "-q", "2"}, "NIC hwnic7 has no netqueue support"},
        {{"hwnic99", "-q", "2"}, "Pnic with name hwnic99 not found"},
    };
    for (const auto& [extra, message] : cases) {
        Words words{"nic", "queue", "count", "set", "-n"};
        words.insert(words.end(), extra.begin(), extra.end());
        EXPECT_EQ(RunError(words), message) << ::testing::PrintToString(words);
    }
    EXPECT_EQ(Count("hwnic2", "Tx netqueue count"), "8");
    EXPECT_EQ(Count("hwnic2", "Rx netqueue count"), "8");
}

TEST_F(NicQueueTest, FilterClassesFollowTheNicsOrder) {
    auto rows = Rows(RunList({"nic", "queue", "filterclass", "list"}));
    ASSERT_EQ(rows.size(), 6u);
    std::vector<bool> hwnic0;
    for (const char* name : {"MacOnly", "VlanOnly", "VlanMac", "Vxlan", "Geneve", "GenericEncap"}) {
        hwnic0.push_back(Testing::Bool(rows[0], name));
    }
    EXPECT_EQ(hwnic0, (std::vector<bool>{true, false, true, false, false, false}));
    EXPECT_TRUE(Testing::Bool(rows[4], "GenericEncap"));
}

TEST_F(NicQueueTest, SettingsShowSupportAndPermissionInTwoLetters) {
    auto rows = Rows(RunList({"nic", "queue", "loadbalancer", "list"}));
    ASSERT_EQ(rows.size(), 6u);
    std::vector<std::string> hwnic0;
    for (const char* field :
         {"RxQPair", "RxQNoFeature", "PreEmptibleQ", "RxQLatency", "RxDynamicLB", "DynamicQPool",
          "MacLearnLB", "RSS", "LRO", "GeneveOAM", "RSSLRO"}) {
        hwnic0.push_back(Str(rows[0], field));
    }
    EXPECT_EQ(hwnic0, (Words{"SA", "NA", "UD", "SA", "ND", "UD", "ND", "SA", "UD", "UD", "UD"}));
}

TEST_F(NicQueueTest, SettingSetAppliesOnlyTheFeaturesGiven) {
    Change({"nic", "queue", "loadbalancer", "set", "-n", "hwnic3", "--rxqlatency=true",
            "--rsslb=false", "--maclearnlb=true"});
    auto row = Rows(RunList({"nic", "queue", "loadbalancer", "list"}))[3];
    EXPECT_EQ(Str(row, "RxQLatency"), "SA");
    EXPECT_EQ(Str(row, "RSS"), "SD");
    EXPECT_EQ(Str(row, "MacLearnLB"), "NA");
    EXPECT_EQ(Str(row, "LRO"), "SA");
    Change({"nic", "queue", "loadbalancer", "set", "-n", "hwnic3"});
    EXPECT_EQ(RunError({"nic", "queue", "loadbalancer", "set", "-n", "hwnic0", "--lrolb=true"}),
              "NIC hwnic0 doesn't support the netqueue feature LRO");
    EXPECT_EQ(RunError({"nic", "queue", "loadbalancer", "set", "-n", "hwnic99", "--lrolb=true"}),
              "Pnic with name hwnic99 not found");
    EXPECT_EQ(Str(Rows(RunList({"nic", "queue", "loadbalancer", "list"}))[0], "LRO"), "UD");
}

TEST_F(NicQueueTest, StateSetChangesOneNicOnly) {
    const Pairs before =
        Column({"nic", "queue", "loadbalancer", "state", "list"}, "NIC", "Enabled");
    EXPECT_EQ(before.size(), 6u);
    Change({"nic", "queue", "loadbalancer", "state", "set", "-n", "hwnic4", "-e", "false"});
    Pairs expected = before;
    expected[4].second = "false";
    EXPECT_EQ(Column({"nic", "queue", "loadbalancer", "state", "list"}, "NIC", "Enabled"),
              expected);
    EXPECT_EQ(
        Column({"nic", "queue", "loadbalancer", "state", "list", "-n", "hwnic3"}, "NIC", "Enabled"),
        (Pairs{{"hwnic3", "false"}}));
}

TEST_F(NicQueueTest, PluginsShowWhichAreActive) {
    EXPECT_EQ(Column({"nic", "queue", "loadbalancer", "plugin", "list", "-n", "hwnic2"},
                     "Plugin Name", "Enabled"),
              (Pairs{{"filterfit", "true"},
                     {"rsslb", "true"},
                     {"latencysense", "false"},
                     {"rsslb", "false"}}));
    EXPECT_EQ(RunList({"nic", "queue", "loadbalancer", "plugin", "list"})->GetCount(), 9u);
    EXPECT_EQ(
        RunList({"nic", "queue", "loadbalancer", "plugin", "list", "-n", "hwnic0"})->GetCount(),
        0u);
}

TEST_F(NicQueueTest, PluginSetChangesTheNamedPluginOfItsModule) {
    Change({"nic", "queue", "loadbalancer", "plugin", "set", "-n", "hwnic2", "-e", "true", "-m",
            "tarnqlb", "-p", "rsslb"});
    Change({"nic", "queue", "loadbalancer", "plugin", "set", "-n", "hwnic2", "-e", "false", "-m",
            "kelmnetq", "-p", "filterfit"});
    EXPECT_EQ(Column({"nic", "queue", "loadbalancer", "plugin", "list", "-n", "hwnic2"},
                     "Module Name", "Enabled"),
              (Pairs{{"kelmnetq", "false"},
                     {"kelmnetq", "true"},
                     {"kelmnetq", "false"},
                     {"tarnqlb", "true"}}));
}

TEST_F(NicQueueTest, RefusalsOfTheStateAndPluginCommands) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"state", "list", "-n", "hwnic99"}, "Invalid PNIC name hwnic99"},
        {{"state", "list", "-n", "hwnic8"}, "NIC hwnic8 has no netqueue support"},
        {{"state", "set", "-n", "hwnic99", "-e", "true"}, "Invalid PNIC name hwnic99"},
        {{"state", "set", "-n", "hwnic6", "-e", "true"}, "NIC hwnic6 has no netqueue support"},
        {{"plugin", "list", "-n", "hwnic99"}, "Invalid PNIC name hwnic99"},
        {{"plugin", "list", "-n", "hwnic7"}, "NIC hwnic7 has no netqueue support"},
        {{"plugin", "set", "-n", "hwnic99", "-e", "true", "-m", "kelmnetq", "-p", "rsslb"},
         "Invalid PNIC name hwnic99"},
        {{"plugin", "set", "-n", "hwnic4", "-e", "true", "-m", "kelmnetq", "-p", "rsslb"},
         "NIC hwnic4 has no netqueue balancer plug-in rsslb of module kelmnetq"},
        {{"plugin", "set", "-n", "hwnic3", "-e", "true", "-m", "tarnqlb", "-p", "rsslb"},
         "NIC hwnic3 has no netqueue balancer plug-in rsslb of module tarnqlb"},
    };
    for (const auto& [extra, message] : cases) {
        Words words{"nic", "queue", "loadbalancer"};
        words.insert(words.end(), extra.begin(), extra.end());
        EXPECT_EQ(RunError(words), message) << ::testing::PrintToString(words);
    }
    EXPECT_EQ(Column({"nic", "queue", "loadbalancer", "plugin", "list", "-n", "hwnic4"},
                     "Plugin Name", "Enabled"),
              (Pairs{{"filterfit", "true"}, {"latencysense", "true"}, {"geneveoam", "false"}}));
}

}  // namespace
