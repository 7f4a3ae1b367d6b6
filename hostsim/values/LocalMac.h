// The MAC addresses the simulated host gives its own objects: locally administered unicast
// addresses, "02:KK:NN:NN:NN:NN", whose second byte KK tells what kind of object has the address
// and whose last four bytes number it within its kind.
#pragma once

#include <cstdint>
#include <string>

namespace HostSim {

// The first byte of each such address: the locally administered bit set, the group bit clear.
inline constexpr std::uint8_t kLocalMacFirstByte = 0x02;

enum class MacKind : std::uint8_t {
    PciNic = 0x01,             // a physical NIC on PCI
    PseudoNic = 0x02,          // a NIC with a descriptor in place of a PCI device
    NicVirtualAddress = 0x03,  // the address a NIC is set to send with in place of its own
    KelmInterface = 0x04,      // a Kelm network interface
    VmPort = 0x05,             // a VM's port on a switch
    Neighbor = 0x06,  // another machine on the host's networks, as a neighbour cache has it
};

// "02:KK:", the text every address of `kind` begins with.
std::string LocalMacPrefix(MacKind kind);

// The `number`-th address of `kind`: "02:04:00:00:00:09" for the Kelm interface numbered 9.
std::string LocalMac(MacKind kind, std::uint32_t number);

}  // namespace HostSim
