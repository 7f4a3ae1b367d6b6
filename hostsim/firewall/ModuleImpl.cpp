// Kernel modules: the host keeps a row for each loaded module, with how many users hold it. On
// the live host the firewall's module stands for the firewall's nftables table, loaded while
// the table is there; Linux has no counterpart for the others.
#include "kelmctl/ModuleImpl.h"

#include <optional>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/firewall/FirewallStore.h"
#include "hostsim/linux/LiveHost.h"

namespace KelmCtl::System {

namespace {

// The live host's firewall when the module is the firewall's; null on the simulated host.
HostSim::Live::FirewallDriver* LiveFirewall(const std::string& name) {
    auto* live = HostSim::LiveHost();
    if (live == nullptr) {
        return nullptr;
    }
    if (name != HostSim::Firewall::kModuleName) {
        throw HostCtl::Lib::HostCtlException(HostSim::Live::kNotAvailable);
    }
    return &live->Firewall();
}

}  // namespace

ModuleImpl::ModuleImpl(std::string name) : name_(std::move(name)) {}

void ModuleImpl::Refresh() {
    HostSim::PassOperation("ModuleImpl::Refresh", name_);
    if (auto* firewall = LiveFirewall(name_)) {
        notLoaded_ = !firewall->IsLoaded();
        return;
    }
    notLoaded_ = !HostSim::Firewall::IsModuleLoaded(HostSim::Store(), name_);
}

// Loading a loaded module keeps it as it is. A new table of the live host holds the default
// host's rulesets in a firewall that passes what none of them accepts: loading it cuts no
// connection of the machine, and `firewall set --default-action=false` then makes it drop.
void ModuleImpl::Load(const std::string& options, bool persistent) {
    HostSim::PassOperation("ModuleImpl::Load", name_);
    if (auto* firewall = LiveFirewall(name_)) {
        firewall->Load(
            {.enabled = true, .pass = true, .rulesets = HostSim::Firewall::DefaultRulesets()});
        stale_ = true;
        return;
    }
    HostSim::CheckStoredText(options, "module options");
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    static const std::string sql =
        HostSim::InsertStatement("kernel_module", HostSim::Firewall::kModuleColumns) +
        " ON CONFLICT DO NOTHING";
    auto statement = database.Query(sql.c_str());
    const HostSim::Firewall::ModuleRecord module = {
        .name = name_, .options = options, .persistent = persistent};
    HostSim::BindColumns(statement, 1, HostSim::Firewall::kModuleColumns, module);
    statement.Run();
    transaction.Commit();
    stale_ = true;
}

void ModuleImpl::Unload() {
    HostSim::PassOperation("ModuleImpl::Unload", name_);
    if (auto* firewall = LiveFirewall(name_)) {
        firewall->Unload();
        stale_ = true;
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    std::optional<std::int64_t> users;
    {
        auto row = database.Query("SELECT users FROM kernel_module WHERE name = ?1");
        row.Bind(1, name_);
        if (row.Step()) {
            users = row.Int(0);
        }
    }
    if (!users) {
        throw HostCtl::Lib::HostCtlException("Module " + name_ + " is not loaded");
    }
    if (*users > 0) {
        throw HostCtl::Lib::HostCtlException("Module " + name_ + " is in use");
    }
    database.Query("DELETE FROM kernel_module WHERE name = ?1").Bind(1, name_).Run();
    transaction.Commit();
    stale_ = true;
}

}  // namespace KelmCtl::System
