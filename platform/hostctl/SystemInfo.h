// The host's system model: the firewall as a whole and its rulesets.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/FirewallRuleset.h"

namespace HostCtl::System {

class SystemInfo {
public:
    virtual ~SystemInfo() = default;

    virtual bool IsFirewallEnabled() = 0;
    virtual void SetFirewallEnabled(bool enabled) = 0;
    // True is PASS, false is DROP.
    virtual bool GetFirewallDefaultAction() = 0;
    virtual void SetFirewallDefaultAction(bool pass) = 0;
    // Reads the ruleset configuration into the firewall.
    virtual void LoadFirewallRulesets() = 0;
    // Removes the filters that hold the firewall module in use.
    virtual void DestroyFirewallFilters() = 0;

    // Never null: IsValid() on the result tells whether the id exists.
    virtual std::unique_ptr<FirewallRuleset> GetFirewallRulesetById(const std::string& id) = 0;
    // Every ruleset, in the order in which they are shown.
    virtual std::vector<std::unique_ptr<FirewallRuleset>> GetFirewallRulesets() = 0;
};

}  // namespace HostCtl::System
