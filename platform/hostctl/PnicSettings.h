// The records a physical NIC exchanges for its counters and its driver settings: coalescing,
// offload, software simulation and ring sizes.
#pragma once

#include <cstdint>
#include <string>

namespace HostCtl::Network {

// The NIC's counters since the driver was loaded.
struct PnicStats {
    std::uint64_t txPackets = 0;
    std::uint64_t rxPackets = 0;
    std::uint64_t txBytes = 0;
    std::uint64_t rxBytes = 0;
    std::uint64_t txErrors = 0;
    std::uint64_t rxErrors = 0;
    std::uint64_t txDropped = 0;
    std::uint64_t rxDropped = 0;
    std::uint64_t rxMulticast = 0;
    std::uint64_t rxBroadcast = 0;
    std::uint64_t txMulticast = 0;
    std::uint64_t txBroadcast = 0;
    std::uint64_t rxLengthErrors = 0;
    std::uint64_t rxOverErrors = 0;
    std::uint64_t rxCrcErrors = 0;
    std::uint64_t rxFrameErrors = 0;
    std::uint64_t rxFifoErrors = 0;
    std::uint64_t rxMissedErrors = 0;
    std::uint64_t txAbortedErrors = 0;
    std::uint64_t txFifoErrors = 0;
    std::uint64_t txCarrierErrors = 0;
    std::uint64_t txHeartbeatErrors = 0;
    std::uint64_t txWindowErrors = 0;
    // Driver-private counters, which no command shows.
    std::uint64_t driverCounters[16] = {};
};

// The traffic of one VLAN on an uplink, counted while VLAN statistics are on.
struct PnicVlanStats {
    std::uint16_t vlanId = 0;
    std::uint64_t rxPackets = 0;
    std::uint64_t txPackets = 0;
};

// Interrupt coalescing. The reserved words are the driver's own and travel unchanged.
struct PnicCoalesceParams {
    std::uint8_t useAdaptiveRx = 0;
    std::uint8_t useAdaptiveTx = 0;
    std::uint32_t reserved0 = 0;
    std::uint32_t sampleIntervalSeconds = 0;
    std::uint32_t lowPacketRate = 0;
    std::uint32_t highPacketRate = 0;
    std::uint32_t rxUsecs = 0;
    std::uint32_t rxMaxFrames = 0;
    std::uint32_t reserved1 = 0;
    std::uint32_t reserved2 = 0;
    std::uint32_t txUsecs = 0;
    std::uint32_t txMaxFrames = 0;
    std::uint32_t reserved3 = 0;
    std::uint32_t reserved4 = 0;
    std::uint32_t lowRxUsecs = 0;
    std::uint32_t lowRxMaxFrames = 0;
    std::uint32_t lowTxUsecs = 0;
    std::uint32_t lowTxMaxFrames = 0;
    std::uint32_t highRxUsecs = 0;
    std::uint32_t highRxMaxFrames = 0;
    std::uint32_t highTxUsecs = 0;
    std::uint32_t highTxMaxFrames = 0;
};

// Hardware offload switches. On a write, `changeMask` picks the flags to apply.
struct PnicOffloadParams {
    static constexpr std::uint8_t kRxChecksum = 0x1;
    static constexpr std::uint8_t kTxChecksum = 0x2;
    static constexpr std::uint8_t kScatterGather = 0x4;
    static constexpr std::uint8_t kTso = 0x8;

    std::uint8_t changeMask = 0;
    std::uint8_t rxChecksum = 0;
    std::uint8_t txChecksum = 0;
    std::uint8_t scatterGather = 0;
    std::uint8_t tso = 0;
    // VLAN tag insertion and stripping, and the driver's name for its offload engine; they
    // pass through a read and a write unchanged.
    std::uint8_t vlanInsert = 0;
    std::uint8_t vlanStrip = 0;
    std::string engine;
};

// Features the host simulates in software for the NIC. On a write, `settingMask` picks the
// flags to apply, one bit per flag in the record's order.
struct PnicSoftwareSimulation {
    std::uint32_t settingMask = 0;
    std::uint8_t ipv4Cso = 0;
    std::uint8_t ipv4Tso = 0;
    std::uint8_t scatterGather = 0;
    std::uint8_t offsetBasedOffload = 0;
    std::uint8_t vxlanEncap = 0;
    std::uint8_t ipv6Tso = 0;
    std::uint8_t ipv6TsoExt = 0;
    std::uint8_t ipv6Cso = 0;
    std::uint8_t ipv6CsoExt = 0;
    std::uint8_t highDma = 0;
    std::uint8_t scatterGatherMp = 0;
    std::uint8_t vlanTagging = 0;
    std::uint8_t vlanUntagging = 0;
    std::uint8_t geneveOffload = 0;
};

// Sizes of the descriptor rings. On a write, `changeMask` picks the sizes to apply.
struct PnicRingParams {
    static constexpr std::uint8_t kRx = 0x1;
    static constexpr std::uint8_t kRxMini = 0x2;
    static constexpr std::uint8_t kRxJumbo = 0x4;
    static constexpr std::uint8_t kTx = 0x8;

    std::uint8_t changeMask = 0;
    std::uint32_t rx = 0;
    std::uint32_t rxMini = 0;
    std::uint32_t rxJumbo = 0;
    std::uint32_t tx = 0;
};

}  // namespace HostCtl::Network
