// Every host operation of every NIC settings command, failed in turn; and the settings'
// section of a profile through export, import and scale.
#include <algorithm>
#include <fstream>

#include <nlohmann/json.hpp>

#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "support/CommandTest.h"

namespace {

using Words = std::vector<std::string>;

class NicSettingsSweep : public Testing::CommandTest {
protected:
    // Sweeps `network nic <words...>` and checks that it failed each of `expected` in turn.
    void Sweep(const Words& words, const Words& expected, const SweepRules& rules = {}) {
        Words line{"nic"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        Words swept;
        for (const auto& call : ExpectEveryFaultFails(line, rules)) {
            swept.push_back(call.operation);
        }
        for (const auto& operation : expected) {
            EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end()) << operation;
        }
    }
};

TEST_F(NicSettingsSweep, SetAndStatistics) {
    Sweep({"set", "-n", "hwnic0", "-t", "external", "-S", "100", "-D", "full"},
          {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfo::GetPnicByName", "Pnic::GetPnicInfo",
           "Pnic::SetPnicInfo", "Pnic::SetSpeedDuplex"});
    Sweep({"set", "-n", "hwnic0", "-a"}, {"Pnic::GetPnicInfo", "Pnic::SetSpeedDuplex"});
    Sweep({"stats", "get", "-n", "hwnic0"},
          {"PnicImpl::PnicImpl", "PnicImpl::GetPnicStats", "Pnic::GetName"});
    Sweep(
        {"vlan", "stats", "get", "-n", "hwnic2"},
        {"VirtualSwitchInfoImpl::GetAllSwitches", "Portset::GetUplinks", "Portset::GetVlanStats"});
    Sweep({"vlan", "stats", "set", "-n", "hwnic1", "-e", "true"},
          {"VirtualSwitchInfoImpl::GetAllSwitches", "Portset::GetUplinks",
           "Portset::SetVlanStatsEnabled"});
}

TEST_F(NicSettingsSweep, Coalescing) {
    Sweep({"coalesce", "get"}, {"NetworkInfo::GetPnics", "Pnic::GetName"},
          {.handledOperations = {"Pnic::GetCoalesceParams"}});
    Sweep({"coalesce", "get", "-n", "hwnic0"}, {"NetworkInfo::GetPnicByName"},
          {.handledOperations = {"Pnic::GetCoalesceParams"}});
    Sweep({"coalesce", "set", "-n", "hwnic0", "-r", "5"},
          {"Pnic::GetCoalesceParams", "Pnic::SetCoalesceParams"});
    for (const char* band : {"low", "high"}) {
        Sweep({"coalesce", band, "get", "-n", "hwnic0"},
              {"NetworkFactory::GetNetworkInfo", "Pnic::GetCoalesceParams"});
        Sweep({"coalesce", band, "set", "-n", "hwnic0", "-p", "9"},
              {"NetworkFactory::GetNetworkInfo", "Pnic::GetCoalesceParams",
               "Pnic::SetCoalesceParams"});
    }
}

TEST_F(NicSettingsSweep, OffloadAndSoftwareSimulation) {
    for (const char* offload : {"cso", "tso", "sg"}) {
        Sweep({offload, "get"}, {"NetworkInfo::GetPnics", "Pnic::GetName"},
              {.handledOperations = {"Pnic::GetOffloadParams"}});
        Sweep({offload, "set", "-n", "hwnic1", "-e", "1"},
              {"NetworkInfo::GetPnicByName", "Pnic::GetOffloadParams", "Pnic::SetOffloadParams"});
    }
    Sweep({"software", "list", "-n", "hwnic6"}, {"NetworkFactory::GetNetworkInfo", "Pnic::GetName"},
          {.handledOperations = {"Pnic::GetSoftwareSimulation"}});
    Sweep({"software", "set", "-n", "hwnic0", "--sg", "true"},
          {"NetworkFactory::GetNetworkInfo", "Pnic::SetSoftwareSimulation"});
}

TEST_F(NicSettingsSweep, RingsAndPause) {
    Sweep({"ring", "preset", "get", "-n", "hwnic2"}, {"Pnic::GetRingParams"});
    Sweep({"ring", "current", "get", "-n", "hwnic2"}, {"Pnic::GetRingParams"});
    Sweep({"ring", "current", "set", "-n", "hwnic2", "-t", "64"}, {"Pnic::SetRingParams"});
    Sweep({"pauseParams", "list"}, {"NetworkInfo::GetPnics", "Pnic::GetName"},
          {.handledOperations = {"Pnic::GetPauseParams"}});
    Sweep({"pauseParams", "set", "-n", "hwnic0", "--rx", "false"},
          {"Pnic::GetPauseParams", "Pnic::SetPauseParams"});
}

TEST_F(NicSettingsSweep, ProfileRoundTripsAndScales) {
    RunOk({"nic", "coalesce", "set", "-n", "hwnic2", "-r", "77"});
    RunOk({"nic", "vlan", "stats", "set", "-n", "hwnic1", "-e", "true"});
    auto exported = Testing::RunHostsim({"export"}, StateDirectory());
    ASSERT_EQ(exported.status, 0) << exported.err;
    const auto profile = nlohmann::ordered_json::parse(exported.out);
    const auto& section = profile.at("nicSettings");
    ASSERT_GE(section.size(), 9u);
    // The driver's own words of coalescing travel unchanged.
    EXPECT_EQ(section[2].at("coalesce").at("reserved2"), 256);
    EXPECT_EQ(section[2].at("coalesce").at("rxUsecs"), 77);
    EXPECT_FALSE(section[6].contains("coalesce"));

    Testing::TemporaryDirectory other;
    const std::string file = other.Path() + "/profile.json";
    std::ofstream(file) << exported.out;
    ASSERT_EQ(Testing::RunHostsim({"import", file}, other.Path()).status, 0);
    auto again = Testing::RunHostsim({"export"}, other.Path());
    EXPECT_EQ(nlohmann::ordered_json::parse(again.out).at("nicSettings"), section);

    // Three copies of one NIC on one switch: each copy has its settings and counts VLANs on
    // its own switch's copy.
    const auto small = nlohmann::ordered_json::parse(R"({
      "nics": [{"name": "hwnic0", "driver": "tarn1g", "speed": 1000, "mac": "00:50:56:a1:00:00"}],
      "nicSettings": [{"name": "hwnic0", "stats": {"rxPackets": 5},
                       "vlanStats": {"switch": "lanswitch0", "vlans": [{"vlanId": 7}]},
                       "rings": {"maximum": {"rx": 64, "tx": 64}, "current": {"rx": 8, "tx": 8}}}],
      "vswitches": [{"name": "lanswitch0", "uplinks": ["hwnic0"]}]})");
    const std::string smallFile = other.Path() + "/small.json";
    std::ofstream(smallFile) << small.dump();
    auto init = Testing::RunHostsim({"init", "--profile=" + smallFile, "--scale=3"}, other.Path());
    ASSERT_EQ(init.status, 0) << init.err;
    auto vlan = Testing::RunAutocli(
        {"--formatter=json", "network", "nic", "vlan", "stats", "get", "-n", "hwnic2"},
        other.Path());
    EXPECT_EQ(vlan.status, 0) << vlan.err;
    EXPECT_EQ(nlohmann::json::parse(vlan.out)[0].at("VLAN ID"), 7);
    auto ring = Testing::RunAutocli(
        {"--formatter=json", "network", "nic", "ring", "current", "get", "-n", "hwnic1"},
        other.Path());
    EXPECT_EQ(nlohmann::json::parse(ring.out).at("RX"), 8);

    const auto unknown =
        nlohmann::ordered_json::parse(R"({"nics": [], "nicSettings": [{"name": "hwnic3"}]})");
    EXPECT_THROW(HostSim::ImportProfile(unknown.dump()), HostCtl::Lib::HostCtlException);
}

}  // namespace
