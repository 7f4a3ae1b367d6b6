// `network nic stats get` and `network nic vlan stats get|set`: a NIC's counters, and the
// per-VLAN counters that the switch holding the NIC as an uplink keeps.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/PnicImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::PnicStats;
using HostCtl::Network::PnicVlanStats;

constexpr char kNicName[] = "nic-name";
constexpr char kNicNameDescription[] = "Name of the NIC to get statistics from.";
constexpr char kEnabled[] = "enabled";

constexpr Declare::Parameter kNicParameters[] = {
    {kNicName, "n", Declare::Type::String, true, kNicNameDescription},
};
constexpr Declare::Parameter kVlanSetParameters[] = {
    {kNicName, "n", Declare::Type::String, true, kNicNameDescription},
    {kEnabled, "e", Declare::Type::Bool, true, "Whether to enable or disable VLAN statistics"},
};

constexpr char kNicNameField[] = "NIC Name";
constexpr char kPacketsReceived[] = "Packets received";
constexpr char kPacketsSent[] = "Packets sent";
constexpr char kVlanId[] = "VLAN ID";

// The counters in the order of the struct, each with its field of the record.
struct Counter {
    const char* field;
    std::uint64_t PnicStats::*member;
};
constexpr Counter kCounters[] = {
    {kPacketsReceived, &PnicStats::rxPackets},
    {kPacketsSent, &PnicStats::txPackets},
    {"Bytes received", &PnicStats::rxBytes},
    {"Bytes sent", &PnicStats::txBytes},
    {"Receive packets dropped", &PnicStats::rxDropped},
    {"Transmit packets dropped", &PnicStats::txDropped},
    {"Multicast packets received", &PnicStats::rxMulticast},
    {"Broadcast packets received", &PnicStats::rxBroadcast},
    {"Multicast packets sent", &PnicStats::txMulticast},
    {"Broadcast packets sent", &PnicStats::txBroadcast},
    {"Total receive errors", &PnicStats::rxErrors},
    {"Receive length errors", &PnicStats::rxLengthErrors},
    {"Receive over errors", &PnicStats::rxOverErrors},
    {"Receive CRC errors", &PnicStats::rxCrcErrors},
    {"Receive frame errors", &PnicStats::rxFrameErrors},
    {"Receive FIFO errors", &PnicStats::rxFifoErrors},
    {"Receive missed errors", &PnicStats::rxMissedErrors},
    {"Total transmit errors", &PnicStats::txErrors},
    {"Transmit aborted errors", &PnicStats::txAbortedErrors},
    {"Transmit carrier errors", &PnicStats::txCarrierErrors},
    {"Transmit FIFO errors", &PnicStats::txFifoErrors},
    {"Transmit heartbeat errors", &PnicStats::txHeartbeatErrors},
    {"Transmit window errors", &PnicStats::txWindowErrors},
};

constexpr Field kStatsLeadingFields[] = {{kNicNameField, FieldType::String}};
constexpr auto kStatsFields =
    Declare::FieldsWithRows(kStatsLeadingFields, kCounters, FieldType::Int,
                            [](const Counter& counter) { return counter.field; });
constexpr Declare::StructShape kStatsShape = {"Nic", kStatsFields};
constexpr Declare::OutputParameter kStatsOutput[] = {
    {"header:Nic", "NIC statistics for %NIC Name%"},
};

constexpr Field kVlanFields[] = {
    {kVlanId, FieldType::Int},
    {kPacketsReceived, FieldType::Int, 1},
    {kPacketsSent, FieldType::Int, 2},
};
constexpr Declare::StructShape kVlanShape = {"NIC", kVlanFields};
constexpr Declare::OutputParameter kVlanOutput[] = {
    {"header:NIC", "VLAN %VLAN ID%"},
};

constexpr char kStatsError[] = "Unable to get stats for NIC: ";
constexpr char kVlanGetError[] = "Unable to get VLAN stats: ";
constexpr char kVlanSetError[] = "Unable to set VLAN stats: ";
constexpr char kNotAnUplink[] = " is not a valid NIC connected to any virtual switch.";
constexpr char kVlanStatsOff[] = "VLAN stats are disabled for ";
constexpr char kEnableFirst[] = " please enable them first.";

// The first switch that has `nicName` as an uplink, or null after adding the message.
std::unique_ptr<HostCtl::Network::Portset> FindUplinkSwitch(const std::string& nicName,
                                                            Output& output) {
    KelmCtl::Network::VirtualSwitchInfoImpl switchInfo;
    for (auto& portset : switchInfo.GetAllSwitches()) {
        if (!portset) {
            continue;
        }
        for (const auto& uplink : portset->GetUplinks(false)) {
            if (uplink == nicName) {
                return std::move(portset);
            }
        }
    }
    output.AddErrorMessage(nicName + kNotAnUplink);
    return nullptr;
}

}  // namespace

constexpr Declare::CommandShape kNicStatsGetShape = {
    .description = "Get NIC statistics for a given interface.",
    .formatter = "simple",
    .outputParameters = kStatsOutput,
    .parameters = kNicParameters,
    .root = Declare::Root::List,
    .structure = &kStatsShape,
};

constexpr Declare::CommandShape kNicVlanStatsGetShape = {
    .description = "List VLAN statistics for active VLAN's on the NIC.",
    .formatter = "simple",
    .outputParameters = kVlanOutput,
    .parameters = kNicParameters,
    .root = Declare::Root::List,
    .structure = &kVlanShape,
};

constexpr Declare::CommandShape kNicVlanStatsSetShape = {
    .description = "Enable/disable VLAN statistics collection on the NIC.",
    .parameters = kVlanSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(NicStatsGet, kNicStatsGetShape) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    const std::string& nicName = input->GetParameter(kNicName);
    try {
        KelmCtl::Network::PnicImpl pnic(nicName);
        PnicStats stats{};
        pnic.GetPnicStats(stats);
        auto row = GetOutputStructure();
        row->SetField(kNicNameField, pnic.GetName());
        for (const Counter& counter : kCounters) {
            row->SetField(counter.field, static_cast<long>(stats.*counter.member));
        }
        list->Add(row);
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kStatsError + std::string(e.what()));
    }
}

NETWORK_COMMAND(NicVlanStatsGet, kNicVlanStatsGetShape) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    const std::string& nicName = input->GetParameter(kNicName);
    try {
        auto portset = FindUplinkSwitch(nicName, *output);
        if (!portset) {
            return;
        }
        std::vector<std::unique_ptr<PnicVlanStats>> records;
        for (PnicVlanStats* record : portset->GetVlanStats(nicName)) {
            records.emplace_back(record);
        }
        if (records.empty()) {
            output->AddErrorMessage(kVlanStatsOff + nicName + kEnableFirst);
            return;
        }
        for (const auto& record : records) {
            auto row = GetOutputStructure();
            row->SetField(kVlanId, static_cast<long>(record->vlanId));
            row->SetField(kPacketsReceived, static_cast<long>(record->rxPackets));
            row->SetField(kPacketsSent, static_cast<long>(record->txPackets));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kVlanGetError + std::string(e.what()));
    }
}

NETWORK_COMMAND(NicVlanStatsSet, kNicVlanStatsSetShape) {
    const std::string& nicName = input->GetParameter(kNicName);
    const bool enabled = input->GetParameterBool(kEnabled);
    try {
        auto portset = FindUplinkSwitch(nicName, *output);
        if (!portset) {
            return;
        }
        portset->SetVlanStatsEnabled(nicName, enabled);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kVlanSetError + std::string(e.what()));
    }
}

}  // namespace ZanvexCli::NetworkNamespace
