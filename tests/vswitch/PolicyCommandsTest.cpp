// The policy commands of switches and port groups: finding their object, what the get commands
// show (the port group's override columns above all), and what the set commands write.
#include "VswitchTest.h"
#include "hostctl/NetworkInfo.h"

namespace {

using Testing::Bool;
using Testing::Int;
using Testing::Str;
using VswitchTesting::Adapters;
using VswitchTesting::AdaptersOf;
using VswitchTesting::Words;

class PolicyCommands : public VswitchTesting::VswitchTest {
protected:
    static std::vector<bool> Flags(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row,
                                   const Words& fields) {
        std::vector<bool> flags;
        for (const auto& field : fields) {
            flags.push_back(Bool(row, field));
        }
        return flags;
    }

    static std::vector<bool> FailoverOverrides(
        const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row) {
        return Flags(
            row, {"Override Vswitch Load Balancing", "Override Vswitch Network Failure Detection",
                  "Override Vswitch Notify Switches", "Override Vswitch Failback",
                  "Override Vswitch Uplinks"});
    }
    static std::vector<bool> SecurityOverrides(
        const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row) {
        return Flags(
            row, {"Override Vswitch Allow Promiscuous", "Override Vswitch Allow MAC Address Change",
                  "Override Vswitch Allow Forged Transmits"});
    }
    static std::vector<bool> ShapingOverrides(
        const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row) {
        return Flags(row, {"Override Vswitch Enabled", "Override Vswitch Average Bandwidth",
                           "Override Vswitch Peak Bandwidth", "Override Vswitch Burst Size"});
    }
    static std::vector<long> Numbers(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row) {
        return {Int(row, "Average Bandwidth"), Int(row, "Peak Bandwidth"), Int(row, "Burst Size")};
    }

    Words PortGroupSet(const std::string& policy, const std::string& portGroup,
                       const Words& parameters) {
        Words words{"portgroup", "policy", policy, "set", "-p", portGroup};
        words.insert(words.end(), parameters.begin(), parameters.end());
        return ChangeReporting(words);
    }
};

const std::vector<bool> kNone3{false, false, false};
const std::vector<bool> kNone4{false, false, false, false};
const std::vector<bool> kNone5{false, false, false, false, false};

TEST_F(PolicyCommands, SwitchPolicyCommandsFindOnlyOrdinarySwitches) {
    for (const char* policy : {"shaping", "security", "failover"}) {
        for (const char* verb : {"get", "set"}) {
            for (const char* name : {"labswitch7", "kelmSystemSwitch0"}) {
                EXPECT_EQ(
                    Refused({"policy", policy, verb, "-v", name}),
                    std::string("Unable to find a legacy virtual switch with the name ") + name)
                    << policy << " " << verb;
            }
        }
    }
}

TEST_F(PolicyCommands, PortGroupPolicyCommandsNameAnUnknownPortGroup) {
    for (const char* policy : {"shaping", "security", "failover"}) {
        for (const char* verb : {"get", "set"}) {
            EXPECT_EQ(Refused({"portgroup", "policy", policy, verb, "-p", "Lab"}),
                      "Unable to find a port group with the name Lab")
                << policy << " " << verb;
        }
    }
}

TEST_F(PolicyCommands, SwitchSecuritySetChangesOnlyWhatIsGiven) {
    Change({"policy", "security", "set", "-v", "storageswitch1", "-p", "true"});
    auto security = SwitchSecurity("storageswitch1");
    EXPECT_EQ(Flags(security,
                    {"Allow Promiscuous", "Allow MAC Address Change", "Allow Forged Transmits"}),
              (std::vector<bool>{true, false, false}));
    Change({"policy", "security", "set", "-v", "storageswitch1", "--allow-mac-change=true",
            "--allow-forged-transmits=true", "--allow-promiscuous=false"});
    EXPECT_EQ(Flags(SwitchSecurity("storageswitch1"),
                    {"Allow Promiscuous", "Allow MAC Address Change", "Allow Forged Transmits"}),
              (std::vector<bool>{false, true, true}));
    Change({"policy", "security", "set", "-v", "storageswitch1"});
    EXPECT_EQ(Flags(SwitchSecurity("storageswitch1"),
                    {"Allow Promiscuous", "Allow MAC Address Change", "Allow Forged Transmits"}),
              (std::vector<bool>{false, true, true}));
}

TEST_F(PolicyCommands, PortGroupThatOverridesNothingShowsItsSwitchsValues) {
    auto failover = PortGroupFailover("VM Network");
    EXPECT_EQ(FailoverOverrides(failover), kNone5);
    EXPECT_EQ(Str(failover, "Load Balancing"), "srcport");
    EXPECT_EQ(AdaptersOf(failover), (Adapters{{"hwnic0", "hwnic1"}, {}, {}}));
    auto security = PortGroupSecurity("Storage Network");
    EXPECT_EQ(SecurityOverrides(security), kNone3);
    EXPECT_FALSE(Bool(security, "Allow MAC Address Change"));
    auto shaping = PortGroupShaping("Storage Network");
    EXPECT_EQ(ShapingOverrides(shaping), kNone4);
    EXPECT_TRUE(Bool(shaping, "Enabled"));
    EXPECT_EQ(Numbers(shaping), (std::vector<long>{500000, 1000000, 409600}));
}

TEST_F(PolicyCommands, OverrideColumnsShowWhatThePortGroupSets) {
    auto failover = PortGroupFailover("Management Network");
    EXPECT_EQ(FailoverOverrides(failover), (std::vector<bool>{true, false, false, false, true}));
    EXPECT_EQ(Str(failover, "Load Balancing"), "explicit");
    EXPECT_EQ(AdaptersOf(failover), (Adapters{{"hwnic0"}, {"hwnic1"}, {}}));
    auto security = PortGroupSecurity("Backup Network");
    EXPECT_EQ(SecurityOverrides(security), (std::vector<bool>{true, false, false}));
    EXPECT_TRUE(Bool(security, "Allow Promiscuous"));
    auto shaping = PortGroupShaping("Backup Network");
    EXPECT_EQ(ShapingOverrides(shaping), (std::vector<bool>{true, true, true, true}));
    EXPECT_EQ(Numbers(shaping), (std::vector<long>{200000, 400000, 204800}));
}

TEST_F(PolicyCommands, ASwitchChangeShowsThroughWhereThePortGroupDoesNotOverride) {
    Change({"policy", "failover", "set", "-v", "lanswitch0", "--load-balancing=mac",
            "--notify-switches=false"});
    auto failover = PortGroupFailover("Management Network");
    EXPECT_EQ(Str(failover, "Load Balancing"), "explicit");
    EXPECT_FALSE(Bool(failover, "Notify Switches"));
    EXPECT_EQ(Str(PortGroupFailover("VM Network"), "Load Balancing"), "srcmac");
}

TEST_F(PolicyCommands, FailoverUseVswitchAloneClearsEveryOverride) {
    EXPECT_EQ(PortGroupSet("failover", "Management Network", {"--use-vswitch"}), Words{});
    auto failover = PortGroupFailover("Management Network");
    EXPECT_EQ(FailoverOverrides(failover), kNone5);
    EXPECT_EQ(Str(failover, "Load Balancing"), "srcport");
    EXPECT_EQ(AdaptersOf(failover), (Adapters{{"hwnic0", "hwnic1"}, {}, {}}));
}

TEST_F(PolicyCommands, FailoverUseVswitchThenOneSetting) {
    EXPECT_EQ(PortGroupSet("failover", "Management Network", {"-u", "--failback=false"}), Words{});
    auto failover = PortGroupFailover("Management Network");
    EXPECT_EQ(FailoverOverrides(failover), (std::vector<bool>{false, false, false, true, false}));
    EXPECT_FALSE(Bool(failover, "Failback"));
    EXPECT_TRUE(Bool(SwitchFailover("lanswitch0"), "Failback"));
}

TEST_F(PolicyCommands, PortGroupUplinksOverrideTheSwitchsOrder) {
    EXPECT_EQ(PortGroupSet("failover", "VM Network", {"--active-uplinks=hwnic1"}), Words{});
    auto failover = PortGroupFailover("VM Network");
    EXPECT_EQ(AdaptersOf(failover), (Adapters{{"hwnic1"}, {}, {"hwnic0"}}));
    EXPECT_EQ(FailoverOverrides(failover), (std::vector<bool>{false, false, false, false, true}));
    EXPECT_EQ(AdaptersOf(SwitchFailover("lanswitch0")), (Adapters{{"hwnic0", "hwnic1"}, {}, {}}));
    EXPECT_EQ(PortGroupSet("failover", "VM Network", {"--standby-uplinks=hwnic2"}),
              Words{"NIC is not connected to the vswitch : hwnic2"});
}

TEST_F(PolicyCommands, SecurityUseVswitchThenOneSetting) {
    EXPECT_EQ(PortGroupSet("security", "Backup Network", {"--use-vswitch", "-o", "false"}),
              Words{});
    EXPECT_EQ(SecurityOverrides(PortGroupSecurity("Backup Network")),
              (std::vector<bool>{true, false, false}));
    EXPECT_FALSE(Bool(PortGroupSecurity("Backup Network"), "Allow Promiscuous"));
    EXPECT_EQ(PortGroupSet("security", "VM Network",
                           {"--use-vswitch", "--allow-promiscuous=true", "-f", "false"}),
              Words{});
    auto security = PortGroupSecurity("VM Network");
    EXPECT_EQ(SecurityOverrides(security), (std::vector<bool>{true, false, true}));
    EXPECT_EQ(Flags(security,
                    {"Allow Promiscuous", "Allow MAC Address Change", "Allow Forged Transmits"}),
              (std::vector<bool>{true, true, false}));
}

TEST_F(PolicyCommands, ShapingUseVswitchHandsThePortGroupBackToItsSwitch) {
    EXPECT_EQ(PortGroupSet("shaping", "Backup Network", {"--use-vswitch"}), Words{});
    auto shaping = PortGroupShaping("Backup Network");
    EXPECT_EQ(ShapingOverrides(shaping), kNone4);
    EXPECT_EQ(Numbers(shaping), (std::vector<long>{500000, 1000000, 409600}));
}

TEST_F(PolicyCommands, ShapingUseVswitchWithValuesButNoEnabledHasNoEffect) {
    EXPECT_EQ(PortGroupSet("shaping", "Backup Network", {"--use-vswitch", "--avg-bandwidth=7"}),
              Words{});
    EXPECT_EQ(ShapingOverrides(PortGroupShaping("Backup Network")), kNone4);
}

TEST_F(PolicyCommands, PortGroupShapingOfItsOwn) {
    auto shaping = PortGroupShaping("VM Network");
    EXPECT_EQ(Numbers(shaping), (std::vector<long>{-1, -1, -1}));
    EXPECT_EQ(PortGroupSet(
                  "shaping", "VM Network",
                  {"--enabled=true", "--avg-bandwidth=1", "--peak-bandwidth=1", "--burst-size=1"}),
              Words{});
    shaping = PortGroupShaping("VM Network");
    EXPECT_EQ(Numbers(shaping), (std::vector<long>{1, 1, 1}));
    EXPECT_EQ(ShapingOverrides(shaping), (std::vector<bool>{true, true, true, true}));
    EXPECT_EQ(Numbers(SwitchShaping("lanswitch0")), (std::vector<long>{-1, -1, -1}));
}

TEST_F(PolicyCommands, DisabledShapingStillShowsTheOverrides) {
    EXPECT_EQ(PortGroupSet("shaping", "Storage Network", {"--enabled=false"}), Words{});
    auto shaping = PortGroupShaping("Storage Network");
    EXPECT_FALSE(Bool(shaping, "Enabled"));
    EXPECT_EQ(Numbers(shaping), (std::vector<long>{-1, -1, -1}));
    EXPECT_EQ(ShapingOverrides(shaping), (std::vector<bool>{true, false, false, false}));
}

TEST_F(PolicyCommands, PortGroupShapingMessagesWriteNothing) {
    EXPECT_EQ(PortGroupSet("shaping", "VM Network", {"--enabled=true", "--peak-bandwidth=5"}),
              (Words{"Missing required parameter --avg-bandwidth",
                     "Missing required parameter --burst-size"}));
    EXPECT_EQ(ShapingOverrides(PortGroupShaping("VM Network")), kNone4);
}

TEST_F(PolicyCommands, ASwitchEditsItsEffectiveShaping) {
    auto profile = ExportedHost();
    profile["vswitches"][0]["policies"].erase("shaping");
    ImportHost(profile);
    const auto ownShaping = [] {
        return HostCtl::Network::NetworkFactory::GetVirtualSwitchById(
                   "lanswitch0", HostCtl::Network::PortsetGetNormal)
            ->GetShapingPolicy();
    };
    ASSERT_EQ(ownShaping().setFields, 0u);
    Change({"policy", "shaping", "set", "-v", "lanswitch0", "--enabled=false"});
    const auto own = ownShaping();
    EXPECT_EQ(own.setFields, 0xfu);
    EXPECT_EQ(own.averageBps, 100'000'000u);
}

}  // namespace
