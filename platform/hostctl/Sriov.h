// Records of an SR-IOV NIC's virtual functions.
#pragma once

#include <cstdint>
#include <string>

namespace HostCtl::Network {

struct SriovNicVFInfo {
    std::uint8_t vfId = 0;
    std::uint8_t active = 0;
    std::string pciAddress;     // "00000:059:02.1", decimal fields
    std::string hexPciAddress;  // "0000:3b:02.1"
    std::string ownerWorldId;   // empty when no world owns the function
};

struct SriovNicVFStats {
    std::uint64_t rxUnicastPkts = 0;
    std::uint64_t rxUnicastBytes = 0;
    std::uint64_t rxMulticastPkts = 0;
    std::uint64_t rxMulticastBytes = 0;
    std::uint64_t rxBroadcastPkts = 0;
    std::uint64_t rxBroadcastBytes = 0;
    std::uint64_t rxOutOfBufferDrops = 0;
    std::uint64_t rxErrorDrops = 0;
    std::uint64_t rxLroPkts = 0;
    std::uint64_t rxLroBytes = 0;
    std::uint64_t txUnicastPkts = 0;
    std::uint64_t txUnicastBytes = 0;
    std::uint64_t txMulticastPkts = 0;
    std::uint64_t txMulticastBytes = 0;
    std::uint64_t txBroadcastPkts = 0;
    std::uint64_t txBroadcastBytes = 0;
    std::uint64_t txErrors = 0;
    std::uint64_t txDiscards = 0;
    std::uint64_t txTsoPkts = 0;
    std::uint64_t txTsoBytes = 0;
};

}  // namespace HostCtl::Network
