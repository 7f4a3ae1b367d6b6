// The distributed switch listing and LACP: what the default host shows, each rendering over a
// table of host states, the sentences for hosts without running LAGs, and timeout changes.
#include <functional>

#include "DvsTest.h"

namespace DvsTesting {
namespace {

using HostSim::Json;
using Testing::Int;
using Testing::Nested;
using Testing::Str;
using Testing::Strings;

const Words kConfig{"vswitch", "dvs", "zanvex", "lacp", "config", "get"};
const Words kStatus{"vswitch", "dvs", "zanvex", "lacp", "status", "get"};
const Words kStats{"vswitch", "dvs", "zanvex", "lacp", "stats", "get"};
const Words kTimeout{"vswitch", "dvs", "zanvex", "lacp", "timeout", "set"};

Words With(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

class Lacp : public DvsTest {};

TEST_F(Lacp, DvsListShowsTheSwitchItsUplinksAndPorts) {
    auto rows = RowsOf({"vswitch", "dvs", "zanvex", "list"});
    ASSERT_EQ(rows.size(), 1u);
    const Row& dvs = rows[0];
    EXPECT_EQ(Str(dvs, "Name"), "distswitch0");
    EXPECT_EQ(Str(dvs, "ODS ID"), "3c9e2a41-7d5b-4f08-9a6e-5f1d2c7b0a10");
    EXPECT_EQ(Str(dvs, "Class"), "distswitch");
    EXPECT_EQ(Int(dvs, "Num Ports"), 512);
    EXPECT_EQ(Int(dvs, "Used Ports"), 6);
    EXPECT_EQ(Int(dvs, "Configured Ports"), 16);
    EXPECT_EQ(Str(dvs, "CDP Status"), "listen");
    EXPECT_EQ(Int(dvs, "Beacon Timeout"), -1);
    EXPECT_EQ(Strings(dvs, "Uplinks"), (Words{"hwnic9", "hwnic10"}));
    auto ports = RowsIn(dvs, "DVPort");
    ASSERT_EQ(ports.size(), 16u);
    EXPECT_EQ(Str(ports[4], "Port ID"), "4");
    EXPECT_TRUE(Testing::Bool(ports[4], "In Use"));
    EXPECT_EQ(Str(ports[4], "DVPortgroup ID"), "distpg-web");
    EXPECT_EQ(Strings(ports[4], "Client"), Words{"vm-web01.eth1"});
    EXPECT_TRUE(Testing::Bool(ports[8], "In Use"));
    EXPECT_EQ(Strings(ports[8], "Client"), Words{"kelm2"});
}

TEST_F(Lacp, DvsListOfAnUnknownNameGivesTheMessageAndAnEmptyList) {
    auto result = Run({"vswitch", "dvs", "zanvex", "list", "-v", "nosuch"});
    ASSERT_TRUE(result.output);
    EXPECT_EQ(result.output->GetErrorMessages(), Words{"Unable to access all oDS"});
    auto list =
        std::dynamic_pointer_cast<CppTools::MetaObj::MetaList>(result.output->GetRootObject());
    ASSERT_TRUE(list);
    EXPECT_EQ(list->GetCount(), 0u);
}

TEST_F(Lacp, ConfigShowsEachLagWithItsNicsInPortOrder) {
    auto rows = RowsOf(kConfig);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Str(rows[0], "LAG Name"), "lag1");
    EXPECT_EQ(Str(rows[0], "LAG ID"), "1");
    EXPECT_EQ(Str(rows[0], "NICs"), "hwnic9,hwnic10");
    EXPECT_EQ(Str(rows[0], "Mode"), "Active");
    EXPECT_EQ(Str(rows[0], "Load balance"), "Src and dst ip, port");
    EXPECT_EQ(Str(rows[1], "NICs"), "");
    EXPECT_EQ(Str(rows[1], "Mode"), "Passive");
    EXPECT_EQ(Str(rows[1], "Load balance"), "Src portID");
}

// A change of distswitch0 in the default profile, and the config rows it gives.
struct ConfigCase {
    const char* name;
    std::function<void(Json&)> change;
    std::vector<Words> rows;  // LAG Name, LAG ID, NICs, Enabled, Mode, Load balance
};

TEST_F(Lacp, ConfigRenderings) {
    const auto lacpOn = [](Json& dvs, int port, int mode) {
        dvs["dvports"][port]["lacp"] = {{"enabled", true}, {"mode", mode}};
    };
    const std::vector<ConfigCase> cases = {
        {"load balancing 0, and a LAG with one port of two",
         [](Json& dvs) {
             dvs["lags"][1]["loadBalance"] = 0;
             dvs["lags"][1]["mode"] = 1;
             dvs["lags"][0]["portCount"] = 1;
         },
         {{"lag1", "1", "hwnic9", "true", "Active", "Src and dst ip, port"},
          {"lag2", "2", "", "true", "Active", "None"}}},
        {"the older form over the uplinks, in name order",
         [&](Json& dvs) {
             dvs["lags"] = Json::array();
             lacpOn(dvs, 0, 2);
             lacpOn(dvs, 1, 2);
         },
         {{"default_uplink_pg_lag", "0", "hwnic10,hwnic9", "true", "Passive", "---"}}},
        {"the older form: the last uplink walked sets the row",
         [&](Json& dvs) {
             dvs["lags"] = Json::array();
             lacpOn(dvs, 1, 1);
         },
         {{"default_uplink_pg_lag", "0", "hwnic10", "false", "", "---"}}},
        {"the older form on a switch without uplinks: one row per port group",
         [&](Json& dvs) {
             dvs["lags"] = Json::array();
             dvs["uplinks"] = Json::array();
             lacpOn(dvs, 2, 1);
             lacpOn(dvs, 3, 2);
             lacpOn(dvs, 9, 2);
         },
         {{"default_uplink_pg_lag", "0", "", "true", "Passive", "---"},
          {"default_uplink_pg_lag", "0", "", "true", "Active", "---"}}},
    };
    const Json original = Host();
    for (const ConfigCase& test : cases) {
        SCOPED_TRACE(test.name);
        Json profile = original;
        DropPortsOf(profile, "distswitch0");
        test.change(DistSwitch(profile));
        Load(profile);
        std::vector<Words> shown;
        for (const Row& row : RowsOf(kConfig)) {
            EXPECT_EQ(Str(row, "DVS Name"), "distswitch0");
            shown.push_back({Str(row, "LAG Name"), Str(row, "LAG ID"), Str(row, "NICs"),
                             Testing::Bool(row, "Enabled") ? "true" : "false", Str(row, "Mode"),
                             Str(row, "Load balance")});
        }
        EXPECT_EQ(shown, test.rows);
    }
}

TEST_F(Lacp, StatusShowsEachNicWithItsLocalAndPartnerSides) {
    auto lags = RowsOf(kStatus);
    ASSERT_EQ(lags.size(), 1u);
    EXPECT_EQ(Str(lags[0], "DVSwitch"), "distswitch0");
    EXPECT_EQ(Int(lags[0], "LAG ID"), 1);
    EXPECT_EQ(Str(lags[0], "Mode"), "Active");
    EXPECT_EQ(Strings(lags[0], "Flags"),
              (Words{"S - Device is sending Slow LACPDUs", "F - Device is sending fast LACPDUs",
                     "A - Device is in active mode", "P - Device is in passive mode"}));
    auto nics = RowsIn(lags[0], "Nic List");
    ASSERT_EQ(nics.size(), 2u);
    EXPECT_EQ(Str(nics[0], "Nic"), "hwnic9");
    EXPECT_EQ(Str(nics[0], "State"), "Bundled");
    auto local = Nested(nics[0], "Local Information");
    EXPECT_EQ(Str(local, "Port State"), "ACT,AGG,SYN,COL,DIST,");
    EXPECT_EQ(Str(local, "Flags"), "SA");
    EXPECT_EQ(Int(local, "Admin Key"), 1);
    EXPECT_EQ(Int(local, "Port Priority"), 255);
    EXPECT_EQ(Int(local, "Port Number"), 1);
    auto partner = Nested(nics[1], "Partner Information");
    EXPECT_EQ(Str(partner, "Device ID"),
              Host()["dvswitches"][0]["lags"][0]["running"]["nics"][1]["partner"]["deviceId"]);
    EXPECT_EQ(Str(partner, "Port State"), "ACT,FTO,AGG,SYN,COL,DIST,");
    EXPECT_EQ(Str(partner, "Age"), "01:01:01");
    EXPECT_EQ(Int(partner, "Port Priority"), 32768);
    EXPECT_EQ(Int(partner, "Port Number"), 18);
}

// One running NIC's record changed, and what status shows of it.
struct StatusCase {
    const char* name;
    std::function<void(Json& dvs, Json& nic)> change;
    const char* field;  // of "Local Information" or "Partner Information", or "State", "Mode"
    const char* shown;
};

TEST_F(Lacp, StatusRenderings) {
    const std::vector<StatusCase> cases = {
        {"state 0x3d", [](Json&, Json& nic) { nic["portState"] = 0x3d; }, "Port State",
         "ACT,AGG,SYN,COL,DIST,"},
        {"state 0", [](Json&, Json& nic) { nic["portState"] = 0; }, "Port State", ""},
        {"state 0xff", [](Json&, Json& nic) { nic["portState"] = 0xff; }, "Port State",
         "ACT,FTO,AGG,SYN,COL,DIST,DEF,EXP,"},
        {"partner state 0xc0", [](Json&, Json& nic) { nic["partner"]["portState"] = 0xc0; },
         "Partner Port State", "DEF,EXP,"},
        {"age 0", [](Json&, Json& nic) { nic["partner"]["age"] = 0; }, "Age", "00:00:00"},
        {"age 3661", [](Json&, Json& nic) { nic["partner"]["age"] = 3661; }, "Age", "01:01:01"},
        {"age 360000", [](Json&, Json& nic) { nic["partner"]["age"] = 360000; }, "Age",
         "100:00:00"},
        {"age 59", [](Json&, Json& nic) { nic["partner"]["age"] = 59; }, "Age", "00:00:59"},
        {"mode 2", [](Json& dvs, Json&) { dvs["lags"][0]["mode"] = 2; }, "Mode", "Passive"},
        {"state on a DPU", [](Json& dvs, Json&) { dvs["lacpStateOnDpu"] = true; }, "State",
         "Bundled (running state is on dpu)"},
    };
    const Json original = Host();
    for (const StatusCase& test : cases) {
        SCOPED_TRACE(test.name);
        Json profile = original;
        Json& dvs = DistSwitch(profile);
        test.change(dvs, dvs["lags"][0]["running"]["nics"][0]);
        Load(profile);
        auto lag = RowsOf(kStatus).at(0);
        auto nic = RowsIn(lag, "Nic List").at(0);
        const std::string field = test.field;
        if (field == "Mode") {
            EXPECT_EQ(Str(lag, "Mode"), test.shown);
        } else if (field == "State") {
            for (const Row& each : RowsIn(lag, "Nic List")) {
                EXPECT_EQ(Str(each, "State").ends_with(" (running state is on dpu)"),
                          std::string(test.shown).ends_with(" (running state is on dpu)"));
            }
            EXPECT_EQ(Str(nic, "State"), test.shown);
        } else if (field == "Age") {
            EXPECT_EQ(Str(Nested(nic, "Partner Information"), "Age"), test.shown);
        } else if (field == "Partner Port State") {
            EXPECT_EQ(Str(Nested(nic, "Partner Information"), "Port State"), test.shown);
        } else {
            EXPECT_EQ(Str(Nested(nic, "Local Information"), field), test.shown);
        }
    }
}

TEST_F(Lacp, StatsPassCountersBeyond32Bits) {
    Json profile = Host();
    LagNic(profile, 1)["rxLacpdus"] = 5000000000ULL;
    LagNic(profile, 1)["txErrors"] = 4294967296ULL;
    Load(profile);
    auto rows = RowsOf(kStats);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Str(rows[0], "NIC"), "hwnic9");
    EXPECT_EQ(Int(rows[0], "Tx LACPDUs"), 187355);
    EXPECT_EQ(Int(rows[0], "Rx LACPDUs"), 187342);
    EXPECT_EQ(Str(rows[1], "DVSwitch"), "distswitch0");
    EXPECT_EQ(Int(rows[1], "LAG ID"), 1);
    EXPECT_EQ(Int(rows[1], "Rx LACPDUs"), 5000000000L);
    EXPECT_EQ(Int(rows[1], "Tx Errors"), 4294967296L);
    EXPECT_EQ(Int(rows[1], "Rx Errors"), 2);
}

// A host state and the one message each `get` leaves for it.
struct SentenceCase {
    const char* name;
    std::function<void(Json&)> change;
    const char* config;
    const char* status;
    const char* stats;
    // How many LAGs status shows, when it shows any.
    std::size_t lags = 0;
};

TEST_F(Lacp, HostsWithoutRunningLagsGetTheSentences) {
    const char* noDvs =
        "LACP is supported on Zanvex DVSwitch only, and there is no DVSwitch configured on host.";
    const char* noLag = "No running LACP group on the host.";
    const std::vector<SentenceCase> cases = {
        {"no distributed switch",
         [](Json& profile) {
             DropPortsOf(profile, "distswitch0");
             profile["dvswitches"] = Json::array();
         },
         noDvs, noDvs, noDvs},
        {"LAGs configured, none running",
         [](Json& profile) { DistSwitch(profile)["lags"][0].erase("running"); }, nullptr, noLag,
         noLag},
        {"a running LAG without NICs",
         [](Json& profile) { DistSwitch(profile)["lags"][0]["running"]["nics"] = Json::array(); },
         nullptr, nullptr, "No pnic is connected to DVSwitch.", 1},
        {"no LAG and no LACP on the uplinks",
         [](Json& profile) { DistSwitch(profile)["lags"] = Json::array(); },
         "LACP is disabled on DVSwitch.", noLag, noLag},
    };
    const Json original = Host();
    for (const SentenceCase& test : cases) {
        SCOPED_TRACE(test.name);
        Json profile = original;
        test.change(profile);
        Load(profile);
        const std::vector<std::pair<Words, const char*>> runs = {
            {kConfig, test.config}, {kStatus, test.status}, {kStats, test.stats}};
        for (const auto& [words, message] : runs) {
            if (message != nullptr) {
                EXPECT_EQ(RunError(words), message) << words[4];
            }
        }
        if (test.status == nullptr) {
            // A LAG that runs without NICs still shows under its switch, with an empty list.
            auto lags = RowsOf(kStatus);
            ASSERT_EQ(lags.size(), test.lags);
            EXPECT_EQ(RowsIn(lags[0], "Nic List").size(), 0u);
        }
    }
}

TEST_F(Lacp, TimeoutSetsTheActorsTimeoutBitOfTheLagOrOneNic) {
    EXPECT_TRUE(RunBool(With(kTimeout, {"-s", "distswitch0", "-l", "1", "-t", "true"})));
    for (const Row& nic : RowsIn(RowsOf(kStatus).at(0), "Nic List")) {
        EXPECT_EQ(Str(Nested(nic, "Local Information"), "Port State"), "ACT,FTO,AGG,SYN,COL,DIST,");
        EXPECT_EQ(Str(Nested(nic, "Local Information"), "Flags"), "FA");
    }
    EXPECT_TRUE(
        RunBool(With(kTimeout, {"-s", "distswitch0", "-l", "1", "-t", "0", "-n", "hwnic10"})));
    auto nics = RowsIn(RowsOf(kStatus).at(0), "Nic List");
    EXPECT_EQ(Str(Nested(nics[0], "Local Information"), "Flags"), "FA");
    EXPECT_EQ(Str(Nested(nics[1], "Local Information"), "Port State"), "ACT,AGG,SYN,COL,DIST,");
    EXPECT_EQ(Str(Nested(nics[1], "Local Information"), "Flags"), "SA");
}

TEST_F(Lacp, TimeoutRefusals) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{"-s", "distswitch0", "-l", "7", "-t", "1"},
         "There is no LAG 7 on distributed switch distswitch0"},
        {{"-s", "distswitch0", "-l", "1", "-t", "1", "-n", "hwnic4"},
         "NIC hwnic4 is not in LAG 1 of distributed switch distswitch0"},
        {{"-s", "distswitch0", "-l", "2", "-t", "1", "-n", "hwnic9"},
         "NIC hwnic9 is not in LAG 2 of distributed switch distswitch0"},
        {{"-s", "nosuch", "-l", "1", "-t", "1"}, "There is no distributed switch named nosuch"},
    };
    for (const auto& [words, message] : cases) {
        EXPECT_EQ(RunError(With(kTimeout, words)), message);
    }
    EXPECT_EQ(RunError(With(kConfig, {"-s", "nosuch"})),
              "There is no distributed switch named nosuch");
    EXPECT_EQ(
        Str(Nested(RowsIn(RowsOf(kStatus).at(0), "Nic List").at(0), "Local Information"), "Flags"),
        "SA");
}

}  // namespace
}  // namespace DvsTesting
