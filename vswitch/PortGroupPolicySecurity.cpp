// `network vswitch standard portgroup policy security get` and `... set`: port security of a
// port group, over its switch's.
#include "frame/Declaration.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Network::PortSecurityPolicy;

constexpr OverrideColumn kOverrides[] = {
    {"Override Vswitch Allow Promiscuous", PortSecurityPolicy::kPromiscuousBit},
    {"Override Vswitch Allow MAC Address Change", PortSecurityPolicy::kMacChangeBit},
    {"Override Vswitch Allow Forged Transmits", PortSecurityPolicy::kForgedTransmitsBit},
};
constexpr auto kFields = WithOverrideFields(kSecurityFields, kOverrides);
constexpr Declare::StructShape kSecurityPolicy = {"PortGroupSecurityPolicy", kFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:PortGroupSecurityPolicy", "<NONE>"},
};

constexpr Declare::Parameter kGetParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to use when fetching the network security policy."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to set security policy for."},
    {kUseVswitchParameter, "u", Declare::Type::Flag, false,
     "Reset all values for this policy to use parent virtual switch's settings instead of "
     "overriding the settings for the port group.   Using this in conjunction with other "
     "settings will first reset all of the fields to use the virtual switch setting and then "
     "apply the other options after the reset."},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchPortGroupPolicySecurityGetShape = {
    .description = "Get the Security Policy governing the given port group. ",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kSecurityPolicy,
};

constexpr Declare::CommandShape kVirtualSwitchPortGroupPolicySecuritySetShape = {
    .description = "Set the security policy for a given port group",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
    .addParameters = AddSecurityParameters,
};

NETWORK_COMMAND(VirtualSwitchPortGroupPolicySecurityGet,
                kVirtualSwitchPortGroupPolicySecurityGetShape) {
    WithPortGroup(*input, *output, [&output](HostCtl::Network::PortGroup& portGroup) {
        const auto effective = portGroup.GetEffectiveSecurityPolicy();
        const auto own = portGroup.GetSecurityPolicy();
        auto result = GetOutputStructure();
        RenderSecurityPolicy(*result, effective);
        RenderOverrides(*result, kOverrides, own.setFields);
        output->SetRootObject(result);
    });
}

NETWORK_COMMAND(VirtualSwitchPortGroupPolicySecuritySet,
                kVirtualSwitchPortGroupPolicySecuritySetShape) {
    WithPortGroup(*input, *output, [&](HostCtl::Network::PortGroup& portGroup) {
        auto own = portGroup.GetSecurityPolicy();
        if (input->IsFlagSet(kUseVswitchParameter)) {
            own.UnsetAll();
        }
        SetSecurityPolicy(input, output, own);
        if (!output->HasError()) {
            portGroup.SetSecurityPolicy(own);
        }
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
