// `network vswitch standard portgroup policy shaping get` and `... set`: traffic shaping of a
// port group, over its switch's.
#include "frame/Declaration.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Network::ShapingPolicy;

constexpr OverrideColumn kOverrides[] = {
    {"Override Vswitch Enabled", ShapingPolicy::kEnabledBit},
    {"Override Vswitch Average Bandwidth", ShapingPolicy::kAverageBit},
    {"Override Vswitch Peak Bandwidth", ShapingPolicy::kPeakBit},
    {"Override Vswitch Burst Size", ShapingPolicy::kBurstBit},
};
constexpr auto kFields = WithOverrideFields(kShapingFields, kOverrides);
constexpr Declare::StructShape kShapingPolicy = {"PortGroupTrafficShapingPolicy", kFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:PortGroupTrafficShapingPolicy", "<NONE>"},
    {"units:PortGroupTrafficShapingPolicy.Average Bandwidth", "Kbps"},
    {"units:PortGroupTrafficShapingPolicy.Peak Bandwidth", "Kbps"},
    {"units:PortGroupTrafficShapingPolicy.Burst Size", "Kib"},
};

constexpr Declare::Parameter kGetParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to use when fetching the port group shaping policy."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to set shaping policy for."},
    {kUseVswitchParameter, "u", Declare::Type::Flag, false,
     "Reset all values for this policy to use parent virtual switch's settings instead of "
     "overriding the settings for the port group. Using this in conjunction with other settings "
     "will first reset all of the fields to use the virtual switch setting and then apply the "
     "other options after the reset."},
};

// An enabled shaper needs each value from the port group or from its switch.
struct RequiredValue {
    std::uint32_t bit;
    const char* missingMessage;
};
constexpr RequiredValue kRequiredValues[] = {
    {ShapingPolicy::kPeakBit,
     "Unable to set shaping policy. A Peak BPS value must be set on either this port group or "
     "on the parent virtual switch."},
    {ShapingPolicy::kAverageBit,
     "Unable to set shaping policy. An Average BPS value must be set on either this port group "
     "or on the parent virtual switch."},
    {ShapingPolicy::kBurstBit,
     "Unable to set shaping policy. A Burst Size value must be set on either this port group or "
     "on the parent virtual switch."},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchPortGroupPolicyShapingGetShape = {
    .description = "Get the network shaping policy settings governing the given port group",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kShapingPolicy,
};

constexpr Declare::CommandShape kVirtualSwitchPortGroupPolicyShapingSetShape = {
    .description = "Set the shaping policy settings for the given port group",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
    .addParameters = AddShapingParameters,
};

NETWORK_COMMAND(VirtualSwitchPortGroupPolicyShapingGet,
                kVirtualSwitchPortGroupPolicyShapingGetShape) {
    WithPortGroup(*input, *output, [&output](HostCtl::Network::PortGroup& portGroup) {
        const auto effective = portGroup.GetEffectiveShapingPolicy();
        const auto own = portGroup.GetShapingPolicy();
        auto result = GetOutputStructure();
        RenderShapingPolicy(*result, effective);
        RenderOverrides(*result, kOverrides, own.setFields);
        output->SetRootObject(result);
    });
}

NETWORK_COMMAND(VirtualSwitchPortGroupPolicyShapingSet,
                kVirtualSwitchPortGroupPolicyShapingSetShape) {
    WithPortGroup(*input, *output, [&](HostCtl::Network::PortGroup& portGroup) {
        auto own = portGroup.GetShapingPolicy();
        if (input->IsFlagSet(kUseVswitchParameter)) {
            own.UnsetAll();
        }
        SetShapingPolicy(input, output, own, false);
        if ((own.setFields & ShapingPolicy::kEnabledBit) != 0 && own.enabled) {
            const auto effective = portGroup.GetEffectiveShapingPolicy();
            for (const RequiredValue& value : kRequiredValues) {
                if ((own.setFields & value.bit) == 0 && (effective.setFields & value.bit) == 0) {
                    output->AddErrorMessage(value.missingMessage);
                }
            }
        }
        if (!output->HasError()) {
            portGroup.SetShapingPolicy(own);
        }
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
