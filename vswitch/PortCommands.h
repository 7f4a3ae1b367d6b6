// Command classes of `network port` and `network vm`: the counters and filters of one port, and
// the ports of virtual machines.
#pragma once

#include <memory>

#include "frame/Declaration.h"
#include "hostctl/Port.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(PortStatsGet);
NETWORK_COMMAND(PortFilterStatsGet);
NETWORK_COMMAND(VMList);
NETWORK_COMMAND(VMPortList);

// The order of `port filter stats get`: receive filters first, by order key ascending, then
// transmit filters, by order key descending.
bool sortFilterStats(const std::unique_ptr<HostCtl::Network::FilterStats>& a,
                     const std::unique_ptr<HostCtl::Network::FilterStats>& b);

}  // namespace ZanvexCli::NetworkNamespace
