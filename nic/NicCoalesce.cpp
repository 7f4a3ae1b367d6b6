// `network nic coalesce get|set` and `network nic coalesce low|high get|set`: a NIC's interrupt
// coalescing, one record read from the host and, for a change, written back whole.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostctl/NetworkInfo.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Lib::HostCtlException;
using HostCtl::Network::PnicCoalesceParams;

constexpr char kHwnic[] = "hwnic";
constexpr char kRxUsecs[] = "rx-usecs";
constexpr char kRxMaxFrames[] = "rx-max-frames";
constexpr char kTxUsecs[] = "tx-usecs";
constexpr char kTxMaxFrames[] = "tx-max-frames";
constexpr char kAdaptiveRx[] = "adaptive-rx";
constexpr char kAdaptiveTx[] = "adaptive-tx";
constexpr char kSampleInterval[] = "sample-interval";
constexpr char kPktRate[] = "pkt-rate";

constexpr char kNic[] = "NIC";
constexpr char kNotAvailable[] = "N/A";
constexpr char kOn[] = "On";
constexpr char kOff[] = "Off";
constexpr char kPnicWithName[] = "Pnic with name ";
constexpr char kNotFound[] = " not found";

// `nic coalesce get` and `set`.

constexpr Declare::Parameter kGetParameters[] = {
    {kHwnic, "n", Declare::Type::String, false, "The name of pnic to get coalesce parameters"},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kHwnic, "n", Declare::Type::String, true, "Name of hwnic to set coalesce parameters."},
    {kRxUsecs, "r", Declare::Type::Int, false,
     "Number of microseconds driver to wait for RX before interrupting."},
    {kRxMaxFrames, "R", Declare::Type::Int, false,
     "Maximum number of RX frames driver to process before interrupting."},
    {kTxUsecs, "t", Declare::Type::Int, false,
     "Number of microseconds driver to wait for completed TX before interrupting."},
    {kTxMaxFrames, "T", Declare::Type::Int, false,
     "Maximum number of completed TX frames driver to process before interrupting."},
    {kAdaptiveRx, "a", Declare::Type::Bool, false,
     "enable or disable adaptive RX algorithm in driver."},
    {kAdaptiveTx, "A", Declare::Type::Bool, false,
     "enable or disable adaptive TX algorithm in driver."},
    {.name = kSampleInterval,
     .shortName = "i",
     .type = Declare::Type::Int,
     .required = false,
     .description = "Packet rate sampling internal in seconds for the adaptive coalescing "
                    "algorithm in driver.",
     .range = true,
     .low = 1,
     .high = 3600},
};

constexpr char kRxMicroseconds[] = "RX microseconds";
constexpr char kRxMaximumFrames[] = "RX maximum frames";
constexpr char kTxMicroseconds[] = "TX microseconds";
constexpr char kTxMaximumFrames[] = "TX Maximum frames";
constexpr char kAdaptiveRxField[] = "Adaptive RX";
constexpr char kAdaptiveTxField[] = "Adaptive TX";
constexpr char kSampleIntervalField[] = "Sample interval seconds";

constexpr Field kGeneralFields[] = {
    {kNic, FieldType::String, 1},
    {kRxMicroseconds, FieldType::String, 2},
    {kRxMaximumFrames, FieldType::String, 3},
    {kTxMicroseconds, FieldType::String, 4},
    {kTxMaximumFrames, FieldType::String, 5},
    {kAdaptiveRxField, FieldType::String, 6},
    {kAdaptiveTxField, FieldType::String, 7},
    {kSampleIntervalField, FieldType::String, 8},
};
constexpr Declare::StructShape kGeneralShape = {"CoalesceParams", kGeneralFields};

// The low and high bands: the same steps on five fields of one band.

constexpr char kPacketRate[] = "Packet rate";
constexpr char kRxDelayTime[] = "RX delay time";
constexpr char kRxDelayPackets[] = "RX delay packets";
constexpr char kTxDelayTime[] = "TX delay time";
constexpr char kTxDelayPackets[] = "TX delay packets";

constexpr Field kBandFields[] = {
    {kNic, FieldType::String, 1},      {kPacketRate, FieldType::Int, 2},
    {kRxDelayTime, FieldType::Int, 3}, {kRxDelayPackets, FieldType::Int, 4},
    {kTxDelayTime, FieldType::Int, 5}, {kTxDelayPackets, FieldType::Int, 6},
};
constexpr Declare::StructShape kLowShape = {"CoalesceParamsAtLowPacketRate", kBandFields};
constexpr Declare::StructShape kHighShape = {"CoalesceParamsAtHighPacketRate", kBandFields};
constexpr Declare::OutputParameter kLowOutput[] = {
    {"units:CoalesceParamsAtLowPacketRate.Packet rate", "pps"},
    {"units:CoalesceParamsAtLowPacketRate.RX delay time", "microsecond"},
    {"units:CoalesceParamsAtLowPacketRate.TX delay time", "microsecond"},
};
constexpr Declare::OutputParameter kHighOutput[] = {
    {"units:CoalesceParamsAtHighPacketRate.Packet rate", "pps"},
    {"units:CoalesceParamsAtHighPacketRate.RX delay time", "microsecond"},
    {"units:CoalesceParamsAtHighPacketRate.TX delay time", "microsecond"},
};

constexpr Declare::Parameter kBandGetParameters[] = {
    {kHwnic, "n", Declare::Type::String, true,
     "The name of the pnic for which information should be retrieved."},
};
constexpr Declare::Parameter kLowSetParameters[] = {
    {kHwnic, "n", Declare::Type::String, true,
     "Name of the hwnic for which parameters should be set."},
    {kPktRate, "p", Declare::Type::Int, false,
     "The low packet rate measured in number of packets per second. When packet rate is below "
     "this parameter, the RX/TX coalescing parameters configured by this command are used."},
    {kRxUsecs, "r", Declare::Type::Int, false,
     "The number of microseconds to delay an RX interrupt after a packet arrives under low "
     "packet rate conditions."},
    {kRxMaxFrames, "R", Declare::Type::Int, false,
     "The maximum number of RX packets to delay an RX interrupt after they arrive under low "
     "packet rate conditions."},
    {kTxUsecs, "t", Declare::Type::Int, false,
     "The number of microseconds to delay a TX interrupt after a packet is sent under low "
     "packet rate conditions."},
    {kTxMaxFrames, "T", Declare::Type::Int, false,
     "The maximum number of TX packets to delay an TX interrupt after they are sent under low "
     "packet rate conditions."},
};
constexpr Declare::Parameter kHighSetParameters[] = {
    {kHwnic, "n", Declare::Type::String, true,
     "Name of the hwnic for which parameters should be set."},
    {kPktRate, "p", Declare::Type::Int, false,
     "The high packet rate measured in number of packets per second. When packet rate is "
     "above this parameter, the RX/TX coalescing parameters configured by this command are "
     "used."},
    {kRxUsecs, "r", Declare::Type::Int, false,
     "The number of microseconds to delay an RX interrupt after a packet arrives under high "
     "packet rate conditions."},
    {kRxMaxFrames, "R", Declare::Type::Int, false,
     "The maximum number of RX packets to delay an RX interrupt after they arrive under high "
     "packet rate conditions."},
    {kTxUsecs, "t", Declare::Type::Int, false,
     "The number of microseconds to delay a TX interrupt after a packet is sent under high "
     "packet rate conditions."},
    {kTxMaxFrames, "T", Declare::Type::Int, false,
     "The maximum number of TX packets to delay an TX interrupt after they are sent under high "
     "packet rate conditions."},
};

// The five fields of a band, in the order of the struct and of the parameters.
using Word = std::uint32_t PnicCoalesceParams::*;
struct Band {
    Word fields[5];
};
constexpr const char* kBandParameters[] = {kPktRate, kRxUsecs, kRxMaxFrames, kTxUsecs,
                                           kTxMaxFrames};
constexpr const char* kBandOutputFields[] = {kPacketRate, kRxDelayTime, kRxDelayPackets,
                                             kTxDelayTime, kTxDelayPackets};
constexpr Band kLowBand = {{&PnicCoalesceParams::lowPacketRate, &PnicCoalesceParams::lowRxUsecs,
                            &PnicCoalesceParams::lowRxMaxFrames, &PnicCoalesceParams::lowTxUsecs,
                            &PnicCoalesceParams::lowTxMaxFrames}};
constexpr Band kHighBand = {{&PnicCoalesceParams::highPacketRate, &PnicCoalesceParams::highRxUsecs,
                             &PnicCoalesceParams::highRxMaxFrames, &PnicCoalesceParams::highTxUsecs,
                             &PnicCoalesceParams::highTxMaxFrames}};

std::string NotFound(const std::string& name) {
    return kPnicWithName + name + kNotFound;
}

std::string Unsigned(std::uint32_t value) {
    return HostCtl::Misc::StrPrintf("%u", value);
}

const char* OnOff(std::uint8_t flag) {
    return flag != 0 ? kOn : kOff;
}

// Sets the given parameter into its field; a parameter not given leaves the field as read.
void Overwrite(const Input& input, const char* parameter, std::uint32_t& field) {
    if (input.HasParameter(parameter)) {
        field = static_cast<std::uint32_t>(input.GetParameterInt(parameter));
    }
}

void Overwrite(const Input& input, const char* parameter, std::uint8_t& flag) {
    if (input.HasParameter(parameter)) {
        flag = input.GetParameterBool(parameter) ? 1 : 0;
    }
}

std::shared_ptr<MetaStruct> BandGet(Declare::PackedStruct shape, const Band& band,
                                    const std::string& nicName) {
    auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    auto pnic = networkInfo->GetPnicByName(nicName, false);
    if (!pnic) {
        throw HostCtlException(NotFound(nicName));
    }
    auto result = Declare::MakeStruct(shape);
    result->SetField(kNic, nicName);
    PnicCoalesceParams params{};
    pnic->GetCoalesceParams(params);
    for (std::size_t i = 0; i < std::size(band.fields); ++i) {
        result->SetField(kBandOutputFields[i],
                         static_cast<long>(static_cast<std::int32_t>(params.*band.fields[i])));
    }
    return result;
}

void BandSet(const Band& band, const Input& input, Output& output) {
    const std::string& nicName = input.GetParameter(kHwnic);
    auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    auto pnic = networkInfo->GetPnicByName(nicName, false);
    if (!pnic) {
        output.AddErrorMessage(NotFound(nicName));
        return;
    }
    PnicCoalesceParams params{};
    pnic->GetCoalesceParams(params);
    for (std::size_t i = 0; i < std::size(band.fields); ++i) {
        Overwrite(input, kBandParameters[i], params.*band.fields[i]);
    }
    pnic->SetCoalesceParams(params);
    output.SetRootObject(MetaBool::New(true));
}

}  // namespace

constexpr Declare::CommandShape kNicCoalesceGetShape = {
    .description = "Get coalesce parameters",
    .formatter = "table",
    .parameters = kGetParameters,
    .root = Declare::Root::List,
    .structure = &kGeneralShape,
};

constexpr Declare::CommandShape kNicCoalesceSetShape = {
    .description = "Set coalesce parameters on a nic",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicCoalesceLowGetShape = {
    .description =
        "Get information about the behavior of a NIC when it sends or receives "
        "packets at low packet rate.",
    .formatter = "simple",
    .outputParameters = kLowOutput,
    .parameters = kBandGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kLowShape,
};

constexpr Declare::CommandShape kNicCoalesceLowSetShape = {
    .description =
        "Set parameters to control the behavior of a NIC when it sends or receives "
        "packets at low packet rate.",
    .parameters = kLowSetParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicCoalesceHighGetShape = {
    .description =
        "Get information about the behavior of a NIC when it sends or receives "
        "packets at high packet rate.",
    .formatter = "simple",
    .outputParameters = kHighOutput,
    .parameters = kBandGetParameters,
    .root = Declare::Root::Struct,
    .structure = &kHighShape,
};

constexpr Declare::CommandShape kNicCoalesceHighSetShape = {
    .description =
        "Set parameters to control the behavior of a NIC when it sends or receives "
        "packets at high packet rate.",
    .parameters = kHighSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicCoalesceGet, kNicCoalesceGetShape) {
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        PnicCoalesceParams params{};
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
        if (input->HasParameter(kHwnic)) {
            const std::string& nicName = input->GetParameter(kHwnic);
            auto pnic = networkInfo.GetPnicByName(nicName, false);
            if (!pnic) {
                output->AddErrorMessage(NotFound(nicName));
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
            auto row = GetOutputStructure();
            row->SetField(kNic, pnic->GetName());
            try {
                pnic->GetCoalesceParams(params);
                row->SetField(kRxMicroseconds, Unsigned(params.rxUsecs));
                row->SetField(kRxMaximumFrames, Unsigned(params.rxMaxFrames));
                row->SetField(kTxMicroseconds, Unsigned(params.txUsecs));
                row->SetField(kTxMaximumFrames, Unsigned(params.txMaxFrames));
                row->SetField(kAdaptiveRxField, OnOff(params.useAdaptiveRx));
                row->SetField(kAdaptiveTxField, OnOff(params.useAdaptiveTx));
                row->SetField(kSampleIntervalField, Unsigned(params.sampleIntervalSeconds));
            } catch (const HostCtlException&) {
                for (const char* field :
                     {kRxMicroseconds, kRxMaximumFrames, kTxMicroseconds, kTxMaximumFrames,
                      kAdaptiveRxField, kAdaptiveTxField, kSampleIntervalField}) {
                    row->SetField(field, kNotAvailable);
                }
            }
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicCoalesceSet, kNicCoalesceSetShape) {
    try {
        const std::string& nicName = input->GetParameter(kHwnic);
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        auto pnic = networkInfo.GetPnicByName(nicName, false);
        if (!pnic) {
            output->AddErrorMessage(NotFound(nicName));
            return;
        }
        PnicCoalesceParams params{};
        pnic->GetCoalesceParams(params);
        Overwrite(*input, kRxUsecs, params.rxUsecs);
        Overwrite(*input, kRxMaxFrames, params.rxMaxFrames);
        Overwrite(*input, kTxUsecs, params.txUsecs);
        Overwrite(*input, kTxMaxFrames, params.txMaxFrames);
        Overwrite(*input, kAdaptiveRx, params.useAdaptiveRx);
        Overwrite(*input, kAdaptiveTx, params.useAdaptiveTx);
        Overwrite(*input, kSampleInterval, params.sampleIntervalSeconds);
        pnic->SetCoalesceParams(params);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicCoalesceLowGet, kNicCoalesceLowGetShape) {
    try {
        output->SetRootObject(
            BandGet(Declare::PackStruct<kLowShape>(), kLowBand, input->GetParameter(kHwnic)));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicCoalesceLowSet, kNicCoalesceLowSetShape) {
    try {
        BandSet(kLowBand, *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicCoalesceHighGet, kNicCoalesceHighGetShape) {
    try {
        output->SetRootObject(
            BandGet(Declare::PackStruct<kHighShape>(), kHighBand, input->GetParameter(kHwnic)));
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicCoalesceHighSet, kNicCoalesceHighSetShape) {
    try {
        BandSet(kHighBand, *input, *output);
    } catch (const HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
