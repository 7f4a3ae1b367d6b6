// Records that a physical NIC's device features exchange: netqueues and their load balancer,
// hardware capabilities, the self test and uplink attachments.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace HostCtl::Network {

// The netqueue load balancer's features, in the order of the `allowed` and `supported` flags.
inline constexpr unsigned kNetqueueFeatureCount = 11;
// The filter classes, in the order of `filterClasses`: MacOnly, VlanOnly, VlanMac, Vxlan,
// Geneve, GenericEncap.
inline constexpr unsigned kNetqueueFilterClassCount = 6;

struct PnicNetqueuePluginInfo {
    std::string moduleName;
    std::string pluginName;
    std::string description;
};

// Read whole from the NIC; on a write the markers (`settingMask`, the `...Changed` flags) say
// which parts the host applies.
struct PnicNetqueueParams {
    std::uint32_t settingMask = 0;  // bit n: apply `allowed[n]`
    std::uint32_t txQueueCount = 0;
    std::uint32_t rxQueueCount = 0;
    std::uint8_t txCountChanged = 0;
    std::uint8_t rxCountChanged = 0;
    std::uint8_t stateChanged = 0;
    std::uint8_t pluginChanged = 0;
    std::uint8_t balancerEnabled = 0;
    std::uint8_t pluginEnabled = 0;
    std::uint8_t allowed[kNetqueueFeatureCount] = {};
    std::uint8_t supported[kNetqueueFeatureCount] = {};
    std::uint8_t filterClasses[kNetqueueFilterClassCount] = {};
    std::vector<PnicNetqueuePluginInfo> plugins;
    std::vector<PnicNetqueuePluginInfo> activePlugins;
};

// Bit n of a mask stands for the capability named by PnicImpl::GetHwCapName(n).
struct PnicHwCapabilities {
    std::uint64_t supportedMask = 0;
    std::uint64_t activatedMask = 0;
};

struct PnicSelfTestResult {
    std::uint8_t failed = 0;
    std::vector<std::string> info;
};

// A branch uplink attached to a trunk NIC.
struct PnicAttachment {
    std::string branch;
    std::uint16_t vlanId = 0;
};

}  // namespace HostCtl::Network
