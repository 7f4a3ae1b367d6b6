// `network nic cso|tso|sg get|set`: hardware offload switches, and `network nic software
// list|set`: the features the host simulates in software for a NIC.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Lib::HostCtlException;
using HostCtl::Network::PnicOffloadParams;
using HostCtl::Network::PnicSoftwareSimulation;

constexpr char kHwnic[] = "hwnic";
constexpr char kEnable[] = "enable";
constexpr char kNic[] = "NIC";
constexpr char kValue[] = "Value";
constexpr char kRxChecksum[] = "RX Checksum Offload";
constexpr char kTxChecksum[] = "TX Checksum Offload";
constexpr char kOn[] = "on";
constexpr char kOff[] = "off";
constexpr char kNotAvailable[] = "N/A";
constexpr char kPnicWithName[] = "Pnic with name ";
constexpr char kNotFound[] = " not found";
constexpr char kCantFind[] = "Can't find PNIC with name ";

const char* OnOff(std::uint8_t flag) {
    return flag != 0 ? kOn : kOff;
}

std::string NotFound(const std::string& name) {
    return kPnicWithName + name + kNotFound;
}

// One of `nic cso`, `nic tso` and `nic sg`: its value fields with their flags, and the mask
// its `set` sends.
struct Offload {
    const char* fields[2];
    std::uint8_t PnicOffloadParams::*flags[2];
    std::uint8_t changeMask;
};
constexpr Offload kCso = {{kRxChecksum, kTxChecksum},
                          {&PnicOffloadParams::rxChecksum, &PnicOffloadParams::txChecksum},
                          PnicOffloadParams::kRxChecksum | PnicOffloadParams::kTxChecksum};
constexpr Offload kTso = {
    {kValue, nullptr}, {&PnicOffloadParams::tso, nullptr}, PnicOffloadParams::kTso};
constexpr Offload kSg = {{kValue, nullptr},
                         {&PnicOffloadParams::scatterGather, nullptr},
                         PnicOffloadParams::kScatterGather};

constexpr Field kCsoFields[] = {{kNic, FieldType::String, 1},
                                {kRxChecksum, FieldType::String, 2},
                                {kTxChecksum, FieldType::String, 3}};
constexpr Field kValueFields[] = {
    {kNic, FieldType::String, 1},
    {kValue, FieldType::String, 2},
};
constexpr Declare::StructShape kCsoShape = {"CSOSettings", kCsoFields};
constexpr Declare::StructShape kTsoShape = {"TSOSettings", kValueFields};
constexpr Declare::StructShape kSgShape = {"ScatterGatherSetting", kValueFields};

constexpr Declare::Parameter kCsoGetParameters[] = {
    {kHwnic, "n", Declare::Type::String, false, "The name of pnic to get CSO settings"}};
constexpr Declare::Parameter kTsoGetParameters[] = {
    {kHwnic, "n", Declare::Type::String, false, "The name of pnic to get TSO settings"}};
constexpr Declare::Parameter kSgGetParameters[] = {
    {kHwnic, "n", Declare::Type::String, false, "The name of pnic to get scatter-gather settings"}};

constexpr Declare::Parameter EnableParameter(const char* description) {
    return {.name = kEnable,
            .shortName = "e",
            .type = Declare::Type::Int,
            .required = true,
            .description = description,
            .range = true,
            .low = 0,
            .high = 1};
}
constexpr Declare::Parameter kCsoSetParameters[] = {
    {kHwnic, "n", Declare::Type::String, true, "Name of hwnic to set offload settings."},
    EnableParameter("RX/TX checksum offload")};
constexpr Declare::Parameter kTsoSetParameters[] = {
    {kHwnic, "n", Declare::Type::String, true, "Name of hwnic to set TSO settings."},
    EnableParameter("TCP segmentation offload")};
constexpr Declare::Parameter kSgSetParameters[] = {
    {kHwnic, "n", Declare::Type::String, true,
     "Name of hwnic to configure scatter-gather settings."},
    EnableParameter("Enable/disable sacatter-gather")};

// The software simulation features in the order of the parameters and columns, each with its
// flag and its bit, which follow the record's order.
struct Feature {
    const char* parameter;
    const char* description;
    const char* field;
    std::uint8_t PnicSoftwareSimulation::*flag;
    std::uint32_t bit;
};
constexpr Feature kFeatures[] = {
    {"ipv4cso", "Configure IPv4 checksum offload software simulation.", "IPv4 CSO",
     &PnicSoftwareSimulation::ipv4Cso, 0x1},
    {"ipv4tso", "Configure IPv4 TCP segmentation offload software simulation.", "IPv4 TSO",
     &PnicSoftwareSimulation::ipv4Tso, 0x2},
    {"sg", "Configure scatter gather software simulation.", "Scatter Gather",
     &PnicSoftwareSimulation::scatterGather, 0x4},
    {"obo", "Configure offset based encapsulation offload software simulation.",
     "Offset Based Offload", &PnicSoftwareSimulation::offsetBasedOffload, 0x8},
    {"vxlanencap", "Configure VXLAN encapsulation offload software simulation.", "VXLAN Encap",
     &PnicSoftwareSimulation::vxlanEncap, 0x10},
    {"geneveoffload", "Configure Geneve encapsulation offload software simulation.",
     "Geneve Offload", &PnicSoftwareSimulation::geneveOffload, 0x2000},
    {"ipv6tso", "Configure IPv6 TCP segmentation offload software simulation.", "IPv6 TSO",
     &PnicSoftwareSimulation::ipv6Tso, 0x20},
    {"ipv6tsoext", "Configure IPv6 extend header TCP segmentation offload software simulation.",
     "IPv6 TSO Ext", &PnicSoftwareSimulation::ipv6TsoExt, 0x40},
    {"ipv6cso", "Configure IPv6 checksum offload software simulation.", "IPv6 CSO",
     &PnicSoftwareSimulation::ipv6Cso, 0x80},
    {"ipv6csoext", "Configure IPv6 extend header checksum offload software simulation.",
     "IPv6 CSO Ext", &PnicSoftwareSimulation::ipv6CsoExt, 0x100},
    {"highdma", "Configure high DMA software simulation.", "High DMA",
     &PnicSoftwareSimulation::highDma, 0x200},
    {"sgsp", "Configure scatter gather span multiple pages software simulation.",
     "Scatter Gather MP", &PnicSoftwareSimulation::scatterGatherMp, 0x400},
    {"tagging", "Configure TX VLAN tagging software simulation.", "VLAN Tagging",
     &PnicSoftwareSimulation::vlanTagging, 0x800},
    {"untagging", "Configure RX VLAN untagging software simulation.", "VLAN Untagging",
     &PnicSoftwareSimulation::vlanUntagging, 0x1000},
};

// `software set` takes a parameter per feature, and `software list` shows a column per feature.
constexpr Declare::Parameter kSoftwareSetLeadingParameters[] = {
    {kHwnic, "n", Declare::Type::String, true,
     "Name of the hwnic whose software similation settings should be updated."},
};
constexpr auto kSoftwareSetParameters = Declare::ParametersWithRows(
    kSoftwareSetLeadingParameters, kFeatures, [](const Feature& feature) -> Declare::Parameter {
        return {feature.parameter, nullptr, Declare::Type::Bool, false, feature.description};
    });
constexpr Declare::Parameter kSoftwareListParameters[] = {
    {kHwnic, "n", Declare::Type::List, false,
     "Limit the output to only the physical NICS with the specified names."}};

constexpr Field kSoftwareLeadingFields[] = {{kNic, FieldType::String, 1}};
constexpr auto kSoftwareFields =
    Declare::FieldsWithRows(kSoftwareLeadingFields, kFeatures, FieldType::String,
                            [](const Feature& feature) { return feature.field; });
constexpr Declare::StructShape kSoftwareShape = {"Settings", kSoftwareFields};

// `get` of one offload: a row per NIC, "N/A" for a NIC that can't report.
void OffloadGet(const Offload& offload, Declare::PackedStruct shape, const Input& input,
                Output& output) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, Declare::MakeStruct(shape));
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
    if (input.HasParameter(kHwnic)) {
        const std::string& nicName = input.GetParameter(kHwnic);
        auto pnic = networkInfo.GetPnicByName(nicName, false);
        if (!pnic) {
            output.AddErrorMessage(NotFound(nicName));
            return;
        }
        pnics.push_back(std::move(pnic));
    } else {
        pnics = networkInfo.GetPnics(HostCtl::Network::PnicGetAll);
    }
    for (const auto& pnic : pnics) {
        if (!pnic) {
            continue;
        }
        auto row = Declare::MakeStruct(shape);
        row->SetField(kNic, pnic->GetName());
        try {
            PnicOffloadParams params{};
            pnic->GetOffloadParams(params);
            for (std::size_t i = 0; i < 2 && offload.fields[i] != nullptr; ++i) {
                row->SetField(offload.fields[i], OnOff(params.*offload.flags[i]));
            }
        } catch (const HostCtlException&) {
            for (std::size_t i = 0; i < 2 && offload.fields[i] != nullptr; ++i) {
                row->SetField(offload.fields[i], kNotAvailable);
            }
        }
        list->Add(row);
    }
    output.SetRootObject(list);
}

// `set` of one offload on the NIC `hwnic` names, through the model the command made.
void OffloadSet(const Offload& offload, KelmCtl::Network::NetworkInfoImpl& networkInfo,
                const Input& input, Output& output) {
    const std::string& nicName = input.GetParameter(kHwnic);
    auto pnic = networkInfo.GetPnicByName(nicName, false);
    if (!pnic) {
        output.AddErrorMessage(NotFound(nicName));
        return;
    }
    PnicOffloadParams params{};
    pnic->GetOffloadParams(params);
    const std::uint8_t value = input.GetParameterInt(kEnable) != 0 ? 1 : 0;
    for (std::size_t i = 0; i < 2 && offload.flags[i] != nullptr; ++i) {
        params.*offload.flags[i] = value;
    }
    params.changeMask = offload.changeMask;
    pnic->SetOffloadParams(params);
    output.SetRootObject(MetaBool::New(true));
}

}  // namespace

constexpr Declare::CommandShape kNicCsoGetShape = {
    .description = "Get checksum offload settings",
    .formatter = "table",
    .parameters = kCsoGetParameters,
    .root = Declare::Root::List,
    .structure = &kCsoShape,
};
constexpr Declare::CommandShape kNicTsoGetShape = {
    .description = "Get TCP segmentation offload settings",
    .formatter = "table",
    .parameters = kTsoGetParameters,
    .root = Declare::Root::List,
    .structure = &kTsoShape,
};
constexpr Declare::CommandShape kNicSgGetShape = {
    .description = "Get scatter-gather settings",
    .formatter = "table",
    .parameters = kSgGetParameters,
    .root = Declare::Root::List,
    .structure = &kSgShape,
};
constexpr Declare::CommandShape kNicCsoSetShape = {
    .description = "Set checksum offload settings on a nic, which is not persistent.",
    .parameters = kCsoSetParameters,
    .root = Declare::Root::Bool,
};
constexpr Declare::CommandShape kNicTsoSetShape = {
    .description = "Set TCP segmentation offload settings on a nic, which is not persistent.",
    .parameters = kTsoSetParameters,
    .root = Declare::Root::Bool,
};
constexpr Declare::CommandShape kNicSgSetShape = {
    .description = "Set scatter-gatter settings on a nic, which is not persistent.",
    .parameters = kSgSetParameters,
    .root = Declare::Root::Bool,
};
constexpr Declare::CommandShape kNicSoftwareListShape = {
    .description =
        "List software simulation settings of physical NICs currently installed and "
        "loaded on the system.",
    .formatter = "table",
    .parameters = kSoftwareListParameters,
    .root = Declare::Root::List,
    .structure = &kSoftwareShape,
};
constexpr Declare::CommandShape kNicSoftwareSetShape = {
    .description = "Enable and disable software simulation settings on a NIC.",
    .parameters = kSoftwareSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicCsoGet, kNicCsoGetShape) {
    try {
        OffloadGet(kCso, Declare::PackStruct<kCsoShape>(), *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicTsoGet, kNicTsoGetShape) {
    try {
        OffloadGet(kTso, Declare::PackStruct<kTsoShape>(), *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicSgGet, kNicSgGetShape) {
    try {
        OffloadGet(kSg, Declare::PackStruct<kSgShape>(), *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicCsoSet, kNicCsoSetShape) {
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        OffloadSet(kCso, networkInfo, *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

// Unlike `cso set` and `sg set`, the network model is made ahead of the guarded block, so a
// failure to make it reaches the command host.
NETWORK_COMMAND(NicTsoSet, kNicTsoSetShape) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    try {
        OffloadSet(kTso, networkInfo, *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicSgSet, kNicSgSetShape) {
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        OffloadSet(kSg, networkInfo, *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicSoftwareList, kNicSoftwareListShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
        if (input->HasParameter(kHwnic)) {
            std::vector<std::string> names;
            input->GetParameterList(kHwnic, names);
            pnics.reserve(names.size());
            for (const auto& name : names) {
                auto pnic = networkInfo->GetPnicByName(name, false);
                if (!pnic) {
                    output->AddErrorMessage(kCantFind + name);
                    return;
                }
                pnics.push_back(std::move(pnic));
            }
        } else {
            pnics = networkInfo->GetPnics(HostCtl::Network::PnicGetAll);
        }
        list->Reserve(pnics.size());
        for (const auto& pnic : pnics) {
            if (!pnic) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kNic, pnic->GetName());
            try {
                PnicSoftwareSimulation settings{};
                pnic->GetSoftwareSimulation(settings);
                for (const Feature& feature : kFeatures) {
                    row->SetField(feature.field, OnOff(settings.*feature.flag));
                }
            } catch (const HostCtlException&) {
                for (const Feature& feature : kFeatures) {
                    row->SetField(feature.field, kNotAvailable);
                }
            }
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicSoftwareSet, kNicSoftwareSetShape) {
    try {
        const std::string& nicName = input->GetParameter(kHwnic);
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto pnic = networkInfo->GetPnicByName(nicName, false);
        if (!pnic) {
            output->AddErrorMessage(NotFound(nicName));
            return;
        }
        PnicSoftwareSimulation settings{};
        for (const Feature& feature : kFeatures) {
            if (input->HasParameter(feature.parameter)) {
                settings.settingMask |= feature.bit;
                settings.*feature.flag = input->GetParameterBool(feature.parameter) ? 1 : 0;
            }
        }
        if (settings.settingMask != 0) {
            pnic->SetSoftwareSimulation(settings);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
