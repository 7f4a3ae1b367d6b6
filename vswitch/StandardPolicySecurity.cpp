// `network vswitch standard policy security get` and `... set`: the port security of a
// standard switch.
#include "frame/Declaration.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr Declare::StructShape kSecurityPolicy = {"VirtualSwitchSecurityPolicy", kSecurityFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:VirtualSwitchSecurityPolicy", "<NONE>"},
};

constexpr Declare::Parameter kGetParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to use when fetching the network security policy."},
};

// Declared here rather than by AddSecurityParameters: promiscuous mode is `p` on a switch.
constexpr Declare::Parameter kSetParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to use when setting the switch security policy."},
    {kAllowPromiscuousParameter, "p", Declare::Type::Bool, false, kAllowPromiscuousDescription},
    {kAllowMacChangeParameter, "m", Declare::Type::Bool, false, kAllowMacChangeDescription},
    {kAllowForgedTransmitsParameter, "f", Declare::Type::Bool, false,
     kAllowForgedTransmitsDescription},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardPolicySecurityGetShape = {
    .description = "Get the Security Policy governing the given virtual switch.",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kSecurityPolicy,
};

constexpr Declare::CommandShape kVirtualSwitchStandardPolicySecuritySetShape = {
    .description = "Set the security policy for a given virtual switch",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(VirtualSwitchStandardPolicySecurityGet,
                kVirtualSwitchStandardPolicySecurityGetShape) {
    WithLegacySwitch(*input, *output, [&output](HostCtl::Network::VirtualSwitch& virtualSwitch) {
        auto result = GetOutputStructure();
        RenderSecurityPolicy(*result, virtualSwitch.GetEffectiveSecurityPolicy());
        output->SetRootObject(result);
    });
}

// Writes the effective policy back with the values given, also when none is given.
NETWORK_COMMAND(VirtualSwitchStandardPolicySecuritySet,
                kVirtualSwitchStandardPolicySecuritySetShape) {
    WithLegacySwitch(*input, *output, [&](HostCtl::Network::VirtualSwitch& virtualSwitch) {
        HostCtl::Network::PortSecurityPolicy policy = virtualSwitch.GetEffectiveSecurityPolicy();
        SetSecurityPolicy(input, output, policy);
        virtualSwitch.SetSecurityPolicy(policy);
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
