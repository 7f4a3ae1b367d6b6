// Every host operation of every firewall command, failed in turn: each run ends in an error
// and no root.
#include <algorithm>

#include "support/CommandTest.h"

namespace {

using HostSim::OperationCall;

class FirewallFaultSweep : public Testing::CommandTest {
protected:
    static std::vector<std::string> Operations(const std::vector<OperationCall>& calls) {
        std::vector<std::string> names;
        for (const auto& call : calls) {
            names.push_back(call.operation);
        }
        return names;
    }

    // Sweeps `words` and checks that the sweep failed each of `expected` in turn.
    void Sweep(const std::vector<std::string>& words, const std::vector<std::string>& expected) {
        SCOPED_TRACE(::testing::PrintToString(words));
        const auto swept = Operations(ExpectEveryFaultFails(words));
        for (const auto& operation : expected) {
            EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end()) << operation;
        }
    }
};

TEST_F(FirewallFaultSweep, FirewallStateCommands) {
    Sweep({"firewall", "get"}, {"ModuleImpl::Refresh", "SystemInfo::IsFirewallEnabled",
                                "SystemInfo::GetFirewallDefaultAction"});
    Sweep({"firewall", "set", "--enabled=false", "--default-action=true"},
          {"ModuleImpl::Refresh", "SystemInfo::IsFirewallEnabled",
           "SystemInfo::GetFirewallDefaultAction", "SystemInfo::SetFirewallEnabled",
           "SystemInfo::SetFirewallDefaultAction"});
    Sweep({"firewall", "load"}, {"ModuleImpl::Load", "SystemInfo::LoadFirewallRulesets"});
    Sweep({"firewall", "refresh"}, {"SystemInfo::LoadFirewallRulesets"});
    Sweep({"firewall", "unload"},
          {"ModuleImpl::Refresh", "SystemInfo::DestroyFirewallFilters", "ModuleImpl::Unload"});
}

TEST_F(FirewallFaultSweep, RulesetListings) {
    Sweep({"firewall", "ruleset", "list"},
          {"SystemInfo::GetFirewallRulesets", "FirewallRuleset::GetRulesetId",
           "FirewallRuleset::IsEnabled", "FirewallRuleset::IsEnabledFixed",
           "FirewallRuleset::IsAllowedIpFixed"});
    Sweep({"firewall", "ruleset", "list", "-r", "dhcp"},
          {"SystemInfo::GetFirewallRulesetById", "FirewallRuleset::IsValid"});
    Sweep({"firewall", "ruleset", "rule", "list"}, {"FirewallRuleset::GetRules"});
    Sweep({"firewall", "ruleset", "allowedip", "list"},
          {"FirewallRuleset::IsAllowedAll", "FirewallRuleset::GetAllowedIpList"});
}

TEST_F(FirewallFaultSweep, RulesetClientsAndAllowedAddresses) {
    Sweep({"firewall", "ruleset", "client", "get", "-r", "syslog"},
          {"HostFactory::GetHost", "Host::GetSystemInfo", "SystemInfo::GetFirewallRulesetById",
           "FirewallRuleset::IsValid", "FirewallRuleset::GetClientCount"});
    Sweep({"firewall", "ruleset", "client", "add", "-r", "syslog"}, {"FirewallRuleset::AddClient"});
    Sweep({"firewall", "ruleset", "client", "remove", "-r", "syslog"},
          {"FirewallRuleset::RemoveClient"});
    Sweep({"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", "192.0.2.1"},
          {"FirewallRuleset::IsAllowedAll", "FirewallRuleset::AddAllowedIp"});
    Sweep({"firewall", "ruleset", "allowedip", "remove", "-r", "sshServer", "-i", "198.51.100.7"},
          {"FirewallRuleset::RemoveAllowedIp"});
}

// The reads of the present flags in `ruleset set` are not guarded: a failure there leaves the
// command, and the command host reports it.
TEST_F(FirewallFaultSweep, RulesetSetLetsOnlyItsUnguardedReadsEscape) {
    const auto swept = ExpectEveryFaultFails(
        {"firewall", "ruleset", "set", "-r", "sshServer", "--allowed-all=true", "--enabled=false"},
        {.escapingOperations = {"FirewallRuleset::IsAllowedAll", "FirewallRuleset::IsEnabled"}});
    EXPECT_EQ(Operations(swept),
              (std::vector<std::string>{
                  "SystemInfo::GetFirewallRulesetById", "FirewallRuleset::IsValid",
                  "FirewallRuleset::IsAllowedAll", "FirewallRuleset::CheckConfigurable",
                  "FirewallRuleset::SetAllowedAll", "FirewallRuleset::IsEnabled",
                  "FirewallRuleset::CheckConfigurable", "FirewallRuleset::Disable"}));
}

}  // namespace
