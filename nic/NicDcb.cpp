// `network nic dcb status get`: the Data Center Bridging state of one NIC.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "kelmctl/DcbInfoImpl.h"
#include "nic/NicCommon.h"

namespace ZanvexCli::NetworkNamespace {

// Texts of the DCB record, shared with nothing else but named in the command's namespace.
std::string DcbModeToString(unsigned int mode);
std::string DcbIntMaskToString(unsigned char mask);
std::string DcbArrayToString(unsigned char* values);
std::string DcbArrayToStringUint64(unsigned long* values);

namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kPriorityGroup[] = "Priority Group";
constexpr char kPriorityFlowControl[] = "Priority Flow Control";
constexpr char kUpToTcMap[] = "UP to TC Map";
constexpr char kPgTrafficClasses[] = "PG Traffic Classes";
constexpr char kPfcTrafficClasses[] = "PFC Traffic Classes";
constexpr Field kCapabilityFields[] = {
    {kPriorityGroup, FieldType::Bool, 1},    {kPriorityFlowControl, FieldType::Bool, 2},
    {kUpToTcMap, FieldType::Bool},           {kPgTrafficClasses, FieldType::Int, 3},
    {kPfcTrafficClasses, FieldType::Int, 4},
};
constexpr Declare::StructShape kCapabilities = {"DcbCapabilities", kCapabilityFields};

constexpr char kTrafficClasses[] = "Number Of Traffic Classes";
constexpr char kPfcConfiguration[] = "PFC Configuration";
constexpr char kMacsecBypass[] = "Macsec Bypass Capability Is Enabled";
constexpr char kDelay[] = "Round Trip Propagation Delay Of Link";
constexpr char kSent[] = "Sent PFC Frames";
constexpr char kReceived[] = "Received PFC Frames";
constexpr Field kPfcFields[] = {
    {kTrafficClasses, FieldType::Int, 1}, {kPfcConfiguration, FieldType::String, 2},
    {kMacsecBypass, FieldType::Int, 3},   {kDelay, FieldType::Int, 4},
    {kSent, FieldType::String, 5},        {kReceived, FieldType::String, 6},
};
constexpr Declare::StructShape kPfc = {"DcbIeeePfcConfig", kPfcFields};

constexpr char kWilling[] = "Willing Bit In ETS Config TLV";
constexpr char kSupportedCapacity[] = "Supported Capacity";
constexpr char kCreditBasedShaper[] = "Credit Based Shaper ETS Algorithm Supported";
constexpr char kTxBandwidth[] = "TX Bandwidth Per TC";
constexpr char kRxBandwidth[] = "RX Bandwidth Per TC";
constexpr char kTsaTable[] = "TSA Assignment Table Per TC";
constexpr char kPriorityAssignment[] = "Priority Assignment Per TC";
constexpr char kRecommendedBandwidth[] = "Recommended TC Bandwidth Per TC";
constexpr char kRecommendedBandwith[] = "Recommended TC Bandwith Per TC";
constexpr char kRecommendedTsa[] = "Recommended TSA Assignment Per TC";
constexpr char kRecommendedPriority[] = "Recommended Priority Assignment Per TC";
constexpr Field kEtsFields[] = {
    {kWilling, FieldType::Int, 1},
    {kSupportedCapacity, FieldType::Int, 2},
    {kCreditBasedShaper, FieldType::String, 3},
    {kTxBandwidth, FieldType::String, 4},
    {kRxBandwidth, FieldType::String, 5},
    {kTsaTable, FieldType::String, 6},
    {kPriorityAssignment, FieldType::String, 7},
    {kRecommendedBandwidth, FieldType::String, 8},
    {kRecommendedBandwith, FieldType::String},
    {kRecommendedTsa, FieldType::String, 9},
    {kRecommendedPriority, FieldType::String, 10},
};
constexpr Declare::StructShape kEts = {"DcbIeeeEtsConfig", kEtsFields};

constexpr char kAppType[] = "App Type";
constexpr char kProtocolId[] = "Protocol ID";
constexpr char kUserPriority[] = "User Priority";
constexpr Field kAppFields[] = {
    {kAppType, FieldType::String, 1},
    {kProtocolId, FieldType::String, 2},
    {kUserPriority, FieldType::String, 3},
};
constexpr Declare::StructShape kApps = {"DcbApps", kAppFields};

constexpr char kNicNameField[] = "Nic Name";
constexpr char kMode[] = "Mode";
constexpr char kEnabled[] = "Enabled";
constexpr char kCapabilitiesField[] = "Capabilities";
constexpr char kPfcEnabled[] = "PFC Enabled";
constexpr char kIeePfc[] = "IEEE PFC Configuration";
constexpr char kIeeeEts[] = "IEEE ETS Configuration";
constexpr char kDcbApps[] = "DCB Apps";
constexpr Field kStatusFields[] = {
    {kNicNameField, FieldType::String, 1},
    {kMode, FieldType::String, 2},
    {kEnabled, FieldType::Bool, 3},
    {kCapabilitiesField, FieldType::Struct, 4, &kCapabilities},
    {kPfcEnabled, FieldType::Bool, 5},
    {kPfcConfiguration, FieldType::String, 6},
    {kIeePfc, FieldType::Struct, 8, &kPfc},
    {kIeeeEts, FieldType::Struct, 7, &kEts},
    {kDcbApps, FieldType::StructList, 9, &kApps},
};
constexpr Declare::StructShape kStatus = {"DCBStatus", kStatusFields};

constexpr Declare::Parameter kParameters[] = {
    {kNicNameParameter, "n", Declare::Type::String, true,
     "The name of the NIC for which you need the info. See \"nic list\" command."},
};

constexpr const char* kModeNames[] = {"Unknown", "CEN Mode", "CEE Mode", "IEEE Mode"};
constexpr char kEightNumbers[] = "%d %d %d %d %d %d %d %d";
constexpr char kEightCounters[] = "%lu %lu %lu %lu %lu %lu %lu %lu";

}  // namespace

std::string DcbModeToString(unsigned int mode) {
    return HostCtl::Misc::StrPrintf(
        "%d - %s", mode, mode < std::size(kModeNames) ? kModeNames[mode] : kModeNames[0]);
}

std::string DcbIntMaskToString(unsigned char mask) {
    return HostCtl::Misc::StrPrintf(kEightNumbers, mask & 1, (mask >> 1) & 1, (mask >> 2) & 1,
                                    (mask >> 3) & 1, (mask >> 4) & 1, (mask >> 5) & 1,
                                    (mask >> 6) & 1, (mask >> 7) & 1);
}

std::string DcbArrayToString(unsigned char* values) {
    return HostCtl::Misc::StrPrintf(kEightNumbers, values[0], values[1], values[2], values[3],
                                    values[4], values[5], values[6], values[7]);
}

std::string DcbArrayToStringUint64(unsigned long* values) {
    return HostCtl::Misc::StrPrintf(kEightCounters, values[0], values[1], values[2], values[3],
                                    values[4], values[5], values[6], values[7]);
}

constexpr Declare::CommandShape kNicDcbStatusGetShape = {
    .description = "Get the DCB information for a NIC.",
    .formatter = "simple",
    .parameters = kParameters,
    .root = Declare::Root::Struct,
    .structure = &kStatus,
};

NETWORK_COMMAND(NicDcbStatusGet, kNicDcbStatusGetShape) {
    try {
        const std::string& name = input->GetParameter(kNicNameParameter);
        KelmCtl::Network::DcbInfoImpl dcb(name);
        auto status = GetOutputStructure();
        status->SetField(kNicNameField, name);
        status->SetField(kMode, DcbModeToString(dcb.GetMode()));
        status->SetField(kEnabled, dcb.IsEnabled());

        auto capabilities = Declare::MakeStruct(Declare::PackStruct<kCapabilities>());
        const auto caps = dcb.GetCapabilities();
        capabilities->SetField(kPriorityGroup, caps.priorityGroup != 0);
        capabilities->SetField(kPriorityFlowControl, caps.priorityFlowControl != 0);
        capabilities->SetField(kUpToTcMap, caps.upToTcMap != 0);
        capabilities->SetField(kPgTrafficClasses, static_cast<long>(caps.pgTrafficClasses));
        capabilities->SetField(kPfcTrafficClasses, static_cast<long>(caps.pfcTrafficClasses));
        status->SetField(kCapabilitiesField, capabilities);

        status->SetField(kPfcEnabled, dcb.IsPfcEnabled());
        status->SetField(kPfcConfiguration, DcbIntMaskToString(dcb.GetPfcConfig()));

        auto etsConfig = dcb.GetIeeeEtsConfig();
        auto ets = Declare::MakeStruct(Declare::PackStruct<kEts>());
        ets->SetField(kWilling, static_cast<long>(etsConfig.willing));
        ets->SetField(kSupportedCapacity, static_cast<long>(etsConfig.supportedCapacity));
        ets->SetField(kCreditBasedShaper, etsConfig.creditBasedShaper);
        ets->SetField(kTxBandwidth, DcbArrayToString(etsConfig.txBandwidth));
        ets->SetField(kRxBandwidth, DcbArrayToString(etsConfig.rxBandwidth));
        ets->SetField(kTsaTable, DcbArrayToString(etsConfig.tsaTable));
        ets->SetField(kPriorityAssignment, DcbArrayToString(etsConfig.priorityAssignment));
        ets->SetField(kRecommendedBandwith, DcbArrayToString(etsConfig.recommendedBandwidth));
        ets->SetField(kRecommendedBandwidth, DcbArrayToString(etsConfig.recommendedBandwidth));
        ets->SetField(kRecommendedTsa, DcbArrayToString(etsConfig.recommendedTsa));
        ets->SetField(kRecommendedPriority, DcbArrayToString(etsConfig.recommendedPriority));
        status->SetField(kIeeeEts, ets);

        auto pfcConfig = dcb.GetIeeePfcConfig();
        auto pfc = Declare::MakeStruct(Declare::PackStruct<kPfc>());
        pfc->SetField(kTrafficClasses, static_cast<long>(pfcConfig.trafficClasses));
        pfc->SetField(kPfcConfiguration, DcbIntMaskToString(pfcConfig.pfcConfig));
        pfc->SetField(kMacsecBypass, static_cast<long>(pfcConfig.macsecBypass));
        pfc->SetField(kDelay, static_cast<long>(pfcConfig.delay));
        pfc->SetField(kSent, DcbArrayToStringUint64(pfcConfig.sent));
        pfc->SetField(kReceived, DcbArrayToStringUint64(pfcConfig.received));
        status->SetField(kIeePfc, pfc);

        const auto appInfo = dcb.GetAppInfo();
        auto apps = MetaList::New(CppTools::MetaObj::MetaTypeStruct,
                                  Declare::MakeStruct(Declare::PackStruct<kApps>()));
        apps->Reserve(appInfo.size());
        for (const auto& app : appInfo) {
            auto row = Declare::MakeStruct(Declare::PackStruct<kApps>());
            row->SetField(kAppType, app.appType);
            row->SetField(kProtocolId, app.protocolId);
            row->SetField(kUserPriority, app.userPriority);
            apps->Add(row);
        }
        status->SetField(kDcbApps, apps);
        output->SetRootObject(status);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
