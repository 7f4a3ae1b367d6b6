// `nic stats get` and `nic vlan stats get|set`: the counters of a NIC, and the VLAN counters
// that the switch of an uplink keeps, switched on and off per uplink and switch.
#include <array>

#include "hostsim/Control.h"
#include "support/CommandTest.h"

namespace {

using Testing::DeclaredFieldNames;
using Testing::FieldNames;
using Testing::Int;
using Testing::Rows;
using Testing::Str;
using Words = std::vector<std::string>;

class NicStats : public Testing::CommandTest {
protected:
    // VLAN ID, packets received and sent of each row.
    std::vector<std::array<long, 3>> VlanRows(const std::string& nic) {
        std::vector<std::array<long, 3>> rows;
        for (const auto& row : Rows(RunList({"nic", "vlan", "stats", "get", "-n", nic}))) {
            rows.push_back(
                {Int(row, "VLAN ID"), Int(row, "Packets received"), Int(row, "Packets sent")});
        }
        return rows;
    }
};

TEST_F(NicStats, OneRowOfEveryCounterAlsoForPseudoNics) {
    auto list = RunList({"nic", "stats", "get", "-n", "hwnic6"});
    ASSERT_EQ(list->GetCount(), 1u);
    auto row = Rows(list).front();
    EXPECT_EQ(row->GetName(), "Nic");
    EXPECT_EQ(FieldNames(row), DeclaredFieldNames({"nic", "stats", "get"}));
    EXPECT_EQ(Str(row, "NIC Name"), "hwnic6");
    EXPECT_EQ(Int(row, "Packets received"), 31877);
    EXPECT_EQ(Int(row, "Packets sent"), 20331);
    EXPECT_EQ(Int(row, "Receive frame errors"), 4);
    EXPECT_EQ(Int(row, "Receive FIFO errors"), 9);
    EXPECT_EQ(Int(row, "Transmit window errors"), 0);
    // Counters beyond 32 bits stay whole.
    row = Rows(RunList({"nic", "stats", "get", "-n", "hwnic2"})).front();
    EXPECT_EQ(Int(row, "Bytes sent"), 2419877123904);
    EXPECT_EQ(Int(row, "Transmit carrier errors"), 3);

    EXPECT_EQ(RunError({"nic", "stats", "get", "-n", "hwnic99"}),
              "Unable to get stats for NIC: There is no NIC named hwnic99 on this host");
    HostSim::InjectFault("PnicImpl::GetPnicStats", "hwnic0", "Device busy");
    EXPECT_EQ(RunError({"nic", "stats", "get", "-n", "hwnic0"}),
              "Unable to get stats for NIC: Device busy");
}

TEST_F(NicStats, VlanCountersOfTheDefaultUplinks) {
    EXPECT_EQ(VlanRows("hwnic2"), (std::vector<std::array<long, 3>>{{0, 10311, 877},
                                                                    {20, 241877002, 259320114},
                                                                    {30, 46203112, 42544310},
                                                                    {110, 11952, 11963}}));
    const struct {
        Words words;
        std::string message;
    } refusals[] = {
        {{"get", "-n", "hwnic1"}, "VLAN stats are disabled for hwnic1 please enable them first."},
        {{"get", "-n", "hwnic4"}, "hwnic4 is not a valid NIC connected to any virtual switch."},
        {{"set", "-n", "hwnic4", "-e", "true"},
         "hwnic4 is not a valid NIC connected to any virtual switch."},
        {{"get", "-n", "hwnic99"}, "hwnic99 is not a valid NIC connected to any virtual switch."},
    };
    for (const auto& refusal : refusals) {
        Words words{"nic", "vlan", "stats"};
        words.insert(words.end(), refusal.words.begin(), refusal.words.end());
        EXPECT_EQ(RunError(words), refusal.message) << ::testing::PrintToString(words);
    }
    HostSim::InjectFault("Portset::GetVlanStats", "hwnic2", "Switch is busy");
    EXPECT_EQ(RunError({"nic", "vlan", "stats", "get", "-n", "hwnic2"}),
              "Unable to get VLAN stats: Switch is busy");
    HostSim::InjectFault("Portset::SetVlanStatsEnabled", "hwnic2", "Switch is busy");
    EXPECT_EQ(RunError({"nic", "vlan", "stats", "set", "-n", "hwnic2", "-e", "false"}),
              "Unable to set VLAN stats: Switch is busy");
}

TEST_F(NicStats, VlanCollectionSwitchesPerUplinkAndSwitch) {
    RunOk({"nic", "vlan", "stats", "set", "-n", "hwnic2", "-e", "false"});
    EXPECT_EQ(RunError({"nic", "vlan", "stats", "get", "-n", "hwnic2"}),
              "VLAN stats are disabled for hwnic2 please enable them first.");
    RunOk({"nic", "vlan", "stats", "set", "-n", "hwnic2", "-e", "true"});
    // Counting starts again from zero, for the untagged traffic and the port groups' VLANs.
    EXPECT_EQ(VlanRows("hwnic2"),
              (std::vector<std::array<long, 3>>{{0, 0, 0}, {20, 0, 0}, {30, 0, 0}}));
    // Switching on what counts already keeps the counters.
    RunOk({"nic", "vlan", "stats", "set", "-n", "hwnic0", "-e", "true"});
    EXPECT_EQ(VlanRows("hwnic0"), (std::vector<std::array<long, 3>>{{0, 91733482, 48211907}}));

    // A free NIC made an uplink counts once switched on, and only on its switch.
    RunOk({"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "hwnic4"});
    EXPECT_EQ(RunError({"nic", "vlan", "stats", "get", "-n", "hwnic4"}),
              "VLAN stats are disabled for hwnic4 please enable them first.");
    RunOk({"nic", "vlan", "stats", "set", "-n", "hwnic4", "-e", "true"});
    EXPECT_EQ(VlanRows("hwnic4"), (std::vector<std::array<long, 3>>{{0, 0, 0}}));
    RunOk({"vswitch", "standard", "uplink", "remove", "-v", "lanswitch0", "-u", "hwnic4"});
    RunOk({"vswitch", "standard", "uplink", "add", "-v", "storageswitch1", "-u", "hwnic4"});
    EXPECT_EQ(RunError({"nic", "vlan", "stats", "get", "-n", "hwnic4"}),
              "VLAN stats are disabled for hwnic4 please enable them first.");
}

}  // namespace
