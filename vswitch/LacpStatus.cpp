// `network vswitch dvs zanvex lacp status get` and `lacp stats get`: the running LAGs of the
// distributed switches, with the state of each NIC, or its LACPDU counters.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostctl/NetworkInfo.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::DVSwitch;
using HostCtl::Network::LacpNicStatus;
using HostCtl::Network::LagStatus;

constexpr char kDvsParameter[] = "dvs";
constexpr char kDvsDescription[] = "The name of DVS to get configuration on";

// The LAG and NIC fields of `status get`.
constexpr char kDVSwitch[] = "DVSwitch";
constexpr char kLagId[] = "LAG ID";
constexpr char kMode[] = "Mode";
constexpr char kFlags[] = "Flags";
constexpr char kNicList[] = "Nic List";
constexpr char kNic[] = "Nic";
constexpr char kState[] = "State";
constexpr char kLocalInformation[] = "Local Information";
constexpr char kPartnerInformation[] = "Partner Information";
constexpr char kPortState[] = "Port State";
constexpr char kAdminKey[] = "Admin Key";
constexpr char kOperKey[] = "Oper Key";
constexpr char kPortPriority[] = "Port Priority";
constexpr char kPortNumber[] = "Port Number";
constexpr char kDeviceId[] = "Device ID";
constexpr char kAge[] = "Age";

constexpr Field kLocalFields[] = {
    {kPortState, FieldType::String}, {kFlags, FieldType::String},     {kAdminKey, FieldType::Int},
    {kOperKey, FieldType::Int},      {kPortPriority, FieldType::Int}, {kPortNumber, FieldType::Int},
};
constexpr Declare::StructShape kLocalInfo = {"LocalInfo", kLocalFields};

constexpr Field kPartnerFields[] = {
    {kDeviceId, FieldType::String}, {kPortState, FieldType::String},
    {kFlags, FieldType::String},    {kAge, FieldType::String},
    {kOperKey, FieldType::Int},     {kPortPriority, FieldType::Int},
    {kPortNumber, FieldType::Int},
};
constexpr Declare::StructShape kPartnerInfo = {"PartnerInfo", kPartnerFields};

constexpr Field kNicFields[] = {
    {kNic, FieldType::String},
    {kState, FieldType::String},
    {kLocalInformation, FieldType::Struct, 0, &kLocalInfo},
    {kPartnerInformation, FieldType::Struct, 0, &kPartnerInfo},
};
constexpr Declare::StructShape kNicStatus = {"NicStatus", kNicFields};

constexpr Field kLagFields[] = {
    {kDVSwitch, FieldType::String},
    {kLagId, FieldType::Int},
    {kMode, FieldType::String},
    {kFlags, FieldType::StringList},
    {kNicList, FieldType::StructList, 0, &kNicStatus},
};
constexpr Declare::StructShape kLag = {"LAG", kLagFields};

constexpr Declare::OutputParameter kStatusOutputParameters[] = {
    {"header:LAG", "%DVSwitch%"},
    {"header:NicStatus", "<NONE>"},
    {"header:LocalInfo", "<NONE>"},
    {"header:PartnerInfo", "<NONE>"},
    {"table-columns:LAG", "DVSwitch,LAG ID,Mode,Age,Flags,Nic List"},
    {"table-columns:NicStatus", "Nic,State,Local Information,Partner Information"},
    {"table-columns:LocalInfo", "Flags,Admin Key,Oper Key,Port Priority,Port Number,Port State"},
    {"table-columns:PartnerInfo",
     "Device ID,Age,Flags,Oper Key,Port Priority,Port Number,Port State"},
};

// The fields of `stats get`.
constexpr char kStatsNic[] = "NIC";
constexpr char kTxLacpdus[] = "Tx LACPDUs";
constexpr char kTxErrors[] = "Tx Errors";
constexpr char kRxLacpdus[] = "Rx LACPDUs";
constexpr char kRxErrors[] = "Rx Errors";

constexpr Field kStatsFields[] = {
    {kDVSwitch, FieldType::String}, {kStatsNic, FieldType::String}, {kLagId, FieldType::Int},
    {kTxLacpdus, FieldType::Int},   {kTxErrors, FieldType::Int},    {kRxLacpdus, FieldType::Int},
    {kRxErrors, FieldType::Int},
};
constexpr Declare::StructShape kLacpStats = {"LACPStats", kStatsFields};

// A list of columns the command host never applies, for a struct the result does not have, with
// names the fields do not have; kept as the command has always given it.
constexpr Declare::OutputParameter kStatsOutputParameters[] = {
    {"fields:LACP", "Uplink, Tx LACPDUs, Tx Errors, Rx LACPDUs, Rx Errors"},
};

constexpr Declare::Parameter kParameters[] = {
    {kDvsParameter, "s", Declare::Type::String, false, kDvsDescription},
};

constexpr char kNoDvs[] =
    "LACP is supported on Zanvex DVSwitch only, and there is no DVSwitch configured on host.";
constexpr char kNoRunningLag[] = "No running LACP group on the host.";
constexpr char kNoPnic[] = "No pnic is connected to DVSwitch.";
constexpr char kActive[] = "Active";
constexpr char kPassive[] = "Passive";
constexpr char kStateOnDpu[] = " (running state is on dpu)";
constexpr const char* kFlagLines[] = {
    "S - Device is sending Slow LACPDUs",
    "F - Device is sending fast LACPDUs",
    "A - Device is in active mode",
    "P - Device is in passive mode",
};
// The words of the port state bits, bit 0 first.
constexpr const char* kPortStateWords[] = {"ACT", "FTO", "AGG", "SYN", "COL", "DIST", "DEF", "EXP"};

// The switches a `get` looks at: the one named, or every distributed switch. Empty, with the
// message added, when the host has none.
std::vector<std::unique_ptr<DVSwitch>> ChooseSwitches(const Input& input, Output& output) {
    std::vector<std::unique_ptr<DVSwitch>> switches;
    if (input.HasParameter(kDvsParameter)) {
        switches.push_back(
            HostCtl::Network::NetworkFactory::GetDVSwitchByName(input.GetParameter(kDvsParameter)));
        return switches;
    }
    KelmCtl::Network::VirtualSwitchInfoImpl info;
    switches = info.GetDVSwitches();
    for (auto& opaque : info.GetOpaqueDVSwitches()) {
        switches.push_back(std::move(opaque));
    }
    if (switches.empty()) {
        output.AddErrorMessage(kNoDvs);
    }
    return switches;
}

std::string PortStateText(std::uint8_t state) {
    std::string text;
    for (unsigned bit = 0; bit < 8; ++bit) {
        if ((state & (1u << bit)) != 0) {
            text += kPortStateWords[bit];
            text += ",";
        }
    }
    return text;
}

std::string AgeText(std::uint32_t age) {
    return HostCtl::Misc::StrPrintf("%02u:%02u:%02u", age / 3600, age % 3600 / 60, age % 60);
}

std::shared_ptr<MetaStruct> NicRow(const LacpNicStatus& nic, bool onDpu) {
    auto row = Declare::MakeStruct(Declare::PackStruct<kNicStatus>());
    row->SetField(kNic, std::string(nic.nicName));
    std::string state(nic.state);
    if (onDpu) {
        state += kStateOnDpu;
    }
    row->SetField(kState, state);
    auto local = Declare::MakeStruct(Declare::PackStruct<kLocalInfo>());
    local->SetField(kFlags, std::string(nic.flags));
    local->SetField(kAdminKey, static_cast<long>(nic.adminKey));
    local->SetField(kOperKey, static_cast<long>(nic.operKey));
    local->SetField(kPortPriority, static_cast<long>(nic.portPriority));
    local->SetField(kPortNumber, static_cast<long>(nic.portNumber));
    local->SetField(kPortState, PortStateText(nic.portState));
    row->SetField(kLocalInformation, local);
    auto partner = Declare::MakeStruct(Declare::PackStruct<kPartnerInfo>());
    partner->SetField(kPortState, PortStateText(nic.partnerPortState));
    partner->SetField(kFlags, std::string(nic.partnerFlags));
    partner->SetField(kDeviceId, std::string(nic.partnerDeviceId));
    partner->SetField(kAge, AgeText(nic.partnerAge));
    partner->SetField(kOperKey, static_cast<long>(nic.partnerOperKey));
    partner->SetField(kPortPriority, static_cast<long>(nic.partnerPortPriority));
    partner->SetField(kPortNumber, static_cast<long>(nic.partnerPortNumber));
    row->SetField(kPartnerInformation, partner);
    return row;
}

}  // namespace

constexpr Declare::CommandShape kLacpGetStatusShape = {
    .description = "Get LACP status on DVS",
    .formatter = "simple",
    .outputParameters = kStatusOutputParameters,
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kLag,
};

NETWORK_COMMAND(LacpGetStatus, kLacpGetStatusShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const auto switches = ChooseSwitches(*input, *output);
        if (switches.empty()) {
            return;
        }
        std::size_t lagCount = 0;
        for (const auto& dvSwitch : switches) {
            std::vector<LagStatus> lags;
            dvSwitch->GetLacpStatus(lags);
            lagCount += lags.size();
            for (const LagStatus& lag : lags) {
                auto row = GetOutputStructure();
                row->SetField(kDVSwitch, dvSwitch->GetDvsName());
                row->SetField(kLagId, static_cast<long>(lag.lagId));
                row->SetField(kMode, lag.mode == 2 ? kPassive : kActive);
                row->SetField(
                    kFlags, std::vector<std::string>(std::begin(kFlagLines), std::end(kFlagLines)));
                auto nics = MetaList::New(CppTools::MetaObj::MetaTypeStruct,
                                          Declare::MakeStruct(Declare::PackStruct<kNicStatus>()));
                for (const auto& nic : lag.nics) {
                    nics->Add(NicRow(*nic, dvSwitch->IsLacpStateOnDpu()));
                }
                row->SetField(kNicList, nics);
                list->Add(row);
            }
        }
        if (lagCount == 0) {
            output->AddErrorMessage(kNoRunningLag);
            return;
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

constexpr Declare::CommandShape kLacpGetStatsShape = {
    .description = "Get LACP stats on DVS uplinks",
    .formatter = "table",
    .outputParameters = kStatsOutputParameters,
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kLacpStats,
};

NETWORK_COMMAND(LacpGetStats, kLacpGetStatsShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const auto switches = ChooseSwitches(*input, *output);
        if (switches.empty()) {
            return;
        }
        std::size_t lagCount = 0;
        std::size_t nicCount = 0;
        for (const auto& dvSwitch : switches) {
            std::vector<LagStatus> lags;
            dvSwitch->GetLacpStatus(lags);
            lagCount += lags.size();
            for (const LagStatus& lag : lags) {
                for (const auto& nic : lag.nics) {
                    ++nicCount;
                    auto row = GetOutputStructure();
                    row->SetField(kDVSwitch, dvSwitch->GetDvsName());
                    row->SetField(kStatsNic, std::string(nic->nicName));
                    row->SetField(kLagId, static_cast<long>(lag.lagId));
                    row->SetField(kTxLacpdus, static_cast<long>(nic->txLacpdus));
                    row->SetField(kTxErrors, static_cast<long>(nic->txErrors));
                    row->SetField(kRxLacpdus, static_cast<long>(nic->rxLacpdus));
                    row->SetField(kRxErrors, static_cast<long>(nic->rxErrors));
                    list->Add(row);
                }
            }
        }
        if (lagCount == 0) {
            output->AddErrorMessage(kNoRunningLag);
            return;
        }
        if (nicCount == 0) {
            output->AddErrorMessage(kNoPnic);
            return;
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
