#include "hostsim/firewall/FirewallRulesetImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"

namespace KelmCtl::System {

namespace {

using HostCtl::Lib::HostCtlException;
using HostSim::Firewall::Ruleset;
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

// The live host's sets hold a network of one address as that address, and list it so.
HostSim::Firewall::AllowedAddress AsTheTableHoldsIt(HostSim::Firewall::AllowedAddress address) {
    using HostSim::Firewall::AddressKind;
    const std::string oneAddress = address.kind == AddressKind::Ipv4Network   ? "/32"
                                   : address.kind == AddressKind::Ipv6Network ? "/128"
                                                                              : "";
    if (!oneAddress.empty() && address.text.ends_with(oneAddress)) {
        address.text.resize(address.text.size() - oneAddress.size());
        address.kind = address.kind == AddressKind::Ipv4Network ? AddressKind::Ipv4Address
                                                                : AddressKind::Ipv6Address;
    }
    return address;
}

Ruleset& RulesetOf(HostSim::Firewall::Configuration& configuration, const std::string& id) {
    for (Ruleset& ruleset : configuration.rulesets) {
        if (ruleset.id == id) {
            return ruleset;
        }
    }
    throw HostCtlException(HostSim::Firewall::NoSuchRuleset(id));
}

}  // namespace

FirewallRulesetImpl::FirewallRulesetImpl(std::string id, std::optional<RulesetRecord> record)
    : id_(std::move(id)), record_(std::move(record)) {}

FirewallRulesetImpl::FirewallRulesetImpl(std::string id, std::optional<Ruleset> ruleset)
    : id_(std::move(id)), live_(std::move(ruleset)) {
    if (live_) {
        record_ = live_->record;
    }
}

const RulesetRecord& FirewallRulesetImpl::Record(const char* operation) const {
    HostSim::PassOperation(operation, id_);
    if (!record_) {
        throw HostCtlException(HostSim::Firewall::NoSuchRuleset(id_));
    }
    return *record_;
}

// Every change is made on the ruleset as it stands where the host keeps it: in one write
// transaction of the store, or in one rewrite of the live host's table. So concurrent changes
// of the same ruleset all count; the copy follows what was written.
template <class Change>
void FirewallRulesetImpl::Modify(const char* operation, Change&& change) {
    Record(operation);
    if (auto* live = HostSim::LiveHost()) {
        auto written =
            live->Firewall().Change([&](HostSim::Firewall::Configuration& configuration) {
                change(RulesetOf(configuration, id_), nullptr);
            });
        live_ = RulesetOf(written, id_);
        record_ = live_->record;
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    auto record = HostSim::Firewall::ReadRuleset(database, id_);
    if (!record) {
        throw HostCtlException(HostSim::Firewall::NoSuchRuleset(id_));
    }
    HostSim::Firewall::RequireFirewallLoaded(database);
    Ruleset ruleset{id_, *record, {}, {}};
    change(ruleset, &database);
    HostSim::Firewall::WriteRuleset(database, id_, ruleset.record);
    transaction.Commit();
    record_ = ruleset.record;
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
    Modify(operation, [&](Ruleset& ruleset, HostSim::Database*) {
        RequireEnabledConfigurable(id_, ruleset.record);
        ruleset.record.enabled = enabled;
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
    Modify("FirewallRuleset::SetAllowedAll", [&](Ruleset& ruleset, HostSim::Database*) {
        RequireAllowedIpConfigurable(id_, ruleset.record);
        ruleset.record.allowedAll = allowedAll;
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
    for (auto& rule : live_ ? live_->rules : HostSim::Firewall::ReadRules(HostSim::Store(), id_)) {
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
    Modify("FirewallRuleset::AddClient", [](Ruleset& ruleset, HostSim::Database*) {
        RulesetRecord& record = ruleset.record;
        ++record.clients;
        if (!record.enabledFixed) {
            record.enabled = true;
        }
    });
}

void FirewallRulesetImpl::RemoveClient() {
    Modify("FirewallRuleset::RemoveClient", [&](Ruleset& ruleset, HostSim::Database*) {
        RulesetRecord& record = ruleset.record;
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
    for (const auto& address :
         live_ ? live_->addresses
               : HostSim::Firewall::ReadAllowedAddresses(HostSim::Store(), id_)) {
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

void FirewallRulesetImpl::ChangeAllowedIp(const char* operation, const std::string& text,
                                          bool add) {
    Modify(operation, [&](Ruleset& ruleset, HostSim::Database* database) {
        RequireAllowedIpConfigurable(id_, ruleset.record);
        const auto address = HostSim::Firewall::ParseAllowedAddress(text);
        if (database != nullptr) {
            add ? HostSim::Firewall::InsertAllowedAddress(*database, id_, address)
                : HostSim::Firewall::DeleteAllowedAddress(*database, id_, address);
        } else {
            add ? HostSim::Firewall::InsertAllowedAddress(ruleset, AsTheTableHoldsIt(address))
                : HostSim::Firewall::DeleteAllowedAddress(ruleset, AsTheTableHoldsIt(address));
        }
    });
}

void FirewallRulesetImpl::AddAllowedIp(const std::string& address) {
    ChangeAllowedIp("FirewallRuleset::AddAllowedIp", address, true);
}

void FirewallRulesetImpl::RemoveAllowedIp(const std::string& address) {
    ChangeAllowedIp("FirewallRuleset::RemoveAllowedIp", address, false);
}

}  // namespace KelmCtl::System
