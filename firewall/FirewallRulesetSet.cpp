#include "firewall/FirewallCommon.h"
#include "frame/Declaration.h"
#include "kelmctl/SystemInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr char kAllowedAll[] = "allowed-all";
constexpr char kEnabled[] = "enabled";
constexpr char kNeedParameter[] = "Need parameter --enabled or --allowed-all";
constexpr char kAlreadyAllowedAll[] = "Already allowed all ip";
constexpr char kAlreadyAllowedList[] = "Already use allowed ip list";
constexpr char kRuleEnableEvent[] = "network.fw.rule.enable";
constexpr char kRuleDisableEvent[] = "network.fw.rule.disable";

constexpr Declare::Parameter kParameters[] = {
    Firewall::kRulesetLabelParameter,
    {kAllowedAll, "a", Declare::Type::Bool, false,
     "Set to true to allowed all ip, set to false to use allowed ip list."},
    {kEnabled, "e", Declare::Type::Bool, false,
     "Set to true to enable ruleset, set to false to disable it."},
};

}  // namespace

constexpr Declare::CommandShape kFirewallRulesetSetShape = {
    .description = "Set firewall ruleset status (allowedAll flag and enabled status).",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(FirewallRulesetSet, kFirewallRulesetSetShape) {
    using Firewall::AuditChange;
    using Firewall::Step;
    using HostCtl::System::FirewallSettingAllowedIp;
    using HostCtl::System::FirewallSettingEnabled;

    KelmCtl::System::SystemInfoImpl system;
    const std::string& id = input->GetParameter(Firewall::kRulesetIdParameter);
    const bool changeAllowedAll = input->HasParameter(kAllowedAll);
    const bool changeEnabled = input->HasParameter(kEnabled);
    if (!changeAllowedAll && !changeEnabled) {
        output->AddErrorMessage(kNeedParameter);
        return;
    }
    std::unique_ptr<HostCtl::System::FirewallRuleset> ruleset;
    try {
        ruleset = Firewall::FindRuleset(system, id, *output);
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output->AddErrorMessage(error.what());
        return;
    }
    if (!ruleset) {
        return;
    }

    // The reads of the present state are not expected to fail, and are not guarded.
    const bool allowedAll = ruleset->IsAllowedAll();
    if (changeAllowedAll) {
        // Asking for the flag already in force is refused, and audited as a failure.
        const Step step = AuditChange(*output, Firewall::kRuleUpdateEvent, id, [&] {
            ruleset->CheckConfigurable(FirewallSettingAllowedIp, false);
            const bool wanted = input->GetParameterBool(kAllowedAll);
            if (wanted == allowedAll) {
                throw HostCtl::Lib::HostCtlException(allowedAll ? kAlreadyAllowedAll
                                                                : kAlreadyAllowedList);
            }
            ruleset->SetAllowedAll(wanted);
            return true;
        });
        if (step == Step::Failed) {
            return;
        }
    }

    const bool enabled = ruleset->IsEnabled();
    const char* enableEvent = enabled ? kRuleDisableEvent : kRuleEnableEvent;
    if (changeEnabled) {
        const Step step = AuditChange(*output, enableEvent, id, [&] {
            ruleset->CheckConfigurable(FirewallSettingEnabled, false);
            if (input->GetParameterBool(kEnabled) == enabled) {
                return false;
            }
            if (enabled) {
                ruleset->Disable();
            } else {
                ruleset->Enable();
            }
            return true;
        });
        if (step == Step::Failed) {
            return;
        }
    }
    output->SetRootObject(MetaBool::New(true));
}

}  // namespace ZanvexCli::NetworkNamespace
