// A ruleset of the host, with the copy of its record read when it was looked up; on the live
// host the copy of the whole ruleset, rules and addresses too.
#pragma once

#include <optional>
#include <string>

#include "hostctl/FirewallRuleset.h"
#include "hostsim/firewall/FirewallStore.h"

namespace KelmCtl::System {

class FirewallRulesetImpl : public HostCtl::System::FirewallRuleset {
public:
    // `record` is empty for an id the host does not have.
    FirewallRulesetImpl(std::string id, std::optional<HostSim::Firewall::RulesetRecord> record);
    // A ruleset of the live host's table, empty for an id the table does not have.
    FirewallRulesetImpl(std::string id, std::optional<HostSim::Firewall::Ruleset> ruleset);

    std::string GetRulesetId() const override;
    bool IsValid() const override;
    bool IsEnabled() const override;
    void Enable() override;
    void Disable() override;
    bool IsAllowedAll() const override;
    void SetAllowedAll(bool allowedAll) override;
    void CheckConfigurable(int setting, bool internal) const override;
    bool IsEnabledFixed() const override;
    bool IsAllowedIpFixed() const override;
    std::vector<std::unique_ptr<HostCtl::System::FirewallPortRule>> GetRules() const override;
    std::int32_t GetClientCount() const override;
    void AddClient() override;
    void RemoveClient() override;
    std::unique_ptr<HostCtl::System::AllowedIpList> GetAllowedIpList() const override;
    void AddAllowedIp(const std::string& address) override;
    void RemoveAllowedIp(const std::string& address) override;

private:
    // Passes the choke point as `operation` and returns the record; throws for an unknown id.
    const HostSim::Firewall::RulesetRecord& Record(const char* operation) const;
    // `change(ruleset, database)` changes the ruleset where the host keeps it: its record in
    // `ruleset`, its addresses in `database` on the simulated host (null on the live host,
    // where `ruleset` holds them).
    template <class Change>
    void Modify(const char* operation, Change&& change);
    void SetEnabled(const char* operation, bool enabled);
    void ChangeAllowedIp(const char* operation, const std::string& text, bool add);

    std::string id_;
    std::optional<HostSim::Firewall::RulesetRecord> record_;
    std::optional<HostSim::Firewall::Ruleset> live_;
};

}  // namespace KelmCtl::System
