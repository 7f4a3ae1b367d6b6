// `network vswitch standard policy failover get` and `... set`: NIC teaming and failover of a
// standard switch.
#include "frame/Declaration.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr Declare::StructShape kFailoverPolicy = {"VirtualSwitchFailoverPolicy", kFailoverFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:VirtualSwitchFailoverPolicy", "<NONE>"},
};

constexpr Declare::Parameter kGetParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to use when fetching the switch failover policy."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to use when configuring the switch failover policy."},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardPolicyFailoverGetShape = {
    .description = "Get the failover policy settings governing the given virtual switch",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kFailoverPolicy,
};

constexpr Declare::CommandShape kVirtualSwitchStandardPolicyFailoverSetShape = {
    .description = "Configure the Failover policy for a virtual switch.",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
    .addParameters = AddFailoverParameters,
};

NETWORK_COMMAND(VirtualSwitchStandardPolicyFailoverGet,
                kVirtualSwitchStandardPolicyFailoverGetShape) {
    WithLegacySwitch(*input, *output, [&output](HostCtl::Network::VirtualSwitch& virtualSwitch) {
        const auto policy = virtualSwitch.GetEffectiveTeamingPolicy();
        auto result = GetOutputStructure();
        RenderFailoverPolicy(*result, policy, virtualSwitch.GetUplinks(false));
        output->SetRootObject(result);
    });
}

NETWORK_COMMAND(VirtualSwitchStandardPolicyFailoverSet,
                kVirtualSwitchStandardPolicyFailoverSetShape) {
    WithLegacySwitch(*input, *output, [&](HostCtl::Network::VirtualSwitch& virtualSwitch) {
        const auto effective = virtualSwitch.GetEffectiveTeamingPolicy();
        auto own = virtualSwitch.GetTeamingPolicy();
        const auto connected = virtualSwitch.GetUplinks(false);
        SetFailoverPolicy(input, output, own, effective, connected);
        if (!output->HasError()) {
            virtualSwitch.SetTeamingPolicy(own);
        }
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
