// Adding and removing allowed addresses of a ruleset.
#include "firewall/FirewallCommon.h"
#include "frame/Declaration.h"
#include "kelmctl/SystemInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::System::FirewallRuleset;

constexpr char kIpAddress[] = "ip-address";
constexpr char kAllowedAllSet[] = "Couldn't update allowed ip list when allowed-all flag is true.";
constexpr char kInvalidAllowedIp[] = "Invalid allowedip parameter.";

constexpr Declare::Parameter kParameters[] = {
    Firewall::kRulesetLabelParameter,
    {kIpAddress, "i", Declare::Type::String, true, "Allowed ip address/range for the ruleset."},
};

using AllowedIpChange = void (FirewallRuleset::*)(const std::string&);

// Checks the ruleset and the address, then makes `change`; every outcome past the look-up of
// the ruleset is audited, the look-up's own failure included.
void ChangeAllowedIp(const Input& input, Output& output, AllowedIpChange change) {
    KelmCtl::System::SystemInfoImpl system;
    const std::string& id = input.GetParameter(Firewall::kRulesetIdParameter);
    const std::string& address = input.GetParameter(kIpAddress);
    const Firewall::Step step = Firewall::AuditChange(output, Firewall::kRuleUpdateEvent, id, [&] {
        auto ruleset = Firewall::FindRuleset(system, id, output);
        if (!ruleset) {
            return false;
        }
        if (ruleset->IsAllowedAll()) {
            output.AddErrorMessage(kAllowedAllSet);
            return false;
        }
        if (address.empty()) {
            throw HostCtl::Lib::HostCtlException(kInvalidAllowedIp);
        }
        ((*ruleset).*change)(address);
        return true;
    });
    if (step == Firewall::Step::Changed) {
        output.SetRootObject(MetaBool::New(true));
    }
}

}  // namespace

constexpr Declare::CommandShape kFirewallRulesetAllowedipAddShape = {
    .description = "Add allowed IP address/range to the ruleset.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kFirewallRulesetAllowedipRemoveShape = {
    .description = "Remove allowed IP address/range from the ruleset.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(FirewallRulesetAllowedipAdd, kFirewallRulesetAllowedipAddShape) {
    ChangeAllowedIp(*input, *output, &FirewallRuleset::AddAllowedIp);
}

NETWORK_COMMAND(FirewallRulesetAllowedipRemove, kFirewallRulesetAllowedipRemoveShape) {
    ChangeAllowedIp(*input, *output, &FirewallRuleset::RemoveAllowedIp);
}

}  // namespace ZanvexCli::NetworkNamespace
