// What the firewall commands share: the ruleset parameter, the ruleset look-up, and audited
// changes.
#pragma once

#include <memory>
#include <string>

#include "frame/Audit.h"
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/SystemInfo.h"

namespace ZanvexCli::NetworkNamespace::Firewall {

inline constexpr char kFirewallModule[] = "ostrelfw";
inline constexpr char kFirewallObject[] = "firewall";
inline constexpr char kRuleUpdateEvent[] = "network.fw.rule.update";

inline constexpr char kRulesetIdParameter[] = "ruleset-id";
inline constexpr char kRulesetShortName[] = "r";
inline constexpr char kRulesetLabelDescription[] = "The label of the ruleset.";
inline constexpr Declare::Parameter kRulesetLabelParameter = {
    kRulesetIdParameter, kRulesetShortName, Declare::Type::String, true, kRulesetLabelDescription};

inline constexpr char kInvalidRulesetId[] = "Invalid Ruleset Id.";

// The ruleset of `id`, or null after adding "Invalid Ruleset Id." when the host has no such
// ruleset.
inline std::unique_ptr<HostCtl::System::FirewallRuleset> FindRuleset(
    HostCtl::System::SystemInfo& system, const std::string& id, Output& output) {
    auto ruleset = system.GetFirewallRulesetById(id);
    if (ruleset->IsValid()) {
        return ruleset;
    }
    output.AddErrorMessage(kInvalidRulesetId);
    return nullptr;
}

enum class Step { Changed, Unchanged, Failed };

// Runs `change`, which returns whether it changed something. A change leaves a success record of
// `event` for `object`; a HostCtlException adds its message and leaves a failure record with the
// message as its reason.
template <class Change>
Step AuditChange(Output& output, const std::string& event, const std::string& object,
                 Change&& change) {
    static constexpr char kReasonKey[] = "reason";
    using KelmCtl::Util::EmitAudit::Details::AuditImpl;
    try {
        if (!change()) {
            return Step::Unchanged;
        }
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output.AddErrorMessage(error.what());
        AuditImpl(event, object, false, kReasonKey, std::string(error.what()));
        return Step::Failed;
    }
    AuditImpl(event, object, true);
    return Step::Changed;
}

}  // namespace ZanvexCli::NetworkNamespace::Firewall
