// `network nic queue loadbalancer list|set`, `... state list|set` and `... plugin list|set`:
// how the netqueue load balancer treats each NIC.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "nic/NicQueueCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::PnicNetqueueParams;

// The balancer features in the record's order: output field, `set` parameter and the index of
// the supported flag that gives the first letter (-1: always "N").
struct Feature {
    const char* field;
    const char* parameter;
    const char* description;
    int supportedFlag;
};
constexpr Feature kFeatures[] = {
    {"RxQPair", "rxqpair", "Configure Rx queue pair at netqueue load balancer.", 0},
    {"RxQNoFeature", "rxqnofeat", "Configure Rx queue no feature at netqueue load balancer.", -1},
    {"PreEmptibleQ", "rxqpreempt", "Configure pre-emptible queue at netqueue load balancer.", 2},
    {"RxQLatency", "rxqlatency", "Configure Rx queue latency at netqueue load balancer.", 3},
    {"RxDynamicLB", "rxdynlb", "Configure RX dynamic load balancing at netqueue load balancer.",
     -1},
    {"DynamicQPool", "dynpoollb", "Configure Dynamic queue pool at netqueue load balancer.", 5},
    {"MacLearnLB", "maclearnlb", "Configure Mac learn load balancing at netqueue load balancer.",
     -1},
    {"RSS", "rsslb", "Configure Receive Side Scaling at netqueue load balancer.", 7},
    {"LRO", "lrolb", "Configure Large Receive Offload at netqueue load balancer.", 8},
    {"GeneveOAM", "geneveoamlb", "Configure Geneve OAM at netqueue load balancer.", 9},
    {"RSSLRO", "rsslrolb",
     "Configure Receive Side Scaling with Large Receive Offload at netqueue load balancer.", 10},
};

constexpr Field kSettingFields[] = {
    {kNicField, FieldType::String},          {kFeatures[0].field, FieldType::String},
    {kFeatures[1].field, FieldType::String}, {kFeatures[2].field, FieldType::String},
    {kFeatures[3].field, FieldType::String}, {kFeatures[4].field, FieldType::String},
    {kFeatures[5].field, FieldType::String}, {kFeatures[6].field, FieldType::String},
    {kFeatures[7].field, FieldType::String}, {kFeatures[8].field, FieldType::String},
    {kFeatures[9].field, FieldType::String}, {kFeatures[10].field, FieldType::String},
};
constexpr Declare::StructShape kSettingStruct = {"Settings", kSettingFields};
constexpr Declare::OutputParameter kSettingOutput[] = {
    {"fields:Settings",
     "NIC,RxQPair,RxQNoFeature,PreEmptibleQ,RxQLatency,RxDynamicLB,DynamicQPool,MacLearnLB,RSS,"
     "LRO,GeneveOAM,RSSLRO"},
};

constexpr Declare::Parameter kSettingSetParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true,
     "Name of hwnic to update netqueue load balancer setting."},
    {kFeatures[0].parameter, nullptr, Declare::Type::Bool, false, kFeatures[0].description},
    {kFeatures[1].parameter, nullptr, Declare::Type::Bool, false, kFeatures[1].description},
    {kFeatures[2].parameter, nullptr, Declare::Type::Bool, false, kFeatures[2].description},
    {kFeatures[3].parameter, nullptr, Declare::Type::Bool, false, kFeatures[3].description},
    {kFeatures[4].parameter, nullptr, Declare::Type::Bool, false, kFeatures[4].description},
    {kFeatures[5].parameter, nullptr, Declare::Type::Bool, false, kFeatures[5].description},
    {kFeatures[6].parameter, nullptr, Declare::Type::Bool, false, kFeatures[6].description},
    {kFeatures[7].parameter, nullptr, Declare::Type::Bool, false, kFeatures[7].description},
    {kFeatures[8].parameter, nullptr, Declare::Type::Bool, false, kFeatures[8].description},
    {kFeatures[9].parameter, nullptr, Declare::Type::Bool, false, kFeatures[9].description},
    {kFeatures[10].parameter, nullptr, Declare::Type::Bool, false, kFeatures[10].description},
};

constexpr char kEnabled[] = "Enabled";
constexpr Field kStateFields[] = {
    {kNicField, FieldType::String},
    {kEnabled, FieldType::Bool},
};
constexpr Declare::StructShape kStateStruct = {"NetqBalState", kStateFields};
constexpr Declare::OutputParameter kStateOutput[] = {
    {"fields:NetqBalState", "NIC,Enabled"},
};
constexpr Declare::Parameter kStateListParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, false,
     "The name of pnic to get netqueue balancer state"},
};
constexpr char kEnableParameter[] = "enable";
constexpr Declare::Parameter kStateSetParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true,
     "Name of hwnic to change netqueue balancer state"},
    {kEnableParameter, "e", Declare::Type::Bool, true, "Netqueue balancer state"},
};

constexpr char kModuleName[] = "Module Name";
constexpr char kPluginName[] = "Plugin Name";
constexpr char kDescription[] = "Description";
constexpr Field kPluginFields[] = {
    {kNicField, FieldType::String},    {kModuleName, FieldType::String},
    {kPluginName, FieldType::String},  {kEnabled, FieldType::Bool},
    {kDescription, FieldType::String},
};
constexpr Declare::StructShape kPluginStruct = {"NetqBalPlugin", kPluginFields};
constexpr Declare::OutputParameter kPluginOutput[] = {
    {"fields:NetqBalPlugin", "NIC,Module Name,Plugin Name,Enabled,Description"},
    {"wrap-last", "true"},
};
constexpr Declare::Parameter kPluginListParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, false,
     "The name of pnic to get netqueue plugin details"},
};
constexpr char kModuleParameter[] = "module";
constexpr char kPluginParameter[] = "plugin";
constexpr Declare::Parameter kPluginSetParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true,
     "Name of hwnic to change netqueue balancer plugin state"},
    {kEnableParameter, "e", Declare::Type::Bool, true, "Netqueue balancer plugin state"},
    {kModuleParameter, "m", Declare::Type::String, true, "Name of netqueue balancer module"},
    {kPluginParameter, "p", Declare::Type::String, true, "Name of netqueue balancer plugin"},
};

// "S" or "U" from the supported flag, "N" where the feature has none; then "A" or "D".
std::string SettingValue(const Feature& feature, const PnicNetqueueParams& params,
                         std::size_t index) {
    std::string value(1, 'N');
    if (feature.supportedFlag >= 0) {
        value[0] = params.supported[feature.supportedFlag] ? 'S' : 'U';
    }
    value += params.allowed[index] ? 'A' : 'D';
    return value;
}

// The named NIC, or null after adding "Invalid PNIC name <name>".
std::unique_ptr<HostCtl::Network::Pnic> NamedPnic(HostCtl::Network::NetworkInfo& networkInfo,
                                                  const std::string& name, Output& output) {
    auto pnic = networkInfo.GetPnicByName(name, false);
    if (!pnic) {
        output.AddErrorMessage(InvalidPnicName(name));
    }
    return pnic;
}

}  // namespace

constexpr Declare::CommandShape kNicQueueLbSettingListShape = {
    .description =
        "List the load balancer settings of all the installed and loaded physical NICs. "
        "(S:supported, U:unsupported, N:not-applicable, A:allowed, D:disallowed).",
    .formatter = "table",
    .outputParameters = kSettingOutput,
    .root = Declare::Root::List,
    .structure = &kSettingStruct,
};

constexpr Declare::CommandShape kNicQueueLbSettingSetShape = {
    .description = "Enable/disable netqueue load balancer setting on a NIC.",
    .parameters = kSettingSetParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicQueueLbStateListShape = {
    .description =
        "Netqueue balancer state of all physical NICs currently installed and loaded on the "
        "system",
    .formatter = "table",
    .outputParameters = kStateOutput,
    .parameters = kStateListParameters,
    .root = Declare::Root::List,
    .structure = &kStateStruct,
};

constexpr Declare::CommandShape kNicQueueLbStateSetShape = {
    .description = "Enable/disable netqueue balancer on a NIC",
    .parameters = kStateSetParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicQueueLbPluginListShape = {
    .description =
        "Details of netqueue balancer plugins on all physical NICs currently installed and "
        "loaded on the system",
    .formatter = "table",
    .outputParameters = kPluginOutput,
    .parameters = kPluginListParameters,
    .root = Declare::Root::List,
    .structure = &kPluginStruct,
};

constexpr Declare::CommandShape kNicQueueLbPluginSetShape = {
    .description = "Enable/disable netqueue balancer plugin on a NIC",
    .parameters = kPluginSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicQueueLbSettingList, kNicQueueLbSettingListShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        PnicNetqueueParams params;
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        for (const auto& pnic : networkInfo->GetPnics(HostCtl::Network::PnicGetAll)) {
            if (!pnic) {
                continue;
            }
            try {
                pnic->GetNetqueueParams(params);
            } catch (const HostCtl::Lib::HostCtlException&) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kNicField, pnic->GetName());
            for (std::size_t i = 0; i < std::size(kFeatures); ++i) {
                row->SetField(kFeatures[i].field, SettingValue(kFeatures[i], params, i));
            }
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicQueueLbSettingSet, kNicQueueLbSettingSetShape) {
    try {
        const std::string& name = input->GetParameter(kHwnicParameter);
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto pnic = networkInfo->GetPnicByName(name, false);
        if (!pnic) {
            output->AddErrorMessage(PnicNotFound(name));
            return;
        }
        PnicNetqueueParams params;
        for (std::size_t i = 0; i < std::size(kFeatures); ++i) {
            if (input->HasParameter(kFeatures[i].parameter)) {
                params.settingMask |= 1u << i;
                params.allowed[i] = input->GetParameterBool(kFeatures[i].parameter) ? 1 : 0;
            }
        }
        if (params.settingMask != 0) {
            pnic->SetNetqueueParams(params);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicQueueLbStateList, kNicQueueLbStateListShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        auto set = NetqueueNics(*networkInfo, *input, *output, InvalidPnicName);
        if (!set) {
            return;
        }
        list->Reserve(set->pnics.size());
        for (const auto& pnic : set->pnics) {
            if (!pnic) {
                continue;
            }
            PnicNetqueueParams params;
            try {
                pnic->GetNetqueueParams(params);
            } catch (const HostCtl::Lib::HostCtlException& e) {
                if (set->named) {
                    output->AddErrorMessage(e.what());
                    return;
                }
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kNicField, pnic->GetName());
            row->SetField(kEnabled, params.balancerEnabled != 0);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicQueueLbStateSet, kNicQueueLbStateSetShape) {
    try {
        const std::string& name = input->GetParameter(kHwnicParameter);
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto pnic = NamedPnic(*networkInfo, name, *output);
        if (!pnic) {
            return;
        }
        PnicNetqueueParams params;
        params.stateChanged = 1;
        params.balancerEnabled = input->GetParameterBool(kEnableParameter) ? 1 : 0;
        pnic->SetNetqueueParams(params);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicQueueLbPluginList, kNicQueueLbPluginListShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto set = NetqueueNics(*networkInfo, *input, *output, InvalidPnicName);
        if (!set) {
            return;
        }
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        for (const auto& pnic : set->pnics) {
            if (!pnic) {
                continue;
            }
            PnicNetqueueParams params;
            try {
                pnic->GetNetqueueParams(params);
            } catch (const HostCtl::Lib::HostCtlException& e) {
                if (set->named) {
                    output->AddErrorMessage(e.what());
                    return;
                }
                continue;
            }
            for (const auto& plugin : params.plugins) {
                auto row = GetOutputStructure();
                row->SetField(kNicField, pnic->GetName());
                bool enabled = false;
                for (const auto& active : params.activePlugins) {
                    if (active.moduleName == plugin.moduleName &&
                        active.pluginName == plugin.pluginName) {
                        enabled = true;
                        break;
                    }
                }
                row->SetField(kModuleName, plugin.moduleName);
                row->SetField(kPluginName, plugin.pluginName);
                row->SetField(kEnabled, enabled);
                row->SetField(kDescription, plugin.description);
                list->Add(row);
            }
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

// The host judges the module and plug-in names.
NETWORK_COMMAND(NicQueueLbPluginSet, kNicQueueLbPluginSetShape) {
    try {
        const std::string& name = input->GetParameter(kHwnicParameter);
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto pnic = NamedPnic(*networkInfo, name, *output);
        if (!pnic) {
            return;
        }
        PnicNetqueueParams params;
        params.activePlugins.push_back({input->GetParameter(kModuleParameter),
                                        input->GetParameter(kPluginParameter), std::string()});
        params.pluginChanged = 1;
        params.pluginEnabled = input->GetParameterBool(kEnableParameter) ? 1 : 0;
        pnic->SetNetqueueParams(params);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
