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

constexpr Field kSettingLeadingFields[] = {{kNicField, FieldType::String, 1}};
constexpr auto kSettingFields =
    Declare::FieldsWithRows(kSettingLeadingFields, kFeatures, FieldType::String,
                            [](const Feature& feature) { return feature.field; });
constexpr Declare::StructShape kSettingStruct = {"Settings", kSettingFields};

constexpr Declare::Parameter kSettingSetLeadingParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true,
     "Name of hwnic to update netqueue load balancer setting."},
};
constexpr auto kSettingSetParameters = Declare::ParametersWithRows(
    kSettingSetLeadingParameters, kFeatures, [](const Feature& feature) -> Declare::Parameter {
        return {feature.parameter, nullptr, Declare::Type::Bool, false, feature.description};
    });

constexpr char kEnabled[] = "Enabled";
constexpr Field kStateFields[] = {
    {kNicField, FieldType::String, 1},
    {kEnabled, FieldType::Bool, 2},
};
constexpr Declare::StructShape kStateStruct = {"NetqBalState", kStateFields};
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
    {kNicField, FieldType::String, 1},    {kModuleName, FieldType::String, 2},
    {kPluginName, FieldType::String, 3},  {kEnabled, FieldType::Bool, 4},
    {kDescription, FieldType::String, 5},
};
constexpr Declare::StructShape kPluginStruct = {"NetqBalPlugin", kPluginFields};
constexpr Declare::OutputParameter kPluginOutput[] = {
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
