// The firewall commands on the live Linux host, in a network namespace of the test's own: what
// they make of the table inet kelmfw, checked against nft (which nobody here wrote) and against
// packets that cross a veth pair, and that no other table changes.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <future>

#include "firewall/AuditLog.h"
#include "firewall/FirewallSweepCases.h"
#include "support/LiveHostTest.h"

namespace {

using FirewallTesting::AuditRecords;
using FirewallTesting::Failure;
using FirewallTesting::Record;
using FirewallTesting::Success;
using nlohmann::json;
using Testing::Bool;
using Testing::Rows;
using Testing::RowWhere;
using Testing::Str;
using Testing::Strings;
using Words = std::vector<std::string>;

// A table of someone else's, which no firewall command may touch.
constexpr char kOtherTable[] =
    "nft add table inet kelmlab && "
    "nft add set inet kelmlab peers '{ type ipv4_addr; elements = { 192.0.2.77 } }' && "
    "nft add chain inet kelmlab gate '{ type filter hook input priority -10; policy accept; }' && "
    "nft add rule inet kelmlab gate tcp dport 4242 ip saddr @peers counter accept";

class LiveFirewall : public Testing::LiveHostTest {
protected:
    void TearDown() override {
        if (!IsSkipped()) {
            Witness(
                "nft delete table inet kelmfw 2>/dev/null; nft delete table inet kelmlab "
                "2>/dev/null; ip netns del fwpeer 2>/dev/null; true");
        }
        LiveHostTest::TearDown();
    }

    // The table as nft lists it, its objects one by one.
    json Table() { return WitnessJson("nft -j list table inet kelmfw")["nftables"]; }
    // The same without the library's version, for comparing tables.
    json Listing(const std::string& table) {
        json objects = WitnessJson("nft -j list table " + table)["nftables"];
        objects.erase(objects.begin());
        return objects;
    }

    static std::vector<json> RulesOf(const json& table, const std::string& chain) {
        std::vector<json> rules;
        for (const json& item : table) {
            if (item.contains("rule") && item["rule"]["chain"] == chain) {
                rules.push_back(item["rule"]);
            }
        }
        return rules;
    }

    static json ChainNamed(const json& table, const std::string& name) {
        for (const json& item : table) {
            if (item.contains("chain") && item["chain"]["name"] == name) {
                return item["chain"];
            }
        }
        ADD_FAILURE() << "no chain " << name;
        return json::object();
    }

    // The rulesets the chain `from` jumps to, in order.
    static Words Jumps(const json& table, const std::string& from) {
        Words targets;
        for (const json& rule : RulesOf(table, from)) {
            for (const json& expression : rule["expr"]) {
                if (expression.contains("jump")) {
                    targets.push_back(expression["jump"]["target"]);
                }
            }
        }
        return targets;
    }

    // The elements of a set as nft prints them.
    static Words Elements(const json& table, const std::string& set) {
        Words elements;
        for (const json& item : table) {
            if (item.contains("set") && item["set"]["name"] == set) {
                for (const json& element : item["set"].value("elem", json::array())) {
                    elements.push_back(element.is_string() ? element.get<std::string>()
                                                           : element.dump());
                }
            }
        }
        return elements;
    }
};

TEST_F(LiveFirewall, LoadMakesTheTableWithTheDefaultHostsRulesetsAndUnloadRemovesIt) {
    auto state = RunStruct({"firewall", "get"});
    EXPECT_FALSE(Bool(state, "Loaded"));
    EXPECT_NE(RunError({"firewall", "ruleset", "list"}).find("there is no table inet kelmfw"),
              std::string::npos);

    RunOk({"firewall", "load"});
    state = RunStruct({"firewall", "get"});
    EXPECT_TRUE(Bool(state, "Loaded"));
    EXPECT_TRUE(Bool(state, "Enabled"));
    // A new table passes what no ruleset accepts, so that loading it cuts no connection.
    EXPECT_EQ(Str(state, "DefaultAction"), "PASS");

    // Every listing reads back what the default simulated host holds.
    const Testing::TemporaryDirectory simulated;
    for (const Words& listing :
         {Words{"firewall", "ruleset", "list"}, Words{"firewall", "ruleset", "rule", "list"},
          Words{"firewall", "ruleset", "allowedip", "list"}}) {
        SCOPED_TRACE(::testing::PrintToString(listing));
        Words arguments{"--formatter=json", "network"};
        arguments.insert(arguments.end(), listing.begin(), listing.end());
        const auto live = LiveAutocli(arguments);
        arguments.insert(arguments.begin(), "--host=sim");
        const auto expected = Testing::RunAutocli(arguments, simulated.Path());
        ASSERT_EQ(live.status, 0) << live.err;
        ASSERT_EQ(expected.status, 0) << expected.err;
        EXPECT_EQ(json::parse(live.out), json::parse(expected.out));
    }

    // nft sees a chain for each ruleset, and a jump to each enabled one from both hooks.
    const json table = Table();
    Words enabled;
    for (const auto& row : Rows(RunList({"firewall", "ruleset", "list"}))) {
        EXPECT_TRUE(ChainNamed(table, Str(row, "Name")).is_object());
        if (Bool(row, "Enabled")) {
            enabled.push_back(Str(row, "Name"));
        }
    }
    EXPECT_EQ(Jumps(table, "inbound"), enabled);
    EXPECT_EQ(Jumps(table, "outbound"), enabled);
    EXPECT_EQ(ChainNamed(table, "inbound")["hook"], "input");
    EXPECT_EQ(ChainNamed(table, "outbound")["hook"], "output");

    // Loading again keeps the table as it is.
    RunOk({"firewall", "ruleset", "set", "-r", "snmp", "-e", "true"});
    RunOk({"firewall", "load"});
    EXPECT_TRUE(
        Bool(RowWhere(RunList({"firewall", "ruleset", "list"}), "Name", "snmp"), "Enabled"));

    RunOk({"firewall", "unload"});
    EXPECT_FALSE(Bool(RunStruct({"firewall", "get"}), "Loaded"));
    EXPECT_EQ(Witness("nft list tables"), "");
    // Unloading an unloaded firewall answers true.
    RunOk({"firewall", "unload"});
}

TEST_F(LiveFirewall, RulesetChangesShowInTheRulesetsChainAndSets) {
    RunOk({"firewall", "load"});
    RunOk({"firewall", "ruleset", "set", "-r", "sshServer", "-e", "false"});
    json table = Table();
    for (const char* hook : {"inbound", "outbound"}) {
        const Words jumps = Jumps(table, hook);
        EXPECT_EQ(std::count(jumps.begin(), jumps.end(), "sshServer"), 0) << hook;
    }
    RunOk({"firewall", "ruleset", "set", "-r", "sshServer", "-e", "true"});
    const Words jumps = Jumps(Table(), "inbound");
    EXPECT_EQ(std::count(jumps.begin(), jumps.end(), "sshServer"), 1);

    // While a ruleset admits only its allowed addresses, each rule tests the peer against the
    // ruleset's set of each address family; allowing all drops the tests.
    // sshServer's rule is for what comes in: it tests the source against the set.
    const auto sshRules = RulesOf(Table(), "sshServer");
    ASSERT_EQ(sshRules.size(), 2u);
    EXPECT_NE(sshRules[0].dump().find(R"({"field":"saddr","protocol":"ip"})"), std::string::npos)
        << sshRules[0];
    RunOk({"firewall", "ruleset", "set", "-r", "sshServer", "-a", "true"});
    table = Table();
    ASSERT_EQ(RulesOf(table, "sshServer").size(), 1u);
    EXPECT_EQ(RulesOf(table, "sshServer")[0].dump().find("@sshServer"), std::string::npos);
    EXPECT_EQ(RulesOf(table, "sshServer")[0]["comment"], "ssh");

    // Addresses go into the set of their family, in the form nft prints them.
    RunOk({"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", "192.0.2.9"});
    RunOk({"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", "2001:db8:9::/48"});
    RunOk({"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", "198.51.100.0/32"});
    table = Table();
    EXPECT_EQ(Elements(table, "snmp.ipv4"), (Words{"192.0.2.9", "198.51.100.0"}));
    EXPECT_EQ(Elements(table, "snmp.ipv6"),
              (Words{R"({"prefix":{"addr":"2001:db8:9::","len":48}})"}));
    EXPECT_EQ(
        Strings(RowWhere(RunList({"firewall", "ruleset", "allowedip", "list"}), "Ruleset", "snmp"),
                "Allowed IP Addresses"),
        (Words{"192.0.2.9", "198.51.100.0", "2001:db8:9::/48"}));
    // A network of one address is that address, and goes by either text.
    RunOk({"firewall", "ruleset", "allowedip", "remove", "-r", "snmp", "-i", "198.51.100.0/32"});
    RunOk({"firewall", "ruleset", "allowedip", "remove", "-r", "snmp", "-i", "192.0.2.9"});
    EXPECT_EQ(Elements(Table(), "snmp.ipv4"), Words{});

    EXPECT_EQ(
        RunError({"firewall", "ruleset", "allowedip", "remove", "-r", "snmp", "-i", "192.0.2.9"}),
        "192.0.2.9 is not an allowed address of ruleset snmp");
    EXPECT_EQ(RunError({"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i",
                        "2001:db8:9::/48"}),
              "2001:db8:9::/48 is already an allowed address of ruleset snmp");
    // An address within a network the set holds is refused in the library's words.
    EXPECT_EQ(
        RunError({"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", "2001:db8:9::1"}),
        "conflicting intervals specified");

    // Clients and fixed settings live in the chain's comment.
    RunOk({"firewall", "ruleset", "client", "add", "-r", "snmp"});
    EXPECT_EQ(Testing::Int(RunStruct({"firewall", "ruleset", "client", "get", "-r", "snmp"}),
                           "Ruleset Client Count"),
              1);
    EXPECT_NE(Witness("nft list chain inet kelmfw snmp").find("clients=1"), std::string::npos);
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "dhcp", "-e", "false"}),
              "The enabled state of ruleset dhcp is fixed and cannot be changed");
}

TEST_F(LiveFirewall, FirewallSetTurnsTheWholeTableOffAndChangesTheDefaultAction) {
    RunOk({"firewall", "load"});
    RunOk({"firewall", "set", "-d", "false"});
    EXPECT_EQ(ChainNamed(Table(), "inbound")["policy"], "drop");
    EXPECT_EQ(ChainNamed(Table(), "outbound")["policy"], "drop");
    // A disabled firewall's base chains are hooked nowhere, and keep their rules.
    RunOk({"firewall", "set", "-e", "false"});
    for (const char* chain : {"inbound", "outbound"}) {
        EXPECT_FALSE(ChainNamed(Table(), chain).contains("hook")) << chain;
    }
    EXPECT_FALSE(Jumps(Table(), "inbound").empty());
    auto state = RunStruct({"firewall", "get"});
    EXPECT_FALSE(Bool(state, "Enabled"));
    EXPECT_EQ(Str(state, "DefaultAction"), "DROP");
    // Changing the action of a disabled firewall keeps it disabled.
    RunOk({"firewall", "set", "-d", "true"});
    state = RunStruct({"firewall", "get"});
    EXPECT_FALSE(Bool(state, "Enabled"));
    EXPECT_EQ(Str(state, "DefaultAction"), "PASS");
    RunOk({"firewall", "set", "-e", "true", "-d", "false"});
    EXPECT_EQ(ChainNamed(Table(), "inbound")["hook"], "input");
    EXPECT_EQ(ChainNamed(Table(), "outbound")["policy"], "drop");
}

// libnftables is the firewall's alone: another command on the live host never loads it.
TEST_F(LiveFirewall, OnlyTheFirewallLoadsTheNftablesLibrary) {
    const std::map<std::string, std::string> tracing = {{"LD_DEBUG", "libs"}};
    const auto nics = LiveAutocli({"network", "nic", "list"}, tracing);
    ASSERT_EQ(nics.status, 0) << nics.err;
    EXPECT_NE(nics.err.find("liblinuxhost.so"), std::string::npos) << nics.err;
    EXPECT_EQ(nics.err.find("libnftables"), std::string::npos);
    const auto firewall = LiveAutocli({"network", "firewall", "load"}, tracing);
    ASSERT_EQ(firewall.status, 0) << firewall.err;
    EXPECT_NE(firewall.err.find("libnftables"), std::string::npos);
    ASSERT_EQ(LiveAutocli({"network", "firewall", "unload"}).status, 0);
}

TEST_F(LiveFirewall, NoCommandChangesAnotherTable) {
    Witness(kOtherTable);
    const json before = Listing("inet kelmlab");
    const std::vector<Words> changes = {
        {"firewall", "load"},
        {"firewall", "set", "-e", "false", "-d", "false"},
        {"firewall", "set", "-e", "true"},
        {"firewall", "ruleset", "set", "-r", "sshServer", "-a", "true", "-e", "false"},
        {"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", "192.0.2.77"},
        {"firewall", "ruleset", "allowedip", "remove", "-r", "snmp", "-i", "192.0.2.77"},
        {"firewall", "ruleset", "client", "add", "-r", "snmp"},
        {"firewall", "refresh"},
        {"firewall", "unload"},
    };
    for (const Words& change : changes) {
        SCOPED_TRACE(::testing::PrintToString(change));
        RunOk(change);
        EXPECT_EQ(Listing("inet kelmlab"), before);
    }
}

// The firewall's records go to the audit log of the state directory on the live host too, and
// nothing of the simulated host's store is made there.
TEST_F(LiveFirewall, ChangesLeaveAuditRecordsWithoutTheSimulatedHostsStore) {
    RunOk({"firewall", "load"});
    RunOk({"firewall", "set", "-e", "false"});
    RunOk({"firewall", "ruleset", "set", "-r", "snmp", "-e", "true"});
    RunError({"firewall", "ruleset", "allowedip", "add", "-r", "dns", "-i", "192.0.2.1"});
    EXPECT_EQ(AuditRecords(StateDirectory()),
              (std::vector<Record>{
                  Success("network.fw.disable", "firewall"),
                  Success("network.fw.rule.enable", "snmp"),
                  Failure("network.fw.rule.update", "dns",
                          "The allowed IP settings of ruleset dns are fixed and cannot be changed"),
              }));
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(StateDirectory())) {
        files.push_back(entry.path().filename());
    }
    EXPECT_EQ(files, std::vector<std::string>{"audit.log"});
}

// The user's way: the binary, its JSON, and the kernel's refusal in its own words.
TEST_F(LiveFirewall, TheBinaryListsTheTableInJsonAndReportsRefusals) {
    ASSERT_EQ(LiveAutocli({"network", "firewall", "load"}).status, 0);
    const auto listed = LiveAutocli({"--formatter=json", "network", "firewall", "ruleset", "set",
                                     "-r", "sshServer", "-e", "false"});
    ASSERT_EQ(listed.status, 0) << listed.err;
    const auto rulesets =
        LiveAutocli({"--formatter=json", "network", "firewall", "ruleset", "list"});
    ASSERT_EQ(rulesets.status, 0) << rulesets.err;
    const json rows = json::parse(rulesets.out);
    const Words jumps = Jumps(Table(), "inbound");
    for (const json& row : rows) {
        const std::string name = row["Name"];
        EXPECT_EQ(row["Enabled"].get<bool>(),
                  std::find(jumps.begin(), jumps.end(), name) != jumps.end())
            << name;
    }
    const auto fault = LiveAutocli({"network", "firewall", "set", "-e", "false"},
                                   {{"HOSTSIM_FAULTS", "SystemInfo::SetFirewallEnabled=Busy"}});
    EXPECT_EQ(fault.status, 1);
    EXPECT_EQ(fault.err, "Busy\n");
    EXPECT_EQ(ChainNamed(Table(), "inbound")["hook"], "input");
}

// Processes that change the table at once each write it whole: one that another overtook
// makes its change again on what the other wrote, so no change is lost.
TEST_F(LiveFirewall, ProcessesChangingTheTableAtOnceLoseNothing) {
    constexpr int kWorkers = 6;
    constexpr int kChangesPerWorker = 4;
    RunOk({"firewall", "load"});
    std::vector<std::future<int>> workers;
    for (int worker = 0; worker < kWorkers; ++worker) {
        workers.push_back(std::async(std::launch::async, [this, worker] {
            int failed = 0;
            for (int change = 0; change < kChangesPerWorker; ++change) {
                const std::string address =
                    "203.0.113." + std::to_string(worker * kChangesPerWorker + change);
                for (const Words& words : {Words{"network", "firewall", "ruleset", "allowedip",
                                                 "add", "-r", "snmp", "-i", address},
                                           Words{"network", "firewall", "ruleset", "client", "add",
                                                 "-r", "nfsClient"}}) {
                    const auto result = LiveAutocli(words);
                    failed += result.status != 0;
                    EXPECT_EQ(result.err, "");
                }
            }
            return failed;
        }));
    }
    for (auto& worker : workers) {
        EXPECT_EQ(worker.get(), 0);
    }
    EXPECT_EQ(Elements(Table(), "snmp.ipv4").size(),
              static_cast<std::size_t>(kWorkers * kChangesPerWorker));
    EXPECT_EQ(Testing::Int(RunStruct({"firewall", "ruleset", "client", "get", "-r", "nfsClient"}),
                           "Ruleset Client Count"),
              kWorkers * kChangesPerWorker);
}

// Packets from a peer namespace over a veth pair: the table lets through what the rulesets say.
class LiveFirewallTraffic : public LiveFirewall {
protected:
    static constexpr char kPeer[] = "192.0.2.2";
    static constexpr std::uint16_t kSnmpPort = 161;
    static constexpr std::uint16_t kOtherPort = 5000;

    void SetUp() override {
        LiveFirewall::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        Witness(
            "ip netns add fwpeer && ip link add fw0 type veth peer name fw1 netns fwpeer && "
            "ip addr add 192.0.2.1/24 dev fw0 && ip link set fw0 up && "
            "ip -n fwpeer addr add 192.0.2.2/24 dev fw1 && ip -n fwpeer link set fw1 up");
    }

    // Whether a datagram the peer sends to `port` arrives.
    bool Arrives(std::uint16_t port) {
        const int receiver = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        EXPECT_GE(receiver, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        inet_pton(AF_INET, "192.0.2.1", &address.sin_addr);
        EXPECT_EQ(bind(receiver, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        Witness("ip netns exec fwpeer bash -c 'echo probe > /dev/udp/192.0.2.1/" +
                std::to_string(port) + "'");
        pollfd waiting{receiver, POLLIN, 0};
        const bool arrived = poll(&waiting, 1, 500) == 1;
        close(receiver);
        return arrived;
    }
};

TEST_F(LiveFirewallTraffic, TheTableAcceptsWhatAnEnabledRulesetAllows) {
    RunOk({"firewall", "load"});
    EXPECT_TRUE(Arrives(kSnmpPort));
    RunOk({"firewall", "set", "-d", "false"});
    EXPECT_FALSE(Arrives(kSnmpPort)) << "snmp is disabled";
    RunOk({"firewall", "ruleset", "set", "-r", "snmp", "-e", "true"});
    EXPECT_FALSE(Arrives(kSnmpPort)) << "the peer is not an allowed address";
    RunOk({"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", kPeer});
    EXPECT_TRUE(Arrives(kSnmpPort));
    EXPECT_FALSE(Arrives(kOtherPort)) << "no ruleset accepts it";
    RunOk({"firewall", "ruleset", "allowedip", "remove", "-r", "snmp", "-i", kPeer});
    RunOk({"firewall", "ruleset", "set", "-r", "snmp", "-a", "true"});
    EXPECT_TRUE(Arrives(kSnmpPort));
    RunOk({"firewall", "ruleset", "set", "-r", "snmp", "-e", "false"});
    EXPECT_FALSE(Arrives(kSnmpPort));
    RunOk({"firewall", "set", "-e", "false"});
    EXPECT_TRUE(Arrives(kOtherPort)) << "a disabled firewall filters nothing";
}

// Each swept line runs on a table loaded anew, as the simulated host's sweep runs on a fresh
// default host.
std::vector<Testing::SweepCase> OnAFreshTable(std::vector<Testing::SweepCase> cases) {
    for (auto& sweep : cases) {
        sweep.rules.setup.insert(sweep.rules.setup.begin(),
                                 {{"firewall", "unload"}, {"firewall", "load"}});
    }
    return cases;
}

TEST_F(LiveFirewall, EveryFaultOfTheLiveFirewallCommandsEndsInAnError) {
    // A new table passes by default, so the action changes to DROP here.
    SweepTable(OnAFreshTable({
        {{"firewall", "get"},
         {"ModuleImpl::Refresh", "SystemInfo::IsFirewallEnabled",
          "SystemInfo::GetFirewallDefaultAction"}},
        {{"firewall", "set", "--enabled=false", "--default-action=false"},
         {"SystemInfo::SetFirewallEnabled", "SystemInfo::SetFirewallDefaultAction"}},
        {{"firewall", "load"}, {"ModuleImpl::Load", "SystemInfo::LoadFirewallRulesets"}},
        {{"firewall", "refresh"}, {"SystemInfo::LoadFirewallRulesets"}},
        {{"firewall", "unload"},
         {"ModuleImpl::Refresh", "SystemInfo::DestroyFirewallFilters", "ModuleImpl::Unload"}},
    }));
    SweepTable(OnAFreshTable(FirewallSweeps::kRulesets));
    SweepTable(OnAFreshTable(FirewallSweeps::kClientsAndAllowedAddresses));
}

}  // namespace
