// Rulesets: listing them and their rules, changing their flags, and counting their clients.
#include "AuditLog.h"

namespace {

using FirewallTesting::Failure;
using FirewallTesting::Record;
using FirewallTesting::Success;
using Testing::Bool;
using Testing::Int;
using Testing::Rows;
using Testing::RowWhere;
using Testing::Str;
using Testing::Strings;

constexpr char kInvalidRulesetId[] = "Invalid Ruleset Id.";

class FirewallRulesets : public FirewallTesting::AuditedCommandTest {
protected:
    std::shared_ptr<CppTools::MetaObj::MetaStruct> Ruleset(const std::string& id) {
        return RowWhere(RunList({"firewall", "ruleset", "list"}), "Name", id);
    }

    long ClientCount(const std::string& id) {
        return Int(RunStruct({"firewall", "ruleset", "client", "get", "-r", id}),
                   "Ruleset Client Count");
    }

    std::vector<std::string> AllowedIps(const std::string& id) {
        auto rows = Rows(RunList({"firewall", "ruleset", "allowedip", "list", "-r", id}));
        return rows.size() == 1 ? Strings(rows[0], "Allowed IP Addresses")
                                : std::vector<std::string>{};
    }
};

TEST_F(FirewallRulesets, ListShowsEveryRulesetInHostOrderWithWhatCanBeConfigured) {
    std::vector<std::string> names;
    for (const auto& row : Rows(RunList({"firewall", "ruleset", "list"}))) {
        names.push_back(Str(row, "Name"));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"sshServer", "sshClient", "dhcp", "dns", "ntpClient",
                                               "zanvexAgent", "webAccess", "kelmMigrate",
                                               "nfsClient", "snmp", "syslog", "userRules"}));
    auto dhcp = Ruleset("dhcp");
    EXPECT_TRUE(Bool(dhcp, "Enabled"));
    EXPECT_FALSE(Bool(dhcp, "Enable/Disable configurable"));
    EXPECT_FALSE(Bool(dhcp, "Allowed IP configurable"));
    auto agent = Ruleset("zanvexAgent");
    EXPECT_FALSE(Bool(agent, "Enable/Disable configurable"));
    EXPECT_TRUE(Bool(agent, "Allowed IP configurable"));
    auto client = Ruleset("sshClient");
    EXPECT_FALSE(Bool(client, "Enabled"));
    EXPECT_TRUE(Bool(client, "Enable/Disable configurable"));
    EXPECT_TRUE(Bool(client, "Allowed IP configurable"));

    auto one = Rows(RunList({"firewall", "ruleset", "list", "--ruleset-id", "dns"}));
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(Str(one[0], "Name"), "dns");
}

TEST_F(FirewallRulesets, RuleListTranslatesPortTypeDirectionAndProtocol) {
    struct Rule {
        std::string ruleset, portType;
        long begin, end;
        std::string direction, protocol;
        bool operator==(const Rule&) const = default;
    };
    auto rulesOf = [&](const std::string& id) {
        std::vector<Rule> rules;
        for (const auto& row : Rows(RunList({"firewall", "ruleset", "rule", "list", "-r", id}))) {
            rules.push_back({Str(row, "Ruleset"), Str(row, "Port Type"), Int(row, "Port Begin"),
                             Int(row, "Port End"), Str(row, "Direction"), Str(row, "Protocol")});
        }
        return rules;
    };
    EXPECT_EQ(rulesOf("dhcp"), (std::vector<Rule>{{"dhcp", "Src", 67, 67, "Inbound", "UDP"},
                                                  {"dhcp", "Dst", 67, 67, "Outbound", "UDP"}}));
    EXPECT_EQ(rulesOf("syslog"),
              (std::vector<Rule>{{"syslog", "Dst", 514, 514, "Outbound", "UDP"},
                                 {"syslog", "Dst", 1514, 1515, "Outbound", "TCP"}}));
    EXPECT_EQ(rulesOf("sshServer"),
              (std::vector<Rule>{{"sshServer", "Dst", 22, 22, "Inbound", "TCP"}}));
    // A ruleset without rules gives no row, and no error.
    EXPECT_TRUE(rulesOf("userRules").empty());

    // Without an id, the rules of every ruleset in host order.
    auto all = Rows(RunList({"firewall", "ruleset", "rule", "list"}));
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(Str(all.front(), "Ruleset"), "sshServer");
    EXPECT_EQ(Str(all.back(), "Ruleset"), "syslog");
}

TEST_F(FirewallRulesets, AnUnknownIdIsReportedInEachCommandsOwnWords) {
    EXPECT_EQ(RunError({"firewall", "ruleset", "list", "-r", "nfsServer"}),
              "Ruleset Not Found: nfsServer");
    EXPECT_EQ(RunError({"firewall", "ruleset", "rule", "list", "-r", "nfsServer"}),
              "Ruleset Not Found: nfsServer");
    EXPECT_EQ(RunError({"firewall", "ruleset", "allowedip", "list", "-r", "nfsServer"}),
              "Ruleset Not Found: nfsServer");
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "nfsServer", "-e", "true"}),
              kInvalidRulesetId);
    for (const char* verb : {"get", "add", "remove"}) {
        EXPECT_EQ(RunError({"firewall", "ruleset", "client", verb, "-r", "nfsServer"}),
                  kInvalidRulesetId);
    }
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallRulesets, ListingsTellALookupFailureFromOtherFailures) {
    HostSim::InjectFault("FirewallRuleset::IsValid", "dns", "ruleset store locked");
    EXPECT_EQ(RunError({"firewall", "ruleset", "list", "-r", "dns"}),
              "Failed to check loaded status: ruleset store locked");
    EXPECT_EQ(RunError({"firewall", "ruleset", "rule", "list", "-r", "dns"}),
              "Failed to check loaded status: ruleset store locked");
    HostSim::ClearFaults();
    HostSim::InjectFault("SystemInfo::GetFirewallRulesets", "", "ruleset store locked");
    EXPECT_EQ(RunError({"firewall", "ruleset", "list"}), "ruleset store locked");
    HostSim::ClearFaults();
    // A row that fails drops the whole list.
    HostSim::InjectFault("FirewallRuleset::GetRules", "syslog", "rule table unreadable");
    EXPECT_EQ(RunError({"firewall", "ruleset", "rule", "list"}), "rule table unreadable");
}

TEST_F(FirewallRulesets, SetChangesAllowedAllBeforeEnabledWithARecordForEach) {
    RunOk(
        {"firewall", "ruleset", "set", "-r", "sshServer", "--allowed-all=true", "--enabled=false"});
    EXPECT_FALSE(Bool(Ruleset("sshServer"), "Enabled"));
    EXPECT_EQ(AllowedIps("sshServer"), (std::vector<std::string>{"All"}));
    RunOk({"firewall", "ruleset", "set", "-r", "sshClient", "-e", "true"});
    EXPECT_TRUE(Bool(Ruleset("sshClient"), "Enabled"));
    EXPECT_EQ(Records(), (std::vector<Record>{Success("network.fw.rule.update", "sshServer"),
                                              Success("network.fw.rule.disable", "sshServer"),
                                              Success("network.fw.rule.enable", "sshClient")}));
}

TEST_F(FirewallRulesets, SetOfThePresentAllowedAllFlagFailsAndSkipsEnabled) {
    EXPECT_EQ(
        RunError({"firewall", "ruleset", "set", "-r", "webAccess", "-a", "true", "-e", "false"}),
        "Already allowed all ip");
    EXPECT_TRUE(Bool(Ruleset("webAccess"), "Enabled"));
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "sshServer", "-a", "false"}),
              "Already use allowed ip list");
    EXPECT_EQ(Records(),
              (std::vector<Record>{
                  Failure("network.fw.rule.update", "webAccess", "Already allowed all ip"),
                  Failure("network.fw.rule.update", "sshServer", "Already use allowed ip list")}));
}

TEST_F(FirewallRulesets, SetOfThePresentEnabledStateSucceedsUnlessTheStateIsFixed) {
    RunOk({"firewall", "ruleset", "set", "-r", "webAccess", "-e", "true"});
    EXPECT_TRUE(Records().empty());
    // The check of what is configurable comes first, even when nothing would change.
    const std::string fixed = "The enabled state of ruleset dhcp is fixed and cannot be changed";
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "dhcp", "-e", "true"}), fixed);
    const std::string allowedIpFixed =
        "The allowed IP settings of ruleset dns are fixed and cannot be changed";
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "dns", "-a", "true"}), allowedIpFixed);
    EXPECT_EQ(Records(),
              (std::vector<Record>{Failure("network.fw.rule.disable", "dhcp", fixed),
                                   Failure("network.fw.rule.update", "dns", allowedIpFixed)}));
}

TEST_F(FirewallRulesets, SetWithoutParametersFailsBeforeTheLookUp) {
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "nfsServer"}),
              "Need parameter --enabled or --allowed-all");
}

TEST_F(FirewallRulesets, FailedEnabledStepKeepsTheAllowedAllChange) {
    HostSim::InjectFault("FirewallRuleset::Enable", "snmp", "rule table full");
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "snmp", "-a", "true", "-e", "true"}),
              "rule table full");
    HostSim::ClearFaults();
    EXPECT_EQ(Records(),
              (std::vector<Record>{Success("network.fw.rule.update", "snmp"),
                                   Failure("network.fw.rule.enable", "snmp", "rule table full")}));
    EXPECT_EQ(AllowedIps("snmp"), (std::vector<std::string>{"All"}));
    EXPECT_FALSE(Bool(Ruleset("snmp"), "Enabled"));
}

TEST_F(FirewallRulesets, FailedLookUpInSetIsNotAudited) {
    HostSim::InjectFault("SystemInfo::GetFirewallRulesetById", "", "ruleset store locked");
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "snmp", "-e", "true"}),
              "ruleset store locked");
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallRulesets, RulesetsCanBeReadButNotChangedWhileTheModuleIsUnloaded) {
    RunOk({"firewall", "unload"});
    EXPECT_FALSE(Rows(RunList({"firewall", "ruleset", "list"})).empty());
    EXPECT_EQ(ClientCount("syslog"), 2);
    const std::string notLoaded = "The firewall module ostrelfw is not loaded";
    EXPECT_EQ(RunError({"firewall", "ruleset", "set", "-r", "snmp", "-e", "true"}), notLoaded);
    EXPECT_EQ(RunError({"firewall", "ruleset", "client", "add", "-r", "snmp"}), notLoaded);
    EXPECT_EQ(Records(),
              (std::vector<Record>{Failure("network.fw.rule.enable", "snmp", notLoaded)}));
}

TEST_F(FirewallRulesets, ClientsCountUpAndEnableThenDownAndDisableAtZero) {
    EXPECT_EQ(ClientCount("nfsClient"), 0);
    EXPECT_FALSE(Bool(Ruleset("nfsClient"), "Enabled"));
    RunOk({"firewall", "ruleset", "client", "add", "-r", "nfsClient"});
    RunOk({"firewall", "ruleset", "client", "add", "-r", "nfsClient"});
    EXPECT_EQ(ClientCount("nfsClient"), 2);
    EXPECT_TRUE(Bool(Ruleset("nfsClient"), "Enabled"));
    RunOk({"firewall", "ruleset", "client", "remove", "-r", "nfsClient"});
    EXPECT_EQ(ClientCount("nfsClient"), 1);
    EXPECT_TRUE(Bool(Ruleset("nfsClient"), "Enabled"));
    RunOk({"firewall", "ruleset", "client", "remove", "-r", "nfsClient"});
    EXPECT_EQ(ClientCount("nfsClient"), 0);
    EXPECT_FALSE(Bool(Ruleset("nfsClient"), "Enabled"));
    EXPECT_EQ(RunError({"firewall", "ruleset", "client", "remove", "-r", "nfsClient"}),
              "Ruleset nfsClient has no clients to remove");
    EXPECT_EQ(ClientCount("nfsClient"), 0);
    // Clients are not audited.
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallRulesets, ClientsOfARulesetWithAFixedStateLeaveItsStateAlone) {
    const long before = ClientCount("zanvexAgent");
    RunOk({"firewall", "ruleset", "client", "add", "-r", "zanvexAgent"});
    EXPECT_EQ(ClientCount("zanvexAgent"), before + 1);
    RunOk({"firewall", "ruleset", "client", "remove", "-r", "zanvexAgent"});
    RunOk({"firewall", "ruleset", "client", "remove", "-r", "zanvexAgent"});
    EXPECT_EQ(ClientCount("zanvexAgent"), before - 1);
    EXPECT_TRUE(Bool(Ruleset("zanvexAgent"), "Enabled"));
}

}  // namespace
