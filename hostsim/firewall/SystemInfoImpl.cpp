// The firewall as a whole, and the ways in to the system model. On the live host the firewall is
// its nftables table: the table's flags and base chains hold the state, its chains the rulesets.
#include "kelmctl/SystemInfoImpl.h"

#include "hostctl/Host.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/firewall/FirewallRulesetImpl.h"
#include "hostsim/firewall/FirewallStore.h"
#include "hostsim/linux/LiveHost.h"

namespace KelmCtl::System {

namespace {

// A fresh firewall is as an empty host has it until it is set.
using FirewallState = HostSim::Firewall::StateRecord;

FirewallState ReadState(HostSim::Database& database) {
    return HostSim::Firewall::ReadState(database).value_or(FirewallState{});
}

// Reads the state of the loaded firewall.
FirewallState ReadLoadedState(const char* operation) {
    HostSim::PassOperation(operation);
    if (auto* live = HostSim::LiveHost()) {
        const auto configuration = live->Firewall().Read();
        return {configuration.enabled, configuration.pass};
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::Firewall::RequireFirewallLoaded(database);
    return ReadState(database);
}

// Changes the state of the loaded firewall in one write transaction.
template <class Change>
void ChangeLoadedFirewall(const char* operation, Change&& change) {
    HostSim::PassOperation(operation);
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::Firewall::RequireFirewallLoaded(database);
    change(database);
    transaction.Commit();
}

void WriteState(const char* operation, void (*change)(FirewallState&, bool), bool value) {
    if (auto* live = HostSim::LiveHost()) {
        HostSim::PassOperation(operation);
        live->Firewall().Change([&](HostSim::Firewall::Configuration& configuration) {
            FirewallState state{configuration.enabled, configuration.pass};
            change(state, value);
            configuration.enabled = state.enabled;
            configuration.pass = state.pass;
        });
        return;
    }
    ChangeLoadedFirewall(operation, [&](HostSim::Database& database) {
        FirewallState state = ReadState(database);
        change(state, value);
        HostSim::Firewall::WriteState(database, state);
    });
}

}  // namespace

SystemInfoImpl::SystemInfoImpl() = default;
SystemInfoImpl::~SystemInfoImpl() = default;

bool SystemInfoImpl::IsFirewallEnabled() {
    return ReadLoadedState("SystemInfo::IsFirewallEnabled").enabled;
}

void SystemInfoImpl::SetFirewallEnabled(bool enabled) {
    WriteState(
        "SystemInfo::SetFirewallEnabled",
        [](FirewallState& state, bool value) { state.enabled = value; }, enabled);
}

bool SystemInfoImpl::GetFirewallDefaultAction() {
    return ReadLoadedState("SystemInfo::GetFirewallDefaultAction").pass;
}

void SystemInfoImpl::SetFirewallDefaultAction(bool pass) {
    WriteState(
        "SystemInfo::SetFirewallDefaultAction",
        [](FirewallState& state, bool value) { state.pass = value; }, pass);
}

// The rulesets go into the module as filters, which then hold it in use. The live host writes
// its table anew from the rulesets it holds, so that every filter is again as they say.
void SystemInfoImpl::LoadFirewallRulesets() {
    if (auto* live = HostSim::LiveHost()) {
        HostSim::PassOperation("SystemInfo::LoadFirewallRulesets");
        live->Firewall().Change([](HostSim::Firewall::Configuration&) {});
        return;
    }
    ChangeLoadedFirewall("SystemInfo::LoadFirewallRulesets", [](HostSim::Database& database) {
        HostSim::Firewall::SetFirewallModuleUsers(database, 1);
    });
}

// Nothing holds the live host's table in use: its filters go with it when it is unloaded, so
// here it need only be there.
void SystemInfoImpl::DestroyFirewallFilters() {
    if (auto* live = HostSim::LiveHost()) {
        HostSim::PassOperation("SystemInfo::DestroyFirewallFilters");
        live->Firewall().Read();
        return;
    }
    ChangeLoadedFirewall("SystemInfo::DestroyFirewallFilters", [](HostSim::Database& database) {
        HostSim::Firewall::SetFirewallModuleUsers(database, 0);
    });
}

std::unique_ptr<HostCtl::System::FirewallRuleset> SystemInfoImpl::GetFirewallRulesetById(
    const std::string& id) {
    HostSim::PassOperation("SystemInfo::GetFirewallRulesetById", id);
    if (auto* live = HostSim::LiveHost()) {
        for (auto& ruleset : live->Firewall().Read().rulesets) {
            if (ruleset.id == id) {
                return std::make_unique<FirewallRulesetImpl>(id, std::optional(std::move(ruleset)));
            }
        }
        return std::make_unique<FirewallRulesetImpl>(id,
                                                     std::optional<HostSim::Firewall::Ruleset>());
    }
    return std::make_unique<FirewallRulesetImpl>(
        id, HostSim::Firewall::ReadRuleset(HostSim::Store(), id));
}

std::vector<std::unique_ptr<HostCtl::System::FirewallRuleset>>
SystemInfoImpl::GetFirewallRulesets() {
    HostSim::PassOperation("SystemInfo::GetFirewallRulesets");
    std::vector<std::unique_ptr<HostCtl::System::FirewallRuleset>> rulesets;
    if (auto* live = HostSim::LiveHost()) {
        for (auto& ruleset : live->Firewall().Read().rulesets) {
            std::string id = ruleset.id;
            rulesets.push_back(std::make_unique<FirewallRulesetImpl>(
                std::move(id), std::optional(std::move(ruleset))));
        }
        return rulesets;
    }
    for (auto& [id, record] : HostSim::Firewall::ReadRulesets(HostSim::Store())) {
        rulesets.push_back(std::make_unique<FirewallRulesetImpl>(std::move(id), record));
    }
    return rulesets;
}

}  // namespace KelmCtl::System

namespace HostCtl {

std::unique_ptr<System::SystemInfo> Host::GetSystemInfo() {
    HostSim::PassOperation("Host::GetSystemInfo");
    return std::make_unique<KelmCtl::System::SystemInfoImpl>();
}

Host* HostFactory::GetHost() {
    HostSim::PassOperation("HostFactory::GetHost");
    static Host host;
    return &host;
}

}  // namespace HostCtl
