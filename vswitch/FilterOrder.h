// What the `network port` commands share: the order of a port's filters.
#pragma once

#include <memory>

#include "hostctl/Port.h"

namespace ZanvexCli::NetworkNamespace {

// The order of `port filter stats get`: receive filters first, by order key ascending, then
// transmit filters, by order key descending.
bool sortFilterStats(const std::unique_ptr<HostCtl::Network::FilterStats>& a,
                     const std::unique_ptr<HostCtl::Network::FilterStats>& b);

}  // namespace ZanvexCli::NetworkNamespace
