// `network nic ring preset|current get`, `network nic ring current set`: the sizes of a NIC's
// descriptor rings; `network nic pauseParams list|set`: its flow-control pause parameters.
#include <optional>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Lib::HostCtlException;
using HostCtl::Network::PnicPauseParams;
using HostCtl::Network::PnicRingParams;

constexpr char kNicName[] = "nic-name";
constexpr char kRx[] = "rx";
constexpr char kRxMini[] = "rx-mini";
constexpr char kRxJumbo[] = "rx-jumbo";
constexpr char kTx[] = "tx";
constexpr char kAuto[] = "auto";
constexpr char kNicWithName[] = "NIC with name ";
constexpr char kNotFound[] = " not found";

constexpr char kRxField[] = "RX";
constexpr char kRxMiniField[] = "RX Mini";
constexpr char kRxJumboField[] = "RX Jumbo";
constexpr char kTxField[] = "TX";
constexpr char kMaxRxField[] = "Max RX";
constexpr char kMaxRxMiniField[] = "Max RX Mini";
constexpr char kMaxRxJumboField[] = "Max RX Jumbo";
constexpr char kMaxTxField[] = "Max TX";

constexpr Field kPresetFields[] = {
    {kRxField, FieldType::Int},
    {kRxMiniField, FieldType::Int},
    {kRxJumboField, FieldType::Int},
    {kTxField, FieldType::Int},
    {kMaxRxField, FieldType::Int, 1},
    {kMaxRxMiniField, FieldType::Int, 2},
    {kMaxRxJumboField, FieldType::Int, 3},
    {kMaxTxField, FieldType::Int, 4},
};
constexpr Field kCurrentFields[] = {
    {kRxField, FieldType::Int, 1},
    {kRxMiniField, FieldType::Int, 2},
    {kRxJumboField, FieldType::Int, 3},
    {kTxField, FieldType::Int, 4},
};
constexpr Declare::StructShape kPresetShape = {"RingInfo", kPresetFields};
constexpr Declare::StructShape kCurrentShape = {"RingInfo", kCurrentFields};

constexpr Declare::Parameter kPresetParameters[] = {
    {kNicName, "n", Declare::Type::String, true,
     "The name of the NIC whose preset maximums for RX/TX ring buffer parameters should be "
     "retrieved."}};
constexpr Declare::Parameter kCurrentGetParameters[] = {
    {kNicName, "n", Declare::Type::String, true,
     "The name of the NIC whose current RX/TX ring buffer parameters should be retrieved."}};
constexpr Declare::Parameter kCurrentSetParameters[] = {
    {kNicName, "n", Declare::Type::String, true,
     "The name of the NIC whose current RX/TX ring buffer parameters should be set."},
    {kRx, "r", Declare::Type::Int, false, "Number of ring entries for the RX ring."},
    {kRxMini, "m", Declare::Type::Int, false, "Number of ring entries for the RX mini ring."},
    {kRxJumbo, "j", Declare::Type::Int, false, "Number of ring entries for the RX jumbo ring."},
    {kTx, "t", Declare::Type::Int, false, "Number of ring entries for the TX ring."},
};

// The sizes of a ring record with their parameters and bits, in the record's order.
struct RingSize {
    const char* parameter;
    std::uint32_t PnicRingParams::*size;
    std::uint8_t bit;
};
constexpr RingSize kRingSizes[] = {
    {kRx, &PnicRingParams::rx, PnicRingParams::kRx},
    {kRxMini, &PnicRingParams::rxMini, PnicRingParams::kRxMini},
    {kRxJumbo, &PnicRingParams::rxJumbo, PnicRingParams::kRxJumbo},
    {kTx, &PnicRingParams::tx, PnicRingParams::kTx},
};

constexpr char kSupported[] = "Pause Params Supported";
constexpr char kAutoNegotiation[] = "Auto Negotiation";
constexpr char kPauseRx[] = "Pause RX";
constexpr char kPauseTx[] = "Pause TX";
constexpr char kResolutionAvail[] = "Auto Negotiation Resolution Avail";
constexpr char kRxResolution[] = "RX Auto Negotiation Resolution";
constexpr char kTxResolution[] = "TX Auto Negotiation Resolution";

constexpr Field kPauseFields[] = {
    {"NIC", FieldType::String, 1},          {kSupported, FieldType::Bool, 2},
    {kAutoNegotiation, FieldType::Bool, 5}, {kPauseRx, FieldType::Bool, 3},
    {kPauseTx, FieldType::Bool, 4},         {kResolutionAvail, FieldType::Bool, 6},
    {kRxResolution, FieldType::Bool, 7},    {kTxResolution, FieldType::Bool, 8},
};
constexpr Declare::StructShape kPauseShape = {"PauseParamsSettings", kPauseFields};

constexpr Declare::Parameter kPauseListParameters[] = {
    {kNicName, "n", Declare::Type::String, false,
     "The name of the NIC whose pause parameters should be retrieved."}};
constexpr Declare::Parameter kPauseSetParameters[] = {
    {kNicName, "n", Declare::Type::String, true,
     "Name of NIC whose pause parameters should be set."},
    {kAuto, "a", Declare::Type::Bool, false, "Enable/disable auto negotiation."},
    {kRx, "r", Declare::Type::Bool, false, "Enable/disable pause RX flow control."},
    {kTx, "t", Declare::Type::Bool, false, "Enable/disable pause TX flow control."},
};

// The NIC of that name, or null after adding the ring and pause commands' message.
std::unique_ptr<HostCtl::Network::Pnic> FindNic(HostCtl::Network::NetworkInfo& networkInfo,
                                                const std::string& nicName, Output& output) {
    auto pnic = networkInfo.GetPnicByName(nicName, false);
    if (!pnic) {
        output.AddErrorMessage(kNicWithName + nicName + kNotFound);
    }
    return pnic;
}

struct Rings {
    PnicRingParams preset{};
    PnicRingParams current{};
};

// The rings of the NIC named by the input, as the host gives them; none after a message.
std::optional<Rings> ReadRings(const Input& input, Output& output) {
    auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    auto pnic = FindNic(*networkInfo, input.GetParameter(kNicName), output);
    if (!pnic) {
        return std::nullopt;
    }
    Rings rings;
    pnic->GetRingParams(rings.preset, rings.current);
    return rings;
}

void SetSizes(MetaStruct& result, const PnicRingParams& params, const char* const (&fields)[4]) {
    for (std::size_t i = 0; i < std::size(kRingSizes); ++i) {
        result.SetField(fields[i], static_cast<long>(std::uint64_t{params.*kRingSizes[i].size}));
    }
}

constexpr const char* kPlainFields[] = {kRxField, kRxMiniField, kRxJumboField, kTxField};
constexpr const char* kMaxFields[] = {kMaxRxField, kMaxRxMiniField, kMaxRxJumboField, kMaxTxField};

}  // namespace

constexpr Declare::CommandShape kNicRingPresetGetShape = {
    .description = "Get preset maximums for RX/TX ring buffer parameters of a NIC.",
    .formatter = "simple",
    .parameters = kPresetParameters,
    .root = Declare::Root::Struct,
    .structure = &kPresetShape,
};
constexpr Declare::CommandShape kNicRingCurrentGetShape = {
    .description = "Get current RX/TX ring buffer parameters of a NIC",
    .formatter = "simple",
    .parameters = kCurrentGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kCurrentShape,
};
constexpr Declare::CommandShape kNicRingCurrentSetShape = {
    .description = "Set current RX/TX ring buffer parameters of a NIC",
    .parameters = kCurrentSetParameters,
    .root = Declare::Root::Bool,
};
constexpr Declare::CommandShape kNicPauseParamsListShape = {
    .description = "List pause parameters of all NICs",
    .formatter = "table",
    .parameters = kPauseListParameters,
    .root = Declare::Root::List,
    .structure = &kPauseShape,
};
constexpr Declare::CommandShape kNicPauseParamsSetShape = {
    .description = "Set pause parameters for a NIC",
    .parameters = kPauseSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicRingPresetGet, kNicRingPresetGetShape) {
    try {
        auto rings = ReadRings(*input, *output);
        if (!rings) {
            return;
        }
        auto result = GetOutputStructure();
        SetSizes(*result, rings->preset, kPlainFields);
        SetSizes(*result, rings->preset, kMaxFields);
        output->SetRootObject(result);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicRingCurrentGet, kNicRingCurrentGetShape) {
    try {
        auto rings = ReadRings(*input, *output);
        if (!rings) {
            return;
        }
        auto result = GetOutputStructure();
        SetSizes(*result, rings->current, kPlainFields);
        output->SetRootObject(result);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicRingCurrentSet, kNicRingCurrentSetShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto pnic = FindNic(*networkInfo, input->GetParameter(kNicName), *output);
        if (!pnic) {
            return;
        }
        PnicRingParams params{};
        for (const RingSize& ring : kRingSizes) {
            if (input->HasParameter(ring.parameter)) {
                params.changeMask |= ring.bit;
                params.*ring.size =
                    static_cast<std::uint32_t>(input->GetParameterInt(ring.parameter));
            }
        }
        if (params.changeMask != 0) {
            pnic->SetRingParams(params);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicPauseParamsList, kNicPauseParamsListShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        PnicPauseParams params{};
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
        if (input->HasParameter(kNicName)) {
            auto pnic = FindNic(*networkInfo, input->GetParameter(kNicName), *output);
            if (!pnic) {
                return;
            }
            pnics.push_back(std::move(pnic));
        } else {
            pnics = networkInfo->GetPnics(HostCtl::Network::PnicGetAll);
        }
        for (const auto& pnic : pnics) {
            if (!pnic) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField("NIC", pnic->GetName());
            try {
                pnic->GetPauseParams(params);
            } catch (const HostCtlException&) {
                params.supported = 0;
            }
            const bool supported = params.supported != 0;
            const bool resolved = supported && params.rxResolution != 0 && params.txResolution != 0;
            row->SetField(kSupported, supported);
            row->SetField(kPauseRx, supported && params.rxPause != 0);
            row->SetField(kPauseTx, supported && params.txPause != 0);
            row->SetField(kAutoNegotiation, supported && params.autoNegotiation != 0);
            row->SetField(kResolutionAvail, resolved);
            row->SetField(kRxResolution, resolved && params.rxResolution == 1);
            row->SetField(kTxResolution, resolved && params.txResolution == 1);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicPauseParamsSet, kNicPauseParamsSetShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto pnic = FindNic(*networkInfo, input->GetParameter(kNicName), *output);
        if (!pnic) {
            return;
        }
        PnicPauseParams params{};
        pnic->GetPauseParams(params);
        if (input->HasParameter(kAuto)) {
            params.autoNegotiation = input->GetParameterBool(kAuto) ? 1 : 0;
        }
        if (input->HasParameter(kRx)) {
            params.rxPause = input->GetParameterBool(kRx) ? 1 : 0;
        }
        if (input->HasParameter(kTx)) {
            params.txPause = input->GetParameterBool(kTx) ? 1 : 0;
        }
        pnic->SetPauseParams(params);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
