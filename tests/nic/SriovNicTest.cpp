// `sriovnic list`, `sriovnic vf list` and `sriovnic vf stats` on the default host and on hosts
// made for the case.
#include "nic/NicDeviceTest.h"

namespace {

using NicDeviceTesting::NicDeviceTest;
using NicDeviceTesting::Words;
using Testing::Bool;
using Testing::DeclaredFieldNames;
using Testing::FieldNames;
using Testing::Int;
using Testing::Rows;
using Testing::Str;

using SriovNicTest = NicDeviceTest;

TEST_F(SriovNicTest, ListsOnlyNicsWithSriovEnabledAndTheirLink) {
    EXPECT_EQ(
        Column({"sriovnic", "list"}, "Name", "Link"),
        (std::vector<std::pair<std::string, std::string>>{{"hwnic2", "Up"}, {"hwnic4", "Down"}}));
    auto row = Rows(RunList({"sriovnic", "list"})).front();
    EXPECT_EQ(Str(row, "PCI Device"), "0000:3b:00.0");
    EXPECT_EQ(Str(row, "Driver"), "tarn10g");
    EXPECT_EQ(Int(row, "Speed"), 10000);
    EXPECT_EQ(Str(row, "Duplex"), "Full");
    EXPECT_EQ(Str(row, "MAC Address"), MacOf("hwnic2"));
    EXPECT_EQ(Int(row, "MTU"), 9000);
    EXPECT_EQ(Str(row, "Description"),
              "Tarn Semiconductor T7120 10-Gigabit SFP+ Network Controller");

    Change({"nic", "down", "-n", "hwnic2"});
    EXPECT_EQ(Column({"sriovnic", "list"}, "Name", "Link").front().second, "Down");
}

TEST_F(SriovNicTest, PseudoNicWithSriovShowsPseudoAndUnknown) {
    UseDevice({{"nic", "hwnic6"}, {"sriov", {{"enabled", true}}}});
    auto row = Rows(RunList({"sriovnic", "list"})).back();
    EXPECT_EQ(Str(row, "Name"), "hwnic6");
    EXPECT_EQ(Str(row, "PCI Device"), "Pseudo");
    EXPECT_EQ(Str(row, "Description"), "Unknown Unknown");
    EXPECT_EQ(RunList({"sriovnic", "vf", "list", "-n", "hwnic6"})->GetCount(), 0u);
}

TEST_F(SriovNicTest, VirtualFunctionsShowTheirAddressesAndOwners) {
    auto rows = Rows(RunList({"sriovnic", "vf", "list", "-n", "hwnic2"}));
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(Int(rows[1], "VF ID"), 1);
    EXPECT_TRUE(Bool(rows[1], "Active"));
    EXPECT_EQ(Str(rows[1], "Hex PCI Address"), "0000:3b:02.1");
    EXPECT_EQ(Str(rows[1], "PCI Address"), "00000:059:02.1");
    EXPECT_EQ(Str(rows[1], "Owner World ID"), "1000388");
    EXPECT_FALSE(Bool(rows[3], "Active"));
    EXPECT_EQ(Str(rows[3], "Owner World ID"), "");
}

TEST_F(SriovNicTest, StatsAnswerForEveryListedFunction) {
    for (const char* nic : {"hwnic2", "hwnic4"}) {
        for (const auto& vf : Rows(RunList({"sriovnic", "vf", "list", "-n", nic}))) {
            const std::string id = std::to_string(Int(vf, "VF ID"));
            auto stats = RunList({"sriovnic", "vf", "stats", "-n", nic, "-v", id});
            ASSERT_EQ(stats->GetCount(), 1u) << nic << " " << id;
            auto row = Rows(stats).front();
            EXPECT_EQ(Str(row, "NIC Name"), nic);
            EXPECT_EQ(Int(row, "VF ID"), Int(vf, "VF ID"));
        }
    }
    auto row = Rows(RunList({"sriovnic", "vf", "stats", "-n", "hwnic2", "-v", "0"})).front();
    EXPECT_EQ(Int(row, "Rx Unicast Pkt"), 812345);
    EXPECT_EQ(Int(row, "Tx TSO Bytes"), 4902011);
    EXPECT_EQ(FieldNames(row), DeclaredFieldNames({"sriovnic", "vf", "stats"}));
}

TEST_F(SriovNicTest, RefusalsInTheCommandsWords) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"sriovnic", "vf", "list", "-n", "hwnic3"}, "There is no SRIOV Nic with name hwnic3"},
        {{"sriovnic", "vf", "list", "-n", "hwnic99"}, "There is no SRIOV Nic with name hwnic99"},
        {{"sriovnic", "vf", "stats", "-n", "hwnic99", "-v", "-1"},
         "Invalid vf id:-1 provided. vf id starts from 0"},
        {{"sriovnic", "vf", "stats", "-n", "hwnic0", "-v", "0"},
         "There is no SRIOV Nic with name hwnic0"},
        {{"sriovnic", "vf", "stats", "-n", "hwnic2", "-v", "9"},
         "Unable to get VF Stats. Error:NIC hwnic2 has no virtual function 9"},
    };
    for (const auto& [words, message] : cases) {
        EXPECT_EQ(RunError(words), message) << ::testing::PrintToString(words);
    }
}

TEST_F(SriovNicTest, HostWithoutSriovListsNothing) {
    auto profile = ExportedHost();
    profile["nicDevices"] = HostSim::Json::array();
    ImportHost(profile);
    EXPECT_EQ(RunList({"sriovnic", "list"})->GetCount(), 0u);
}

}  // namespace
