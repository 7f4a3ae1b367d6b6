#include "hostsim/firewall/FirewallRulesetImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"

namespace KelmCtl::System {

namespace {

using HostCtl::Lib::HostCtlException;
using HostSim::Firewall::RulesetRecord;

void RequireEnabledConfigurable(const std::string& id, const RulesetRecord& record) {
    if (record.enabledFixed) {
        throw HostCtlException("The enabled state of ruleset " + id +
                               " is fixed and cannot be changed");
    }
}

void RequireAllowedIpConfigurable(const std::string& id, const RulesetRecord& record) {
    if (record.allowedIpFixed) {
        throw HostCtlException("The allowed IP settings of ruleset " + id +
                               " are fixed and cannot be changed");
    }
}

}  // namespace

FirewallRulesetImpl::FirewallRulesetImpl(std::string id, std::optional<RulesetRecord> record)
    : id_(std::move(id)), record_(std::move(record)) {}

const RulesetRecord& FirewallRulesetImpl::Record(const char* operation) const {
    HostSim::PassOperation(operation, id_);
    if (!record_) {
        throw HostCtlException(HostSim::Firewall::NoSuchRuleset(id_));
    }
    return *record_;
}

// Every change is one write transaction on the ruleset as it stands in the store, so that
// concurrent changes of the same ruleset all count; the copy follows what was written.
template <class Change>
void FirewallRulesetImpl::Modify(const char* operation, Change&& change) {
    Record(operation);
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    auto record = HostSim::Firewall::ReadRuleset(database, id_);
    if (!record) {
        throw HostCtlException(HostSim::Firewall::NoSuchRuleset(id_));
    }
    HostSim::Firewall::RequireFirewallLoaded(database);
    change(database, *record);
    HostSim::Firewall::WriteRuleset(database, id_, *record);
    transaction.Commit();
    record_ = record;
}

std::string FirewallRulesetImpl::GetRulesetId() const {
    HostSim::PassOperation("FirewallRuleset::GetRulesetId", id_);
    return id_;
}

bool FirewallRulesetImpl::IsValid() const {
    HostSim::PassOperation("FirewallRuleset::IsValid", id_);
    return record_.has_value();
}

bool FirewallRulesetImpl::IsEnabled() const {
    return Record("FirewallRuleset::IsEnabled").enabled;
}

void FirewallRulesetImpl::SetEnabled(const char* operation, bool enabled) {
    Modify(operation, [&](HostSim::Database&, RulesetRecord& record) {
        RequireEnabledConfigurable(id_, record);
        record.enabled = enabled;
    });
}

void FirewallRulesetImpl::Enable() {
    SetEnabled("FirewallRuleset::Enable", true);
}

void FirewallRulesetImpl::Disable() {
    SetEnabled("FirewallRuleset::Disable", false);
}

bool FirewallRulesetImpl::IsAllowedAll() const {
    return Record("FirewallRuleset::IsAllowedAll").allowedAll;
}

void FirewallRulesetImpl::SetAllowedAll(bool allowedAll) {
    Modify("FirewallRuleset::SetAllowedAll", [&](HostSim::Database&, RulesetRecord& record) {
        RequireAllowedIpConfigurable(id_, record);
        record.allowedAll = allowedAll;
    });
}

void FirewallRulesetImpl::CheckConfigurable(int setting, bool internal) const {
    const RulesetRecord& record = Record("FirewallRuleset::CheckConfigurable");
    if (internal) {
        return;
    }
    switch (setting) {
        case HostCtl::System::FirewallSettingEnabled:
            RequireEnabledConfigurable(id_, record);
            return;
        case HostCtl::System::FirewallSettingAllowedIp:
            RequireAllowedIpConfigurable(id_, record);
            return;
        default:
            throw HostCtlException("There is no ruleset setting " + std::to_string(setting));
    }
}

bool FirewallRulesetImpl::IsEnabledFixed() const {
    return Record("FirewallRuleset::IsEnabledFixed").enabledFixed;
}

bool FirewallRulesetImpl::IsAllowedIpFixed() const {
    return Record("FirewallRuleset::IsAllowedIpFixed").allowedIpFixed;
}

std::vector<std::unique_ptr<HostCtl::System::FirewallPortRule>> FirewallRulesetImpl::GetRules()
    const {
    Record("FirewallRuleset::GetRules");
    std::vector<std::unique_ptr<HostCtl::System::FirewallPortRule>> rules;
    for (auto& rule : HostSim::Firewall::ReadRules(HostSim::Store(), id_)) {
        rules.push_back(std::make_unique<HostCtl::System::FirewallPortRule>(std::move(rule)));
    }
    return rules;
}

std::int32_t FirewallRulesetImpl::GetClientCount() const {
    return Record("FirewallRuleset::GetClientCount").clients;
}

// A client is one of the host's own services: a fixed enabled state binds users, not them,
// yet it is left as it is.
void FirewallRulesetImpl::AddClient() {
    Modify("FirewallRuleset::AddClient", [](HostSim::Database&, RulesetRecord& record) {
        ++record.clients;
        if (!record.enabledFixed) {
            record.enabled = true;
        }
    });
}

void FirewallRulesetImpl::RemoveClient() {
    Modify("FirewallRuleset::RemoveClient", [&](HostSim::Database&, RulesetRecord& record) {
        if (record.clients == 0) {
            throw HostCtlException("Ruleset " + id_ + " has no clients to remove");
        }
        --record.clients;
        if (record.clients == 0 && !record.enabledFixed) {
            record.enabled = false;
        }
    });
}

std::unique_ptr<HostCtl::System::AllowedIpList> FirewallRulesetImpl::GetAllowedIpList() const {
    using HostSim::Firewall::AddressKind;
    Record("FirewallRuleset::GetAllowedIpList");
    auto list = std::make_unique<HostCtl::System::AllowedIpList>();
    for (const auto& address : HostSim::Firewall::ReadAllowedAddresses(HostSim::Store(), id_)) {
        switch (address.kind) {
            case AddressKind::Ipv4Address:
                list->ipv4Addresses.emplace_back(address.text);
                break;
            case AddressKind::Ipv4Network:
                list->ipv4Networks.emplace_back(address.text);
                break;
            case AddressKind::Ipv6Address:
                list->ipv6Addresses.emplace_back(address.text);
                break;
            case AddressKind::Ipv6Network:
                list->ipv6Networks.emplace_back(address.text);
                break;
        }
    }
    return list;
}

void FirewallRulesetImpl::AddAllowedIp(const std::string& address) {
    Modify("FirewallRuleset::AddAllowedIp",
           [&](HostSim::Database& database, RulesetRecord& record) {
               RequireAllowedIpConfigurable(id_, record);
               HostSim::Firewall::InsertAllowedAddress(
                   database, id_, HostSim::Firewall::ParseAllowedAddress(address));
           });
}

void FirewallRulesetImpl::RemoveAllowedIp(const std::string& address) {
    Modify("FirewallRuleset::RemoveAllowedIp",
           [&](HostSim::Database& database, RulesetRecord& record) {
               RequireAllowedIpConfigurable(id_, record);
               HostSim::Firewall::DeleteAllowedAddress(
                   database, id_, HostSim::Firewall::ParseAllowedAddress(address));
           });
}

}  // namespace KelmCtl::System
