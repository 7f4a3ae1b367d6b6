// `network nic up` and `network nic down`: the administrative link state of a NIC.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "nic/NicCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr Declare::Parameter kParameters[] = {
    {kNicNameParameter, "n", Declare::Type::String, true, kNicNameDescription},
};

// Brings the NIC up or down and sets a true root; a missing NIC or a host failure leaves one
// error message.
void SetLinkState(KelmCtl::Network::NetworkInfoImpl& networkInfo, const std::string& nicName,
                  bool up, Output& output) {
    auto pnic = FindPnic(networkInfo, nicName, output);
    if (!pnic) {
        return;
    }
    pnic->SetLinkState(up);
    output.SetRootObject(MetaBool::New(true));
}

}  // namespace

constexpr Declare::CommandShape kNicUpShape = {
    .description = "Bring up the specified network device.",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicDownShape = {
    .description = "Bring down the specified network device.",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicUp, kNicUpShape) {
    const std::string& nicName = input->GetParameter(kNicNameParameter);
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        SetLinkState(networkInfo, nicName, true, *output);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

// Unlike `nic up`, the network model is made ahead of the guarded block, so a failure to make
// it reaches the command host.
NETWORK_COMMAND(NicDown, kNicDownShape) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    try {
        SetLinkState(networkInfo, input->GetParameter(kNicNameParameter), false, *output);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
