// Counting the clients of a ruleset.
#include "firewall/FirewallCommon.h"
#include "frame/Declaration.h"
#include "hostctl/Host.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr char kClientCount[] = "Ruleset Client Count";
constexpr char kClientStruct[] = "FirewallRulesetClientGet";

constexpr Declare::Parameter kParameters[] = {Firewall::kRulesetLabelParameter};

constexpr Declare::Field kClientFields[] = {{kClientCount, Declare::FieldType::Int, 1}};
constexpr Declare::StructShape kClient = {kClientStruct, kClientFields};

// Looks up the ruleset of `ruleset-id` through the host's system model and hands it to `use`.
template <class UseRuleset>
void WithRuleset(const Input& input, Output& output, UseRuleset&& use) {
    try {
        HostCtl::Host* host = HostCtl::HostFactory::GetHost();
        auto system = host->GetSystemInfo();
        auto ruleset = Firewall::FindRuleset(
            *system, input.GetParameter(Firewall::kRulesetIdParameter), output);
        if (ruleset) {
            use(*ruleset);
        }
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output.AddErrorMessage(error.what());
    }
}

}  // namespace

constexpr Declare::CommandShape kFirewallRulesetClientGetShape = {
    .description = "Show the number of clients using a firewall ruleset.",
    .formatter = "simple",
    .parameters = kParameters,
    .root = Declare::Root::Struct,
    .structure = &kClient,
};

constexpr Declare::CommandShape kFirewallRulesetClientAddShape = {
    .description =
        "Add a new client to a firewall ruleset. This enables the firewall ruleset and increments "
        "the number of clients using the ruleset.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kFirewallRulesetClientRemoveShape = {
    .description =
        "Remove a client from a firewall ruleset. This decrements the number of clients using the "
        "ruleset and if the number reaches zero the ruleset is disabled.",
    .formatter = nullptr,
    .outputParameters = {},
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(FirewallRulesetClientGet, kFirewallRulesetClientGetShape) {
    WithRuleset(*input, *output, [&](HostCtl::System::FirewallRuleset& ruleset) {
        auto client = GetOutputStructure();
        client->SetField(kClientCount, static_cast<long>(ruleset.GetClientCount()));
        output->SetRootObject(client);
    });
}

NETWORK_COMMAND(FirewallRulesetClientAdd, kFirewallRulesetClientAddShape) {
    WithRuleset(*input, *output, [&](HostCtl::System::FirewallRuleset& ruleset) {
        ruleset.AddClient();
        output->SetRootObject(MetaBool::New(true));
    });
}

NETWORK_COMMAND(FirewallRulesetClientRemove, kFirewallRulesetClientRemoveShape) {
    WithRuleset(*input, *output, [&](HostCtl::System::FirewallRuleset& ruleset) {
        ruleset.RemoveClient();
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
