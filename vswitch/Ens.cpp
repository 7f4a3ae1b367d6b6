// `network ens`: the maximum of ENS contexts, the contexts, and each context's switch and NUMA
// affinity. Each command makes one host call (`lcore list` a few) and shows what the host
// answers; a refusal of the host is a false root, with no message.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::NetworkFactory;
using HostCtl::Network::NetworkInfo;

constexpr char kMaxLcoresParameter[] = "maxlcores";
constexpr char kLcoreIdParameter[] = "lcore-id";
constexpr char kSwitchParameter[] = "switch";
constexpr char kAffinityParameter[] = "affinity";

constexpr char kNoSwitch[] = "null";
constexpr char kContextId[] = "ENS context id.";

constexpr char kLcoreIdField[] = "Lcore ID";
constexpr char kSwitchField[] = "Switch";
constexpr char kAffinityField[] = "Affinity";

constexpr Field kEnsFields[] = {
    {kLcoreIdField, FieldType::Int, 1},
    {kSwitchField, FieldType::String, 2},
    {kAffinityField, FieldType::Int, 3},
};
constexpr Declare::StructShape kEns = {"Ens", kEnsFields};

constexpr Declare::Parameter kMaxLcoresParameters[] = {
    {kMaxLcoresParameter, "n", Declare::Type::Int, true,
     "Number of maximum ENS contexts to be assigned."},
};
constexpr Declare::Parameter kAddParameters[] = {
    {kLcoreIdParameter, "l", Declare::Type::Int, true, "ENS context id to be created."},
};
constexpr Declare::Parameter kRemoveParameters[] = {
    {kLcoreIdParameter, "l", Declare::Type::Int, true, "ENS context id to be destroyed."},
};
constexpr Declare::Parameter kLcoreParameters[] = {
    {kLcoreIdParameter, "l", Declare::Type::Int, true, kContextId},
};
constexpr Declare::Parameter kSwitchAddParameters[] = {
    {kLcoreIdParameter, "l", Declare::Type::Int, true, kContextId},
    {kSwitchParameter, "s", Declare::Type::String, true, "Switch name."},
};
constexpr Declare::Parameter kAffinitySetParameters[] = {
    {kLcoreIdParameter, "l", Declare::Type::Int, true, kContextId},
    {kAffinityParameter, "a", Declare::Type::Int, true, "Numa node affinity."},
};

std::uint64_t LcoreId(const Input& input) {
    return static_cast<std::uint64_t>(input.GetParameterInt(std::string(kLcoreIdParameter)));
}

// Runs `call`; a HostCtlException becomes the one error message.
template <class Call>
void Guarded(Output& output, Call call) {
    try {
        call();
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output.AddErrorMessage(e.what());
    }
}

// Runs `call` on the host's network root, made inside the guard.
template <class Call>
void WithNetworkInfo(Output& output, Call call) {
    Guarded(output, [&] {
        std::unique_ptr<NetworkInfo> info = NetworkFactory::GetNetworkInfo();
        call(*info);
    });
}

// Runs `call` on the host's network root, made ahead of the guard: a failure to make it
// reaches the command host.
template <class Call>
void WithNetworkInfoMadeAhead(Output& output, Call call) {
    std::unique_ptr<NetworkInfo> info = NetworkFactory::GetNetworkInfo();
    Guarded(output, [&] { call(*info); });
}

}  // namespace

constexpr Declare::CommandShape kEnsMaxlcoresGetShape = {
    .description = "Get the maximum number of ENS contexts (lcores).",
    .formatter = "simple",
    .root = Declare::Root::Int,
};

NETWORK_COMMAND(EnsMaxlcoresGet, kEnsMaxlcoresGetShape) {
    WithNetworkInfo(*output, [&](NetworkInfo& info) {
        output->SetRootObject(MetaInt::New(static_cast<long>(info.GetEnsMaxLcores())));
    });
}

constexpr Declare::CommandShape kEnsMaxlcoresSetShape = {
    .description = "Set the maximum number of ENS contexts.",
    .parameters = kMaxLcoresParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(EnsMaxlcoresSet, kEnsMaxlcoresSetShape) {
    WithNetworkInfo(*output, [&](NetworkInfo& info) {
        const auto count =
            static_cast<std::uint32_t>(input->GetParameterInt(std::string(kMaxLcoresParameter)));
        output->SetRootObject(MetaBool::New(info.SetEnsMaxLcores(count)));
    });
}

constexpr Declare::CommandShape kEnsLcoreAddShape = {
    .description = "Create ENS context.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(EnsLcoreAdd, kEnsLcoreAddShape) {
    WithNetworkInfoMadeAhead(*output, [&](NetworkInfo& info) {
        output->SetRootObject(MetaBool::New(info.CreateEnsLcore(LcoreId(*input))));
    });
}

constexpr Declare::CommandShape kEnsLcoreRemoveShape = {
    .description = "Destroy ENS context.",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(EnsLcoreRemove, kEnsLcoreRemoveShape) {
    WithNetworkInfo(*output, [&](NetworkInfo& info) {
        output->SetRootObject(MetaBool::New(info.DestroyEnsLcore(LcoreId(*input))));
    });
}

constexpr Declare::CommandShape kEnsLcoreListShape = {
    .description = "List ENS contexts.",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kEns,
};

NETWORK_COMMAND(EnsLcoreList, kEnsLcoreListShape) {
    WithNetworkInfo(*output, [&](NetworkInfo& info) {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const std::vector<std::uint64_t> ids = info.GetEnsLcores();
        list->Reserve(ids.size());
        for (const std::uint64_t id : ids) {
            auto row = GetOutputStructure();
            row->SetField(kLcoreIdField, static_cast<long>(id));
            row->SetField(kSwitchField, info.GetEnsLcoreSwitch(id));
            row->SetField(kAffinityField, static_cast<long>(info.GetEnsLcoreAffinity(id)));
            list->Add(row);
        }
        output->SetRootObject(list);
    });
}

constexpr Declare::CommandShape kEnsLcoreSwitchGetShape = {
    .description = "Get the switch associated with given ENS context.",
    .formatter = "simple",
    .parameters = kLcoreParameters,
    .root = Declare::Root::String,
};

NETWORK_COMMAND(EnsLcoreSwitchGet, kEnsLcoreSwitchGetShape) {
    WithNetworkInfo(*output, [&](NetworkInfo& info) {
        output->SetRootObject(MetaString::New(info.GetEnsLcoreSwitch(LcoreId(*input))));
    });
}

constexpr Declare::CommandShape kEnsLcoreSwitchAddShape = {
    .description = "Associate given ENS context with given switch.",
    .parameters = kSwitchAddParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(EnsLcoreSwitchAdd, kEnsLcoreSwitchAddShape) {
    WithNetworkInfo(*output, [&](NetworkInfo& info) {
        output->SetRootObject(MetaBool::New(info.SetEnsLcoreSwitch(
            input->GetParameter(std::string(kSwitchParameter)), LcoreId(*input))));
    });
}

constexpr Declare::CommandShape kEnsLcoreSwitchRemoveShape = {
    .description = "Disassociate given ENS context from virtual switch.",
    .parameters = kLcoreParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(EnsLcoreSwitchRemove, kEnsLcoreSwitchRemoveShape) {
    WithNetworkInfo(*output, [&](NetworkInfo& info) {
        output->SetRootObject(MetaBool::New(info.SetEnsLcoreSwitch(kNoSwitch, LcoreId(*input))));
    });
}

constexpr Declare::CommandShape kEnsLcoreAffinityGetShape = {
    .description = "Get the affinity for given ENS context.",
    .formatter = "simple",
    .parameters = kLcoreParameters,
    .root = Declare::Root::Int,
};

NETWORK_COMMAND(EnsLcoreAffinityGet, kEnsLcoreAffinityGetShape) {
    WithNetworkInfoMadeAhead(*output, [&](NetworkInfo& info) {
        output->SetRootObject(
            MetaInt::New(static_cast<long>(info.GetEnsLcoreAffinity(LcoreId(*input)))));
    });
}

constexpr Declare::CommandShape kEnsLcoreAffinitySetShape = {
    .description = "Set affinity for given ENS context.",
    .parameters = kAffinitySetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(EnsLcoreAffinitySet, kEnsLcoreAffinitySetShape) {
    WithNetworkInfoMadeAhead(*output, [&](NetworkInfo& info) {
        const auto affinity =
            static_cast<std::int32_t>(input->GetParameterInt(std::string(kAffinityParameter)));
        output->SetRootObject(MetaBool::New(info.SetEnsLcoreAffinity(affinity, LcoreId(*input))));
    });
}

}  // namespace ZanvexCli::NetworkNamespace
