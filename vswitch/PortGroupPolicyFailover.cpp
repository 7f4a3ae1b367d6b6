// `network vswitch standard portgroup policy failover get` and `... set`: NIC teaming and
// failover of a port group, over its switch's.
#include "frame/Declaration.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Network::NicTeamingPolicy;

constexpr OverrideColumn kOverrides[] = {
    {"Override Vswitch Load Balancing", NicTeamingPolicy::kTeamPolicyBit},
    {"Override Vswitch Network Failure Detection", NicTeamingPolicy::kLinkCriteriaBit},
    {"Override Vswitch Notify Switches", NicTeamingPolicy::kNotifySwitchBit},
    {"Override Vswitch Failback", NicTeamingPolicy::kRollingRestorationBit},
    {"Override Vswitch Uplinks", NicTeamingPolicy::kUplinksBit},
};
constexpr auto kFields = WithOverrideFields(kFailoverFields, kOverrides);
constexpr Declare::StructShape kFailoverPolicy = {"PortGroupFailoverPolicy", kFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:PortGroupFailoverPolicy", "<NONE>"},
};

constexpr Declare::Parameter kGetParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to use when fetching the port group failover policy."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to set failover policy for."},
    {kUseVswitchParameter, "u", Declare::Type::Flag, false,
     "Reset all values for this policy to use parent virtual switch's settings instead of "
     "overriding the settings for the port group. Using this in conjunction with other settings "
     "will first reset all of the fields to use the virtual switch setting and then apply the "
     "other options after the reset."},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchPortGroupPolicyFailoverGetShape = {
    .description = "Get the network failover policy settings governing the given port group",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kFailoverPolicy,
};

constexpr Declare::CommandShape kVirtualSwitchPortGroupPolicyFailoverSetShape = {
    .description =
        "Configure the Failover policy for a port group. These setting may "
        "potentially override virtual switch settings.",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
    .addParameters = AddFailoverParameters,
};

NETWORK_COMMAND(VirtualSwitchPortGroupPolicyFailoverGet,
                kVirtualSwitchPortGroupPolicyFailoverGetShape) {
    WithPortGroup(*input, *output, [&output](HostCtl::Network::PortGroup& portGroup) {
        const auto parent = portGroup.GetVirtualSwitch();
        const auto effective = portGroup.GetEffectiveTeamingPolicy();
        const auto own = portGroup.GetTeamingPolicy();
        auto result = GetOutputStructure();
        RenderFailoverPolicy(*result, effective, parent->GetUplinks(false));
        RenderOverrides(*result, kOverrides, own.setFields);
        output->SetRootObject(result);
    });
}

NETWORK_COMMAND(VirtualSwitchPortGroupPolicyFailoverSet,
                kVirtualSwitchPortGroupPolicyFailoverSetShape) {
    WithPortGroup(*input, *output, [&](HostCtl::Network::PortGroup& portGroup) {
        const auto effective = portGroup.GetEffectiveTeamingPolicy();
        auto own = portGroup.GetTeamingPolicy();
        const auto connected = portGroup.GetVirtualSwitch()->GetUplinks(false);
        if (input->IsFlagSet(kUseVswitchParameter)) {
            own.UnsetAll();
        }
        SetFailoverPolicy(input, output, own, effective, connected);
        if (!output->HasError()) {
            portGroup.SetTeamingPolicy(own);
        }
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
