// `nic get`: the host's numbers turned into words, on NICs made for the case.
#include <nlohmann/json.hpp>

#include "hostsim/values/LocalMac.h"
#include "support/CommandTest.h"

namespace {

using nlohmann::json;
using Testing::Bool;
using Testing::DeclaredFieldNames;
using Testing::FieldNames;
using Testing::Int;
using Testing::Nested;
using Testing::Str;
using Testing::Strings;

class NicGetTest : public Testing::CommandTest {
protected:
    // A host with one NIC, "hwnic0", whose link information, pause parameters and extra keys
    // are given.
    void UseNic(const json& linkInfo, const json& pause = json::object(),
                const json& extra = json::object()) {
        json nic = {{"name", "hwnic0"},
                    {"pci", {{"address", "0000:02:00.0"}, {"vendor", "Zanvex"}, {"device", "ZX"}}},
                    {"driver", "zxnet"},
                    {"speed", 25000},
                    {"mac", HostSim::LocalMac(HostSim::MacKind::PciNic, 0)},
                    {"linkInfo", linkInfo},
                    {"pause", pause}};
        nic.update(extra);
        HostSim::ImportProfile(json{{"nics", json::array({nic})}}.dump());
    }

    std::vector<std::string> LinkModes(const json& modes) {
        UseNic({{"advertisedLinkModes", modes}});
        return Strings(RunStruct({"nic", "get", "-n", "hwnic0"}), "Advertised Link Modes");
    }
};

TEST_F(NicGetTest, DefaultNicShowsEveryFieldWithItsDriverInfo) {
    auto info = RunStruct({"nic", "get", "-n", "hwnic0"});
    ASSERT_TRUE(info);
    EXPECT_EQ(info->GetName(), "NICInfo");
    const std::vector<std::string> names = FieldNames(info);
    EXPECT_EQ(names, DeclaredFieldNames({"nic", "get"}));
    EXPECT_EQ(names.front(), "Name");
    EXPECT_EQ(names.back(), "Backing DPU Id");
    EXPECT_EQ(Str(info, "Name"), "hwnic0");
    auto driver = Nested(info, "Driver Info");
    ASSERT_TRUE(driver);
    EXPECT_EQ(driver->GetName(), "NICDriverInfo");
    EXPECT_FALSE(Str(driver, "Driver").empty());
    EXPECT_FALSE(Str(driver, "Version").empty());
}

TEST_F(NicGetTest, LinkModesReadAsSpeedMediaAndDuplex) {
    EXPECT_EQ(LinkModes(json::array({{{"speed", 1000}, {"duplex", 1}, {"media", 2}},
                                     {{"speed", 0}, {"duplex", 9}, {"media", 99}},
                                     {{"speed", 25000}, {"duplex", 1}, {"media", 14}},
                                     {{"speed", 25000}, {"duplex", 1}, {"media", 39}},
                                     {{"speed", 25000}, {"duplex", 7}, {"media", 14}},
                                     {{"speed", 100}, {"duplex", 2}, {"media", 38}},
                                     {{"speed", 10}, {"duplex", 0}, {"media", 0}}})),
              (std::vector<std::string>{"1000BaseT/Full", "Auto", "25000BaseCR1/Full",
                                        "25000Unknown/Full", "25000BaseCR1/", "100BaseCR2/Half",
                                        "10None/Auto"}));
}

TEST_F(NicGetTest, PortsDifferBetweenTheListAndTheCableType) {
    UseNic({{"supportedPorts", {0, 4, 6, 9}}, {"port", 0}});
    auto info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_EQ(Strings(info, "Supported Ports"),
              (std::vector<std::string>{"TP", "FIBRE", "BACKPLANE", "UNKNOWN"}));
    EXPECT_EQ(Str(info, "Cable Type"), "Twisted Pair");
    UseNic({{"port", 12}, {"transceiver", 1}});
    info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_EQ(Str(info, "Cable Type"), "");
    EXPECT_EQ(Str(info, "Transceiver"), "external");
    UseNic({{"transceiver", 5}});
    EXPECT_EQ(Str(RunStruct({"nic", "get", "-n", "hwnic0"}), "Transceiver"), "");
}

TEST_F(NicGetTest, WakeOnModesAndTheirAbsence) {
    UseNic({{"supportsWakeOn", false}, {"wakeOn", {5}}});
    auto info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_EQ(Strings(info, "Wakeon"), std::vector<std::string>{"None"});
    EXPECT_FALSE(Bool(info, "Supports Wakeon"));

    UseNic({{"supportsWakeOn", true}, {"wakeOn", json::array()}});
    info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_TRUE(Strings(info, "Wakeon").empty());
    EXPECT_TRUE(Bool(info, "Supports Wakeon"));

    UseNic({{"supportsWakeOn", true}, {"wakeOn", {1, 5, 6, 8, 12}}});
    EXPECT_EQ(Strings(RunStruct({"nic", "get", "-n", "hwnic0"}), "Wakeon"),
              (std::vector<std::string>{
                  "Unicast Messagess", "MagicPacket(tm)",
                  "Enable SecureOn(tm) Password for                            MagicPacket(tm)",
                  "Disabled", "None"}));
}

TEST_F(NicGetTest, MessageLevelIsMinusOneWithoutSupport) {
    const std::string kVirtualAddress = HostSim::LocalMac(HostSim::MacKind::NicVirtualAddress, 7);
    UseNic({{"supportsMessageLevel", false}, {"messageLevel", 7}});
    EXPECT_EQ(Int(RunStruct({"nic", "get", "-n", "hwnic0"}), "Current Message Level"), -1);
    UseNic({{"supportsMessageLevel", true},
            {"messageLevel", 7},
            {"phyAddress", 3},
            {"virtualAddress", kVirtualAddress}});
    auto info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_EQ(Int(info, "Current Message Level"), 7);
    EXPECT_EQ(Int(info, "PHY Address"), 3);
    EXPECT_EQ(Str(info, "Virtual Address"), kVirtualAddress);
}

TEST_F(NicGetTest, PauseFieldsStayEmptyWithoutPauseSupport) {
    UseNic(json::object(), {{"supported", false}, {"rxPause", true}});
    auto info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_FALSE(Bool(info, "Supports Pause"));
    for (const char* field : {"Pause Autonegotiate", "Pause RX", "Pause TX"}) {
        auto value = info->GetField(field);
        ASSERT_TRUE(value) << field;
        EXPECT_FALSE(value->HasValue()) << field;
    }
    UseNic(
        json::object(),
        {{"supported", true}, {"autoNegotiation", false}, {"rxPause", true}, {"txPause", false}});
    info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_TRUE(Bool(info, "Supports Pause"));
    EXPECT_TRUE(info->GetField("Pause Autonegotiate")->HasValue());
    EXPECT_FALSE(Bool(info, "Pause Autonegotiate"));
    EXPECT_TRUE(Bool(info, "Pause RX"));
    EXPECT_FALSE(Bool(info, "Pause TX"));
}

TEST_F(NicGetTest, LinkAndDpuComeFromTheHost) {
    UseNic(json::object(), json::object(), {{"dpuId", "dpu-7"}, {"cableConnected", false}});
    auto info = RunStruct({"nic", "get", "-n", "hwnic0"});
    EXPECT_EQ(Str(info, "Backing DPU Id"), "dpu-7");
    EXPECT_FALSE(Bool(info, "Link Detected"));
}

TEST_F(NicGetTest, UnknownNicAndHostFailures) {
    EXPECT_EQ(RunError({"nic", "get", "-n", "nosuch"}), "There is no pnic with name nosuch");
    HostSim::InjectFault("Pnic::GetPauseParams", "hwnic0", "pause registers unreadable");
    EXPECT_EQ(RunError({"nic", "get", "-n", "hwnic0"}), "pause registers unreadable");
}

}  // namespace
