// `network vswitch standard portgroup set`: the VLAN id of a port group.
#include "frame/Declaration.h"
#include "hostctl/Misc.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Network::PortGroup;

constexpr char kVlanIdParameter[] = "vlan-id";

constexpr Declare::Parameter kParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to set vlan id for."},
};

// The VLAN id parameter, whose description names the host's range.
void AddVlanIdParameter(const std::shared_ptr<InputSpec>& spec) {
    const std::string description = HostCtl::Misc::StrPrintf(
        "The vlan id for this port group. This value is in the range (%u - %u)",
        static_cast<unsigned>(PortGroup::MIN_VLAN_ID),
        static_cast<unsigned>(PortGroup::MAX_VLAN_ID));
    const Declare::Parameter vlanId[] = {
        {kVlanIdParameter, "v", Declare::Type::Int, false, description.c_str(), true,
         PortGroup::MIN_VLAN_ID, PortGroup::MAX_VLAN_ID},
    };
    AddParameters(spec, vlanId);
}

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchPortGroupSetShape = {
    .description = "Set the vlan id for the given port group",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
    .addParameters = AddVlanIdParameter,
};

NETWORK_COMMAND(VirtualSwitchPortGroupSet, kVirtualSwitchPortGroupSetShape) {
    const long vlanId = input->GetParameterInt(kVlanIdParameter);
    WithPortGroup(*input, *output, [&output, vlanId](HostCtl::Network::PortGroup& portGroup) {
        portGroup.SetVlanId(static_cast<int>(vlanId));
        output->SetRootObject(MetaBool::New(true));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
