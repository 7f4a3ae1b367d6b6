// The real autocli binary on the NIC device commands: stdout, stderr and exit status.
#include <nlohmann/json.hpp>

#include "support/CommandTest.h"

namespace {

using json = nlohmann::ordered_json;
using Testing::ProcessResult;

class AutocliNicDevice : public ::testing::Test {
protected:
    ProcessResult Autocli(const std::vector<std::string>& arguments) {
        std::vector<std::string> line{"network"};
        line.insert(line.end(), arguments.begin(), arguments.end());
        return Testing::RunAutocli(line, state_.Path());
    }
    json Json(const std::vector<std::string>& arguments) {
        std::vector<std::string> line{"--formatter=json"};
        line.insert(line.end(), arguments.begin(), arguments.end());
        auto result = Autocli(line);
        EXPECT_EQ(result.status, 0) << result.err;
        return json::parse(result.out);
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliNicDevice, SriovListIsATableWithTheLinkColumn) {
    auto result = Autocli({"sriovnic", "list"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out.substr(0, result.out.find('\n')),
              "Name    PCI Device    Driver   Link  Speed  Duplex  MAC Address        MTU   "
              "Description");
    auto stats = Json({"sriovnic", "vf", "stats", "-n", "hwnic4", "-v", "0"});
    EXPECT_EQ(stats[0]["Rx Unicast Pkt"], 270781);
    auto refused = Autocli({"sriovnic", "vf", "stats", "-n", "hwnic4", "-v", "-3"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Invalid vf id:-3 provided. vf id starts from 0\n");
}

TEST_F(AutocliNicDevice, QueueCountSetThenGet) {
    auto set = Autocli(
        {"nic", "queue", "count", "set", "--tx=true", "--rx=true", "-q", "4", "-n", "hwnic4"});
    EXPECT_EQ(set.status, 0) << set.err;
    EXPECT_EQ(set.out, "");
    EXPECT_EQ(Json({"nic", "queue", "count", "get", "-n", "hwnic4"}),
              json::parse(R"([{"NIC": "hwnic4", "Tx netqueue count": 4,
                               "Rx netqueue count": 4}])"));
    auto refused = Autocli({"nic", "queue", "count", "set", "--rx=1", "-q", "33", "-n", "hwnic4"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Rx netqueue count 33 is out of range (1-32) for NIC hwnic4\n");
}

TEST_F(AutocliNicDevice, HwCapActivatedKeepsTheOrderGiven) {
    auto rows = Json({"nic", "hwCap", "activated", "list", "-n", "hwnic8", "-n", "hwnic6"});
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0]["NIC"], "hwnic8");
    EXPECT_EQ(rows[0]["Device Hardware Cap Activated"], "IPv4 Checksum Offload   ");
    EXPECT_EQ(rows[1]["Device Hardware Cap Activated"], "");
}

TEST_F(AutocliNicDevice, DcbStatusKeepsItsFieldOrder) {
    auto status = Json({"nic", "dcb", "status", "get", "-n", "hwnic4"});
    std::vector<std::string> keys;
    for (const auto& [key, value] : status.items()) {
        keys.push_back(key);
    }
    EXPECT_EQ(keys,
              (std::vector<std::string>{
                  "Nic Name", "Mode", "Enabled", "Capabilities", "PFC Enabled", "PFC Configuration",
                  "IEEE PFC Configuration", "IEEE ETS Configuration", "DCB Apps"}));
    auto refused = Autocli({"nic", "dcb", "status", "get", "-n", "hwnic1"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "NIC hwnic1 does not support DCB\n");
}

TEST_F(AutocliNicDevice, EepromChangeShowsInTheDump) {
    auto change = Autocli({"nic", "eeprom", "change", "-n", "hwnic2", "-m", "2048787280", "-o", "8",
                           "-v", "4294967295"});
    EXPECT_EQ(change.status, 0) << change.err;
    auto dump = Autocli({"nic", "eeprom", "dump", "-n", "hwnic2", "-o", "8", "-l", "4"});
    EXPECT_EQ(dump.out,
              "Offset  Value\n"
              "------  ------------------------------------\n"
              "0000                            ff ff ff ff\n");
    auto wrong =
        Autocli({"nic", "eeprom", "change", "-n", "hwnic2", "-m", "1", "-o", "8", "-v", "0"});
    EXPECT_EQ(wrong.status, 1);
    EXPECT_EQ(wrong.err, "Wrong EEPROM magic 0x1 for NIC hwnic2\n");
}

TEST_F(AutocliNicDevice, AttachmentsOfATrunkAndABranchTakenTwice) {
    EXPECT_EQ(
        Autocli({"nic", "attachment", "add", "-t", "hwnic2", "-b", "hwnic1", "-v", "120"}).status,
        0);
    auto rows = Json({"nic", "attachment", "list", "-t", "hwnic2"});
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1]["Branch"], "hwnic1");
    EXPECT_EQ(rows[1]["VLAN ID"], 120);
    auto refused =
        Autocli({"nic", "attachment", "add", "-t", "hwnic0", "-b", "hwnic1", "-v", "120"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err,
              "Failed to attach uplink hwnic1 to hwnic0: NIC hwnic1 is already a branch of trunk "
              "hwnic2\n");
}

}  // namespace
