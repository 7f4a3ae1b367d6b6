// The NIC commands on the live Linux host, in a network namespace of the test's own, checked
// against what ip and ethtool (which nobody here wrote) say of the same links.
#include <linux/if_ether.h>
#include <net/if.h>
#include <netpacket/packet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>

#include "support/LiveHostTest.h"

namespace {

using nlohmann::json;
using Testing::Int;
using Testing::Rows;
using Testing::Str;

constexpr char kNotAvailable[] = "not available on a Linux host";

class LiveNic : public Testing::LiveHostTest {
protected:
    void SetUp() override {
        LiveHostTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        // No IPv6 chatter on the new links, so that counters move only with the test's frames.
        Witness("echo 1 > /proc/sys/net/ipv6/conf/default/disable_ipv6");
        AddVethPair("v0", "v1");
    }

    // The link as `ip -j link show` has it.
    json IpLink(const std::string& name) { return WitnessJson("ip -j link show " + name)[0]; }

    static bool HasFlag(const json& link, const std::string& flag) {
        const auto& flags = link["flags"];
        return std::find(flags.begin(), flags.end(), flag) != flags.end();
    }

    // Sends `count` Ethernet frames out of `name`; with both ends of a veth pair in the test's
    // namespace they go nowhere else.
    static void SendFrames(const std::string& name, int count) {
        const int descriptor = socket(AF_PACKET, SOCK_RAW, 0);
        ASSERT_GE(descriptor, 0);
        sockaddr_ll address{};
        address.sll_family = AF_PACKET;
        address.sll_ifindex = static_cast<int>(if_nametoindex(name.c_str()));
        address.sll_halen = ETH_ALEN;
        // To the peer's broadcast address, of the local experimental ether type.
        unsigned char frame[64] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x02,
                                   0,    0,    0,    0,    1,    0x88, 0xb5};
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(sendto(descriptor, frame, sizeof frame, 0,
                             reinterpret_cast<const sockaddr*>(&address), sizeof address),
                      static_cast<ssize_t>(sizeof frame));
        }
        close(descriptor);
    }
};

// Which links are NICs: the veth ends are pseudo NICs; loopback, a bridge and a VLAN are not.
TEST_F(LiveNic, ListsTheEthernetLinksThatStandForNicsAndNothingElse) {
    Witness("ip link add br0 type bridge");
    Witness("ip link add link v0 name v0.5 type vlan id 5 || true");
    const auto rows = Rows(RunList({"nic", "list"}));
    std::vector<std::string> names;
    for (const auto& row : rows) {
        names.push_back(Str(row, "Name"));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"v1", "v0"}));
    for (const auto& row : rows) {
        SCOPED_TRACE(Str(row, "Name"));
        EXPECT_EQ(Str(row, "PCI Device"), "Pseudo");
        EXPECT_EQ(Str(row, "Driver"), "veth");
        EXPECT_EQ(Str(row, "Description"), "Linux veth");
        EXPECT_EQ(Str(row, "DPU Id"), "N/A");
    }
    Witness("ip link del br0");
}

// Each kind of pseudo NIC shows the driver ethtool names for it: a veth, and a tap and a dummy
// where the kernel has them.
TEST_F(LiveNic, EveryKindOfPseudoNicShowsItsDriverAsEthtoolNamesIt) {
    Witness("ip tuntap add t0 mode tap 2>/dev/null; ip link add d0 type dummy 2>/dev/null; true");
    const auto rows = Rows(RunList({"nic", "list"}));
    ASSERT_GE(rows.size(), 2u);
    for (const auto& row : rows) {
        const std::string name = Str(row, "Name");
        SCOPED_TRACE(name);
        const std::string ethtool = Witness("ethtool -i " + name);
        const auto driver = ethtool.find("driver: ") + 8;
        EXPECT_EQ(Str(row, "Driver"), ethtool.substr(driver, ethtool.find('\n', driver) - driver));
    }
    Witness("ip link del d0 2>/dev/null; ip tuntap del t0 mode tap 2>/dev/null; true");
}

// The whole process, in JSON, against ip: name, MAC, MTU, administrative and link state.
TEST_F(LiveNic, TheJsonListingAgreesWithIp) {
    Witness("ip link set v1 mtu 9000 && ip link set v0 up");
    const auto result = LiveAutocli({"--formatter=json", "network", "nic", "list"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json listed = json::parse(result.out);
    ASSERT_EQ(listed.size(), 2u);
    for (const auto& nic : listed) {
        const std::string name = nic["Name"];
        SCOPED_TRACE(name);
        const json link = IpLink(name);
        EXPECT_EQ(nic["MAC Address"], link["address"]);
        EXPECT_EQ(nic["MTU"], link["mtu"]);
        EXPECT_EQ(nic["Admin Status"], HasFlag(link, "UP") ? "Up" : "Down");
        EXPECT_EQ(nic["Link Status"], HasFlag(link, "LOWER_UP") ? "Up" : "Down");
    }
}

// Speed and duplex are what ethtool reports of a link that is up with its carrier (both ends of
// a veth pair up), and none of one without (a single end up, or neither).
TEST_F(LiveNic, SpeedAndDuplexAreEthtoolsWhileTheLinkIsUp) {
    AddVethPair("v2", "v3");
    Witness("ip link set v0 up && ip link set v2 up && ip link set v3 up");
    const auto rows = Rows(RunList({"nic", "list"}));
    ASSERT_EQ(rows.size(), 4u);
    for (const auto& row : rows) {
        const std::string name = Str(row, "Name");
        SCOPED_TRACE(name);
        if (name == "v2" || name == "v3") {
            const std::string ethtool = Witness("ethtool " + name);
            EXPECT_NE(ethtool.find("Speed: " + std::to_string(Int(row, "Speed")) + "Mb/s\n"),
                      std::string::npos)
                << ethtool;
            EXPECT_NE(ethtool.find("Duplex: " + Str(row, "Duplex") + "\n"), std::string::npos)
                << ethtool;
            EXPECT_GT(Int(row, "Speed"), 0);
        } else {
            EXPECT_EQ(Int(row, "Speed"), 0);
            EXPECT_EQ(Str(row, "Duplex"), "Half");
        }
    }
}

TEST_F(LiveNic, DownAndUpChangeTheLinkAsIpSeesIt) {
    Witness("ip link set v0 up");
    auto result = LiveAutocli({"network", "nic", "down", "-n", "v0"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_FALSE(HasFlag(IpLink("v0"), "UP"));
    result = LiveAutocli({"network", "nic", "up", "-n", "v0"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(HasFlag(IpLink("v0"), "UP"));
}

TEST_F(LiveNic, ANameThatIsNoNicIsReportedInTheCommandsWords) {
    Witness("ip link add br0 type bridge");
    for (const char* name : {"lo", "br0", "nosuchlink", "a-name-longer-than-any-link"}) {
        EXPECT_EQ(RunError({"nic", "up", "-n", name}),
                  std::string("There is no pnic with name ") + name);
    }
    Witness("ip link del br0");
}

TEST_F(LiveNic, DriverInformationAgreesWithEthtool) {
    const auto info = Testing::Nested(RunStruct({"nic", "get", "-n", "v0"}), "Driver Info");
    const std::string ethtool = Witness("ethtool -i v0");
    auto line = [&ethtool](const std::string& key) {
        const auto start = ethtool.find(key + ": ");
        EXPECT_NE(start, std::string::npos) << key;
        const auto value = start + key.size() + 2;
        return ethtool.substr(value, ethtool.find('\n', value) - value);
    };
    EXPECT_EQ(Str(info, "Driver"), line("driver"));
    EXPECT_EQ(Str(info, "Version"), line("version"));
    EXPECT_EQ(Str(info, "Firmware Version"), line("firmware-version"));
    EXPECT_EQ(Str(info, "Bus Info"), line("bus-info"));
}

TEST_F(LiveNic, CountersAgreeWithIp) {
    Witness("ip link set v0 up && ip link set v1 up");
    SendFrames("v0", 7);
    const auto stats = Rows(RunList({"nic", "stats", "get", "-n", "v0"})).at(0);
    const json counters = WitnessJson("ip -s -j link show v0")[0]["stats64"];
    EXPECT_EQ(Int(stats, "Packets sent"), 7);
    EXPECT_EQ(Int(stats, "Packets sent"), counters["tx"]["packets"].get<long>());
    EXPECT_EQ(Int(stats, "Bytes sent"), counters["tx"]["bytes"].get<long>());
    EXPECT_EQ(Int(stats, "Packets received"), counters["rx"]["packets"].get<long>());
    EXPECT_EQ(Int(stats, "Transmit packets dropped"), counters["tx"]["dropped"].get<long>());
    EXPECT_EQ(Int(stats, "Total receive errors"), counters["rx"]["errors"].get<long>());
    const auto peer = Rows(RunList({"nic", "stats", "get", "-n", "v1"})).at(0);
    EXPECT_EQ(Int(peer, "Packets received"), 7);
}

// What the driver lacks, the kernel says; what Linux lacks, one text says.
TEST_F(LiveNic, RefusalsCarryTheKernelsWordsOrTheOneTextForWhatLinuxLacks) {
    const auto coalesce = LiveAutocli({"network", "nic", "coalesce", "low", "get", "-n", "v0"});
    EXPECT_EQ(coalesce.status, 1);
    EXPECT_NE(coalesce.err.find("Operation not supported"), std::string::npos) << coalesce.err;
    EXPECT_EQ(std::count(coalesce.err.begin(), coalesce.err.end(), '\n'), 1) << coalesce.err;
    // The listing shows a NIC whose driver can't report as it shows any such NIC.
    EXPECT_EQ(Str(Rows(RunList({"nic", "coalesce", "get", "-n", "v0"})).at(0), "RX microseconds"),
              "N/A");

    const auto switches = LiveAutocli({"network", "vswitch", "dvs", "zanvex", "list"});
    EXPECT_EQ(switches.status, 1);
    EXPECT_NE(switches.err.find(kNotAvailable), std::string::npos) << switches.err;
    EXPECT_EQ(switches.out, "");

    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"nic", "software", "set", "-n", "v0", "--ipv4cso=true"},
          std::vector<std::string>{"nic", "vlan", "stats", "get", "-n", "v0"}}) {
        SCOPED_TRACE(::testing::PrintToString(words));
        EXPECT_NE(RunError(words).find(kNotAvailable), std::string::npos);
    }
}

// A script can rehearse a failing change on a real machine: the fault fires and nothing
// changes.
TEST_F(LiveNic, AnInjectedFaultFailsTheChangeAndLeavesTheLinkAsItWas) {
    Witness("ip link set v0 up");
    const auto result = LiveAutocli({"network", "nic", "down", "-n", "v0"},
                                    {{"HOSTSIM_FAULTS", "Pnic::SetLinkState=Device busy"}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Device busy\n");
    EXPECT_TRUE(HasFlag(IpLink("v0"), "UP"));
}

TEST_F(LiveNic, TheLiveHostNeverOpensTheSimulatedHostsStore) {
    EXPECT_EQ(LiveAutocli({"network", "nic", "list"}).status, 0);
    EXPECT_EQ(LiveAutocli({"network", "vswitch", "standard", "portgroup", "list"}).status, 1);
    EXPECT_TRUE(std::filesystem::is_empty(StateDirectory()));
}

TEST_F(LiveNic, ABatchRunsWholeOnTheHostItsCommandLineChose) {
    const Testing::TemporaryDirectory folder;
    const std::string batch = folder.Path() + "/lines";
    Witness("printf 'network nic up -n v0\\nnetwork nic up -n v1\\n' > " + batch);
    const auto result = LiveAutocli({"--batch", batch});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(HasFlag(IpLink("v0"), "UP"));
    EXPECT_TRUE(HasFlag(IpLink("v1"), "UP"));
}

TEST_F(LiveNic, EveryFaultOfTheLiveNicCommandsEndsInAnError) {
    Witness("ip link set v0 up");
    SweepTable({
        {{"nic", "list"},
         {"NetworkInfo::GetPnics", "Pnic::GetName", "Pnic::GetDeviceDescriptor"},
         {.handledOperations = {"Pnic::GetDeviceDescriptor"},
          .escapingOperations = {"NetworkFactory::GetNetworkInfo",
                                 "NetworkInfoImpl::NetworkInfoImpl"}}},
        {{"nic", "get", "-n", "v0"},
         {"NetworkInfo::GetPnicByName", "Pnic::GetPnicDriverInfo",
          "SmartNicInfo::GetSmartNicByPnic"}},
        {{"nic", "up", "-n", "v1"}, {"Pnic::SetLinkState"}},
        {{"nic", "down", "-n", "v1"},
         {"Pnic::SetLinkState"},
         {.escapingOperations = {"NetworkInfoImpl::NetworkInfoImpl"}}},
        {{"nic", "stats", "get", "-n", "v0"}, {"PnicImpl::GetPnicStats"}},
    });
}

}  // namespace
