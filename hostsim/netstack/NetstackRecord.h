// What the host knows of one netstack instance: the record a NetstackInstanceImpl holds, as the
// simulated host stores it and the live host reads it from the kernel.
#pragma once

#include <string>

namespace KelmCtl::Network {

struct NetstackRecord {
    std::string key;
    std::string name;
    bool up = false;
    unsigned maxConnections = 0;
    std::string congestionControl;
    bool ipv6 = false;
    std::string ecn;
    unsigned workers = 0;
    // The kernel's values, taken from the configuration when the instance was created there.
    unsigned currentMaxConnections = 0;
    bool currentIpv6 = false;
};

}  // namespace KelmCtl::Network

namespace HostSim {

using NetstackRecord = KelmCtl::Network::NetstackRecord;

}  // namespace HostSim
