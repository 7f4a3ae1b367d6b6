// Every firewall command through the real autocli binary: stdout, stderr, exit status, and what
// a later process sees.
#include <nlohmann/json.hpp>

#include "AuditLog.h"
#include "support/CommandTest.h"

namespace {

using FirewallTesting::AuditRecords;
using FirewallTesting::Failure;
using FirewallTesting::Record;
using FirewallTesting::Success;
using nlohmann::json;
using Testing::ProcessResult;

class AutocliFirewall : public ::testing::Test {
protected:
    ProcessResult Autocli(std::vector<std::string> words,
                          const std::map<std::string, std::string>& environment = {}) {
        words.insert(words.begin(), {"network", "firewall"});
        return Testing::RunAutocli(words, state_.Path(), environment);
    }

    // Runs with the JSON formatter and expects success.
    json Json(const std::vector<std::string>& words) {
        std::vector<std::string> line{"--formatter=json", "network", "firewall"};
        line.insert(line.end(), words.begin(), words.end());
        auto result = Testing::RunAutocli(line, state_.Path());
        EXPECT_EQ(result.status, 0) << result.err;
        return json::parse(result.out, nullptr, false);
    }

    // A change that answers true: exit 0 and nothing printed.
    void ExpectQuietSuccess(const std::vector<std::string>& words) {
        auto result = Autocli(words);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "");
    }

    void ExpectRefusal(const std::vector<std::string>& words, const std::string& message) {
        auto result = Autocli(words);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, message + "\n");
    }

    std::vector<Record> Records() { return AuditRecords(state_.Path()); }

    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliFirewall, StateChangesShowInTheNextProcessAndAreAudited) {
    EXPECT_EQ(Json({"get"}),
              (json{{"Loaded", true}, {"Enabled", true}, {"DefaultAction", "DROP"}}));
    auto simple = Autocli({"get"});
    EXPECT_EQ(simple.status, 0);
    EXPECT_NE(simple.out.find("DefaultAction"), std::string::npos) << simple.out;

    ExpectQuietSuccess({"set", "--enabled=false"});
    EXPECT_EQ(Json({"get"}),
              (json{{"Loaded", true}, {"Enabled", false}, {"DefaultAction", "DROP"}}));
    EXPECT_EQ(Records(), (std::vector<Record>{Success("network.fw.disable", "firewall")}));

    ExpectQuietSuccess({"refresh"});
    ExpectQuietSuccess({"unload"});
    EXPECT_EQ(Json({"get"}),
              (json{{"Loaded", false}, {"Enabled", false}, {"DefaultAction", "PASS"}}));
    ExpectRefusal({"set", "--enabled=true"}, "Firewall module is not loaded");
    ExpectQuietSuccess({"load"});
    EXPECT_EQ(Json({"get"})["Loaded"], true);
    EXPECT_EQ(Records().size(), 2u);
}

TEST_F(AutocliFirewall, RulesetsAndTheirRulesList) {
    auto table = Autocli({"ruleset", "list"});
    ASSERT_EQ(table.status, 0) << table.err;
    for (const char* text : {"Name", "Enable/Disable configurable", "Allowed IP configurable",
                             "sshServer", "userRules"}) {
        EXPECT_NE(table.out.find(text), std::string::npos) << text << " in\n" << table.out;
    }
    auto rules = Json({"ruleset", "rule", "list", "-r", "kelmMigrate"});
    ASSERT_EQ(rules.size(), 2u);
    EXPECT_EQ(rules[0], (json{{"Ruleset", "kelmMigrate"},
                              {"Port Type", "Dst"},
                              {"Port Begin", 8000},
                              {"Port End", 8100},
                              {"Direction", "Inbound"},
                              {"Protocol", "TCP"}}));

    ExpectQuietSuccess({"ruleset", "set", "-r", "ntpClient", "--enabled=true"});
    for (const auto& row : Json({"ruleset", "list"})) {
        if (row["Name"] == "ntpClient") {
            EXPECT_EQ(row["Enabled"], true);
        }
    }
    ExpectRefusal({"ruleset", "list", "-r", "ftpServer"}, "Ruleset Not Found: ftpServer");
}

TEST_F(AutocliFirewall, ClientsCountAcrossProcesses) {
    ExpectQuietSuccess({"ruleset", "client", "add", "-r", "ntpClient"});
    ExpectQuietSuccess({"ruleset", "client", "add", "-r", "ntpClient"});
    ExpectQuietSuccess({"ruleset", "client", "remove", "-r", "ntpClient"});
    EXPECT_EQ(Json({"ruleset", "client", "get", "-r", "ntpClient"}),
              (json{{"Ruleset Client Count", 1}}));
    ExpectRefusal({"ruleset", "client", "get", "-r", "ftpServer"}, "Invalid Ruleset Id.");
}

TEST_F(AutocliFirewall, AllowedAddressesChangeOrAreRefusedInTheHostsWords) {
    ExpectQuietSuccess({"ruleset", "allowedip", "add", "-r", "snmp", "-i", "192.0.2.0/24"});
    EXPECT_EQ(Json({"ruleset", "allowedip", "list", "-r", "snmp"}),
              (json::array({{{"Ruleset", "snmp"}, {"Allowed IP Addresses", {"192.0.2.0/24"}}}})));
    const std::string refusal =
        "Invalid address '192.0.2/24x': expected an IPv4 or IPv6 address, or a network in prefix "
        "form such as 192.0.2.0/24";
    ExpectRefusal({"ruleset", "allowedip", "add", "-r", "snmp", "-i", "192.0.2/24x"}, refusal);
    ExpectQuietSuccess({"ruleset", "allowedip", "remove", "-r", "snmp", "-i", "192.0.2.0/24"});
    EXPECT_EQ(Json({"ruleset", "allowedip", "list", "-r", "snmp"})[0]["Allowed IP Addresses"],
              json::array());
    EXPECT_EQ(Records(), (std::vector<Record>{Success("network.fw.rule.update", "snmp"),
                                              Failure("network.fw.rule.update", "snmp", refusal),
                                              Success("network.fw.rule.update", "snmp")}));
}

TEST_F(AutocliFirewall, AFaultFromTheEnvironmentIsReportedAndAudited) {
    auto result =
        Autocli({"ruleset", "set", "-r", "snmp", "--allowed-all=true"},
                {{"HOSTSIM_FAULTS", "FirewallRuleset::SetAllowedAll=rule store is read-only"},
                 {"SSH_CLIENT", "203.0.113.40 40022 22"},
                 {"HOSTSIM_OPID", "kelm-op-9"}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "rule store is read-only\n");
    const auto records = Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0], (Record{"network.fw.rule.update",
                                  "snmp",
                                  false,
                                  {{"reason", "rule store is read-only"},
                                   {"ip", "203.0.113.40"},
                                   {"opID", "kelm-op-9"}}}));
    EXPECT_EQ(Json({"ruleset", "allowedip", "list", "-r", "snmp"})[0]["Allowed IP Addresses"],
              json::array());
}

}  // namespace
