// `nic hwCap supported|activated list` and `nic dcb status get`: the capability words and the
// DCB renderings.
#include "nic/NicDeviceTest.h"

namespace {

using NicDeviceTesting::NicDeviceTest;
using NicDeviceTesting::Words;
using Testing::Bool;
using Testing::Int;
using Testing::Nested;
using Testing::Str;

using Pairs = std::vector<std::pair<std::string, std::string>>;

class NicHwCapDcbTest : public NicDeviceTest {
protected:
    std::string Supported(const std::string& nic) {
        return Column({"nic", "hwCap", "supported", "list", "-n", nic}, "NIC",
                      "Device Hardware Cap Supported")
            .front()
            .second;
    }
};

TEST_F(NicHwCapDcbTest, CapabilityWordsFollowTheBitsInOrder) {
    const std::vector<std::pair<HostSim::Json, std::string>> cases = {
        {HostSim::Json::array({0, 2}), "VLAN Tx Insertion   IPv4 Checksum Offload   "},
        {HostSim::Json::array({30, 31, 40}), "Hardware Timestamps   "},
        {HostSim::Json::array(), ""},
        {HostSim::Json::array({16}), "DCB   "},
    };
    for (const auto& [bits, text] : cases) {
        UseDevice({{"nic", "hwnic7"}, {"hwCapabilities", {{"supported", bits}}}});
        EXPECT_EQ(Supported("hwnic7"), text) << bits.dump();
    }
}

TEST_F(NicHwCapDcbTest, ListsKeepTheOrderGivenAndShowNotAvailable) {
    EXPECT_EQ(Column({"nic", "hwCap", "activated", "list", "-n", "hwnic8", "-n", "hwnic7", "-n",
                      "hwnic8"},
                     "NIC", "Device Hardware Cap Activated"),
              (Pairs{{"hwnic8", "IPv4 Checksum Offload   "},
                     {"hwnic7", "N/A"},
                     {"hwnic8", "IPv4 Checksum Offload   "}}));
    auto all =
        Column({"nic", "hwCap", "activated", "list"}, "NIC", "Device Hardware Cap Activated");
    ASSERT_GE(all.size(), 9u);
    EXPECT_EQ(all[6], (std::pair<std::string, std::string>{"hwnic6", ""}));
    EXPECT_EQ(all[0].second,
              "VLAN Tx Insertion   VLAN Rx Stripping   IPv4 Checksum Offload   IPv6 Checksum "
              "Offload   TCP Segmentation Offload   Scatter-Gather   ");
    EXPECT_EQ(RunError({"nic", "hwCap", "supported", "list", "-n", "hwnic0", "-n", "hwnic99"}),
              "Can't find PNIC with name hwnic99");
}

TEST_F(NicHwCapDcbTest, DcbStatusRendersEveryPart) {
    auto status = RunStruct({"nic", "dcb", "status", "get", "-n", "hwnic4"});
    ASSERT_TRUE(status);
    EXPECT_EQ(Str(status, "Nic Name"), "hwnic4");
    EXPECT_EQ(Str(status, "Mode"), "3 - IEEE Mode");
    EXPECT_TRUE(Bool(status, "Enabled"));
    EXPECT_EQ(Str(status, "PFC Configuration"), "0 0 0 1 0 0 0 0");
    auto capabilities = Nested(status, "Capabilities");
    EXPECT_TRUE(Bool(capabilities, "UP to TC Map"));
    EXPECT_EQ(Int(capabilities, "PG Traffic Classes"), 8);
    auto ets = Nested(status, "IEEE ETS Configuration");
    EXPECT_EQ(Str(ets, "TX Bandwidth Per TC"), "10 10 50 30 0 0 0 0");
    EXPECT_EQ(Str(ets, "Recommended TC Bandwith Per TC"), "25 25 25 25 0 0 0 0");
    EXPECT_EQ(Str(ets, "Recommended TC Bandwidth Per TC"), "25 25 25 25 0 0 0 0");
    EXPECT_EQ(Str(ets, "Credit Based Shaper ETS Algorithm Supported"), "Not Supported");
    auto pfc = Nested(status, "IEEE PFC Configuration");
    EXPECT_EQ(Str(pfc, "Sent PFC Frames"), "0 0 0 1204 0 0 0 0");
    EXPECT_EQ(Int(pfc, "Number Of Traffic Classes"), 8);
    auto apps = std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(
        Testing::FieldOf(status, "DCB Apps"));
    ASSERT_TRUE(apps);
    auto rows = Testing::Rows(apps);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Str(rows[1], "Protocol ID"), "3260");
    EXPECT_EQ(Str(rows[1], "User Priority"), "4");

    auto cee = RunStruct({"nic", "dcb", "status", "get", "-n", "hwnic5"});
    EXPECT_EQ(Str(cee, "Mode"), "2 - CEE Mode");
    EXPECT_FALSE(Bool(cee, "Enabled"));
    auto noApps =
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(Testing::FieldOf(cee, "DCB Apps"));
    ASSERT_TRUE(noApps);
    EXPECT_EQ(noApps->GetCount(), 0u);
}

TEST_F(NicHwCapDcbTest, DcbMasksPrintBitZeroFirst) {
    auto dcb = ExportedHost()["nicDevices"][4]["dcb"];
    dcb["pfcConfig"] = 5;
    dcb["pfc"]["pfcConfig"] = 0x80;
    dcb["mode"] = 0;
    UseDevice({{"nic", "hwnic4"}, {"dcb", dcb}});
    auto status = RunStruct({"nic", "dcb", "status", "get", "-n", "hwnic4"});
    EXPECT_EQ(Str(status, "PFC Configuration"), "1 0 1 0 0 0 0 0");
    EXPECT_EQ(Str(Nested(status, "IEEE PFC Configuration"), "PFC Configuration"),
              "0 0 0 0 0 0 0 1");
    EXPECT_EQ(Str(status, "Mode"), "0 - Unknown");
}

TEST_F(NicHwCapDcbTest, DcbFailuresAreTheHostsWords) {
    EXPECT_EQ(RunError({"nic", "dcb", "status", "get", "-n", "hwnic0"}),
              "NIC hwnic0 does not support DCB");
    EXPECT_EQ(RunError({"nic", "dcb", "status", "get", "-n", "hwnic99"}),
              "There is no NIC named hwnic99 on this host");
}

}  // namespace
