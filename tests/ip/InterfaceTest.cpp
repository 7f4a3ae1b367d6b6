// Kelm interfaces: the refusals of add, remove, set, list and tags in their order, what the
// list shows for each kind of connection point, and the changes users make.
#include <fstream>
#include <sstream>

#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"
#include "hostsim/values/LocalMac.h"
#include "support/CommandTest.h"

namespace {

using Words = std::vector<std::string>;

struct Refusal {
    Words line;
    std::string message;
};

class Interface : public Testing::CommandTest {
protected:
    void ExpectRefusals(const std::vector<Refusal>& table) {
        for (const auto& refusal : table) {
            SCOPED_TRACE(::testing::PrintToString(refusal.line));
            EXPECT_EQ(RunError(refusal.line), refusal.message);
        }
    }
    std::shared_ptr<CppTools::MetaObj::MetaStruct> ListRow(const std::string& name,
                                                           const Words& parameters = {}) {
        Words line{"ip", "interface", "list"};
        line.insert(line.end(), parameters.begin(), parameters.end());
        return Testing::RowWhere(RunList(line), "Name", name);
    }
    // The MAC address the exported host gives the Kelm interface `name`.
    std::string ProfileMac(const std::string& name) {
        const HostSim::Json host = HostSim::ExportHost(HostSim::Store());
        for (const auto& nic : host["kelmnics"]) {
            if (nic["name"] == name) {
                return nic["mac"].get<std::string>();
            }
        }
        ADD_FAILURE() << "no Kelm interface " << name << " in the profile";
        return {};
    }
    std::vector<std::string> Names(const Words& parameters = {}) {
        Words line{"ip", "interface", "list"};
        line.insert(line.end(), parameters.begin(), parameters.end());
        std::vector<std::string> names;
        for (const auto& row : Testing::Rows(RunList(line))) {
            names.push_back(Testing::Str(row, "Name"));
        }
        return names;
    }
};

const char* const kConnectionPointMissing =
    "A connection point of either vswitch port group name or dvs-name/dvport-id should be "
    "specified. If connection point is DVPort, --dvs-name and --dvport-id must be specified at "
    "the same time.";
const char* const kOnlyOneConnectionPoint =
    "Only one connection point can be specified, vswitch port group or DVPort.";
const char* const kRemoveWay =
    "Please correctly and uniquely specify a way to remove it. A Kelm network interface can be "
    "uniquely specified by --interface-name or --portgroup-name or --dvs-name/--dvport-id. i.e. "
    "Providing its name or its connection point are two ways to uniquely specify a Kelm network "
    "interface.";

TEST_F(Interface, AddAndRemoveRefuseInTheirOrder) {
    ExpectRefusals({
        {{"ip", "interface", "add"}, kConnectionPointMissing},
        {{"ip", "interface", "add", "-s", "distswitch0"}, kConnectionPointMissing},
        {{"ip", "interface", "add", "-P", "9", "-p", "VM Network"}, kConnectionPointMissing},
        {{"ip", "interface", "add", "-s", "distswitch0", "-P", "9", "-p", "VM Network"},
         kOnlyOneConnectionPoint},
        // The netstack is checked before the connection point.
        {{"ip", "interface", "add", "-N", "nosuchstack"},
         "The netstack nosuchstack does not exist."},
        // The MAC address is checked before the port group is looked at.
        {{"ip", "interface", "add", "-p", "No Such Group", "-M", "zz:00"},
         "Invalid unicast MAC address specified."},
        {{"ip", "interface", "add", "-p", "VM Network", "-M", "zz"},
         "Invalid unicast MAC address specified."},
        {{"ip", "interface", "remove"}, kRemoveWay},
        {{"ip", "interface", "remove", "-i", "kelm5", "-p", "VM Network"}, kRemoveWay},
        {{"ip", "interface", "remove", "-i", "kelm5", "-s", "distswitch0"}, kRemoveWay},
        {{"ip", "interface", "remove", "-i", "kelm5", "-P", "8"}, kRemoveWay},
        {{"ip", "interface", "remove", "-P", "8"}, kConnectionPointMissing},
        {{"ip", "interface", "remove", "-p", "VM Network", "-s", "distswitch0"},
         kConnectionPointMissing},
    });
    // Nothing was made by any of them.
    EXPECT_EQ(Names(), (Words{"kelm0", "kelm1", "kelm2"}));
}

TEST_F(Interface, RemovingAnUnknownNameLeavesAFalseRoot) {
    // The netstack value plays no part when the name is given.
    const auto result = Run({"ip", "interface", "remove", "-i", "kelm77", "-N", "nosuchstack"});
    ASSERT_TRUE(result.output);
    EXPECT_EQ(result.output->GetErrorMessages(),
              (Words{"Unable to find Kelm network interface with the name kelm77"}));
    const auto root =
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaBool>(result.output->GetRootObject());
    ASSERT_TRUE(root);
    EXPECT_FALSE(root->GetValue());
}

TEST_F(Interface, BadNamesAreRefusedBeforeTheCommandRuns) {
    for (const char* name : {"kelm256", "kelm01", "eth0"}) {
        SCOPED_TRACE(name);
        const auto result = Run({"ip", "interface", "add", "-p", "VM Network", "-i", name});
        EXPECT_FALSE(result.hostMessages.empty());
        EXPECT_FALSE(result.output && result.output->GetRootObject());
    }
    EXPECT_EQ(Names().size(), 3u);
}

TEST_F(Interface, SetAndListRefusals) {
    ExpectRefusals({
        {{"ip", "interface", "set", "-i", "kelm7", "-e", "false"},
         "Unable to find an interface with name kelm7"},
        {{"ip", "interface", "list", "-t", "user", "-N", "glidex"},
         "Invalid type value, should be 'system'."},
        {{"ip", "interface", "list", "-t", "system", "-N", "glidex"},
         "Invalid netstack value, should be 'defaultTcpipStack'."},
    });
    // The enable step has taken effect when the MTU is refused.
    const auto result = Run({"ip", "interface", "set", "-i", "kelm2", "-e", "false", "-m", "-1"});
    ASSERT_TRUE(result.output);
    EXPECT_EQ(result.output->GetErrorMessages(), (Words{"MTU size should be a positive value"}));
    EXPECT_FALSE(result.output->GetRootObject());
    EXPECT_FALSE(Testing::Bool(ListRow("kelm2"), "Enabled"));
}

struct Cell {
    Words parameters;
    std::string row;
    std::string field;
    std::string value;
};

TEST_F(Interface, ListShowsEachKindOfConnectionPoint) {
    const std::vector<Cell> table{
        {{}, "kelm0", "MAC Address", ProfileMac("kelm0")},
        {{}, "kelm0", "Portgroup", "Management Network"},
        {{}, "kelm0", "Netstack Instance", "defaultTcpipStack"},
        {{}, "kelm0", "Portset", "lanswitch0"},
        {{}, "kelm0", "ODS Name", "N/A"},
        {{}, "kelm0", "ODS UUID", "N/A"},
        {{}, "kelm0", "ODS Port", "N/A"},
        {{}, "kelm0", "Opaque Network ID", "N/A"},
        {{}, "kelm1", "Portgroup", "Migration Network"},
        {{}, "kelm1", "Portset", "storageswitch1"},
        {{}, "kelm1", "Netstack Instance", "glidex"},
        {{"-N", "glidex"}, "kelm1", "Netstack Instance", "glidex"},
        {{}, "kelm2", "Portgroup", "N/A"},
        {{}, "kelm2", "ODS Name", "distswitch0"},
        {{}, "kelm2", "ODS Port", "8"},
        {{}, "kelm2", "External ID", "N/A"},
        {{"-t", "system"}, "kelm9", "Portgroup", "Kelm System Network"},
        {{"-t", "system", "-N", "defaultTcpipStack"}, "kelm9", "MAC Address", ProfileMac("kelm9")},
    };
    for (const auto& cell : table) {
        SCOPED_TRACE(cell.row + " " + cell.field);
        EXPECT_EQ(Testing::Str(ListRow(cell.row, cell.parameters), cell.field), cell.value);
    }
    const auto kelm1 = ListRow("kelm1");
    EXPECT_EQ(Testing::Int(kelm1, "MTU"), 9000);
    EXPECT_EQ(Testing::Int(kelm1, "RXDispQueue Size"), 4);
    EXPECT_EQ(Testing::Int(kelm1, "Port ID"), 50331652);
    EXPECT_EQ(Testing::Int(kelm1, "ODS Connection"), -1);
    EXPECT_EQ(Testing::Int(ListRow("kelm2"), "ODS Connection"), 1718601042);
    EXPECT_FALSE(Testing::Str(ListRow("kelm2"), "ODS UUID").empty());
    EXPECT_EQ(Names({"-N", "glidex"}), (Words{"kelm1"}));
    EXPECT_EQ(Names({"-t", "system"}), (Words{"kelm9"}));
    // An unknown netstack is no error here: the list is empty.
    EXPECT_TRUE(Names({"-N", "nosuchstack"}).empty());
}

TEST_F(Interface, SetChangesEnabledAndMtu) {
    RunOk({"ip", "interface", "set", "-i", "kelm0", "-e", "false", "-m", "9000"});
    auto row = ListRow("kelm0");
    EXPECT_FALSE(Testing::Bool(row, "Enabled"));
    EXPECT_EQ(Testing::Int(row, "MTU"), 9000);
    RunOk({"ip", "interface", "set", "-i", "kelm0", "--enabled=true"});
    row = ListRow("kelm0");
    EXPECT_TRUE(Testing::Bool(row, "Enabled"));
    EXPECT_EQ(Testing::Int(row, "MTU"), 9000);
}

TEST_F(Interface, AddWithoutAnAddressTakesAFreeOneOfTheKelmRange) {
    RunOk({"ip", "interface", "add", "-p", "VM Network", "-i", "kelm5"});
    const std::string mac = Testing::Str(ListRow("kelm5"), "MAC Address");
    EXPECT_TRUE(mac.starts_with(HostSim::LocalMacPrefix(HostSim::MacKind::KelmInterface))) << mac;
    for (const auto& row : Testing::Rows(RunList({"ip", "interface", "list"}))) {
        if (Testing::Str(row, "Name") != "kelm5") {
            EXPECT_NE(Testing::Str(row, "MAC Address"), mac) << Testing::Str(row, "Name");
        }
    }
}

TEST_F(Interface, AddOnAPortGroupThenRemoveFreesThePortGroup) {
    RunOk({"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "Lab Network"});
    const std::string mac = HostSim::LocalMac(HostSim::MacKind::KelmInterface, 0x55);
    RunOk({"ip", "interface", "add", "-p", "Lab Network", "-i", "kelm5", "-m", "1600", "-M", mac});
    const auto row = ListRow("kelm5");
    EXPECT_EQ(Testing::Str(row, "Portgroup"), "Lab Network");
    EXPECT_EQ(Testing::Str(row, "Netstack Instance"), "defaultTcpipStack");
    EXPECT_EQ(Testing::Str(row, "MAC Address"), mac);
    EXPECT_EQ(Testing::Int(row, "MTU"), 1600);
    // A port group in use can't go.
    EXPECT_FALSE(RunError({"vswitch", "standard", "portgroup", "remove", "-v", "lanswitch0", "-p",
                           "Lab Network"})
                     .empty());
    RunOk({"ip", "interface", "remove", "-p", "Lab Network"});
    EXPECT_EQ(Names(), (Words{"kelm0", "kelm1", "kelm2"}));
    RunOk({"vswitch", "standard", "portgroup", "remove", "-v", "lanswitch0", "-p", "Lab Network"});
}

TEST_F(Interface, AddOnADVPortAndRemoveByName) {
    RunOk({"ip", "interface", "add", "-s", "distswitch0", "-P", "9", "-i", "kelm6"});
    const auto row = ListRow("kelm6");
    EXPECT_EQ(Testing::Str(row, "ODS Name"), "distswitch0");
    EXPECT_EQ(Testing::Str(row, "ODS Port"), "9");
    // The DVPort had no connection: the time became its identifier.
    EXPECT_GT(Testing::Int(row, "ODS Connection"), 1700000000);
    RunOk({"ip", "interface", "remove", "-i", "kelm6"});
    EXPECT_EQ(Names(), (Words{"kelm0", "kelm1", "kelm2"}));
}

TEST_F(Interface, ADaemonFailureStillLeavesTheInterface) {
    RunOk({"ip", "netstack", "add", "-N", "OrbiqProvisioning"});
    RunOk({"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "Provisioning"});
    HostSim::InjectFault("Util::KelmCtl_Exec", "", "injected fault");
    const auto result = Run(
        {"ip", "interface", "add", "-p", "Provisioning", "-N", "OrbiqProvisioning", "-i", "kelm7"});
    HostSim::ClearFaults();
    ASSERT_TRUE(result.output);
    EXPECT_EQ(result.output->GetErrorMessages(),
              (Words{"Unable to start the TARN daemon. Take a look at /var/log/tarnd.log for more "
                     "information."}));
    const auto root =
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaBool>(result.output->GetRootObject());
    ASSERT_TRUE(root);
    EXPECT_TRUE(root->GetValue());
    EXPECT_EQ(Testing::Str(ListRow("kelm7"), "Netstack Instance"), "OrbiqProvisioning");
    EXPECT_EQ(Testing::Strings(RunStruct({"ip", "interface", "tag", "get", "-i", "kelm7"}), "Tags"),
              (Words{"Provisioning"}));
}

TEST_F(Interface, TheDaemonRestartIsRun) {
    RunOk({"ip", "netstack", "add", "-N", "OrbiqProvisioning"});
    RunOk({"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "Provisioning"});
    RunOk({"ip", "interface", "add", "-p", "Provisioning", "-N", "OrbiqProvisioning"});
    std::ifstream log(StateDirectory() + "/exec.log");
    std::stringstream text;
    text << log.rdbuf();
    EXPECT_NE(text.str().find("/etc/init.d/tarnd "), std::string::npos) << text.str();
    EXPECT_NE(text.str().find(" restart"), std::string::npos) << text.str();
}

}  // namespace
