// `network vswitch dvs zanvex lacp timeout set`: the short or long LACP timeout for the NICs of
// a LAG, or for one of them.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

constexpr char kTimeoutParameter[] = "timeout";
constexpr char kNicNameParameter[] = "nic-name";
constexpr char kLagIdParameter[] = "lag-id";
constexpr char kOdsParameter[] = "ods";

constexpr Declare::Parameter kParameters[] = {
    {kTimeoutParameter, "t", Declare::Type::Bool, true,
     "Set long or short timeout: 1 for short timeout and 0 for long timeout."},
    {kNicNameParameter, "n", Declare::Type::String, false,
     "The nic name. If it is set, then only this hwnic in the lag will be configured."},
    {kLagIdParameter, "l", Declare::Type::Int, true, "The ID of LAG to be configured."},
    {kOdsParameter, "s", Declare::Type::String, true, "The name of ODS."},
};

constexpr char kTimeoutEmpty[] = "Timeout is empty";
constexpr char kOdsEmpty[] = "ODS name is empty";
constexpr char kLagIdEmpty[] = "LAG ID is empty";

}  // namespace

constexpr Declare::CommandShape kLacpSetTimeoutShape = {
    .description = "Set long/short timeout for hwnics in one LACP LAG",
    .parameters = kParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(LacpSetTimeout, kLacpSetTimeoutShape) {
    try {
        if (!input->HasParameter(kTimeoutParameter)) {
            output->AddErrorMessage(kTimeoutEmpty);
            return;
        }
        const bool timeout = input->GetParameterBool(kTimeoutParameter);
        if (!input->HasParameter(kOdsParameter)) {
            output->AddErrorMessage(kOdsEmpty);
            return;
        }
        auto dvSwitch =
            HostCtl::Network::NetworkFactory::GetDVSwitchByName(input->GetParameter(kOdsParameter));
        if (!input->HasParameter(kLagIdParameter)) {
            output->AddErrorMessage(kLagIdEmpty);
            return;
        }
        const long lagId = input->GetParameterInt(kLagIdParameter);
        const std::string nicName =
            input->HasParameter(kNicNameParameter) ? input->GetParameter(kNicNameParameter) : "";
        dvSwitch->SetLacpTimeout(static_cast<int>(lagId), timeout, nicName);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
