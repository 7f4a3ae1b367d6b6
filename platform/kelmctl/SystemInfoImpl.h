// The host's implementation of the system model.
#pragma once

#include "hostctl/SystemInfo.h"

namespace KelmCtl::System {

class SystemInfoImpl : public HostCtl::System::SystemInfo {
public:
    SystemInfoImpl();
    ~SystemInfoImpl() override;

    bool IsFirewallEnabled() override;
    void SetFirewallEnabled(bool enabled) override;
    bool GetFirewallDefaultAction() override;
    void SetFirewallDefaultAction(bool pass) override;
    void LoadFirewallRulesets() override;
    void DestroyFirewallFilters() override;
    std::unique_ptr<HostCtl::System::FirewallRuleset> GetFirewallRulesetById(
        const std::string& id) override;
    std::vector<std::unique_ptr<HostCtl::System::FirewallRuleset>> GetFirewallRulesets() override;
};

}  // namespace KelmCtl::System
