// Ports of the host's switches and their counters.
#pragma once

#include <cstdint>
#include <string>

#include "hostctl/HostCtlObject.h"

namespace HostCtl::Network {

// Packet counters of a port; the caller zeroes the record before it is filled.
struct PacketStats {
    std::uint64_t txPackets = 0;
    std::uint64_t txMulticast = 0;
    std::uint64_t txBroadcast = 0;
    std::uint64_t rxPackets = 0;
    std::uint64_t rxMulticast = 0;
    std::uint64_t rxBroadcast = 0;
    std::uint64_t txDropped = 0;
    std::uint64_t rxDropped = 0;
};

// Byte counters of a port, with the packet totals they were counted over.
struct PortByteStats {
    std::uint64_t packetsSent = 0;
    std::uint64_t bytesSent = 0;
    std::uint64_t packetsReceived = 0;
    std::uint64_t bytesReceived = 0;
};

// One filter on a port. The last five counters are valid only with `hasDetail`.
struct FilterStats {
    std::string filterName;
    // Where the filter stands in the chain of its direction.
    std::string orderKey;
    bool isActive = false;
    bool isTransmit = false;
    bool hasDetail = false;
    std::uint64_t packetsIn = 0;
    std::uint64_t packetsOut = 0;
    std::uint64_t packetsDropped = 0;
    std::uint64_t packetsFiltered = 0;
    std::uint64_t packetsFaulted = 0;
    std::uint64_t packetsQueued = 0;
    std::uint64_t packetsInjected = 0;
    std::uint64_t packetErrors = 0;
};

class Port : public virtual Lib::HostCtlObject {
public:
    virtual std::uint32_t GetPortId() const = 0;
};

}  // namespace HostCtl::Network
