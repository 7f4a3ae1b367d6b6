// Every host operation of every NIC settings command, failed in turn; and the settings'
// section of a profile through export, import and scale.
#include <fstream>

#include <nlohmann/json.hpp>

#include "NicSweepCases.h"
#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/values/LocalMac.h"

namespace {

class NicSettingsSweep : public Testing::CommandTest {};

TEST_F(NicSettingsSweep, LinkAndInfo) {
    SweepTable(NicSweeps::kLinkAndInfo);
}

TEST_F(NicSettingsSweep, SetAndStatistics) {
    SweepTable(NicSweeps::kSetAndStatistics);
}

TEST_F(NicSettingsSweep, Coalescing) {
    SweepTable(NicSweeps::kCoalescing);
}

TEST_F(NicSettingsSweep, OffloadSoftwareRingsAndPause) {
    SweepTable(NicSweeps::kOffloadSoftwareRingsAndPause);
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
    auto small = nlohmann::ordered_json::parse(R"({
      "nics": [{"name": "hwnic0", "driver": "tarn1g", "speed": 1000}],
      "nicSettings": [{"name": "hwnic0", "stats": {"rxPackets": 5},
                       "vlanStats": {"switch": "lanswitch0", "vlans": [{"vlanId": 7}]},
                       "rings": {"maximum": {"rx": 64, "tx": 64}, "current": {"rx": 8, "tx": 8}}}],
      "vswitches": [{"name": "lanswitch0", "uplinks": ["hwnic0"]}]})");
    small["nics"][0]["mac"] = HostSim::LocalMac(HostSim::MacKind::PciNic, 0);
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
