// `network port stats get` and `network port filter stats get`: the packet counters and the
// filters of the first port, over all switches, with the number asked for.
#include <algorithm>
#include <cstdlib>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/PortImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"
#include "vswitch/FilterOrder.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using KelmCtl::Network::PortImpl;

constexpr char kPortIdParameter[] = "portid";

constexpr char kPortId[] = "Port ID";
constexpr char kPacketsReceived[] = "Packets received";
constexpr char kPacketsSent[] = "Packets sent";
constexpr char kBytesReceived[] = "Bytes received";
constexpr char kBytesSent[] = "Bytes sent";
constexpr char kBroadcastReceived[] = "Broadcast packets received";
constexpr char kBroadcastSent[] = "Broadcast packets sent";
constexpr char kMulticastReceived[] = "Multicast packets received";
constexpr char kMulticastSent[] = "Multicast packets sent";
constexpr char kUnicastReceived[] = "Unicast packets received";
constexpr char kUnicastSent[] = "Unicast packets sent";
constexpr char kReceiveDropped[] = "Receive packets dropped";
constexpr char kTransmitDropped[] = "Transmit packets dropped";

constexpr Field kPortFields[] = {
    {kPortId, FieldType::Int},
    {kPacketsReceived, FieldType::Int, 1},
    {kPacketsSent, FieldType::Int, 2},
    {kBytesReceived, FieldType::Int, 3},
    {kBytesSent, FieldType::Int, 4},
    {kBroadcastReceived, FieldType::Int, 5},
    {kBroadcastSent, FieldType::Int, 6},
    {kMulticastReceived, FieldType::Int, 7},
    {kMulticastSent, FieldType::Int, 8},
    {kUnicastReceived, FieldType::Int, 9},
    {kUnicastSent, FieldType::Int, 10},
    {kReceiveDropped, FieldType::Int, 11},
    {kTransmitDropped, FieldType::Int, 12},
};
constexpr Declare::StructShape kPort = {"Port", kPortFields};

constexpr Declare::OutputParameter kStatsOutputParameters[] = {
    {"header:Port", "Packet statistics for port %Port ID%"},
};

constexpr Declare::Parameter kStatsParameters[] = {
    {kPortIdParameter, "p", Declare::Type::Int, true, "Port ID for the port to get statistics."},
};

constexpr char kFilterName[] = "Filter name";
constexpr char kFilterDirection[] = "Filter direction";
constexpr char kPacketsIn[] = "Packets in";
constexpr char kPacketsOut[] = "Packets out";
constexpr char kPacketsDropped[] = "Packets dropped";
constexpr char kPacketsFiltered[] = "Packets filtered";
constexpr char kPacketsFaulted[] = "Packets faulted";
constexpr char kPacketsQueued[] = "Packets queued";
constexpr char kPacketsInjected[] = "Packets injected";
constexpr char kPacketErrors[] = "Packet errors";

constexpr Field kFilterFields[] = {
    {kFilterName, FieldType::String},      {kFilterDirection, FieldType::String, 1},
    {kPacketsIn, FieldType::Int, 2},       {kPacketsOut, FieldType::Int, 3},
    {kPacketsDropped, FieldType::Int, 4},  {kPacketsFiltered, FieldType::Int, 5},
    {kPacketsFaulted, FieldType::Int, 6},  {kPacketsQueued, FieldType::Int, 7},
    {kPacketsInjected, FieldType::Int, 8}, {kPacketErrors, FieldType::Int, 9},
};
constexpr Declare::StructShape kFilter = {"Filter", kFilterFields};

constexpr Declare::OutputParameter kFilterOutputParameters[] = {
    {"header:Filter", "Filter statistics for %Filter name%"},
};

constexpr Declare::Parameter kFilterParameters[] = {
    {kPortIdParameter, "p", Declare::Type::Int, true,
     "Port ID for the port to get filter statistics."},
};

constexpr char kNoSuchPort[] = "Couldn't find requested port";
constexpr char kStatsFailed[] = "Unable to get stats for port: ";
constexpr char kFilterStatsFailed[] = "Unable to get filter stats for port: ";
constexpr char kTransmit[] = "Transmit";
constexpr char kReceive[] = "Receive";

// The port type whose filters see the other direction.
constexpr int kReversedType = PortImpl::kTypeUplink;

long ToLong(std::uint64_t value) {
    return static_cast<long>(value);
}

// The first port, switch by switch, whose id is `number`; null when there is none. `ports`
// keeps the port alive for the caller.
PortImpl* FindPort(long number, std::vector<std::unique_ptr<HostCtl::Network::Port>>& ports) {
    KelmCtl::Network::VirtualSwitchInfoImpl info;
    for (const auto& portset : info.GetAllSwitches()) {
        ports = portset->GetPorts();
        for (const auto& port : ports) {
            auto* impl = dynamic_cast<PortImpl*>(port.get());
            if (impl != nullptr &&
                static_cast<std::uint64_t>(impl->GetId()) == static_cast<std::uint64_t>(number)) {
                return impl;
            }
        }
    }
    return nullptr;
}

}  // namespace

bool sortFilterStats(const std::unique_ptr<HostCtl::Network::FilterStats>& a,
                     const std::unique_ptr<HostCtl::Network::FilterStats>& b) {
    if (a->isTransmit != b->isTransmit) {
        return !a->isTransmit;
    }
    if (!a->isTransmit) {
        return a->orderKey.compare(b->orderKey) < 0;
    }
    return a->orderKey.compare(b->orderKey) > 0;
}

constexpr Declare::CommandShape kPortStatsGetShape = {
    .description = "Packet statistics for a given port.",
    .formatter = "simple",
    .outputParameters = kStatsOutputParameters,
    .parameters = kStatsParameters,
    .root = Declare::Root::List,
    .structure = &kPort,
};

NETWORK_COMMAND(PortStatsGet, kPortStatsGetShape) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    const long number = std::strtol(input->GetParameter(kPortIdParameter).c_str(), nullptr, 10);
    try {
        std::vector<std::unique_ptr<HostCtl::Network::Port>> ports;
        PortImpl* port = FindPort(number, ports);
        if (port == nullptr) {
            output->AddErrorMessage(kNoSuchPort);
            return;
        }
        const HostCtl::Network::PortByteStats bytes = port->GetPortStats();
        HostCtl::Network::PacketStats packets{};
        port->GetPacketStats(packets);
        auto row = GetOutputStructure();
        row->SetField(kPortId, static_cast<long>(port->GetId()));
        row->SetField(kPacketsReceived, ToLong(packets.rxPackets));
        row->SetField(kPacketsSent, ToLong(packets.txPackets));
        row->SetField(kBytesReceived, ToLong(bytes.bytesReceived));
        row->SetField(kBytesSent, ToLong(bytes.bytesSent));
        row->SetField(kBroadcastReceived, ToLong(packets.rxBroadcast));
        row->SetField(kBroadcastSent, ToLong(packets.txBroadcast));
        row->SetField(kMulticastReceived, ToLong(packets.rxMulticast));
        row->SetField(kMulticastSent, ToLong(packets.txMulticast));
        row->SetField(kUnicastReceived,
                      ToLong(packets.rxPackets - (packets.rxMulticast + packets.rxBroadcast)));
        row->SetField(kUnicastSent,
                      ToLong(packets.txPackets - (packets.txMulticast + packets.txBroadcast)));
        row->SetField(kReceiveDropped, ToLong(packets.rxDropped));
        row->SetField(kTransmitDropped, ToLong(packets.txDropped));
        list->Add(row);
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(std::string(kStatsFailed) + e.what());
    }
}

constexpr Declare::CommandShape kPortFilterStatsGetShape = {
    .description = "Filter statistics for a given port.",
    .formatter = "simple",
    .outputParameters = kFilterOutputParameters,
    .parameters = kFilterParameters,
    .root = Declare::Root::List,
    .structure = &kFilter,
};

NETWORK_COMMAND(PortFilterStatsGet, kPortFilterStatsGetShape) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    const long number = std::strtol(input->GetParameter(kPortIdParameter).c_str(), nullptr, 10);
    try {
        std::vector<std::unique_ptr<HostCtl::Network::Port>> ports;
        PortImpl* port = FindPort(number, ports);
        if (port == nullptr) {
            output->AddErrorMessage(kNoSuchPort);
            return;
        }
        auto filters = port->GetFilterStats();
        std::sort(filters.begin(), filters.end(), sortFilterStats);
        for (const auto& filter : filters) {
            if (!filter->isActive) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kFilterName, filter->filterName);
            const bool transmit = filter->isTransmit != (port->GetType() == kReversedType);
            row->SetField(kFilterDirection, transmit ? kTransmit : kReceive);
            row->SetField(kPacketsIn, ToLong(filter->packetsIn));
            row->SetField(kPacketsOut, ToLong(filter->packetsOut));
            row->SetField(kPacketsDropped, ToLong(filter->packetsDropped));
            if (filter->hasDetail) {
                row->SetField(kPacketsFiltered, ToLong(filter->packetsFiltered));
                row->SetField(kPacketsFaulted, ToLong(filter->packetsFaulted));
                row->SetField(kPacketsQueued, ToLong(filter->packetsQueued));
                row->SetField(kPacketsInjected, ToLong(filter->packetsInjected));
                row->SetField(kPacketErrors, ToLong(filter->packetErrors));
            }
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(std::string(kFilterStatsFailed) + e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
