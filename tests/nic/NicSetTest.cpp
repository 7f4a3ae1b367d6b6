// `nic set`: the command's checks in their order, the host's refusals, and what a change shows
// in `nic get` and `nic list` while the other fields stay.
#include "hostsim/Control.h"
#include "hostsim/values/LocalMac.h"
#include "support/CommandTest.h"

namespace {

using Testing::Bool;
using Testing::Int;
using Testing::RowWhere;
using Testing::Str;
using Testing::Strings;
using Words = std::vector<std::string>;

class NicSet : public Testing::CommandTest {
protected:
    std::shared_ptr<CppTools::MetaObj::MetaStruct> Get(const std::string& nic) {
        return RunStruct({"nic", "get", "-n", nic});
    }
    std::shared_ptr<CppTools::MetaObj::MetaStruct> Listed(const std::string& nic) {
        return RowWhere(RunList({"nic", "list"}), "Name", nic);
    }
};

struct Refusal {
    Words parameters;
    std::string message;
};

TEST_F(NicSet, RefusesInTheOrderOfItsChecksAndTheHostsRules) {
    const Refusal refusals[] = {
        // The command's own checks come before the look-up of the NIC.
        {{"-n", "hwnic99", "-S", "1000"},
         "The --speed and --duplex options must be specified together"},
        {{"-n", "hwnic0", "-D", "full"},
         "The --speed and --duplex options must be specified together"},
        {{"-n", "hwnic99", "-a", "-S", "1000", "-D", "full"},
         "The options --speed and --duplex cannot be specified with the --auto option."},
        {{"-n", "hwnic99", "-t", "external"}, "There is no pnic with name hwnic99"},
        {{"-n", "hwnic0"}, "There is no change for nic hwnic0"},
        {{"-n", "hwnic0", "-P", "-1"}, "There is no change for nic hwnic0"},
        {{"-n", "hwnic0", "-p", "tp", "-P", "1", "-t", "internal", "-l", "7"},
         "There is no change for nic hwnic0"},
        {{"-n", "hwnic0", "-P", "0"}, "Invalid PHY address value."},
        {{"-n", "hwnic0", "-P", "-2"}, "Invalid PHY address value."},
        {{"-n", "hwnic2", "-w", "g"}, "Not Support wol."},
        {{"-n", "hwnic0", "-w", "gd"}, "Invalid wol value."},
        {{"-n", "hwnic2", "-l", "3"}, "Not Support msglvl."},
        // The command's refusals come before the speed check of the host.
        {{"-n", "hwnic0", "-P", "0", "-S", "10000", "-D", "full"}, "Invalid PHY address value."},
        // The host's rules.
        {{"-n", "hwnic0", "-p", "fibre"}, "NIC hwnic0 has no fibre port"},
        {{"-n", "hwnic1", "-w", "u"}, "NIC hwnic1 can't wake on unicast messages"},
        {{"-n", "hwnic0", "-P", "40"}, "PHY address 40 is out of range (0-31)"},
        {{"-n", "hwnic0", "-V", "02:03:00"}, "Virtual address \"02:03:00\" is not a MAC address"},
        {{"-n", "hwnic0", "-S", "10000", "-D", "full"},
         "NIC hwnic0 does not support 10000 Mbps full duplex"},
        {{"-n", "hwnic1", "-S", "100", "-D", "half"},
         "NIC hwnic1 does not support 100 Mbps half duplex"},
        {{"-n", "hwnic2", "-a"}, "NIC hwnic2 does not support auto negotiation"},
    };
    for (const auto& refusal : refusals) {
        Words words{"nic", "set"};
        words.insert(words.end(), refusal.parameters.begin(), refusal.parameters.end());
        EXPECT_EQ(RunError(words), refusal.message) << ::testing::PrintToString(words);
    }
    // Nothing of a refused request reached the host.
    auto info = Get("hwnic0");
    EXPECT_EQ(Int(info, "PHY Address"), 1);
    EXPECT_EQ(Str(info, "Cable Type"), "Twisted Pair");
    EXPECT_EQ(Int(Listed("hwnic0"), "Speed"), 1000);
}

TEST_F(NicSet, LinkFieldsChangeOneByOneAndShowInNicGet) {
    RunOk({"nic", "set", "-n", "hwnic0", "--transceiver-type", "external"});
    auto info = Get("hwnic0");
    EXPECT_EQ(Str(info, "Transceiver"), "external");
    EXPECT_EQ(Int(info, "PHY Address"), 1);
    EXPECT_EQ(Strings(info, "Wakeon"), Words{"MagicPacket(tm)"});
    EXPECT_EQ(Int(info, "Current Message Level"), 7);

    const std::string virtualAddress = HostSim::LocalMac(HostSim::MacKind::NicVirtualAddress, 9);
    RunOk({"nic", "set", "-n", "hwnic2", "-p", "da", "-P", "5", "-V", virtualAddress});
    info = Get("hwnic2");
    EXPECT_EQ(Str(info, "Cable Type"), "DA");
    EXPECT_EQ(Int(info, "PHY Address"), 5);
    EXPECT_EQ(Str(info, "Virtual Address"), virtualAddress);
    EXPECT_EQ(Str(info, "Transceiver"), "external");

    RunOk({"nic", "set", "-n", "hwnic8", "-l", "5"});
    EXPECT_EQ(Int(Get("hwnic8"), "Current Message Level"), 5);
}

TEST_F(NicSet, WakeOnModesFollowTheLettersAndAreAlwaysWritten) {
    RunOk({"nic", "set", "-n", "hwnic6", "-w", "ug"});
    EXPECT_EQ(Strings(Get("hwnic6"), "Wakeon"), (Words{"Unicast Messagess", "MagicPacket(tm)"}));
    RunOk({"nic", "set", "-n", "hwnic6", "-w", "gu"});
    EXPECT_EQ(Strings(Get("hwnic6"), "Wakeon"), (Words{"MagicPacket(tm)", "Unicast Messagess"}));
    // The modes in force again: still a change, and still true.
    RunOk({"nic", "set", "-n", "hwnic6", "-w", "gu"});
    RunOk({"nic", "set", "-n", "hwnic6", "-w", "pp"});
    EXPECT_EQ(Strings(Get("hwnic6"), "Wakeon"), Words{"PHY Activity"});
}

TEST_F(NicSet, SpeedDuplexAndAutoNegotiationShowInTheListAndGet) {
    RunOk({"nic", "set", "-n", "hwnic0", "-S", "100", "-D", "full"});
    EXPECT_EQ(Int(Listed("hwnic0"), "Speed"), 100);
    EXPECT_FALSE(Bool(Get("hwnic0"), "Auto Negotiation"));
    RunOk({"nic", "set", "-n", "hwnic0", "-S", "10", "-D", "half"});
    EXPECT_EQ(Str(Listed("hwnic0"), "Duplex"), "Half");
    RunOk({"nic", "set", "-n", "hwnic0", "-a"});
    EXPECT_EQ(Int(Listed("hwnic0"), "Speed"), 1000);
    EXPECT_EQ(Str(Listed("hwnic0"), "Duplex"), "Full");
    EXPECT_TRUE(Bool(Get("hwnic0"), "Auto Negotiation"));
}

TEST_F(NicSet, TheRecordGoesFirstAndAutoAloneWritesNoRecord) {
    HostSim::InjectFault("Pnic::SetSpeedDuplex", "", "Link is resetting");
    EXPECT_EQ(RunError({"nic", "set", "-n", "hwnic0", "-t", "external", "-S", "100", "-D", "full"}),
              "Link is resetting");
    HostSim::ClearFaults();
    EXPECT_EQ(Str(Get("hwnic0"), "Transceiver"), "external");
    EXPECT_EQ(Int(Listed("hwnic0"), "Speed"), 1000);

    HostSim::InjectFault("Pnic::SetPnicInfo", "", "not to be called");
    RunOk({"nic", "set", "-n", "hwnic0", "-a"});
    // Speed and duplex equal to what the NIC has still go to the host.
    HostSim::InjectFault("Pnic::SetSpeedDuplex", "", "called");
    EXPECT_EQ(RunError({"nic", "set", "-n", "hwnic0", "-S", "1000", "-D", "full"}), "called");
}

}  // namespace
