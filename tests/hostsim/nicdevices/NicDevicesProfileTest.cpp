// The nicDevices section of a profile: export after import gives it back, --scale copies it
// with its references, and what a host can't have is refused.
#include "hostsim/Control.h"
#include "hostsim/core/Json.h"
#include "support/CommandTest.h"

namespace {

using HostSim::Json;
using Testing::RunHostsim;

class NicDevicesProfile : public ::testing::Test {
protected:
    Json Export() {
        auto result = RunHostsim({"export"}, state_.Path());
        EXPECT_EQ(result.status, 0) << result.err;
        return Json::parse(result.out);
    }
    Testing::ProcessResult Import(const Json& profile) {
        const std::string file = state_.Path() + "/profile.json";
        FILE* out = std::fopen(file.c_str(), "w");
        const std::string text = profile.dump();
        std::fwrite(text.data(), 1, text.size(), out);
        std::fclose(out);
        return RunHostsim({"import", file}, state_.Path());
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(NicDevicesProfile, ExportAfterImportGivesTheSameSection) {
    const Json before = Export();
    ASSERT_EQ(Import(before).status, 0);
    EXPECT_EQ(Export()["nicDevices"], before["nicDevices"]);
}

TEST_F(NicDevicesProfile, ScaledCopiesRenameTheirNicsBranchesAndFunctions) {
    ASSERT_EQ(RunHostsim({"init", "--scale=2"}, state_.Path()).status, 0);
    const Json devices = Export()["nicDevices"];
    ASSERT_EQ(devices.size(), 16u);
    const Json& copy = devices[10];
    EXPECT_EQ(copy["nic"], "hwnic13");
    EXPECT_EQ(copy["attachments"], Json::parse(R"([{"branch": "hwnic14", "vlanId": 110}])"));
    EXPECT_EQ(copy["sriov"]["virtualFunctions"][1]["pciAddress"], "0001:3b:02.1");
}

TEST_F(NicDevicesProfile, WhatAHostCantHaveIsRefused) {
    const Json base = Export();
    struct Case {
        const char* pointer;
        Json value;
        const char* message;
    };
    const std::vector<Case> cases = {
        {"/nicDevices/0/nic", "hwnic99", "The device features of hwnic99 name no NIC of the host"},
        {"/nicDevices/1/nic", "hwnic0",
         "The profile has device features for hwnic0 more than once"},
        {"/nicDevices/0/attachments", Json::parse(R"([{"branch": "hwnic3", "vlanId": 5}])"),
         "NIC hwnic3 is a branch of more than one trunk"},
        {"/nicDevices/3/attachments", Json::parse(R"([{"branch": "hwnic1", "vlanId": 5}])"),
         "NIC hwnic3 is both a trunk and a branch of hwnic2"},
        {"/nicDevices/0/attachments", Json::parse(R"([{"branch": "hwnic1", "vlanId": 4095}])"),
         "Trunk hwnic0 has an invalid attachment of hwnic1 with VLAN 4095"},
        {"/nicDevices/0/hwCapabilities/activated", Json::array({40}),
         "NIC hwnic0 activates a hardware capability it doesn't support"},
        {"/nicDevices/0/netqueue/txQueues", 9,
         "NIC hwnic0 has netqueue counts outside 1 to their maxima"},
        {"/nicDevices/0/netqueue/allowed", Json::array({"LRO"}),
         "NIC hwnic0 allows a netqueue feature it doesn't support"},
        {"/nicDevices/0/netqueue/supported", Json::array({"Turbo"}),
         "NIC hwnic0 names an unknown netqueue feature \"Turbo\""},
        {"/nicDevices/0/diagnostics/eeprom", "0g",
         "NIC hwnic0: \"eeprom\" must be lower-case hexadecimal, two digits a byte"},
        {"/nicDevices/4/dcb/mode", 4, "NIC hwnic4 has an unknown DCB mode 4"},
    };
    for (const auto& entry : cases) {
        Json profile = base;
        profile[Json::json_pointer(entry.pointer)] = entry.value;
        auto result = Import(profile);
        EXPECT_EQ(result.status, 1) << entry.pointer;
        EXPECT_NE(result.err.find(entry.message), std::string::npos)
            << entry.pointer << ": " << result.err;
    }
    EXPECT_EQ(Export()["nicDevices"], base["nicDevices"]);
}

}  // namespace
