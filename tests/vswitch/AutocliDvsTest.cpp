// The distributed switch, LACP, ENS, port and VM commands through the real autocli binary:
// stdout, stderr, exit status, and what a later process sees.
#include <nlohmann/json.hpp>

#include "support/CommandTest.h"

namespace {

using nlohmann::json;
using Testing::ProcessResult;
using Words = std::vector<std::string>;

class AutocliDvs : public ::testing::Test {
protected:
    ProcessResult Autocli(Words words, const std::string& formatter = {}) {
        words.insert(words.begin(), "network");
        if (!formatter.empty()) {
            words.insert(words.begin(), "--formatter=" + formatter);
        }
        return Testing::RunAutocli(words, state_.Path());
    }

    json Json(const Words& words) {
        auto result = Autocli(words, "json");
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return json::parse(result.out, nullptr, false);
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliDvs, LacpStatusShowsEachNicUnderItsLag) {
    auto result = Autocli({"vswitch", "dvs", "zanvex", "lacp", "status", "get"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("DVSwitch: distswitch0"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("hwnic10  Bundled"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("Age: 01:01:01"), std::string::npos) << result.out;

    auto stats = Json({"vswitch", "dvs", "zanvex", "lacp", "stats", "get"});
    ASSERT_EQ(stats.size(), 2u);
    EXPECT_EQ(stats[1]["NIC"], "hwnic10");
    EXPECT_EQ(stats[1]["Rx Errors"], 2);
}

TEST_F(AutocliDvs, AnUnknownSwitchGivesTheMessageAndAnEmptyList) {
    auto result = Autocli({"vswitch", "dvs", "zanvex", "list", "-v", "nosuch"}, "json");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Unable to access all oDS\n");
    EXPECT_EQ(json::parse(result.out, nullptr, false), json::array());
    result = Autocli({"vswitch", "dvs", "zanvex", "lacp", "timeout", "set", "-s", "nosuch", "-l",
                      "1", "-t", "1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "There is no distributed switch named nosuch\n");
}

TEST_F(AutocliDvs, EnsChangesShowInALaterProcess) {
    auto refused = Autocli({"ens", "maxLcores", "set", "-n", "2"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "");
    EXPECT_EQ(Json({"ens", "maxLcores", "get"}), 8);
    for (const Words& words :
         {Words{"ens", "lcore", "add", "-l", "6"},
          Words{"ens", "lcore", "switch", "add", "-l", "6", "-s", "storageswitch1"},
          Words{"ens", "lcore", "affinity", "set", "-l", "6", "-a", "1"}}) {
        auto result = Autocli(words);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, "");
    }
    auto listed = Json({"ens", "lcore", "list"});
    ASSERT_EQ(listed.size(), 5u);
    EXPECT_EQ(listed[4], (json{{"Lcore ID", 6}, {"Switch", "storageswitch1"}, {"Affinity", 1}}));
}

TEST_F(AutocliDvs, VmsAndTheirPorts) {
    auto vms = Json({"vm", "list"});
    ASSERT_EQ(vms.size(), 4u);
    auto ports = Json({"vm", "port", "list", "-w", "1049603"});
    ASSERT_EQ(ports.size(), 3u);
    EXPECT_EQ(ports[0]["Portgroup"], "VM Network");
    EXPECT_EQ(ports[1]["Portgroup"], "VM Network");
    EXPECT_EQ(ports[2]["vSwitch"], "distswitch0");
    EXPECT_EQ(ports[2]["Team Uplink"], "hwnic9");
    auto missing = Autocli({"vm", "port", "list", "-w", "42"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "Couldn't find VM with given world ID\n");
}

TEST_F(AutocliDvs, PortFiltersInTheirOrder) {
    auto result = Autocli({"port", "filter", "stats", "get", "-p", "1010"});
    EXPECT_EQ(result.status, 0) << result.err;
    const auto guard = result.out.find("Filter statistics for zxfw-guard");
    const auto rate = result.out.find("Filter statistics for zxrate-limit");
    const auto tap = result.out.find("Filter statistics for zxmon-tap");
    EXPECT_LT(guard, rate);
    EXPECT_LT(rate, tap);
    EXPECT_NE(tap, std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("zxinspect"), std::string::npos);
    auto stats = Json({"port", "stats", "get", "-p", "3011"});
    EXPECT_EQ(stats[0]["Bytes sent"], 8811223340912L);
}

}  // namespace
