// `network vswitch standard set`: the MTU and CDP status of a standard switch.
#include <algorithm>
#include <cstdint>

#include "frame/Declaration.h"
#include "frame/SharedConstants.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/PortsetImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr char kMtuParameter[] = "mtu";
constexpr char kCdpStatusParameter[] = "cdp-status";

constexpr Declare::Choice kCdpChoices[] = {
    {kCdpStatusWords[0], "CDP status is 'down'"},
    {kCdpStatusWords[1], "CDP status is 'listen'"},
    {kCdpStatusWords[2], "CDP status is 'advertise'"},
    {kCdpStatusWords[3], "CDP status is 'both'"},
};

constexpr Declare::Parameter kParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, true,
     "The name of virtual switch to apply the configurations."},
    {kMtuParameter, "m", Declare::Type::Int, false, "The MTU size of the given virtual switch. "},
    {kCdpStatusParameter,
     "c",
     Declare::Type::String,
     false,
     "The CDP status of the given virtual switch. It can be 'down', 'listen', 'advertise' or "
     "'both'",
     false,
     0,
     0,
     {},
     kCdpChoices},
};

constexpr char kNotASwitchName[] = " is not a valid name for a virtual switch";
constexpr char kNoSwitch[] = "Unable to find a virtual switch with name ";
constexpr char kNegativeMtu[] = "MTU size should be a positive value";

// The index of a CDP word; a word past the first three counts as the last.
int CdpStatusIndex(const std::string& word) {
    constexpr int kLastIndex = static_cast<int>(std::size(kCdpStatusWords)) - 1;
    const auto found =
        std::find(std::begin(kCdpStatusWords), std::begin(kCdpStatusWords) + kLastIndex, word);
    return static_cast<int>(found - std::begin(kCdpStatusWords));
}

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardSetShape = {
    .description = "This command sets the MTU size and CDP status of a given virtual switch.",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(VirtualSwitchStandardSet, kVirtualSwitchStandardSetShape) {
    const std::string& name = input->GetParameter(kVswitchNameParameter);
    try {
        if (!KelmCtl::Network::PortsetImpl::IsValidVirtualSwitch(name)) {
            output->AddErrorMessage(name + kNotASwitchName);
            return;
        }
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        auto virtualSwitch =
            switches.GetVirtualSwitchByName(name, HostCtl::Network::PortsetGetNormal);
        if (!virtualSwitch) {
            output->AddErrorMessage(kNoSwitch + name);
            return;
        }
        if (input->HasParameter(kMtuParameter)) {
            const auto mtu = static_cast<std::int32_t>(input->GetParameterInt(kMtuParameter));
            if (mtu < 0) {
                output->AddErrorMessage(kNegativeMtu);
                return;
            }
            virtualSwitch->SetMTU(mtu);
        }
        if (input->HasParameter(kCdpStatusParameter)) {
            virtualSwitch->SetCdpStatus(CdpStatusIndex(input->GetParameter(kCdpStatusParameter)));
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
