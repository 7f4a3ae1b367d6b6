// The real autocli on the NIC settings commands: what one process changes, the next one shows.
#include <nlohmann/json.hpp>

#include "support/CommandTest.h"

namespace {

using json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

class NicSettingsAutocli : public ::testing::Test {
protected:
    Testing::ProcessResult Nic(const Words& words, const std::string& formatter = "") {
        Words arguments;
        if (!formatter.empty()) {
            arguments.push_back("--formatter=" + formatter);
        }
        arguments.insert(arguments.end(), {"network", "nic"});
        arguments.insert(arguments.end(), words.begin(), words.end());
        return Testing::RunAutocli(arguments, state_.Path());
    }
    json Json(const Words& words) {
        auto result = Nic(words, "json");
        EXPECT_EQ(result.status, 0) << result.err;
        return json::parse(result.out);
    }
    void Ok(const Words& words) {
        auto result = Nic(words);
        EXPECT_EQ(result.status, 0) << ::testing::PrintToString(words) << result.err;
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(NicSettingsAutocli, StatsAsCsvAreOneHeaderAndOneRow) {
    auto result = Nic({"stats", "get", "-n", "hwnic0"}, "csv");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "NIC Name,Packets received,Packets sent,Bytes received,Bytes sent,Receive packets "
              "dropped,Transmit packets dropped,Multicast packets received,Broadcast packets "
              "received,Multicast packets sent,Broadcast packets sent,Total receive errors,Receive "
              "length errors,Receive over errors,Receive CRC errors,Receive frame errors,Receive "
              "FIFO errors,Receive missed errors,Total transmit errors,Transmit aborted "
              "errors,Transmit carrier errors,Transmit FIFO errors,Transmit heartbeat "
              "errors,Transmit window errors\n"
              "hwnic0,91733482,48211907,118372640012,21938274611,341,0,1022874,388120,20331,1420,"
              "12,0,0,12,0,0,341,0,0,0,0,0,0\n");
    auto missing = Nic({"stats", "get", "-n", "hwnic99"});
    EXPECT_NE(missing.status, 0);
    EXPECT_NE(missing.err.find("Unable to get stats for NIC: There is no NIC named hwnic99"),
              std::string::npos)
        << missing.err;
}

TEST_F(NicSettingsAutocli, ChangesLastBetweenProcesses) {
    Ok({"set", "-n", "hwnic0", "--transceiver-type", "external", "-w", "ug"});
    auto info = Json({"get", "-n", "hwnic0"});
    EXPECT_EQ(info.at("Transceiver"), "external");
    EXPECT_EQ(info.at("Wakeon"), json::array({"Unicast Messagess", "MagicPacket(tm)"}));

    auto preset = Json({"ring", "preset", "get", "-n", "hwnic1"});
    Ok({"ring", "current", "set", "-n", "hwnic1", "-r",
        std::to_string(preset.at("Max RX").get<long>())});
    EXPECT_EQ(Json({"ring", "current", "get", "-n", "hwnic1"}).at("RX"), 4096);
    auto jumbo = Nic({"ring", "current", "set", "-n", "hwnic1", "-j", "64"});
    EXPECT_NE(jumbo.status, 0);
    EXPECT_NE(jumbo.err.find("NIC hwnic1 has no RX jumbo ring"), std::string::npos) << jumbo.err;

    Ok({"pauseParams", "set", "-n", "hwnic1", "--auto", "false", "--rx", "false", "--tx", "false"});
    auto pause = Json({"pauseParams", "list", "-n", "hwnic1"})[0];
    EXPECT_EQ(pause.at("Pause RX"), false);
    EXPECT_EQ(pause.at("Auto Negotiation"), false);
    EXPECT_EQ(pause.at("Pause Params Supported"), true);

    Ok({"coalesce", "set", "-n", "hwnic5", "-A", "true", "-T", "64"});
    auto coalesce = Json({"coalesce", "get", "-n", "hwnic5"})[0];
    EXPECT_EQ(coalesce.at("Adaptive TX"), "On");
    EXPECT_EQ(coalesce.at("TX Maximum frames"), "64");
    EXPECT_EQ(coalesce.at("RX maximum frames"), "128");

    Ok({"software", "set", "-n", "hwnic5", "--tagging", "true", "--untagging", "true"});
    auto software = Json({"software", "list", "-n", "hwnic5"})[0];
    EXPECT_EQ(software.at("VLAN Tagging"), "on");
    EXPECT_EQ(software.at("VLAN Untagging"), "on");
}

TEST_F(NicSettingsAutocli, VlanStatisticsOfANewUplink) {
    auto added = Testing::RunAutocli(
        {"network", "vswitch", "standard", "uplink", "add", "-v", "storageswitch1", "-u", "hwnic5"},
        state_.Path());
    ASSERT_EQ(added.status, 0) << added.err;
    Ok({"vlan", "stats", "set", "-n", "hwnic5", "-e", "true"});
    auto result = Nic({"vlan", "stats", "get", "-n", "hwnic5"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out.substr(0, result.out.find("VLAN 20")),
              "VLAN 0\n   Packets received: 0\n   Packets sent: 0\n\n");
}

}  // namespace
