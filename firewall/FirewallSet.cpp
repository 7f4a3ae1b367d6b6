#include "firewall/FirewallCommon.h"
#include "frame/Declaration.h"
#include "kelmctl/ModuleImpl.h"
#include "kelmctl/SystemInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr char kEnabled[] = "enabled";
constexpr char kDefaultAction[] = "default-action";
constexpr char kNeedParameter[] = "Need parameter --enabled or --default-action";
constexpr char kNotLoaded[] = "Firewall module is not loaded";
constexpr char kEnableEvent[] = "network.fw.enable";
constexpr char kDisableEvent[] = "network.fw.disable";
constexpr char kDefaultPolicyEvent[] = "network.fw.defaultpolicy";

constexpr Declare::Parameter kParameters[] = {
    {kEnabled, "e", Declare::Type::Bool, false,
     "Set to true to enable the firewall, set to false to disable the firewall."},
    {kDefaultAction, "d", Declare::Type::Bool, false,
     "Set to true to set defaultaction PASS, set to false to DROP."},
};

}  // namespace

constexpr Declare::CommandShape kFirewallSetShape = {
    .description = "Set firewall enabled status and default action.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(FirewallSet, kFirewallSetShape) {
    using Firewall::AuditChange;
    using Firewall::Step;
    try {
        KelmCtl::System::SystemInfoImpl system;
        const bool changeEnabled = input->HasParameter(kEnabled);
        const bool changeAction = input->HasParameter(kDefaultAction);
        if (!changeEnabled && !changeAction) {
            output->AddErrorMessage(kNeedParameter);
            return;
        }
        KelmCtl::System::ModuleImpl module(Firewall::kFirewallModule);
        if (!module.IsLoaded()) {
            output->AddErrorMessage(kNotLoaded);
            return;
        }
        const bool enabled = system.IsFirewallEnabled();
        const bool pass = system.GetFirewallDefaultAction();
        const char* enableEvent = enabled ? kDisableEvent : kEnableEvent;
        if (changeEnabled) {
            const bool wanted = input->GetParameterBool(kEnabled);
            const Step step = AuditChange(*output, enableEvent, Firewall::kFirewallObject, [&] {
                if (wanted == enabled) {
                    return false;
                }
                system.SetFirewallEnabled(wanted);
                return true;
            });
            if (step == Step::Failed) {
                return;
            }
        }
        if (changeAction) {
            const bool wanted = input->GetParameterBool(kDefaultAction);
            const Step step =
                AuditChange(*output, kDefaultPolicyEvent, Firewall::kFirewallObject, [&] {
                    if (wanted == pass) {
                        return false;
                    }
                    system.SetFirewallDefaultAction(wanted);
                    return true;
                });
            if (step == Step::Failed) {
                return;
            }
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output->AddErrorMessage(error.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
