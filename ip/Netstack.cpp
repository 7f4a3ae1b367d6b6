// `network ip netstack list|add|remove|get|set`: netstack instances.
#include "frame/Declaration.h"
#include "frame/SharedConstants.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetstackInstanceImpl.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using Declare::Type;
using HostCtl::Lib::HostCtlException;

constexpr char kNetstackParameter[] = "netstack";
constexpr char kDisabledParameter[] = "disabled";
constexpr char kEnableParameter[] = "enable";
constexpr char kNameParameter[] = "name";
constexpr char kMaxconnParameter[] = "maxconn";
constexpr char kCcalgoParameter[] = "ccalgo";
constexpr char kEcnParameter[] = "ecn";

constexpr char kKey[] = "Key";
constexpr char kName[] = "Name";
constexpr char kState[] = "State";
constexpr char kEnabled[] = "Enabled";
constexpr char kMaxConnections[] = "Max Connections";
constexpr char kCurrentMaxConnections[] = "Current Max Connections";
constexpr char kCongestionControl[] = "Congestion Control Algorithm";
constexpr char kIpv6Enabled[] = "IPv6 Enabled";
constexpr char kCurrentIpv6Enabled[] = "Current IPv6 Enabled";
constexpr char kEcnStatus[] = "ECN Status";

constexpr char kNetstackStruct[] = "NetstackInstance";
constexpr char kNetstackDescription[] = "The network stack instance";

constexpr char kNoInstance[] = "Unable to find a Netstack instance ";

// What `add` gives a new instance beside the shared defaults.
constexpr unsigned kDefaultMaxConnections = 11000;
constexpr bool kDefaultIpv6 = true;
constexpr unsigned kDefaultWorkers = 2;

constexpr Field kListFields[] = {
    {kKey, FieldType::String, 1},
    {kName, FieldType::String, 2},
    {kState, FieldType::Int, 3},
};
constexpr Declare::StructShape kListStruct = {kNetstackStruct, kListFields};

constexpr Field kGetFields[] = {
    {kKey, FieldType::String, 1},
    {kName, FieldType::String, 2},
    {kEnabled, FieldType::Bool, 3},
    {kMaxConnections, FieldType::Int, 4},
    {kCurrentMaxConnections, FieldType::Int, 5},
    {kCongestionControl, FieldType::String, 6},
    {kIpv6Enabled, FieldType::Bool, 7},
    {kCurrentIpv6Enabled, FieldType::Bool, 8},
    {kEcnStatus, FieldType::String, 9},
    {kState, FieldType::Int, 10},
};
constexpr Declare::StructShape kGetStruct = {kNetstackStruct, kGetFields};

constexpr Declare::OutputParameter kListOutput[] = {
    {"header:NetstackInstance", "%Key%"},
};

constexpr Declare::OutputParameter kGetOutput[] = {
    {"header:NetstackInstance", "%Key%"},
};

constexpr Declare::Parameter kKeyParameters[] = {
    {kNetstackParameter, "N", Type::String, true, kNetstackDescription},
};

constexpr Declare::Parameter kAddParameters[] = {
    {kNetstackParameter, "N", Type::String, true, kNetstackDescription},
    {kDisabledParameter, "d", Type::Flag, false,
     "Create the netstack instance only in config i.e. in disabled state. Does not create in "
     "kernel."},
};

// The parameters of `set` ahead of `ccalgo`, and those after it.
constexpr Declare::Parameter kSetParametersBefore[] = {
    {kNetstackParameter, "N", Type::String, true,
     "The network stack instance. This name must be an interface listed in the netstack list "
     "command."},
    {kEnableParameter, "e", Type::Bool, false, "Enable the netstack instance (create in kernel)"},
    {kNameParameter, "n", Type::String, false, "The name for this netstack instance."},
    {kMaxconnParameter, "m", Type::Int, false,
     "The maximum number of connections for this netstack instance (applied only during netstack "
     "creation)."},
};

constexpr Declare::Choice kEcnChoices[] = {
    {"disabled", "Completely disable ECN functionality"},
    {"enabled", "Fully enable ECN functionality"},
    {"echo-only", "Only echoing ECN, won't initiate"},
};

constexpr Declare::Parameter kSetParametersAfter[] = {
    {.name = kEcnParameter,
     .shortName = nullptr,
     .type = Type::String,
     .required = false,
     .description = "The status of ECN (Explicit Congestion Notification). %FULLENUM%",
     .stringChoices = kEcnChoices},
};

// After the table's parameters of `set`: `ccalgo`, whose congestion control algorithms are the
// host's, asked for each time the input spec is built, and those after it.
void AddCongestionControlAndLaterParameters(const std::shared_ptr<InputSpec>& spec) {
    auto ccalgo = CppTools::CallSpec::ParameterSpec::New(kCcalgoParameter,
                                                         CppTools::CallSpec::ParameterTypeString);
    ccalgo->SetShortName("c");
    ccalgo->SetDescription(
        "The TCP Congestion Contol Algorithm for this netstack instance (not applied to existing "
        "connections).: %FULLENUM%");
    ccalgo->SetRequired(false);
    auto algorithms =
        CppTools::CallSpec::ParameterConstraint::New(CppTools::CallSpec::ConstraintStringEnum);
    for (const std::string& name :
         KelmCtl::Network::NetstackInstanceImpl::GetCongestionControlAlgorithmList()) {
        algorithms->AddStringEnum(name, "Set " + name + " as the algorithm");
    }
    ccalgo->SetConstraint(algorithms);
    spec->AddParameter(ccalgo);
    const auto after = Declare::MakeInputSpec(kSetParametersAfter);
    for (const auto& parameter : after->GetParameters()) {
        spec->AddParameter(parameter);
    }
}

}  // namespace

constexpr Declare::CommandShape kIpNetstackInstanceListShape = {
    .description =
        "This command will list the Kelm Netstack instances currently known to the system.",
    .formatter = "simple",
    .outputParameters = kListOutput,
    .root = Declare::Root::List,
    .structure = &kListStruct,
};

NETWORK_COMMAND(IpNetstackInstanceList, kIpNetstackInstanceListShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        for (const auto& instance : networkInfo.ListNetstackInstances()) {
            if (!instance) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kKey, instance->GetKey());
            row->SetField(kName, instance->GetInstanceName());
            row->SetField(kState, static_cast<long>(instance->GetState()));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

constexpr Declare::CommandShape kIpNetstackInstanceGetShape = {
    .description = "Get runtime/configuration settings for a given Netstack Instance.",
    .formatter = "simple",
    .outputParameters = kGetOutput,
    .parameters = kKeyParameters,
    .root = Declare::Root::List,
    .structure = &kGetStruct,
};

NETWORK_COMMAND(IpNetstackInstanceGet, kIpNetstackInstanceGetShape) {
    const std::string& key = input->GetParameter(kNetstackParameter);
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        auto instance = networkInfo.LookupNetstackInstanceByKey(key);
        if (!instance) {
            output->AddErrorMessage(kNoInstance + key);
            return;
        }
        auto row = GetOutputStructure();
        row->SetField(kKey, instance->GetKey());
        row->SetField(kName, instance->GetInstanceName());
        row->SetField(kEnabled,
                      instance->GetState() == HostCtl::Network::NetstackInstance::kStateUp);
        row->SetField(kMaxConnections, static_cast<long>(instance->GetMaxConnections()));
        row->SetField(kCurrentMaxConnections,
                      static_cast<long>(instance->GetCurrentMaxConnections()));
        row->SetField(kCongestionControl, instance->GetCongestionControlAlgorithm());
        row->SetField(kIpv6Enabled, instance->GetIpv6Enabled());
        row->SetField(kCurrentIpv6Enabled, instance->GetCurrentIpv6Enabled());
        row->SetField(kEcnStatus, instance->GetEcnStatus());
        row->SetField(kState, static_cast<long>(instance->GetState()));
        list->Add(row);
        output->SetRootObject(list);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(
            std::string("Error getting Netstack instance configuration. Error was: ") + e.what());
    }
}

constexpr Declare::CommandShape kIpNetstackInstanceAddShape = {
    .description = "Add a new Netstack Instance.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpNetstackInstanceAdd, kIpNetstackInstanceAddShape) {
    try {
        const std::string& key = input->GetParameter(kNetstackParameter);
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        KelmCtl::Network::NetstackInstanceImpl instance(key, kDefaultMaxConnections,
                                                        kDefaultCongestionControl, kDefaultIpv6,
                                                        kDefaultWorkers, kDefaultEcnStatus);
        networkInfo.AddNetstackInstance(instance, input->IsFlagSet(kDisabledParameter));
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(std::string("Unable to add Netstack Instance. Error was : ") +
                                e.what());
    }
}

constexpr Declare::CommandShape kIpNetstackInstanceRemoveShape = {
    .description = "Remove a new Netstack Instance.",
    .parameters = kKeyParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpNetstackInstanceRemove, kIpNetstackInstanceRemoveShape) {
    try {
        const std::string& key = input->GetParameter(kNetstackParameter);
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        networkInfo.RemoveNetstackInstance(key, false);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(std::string("Unable to Remove Netstack Instance. Error was : ") +
                                e.what());
    }
}

constexpr Declare::CommandShape kIpNetstackInstanceSetShape = {
    .description = "Configure settings for a given Netstack Instance.",
    .parameters = kSetParametersBefore,
    .root = Declare::Root::Bool,
    .addParameters = AddCongestionControlAndLaterParameters,
};

NETWORK_COMMAND(IpNetstackInstanceSet, kIpNetstackInstanceSetShape) {
    try {
        const std::string& key = input->GetParameter(kNetstackParameter);
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        auto instance = networkInfo.LookupNetstackInstanceByKey(key);
        if (!instance) {
            output->AddErrorMessage(kNoInstance + key);
            return;
        }
        if (const std::string& name = input->GetParameter(kNameParameter); !name.empty()) {
            instance->SetInstanceName(name, true);
        }
        if (input->HasParameter(kEnableParameter)) {
            if (input->GetParameterBool(kEnableParameter)) {
                instance->Enable();
            } else {
                instance->Disable();
            }
        }
        if (input->HasParameter(kMaxconnParameter)) {
            const auto maxConnections =
                static_cast<unsigned>(input->GetParameterInt(kMaxconnParameter));
            instance->SetMaxConnections(maxConnections, true);
        }
        if (const std::string& algorithm = input->GetParameter(kCcalgoParameter);
            !algorithm.empty()) {
            instance->SetCongestionControlAlgorithm(algorithm, true);
        }
        if (input->HasParameter(kEcnParameter)) {
            instance->SetEcnStatus(input->GetParameter(kEcnParameter));
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(std::string("Error setting configuration") + e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
