// The fault sweep's lines of the firewall commands: each command line, the host operations its
// sweep must fail, and what else the sweep allows.
#pragma once

#include "support/CommandTest.h"

namespace FirewallSweeps {

using Testing::SweepCase;

inline const std::vector<SweepCase> kState{
    {{"firewall", "get"},
     {"ModuleImpl::Refresh", "SystemInfo::IsFirewallEnabled",
      "SystemInfo::GetFirewallDefaultAction"}},
    {{"firewall", "set", "--enabled=false", "--default-action=true"},
     {"ModuleImpl::Refresh", "SystemInfo::IsFirewallEnabled",
      "SystemInfo::GetFirewallDefaultAction", "SystemInfo::SetFirewallEnabled",
      "SystemInfo::SetFirewallDefaultAction"}},
    {{"firewall", "load"}, {"ModuleImpl::Load", "SystemInfo::LoadFirewallRulesets"}},
    {{"firewall", "refresh"}, {"SystemInfo::LoadFirewallRulesets"}},
    {{"firewall", "unload"},
     {"ModuleImpl::Refresh", "SystemInfo::DestroyFirewallFilters", "ModuleImpl::Unload"}},
};

inline const std::vector<SweepCase> kRulesets{
    {{"firewall", "ruleset", "list"},
     {"SystemInfo::GetFirewallRulesets", "FirewallRuleset::GetRulesetId",
      "FirewallRuleset::IsEnabled", "FirewallRuleset::IsEnabledFixed",
      "FirewallRuleset::IsAllowedIpFixed"}},
    {{"firewall", "ruleset", "list", "-r", "dhcp"},
     {"SystemInfo::GetFirewallRulesetById", "FirewallRuleset::IsValid"}},
    {{"firewall", "ruleset", "rule", "list"}, {"FirewallRuleset::GetRules"}},
    {{"firewall", "ruleset", "allowedip", "list"},
     {"FirewallRuleset::IsAllowedAll", "FirewallRuleset::GetAllowedIpList"}},
    // The reads of the present flags are not guarded: a failure there leaves the command, and
    // the command host reports it.
    {{"firewall", "ruleset", "set", "-r", "sshServer", "--allowed-all=true", "--enabled=false"},
     {"SystemInfo::GetFirewallRulesetById", "FirewallRuleset::IsValid",
      "FirewallRuleset::CheckConfigurable", "FirewallRuleset::SetAllowedAll",
      "FirewallRuleset::Disable"},
     {.escapingOperations = {"FirewallRuleset::IsAllowedAll", "FirewallRuleset::IsEnabled"}}},
    {{"firewall", "ruleset", "set", "-r", "snmp", "--enabled=true"},
     {"FirewallRuleset::CheckConfigurable", "FirewallRuleset::Enable"},
     {.escapingOperations = {"FirewallRuleset::IsAllowedAll", "FirewallRuleset::IsEnabled"}}},
};

inline const std::vector<SweepCase> kClientsAndAllowedAddresses{
    {{"firewall", "ruleset", "client", "get", "-r", "syslog"},
     {"HostFactory::GetHost", "Host::GetSystemInfo", "SystemInfo::GetFirewallRulesetById",
      "FirewallRuleset::IsValid", "FirewallRuleset::GetClientCount"}},
    {{"firewall", "ruleset", "client", "add", "-r", "syslog"}, {"FirewallRuleset::AddClient"}},
    {{"firewall", "ruleset", "client", "remove", "-r", "syslog"},
     {"FirewallRuleset::RemoveClient"}},
    {{"firewall", "ruleset", "allowedip", "add", "-r", "snmp", "-i", "192.0.2.1"},
     {"FirewallRuleset::IsAllowedAll", "FirewallRuleset::AddAllowedIp"}},
    {{"firewall", "ruleset", "allowedip", "remove", "-r", "sshServer", "-i", "198.51.100.7"},
     {"FirewallRuleset::RemoveAllowedIp"}},
};

}  // namespace FirewallSweeps
