// Coalescing, offload, software simulation, rings and pause: the renderings of each `get`,
// the not-found words of each family, and changes that leave the other fields alone.
#include "hostsim/Control.h"
#include "support/CommandTest.h"

namespace {

using Testing::Bool;
using Testing::Int;
using Testing::Rows;
using Testing::RowWhere;
using Testing::Str;
using Words = std::vector<std::string>;

class NicDriverSettings : public Testing::CommandTest {
protected:
    // The values of `fields` in the row of `nic`, as strings.
    Words Values(const Words& command, const std::string& nic, const Words& fields) {
        auto row = RowWhere(RunList(command), "NIC", nic);
        Words values;
        for (const auto& field : fields) {
            values.push_back(Str(row, field));
        }
        return values;
    }
    std::vector<long> Ints(const Words& command, const Words& fields) {
        auto row = RunStruct(command);
        std::vector<long> values;
        for (const auto& field : fields) {
            values.push_back(Int(row, field));
        }
        return values;
    }
};

const Words kCoalesceFields = {"RX microseconds",        "RX maximum frames", "TX microseconds",
                               "TX Maximum frames",      "Adaptive RX",       "Adaptive TX",
                               "Sample interval seconds"};
const Words kBandFields = {"Packet rate", "RX delay time", "RX delay packets", "TX delay time",
                           "TX delay packets"};
const Words kCoalesceGet = {"nic", "coalesce", "get"};

TEST_F(NicDriverSettings, EachFamilyHasItsOwnWordsForAMissingNic) {
    const struct {
        Words words;
        std::string message;
    } cases[] = {
        {{"coalesce", "get", "-n", "hwnic99"}, "Pnic with name hwnic99 not found"},
        {{"coalesce", "set", "-n", "hwnic99", "-r", "1"}, "Pnic with name hwnic99 not found"},
        {{"coalesce", "low", "get", "-n", "hwnic99"}, "Pnic with name hwnic99 not found"},
        {{"coalesce", "high", "set", "-n", "hwnic99"}, "Pnic with name hwnic99 not found"},
        {{"cso", "get", "-n", "hwnic99"}, "Pnic with name hwnic99 not found"},
        {{"tso", "set", "-n", "hwnic99", "-e", "1"}, "Pnic with name hwnic99 not found"},
        {{"sg", "get", "-n", "hwnic99"}, "Pnic with name hwnic99 not found"},
        {{"software", "set", "-n", "hwnic99"}, "Pnic with name hwnic99 not found"},
        {{"software", "list", "-n", "hwnic0", "-n", "hwnic99"},
         "Can't find PNIC with name hwnic99"},
        {{"ring", "preset", "get", "-n", "hwnic99"}, "NIC with name hwnic99 not found"},
        {{"ring", "current", "get", "-n", "hwnic99"}, "NIC with name hwnic99 not found"},
        {{"ring", "current", "set", "-n", "hwnic99"}, "NIC with name hwnic99 not found"},
        {{"pauseParams", "list", "-n", "hwnic99"}, "NIC with name hwnic99 not found"},
        {{"pauseParams", "set", "-n", "hwnic99"}, "NIC with name hwnic99 not found"},
    };
    for (const auto& each : cases) {
        Words words{"nic"};
        words.insert(words.end(), each.words.begin(), each.words.end());
        EXPECT_EQ(RunError(words), each.message) << ::testing::PrintToString(words);
    }
}

TEST_F(NicDriverSettings, CoalescingRendersStringsAndABandRendersInts) {
    EXPECT_EQ(Values(kCoalesceGet, "hwnic2", kCoalesceFields),
              (Words{"50", "64", "50", "64", "On", "On", "1"}));
    EXPECT_EQ(Values(kCoalesceGet, "hwnic0", kCoalesceFields),
              (Words{"3", "0", "0", "32", "On", "Off", "2"}));
    // A driver without coalescing: a row of "N/A", alone or among the others.
    EXPECT_EQ(Values(kCoalesceGet, "hwnic7", kCoalesceFields), Words(7, "N/A"));
    EXPECT_EQ(Values({"nic", "coalesce", "get", "-n", "hwnic7"}, "hwnic7", kCoalesceFields),
              Words(7, "N/A"));
    EXPECT_EQ(RunError({"nic", "coalesce", "set", "-n", "hwnic7", "-r", "8"}),
              "The driver zxacpi of NIC hwnic7 does not support interrupt coalescing");
    EXPECT_EQ(RunError({"nic", "coalesce", "low", "get", "-n", "hwnic7"}),
              "The driver zxacpi of NIC hwnic7 does not support interrupt coalescing");

    auto low = RunStruct({"nic", "coalesce", "low", "get", "-n", "hwnic2"});
    EXPECT_EQ(low->GetName(), "CoalesceParamsAtLowPacketRate");
    EXPECT_EQ(Str(low, "NIC"), "hwnic2");
    EXPECT_EQ(Ints({"nic", "coalesce", "low", "get", "-n", "hwnic2"}, kBandFields),
              (std::vector<long>{50000, 8, 4, 8, 4}));
    EXPECT_EQ(RunStruct({"nic", "coalesce", "high", "get", "-n", "hwnic2"})->GetName(),
              "CoalesceParamsAtHighPacketRate");
    // A 32-bit word at 2^31 or above reads as a negative int in a band, unsigned in the table.
    RunOk({"nic", "coalesce", "high", "set", "-n", "hwnic2", "-p", "3000000000"});
    EXPECT_EQ(Int(RunStruct({"nic", "coalesce", "high", "get", "-n", "hwnic2"}), "Packet rate"),
              -1294967296);
    RunOk({"nic", "coalesce", "set", "-n", "hwnic2", "-r", "3000000000"});
    EXPECT_EQ(Values(kCoalesceGet, "hwnic2", {"RX microseconds"}), Words{"3000000000"});
}

TEST_F(NicDriverSettings, CoalescingChangesOnlyWhatIsGiven) {
    RunOk({"nic", "coalesce", "set", "-n", "hwnic0", "-A", "true", "-T", "64"});
    EXPECT_EQ(Values(kCoalesceGet, "hwnic0", kCoalesceFields),
              (Words{"3", "0", "0", "64", "On", "On", "2"}));
    RunOk({"nic", "coalesce", "high", "set", "-n", "hwnic0", "--pkt-rate", "500000"});
    EXPECT_EQ(Ints({"nic", "coalesce", "high", "get", "-n", "hwnic0"}, kBandFields),
              (std::vector<long>{500000, 125, 64, 125, 64}));
    EXPECT_EQ(Ints({"nic", "coalesce", "low", "get", "-n", "hwnic0"}, kBandFields),
              (std::vector<long>{20000, 0, 0, 0, 0}));
    RunOk({"nic", "coalesce", "low", "set", "-n", "hwnic0", "-r", "6", "-T", "2"});
    EXPECT_EQ(Ints({"nic", "coalesce", "low", "get", "-n", "hwnic0"}, kBandFields),
              (std::vector<long>{20000, 6, 0, 0, 2}));
    RunOk({"nic", "coalesce", "set", "-n", "hwnic0"});
    EXPECT_EQ(Values(kCoalesceGet, "hwnic0", kCoalesceFields),
              (Words{"3", "0", "0", "64", "On", "On", "2"}));
    // The declared range of the sampling interval.
    EXPECT_NE(Run({"nic", "coalesce", "set", "-n", "hwnic0", "-i", "0"}).status,
              CommandHost::ExitOk);
    EXPECT_NE(Run({"nic", "coalesce", "set", "-n", "hwnic0", "-i", "3601"}).status,
              CommandHost::ExitOk);
    RunOk({"nic", "coalesce", "set", "-n", "hwnic0", "-i", "3600"});
    EXPECT_EQ(Values(kCoalesceGet, "hwnic0", {"Sample interval seconds"}), Words{"3600"});
}

TEST_F(NicDriverSettings, OffloadReadsOnAndOffAndSetsByMask) {
    EXPECT_EQ(
        Values({"nic", "cso", "get"}, "hwnic6", {"RX Checksum Offload", "TX Checksum Offload"}),
        (Words{"on", "off"}));
    EXPECT_EQ(Values({"nic", "tso", "get"}, "hwnic1", {"Value"}), Words{"off"});
    EXPECT_EQ(Values({"nic", "sg", "get", "-n", "hwnic0"}, "hwnic0", {"Value"}), Words{"on"});
    HostSim::InjectFault("Pnic::GetOffloadParams", "hwnic3", "Driver reset");
    EXPECT_EQ(
        Values({"nic", "cso", "get"}, "hwnic3", {"RX Checksum Offload", "TX Checksum Offload"}),
        (Words{"N/A", "N/A"}));
    EXPECT_EQ(Values({"nic", "tso", "get", "-n", "hwnic3"}, "hwnic3", {"Value"}), Words{"N/A"});
    HostSim::ClearFaults();

    // Scatter-gather off leaves checksums alone and takes segmentation with it.
    RunOk({"nic", "sg", "set", "-n", "hwnic0", "-e", "0"});
    EXPECT_EQ(Values({"nic", "sg", "get"}, "hwnic0", {"Value"}), Words{"off"});
    EXPECT_EQ(Values({"nic", "tso", "get"}, "hwnic0", {"Value"}), Words{"off"});
    EXPECT_EQ(
        Values({"nic", "cso", "get"}, "hwnic0", {"RX Checksum Offload", "TX Checksum Offload"}),
        (Words{"on", "on"}));
    EXPECT_EQ(RunError({"nic", "tso", "set", "-n", "hwnic0", "-e", "1"}),
              "TCP segmentation offload on NIC hwnic0 needs TX checksum offload and "
              "scatter-gather on");
    RunOk({"nic", "sg", "set", "-n", "hwnic0", "-e", "1"});
    RunOk({"nic", "tso", "set", "-n", "hwnic0", "-e", "1"});
    EXPECT_EQ(Values({"nic", "tso", "get"}, "hwnic0", {"Value"}), Words{"on"});
    RunOk({"nic", "cso", "set", "-n", "hwnic1", "-e", "0"});
    EXPECT_EQ(
        Values({"nic", "cso", "get"}, "hwnic1", {"RX Checksum Offload", "TX Checksum Offload"}),
        (Words{"off", "off"}));
    EXPECT_EQ(Values({"nic", "sg", "get"}, "hwnic1", {"Value"}), Words{"on"});
    EXPECT_EQ(RunError({"nic", "tso", "set", "-n", "hwnic6", "-e", "1"}),
              "NIC hwnic6 can't do TCP segmentation offload in hardware");
    RunOk({"nic", "cso", "set", "-n", "hwnic6", "-e", "0"});
    EXPECT_NE(Run({"nic", "cso", "set", "-n", "hwnic6", "-e", "2"}).status, CommandHost::ExitOk);
}

const Words kSoftwareFields = {
    "IPv4 CSO",     "IPv4 TSO",       "Scatter Gather", "Offset Based Offload",
    "VXLAN Encap",  "Geneve Offload", "IPv6 TSO",       "IPv6 TSO Ext",
    "IPv6 CSO",     "IPv6 CSO Ext",   "High DMA",       "Scatter Gather MP",
    "VLAN Tagging", "VLAN Untagging"};

TEST_F(NicDriverSettings, SoftwareSimulationChangesOnlyTheFeaturesGiven) {
    const Words list{"nic", "software", "list"};
    EXPECT_EQ(Values(list, "hwnic4", kSoftwareFields),
              (Words{"off", "off", "off", "off", "off", "on", "off", "off", "off", "off", "off",
                     "off", "off", "off"}));
    RunOk({"nic", "software", "set", "-n", "hwnic0", "--tagging", "true", "--untagging", "true"});
    EXPECT_EQ(Values({"nic", "software", "list", "-n", "hwnic0"}, "hwnic0", kSoftwareFields),
              (Words{"off", "off", "off", "off", "off", "off", "off", "on", "off", "on", "off",
                     "off", "on", "on"}));
    RunOk({"nic", "software", "set", "-n", "hwnic4", "--geneveoffload", "false", "--obo", "true"});
    EXPECT_EQ(Values(list, "hwnic4", {"Geneve Offload", "Offset Based Offload", "IPv6 TSO"}),
              (Words{"off", "on", "off"}));
    // A name twice gives two rows; one that can't report gives "N/A" and the others stay.
    EXPECT_EQ(RunList({"nic", "software", "list", "-n", "hwnic0", "-n", "hwnic0"})->GetCount(), 2u);
    HostSim::InjectFault("Pnic::GetSoftwareSimulation", "hwnic6", "Driver reset");
    EXPECT_EQ(Values(list, "hwnic6", kSoftwareFields), Words(14, "N/A"));
    EXPECT_EQ(Values(list, "hwnic7", {"High DMA"}), Words{"on"});
    // With no feature given nothing goes to the host.
    HostSim::InjectFault("Pnic::SetSoftwareSimulation", "", "not to be called");
    RunOk({"nic", "software", "set", "-n", "hwnic0"});
}

const Words kRingFields = {"RX", "RX Mini", "RX Jumbo", "TX"};
const Words kMaxFields = {"Max RX", "Max RX Mini", "Max RX Jumbo", "Max TX"};

TEST_F(NicDriverSettings, RingsUpToTheirPresetMaximums) {
    const Words preset{"nic", "ring", "preset", "get", "-n", "hwnic2"};
    EXPECT_EQ(Ints(preset, kMaxFields), (std::vector<long>{4096, 0, 4096, 4096}));
    EXPECT_EQ(Ints(preset, kRingFields), (std::vector<long>{4096, 0, 4096, 4096}));
    const Words current{"nic", "ring", "current", "get", "-n", "hwnic2"};
    EXPECT_EQ(Ints(current, kRingFields), (std::vector<long>{2048, 0, 1024, 2048}));

    RunOk({"nic", "ring", "current", "set", "-n", "hwnic2", "-r", "4096"});
    EXPECT_EQ(Ints(current, kRingFields), (std::vector<long>{4096, 0, 1024, 2048}));
    RunOk({"nic", "ring", "current", "set", "-n", "hwnic2", "-t", "256", "-j", "4096"});
    EXPECT_EQ(Ints(current, kRingFields), (std::vector<long>{4096, 0, 4096, 256}));

    const struct {
        Words words;
        std::string message;
    } refusals[] = {
        {{"-n", "hwnic0", "-j", "512"}, "NIC hwnic0 has no RX jumbo ring"},
        {{"-n", "hwnic0", "-m", "1"}, "NIC hwnic0 has no RX mini ring"},
        {{"-n", "hwnic0", "-r", "4097"},
         "RX ring size 4097 of NIC hwnic0 is over its maximum 4096"},
        {{"-n", "hwnic0", "-r", "2048", "-t", "0"},
         "TX ring of NIC hwnic0 needs at least one entry"},
    };
    for (const auto& refusal : refusals) {
        Words words{"nic", "ring", "current", "set"};
        words.insert(words.end(), refusal.words.begin(), refusal.words.end());
        EXPECT_EQ(RunError(words), refusal.message) << ::testing::PrintToString(words);
    }
    EXPECT_EQ(Ints({"nic", "ring", "current", "get", "-n", "hwnic0"}, kRingFields),
              (std::vector<long>{1024, 0, 0, 1024}));
    HostSim::InjectFault("Pnic::SetRingParams", "", "not to be called");
    RunOk({"nic", "ring", "current", "set", "-n", "hwnic0"});
}

const Words kPauseFields = {"Pause Params Supported",
                            "Pause RX",
                            "Pause TX",
                            "Auto Negotiation",
                            "Auto Negotiation Resolution Avail",
                            "RX Auto Negotiation Resolution",
                            "TX Auto Negotiation Resolution"};

std::vector<bool> Flags(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& row) {
    std::vector<bool> flags;
    for (const auto& field : kPauseFields) {
        flags.push_back(Bool(row, field));
    }
    return flags;
}

TEST_F(NicDriverSettings, PauseParametersWithTheirResolutions) {
    auto list = RunList({"nic", "pauseParams", "list"});
    using F = std::vector<bool>;
    EXPECT_EQ(Flags(RowWhere(list, "NIC", "hwnic0")), (F{1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(Flags(RowWhere(list, "NIC", "hwnic1")), (F{1, 1, 0, 1, 1, 1, 0}));
    EXPECT_EQ(Flags(RowWhere(list, "NIC", "hwnic5")), (F{1, 1, 1, 1, 1, 0, 1}));
    EXPECT_EQ(Flags(RowWhere(list, "NIC", "hwnic8")), (F{1, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(Flags(RowWhere(list, "NIC", "hwnic4")), (F{0, 0, 0, 0, 0, 0, 0}));

    RunOk({"nic", "pauseParams", "set", "-n", "hwnic0", "--auto", "false", "--rx", "false", "--tx",
           "false"});
    EXPECT_EQ(Flags(Rows(RunList({"nic", "pauseParams", "list", "-n", "hwnic0"})).front()),
              (F{1, 0, 0, 0, 0, 0, 0}));
    RunOk({"nic", "pauseParams", "set", "-n", "hwnic0", "--auto", "true", "--rx", "true"});
    EXPECT_EQ(Flags(Rows(RunList({"nic", "pauseParams", "list", "-n", "hwnic0"})).front()),
              (F{1, 1, 0, 1, 1, 1, 0}));
    EXPECT_EQ(RunError({"nic", "pauseParams", "set", "-n", "hwnic4", "--rx", "true"}),
              "NIC hwnic4 does not support pause frames");
    EXPECT_EQ(RunError({"nic", "pauseParams", "set", "-n", "hwnic2", "--auto", "true"}),
              "NIC hwnic2 can't negotiate pause frames: it has no auto negotiation");
    RunOk({"nic", "pauseParams", "set", "-n", "hwnic2", "--tx", "false"});
    EXPECT_EQ(Flags(Rows(RunList({"nic", "pauseParams", "list", "-n", "hwnic2"})).front()),
              (F{1, 1, 0, 0, 0, 0, 0}));
    // A NIC whose read fails shows as one without pause, also named alone.
    HostSim::InjectFault("Pnic::GetPauseParams", "hwnic0", "Driver reset");
    EXPECT_EQ(Flags(Rows(RunList({"nic", "pauseParams", "list", "-n", "hwnic0"})).front()),
              (F{0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(NicDriverSettings, AnEmptyHostGivesEmptyListsAndNoSwitchForVlans) {
    HostSim::ImportProfile("{}");
    const Words lists[] = {{"coalesce", "get"}, {"cso", "get"},       {"tso", "get"},
                           {"sg", "get"},       {"software", "list"}, {"pauseParams", "list"}};
    for (const auto& list : lists) {
        Words words{"nic"};
        words.insert(words.end(), list.begin(), list.end());
        EXPECT_EQ(RunList(words)->GetCount(), 0u) << ::testing::PrintToString(words);
    }
    EXPECT_EQ(RunError({"nic", "vlan", "stats", "get", "-n", "hwnic0"}),
              "hwnic0 is not a valid NIC connected to any virtual switch.");
    EXPECT_EQ(RunError({"nic", "vlan", "stats", "set", "-n", "hwnic0", "-e", "false"}),
              "hwnic0 is not a valid NIC connected to any virtual switch.");
}

}  // namespace
