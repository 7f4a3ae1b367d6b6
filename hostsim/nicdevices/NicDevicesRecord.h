// The device features of one NIC as the nic_device table keeps them, and its column table.
#pragma once

#include <cstdint>
#include <string>

#include "hostsim/core/ColumnTable.h"

namespace HostSim::NicDevices {

struct Device {
    std::string nic;
    std::string sriov;  // JSON {"enabled", "virtualFunctions"}; empty: no SR-IOV
    bool netqueue = false;
    std::uint32_t txQueues = 0;
    std::uint32_t rxQueues = 0;
    std::uint32_t maxTxQueues = 0;
    std::uint32_t maxRxQueues = 0;
    bool balancerEnabled = false;
    std::uint32_t allowed = 0;  // bit n: balancer feature n
    std::uint32_t supported = 0;
    std::uint32_t filterClasses = 0;  // bit n: filter class n
    std::string plugins;              // the balancer plug-ins, in the form of PluginsToText
    bool hwCapabilities = false;
    std::uint64_t hwSupported = 0;
    std::uint64_t hwActivated = 0;
    std::string dcb;  // JSON; empty: no DCB
    std::string
        diagnostics;  // JSON {"eepromMagic", "eeprom", "registers", "selfTest"}; empty: none
    std::string attachments = "[]";  // JSON array of {"branch", "vlanId"}
};

// Table nic_device, after its position. The NIC is the first column.
inline constexpr Column<Device> kColumns[] = {
    {.sql = "nic", .member = &Device::nic},
    {.sql = "sriov", .member = &Device::sriov, .nullWhenEmpty = true},
    {.sql = "netqueue", .member = &Device::netqueue},
    {.sql = "tx_queues", .member = &Device::txQueues},
    {.sql = "rx_queues", .member = &Device::rxQueues},
    {.sql = "max_tx_queues", .member = &Device::maxTxQueues},
    {.sql = "max_rx_queues", .member = &Device::maxRxQueues},
    {.sql = "balancer", .member = &Device::balancerEnabled},
    {.sql = "allowed", .member = &Device::allowed},
    {.sql = "supported", .member = &Device::supported},
    {.sql = "filter_classes", .member = &Device::filterClasses},
    {.sql = "plugins", .member = &Device::plugins},
    {.sql = "hw_capabilities", .member = &Device::hwCapabilities},
    {.sql = "hw_supported", .member = &Device::hwSupported},
    {.sql = "hw_activated", .member = &Device::hwActivated},
    {.sql = "dcb", .member = &Device::dcb, .nullWhenEmpty = true},
    {.sql = "diagnostics", .member = &Device::diagnostics, .nullWhenEmpty = true},
    {.sql = "attachments", .member = &Device::attachments},
};

}  // namespace HostSim::NicDevices
