// Loading and unloading the firewall module, and reloading its rulesets.
#include "firewall/FirewallCommon.h"
#include "frame/Declaration.h"
#include "kelmctl/ModuleImpl.h"
#include "kelmctl/SystemInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {
constexpr char kRefreshEvent[] = "network.fw.refresh";
}  // namespace

constexpr Declare::CommandShape kFirewallLoadShape = {
    .description = "Load firewall module and rulesets configuration.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = {},
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kFirewallRefreshShape = {
    .description = "Load ruleset configuration for firewall.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = {},
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kFirewallUnloadShape = {
    .description = "Allow unload firewall module.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = {},
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(FirewallLoad, kFirewallLoadShape) {
    try {
        KelmCtl::System::SystemInfoImpl system;
        KelmCtl::System::ModuleImpl module(Firewall::kFirewallModule);
        module.Load(HostCtl::emptyString, false);
        system.LoadFirewallRulesets();
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output->AddErrorMessage(error.what());
    }
}

NETWORK_COMMAND(FirewallRefresh, kFirewallRefreshShape) {
    KelmCtl::System::SystemInfoImpl system;
    Firewall::AuditChange(*output, kRefreshEvent, Firewall::kFirewallObject, [&] {
        system.LoadFirewallRulesets();
        output->SetRootObject(MetaBool::New(true));
        return true;
    });
}

NETWORK_COMMAND(FirewallUnload, kFirewallUnloadShape) {
    try {
        KelmCtl::System::SystemInfoImpl system;
        KelmCtl::System::ModuleImpl module(Firewall::kFirewallModule);
        if (module.IsLoaded()) {
            // The filters hold the module in use, so they go first.
            system.DestroyFirewallFilters();
            module.Unload();
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output->AddErrorMessage(error.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
