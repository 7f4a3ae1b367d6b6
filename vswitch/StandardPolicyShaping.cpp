// `network vswitch standard policy shaping get` and `... set`: the traffic shaping of a
// standard switch.
#include "frame/Declaration.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr Declare::StructShape kShapingPolicy = {"VirtualSwitchTrafficShapingPolicy",
                                                 kShapingFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:VirtualSwitchTrafficShapingPolicy", "<NONE>"},
    {"units:VirtualSwitchTrafficShapingPolicy.Average Bandwidth", "Kbps"},
    {"units:VirtualSwitchTrafficShapingPolicy.Peak Bandwidth", "Kbps"},
    {"units:VirtualSwitchTrafficShapingPolicy.Burst Size", "Kib"},
};

constexpr Declare::Parameter kGetParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to use when fetching the switch shaping policy."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to use when setting the switch shaping policy."},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardPolicyShapingGetShape = {
    .description = "Get the shaping policy settings for the given virtual switch",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kShapingPolicy,
};

constexpr Declare::CommandShape kVirtualSwitchStandardPolicyShapingSetShape = {
    .description = "Set the shaping policy settings for the given virtual switch",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
    .addParameters = AddShapingParameters,
};

NETWORK_COMMAND(VirtualSwitchStandardPolicyShapingGet,
                kVirtualSwitchStandardPolicyShapingGetShape) {
    WithLegacySwitch(*input, *output, [&output](HostCtl::Network::VirtualSwitch& virtualSwitch) {
        auto result = GetOutputStructure();
        RenderShapingPolicy(*result, virtualSwitch.GetEffectiveShapingPolicy());
        output->SetRootObject(result);
    });
}

// A standard switch edits its effective policy, so the values it inherits become its own.
NETWORK_COMMAND(VirtualSwitchStandardPolicyShapingSet,
                kVirtualSwitchStandardPolicyShapingSetShape) {
    WithLegacySwitch(*input, *output, [&](HostCtl::Network::VirtualSwitch& virtualSwitch) {
        HostCtl::Network::ShapingPolicy policy = virtualSwitch.GetEffectiveShapingPolicy();
        SetShapingPolicy(input, output, policy, false);
        if (!output->HasError()) {
            virtualSwitch.SetShapingPolicy(policy);
        }
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
