// The NIC settings, diagnostics and SR-IOV commands on the live Linux host, run on a veth pair
// in a network namespace of the test process's own, and checked against ethtool and ip run in
// the same namespace.
#include <linux/capability.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/CommandTest.h"

namespace {

using nlohmann::json;
using Testing::Bool;
using Testing::Int;
using Testing::ProcessResult;
using Testing::Rows;
using Testing::Str;

// This process's own network namespace, entered on the first call and kept for the process,
// so that the live host's sockets and the witnesses see the same links in every test. Empty
// when entered, else why the kernel refused.
const std::string& NamespaceRefusal() {
    static const std::string refusal = [] {
        if (unshare(CLONE_NEWNET) != 0) {
            return std::string("the kernel refuses a network namespace: ") + std::strerror(errno);
        }
        return std::string();
    }();
    return refusal;
}

std::string ToolPath(const std::string& tool) {
    for (const char* directory : {"/usr/sbin/", "/sbin/", "/usr/bin/", "/bin/"}) {
        const std::string path = directory + tool;
        if (access(path.c_str(), X_OK) == 0) {
            return path;
        }
    }
    return tool;
}

// Drops CAP_NET_ADMIN from the thread's effective capabilities while it lives: the kernel then
// refuses changes as it would to an unprivileged user.
class WithoutNetAdmin {
public:
    WithoutNetAdmin() {
        header_.version = _LINUX_CAPABILITY_VERSION_3;
        EXPECT_EQ(syscall(SYS_capget, &header_, saved_), 0) << std::strerror(errno);
        __user_cap_data_struct lowered[2] = {saved_[0], saved_[1]};
        lowered[CAP_NET_ADMIN / 32].effective &= ~(1u << (CAP_NET_ADMIN % 32));
        EXPECT_EQ(syscall(SYS_capset, &header_, lowered), 0) << std::strerror(errno);
    }
    ~WithoutNetAdmin() { syscall(SYS_capset, &header_, saved_); }
    WithoutNetAdmin(const WithoutNetAdmin&) = delete;
    WithoutNetAdmin& operator=(const WithoutNetAdmin&) = delete;

private:
    __user_cap_header_struct header_{};
    __user_cap_data_struct saved_[2]{};
};

class LinuxNicSettingsTest : public Testing::CommandTest {
protected:
    static constexpr char kNic[] = "v0";
    static constexpr unsigned kQueues = 4;

    void SetUp() override {
        CommandTest::SetUp();
        if (!NamespaceRefusal().empty()) {
            const char* required = std::getenv("AUTOCLI_REQUIRE_LIVE_TESTS");
            if (required != nullptr && std::string(required) == "1") {
                FAIL() << NamespaceRefusal();
            }
            GTEST_SKIP() << NamespaceRefusal();
        }
        HostSim::ChooseHost("linux");
        // The namespace is this process's own: the pair of an earlier test goes with v0.
        Witness("ip", {"link", "del", kNic});
        const std::string queues = std::to_string(kQueues);
        const auto made = Witness(
            "ip", {"link", "add", kNic, "numrxqueues", queues, "numtxqueues", queues, "type",
                   "veth", "peer", "name", "v1", "numrxqueues", queues, "numtxqueues", queues});
        ASSERT_EQ(made.status, 0) << made.err;
    }

    void TearDown() override {
        HostSim::ChooseHost("sim");
        CommandTest::TearDown();
    }

    ProcessResult Witness(const std::string& tool, const std::vector<std::string>& arguments) {
        return Testing::RunProgram(ToolPath(tool), arguments, StateDirectory());
    }

    // ethtool's view of the link's features: each feature by name, whether it is active.
    std::map<std::string, bool> ActiveFeatures() {
        const auto shown = Witness("ethtool", {"--json", "-k", kNic});
        EXPECT_EQ(shown.status, 0) << shown.err;
        const json features = json::parse(shown.out).at(0);
        std::map<std::string, bool> active;
        for (const auto& [feature, state] : features.items()) {
            if (state.is_object() && state["active"].is_boolean()) {
                active[feature] = state["active"].get<bool>();
            }
        }
        return active;
    }

    // ethtool's lines "Key: value" (or "Key:\t\tvalue") under `section`, or of the whole text.
    std::map<std::string, std::string> WitnessFields(const std::vector<std::string>& arguments,
                                                     const std::string& section = {}) {
        const auto shown = Witness("ethtool", arguments);
        EXPECT_EQ(shown.status, 0) << shown.err;
        std::map<std::string, std::string> fields;
        std::istringstream lines(shown.out);
        bool inSection = section.empty();
        for (std::string line; std::getline(lines, line);) {
            if (!section.empty() && line.rfind(section, 0) == 0) {
                inSection = true;
                continue;
            }
            const auto colon = line.find(':');
            if (!inSection || colon == std::string::npos) {
                continue;
            }
            const auto key = line.find_first_not_of(" \t");
            const auto value = line.find_first_not_of(" \t", colon + 1);
            fields[line.substr(key, colon - key)] =
                value == std::string::npos ? std::string() : line.substr(value);
        }
        return fields;
    }

    std::map<std::string, std::string> CurrentChannels() {
        return WitnessFields({"-l", kNic}, "Current hardware settings:");
    }
};

// The record's flags as ethtool's features show them: TX checksumming is on when any of the
// IP checksum features is.
struct OffloadReading {
    std::vector<std::string> command;
    std::string field;
    std::vector<std::string> features;
};

const std::vector<OffloadReading> kOffloadReadings{
    {{"nic", "cso", "get", "-n", "v0"}, "RX Checksum Offload", {"rx-checksumming"}},
    {{"nic", "cso", "get", "-n", "v0"},
     "TX Checksum Offload",
     {"tx-checksum-ipv4", "tx-checksum-ip-generic", "tx-checksum-ipv6"}},
    {{"nic", "sg", "get", "-n", "v0"}, "Value", {"tx-scatter-gather"}},
    {{"nic", "tso", "get", "-n", "v0"}, "Value", {"tx-tcp-segmentation"}},
};

TEST_F(LinuxNicSettingsTest, OffloadFlagsReadAsEthtoolShowsThem) {
    // Each state is made by ethtool, from the driver's defaults on.
    const std::vector<std::vector<std::string>> states{
        {}, {"sg", "off"}, {"rx", "off", "tx", "off"}, {"rx", "on", "sg", "on", "tso", "on"}};
    for (const auto& state : states) {
        SCOPED_TRACE(::testing::PrintToString(state));
        if (!state.empty()) {
            std::vector<std::string> arguments{"-K", kNic};
            arguments.insert(arguments.end(), state.begin(), state.end());
            ASSERT_EQ(Witness("ethtool", arguments).status, 0);
        }
        const auto active = ActiveFeatures();
        for (const auto& reading : kOffloadReadings) {
            SCOPED_TRACE(reading.field);
            bool on = false;
            for (const auto& feature : reading.features) {
                on = on || active.at(feature);
            }
            const auto rows = Rows(RunList(reading.command));
            ASSERT_EQ(rows.size(), 1u);
            EXPECT_EQ(Str(rows.front(), reading.field), on ? "on" : "off");
        }
    }
}

TEST_F(LinuxNicSettingsTest, OffloadChangesReachTheKernel) {
    struct Change {
        std::string command;
        std::string enable;
        std::vector<std::string> features;  // each must end up as `enable` says
    };
    const std::vector<Change> changes{
        {"cso", "0", {"rx-checksumming", "tx-checksum-ip-generic"}},
        {"cso", "1", {"rx-checksumming", "tx-checksum-ip-generic"}},
        {"tso", "0", {"tx-tcp-segmentation"}},
        {"sg", "0", {"tx-scatter-gather"}},
        {"sg", "1", {"tx-scatter-gather"}},
        {"tso", "1", {"tx-tcp-segmentation"}},
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(change.command + " " + change.enable);
        RunOk({"nic", change.command, "set", "-n", kNic, "-e", change.enable});
        const auto active = ActiveFeatures();
        for (const auto& feature : change.features) {
            EXPECT_EQ(active.at(feature), change.enable == "1") << feature;
        }
    }
}

TEST_F(LinuxNicSettingsTest, SegmentationTheKernelKeepsOffIsRefused) {
    RunOk({"nic", "sg", "set", "-n", kNic, "-e", "0"});
    ASSERT_FALSE(ActiveFeatures().at("tx-tcp-segmentation"));
    EXPECT_EQ(RunError({"nic", "tso", "set", "-n", kNic, "-e", "1"}),
              "NIC v0 can't turn TCP segmentation offload on: the kernel kept it off");
    EXPECT_FALSE(ActiveFeatures().at("tx-tcp-segmentation"));
}

TEST_F(LinuxNicSettingsTest, QueueCountsAreTheKernelsChannels) {
    auto counts = [this] {
        const auto rows = Rows(RunList({"nic", "queue", "count", "get", "-n", kNic}));
        EXPECT_EQ(rows.size(), 1u);
        return rows.empty() ? std::pair<long, long>{}
                            : std::pair{Int(rows.front(), "Tx netqueue count"),
                                        Int(rows.front(), "Rx netqueue count")};
    };
    auto witnessed = [this] {
        const auto channels = CurrentChannels();
        return std::pair{std::stol(channels.at("TX")), std::stol(channels.at("RX"))};
    };
    EXPECT_EQ(counts(), witnessed());
    EXPECT_EQ(counts(), std::pair(long{kQueues}, long{kQueues}));

    RunOk({"nic", "queue", "count", "set", "-n", kNic, "-r", "true", "-q", "2"});
    EXPECT_EQ(witnessed(), std::pair(long{kQueues}, 2L));
    RunOk({"nic", "queue", "count", "set", "-n", kNic, "-t", "true", "-r", "true", "-q", "3"});
    EXPECT_EQ(witnessed(), std::pair(3L, 3L));
    EXPECT_EQ(counts(), witnessed());

    EXPECT_EQ(RunError({"nic", "queue", "count", "set", "-n", kNic, "-t", "true", "-q",
                        std::to_string(kQueues + 1)}),
              "Invalid argument: requested channel count exceeds maximum");
    EXPECT_EQ(witnessed(), std::pair(3L, 3L));
}

TEST_F(LinuxNicSettingsTest, NicGetShowsWhatEthtoolShows) {
    const auto settings = WitnessFields({kNic});
    const auto info = RunStruct({"nic", "get", "-n", kNic});
    ASSERT_TRUE(info);
    EXPECT_EQ(Str(info, "Cable Type"), settings.at("Port"));
    EXPECT_EQ(Str(info, "Transceiver"), settings.at("Transceiver"));
    EXPECT_EQ(Int(info, "PHY Address"), std::stol(settings.at("PHYAD")));
    EXPECT_EQ(Bool(info, "Auto Negotiation"), settings.at("Auto-negotiation") == "on");
    EXPECT_EQ(Bool(info, "Supports Auto Negotiation"),
              settings.at("Supports auto-negotiation") == "Yes");
    EXPECT_EQ(Bool(info, "Supports Wakeon"), settings.count("Supports Wake-on") == 1);
    const auto level = settings.find("Current message level");
    EXPECT_EQ(Int(info, "Current Message Level"),
              level == settings.end() ? -1 : std::stol(level->second, nullptr, 0));
    // ethtool tells pause support by whether the kernel answers for it.
    EXPECT_EQ(Bool(info, "Supports Pause"), Witness("ethtool", {"-a", kNic}).status == 0);
}

// What the driver of a veth lacks: the command fails with the kernel's words, as ethtool does
// for the same request; or, where the live host has no counterpart or the NIC reports no
// support, with the words of the host or of the command.
TEST_F(LinuxNicSettingsTest, WhatTheDriverLacksFailsInTheKernelsWords) {
    struct Lack {
        std::vector<std::string> command;
        std::string error;
        std::vector<std::string> witness;  // an ethtool request the kernel refuses the same way
    };
    const std::string unsupported = "Operation not supported";
    const std::vector<Lack> lacks{
        {{"coalesce", "set", "-n", kNic, "-r", "5"}, unsupported, {"-c", kNic}},
        {{"coalesce", "low", "get", "-n", kNic}, unsupported, {"-c", kNic}},
        {{"ring", "current", "get", "-n", kNic}, unsupported, {"-g", kNic}},
        {{"ring", "current", "set", "-n", kNic, "-r", "64"}, unsupported, {"-G", kNic, "rx", "64"}},
        {{"pauseParams", "set", "-n", kNic, "-r", "true"}, unsupported, {"-A", kNic, "rx", "on"}},
        {{"register", "dump", "-n", kNic}, unsupported, {"-d", kNic}},
        {{"eeprom", "dump", "-n", kNic}, unsupported, {"-e", kNic}},
        {{"eeprom", "change", "-n", kNic, "-o", "0", "-v", "1", "-m", "0"},
         unsupported,
         {"-e", kNic}},
        {{"selftest", "run", "-n", kNic}, unsupported, {"-t", kNic}},
        {{"selftest", "run", "-n", kNic, "-o", "1"}, unsupported, {"-t", kNic, "online"}},
        {{"negotiate", "restart", "-n", kNic}, unsupported, {"-r", kNic}},
        {{"set", "-n", kNic, "-S", "1000", "-D", "full"},
         unsupported,
         {"-s", kNic, "speed", "1000", "duplex", "full", "autoneg", "off"}},
        {{"set", "-n", kNic, "-a"}, unsupported, {"-s", kNic, "autoneg", "on"}},
        {{"set", "-n", kNic, "-p", "fibre"}, unsupported, {"-s", kNic, "port", "fibre"}},
        {{"set", "-n", kNic, "-l", "3"}, "Not Support msglvl.", {"-s", kNic, "msglvl", "3"}},
        {{"set", "-n", kNic, "-w", "g"}, "Not Support wol.", {"-s", kNic, "wol", "g"}},
        {{"set", "-n", kNic, "-t", "external"}, "not available on a Linux host", {}},
    };
    for (const auto& lack : lacks) {
        SCOPED_TRACE(::testing::PrintToString(lack.command));
        std::vector<std::string> words{"nic"};
        words.insert(words.end(), lack.command.begin(), lack.command.end());
        EXPECT_EQ(RunError(words), lack.error);
        if (!lack.witness.empty()) {
            const auto refused = Witness("ethtool", lack.witness);
            EXPECT_NE(refused.status, 0);
            EXPECT_NE(refused.err.find(unsupported), std::string::npos) << refused.err;
        }
    }
}

TEST_F(LinuxNicSettingsTest, ReadsOfWhatTheDriverLacksShowNoSupport) {
    const auto coalescing = Rows(RunList({"nic", "coalesce", "get", "-n", kNic}));
    ASSERT_EQ(coalescing.size(), 1u);
    EXPECT_EQ(Str(coalescing.front(), "RX microseconds"), "N/A");
    const auto pause = Rows(RunList({"nic", "pauseParams", "list", "-n", kNic}));
    ASSERT_EQ(pause.size(), 1u);
    EXPECT_FALSE(Bool(pause.front(), "Pause Params Supported"));
    EXPECT_NE(Witness("ethtool", {"-a", kNic}).status, 0);
}

TEST_F(LinuxNicSettingsTest, ChangesWithoutPrivilegeFailInTheKernelsWordsAndChangeNothing) {
    const auto featuresBefore = ActiveFeatures();
    const auto channelsBefore = CurrentChannels();
    ASSERT_TRUE(featuresBefore.at("rx-checksumming") && featuresBefore.at("tx-scatter-gather"));
    ASSERT_NE(channelsBefore.at("RX"), "1");
    const std::vector<std::vector<std::string>> changes{
        {"nic", "cso", "set", "-n", kNic, "-e", "0"},
        {"nic", "sg", "set", "-n", kNic, "-e", "0"},
        {"nic", "queue", "count", "set", "-n", kNic, "-r", "true", "-q", "1"},
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(::testing::PrintToString(change));
        WithoutNetAdmin unprivileged;
        EXPECT_EQ(RunError(change), "Operation not permitted");
    }
    EXPECT_EQ(ActiveFeatures(), featuresBefore);
    EXPECT_EQ(CurrentChannels(), channelsBefore);
}

TEST_F(LinuxNicSettingsTest, PseudoNicsHaveNoVirtualFunctions) {
    EXPECT_TRUE(Rows(RunList({"sriovnic", "list"})).empty());
    EXPECT_EQ(RunError({"sriovnic", "vf", "list", "-n", kNic}),
              "There is no SRIOV Nic with name v0");
    EXPECT_EQ(RunError({"sriovnic", "vf", "stats", "-n", kNic, "-v", "0"}),
              "There is no SRIOV Nic with name v0");
}

// A failure of each host operation of a command that succeeds on a veth ends in an error.
TEST_F(LinuxNicSettingsTest, EveryFaultOfTheLiveSettingsFails) {
    SweepTable({
        {{"nic", "get", "-n", kNic}, {"Pnic::GetPnicInfo", "Pnic::GetPauseParams"}},
        {{"nic", "cso", "set", "-n", kNic, "-e", "1"},
         {"Pnic::GetOffloadParams", "Pnic::SetOffloadParams"}},
        {{"nic", "queue", "count", "get", "-n", kNic}, {"Pnic::GetNetqueueParams"}},
        {{"nic", "queue", "count", "set", "-n", kNic, "--tx=true", "-q", "2"},
         {"Pnic::SetNetqueueParams"}},
    });
}

}  // namespace
