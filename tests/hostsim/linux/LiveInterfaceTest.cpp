// The interface commands on the live host, in the test's own namespace, against ip link and ip
// addr (which nobody here wrote) on the same links.
#include "hostsim/linux/LiveIpTest.h"

namespace {

using nlohmann::json;
using Testing::Bool;
using Testing::Int;
using Testing::kNotAvailable;
using Testing::Rows;
using Testing::RowWhere;
using Testing::Str;

class LiveInterface : public Testing::LiveIpTest {
protected:
    json IpLink(const std::string& name) { return WitnessJson("ip -j link show " + name)[0]; }

    static bool IsUp(const json& link) {
        const auto& flags = link["flags"];
        return std::find(flags.begin(), flags.end(), "UP") != flags.end();
    }

    // The addresses of a family ("inet", "inet6") on a link as ip has them, "address/prefix".
    std::vector<std::string> IpAddresses(const std::string& name, const std::string& family) {
        std::vector<std::string> addresses;
        const json link = WitnessJson("ip -j addr show " + name);
        for (const json& address : link[0]["addr_info"]) {
            if (address["family"] == family) {
                addresses.push_back(address["local"].get<std::string>() + "/" +
                                    std::to_string(address["prefixlen"].get<int>()));
            }
        }
        return addresses;
    }

    // The IPv6 addresses of a link as the address list shows them, "address/prefix".
    std::vector<std::string> ListedIpv6(const std::string& name) {
        std::vector<std::string> addresses;
        for (const auto& row :
             Rows(RunList({"ip", "interface", "ipv6", "address", "list", "-i", name}))) {
            addresses.push_back(Str(row, "Address") + "/" + std::to_string(Int(row, "Netmask")));
        }
        return addresses;
    }
};

// Every link but loopback, a bridge too, in ip's order, with what ip says of each.
TEST_F(LiveInterface, TheListShowsEveryLinkButLoopbackAsIpSeesIt) {
    Witness("ip link add br0 type bridge && ip link set v1 master br0 && ip link set v0 mtu 9000");
    const auto result = LiveAutocli({"--formatter=json", "network", "ip", "interface", "list"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json listed = json::parse(result.out);
    std::vector<std::string> names;
    for (const json& link : WitnessJson("ip -j link show")) {
        if (link["ifname"] != "lo") {
            names.push_back(link["ifname"]);
        }
    }
    ASSERT_EQ(listed.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const json& row = listed[i];
        SCOPED_TRACE(names[i]);
        const json link = IpLink(names[i]);
        EXPECT_EQ(row["Name"], names[i]);
        EXPECT_EQ(row["MAC Address"], link["address"]);
        EXPECT_EQ(row["MTU"], link["mtu"]);
        EXPECT_EQ(row["Enabled"], IsUp(link));
        EXPECT_EQ(row["Netstack Instance"], "defaultTcpipStack");
        EXPECT_EQ(row["Portset"], link.value("master", "N/A"));
        EXPECT_EQ(row["Portgroup"], "N/A");
    }
    Witness("ip link del br0");
}

// `ip netstack add`, then the links of that namespace are the netstack's interfaces.
TEST_F(LiveInterface, ANetstacksInterfacesAreTheLinksOfItsNamespace) {
    RemoveWithTest("lab");
    ASSERT_EQ(LiveAutocli({"network", "ip", "netstack", "add", "-N", "lab"}).status, 0);
    EXPECT_NE(Witness("ip netns list").find("lab"), std::string::npos);
    Witness("ip link set v1 netns lab");
    const auto result =
        LiveAutocli({"--formatter=json", "network", "ip", "interface", "list", "-N", "lab"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json listed = json::parse(result.out);
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0]["Name"], "v1");
    EXPECT_EQ(listed[0]["Netstack Instance"], "lab");

    // Without a netstack every namespace's are listed, the default one's first.
    const auto all = RunList({"ip", "interface", "list"});
    EXPECT_EQ(Str(RowWhere(all, "Name", "v0"), "Netstack Instance"), "defaultTcpipStack");
    EXPECT_EQ(Str(RowWhere(all, "Name", "v1"), "Netstack Instance"), "lab");
    EXPECT_TRUE(Rows(RunList({"ip", "interface", "list", "-N", "nosuch"})).empty());

    // A name is looked for in every netstack, so `set` finds v1 in lab.
    RunOk({"ip", "interface", "set", "-i", "v1", "-e", "false"});
    EXPECT_FALSE(IsUp(WitnessJson("ip -n lab -j link show v1")[0]));
    Witness("ip link del v0");
    RunOk({"ip", "netstack", "remove", "-N", "lab"});
}

TEST_F(LiveInterface, SetChangesTheLinkOrSaysWhatTheKernelRefuses) {
    RunOk({"ip", "interface", "set", "-i", "v0", "-e", "false", "-m", "1400"});
    EXPECT_FALSE(IsUp(IpLink("v0")));
    EXPECT_EQ(IpLink("v0")["mtu"], 1400);
    RunOk({"ip", "interface", "set", "-i", "v0", "-e", "true"});
    EXPECT_TRUE(IsUp(IpLink("v0")));

    const std::vector<std::pair<std::vector<std::string>, std::string>> refusals = {
        {{"-i", "v0", "-m", "70000"}, "Invalid argument: mtu greater than device maximum"},
        {{"-i", "v0", "-m", "10"}, "Invalid argument: mtu less than device minimum"},
        {{"-i", "lo", "-m", "1400"}, "Unable to find an interface with name lo"},
    };
    for (const auto& [words, message] : refusals) {
        std::vector<std::string> line = {"ip", "interface", "set"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        EXPECT_EQ(RunError(line), message);
    }
    EXPECT_EQ(IpLink("v0")["mtu"], 1400);
}

// The primary address of each link; a static link without a default route of its own shows
// the netstack's gateway.
TEST_F(LiveInterface, Ipv4GetShowsThePrimaryAddressesAndTheGateways) {
    Witness(
        "ip addr add 192.0.2.7/24 dev v0 && ip addr add 203.0.113.1/24 dev v1 && "
        "ip route add default via 203.0.113.254");
    const auto list = RunList({"ip", "interface", "ipv4", "get"});
    ASSERT_EQ(Rows(list).size(), 2u);
    const auto v0 = RowWhere(list, "Name", "v0");
    EXPECT_EQ(Str(v0, "IPv4 Address"), "192.0.2.1");
    EXPECT_EQ(Str(v0, "IPv4 Netmask"), "255.255.255.0");
    EXPECT_EQ(Str(v0, "IPv4 Broadcast"), "192.0.2.255");
    EXPECT_EQ(Str(v0, "Address Type"), "STATIC");
    EXPECT_EQ(Str(v0, "Gateway"), "203.0.113.254");
    const auto v1 = RowWhere(list, "Name", "v1");
    EXPECT_EQ(Str(v1, "IPv4 Broadcast"), "0.0.0.0");
    EXPECT_EQ(Str(v1, "Gateway"), "203.0.113.254");
    EXPECT_FALSE(Bool(v1, "DHCP DNS"));

    Witness("ip addr flush dev v1");
    EXPECT_EQ(Str(Rows(RunList({"ip", "interface", "ipv4", "address", "list", "-i", "v1"})).at(0),
                  "Address Type"),
              "NONE");
}

// A static setting replaces the primary address and makes the gateway the default route
// through the link; without a gateway that route goes; "none" takes every IPv4 address.
TEST_F(LiveInterface, Ipv4SetChangesTheAddressAndTheDefaultRouteThroughTheLink) {
    RunOk({"ip", "interface", "ipv4", "set", "-i", "v0", "-t", "static", "-I", "192.0.2.5", "-N",
           "255.255.255.0", "-g", "192.0.2.254"});
    EXPECT_EQ(IpAddresses("v0", "inet"), std::vector<std::string>{"192.0.2.5/24"});
    EXPECT_EQ(WitnessJson("ip -j addr show v0")[0]["addr_info"][0]["broadcast"], "192.0.2.255");
    const json route = WitnessJson("ip -j route show default");
    ASSERT_EQ(route.size(), 1u);
    EXPECT_EQ(route[0]["gateway"], "192.0.2.254");
    EXPECT_EQ(route[0]["dev"], "v0");
    EXPECT_EQ(Str(Rows(RunList({"ip", "interface", "ipv4", "get", "-i", "v0"})).at(0), "Gateway"),
              "192.0.2.254");

    // Another change of the same link that leaves the address keeps it and the route.
    RunOk({"ip", "interface", "ipv6", "address", "add", "-i", "v0", "-I", "2001:db8::5/64"});
    EXPECT_EQ(IpAddresses("v0", "inet"), std::vector<std::string>{"192.0.2.5/24"});
    EXPECT_EQ(WitnessJson("ip -j route show default").size(), 1u);

    RunOk({"ip", "interface", "ipv4", "set", "-i", "v0", "-t", "static", "-I", "192.0.2.6", "-N",
           "255.255.255.128"});
    EXPECT_EQ(IpAddresses("v0", "inet"), std::vector<std::string>{"192.0.2.6/25"});
    EXPECT_TRUE(WitnessJson("ip -j route show default").empty());

    Witness("ip addr add 198.51.100.1/24 dev v0");
    RunOk({"ip", "interface", "ipv4", "set", "-i", "v0", "-t", "none"});
    EXPECT_TRUE(IpAddresses("v0", "inet").empty());
    EXPECT_EQ(IpAddresses("v0", "inet6").size(), 2u);
}

TEST_F(LiveInterface, DhcpAndRouterAdvertisementAreNotAvailable) {
    const std::vector<std::vector<std::string>> lines = {
        {"ipv4", "set", "-i", "v0", "-t", "dhcp"},
        {"ipv6", "set", "-i", "v0", "-r", "true"},
        {"ipv6", "set", "-i", "v0", "-d", "true"},
    };
    for (const auto& words : lines) {
        std::vector<std::string> line = {"ip", "interface"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        EXPECT_NE(RunError(line).find(kNotAvailable), std::string::npos);
    }
    EXPECT_EQ(IpAddresses("v0", "inet"), std::vector<std::string>{"192.0.2.1/24"});
}

// The address list is ip's, with the kernel's own addresses autoconfigured; adding and removing
// one is seen by ip.
TEST_F(LiveInterface, Ipv6AddressesAgreeWithIp) {
    RunOk({"ip", "interface", "ipv6", "address", "add", "-i", "v0", "-I", "2001:db8::5/64"});
    EXPECT_EQ(ListedIpv6("v0"), IpAddresses("v0", "inet6"));
    const auto list = RunList({"ip", "interface", "ipv6", "address", "list", "-i", "v0"});
    ASSERT_EQ(Rows(list).size(), 2u);
    EXPECT_EQ(Str(RowWhere(list, "Address", "2001:db8::5"), "Type"), "STATIC");
    EXPECT_EQ(Str(RowWhere(list, "Address", "2001:db8::5"), "Status"), "PREFERRED");
    EXPECT_EQ(Str(Rows(list).at(1), "Type"), "AUTOCONF");
    EXPECT_EQ(Str(Rows(list).at(1), "Address").rfind("fe80::", 0), 0u);

    RunOk({"ip", "interface", "ipv6", "address", "remove", "-i", "v0", "-I", "2001:db8::5/64"});
    EXPECT_EQ(IpAddresses("v0", "inet6").size(), 1u);
    EXPECT_EQ(ListedIpv6("v0"), IpAddresses("v0", "inet6"));
    EXPECT_EQ(RunError({"ip", "interface", "ipv6", "address", "remove", "-i", "v0", "-I",
                        "2001:db8::5/64"}),
              "Error removing IPv6 address for the interface v0. Error was: The IPv6 address "
              "2001:db8::5/64 is not assigned");
}

// The link's IPv6 switch and the default route through it.
TEST_F(LiveInterface, Ipv6SetTurnsTheLinksSwitchAndSetsItsGateway) {
    auto disabled = [this] { return Witness("cat /proc/sys/net/ipv6/conf/v0/disable_ipv6"); };
    RunOk({"ip", "interface", "ipv6", "set", "-i", "v0", "-e", "false"});
    EXPECT_EQ(disabled(), "1\n");
    EXPECT_FALSE(
        Bool(Rows(RunList({"ip", "interface", "ipv6", "get", "-n", "v0"})).at(0), "IPv6 Enabled"));
    EXPECT_EQ(
        RunError({"ip", "interface", "ipv6", "address", "add", "-i", "v0", "-I", "2001:db8::5/64"}),
        "Error adding IPv6 address for the interface v0. Error was: Permission denied: "
        "ipv6: IPv6 is disabled on this device");
    RunOk({"ip", "interface", "ipv6", "set", "-i", "v0", "-e", "true"});
    EXPECT_EQ(disabled(), "0\n");

    RunOk({"ip", "interface", "ipv6", "address", "add", "-i", "v0", "-I", "2001:db8::5/64"});
    RunOk({"ip", "interface", "ipv6", "set", "-i", "v0", "-g", "2001:db8::1"});
    const json route = WitnessJson("ip -j -6 route show default");
    ASSERT_EQ(route.size(), 1u);
    EXPECT_EQ(route[0]["gateway"], "2001:db8::1");
    EXPECT_EQ(route[0]["dev"], "v0");
    EXPECT_EQ(Str(Rows(RunList({"ip", "interface", "ipv6", "get", "-n", "v0"})).at(0), "Gateway"),
              "2001:db8::1");
    // A run without a gateway clears it.
    RunOk({"ip", "interface", "ipv6", "set", "-i", "v0"});
    EXPECT_TRUE(WitnessJson("ip -j -6 route show default").empty());
}

// Linux has no port groups to hang an interface on, no tags and no system interfaces.
TEST_F(LiveInterface, AddRemoveTagsAndSystemInterfacesAreNotAvailable) {
    AddVethPair("kelm3", "kelm4");
    const std::vector<std::pair<std::vector<std::string>, std::string>> refusals = {
        {{"add", "-p", "Management Network", "-i", "kelm1"},
         "Invalid vswitch port group name Management Network. Error was: " +
             std::string(kNotAvailable)},
        {{"tag", "get", "-i", "v0"},
         "Error getting tags on interface v0. Error was: " + std::string(kNotAvailable)},
        {{"list", "-t", "system"}, kNotAvailable},
    };
    for (const auto& [words, message] : refusals) {
        std::vector<std::string> line = {"ip", "interface"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        EXPECT_EQ(RunError(line), message);
    }
    const auto removed = Run({"ip", "interface", "remove", "-i", "kelm3"});
    ASSERT_TRUE(removed.output);
    EXPECT_EQ(removed.output->GetErrorMessages(),
              std::vector<std::string>{"Unable to remove Kelm network interface. Error was : " +
                                       std::string(kNotAvailable)});
    EXPECT_EQ(IpLink("kelm3")["ifname"], "kelm3");
}

TEST_F(LiveInterface, EveryFaultOfTheLiveInterfaceCommandsEndsInAnError) {
    SweepTable({
        {{"ip", "interface", "list"},
         {"KelmNicInfo::GetKelmNics", "KelmNic::GetInterfaceName", "KelmNic::GetConnectionPoint",
          "ConnectionPoint::GetPortsetName"}},
        {{"ip", "interface", "set", "-i", "v0", "-m", "1500"}, {"KelmNic::SetMtu"}},
        {{"ip", "interface", "ipv4", "get"}, {"KelmNic::GetIpConfig"}},
        {{"ip", "interface", "ipv4", "set", "-i", "v0", "-t", "static", "-I", "192.0.2.1", "-N",
          "255.255.255.0"},
         {"KelmNicInfoImpl::GetKelmNicByInterface", "KelmNic::SetIpConfig"}},
        {{"ip", "interface", "ipv6", "address", "list"}, {"KelmNic::GetIpConfig"}},
    });
}

}  // namespace
