// Kelm interfaces and netstacks through the real autocli binary: a listing as printed, a refused
// change, and a change that the next process sees.
#include <nlohmann/json.hpp>

#include "support/CommandTest.h"

namespace {

using nlohmann::json;
using Testing::ProcessResult;
using Words = std::vector<std::string>;

class AutocliInterface : public ::testing::Test {
protected:
    ProcessResult Autocli(Words words, const std::string& formatter = {}) {
        words.insert(words.begin(), "network");
        if (!formatter.empty()) {
            words.insert(words.begin(), "--formatter=" + formatter);
        }
        return Testing::RunAutocli(words, state_.Path());
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliInterface, NetstackListAsPrinted) {
    const auto result = Autocli({"ip", "netstack", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "defaultTcpipStack\n"
              "   Key: defaultTcpipStack\n"
              "   Name: defaultTcpipStack\n"
              "   State: 4660\n"
              "\n"
              "glidex\n"
              "   Key: glidex\n"
              "   Name: glidex\n"
              "   State: 4660\n");
}

TEST_F(AutocliInterface, RefusedChanges) {
    const auto untag = Autocli({"ip", "interface", "tag", "remove", "-i", "kelm1", "-t", "Glidex"});
    EXPECT_EQ(untag.status, 1);
    EXPECT_EQ(untag.out, "");
    EXPECT_EQ(untag.err, "Can not remove tag from pre-defined netstack.\n");
    const auto bad = Autocli({"ip", "interface", "add", "-s", "distswitch0"});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.out, "");
    EXPECT_EQ(bad.err,
              "A connection point of either vswitch port group name or dvs-name/dvport-id should "
              "be specified. If connection point is DVPort, --dvs-name and --dvport-id must be "
              "specified at the same time.\n");
    // A bad interface name never reaches the command.
    const auto name = Autocli({"ip", "interface", "add", "-p", "VM Network", "-i", "kelm300"});
    EXPECT_NE(name.status, 0);
    EXPECT_EQ(name.out, "");
    EXPECT_NE(name.err, "");
}

TEST_F(AutocliInterface, ChangesReachTheNextProcess) {
    EXPECT_EQ(Autocli({"ip", "interface", "ipv4", "set", "-i", "kelm1", "-t", "static", "-I",
                       "198.51.100.30", "-N", "255.255.255.0", "-g", "198.51.100.2"})
                  .status,
              0);
    const auto read = Autocli({"ip", "interface", "ipv4", "get", "-i", "kelm1"}, "json");
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(json::parse(read.out, nullptr, false), json::parse(R"([{
        "Name": "kelm1", "IPv4 Address": "198.51.100.30", "IPv4 Netmask": "255.255.255.0",
        "IPv4 Broadcast": "198.51.100.255", "Address Type": "STATIC",
        "Gateway": "198.51.100.2", "DHCP DNS": false}])"));
    EXPECT_EQ(Autocli({"ip", "netstack", "add", "-N", "mirrorlock", "--disabled"}).status, 0);
    const auto get = Autocli({"ip", "netstack", "get", "-N", "mirrorlock"}, "json");
    EXPECT_EQ(get.status, 0);
    const auto rows = json::parse(get.out, nullptr, false);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["Key"], "mirrorlock");
    EXPECT_EQ(rows[0]["Enabled"], false);
}

}  // namespace
