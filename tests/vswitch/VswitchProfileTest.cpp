// The switches in a profile: export and import give back the same host, scaling copies the
// switches with their uplinks and port groups, and a profile the host can't take is refused.
#include "VswitchTest.h"
#include "hostctl/HostCtlException.h"

namespace {

using HostSim::Json;
using Testing::Rows;
using Testing::Str;
using Testing::Strings;
using VswitchTesting::Words;

class VswitchProfile : public VswitchTesting::VswitchTest {
protected:
    std::string ImportFailure(const Json& profile) {
        try {
            ImportHost(profile);
        } catch (const HostCtl::Lib::HostCtlException& e) {
            return e.what();
        }
        return "accepted";
    }
};

TEST_F(VswitchProfile, ExportThenImportGivesBackTheSameSwitches) {
    Change({"add", "-v", "labswitch9"});
    Change({"uplink", "add", "-v", "labswitch9", "-u", "hwnic4"});
    Change({"portgroup", "add", "-p", "Lab", "-v", "labswitch9"});
    Change({"portgroup", "policy", "failover", "set", "-p", "Lab", "-a", "hwnic4", "-l", "mac"});
    Change({"portgroup", "policy", "shaping", "set", "-p", "VM Network", "--enabled=false"});
    const Json exported = ExportedHost();
    const auto failover = PortGroupFailover("Lab");
    ImportHost(exported);
    EXPECT_EQ(ExportedHost()["vswitches"], exported["vswitches"]);
    auto after = PortGroupFailover("Lab");
    EXPECT_EQ(Str(after, "Load Balancing"), Str(failover, "Load Balancing"));
    EXPECT_EQ(Strings(after, "Active Adapters"), Words{"hwnic4"});
}

TEST_F(VswitchProfile, ScalingCopiesSwitchesUplinksAndPortGroups) {
    auto result = Testing::RunHostsim({"init", "--scale=2"}, StateDirectory());
    ASSERT_EQ(result.status, 0) << result.err;
    Words names;
    for (const auto& row : Rows(RunList({"vswitch", "standard", "list"}))) {
        names.push_back(Str(row, "Name"));
    }
    EXPECT_EQ(names, (Words{"lanswitch0", "storageswitch1", "lanswitch1", "storageswitch3"}));
    auto copy = SwitchRow("lanswitch1");
    EXPECT_EQ(Strings(copy, "Uplinks"), (Words{"hwnic11", "hwnic12"}));
    EXPECT_EQ(Strings(copy, "Portgroups"), (Words{"Management Network 1", "VM Network 1"}));
    EXPECT_EQ(Strings(PortGroupFailover("Management Network 1"), "Active Adapters"),
              Words{"hwnic11"});
    EXPECT_EQ(Rows(RunList({"vswitch", "standard", "portgroup", "list", "-t", "system"})).size(),
              2u);
}

TEST_F(VswitchProfile, AProfileTheHostCantTakeIsRefusedWhole) {
    const Json original = ExportedHost();
    auto profile = original;
    profile["vswitches"][1]["uplinks"].push_back("hwnic0");
    EXPECT_EQ(ImportFailure(profile),
              "The profile gives NIC hwnic0 to more than one virtual switch");
    profile = original;
    profile["vswitches"][0]["portGroups"][1]["vlanId"] = 4096;
    EXPECT_EQ(ImportFailure(profile), "VLAN ID 4096 is out of range (0-4095)");
    profile = original;
    profile["vswitches"][0]["ports"] = 0;
    EXPECT_EQ(ImportFailure(profile), "Port count 0 is out of range (1-4096)");
    profile = original;
    profile["vswitches"][1]["portGroups"][0]["name"] = "VM Network";
    EXPECT_EQ(ImportFailure(profile), "The profile has more than one port group named VM Network");
    profile = original;
    profile["vswitches"][1]["name"] = "lanswitch0";
    EXPECT_EQ(ImportFailure(profile),
              "The profile has more than one virtual switch named lanswitch0");
    EXPECT_EQ(ExportedHost()["vswitches"], original["vswitches"]);
}

}  // namespace
