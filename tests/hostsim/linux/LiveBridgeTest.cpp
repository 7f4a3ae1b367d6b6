// Standard switches on the live Linux host are the bridges of a network namespace of the test's
// own: checked against what ip (which nobody here wrote) says of the same links.
#include "support/LiveHostTest.h"

namespace {

using nlohmann::json;
using Testing::Int;
using Testing::Rows;
using Testing::Str;
using Testing::Strings;
using Words = std::vector<std::string>;

constexpr char kNotAvailable[] = "not available on a Linux host";

class LiveBridge : public Testing::LiveHostTest {
protected:
    void SetUp() override {
        LiveHostTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        AddVethPair("v0", "v1");
    }

    void TearDown() override {
        if (!IsSkipped()) {
            Witness(
                "for bridge in $(ip -br link show type bridge | cut -d' ' -f1); do "
                "ip link del \"$bridge\"; done");
        }
        LiveHostTest::TearDown();
    }

    // The bridge as `ip -d -j link show` has it; null when there is none.
    json IpLink(const std::string& name) {
        const json links = WitnessJson("ip -d -j link show type bridge");
        for (const json& link : links) {
            if (link["ifname"] == name) {
                return link;
            }
        }
        return nullptr;
    }

    // The links ip says are enslaved to `bridge`, in its order.
    Words IpPorts(const std::string& bridge) {
        Words ports;
        for (const json& link : WitnessJson("ip -j link show master " + bridge)) {
            ports.push_back(link["ifname"]);
        }
        return ports;
    }
};

TEST_F(LiveBridge, TheListingIsTheBridgesAsIpSeesThem) {
    Witness(
        "ip link add lanswitch1 type bridge && ip link set lanswitch1 mtu 1400 && "
        "ip link add lanswitch2 type bridge && ip link set v0 master lanswitch2 && "
        "ip link set v1 master lanswitch2 && ip link add vx0 type vxlan id 5 dstport 4789");
    const auto result = LiveAutocli({"--formatter=json", "network", "vswitch", "standard", "list"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json listed = json::parse(result.out);
    const json bridges = WitnessJson("ip -j link show type bridge");
    ASSERT_EQ(listed.size(), bridges.size());
    for (std::size_t row = 0; row < listed.size(); ++row) {
        const json& entry = listed[row];
        const std::string name = bridges[row]["ifname"];
        SCOPED_TRACE(name);
        EXPECT_EQ(entry["Name"], name);
        EXPECT_EQ(entry["Class"], "bridge");
        EXPECT_EQ(entry["MTU"], bridges[row]["mtu"]);
        EXPECT_EQ(entry["Uplinks"], json(IpPorts(name)));
        EXPECT_EQ(entry["Used Ports"], IpPorts(name).size());
        EXPECT_EQ(entry["Num Ports"], 1024);
        EXPECT_EQ(entry["CDP Status"], "down");
        EXPECT_EQ(entry["Portgroups"], json::array());
    }
    // A link that is no NIC holds a port of the bridge, and is no uplink.
    Witness("ip link set vx0 master lanswitch1");
    const auto row =
        Testing::RowWhere(RunList({"vswitch", "standard", "list"}), "Name", "lanswitch1");
    EXPECT_EQ(Int(row, "Used Ports"), 1);
    EXPECT_EQ(Strings(row, "Uplinks"), Words{});
    Witness("ip link del vx0");
    const auto one = Rows(RunList({"vswitch", "standard", "list", "-v", "lanswitch2"}));
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(Str(one[0], "Name"), "lanswitch2");
}

TEST_F(LiveBridge, AddSetAndRemoveChangeTheBridgeAsIpSeesIt) {
    RunOk({"vswitch", "standard", "add", "-v", "lanswitch0"});
    json link = IpLink("lanswitch0");
    ASSERT_FALSE(link.is_null());
    EXPECT_EQ(link["linkinfo"]["info_kind"], "bridge");

    RunOk({"vswitch", "standard", "set", "-v", "lanswitch0", "-m", "2000"});
    EXPECT_EQ(IpLink("lanswitch0")["mtu"], 2000);
    // What the kernel refuses, it says in its own words.
    EXPECT_EQ(RunError({"vswitch", "standard", "set", "-v", "lanswitch0", "-m", "10"}),
              "Invalid argument: mtu less than device minimum");
    EXPECT_EQ(RunError({"vswitch", "standard", "add", "-v", "lanswitch0"}), "File exists");
    EXPECT_EQ(RunError({"vswitch", "standard", "add", "-v", "v0"}), "File exists");
    EXPECT_EQ(RunError({"vswitch", "standard", "add", "-v", "lanswitch-name-too-long"}),
              "Numerical result out of range: Attribute failed policy validation");
    // Every bridge has its 1,024 ports: more can't be asked for.
    EXPECT_EQ(RunError({"vswitch", "standard", "add", "-v", "lanswitch3", "-P", "1025"}),
              "A bridge has 1024 ports; virtual switch lanswitch3 can't have 1025");
    RunOk({"vswitch", "standard", "add", "-v", "lanswitch3", "-P", "1024"});

    // A link that is no bridge is no switch.
    EXPECT_EQ(RunError({"vswitch", "standard", "remove", "-v", "v0"}),
              "Unable to find virtual switch with the name v0");
    EXPECT_EQ(RunError({"vswitch", "standard", "set", "-v", "v0", "-m", "1500"}),
              "v0 is not a valid name for a virtual switch");
    RunOk({"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "v0"});
    RunOk({"vswitch", "standard", "remove", "-v", "lanswitch0"});
    EXPECT_TRUE(IpLink("lanswitch0").is_null());
    // Its uplink is free again.
    EXPECT_EQ(WitnessJson("ip -j link show v0")[0].count("master"), 0u);
}

TEST_F(LiveBridge, UplinksAreTheNicsEnslavedToTheBridge) {
    Witness("ip link add lanswitch0 type bridge && ip link add lanswitch1 type bridge");
    RunOk({"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "v0"});
    EXPECT_EQ(IpPorts("lanswitch0"), Words{"v0"});
    EXPECT_EQ(
        Strings(Rows(RunList({"vswitch", "standard", "list", "-v", "lanswitch0"}))[0], "Uplinks"),
        Words{"v0"});
    // The kernel would move a NIC from one bridge to the other without a word: the host won't.
    EXPECT_EQ(RunError({"vswitch", "standard", "uplink", "add", "-v", "lanswitch1", "-u", "v0"}),
              "NIC v0 is already an uplink of lanswitch0");
    EXPECT_EQ(IpPorts("lanswitch0"), Words{"v0"});
    EXPECT_EQ(RunError({"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "lo"}),
              "There is no NIC named lo on this host");
    EXPECT_EQ(
        RunError({"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "lanswitch1"}),
        "There is no NIC named lanswitch1 on this host");
    EXPECT_EQ(RunError({"vswitch", "standard", "uplink", "remove", "-v", "lanswitch1", "-u", "v0"}),
              "NIC v0 is not an uplink of lanswitch1");

    RunOk({"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "v1"});
    EXPECT_EQ(IpPorts("lanswitch0"), (Words{"v1", "v0"}));
    RunOk({"vswitch", "standard", "uplink", "remove", "-v", "lanswitch0", "-u", "v0"});
    EXPECT_EQ(IpPorts("lanswitch0"), Words{"v1"});
    // A switch that isn't there gives no uplink to change, and the command answers true.
    RunOk({"vswitch", "standard", "uplink", "add", "-v", "nosuchswitch", "-u", "v0"});
    EXPECT_EQ(WitnessJson("ip -j link show v0")[0].count("master"), 0u);
}

TEST_F(LiveBridge, WhatABridgeLacksIsNotAvailable) {
    Witness("ip link add lanswitch0 type bridge");
    for (const Words& words : std::vector<Words>{
             {"vswitch", "standard", "set", "-v", "lanswitch0", "-c", "listen"},
             {"vswitch", "standard", "list", "-t", "system"},
             {"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p", "lanports"},
             {"vswitch", "standard", "portgroup", "list"},
             {"vswitch", "standard", "policy", "failover", "get", "-v", "lanswitch0"},
             {"vswitch", "standard", "policy", "security", "set", "-v", "lanswitch0",
              "--allow-promiscuous=true"},
         }) {
        SCOPED_TRACE(::testing::PrintToString(words));
        EXPECT_EQ(RunError(words), kNotAvailable);
    }
    const auto result =
        LiveAutocli({"network", "vswitch", "standard", "set", "-v", "lanswitch0", "-c", "both"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, std::string(kNotAvailable) + "\n");
}

// Faults fire at each operation's choke point, ahead of any change, so each line is swept from
// the state the line before it left.
TEST_F(LiveBridge, EveryFaultOfTheLiveSwitchCommandsEndsInAnError) {
    SweepTable({
        {{"vswitch", "standard", "add", "-v", "lanswitch9"},
         {"NicTeamingPolicy::GetDefaultPolicy",
          "VirtualSwitchInfoImpl::AddVirtualSwitchWithPolicy"}},
        {{"vswitch", "standard", "list"},
         {"VirtualSwitchInfoImpl::GetVirtualSwitches", "NetworkInfo::GetPnics", "Portset::GetName",
          "VirtualSwitch::GetMTU", "Portset::GetUplinks", "VirtualSwitch::GetPortGroups"}},
        {{"vswitch", "standard", "set", "-v", "lanswitch9", "-m", "1600"},
         {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
          "VirtualSwitch::SetMTU"}},
        {{"vswitch", "standard", "uplink", "add", "-v", "lanswitch9", "-u", "v0"},
         {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::AddUplink"}},
        {{"vswitch", "standard", "uplink", "remove", "-v", "lanswitch9", "-u", "v0"},
         {"VirtualSwitch::RemoveUplink"}},
        {{"vswitch", "standard", "remove", "-v", "lanswitch9"},
         {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::RemoveVirtualSwitch"}},
    });
}

}  // namespace
