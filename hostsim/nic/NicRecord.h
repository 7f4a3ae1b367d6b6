// What the host knows of one NIC: the record a PnicImpl holds, as the simulated host stores it
// and the live host reads it from the kernel.
#pragma once

#include <cstdint>
#include <string>

#include "kelmctl/PnicImpl.h"

namespace KelmCtl::Network {

// One NIC. On the simulated host it is a row of the nic table, whose nested detail stays JSON
// text until it is asked for; the live host leaves that detail empty and asks the kernel for it
// when it is wanted.
struct PnicImpl::Record {
    std::string name;
    std::string pciAddress;  // empty for a pseudo NIC
    std::string pciVendor;
    std::string pciDevice;
    std::string descriptor;       // a pseudo NIC's "kind:vendor:device"
    std::string descriptorError;  // when set, reading the descriptor fails with it
    std::string driver;
    bool adminUp = false;
    bool cableConnected = false;  // the link comes up when the NIC is up and this is set
    std::uint32_t speed = 0;
    std::uint32_t duplex = 0;
    std::string mac;
    std::uint32_t mtu = 0;
    std::string dpuId;     // empty when no DPU backs the NIC
    std::string linkInfo;  // JSON of PnicInfo without the link status
    std::string pause;     // JSON of PnicPauseParams
    std::string driverVersion;
    std::string firmwareVersion;
    std::string busInfo;

    bool LinkUp() const { return adminUp && cableConnected; }
};

}  // namespace KelmCtl::Network

namespace HostSim {

using NicRecord = KelmCtl::Network::PnicImpl::Record;

}  // namespace HostSim
