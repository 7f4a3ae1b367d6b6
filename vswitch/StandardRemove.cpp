// `network vswitch standard remove`: removes a standard switch.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/PortsetImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr Declare::Parameter kParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to remove."},
};

constexpr char kNoSwitch[] = "Unable to find virtual switch with the name ";

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardRemoveShape = {
    .description = "Remove a virtual switch from the Ostrel networking system.",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(VirtualSwitchStandardRemove, kVirtualSwitchStandardRemoveShape) {
    const std::string& name = input->GetParameter(kVswitchNameParameter);
    try {
        if (!KelmCtl::Network::PortsetImpl::IsValidVirtualSwitch(name)) {
            output->AddErrorMessage(kNoSwitch + name);
            return;
        }
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        switches.RemoveVirtualSwitch(name);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
