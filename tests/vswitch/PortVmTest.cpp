// Ports and VMs: counters, the order and direction words of filters, the VMs gathered from the
// ports of every kind of switch, and the ports of one VM.
#include "DvsTest.h"

namespace DvsTesting {
namespace {

using HostSim::Json;
using Testing::Int;
using Testing::Str;
using Testing::Strings;

class PortVm : public DvsTest {
protected:
    // "name:direction" of each row of `port filter stats get`.
    Words Filters(const std::string& port) {
        Words shown;
        for (const Row& row : RowsOf({"port", "filter", "stats", "get", "-p", port})) {
            shown.push_back(Str(row, "Filter name") + ":" + Str(row, "Filter direction"));
        }
        return shown;
    }

    // Replaces the filters of a port of the default host.
    void SetFilters(std::uint32_t portId, const Json& filters, int type = 1) {
        Json profile = Host();
        for (Json& port : profile["ports"]["ports"]) {
            if (port["id"] == portId) {
                port["filters"] = filters;
                port["type"] = type;
                if (type == 4) {
                    port["world"] = 0;
                }
            }
        }
        Load(profile);
    }

    // The first MAC address the host's profile gives the port.
    std::string PortMac(std::uint32_t portId) {
        const Json host = Host();
        for (const Json& port : host["ports"]["ports"]) {
            if (port["id"] == portId) {
                return port["macs"][0].get<std::string>();
            }
        }
        ADD_FAILURE() << "no port " << portId << " in the profile";
        return {};
    }
};

Json Filter(const char* name, const char* key, bool transmit, bool active = true) {
    return {{"name", name}, {"orderKey", key}, {"active", active}, {"transmit", transmit}};
}

TEST_F(PortVm, PortStatsDeriveUnicastAndPassCountersBeyond32Bits) {
    auto rows = RowsOf({"port", "stats", "get", "-p", "3011"});
    ASSERT_EQ(rows.size(), 1u);
    const Row& port = rows[0];
    EXPECT_EQ(Int(port, "Port ID"), 3011);
    EXPECT_EQ(Int(port, "Packets received"), 5988120443L);
    EXPECT_EQ(Int(port, "Packets sent"), 6120448931L);
    EXPECT_EQ(Int(port, "Bytes received"), 8120443871220L);
    EXPECT_EQ(Int(port, "Bytes sent"), 8811223340912L);
    EXPECT_EQ(Int(port, "Unicast packets received"), 5988120443L - 11201 - 903);
    EXPECT_EQ(Int(port, "Unicast packets sent"), 6120448931L - 10223 - 872);
    EXPECT_EQ(Int(port, "Transmit packets dropped"), 17);
    EXPECT_EQ(Int(port, "Receive packets dropped"), 5);
}

TEST_F(PortVm, APortThatNoSwitchHasIsNotFound) {
    for (const char* id : {"9999", "4294968297", "-1", "0"}) {
        EXPECT_EQ(RunError({"port", "stats", "get", "-p", id}), "Couldn't find requested port");
        EXPECT_EQ(RunError({"port", "filter", "stats", "get", "-p", id}),
                  "Couldn't find requested port");
    }
}

// Filters of one port and the rows they give, in order.
struct FilterCase {
    const char* name;
    Json filters;
    int type;
    Words shown;
};

TEST_F(PortVm, FilterOrderAndDirection) {
    const std::vector<FilterCase> cases = {
        {"the default filters: receive first, transmit by key descending, inactive left out",
         Json(),
         1,
         {"zxfw-guard:Receive", "zxrate-limit:Transmit", "zxmon-tap:Transmit"}},
        {"receive first whatever the keys",
         Json::array({Filter("tx", "a", true), Filter("rx", "z", false)}),
         1,
         {"rx:Receive", "tx:Transmit"}},
        {"transmit keys a, b, c come c, b, a",
         Json::array(
             {Filter("one", "a", true), Filter("three", "c", true), Filter("two", "b", true)}),
         1,
         {"three:Transmit", "two:Transmit", "one:Transmit"}},
        {"receive keys ascending, bytes then length, names play no part",
         Json::array({Filter("b", "10", false), Filter("a", "9", false), Filter("c", "1", false)}),
         1,
         {"c:Receive", "b:Receive", "a:Receive"}},
        {"an uplink reverses the words",
         Json::array({Filter("tx", "a", true), Filter("rx", "b", false)}),
         4,
         {"rx:Transmit", "tx:Receive"}},
        {"none active", Json::array({Filter("off", "a", true, false)}), 1, {}},
    };
    for (const FilterCase& test : cases) {
        SCOPED_TRACE(test.name);
        if (!test.filters.is_null()) {
            SetFilters(1010, test.filters, test.type);
        }
        EXPECT_EQ(Filters("1010"), test.shown);
    }
}

TEST_F(PortVm, AFilterWithoutDetailLeavesItsLastFiveCountersEmpty) {
    auto rows = RowsOf({"port", "filter", "stats", "get", "-p", "1010"});
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(Int(rows[0], "Packets filtered"), 207);
    EXPECT_EQ(Int(rows[0], "Packets queued"), 12);
    EXPECT_EQ(Int(rows[2], "Packets in"), 4410275);
    for (const char* field : {"Packets filtered", "Packets faulted", "Packets queued",
                              "Packets injected", "Packet errors"}) {
        const auto* value =
            dynamic_cast<const CppTools::MetaObj::MetaInt*>(rows[2]->GetField(field));
        ASSERT_TRUE(value);
        EXPECT_FALSE(value->HasValue()) << field;
    }
}

TEST_F(PortVm, VmListShowsEachVmOnceWithItsPortsAndNetworks) {
    std::map<long, std::pair<std::string, Words>> vms;
    for (const Row& row : RowsOf({"vm", "list"})) {
        EXPECT_EQ(Int(row, "Num Ports"), static_cast<long>(Strings(row, "Networks").size()));
        EXPECT_TRUE(vms.emplace(Int(row, "World ID"),
                                std::make_pair(Str(row, "Name"), Strings(row, "Networks")))
                        .second);
    }
    EXPECT_EQ(vms.size(), 4u);
    EXPECT_EQ(vms[1049601],
              std::make_pair(std::string("vm-web01"), Words{"VM Network", "distpg-web"}));
    EXPECT_EQ(vms[1049603], std::make_pair(std::string("vm-db01"),
                                           Words{"VM Network", "VM Network", "distpg-web"}));
    EXPECT_EQ(vms[1049604], std::make_pair(std::string("vm-backup01"), Words{"Backup Network"}));
}

TEST_F(PortVm, VmPortListShowsSwitchPortGroupAndTeamUplink) {
    auto rows = RowsOf({"vm", "port", "list", "-w", "1049601"});
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Int(rows[0], "Port ID"), 1010);
    EXPECT_EQ(Str(rows[0], "vSwitch"), "lanswitch0");
    EXPECT_EQ(Str(rows[0], "Portgroup"), "VM Network");
    EXPECT_EQ(Str(rows[0], "DVPort ID"), "");
    EXPECT_EQ(Str(rows[0], "MAC Address"), PortMac(1010));
    EXPECT_EQ(Str(rows[0], "IP Address"), "192.0.2.41");
    EXPECT_EQ(Str(rows[0], "Team Uplink"), "hwnic0");
    EXPECT_EQ(Int(rows[0], "Uplink Port ID"), 1001);
    EXPECT_EQ(Strings(rows[0], "Active Filters"),
              (Words{"zxfw-guard", "zxmon-tap", "zxrate-limit"}));
    EXPECT_EQ(Str(rows[1], "vSwitch"), "distswitch0");
    EXPECT_EQ(Str(rows[1], "Portgroup"), "distpg-web");
    EXPECT_EQ(Str(rows[1], "DVPort ID"), "4");
    EXPECT_EQ(Str(rows[1], "Team Uplink"), "hwnic9");
    EXPECT_EQ(Int(rows[1], "Uplink Port ID"), 3001);

    EXPECT_EQ(RunError({"vm", "port", "list", "-w", "1049605"}),
              "Couldn't find VM with given world ID");
    EXPECT_EQ(RunError({"vm", "port", "list", "-w", "0"}), "Couldn't find VM with given world ID");
}

TEST_F(PortVm, AFilterNameActiveTwiceIsShownOnce) {
    SetFilters(1010, Json::array({Filter("dup", "a", true), Filter("dup", "b", false),
                                  Filter("other", "c", true)}));
    EXPECT_EQ(Strings(RowsOf({"vm", "port", "list", "-w", "1049601"}).at(0), "Active Filters"),
              (Words{"dup", "other"}));
}

TEST_F(PortVm, WorldNamesLoseTheirKindPrefix) {
    Json profile = Host();
    profile["ports"]["worlds"][0]["name"] = "zvx0:";
    profile["ports"]["worlds"][1]["name"] = "zvx0:a";
    Load(profile);
    std::map<long, std::string> names;
    for (const Row& row : RowsOf({"vm", "list"})) {
        names[Int(row, "World ID")] = Str(row, "Name");
    }
    EXPECT_EQ(names[1049601], "");
    EXPECT_EQ(names[1049602], "a");
}

TEST_F(PortVm, AHostWithoutVmPortsListsNoVm) {
    Json profile = Host();
    Json kept = Json::array();
    for (Json& port : profile["ports"]["ports"]) {
        if (port["world"] == 0) {
            kept.push_back(port);
        }
    }
    profile["ports"]["ports"] = kept;
    Load(profile);
    EXPECT_EQ(RunList({"vm", "list"})->GetCount(), 0u);
}

}  // namespace
}  // namespace DvsTesting
