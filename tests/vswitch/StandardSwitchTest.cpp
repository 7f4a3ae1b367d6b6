// Standard switches: adding, listing, changing and removing them, and their uplinks, with the
// commands' own checks and the host's rules.
#include "VswitchTest.h"

namespace {

using Testing::Bool;
using Testing::Int;
using Testing::Rows;
using Testing::Str;
using Testing::Strings;
using VswitchTesting::AdaptersOf;
using VswitchTesting::Words;

class StandardSwitch : public VswitchTesting::VswitchTest {
protected:
    Words SwitchNames(const Words& parameters = {}) {
        Words words{"vswitch", "standard", "list"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        Words names;
        for (const auto& row : Rows(RunList(words))) {
            names.push_back(Str(row, "Name"));
        }
        return names;
    }
};

TEST_F(StandardSwitch, ListShowsEveryOrdinarySwitchWithItsSettings) {
    EXPECT_EQ(SwitchNames(), (Words{"lanswitch0", "storageswitch1"}));
    auto row = SwitchRow("storageswitch1");
    ASSERT_TRUE(row);
    EXPECT_EQ(Str(row, "Class"), "etherswitch");
    EXPECT_EQ(Int(row, "Num Ports"), 256);
    EXPECT_EQ(Int(row, "Configured Ports"), 256);
    EXPECT_EQ(Int(row, "Used Ports"), 3);                      // its two uplinks and kelm1
    EXPECT_EQ(Int(SwitchRow("lanswitch0"), "Used Ports"), 3);  // and kelm0 on lanswitch0
    EXPECT_EQ(Int(row, "MTU"), 9000);
    EXPECT_EQ(Str(row, "CDP Status"), "both");
    EXPECT_TRUE(Bool(row, "Beacon Enabled"));
    EXPECT_EQ(Int(row, "Beacon Interval"), 1);
    EXPECT_EQ(Int(row, "Beacon Threshold"), 3);
    EXPECT_EQ(Strings(row, "Beacon Required By"),
              (Words{"Storage Network", "Migration Network", "Backup Network"}));
    EXPECT_EQ(Strings(row, "Uplinks"), (Words{"hwnic2", "hwnic3"}));
    EXPECT_EQ(Strings(row, "Portgroups"),
              (Words{"Storage Network", "Migration Network", "Backup Network"}));
}

TEST_F(StandardSwitch, ListByTypeAndName) {
    EXPECT_EQ(SwitchNames({"--type=system"}), Words{"kelmSystemSwitch0"});
    EXPECT_EQ(SwitchNames({"-v", "storageswitch1"}), Words{"storageswitch1"});
    EXPECT_EQ(SwitchNames({"-v", "kelmSystemSwitch0", "-t", "system"}), Words{"kelmSystemSwitch0"});
    EXPECT_EQ(Refused({"list", "--type=standard"}), "Invalid type value, should be 'system'.");
}

TEST_F(StandardSwitch, ListOfAnUnknownNameIsAnEmptyListBesideAMessage) {
    auto result = Standard({"list", "-v", "labswitch7"});
    ASSERT_TRUE(result.output);
    EXPECT_EQ(result.output->GetErrorMessages(), Words{"Unable to access null portset."});
    auto list =
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(result.output->GetRootObject());
    ASSERT_TRUE(list);
    EXPECT_EQ(list->GetCount(), 0u);
}

TEST_F(StandardSwitch, EmptyListsStayPresent) {
    Change({"add", "-v", "labswitch9"});
    auto row = SwitchRow("labswitch9");
    ASSERT_TRUE(row);
    EXPECT_EQ(Strings(row, "Beacon Required By"), Words{});
    EXPECT_EQ(Strings(row, "Uplinks"), Words{});
    EXPECT_EQ(Strings(row, "Portgroups"), Words{});
    EXPECT_EQ(Int(row, "Used Ports"), 0);
}

TEST_F(StandardSwitch, UplinksThatAreNoNicOfTheHostAreNotShown) {
    auto profile = ExportedHost();
    profile["vswitches"][0]["uplinks"] = {"hwnic0", "hwnic42", "hwnic1"};
    ImportHost(profile);
    EXPECT_EQ(Strings(SwitchRow("lanswitch0"), "Uplinks"), (Words{"hwnic0", "hwnic1"}));
}

TEST_F(StandardSwitch, AddGivesTheDefaultPortsAndPolicies) {
    Change({"add", "-v", "labswitch9"});
    Change({"add", "--vswitch-name=labswitch10", "-P", "1024"});
    EXPECT_EQ(SwitchNames(), (Words{"lanswitch0", "storageswitch1", "labswitch9", "labswitch10"}));
    EXPECT_EQ(Int(SwitchRow("labswitch9"), "Num Ports"), 128);
    EXPECT_EQ(Int(SwitchRow("labswitch10"), "Num Ports"), 1024);
    auto failover = SwitchFailover("labswitch9");
    EXPECT_EQ(Str(failover, "Load Balancing"), "srcport");
    EXPECT_EQ(Str(failover, "Network Failure Detection"), "link");
    EXPECT_TRUE(Bool(failover, "Notify Switches"));
    EXPECT_TRUE(Bool(failover, "Failback"));
    auto security = SwitchSecurity("labswitch9");
    EXPECT_FALSE(Bool(security, "Allow Promiscuous"));
    EXPECT_TRUE(Bool(security, "Allow MAC Address Change"));
    EXPECT_TRUE(Bool(security, "Allow Forged Transmits"));
    EXPECT_FALSE(Bool(SwitchShaping("labswitch9"), "Enabled"));
}

TEST_F(StandardSwitch, NamesUpTo127BytesAreTaken) {
    const std::string longest(127, 'v');
    Change({"add", "-v", longest});
    EXPECT_EQ(Refused({"add", "-v", longest + "w"}),
              "The virtual switch name exceeds the maximum allowed length. ");
    EXPECT_EQ(SwitchNames(), (Words{"lanswitch0", "storageswitch1", longest}));
}

TEST_F(StandardSwitch, HostRulesForNewSwitches) {
    EXPECT_EQ(Refused({"add", "-v", "lanswitch0"}), "Virtual switch lanswitch0 already exists");
    EXPECT_EQ(Refused({"add", "-v", "kelmSystemSwitch0"}),
              "Virtual switch kelmSystemSwitch0 already exists");
    EXPECT_EQ(Refused({"add", "-v", ""}), "A virtual switch name must not be empty");
    RefusedByHost({"add", "-v", "labswitch9", "--ports=0"});
    RefusedByHost({"add", "-v", "labswitch9", "--ports=4097"});
    EXPECT_EQ(SwitchNames(), (Words{"lanswitch0", "storageswitch1"}));
}

TEST_F(StandardSwitch, PortsOfAllSwitchesStayWithinTheHostsLimit) {
    // The default host has 128 + 256 + 64 ports allocated.
    Change({"add", "-v", "labswitch9", "-P", "4096"});
    EXPECT_EQ(Refused({"add", "-v", "labswitch10", "-P", "69"}),
              "Unable to give virtual switch labswitch10 69 ports: the host has 4544 of 4608 ports "
              "allocated");
    Change({"add", "-v", "labswitch10", "-P", "64"});
}

TEST_F(StandardSwitch, SetChangesMtuAndCdpStatus) {
    Change({"set", "-v", "lanswitch0", "--mtu=9000", "--cdp-status=advertise"});
    auto row = SwitchRow("lanswitch0");
    EXPECT_EQ(Int(row, "MTU"), 9000);
    EXPECT_EQ(Str(row, "CDP Status"), "advertise");
    Change({"set", "-v", "lanswitch0", "-c", "down"});
    EXPECT_EQ(Str(SwitchRow("lanswitch0"), "CDP Status"), "down");
    EXPECT_EQ(Int(SwitchRow("lanswitch0"), "MTU"), 9000);
    Change({"set", "-v", "lanswitch0"});
    RefusedByHost({"set", "-v", "lanswitch0", "--cdp-status=loud"});
}

TEST_F(StandardSwitch, SetRefusals) {
    EXPECT_EQ(Refused({"set", "-v", "labswitch7", "--mtu=9000"}),
              "labswitch7 is not a valid name for a virtual switch");
    EXPECT_EQ(Refused({"set", "-v", "kelmSystemSwitch0", "--mtu=9000"}),
              "Unable to find a virtual switch with name kelmSystemSwitch0");
    EXPECT_EQ(Refused({"set", "-v", "lanswitch0", "--mtu=-1", "--cdp-status=both"}),
              "MTU size should be a positive value");
    EXPECT_EQ(Refused({"set", "-v", "lanswitch0", "--mtu=0"}), "MTU 0 is out of range (1280-9000)");
    EXPECT_EQ(Refused({"set", "-v", "lanswitch0", "--mtu=9001"}),
              "MTU 9001 is out of range (1280-9000)");
    auto row = SwitchRow("lanswitch0");
    EXPECT_EQ(Int(row, "MTU"), 1500);
    EXPECT_EQ(Str(row, "CDP Status"), "listen");
}

TEST_F(StandardSwitch, SetIsNotRolledBackWhenTheSecondChangeFails) {
    HostSim::InjectFault("VirtualSwitch::SetCdpStatus", "lanswitch0", "CDP daemon not responding");
    EXPECT_EQ(Refused({"set", "-v", "lanswitch0", "--mtu=9000", "--cdp-status=both"}),
              "CDP daemon not responding");
    HostSim::ClearFaults();
    auto row = SwitchRow("lanswitch0");
    EXPECT_EQ(Int(row, "MTU"), 9000);
    EXPECT_EQ(Str(row, "CDP Status"), "listen");
}

TEST_F(StandardSwitch, RemoveTakesTheSwitchWithItsPortGroupsAndFreesItsUplinks) {
    Change({"add", "-v", "labswitch9"});
    Change({"uplink", "add", "-v", "labswitch9", "-u", "hwnic4"});
    Change({"portgroup", "add", "-p", "Lab", "-v", "labswitch9"});
    Change({"remove", "-v", "labswitch9"});
    EXPECT_EQ(SwitchNames(), (Words{"lanswitch0", "storageswitch1"}));
    EXPECT_EQ(
        RunError({"vswitch", "standard", "portgroup", "policy", "security", "get", "-p", "Lab"}),
        "Unable to find a port group with the name Lab");
    Change({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic4"});
    EXPECT_EQ(Strings(SwitchRow("lanswitch0"), "Uplinks"), (Words{"hwnic0", "hwnic1", "hwnic4"}));
}

TEST_F(StandardSwitch, RemoveRefusals) {
    EXPECT_EQ(Refused({"remove", "-v", "labswitch7"}),
              "Unable to find virtual switch with the name labswitch7");
    EXPECT_EQ(Refused({"remove", "-v", "lanswitch0"}),
              "Virtual switch lanswitch0 can't be removed: its port group Management Network is in "
              "use by kelm0");
    EXPECT_EQ(SwitchNames(), (Words{"lanswitch0", "storageswitch1"}));
}

TEST_F(StandardSwitch, UplinksComeAndGo) {
    Change({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic4"});
    EXPECT_EQ(Strings(SwitchRow("lanswitch0"), "Uplinks"), (Words{"hwnic0", "hwnic1", "hwnic4"}));
    EXPECT_EQ(Strings(SwitchFailover("lanswitch0"), "Unused Adapters"), Words{"hwnic4"});
    Change({"uplink", "remove", "-v", "lanswitch0", "-u", "hwnic0"});
    EXPECT_EQ(Strings(SwitchRow("lanswitch0"), "Uplinks"), (Words{"hwnic1", "hwnic4"}));
    // The NIC leaves the teaming of the switch and of its port groups.
    EXPECT_EQ(AdaptersOf(SwitchFailover("lanswitch0")),
              (VswitchTesting::Adapters{{"hwnic1"}, {}, {"hwnic4"}}));
    EXPECT_EQ(AdaptersOf(PortGroupFailover("Management Network")),
              (VswitchTesting::Adapters{{}, {"hwnic1"}, {"hwnic4"}}));
}

TEST_F(StandardSwitch, UplinkRefusalsAreTheHosts) {
    EXPECT_EQ(Refused({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic99"}),
              "There is no NIC named hwnic99 on this host");
    EXPECT_EQ(Refused({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic2"}),
              "NIC hwnic2 is already an uplink of storageswitch1");
    EXPECT_EQ(Refused({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic0"}),
              "NIC hwnic0 is already an uplink of lanswitch0");
    EXPECT_EQ(Refused({"uplink", "remove", "-v", "lanswitch0", "-u", "hwnic2"}),
              "NIC hwnic2 is not an uplink of lanswitch0");
    EXPECT_EQ(Strings(SwitchRow("lanswitch0"), "Uplinks"), (Words{"hwnic0", "hwnic1"}));
}

TEST_F(StandardSwitch, UplinkCommandsOnAnUnknownSwitchChangeNothing) {
    Change({"uplink", "add", "-v", "labswitch7", "-u", "hwnic4"});
    Change({"uplink", "remove", "-v", "labswitch7", "-u", "hwnic0"});
    Change({"uplink", "add", "-v", "kelmSystemSwitch0", "-u", "hwnic4"});
    Change({"uplink", "add", "-v", "storageswitch1", "-u", "hwnic4"});
    EXPECT_EQ(Strings(SwitchRow("storageswitch1"), "Uplinks"),
              (Words{"hwnic2", "hwnic3", "hwnic4"}));
}

}  // namespace
