// The netstack commands on the live host: network namespaces bound to /run/netns (a tmpfs of
// the test's own), against ip netns (which nobody here wrote).
#include "hostsim/linux/LiveIpTest.h"

namespace {

using Testing::Bool;
using Testing::Int;
using Testing::kNotAvailable;
using Testing::Rows;
using Testing::Str;

constexpr long kStateUp = 0x1234;

class LiveNetstack : public Testing::LiveIpTest {
protected:
    std::vector<std::string> Keys() {
        std::vector<std::string> keys;
        for (const auto& row : Rows(RunList({"ip", "netstack", "list"}))) {
            keys.push_back(Str(row, "Key"));
        }
        return keys;
    }

    // The names ip netns lists, in name order.
    std::vector<std::string> IpNamespaces() {
        std::vector<std::string> names;
        for (const auto& entry : WitnessJson("ip -j netns list")) {
            names.push_back(entry["name"]);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string Setting(const std::string& name, const std::string& setting) {
        return Witness("ip netns exec " + name + " cat /proc/sys/net/ipv4/" + setting);
    }
};

TEST_F(LiveNetstack, AddedNetstacksAreTheNamespacesIpNetnsLists) {
    RemoveWithTest("lab");
    RemoveWithTest("blue");
    EXPECT_EQ(Keys(), std::vector<std::string>{"defaultTcpipStack"});
    RunOk({"ip", "netstack", "add", "-N", "lab"});
    AddNamespace("blue");
    EXPECT_EQ(IpNamespaces(), (std::vector<std::string>{"blue", "lab"}));
    EXPECT_EQ(Keys(), (std::vector<std::string>{"defaultTcpipStack", "blue", "lab"}));
    for (const auto& row : Rows(RunList({"ip", "netstack", "list"}))) {
        EXPECT_EQ(Str(row, "Name"), Str(row, "Key"));
        EXPECT_EQ(Int(row, "State"), kStateUp);
    }
    // A namespace of its own: none of the test's links are in it.
    EXPECT_EQ(Witness("ip -n lab -o link show | wc -l"), "1\n");

    RunOk({"ip", "netstack", "remove", "-N", "lab"});
    EXPECT_EQ(IpNamespaces(), std::vector<std::string>{"blue"});
    EXPECT_EQ(Keys(), (std::vector<std::string>{"defaultTcpipStack", "blue"}));
}

// The settings are the kernel's of the namespace; a change to one is seen there and nowhere
// else.
TEST_F(LiveNetstack, GetShowsAndSetChangesTheNamespacesOwnSettings) {
    AddNamespace("lab");
    RunOk({"ip", "netstack", "set", "-N", "lab", "-c", "reno", "--ecn", "disabled"});
    EXPECT_EQ(Setting("lab", "tcp_congestion_control"), "reno\n");
    EXPECT_EQ(Setting("lab", "tcp_ecn"), "0\n");
    const auto row = Rows(RunList({"ip", "netstack", "get", "-N", "lab"})).at(0);
    EXPECT_EQ(Str(row, "Key"), "lab");
    EXPECT_TRUE(Bool(row, "Enabled"));
    EXPECT_EQ(Int(row, "State"), kStateUp);
    EXPECT_EQ(Str(row, "Congestion Control Algorithm"), "reno");
    EXPECT_EQ(Str(row, "ECN Status"), "disabled");
    EXPECT_EQ(Int(row, "Max Connections"), 0);
    EXPECT_TRUE(Bool(row, "IPv6 Enabled"));

    RunOk({"ip", "netstack", "set", "-N", "lab", "--ecn", "echo-only"});
    EXPECT_EQ(Setting("lab", "tcp_ecn"), "2\n");
    const auto own = Rows(RunList({"ip", "netstack", "get", "-N", "defaultTcpipStack"})).at(0);
    EXPECT_EQ(Str(own, "Congestion Control Algorithm") + "\n",
              Witness("cat /proc/sys/net/ipv4/tcp_congestion_control"));
}

// A namespace that still holds an interface or a route stays, and the host says why.
TEST_F(LiveNetstack, ANamespaceInUseIsNotRemoved) {
    AddNamespace("lab");
    Witness("ip link set v1 netns lab");
    EXPECT_EQ(RunError({"ip", "netstack", "remove", "-N", "lab"}),
              "Unable to Remove Netstack Instance. Error was : Netstack instance lab is in use "
              "by v1");
    Witness("ip -n lab link del v1 && ip -n lab route add blackhole 198.51.100.0/24");
    EXPECT_EQ(RunError({"ip", "netstack", "remove", "-N", "lab"}),
              "Unable to Remove Netstack Instance. Error was : Netstack instance lab holds the "
              "route to 198.51.100.0/24");
    EXPECT_EQ(IpNamespaces(), std::vector<std::string>{"lab"});
    Witness("ip -n lab route del blackhole 198.51.100.0/24");
    RunOk({"ip", "netstack", "remove", "-N", "lab"});
    EXPECT_TRUE(IpNamespaces().empty());
}

// A name ip netns left without a namespace bound to it is listed down, and removable.
TEST_F(LiveNetstack, AStaleNameIsListedDownAndCanBeRemoved) {
    Witness("touch /run/netns/stale");
    RemoveWithTest("stale");
    const auto row = Rows(RunList({"ip", "netstack", "list"})).at(1);
    EXPECT_EQ(Str(row, "Key"), "stale");
    EXPECT_EQ(Int(row, "State"), 0);
    EXPECT_FALSE(Bool(Rows(RunList({"ip", "netstack", "get", "-N", "stale"})).at(0), "Enabled"));
    RunOk({"ip", "netstack", "remove", "-N", "stale"});
    EXPECT_EQ(Keys(), std::vector<std::string>{"defaultTcpipStack"});
}

TEST_F(LiveNetstack, RefusalsSayWhyInTheCommandsWords) {
    AddNamespace("lab");
    const std::vector<std::pair<std::vector<std::string>, std::string>> refusals = {
        {{"add", "-N", "lab"},
         "Unable to add Netstack Instance. Error was : Netstack instance lab already exists"},
        {{"add", "-N", "cold", "-d"},
         "Unable to add Netstack Instance. Error was : " + std::string(kNotAvailable)},
        {{"remove", "-N", "nosuch"},
         "Unable to Remove Netstack Instance. Error was : There is no netstack instance nosuch"},
        {{"remove", "-N", "defaultTcpipStack"},
         "Unable to Remove Netstack Instance. Error was : The default netstack instance "
         "defaultTcpipStack can't be removed"},
        {{"get", "-N", "nosuch"}, "Unable to find a Netstack instance nosuch"},
        {{"set", "-N", "lab", "-m", "100"},
         "Error setting configuration" + std::string(kNotAvailable)},
        {{"set", "-N", "lab", "-n", "other"},
         "Error setting configuration" + std::string(kNotAvailable)},
        {{"set", "-N", "lab", "-e", "false"},
         "Error setting configuration" + std::string(kNotAvailable)},
    };
    for (const auto& [words, message] : refusals) {
        std::vector<std::string> line = {"ip", "netstack"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        EXPECT_EQ(RunError(line), message);
    }
    EXPECT_EQ(IpNamespaces(), std::vector<std::string>{"lab"});
    // An existing namespace is in the kernel already.
    RunOk({"ip", "netstack", "set", "-N", "lab", "-e", "true"});
}

TEST_F(LiveNetstack, EveryFaultOfTheLiveNetstackCommandsEndsInAnError) {
    AddNamespace("lab");
    AddNamespace("gone");
    RemoveWithTest("made");
    SweepTable({
        {{"ip", "netstack", "add", "-N", "made"}, {"NetworkInfo::AddNetstackInstance"}},
        {{"ip", "netstack", "remove", "-N", "gone"}, {"NetworkInfo::RemoveNetstackInstance"}},
        {{"ip", "netstack", "list"},
         {"NetworkInfo::ListNetstackInstances", "NetstackInstance::GetKey"}},
        {{"ip", "netstack", "get", "-N", "lab"},
         {"NetworkInfo::LookupNetstackInstanceByKey",
          "NetstackInstance::GetCongestionControlAlgorithm"}},
        {{"ip", "netstack", "set", "-N", "lab", "--ecn", "enabled"},
         {"NetstackInstance::SetEcnStatus"}},
    });
}

}  // namespace
