// What the host knows of one netstack instance: the record a NetstackInstanceImpl holds, as the
// simulated host stores it and the live host reads it from the kernel, and its column table in
// the store.
#pragma once

#include <string>

#include "hostsim/core/ColumnTable.h"

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

namespace HostSim::Ip {

// Table netstack, after its position. A profile leaves out the kernel's values of an instance
// that is down, and an instance without a name of its own is named by its key.
using KelmCtl::Network::NetstackRecord;
inline constexpr Column<NetstackRecord> kNetstackColumns[] = {
    {.sql = "key", .member = &NetstackRecord::key, .json = "key", .required = true},
    {.sql = "name", .member = &NetstackRecord::name, .json = "name"},
    {.sql = "up", .member = &NetstackRecord::up, .json = "enabled", .fallback = true},
    {.sql = "max_connections",
     .member = &NetstackRecord::maxConnections,
     .json = "maxConnections",
     .fallback = 11000},
    {.sql = "congestion_control",
     .member = &NetstackRecord::congestionControl,
     .json = "congestionControl",
     .fallbackText = "newreno"},
    {.sql = "ipv6", .member = &NetstackRecord::ipv6, .json = "ipv6", .fallback = true},
    {.sql = "ecn", .member = &NetstackRecord::ecn, .json = "ecn", .fallbackText = "enabled"},
    {.sql = "workers", .member = &NetstackRecord::workers, .json = "workers", .fallback = 2},
    {.sql = "current_max_connections", .member = &NetstackRecord::currentMaxConnections},
    {.sql = "current_ipv6", .member = &NetstackRecord::currentIpv6},
};

}  // namespace HostSim::Ip
