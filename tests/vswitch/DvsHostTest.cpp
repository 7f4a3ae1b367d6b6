// The host's rules for distributed switches, ENS contexts and ports, and their profile section:
// a NIC serves one switch, what a profile can't hold is refused whole, export then import gives
// the same host, and scaling copies everything with unique names and ids.
#include <set>

#include "DvsTest.h"
#include "hostctl/HostCtlException.h"

namespace DvsTesting {
namespace {

using HostCtl::Lib::HostCtlException;
using HostSim::Json;

class DvsHost : public DvsTest {};

TEST_F(DvsHost, ANicOfADistributedSwitchServesNoStandardSwitch) {
    EXPECT_EQ(
        RunError({"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "hwnic9"}),
        "NIC hwnic9 is already an uplink of distswitch0");
    // The uplinks of both kinds count as uplinks wherever the host lists them.
    auto rows = Testing::Rows(RunList({"nic", "list"}));
    ASSERT_EQ(rows.size(), 11u);
}

// A change of the default profile the host must refuse, with its words.
struct Refusal {
    const char* name;
    std::function<void(Json&)> change;
    const char* message;
};

TEST_F(DvsHost, AProfileTheHostCantTakeIsRefusedWhole) {
    const std::vector<Refusal> cases = {
        {"an uplink that a standard switch has",
         [](Json& p) {
             DistSwitch(p)["uplinks"].push_back({{"nic", "hwnic0"}, {"dvport", "2"}});
         },
         "The profile gives NIC hwnic0 to more than one switch"},
        {"an uplink that is no NIC",
         [](Json& p) {
             DistSwitch(p)["uplinks"].push_back({{"nic", "hwnic77"}, {"dvport", "2"}});
         },
         "Uplink hwnic77 of distswitch0 is no NIC of this host"},
        {"a running LAG on a NIC outside the switch", [](Json& p) { LagNic(p)["nic"] = "hwnic4"; },
         "LAG 1 of distswitch0 runs on NIC hwnic4, which is no uplink of the switch"},
        {"text wider than the record", [](Json& p) { LagNic(p)["state"] = std::string(32, 'x'); },
         "LAG 1 of distswitch0: state \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\" is longer than 31 "
         "bytes"},
        {"an unknown load balancing", [](Json& p) { DistSwitch(p)["lags"][0]["loadBalance"] = 21; },
         "LAG 1 of distswitch0 has an unknown load balancing 21 (0-20)"},
        {"a context on no switch", [](Json& p) { p["ens"]["lcores"][3]["switch"] = "nosuch"; },
         "ENS context 3 serves nosuch, which is no switch of this host"},
        {"a context on a node the host lacks",
         [](Json& p) { p["ens"]["lcores"][0]["affinity"] = 2; },
         "ENS context 0 has affinity 2, but the host has 2 NUMA nodes"},
        {"more contexts than the maximum", [](Json& p) { p["ens"]["maxLcores"] = 3; },
         "The profile has more ENS contexts than its maximum of 3"},
        {"a team uplink of another switch",
         [](Json& p) { p["ports"]["ports"][3]["teamUplink"] = "hwnic9"; },
         "Port 1010 has team uplink \"hwnic9\", which is no uplink of lanswitch0"},
        {"a DVPort the switch lacks", [](Json& p) { p["ports"]["ports"][11]["dvport"] = "99"; },
         "Port 3010 is on DVPort \"99\", which distswitch0 lacks"},
        {"a port id twice", [](Json& p) { p["ports"]["ports"][1]["id"] = 1001; },
         "The profile has more than one port with id 1001"},
    };
    const Json original = Host();
    for (const Refusal& test : cases) {
        SCOPED_TRACE(test.name);
        Json profile = original;
        test.change(profile);
        try {
            Load(profile);
            ADD_FAILURE() << "taken";
        } catch (const HostCtlException& error) {
            EXPECT_EQ(std::string(error.what()), test.message);
        }
        EXPECT_EQ(Host(), original);
    }
}

TEST_F(DvsHost, ExportThenImportGivesBackTheSameHost) {
    RunBool({"vswitch", "dvs", "zanvex", "lacp", "timeout", "set", "-s", "distswitch0", "-l", "1",
             "-t", "1"});
    RunBool({"ens", "lcore", "add", "-l", "7"});
    const Json exported = Host();
    Load(exported);
    EXPECT_EQ(Host(), exported);
}

TEST_F(DvsHost, ScaleCopiesSwitchesLagsContextsVmsAndPorts) {
    auto result = Testing::RunHostsim({"init", "--scale=3"}, StateDirectory());
    ASSERT_EQ(result.status, 0) << result.err;
    Words switches;
    std::set<std::string> ids;
    for (const Row& row : RowsOf({"vswitch", "dvs", "zanvex", "list"})) {
        switches.push_back(Testing::Str(row, "Name"));
        ids.insert(Testing::Str(row, "ODS ID"));
    }
    EXPECT_EQ(switches, (Words{"distswitch0", "distswitch1", "distswitch2"}));
    EXPECT_EQ(ids.size(), 3u);
    EXPECT_EQ(RowsOf({"vswitch", "dvs", "zanvex", "lacp", "status", "get"}).size(), 3u);
    EXPECT_EQ(
        Testing::Strings(RowsOf({"vswitch", "dvs", "zanvex", "list", "-v", "distswitch2"}).at(0),
                         "Uplinks"),
        (Words{"hwnic31", "hwnic32"}));
    EXPECT_EQ(RowsOf({"ens", "lcore", "list"}).size(), 12u);
    EXPECT_EQ(RunInt({"ens", "maxLcores", "get"}), 24);
    EXPECT_EQ(RowsOf({"vm", "list"}).size(), 12u);
    const Json host = Host();
    std::set<long> ports;
    for (const Json& port : host["ports"]["ports"]) {
        ports.insert(port["id"].get<long>());
    }
    EXPECT_EQ(ports.size(), 42u);
    auto copy = RowsOf({"vm", "port", "list", "-w", std::to_string(1049601 + 2 * 1049606)});
    ASSERT_EQ(copy.size(), 2u);
    EXPECT_EQ(Testing::Str(copy[1], "vSwitch"), "distswitch2");
    EXPECT_EQ(Testing::Str(copy[1], "Team Uplink"), "hwnic31");
    EXPECT_EQ(Testing::Str(copy[0], "Portgroup"), "VM Network 2");

    Load(host);
    EXPECT_EQ(Host(), host);
}

}  // namespace
}  // namespace DvsTesting
