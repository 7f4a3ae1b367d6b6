// `network vswitch standard add`: a new standard switch with the host's default policies.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using namespace HostCtl::Network;

constexpr char kPortsParameter[] = "ports";
// Longer names are refused before the host is asked.
constexpr std::size_t kMaximumNameLength = 127;
constexpr char kNameTooLong[] = "The virtual switch name exceeds the maximum allowed length. ";

constexpr Declare::Parameter kParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of the virtual switch to create."},
    {kPortsParameter, "P", Declare::Type::Int, false,
     "The number of ports to give this newly created virtual switch. Maximum ports per virtual "
     "switch is 4096. If no value is given the default value(128) is used. The number of ports "
     "is limited by the number of already allocated ports on the host. The system wide port "
     "count cannot be greater than 4608.",
     true, 1, 4096},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardAddShape = {
    .description = "Add a new virtual switch to the Ostrel networking system.",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(VirtualSwitchStandardAdd, kVirtualSwitchStandardAddShape) {
    try {
        const std::string& name = input->GetParameter(kVswitchNameParameter);
        if (name.size() > kMaximumNameLength) {
            output->AddErrorMessage(kNameTooLong);
            return;
        }
        unsigned ports = Portset::DEF_NUM_PORTS;
        if (input->HasParameter(kPortsParameter)) {
            ports = static_cast<unsigned>(input->GetParameterInt(kPortsParameter));
        }
        const NicTeamingPolicy teaming = NicTeamingPolicy::GetDefaultPolicy();
        const PortSecurityPolicy security = PortSecurityPolicy::GetDefaultPolicy();
        const ShapingPolicy shaping = ShapingPolicy::GetDefaultPolicy();
        const NicCapabilities capabilities = NicCapabilities::GetDefaultPolicy();
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        switches.AddVirtualSwitchWithPolicy(teaming, security, shaping, capabilities, name, ports);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
