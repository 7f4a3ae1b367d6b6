// `network ip get|set`: the host-wide IP setting, whether IPv6 is on.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kIpv6EnabledParameter[] = "ipv6-enabled";
constexpr char kIpv6Enabled[] = "IPv6 Enabled";

constexpr Declare::Parameter kSetParameters[] = {
    {kIpv6EnabledParameter, "e", Declare::Type::Bool, false,
     "Enable or disable IPv6 (Reboot Required)"},
};

constexpr Field kFields[] = {
    {kIpv6Enabled, FieldType::Bool},
};
constexpr Declare::StructShape kIpInfo = {"IPInfo", kFields};

}  // namespace

constexpr Declare::CommandShape kIpGetShape = {
    .description = "Get global IP settings",
    .formatter = "simple",
    .root = Declare::Root::Struct,
    .structure = &kIpInfo,
};

constexpr Declare::CommandShape kIpSetShape = {
    .description = "Update global IP settings",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
};

// Both commands make the network model ahead of their guarded block, so a failure to make it
// reaches the command host.
NETWORK_COMMAND(IpGet, kIpGetShape) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    try {
        auto result = GetOutputStructure();
        result->SetField(kIpv6Enabled, MetaBool::New(networkInfo.IsKelmIpv6Enabled()));
        output->SetRootObject(result);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpSet, kIpSetShape) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    try {
        if (input->HasParameter(kIpv6EnabledParameter)) {
            networkInfo.SetKelmIpv6Enabled(input->GetParameterBool(kIpv6EnabledParameter));
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
