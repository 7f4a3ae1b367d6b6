// `network vswitch standard portgroup add` and `... remove`: port groups of a standard switch.
// The host judges the names; a switch it does not know is refused as `standard set` does.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Network::VirtualSwitch;

constexpr Declare::Parameter kAddParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true,
     "The name of the port group to add"},
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The virtual switch to add the port group to."},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kPortgroupNameParameter, "p", Declare::Type::String, true, " "},
    {kVswitchNameParameter, "v", Declare::Type::String, true, " "},
};

constexpr char kNoSwitch[] = "Unable to find a virtual switch with name ";

// Applies `change` with the port group's name to the named switch and answers true.
void ChangePortGroups(const Input& input, Output& output,
                      void (*change)(VirtualSwitch&, const std::string&)) {
    const std::string& portGroupName = input.GetParameter(kPortgroupNameParameter);
    const std::string& switchName = input.GetParameter(kVswitchNameParameter);
    try {
        auto virtualSwitch = HostCtl::Network::NetworkFactory::GetVirtualSwitchById(
            switchName, HostCtl::Network::PortsetGetNormal);
        if (!virtualSwitch) {
            throw HostCtl::Lib::HostCtlException(kNoSwitch + switchName);
        }
        change(*virtualSwitch, portGroupName);
        output.SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output.AddErrorMessage(e.what());
    }
}

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchPortGroupAddShape = {
    .description = "Allows the addition of a standard port group to a virtual switch.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kVirtualSwitchPortGroupRemoveShape = {
    .description = "Remove a port group from the given virtual switch",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(VirtualSwitchPortGroupAdd, kVirtualSwitchPortGroupAddShape) {
    ChangePortGroups(*input, *output, [](VirtualSwitch& virtualSwitch, const std::string& name) {
        virtualSwitch.AddPortGroup(name);
    });
}

NETWORK_COMMAND(VirtualSwitchPortGroupRemove, kVirtualSwitchPortGroupRemoveShape) {
    ChangePortGroups(*input, *output, [](VirtualSwitch& virtualSwitch, const std::string& name) {
        virtualSwitch.RemovePortGroup(name);
    });
}

}  // namespace ZanvexCli::NetworkNamespace
