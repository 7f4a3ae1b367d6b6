// `network vswitch standard policy failover get` and `... set`: NIC teaming and failover of a
// standard switch.
#include "hostctl/HostCtlException.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"
#include "vswitch/VswitchCommands.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr Declare::StructShape kFailoverPolicy = {"VirtualSwitchFailoverPolicy", kFailoverFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"fields:VirtualSwitchFailoverPolicy",
     "Load Balancing,Network Failure Detection,Notify Switches,Failback,Active Adapters,Standby "
     "Adapters,Unused Adapters"},
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

const Declare::CommandShape VirtualSwitchStandardPolicyFailoverGet::kShape = {
    .description = "Get the failover policy settings governing the given virtual switch",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kFailoverPolicy,
};

const Declare::CommandShape VirtualSwitchStandardPolicyFailoverSet::kShape = {
    .description = "Configure the Failover policy for a virtual switch.",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
};

void VirtualSwitchStandardPolicyFailoverGet::ExecuteInternal(
    const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output) {
    const std::string& name = input->GetParameter(kVswitchNameParameter);
    try {
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        auto virtualSwitch = FindLegacySwitch(switches, name, *output);
        if (!virtualSwitch) {
            return;
        }
        const auto policy = virtualSwitch->GetEffectiveTeamingPolicy();
        auto result = GetOutputStructure();
        RenderFailoverPolicy(*result, policy, virtualSwitch->GetUplinks(false));
        output->SetRootObject(result);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

void VirtualSwitchStandardPolicyFailoverSet::ExecuteInternal(
    const std::shared_ptr<Input>& input, const std::shared_ptr<Output>& output) {
    const std::string& name = input->GetParameter(kVswitchNameParameter);
    try {
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        auto virtualSwitch = FindLegacySwitch(switches, name, *output);
        if (!virtualSwitch) {
            return;
        }
        const auto effective = virtualSwitch->GetEffectiveTeamingPolicy();
        auto own = virtualSwitch->GetTeamingPolicy();
        const auto connected = virtualSwitch->GetUplinks(false);
        SetFailoverPolicy(input, output, own, effective, connected);
        if (!output->HasError()) {
            virtualSwitch->SetTeamingPolicy(own);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
