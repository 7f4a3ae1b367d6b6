// Records of a NIC's Data Center Bridging state.
#pragma once

#include <cstdint>
#include <string>

namespace HostCtl::Network {

struct DcbCapabilities {
    std::uint8_t priorityGroup = 0;
    std::uint8_t priorityFlowControl = 0;
    std::uint8_t upToTcMap = 0;
    std::uint8_t pgTrafficClasses = 0;
    std::uint8_t pfcTrafficClasses = 0;
};

// Per traffic class arrays hold eight entries, class 0 first.
struct DcbIeeeEtsConfig {
    std::uint8_t willing = 0;
    std::uint8_t supportedCapacity = 0;
    std::string creditBasedShaper;
    unsigned char txBandwidth[8] = {};
    unsigned char rxBandwidth[8] = {};
    unsigned char tsaTable[8] = {};
    unsigned char priorityAssignment[8] = {};
    unsigned char recommendedBandwidth[8] = {};
    unsigned char recommendedTsa[8] = {};
    unsigned char recommendedPriority[8] = {};
};

struct DcbIeeePfcConfig {
    std::uint8_t trafficClasses = 0;
    std::uint8_t pfcConfig = 0;  // one bit per priority
    std::uint8_t macsecBypass = 0;
    std::uint8_t delay = 0;
    unsigned long sent[8] = {};
    unsigned long received[8] = {};
};

struct DcbAppInfo {
    std::string appType;
    std::string protocolId;
    std::string userPriority;
};

}  // namespace HostCtl::Network
