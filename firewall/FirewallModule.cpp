// Loading and unloading the firewall module, and reloading its rulesets.
#include "firewall/FirewallCommands.h"
#include "firewall/FirewallCommon.h"
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
const Declare::PackedShape FirewallLoad::kShape = Declare::Pack<kFirewallLoadShape>();

constexpr Declare::CommandShape kFirewallRefreshShape = {
    .description = "Load ruleset configuration for firewall.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = {},
    .root = Declare::Root::Bool,
};
const Declare::PackedShape FirewallRefresh::kShape = Declare::Pack<kFirewallRefreshShape>();

constexpr Declare::CommandShape kFirewallUnloadShape = {
    .description = "Allow unload firewall module.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = {},
    .root = Declare::Root::Bool,
};
const Declare::PackedShape FirewallUnload::kShape = Declare::Pack<kFirewallUnloadShape>();

void FirewallLoad::ExecuteInternal(const std::shared_ptr<Input>&,
                                   const std::shared_ptr<Output>& output) {
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

void FirewallRefresh::ExecuteInternal(const std::shared_ptr<Input>&,
                                      const std::shared_ptr<Output>& output) {
    KelmCtl::System::SystemInfoImpl system;
    Firewall::AuditChange(*output, kRefreshEvent, Firewall::kFirewallObject, [&] {
        system.LoadFirewallRulesets();
        output->SetRootObject(MetaBool::New(true));
        return true;
    });
}

void FirewallUnload::ExecuteInternal(const std::shared_ptr<Input>&,
                                     const std::shared_ptr<Output>& output) {
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
