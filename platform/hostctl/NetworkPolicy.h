// The policies that a virtual switch and a port group carry: NIC teaming (failover), traffic
// shaping and port security. Each field is set or unset apart from its value: a policy's
// presence mask `setFields` has one bit per field, and a setter stores the value and sets the
// bit. A port group's own policy holds only the fields it overrides; its effective policy is
// those fields over its switch's.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace HostCtl::Network {

enum TeamPolicyType : std::int32_t {
    TeamPolicyIpHash = 1,
    TeamPolicySourceMac = 2,
    TeamPolicyOriginatingPort = 3,
    TeamPolicyExplicitOrder = 4,
};

// How a failed uplink is detected. Bit 4 of both words is the beacon criterion: set in
// `criteriaMask` and clear in `criteriaValues` means beacon probing, else link state.
class LinkCriteriaSelectionPolicy {
  public:
    static constexpr std::uint32_t kBeaconBit = 1u << 4;

    virtual ~LinkCriteriaSelectionPolicy() = default;

    void SetBeacon(bool value) {
        criteriaMask |= kBeaconBit;
        criteriaValues = value ? (criteriaValues | kBeaconBit) : (criteriaValues & ~kBeaconBit);
    }

    std::uint32_t criteriaMask = 0;
    std::uint32_t criteriaValues = 0;
    // Link speed and duplex criteria, kept for the host and copied along.
    std::uint32_t minimumSpeed = 0;
    std::uint32_t fullDuplex = 0;
};

class NicTeamingPolicy {
  public:
    static constexpr std::uint32_t kTeamPolicyBit = 1u << 0;
    static constexpr std::uint32_t kNotifySwitchBit = 1u << 2;
    static constexpr std::uint32_t kLinkCriteriaBit = 1u << 3;
    static constexpr std::uint32_t kUplinksBit = 1u << 4;
    static constexpr std::uint32_t kRollingRestorationBit = 1u << 5;

    virtual ~NicTeamingPolicy() = default;

    // Originating port balancing, link-state detection, notify on, failback on, no uplinks.
    static NicTeamingPolicy GetDefaultPolicy();
    void UnsetAll() { setFields = 0; }

    void SetTeamingPolicy(TeamPolicyType value) {
        teamPolicy = value;
        setFields |= kTeamPolicyBit;
    }
    void SetNotifySwitchOnFailure(bool value) {
        notifySwitchOnFailure = value;
        setFields |= kNotifySwitchBit;
    }
    void SetLinkCriteria(const LinkCriteriaSelectionPolicy& value) {
        linkCriteria = value;
        setFields |= kLinkCriteriaBit;
    }
    void SetUplinkOrder(const std::vector<std::string>& value) {
        uplinkOrder = value;
        setFields |= kUplinksBit;
    }
    void SetMaxActiveUplinks(int value) {
        maxActiveUplinks = value;
        setFields |= kUplinksBit;
    }
    void SetRollingRestoration(bool value) {
        rollingRestoration = value;
        setFields |= kRollingRestorationBit;
    }

    std::uint32_t setFields = 0;
    TeamPolicyType teamPolicy = TeamPolicyOriginatingPort;
    std::uint8_t reserved = 0;
    std::uint8_t notifySwitchOnFailure = 0;
    // True: a NIC back in service is not used again at once (no failback).
    std::uint8_t rollingRestoration = 0;
    LinkCriteriaSelectionPolicy linkCriteria;
    // The active uplinks, then the standby ones, each in failover order.
    std::vector<std::string> uplinkOrder;
    // How many entries at the head of `uplinkOrder` are active.
    std::int32_t maxActiveUplinks = 0;
};

// Bandwidths in bits per second, the burst in bytes.
struct ShapingPolicy {
    static constexpr std::uint32_t kPeakBit = 1u << 0;
    static constexpr std::uint32_t kAverageBit = 1u << 1;
    static constexpr std::uint32_t kBurstBit = 1u << 2;
    static constexpr std::uint32_t kEnabledBit = 1u << 3;

    // Shaping off, with 100000 Kbps average and peak and a burst of 819200 Kib at hand.
    static ShapingPolicy GetDefaultPolicy();
    // Clears the presence mask and the enabled flag: an unset shaper is off.
    void UnsetAll() {
        setFields = 0;
        enabled = 0;
    }

    void SetPeakBps(unsigned long value) {
        peakBps = value;
        setFields |= kPeakBit;
    }
    void SetAverageBps(unsigned long value) {
        averageBps = value;
        setFields |= kAverageBit;
    }
    void SetBurstSize(unsigned long value) {
        burstSize = value;
        setFields |= kBurstBit;
    }
    void SetEnabled(bool value) {
        enabled = value;
        setFields |= kEnabledBit;
    }

    std::uint8_t enabled = 0;
    std::uint64_t peakBps = 0;
    std::uint64_t averageBps = 0;
    std::uint64_t burstSize = 0;
    std::uint32_t setFields = 0;
};

class PortSecurityPolicy {
  public:
    static constexpr std::uint32_t kPromiscuousBit = 1u << 0;
    static constexpr std::uint32_t kMacChangeBit = 1u << 1;
    static constexpr std::uint32_t kForgedTransmitsBit = 1u << 2;

    virtual ~PortSecurityPolicy() = default;

    // Promiscuous mode refused, MAC changes and forged transmits allowed.
    static PortSecurityPolicy GetDefaultPolicy();
    void UnsetAll() { setFields = 0; }

    void SetAllowPromiscuous(bool value) {
        allowPromiscuous = value;
        setFields |= kPromiscuousBit;
    }
    void SetAllowMacAddressChange(bool value) {
        allowMacAddressChange = value;
        setFields |= kMacChangeBit;
    }
    void SetAllowForgedTransmits(bool value) {
        allowForgedTransmits = value;
        setFields |= kForgedTransmitsBit;
    }

    std::uint32_t setFields = 0;
    std::uint8_t allowPromiscuous = 0;
    std::uint8_t allowMacAddressChange = 0;
    std::uint8_t allowForgedTransmits = 0;
};

// The offloads a new switch asks of its uplinks, as a 128-bit mask.
struct NicCapabilities {
    static NicCapabilities GetDefaultPolicy();

    std::uint64_t low = 0;
    std::uint64_t high = 0;
};

}  // namespace HostCtl::Network
