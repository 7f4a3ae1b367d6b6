// `network vswitch standard uplink add` and `... uplink remove`: attach a NIC to a standard
// switch or detach it. The host judges the NIC's name.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::Network::VirtualSwitch;

constexpr Declare::Parameter kAddParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to add an uplink to."},
    {kUplinkNameParameter, "u", Declare::Type::String, true,
     "The name of the uplink to add to the virtual switch."},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to remove an uplink from."},
    {kUplinkNameParameter, "u", Declare::Type::String, true,
     "The name of the uplink to remove from the virtual switch."},
};

// Applies `change` with the uplink to the named switch, when there is one, and answers true.
void ChangeUplink(const Input& input, Output& output,
                  void (*change)(VirtualSwitch&, const std::string&)) {
    const std::string& switchName = input.GetParameter(kVswitchNameParameter);
    const std::string& uplinkName = input.GetParameter(kUplinkNameParameter);
    try {
        auto virtualSwitch = HostCtl::Network::NetworkFactory::GetVirtualSwitchById(
            switchName, HostCtl::Network::PortsetGetNormal);
        if (virtualSwitch) {
            change(*virtualSwitch, uplinkName);
        }
        output.SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output.AddErrorMessage(e.what());
    }
}

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardUplinkAddShape = {
    .description =
        "Add an uplink to the given virtual switch. Note if this virtual switch has a "
        "NIC teaming policy assigned to it then the policy must also be modified to "
        "enable use of this uplink on this virtual switch",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kVirtualSwitchStandardUplinkRemoveShape = {
    .description =
        "Remove an uplink from the given virtual switch. Note if this virtual switch "
        "has a NIC teaming policy assigned to it then the policy must also be "
        "modified to disable use of this uplink on this virtual switch",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(VirtualSwitchStandardUplinkAdd, kVirtualSwitchStandardUplinkAddShape) {
    ChangeUplink(*input, *output, [](VirtualSwitch& virtualSwitch, const std::string& uplink) {
        virtualSwitch.AddUplink(uplink, true);
    });
}

NETWORK_COMMAND(VirtualSwitchStandardUplinkRemove, kVirtualSwitchStandardUplinkRemoveShape) {
    ChangeUplink(*input, *output, [](VirtualSwitch& virtualSwitch, const std::string& uplink) {
        virtualSwitch.RemoveUplink(uplink, false);
    });
}

}  // namespace ZanvexCli::NetworkNamespace
