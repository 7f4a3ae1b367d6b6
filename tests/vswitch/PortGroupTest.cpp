// Port groups: listing, adding, removing and their VLAN ids.
#include "VswitchTest.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/PortGroup.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace {

using Testing::Int;
using Testing::Rows;
using Testing::Str;
using VswitchTesting::Words;

class PortGroups : public VswitchTesting::VswitchTest {
protected:
    // "name@switch:clients:vlan" per row, in order.
    Words Listed(const Words& parameters = {}) {
        Words words{"vswitch", "standard", "portgroup", "list"};
        words.insert(words.end(), parameters.begin(), parameters.end());
        Words rows;
        for (const auto& row : Rows(RunList(words))) {
            rows.push_back(Str(row, "Name") + "@" + Str(row, "Virtual Switch") + ":" +
                           std::to_string(Int(row, "Active Clients")) + ":" +
                           std::to_string(Int(row, "VLAN ID")));
        }
        return rows;
    }
};

TEST_F(PortGroups, ListShowsEachPortGroupWithItsSwitchClientsAndVlan) {
    EXPECT_EQ(Listed(),
              (Words{"Management Network@lanswitch0:1:0", "VM Network@lanswitch0:0:0",
                     "Storage Network@storageswitch1:0:20", "Migration Network@storageswitch1:1:30",
                     "Backup Network@storageswitch1:0:4095"}));
    EXPECT_EQ(Listed({"--type=system"}), Words{"Kelm System Network@kelmSystemSwitch0:1:0"});
    EXPECT_EQ(RunError({"vswitch", "standard", "portgroup", "list", "-t", "legacy"}),
              "Invalid type value, should be 'system'.");
}

TEST_F(PortGroups, ListOfAHostWithoutPortGroupsIsEmpty) {
    auto profile = ExportedHost();
    for (auto& virtualSwitch : profile["vswitches"]) {
        virtualSwitch["portGroups"] = HostSim::Json::array();
    }
    // Ports attach to port groups, so they go too.
    profile["ports"]["ports"] = HostSim::Json::array();
    profile["kelmnics"] = HostSim::Json::array();
    ImportHost(profile);
    EXPECT_EQ(Listed(), Words{});
}

TEST_F(PortGroups, AddPutsANewPortGroupOnItsSwitch) {
    Change({"portgroup", "add", "-p", "Test Network", "-v", "storageswitch1"});
    Change({"portgroup", "add", "--portgroup-name=Lab", "--vswitch-name=lanswitch0"});
    auto listed = Listed();
    ASSERT_EQ(listed.size(), 7u);
    EXPECT_EQ(listed[2], "Lab@lanswitch0:0:0");
    EXPECT_EQ(listed[6], "Test Network@storageswitch1:0:0");
    EXPECT_EQ(Testing::Strings(SwitchRow("lanswitch0"), "Portgroups"),
              (Words{"Management Network", "VM Network", "Lab"}));
}

TEST_F(PortGroups, AddRefusals) {
    EXPECT_EQ(Refused({"portgroup", "add", "-p", "VM Network", "-v", "lanswitch0"}),
              "Port group VM Network already exists on lanswitch0");
    EXPECT_EQ(Refused({"portgroup", "add", "-p", "VM Network", "-v", "storageswitch1"}),
              "Port group VM Network already exists on lanswitch0");
    EXPECT_EQ(Refused({"portgroup", "add", "-p", "Lab", "-v", "labswitch7"}),
              "Unable to find a virtual switch with name labswitch7");
    EXPECT_EQ(Refused({"portgroup", "add", "-p", "", "-v", "lanswitch0"}),
              "A port group name must not be empty");
    EXPECT_EQ(Refused({"portgroup", "add", "-p", std::string(128, 'p'), "-v", "lanswitch0"}),
              "The port group name " + std::string(128, 'p') + " is longer than 127 bytes");
    EXPECT_EQ(Listed().size(), 5u);
}

TEST_F(PortGroups, RemoveTakesAPortGroupThatIsNotInUse) {
    Change({"portgroup", "remove", "-p", "Storage Network", "-v", "storageswitch1"});
    EXPECT_EQ(Listed(), (Words{"Management Network@lanswitch0:1:0", "VM Network@lanswitch0:0:0",
                               "Migration Network@storageswitch1:1:30",
                               "Backup Network@storageswitch1:0:4095"}));
}

TEST_F(PortGroups, RemoveRefusals) {
    EXPECT_EQ(Refused({"portgroup", "remove", "-p", "Management Network", "-v", "lanswitch0"}),
              "Port group Management Network is in use by kelm0");
    EXPECT_EQ(Refused({"portgroup", "remove", "-p", "VM Network", "-v", "storageswitch1"}),
              "There is no port group named VM Network on storageswitch1");
    EXPECT_EQ(Refused({"portgroup", "remove", "-p", "Lab", "-v", "lanswitch0"}),
              "There is no port group named Lab on lanswitch0");
    EXPECT_EQ(Refused({"portgroup", "remove", "-p", "Lab", "-v", "labswitch7"}),
              "Unable to find a virtual switch with name labswitch7");
    EXPECT_EQ(Listed().size(), 5u);
}

TEST_F(PortGroups, SetChangesTheVlanWithinItsRange) {
    Change({"portgroup", "set", "-p", "VM Network", "--vlan-id=4095"});
    Change({"portgroup", "set", "-p", "Storage Network", "-v", "0"});
    const auto listed = Listed();
    EXPECT_EQ(listed[1], "VM Network@lanswitch0:0:4095");
    EXPECT_EQ(listed[2], "Storage Network@storageswitch1:0:0");
    RefusedByHost({"portgroup", "set", "-p", "VM Network", "--vlan-id=4096"});
    RefusedByHost({"portgroup", "set", "-p", "VM Network", "--vlan-id=-1"});
    EXPECT_EQ(Refused({"portgroup", "set", "-p", "Lab", "--vlan-id=5"}),
              "Unable to find a port group with the name Lab");
}

TEST_F(PortGroups, VlanIdDescriptionNamesTheHostsRange) {
    auto command = Standard({"portgroup", "set", "-p", "VM Network", "-v", "1"}).command;
    ASSERT_TRUE(command);
    auto spec = command->GetInputSpec();
    ASSERT_TRUE(spec);
    ASSERT_EQ(spec->GetParameters().size(), 2u);
    const auto& vlanId = spec->GetParameters()[1];
    EXPECT_EQ(vlanId->GetName(), "vlan-id");
    EXPECT_EQ(vlanId->GetDescription(),
              "The vlan id for this port group. This value is in the range (0 - 4095)");
    ASSERT_TRUE(vlanId->GetConstraint());
    EXPECT_EQ(vlanId->GetConstraint()->GetLow(), 0);
    EXPECT_EQ(vlanId->GetConstraint()->GetHigh(), 4095);
}

// A switch lists its port groups by name; the rest of a port group is read when first asked
// for, so it shows the host as it is then.
TEST_F(PortGroups, ASwitchsPortGroupIsReadInFullWhenFirstAskedFor) {
    auto virtualSwitch = KelmCtl::Network::VirtualSwitchInfoImpl().GetVirtualSwitchByName(
        "storageswitch1", HostCtl::Network::PortsetGetNormal);
    ASSERT_TRUE(virtualSwitch);
    auto portGroups = virtualSwitch->GetPortGroups();
    ASSERT_EQ(portGroups.size(), 3u);
    Change({"portgroup", "set", "-p", "Migration Network", "--vlan-id=31"});
    Change({"portgroup", "remove", "-p", "Backup Network", "-v", "storageswitch1"});
    EXPECT_EQ(portGroups[0]->GetName(), "Storage Network");
    EXPECT_EQ(portGroups[0]->GetVlanId(), 20);
    EXPECT_EQ(portGroups[1]->GetActiveClients(), 1u);
    EXPECT_EQ(portGroups[1]->GetVlanId(), 31);
    EXPECT_EQ(portGroups[2]->GetPortsetName(), "storageswitch1");
    try {
        portGroups[2]->GetVlanId();
        ADD_FAILURE() << "a removed port group gave its VLAN id";
    } catch (const HostCtl::Lib::HostCtlException& e) {
        EXPECT_STREQ(e.what(), "There is no port group named Backup Network");
    }
}

}  // namespace
