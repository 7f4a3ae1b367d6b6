// Records of the kernel's IPsec databases: security associations and security policies. The
// enumerated fields are indices into the name tables of KelmCtl::Network::IpSecConfigImpl.
#pragma once

#include <cstdint>
#include <string>

#include "hostctl/IpAddress.h"

namespace HostCtl::Network {

struct IpSecSadParam {
    std::string name;  // "auto" for an association the kernel made
    std::uint64_t addTime = 0;
    std::uint64_t useTime = 0;
    int state = 4;
    std::uint64_t bytes = 0;
    std::uint64_t lifetime = 0;  // seconds; 0 means no limit
    std::uint32_t spi = 0;
    Ipv6Address source;
    Ipv6Address destination;
    int mode = 2;
    int encryptionAlgorithm = 3;
    std::string encryptionKey;
    int integrityAlgorithm = 2;
    std::string integrityKey;
};

struct IpSecSpdParam {
    std::uint64_t addTime = 0;
    std::uint64_t useTime = 0;
    Ipv6Address source;
    std::uint32_t sourcePrefixLength = 0;
    std::int32_t sourcePort = 0;  // 0 stands for any port
    Ipv6Address destination;
    std::uint32_t destinationPrefixLength = 0;
    std::int32_t destinationPort = 0;
    int upperLayerProtocol = 4;
    int direction = 2;
    int action = 3;
    int mode = 2;
    std::string saName;  // "UNKNOWN" when the association it named is gone
    std::string name;
};

}  // namespace HostCtl::Network
