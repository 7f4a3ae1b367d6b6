// Command classes of the live tables of the Kelm IP stacks: `network ip route`, `network ip
// neighbor`, `network ip connection` and `network multicast group`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(IpRouteIpv4Add);
NETWORK_COMMAND(IpRouteIpv4Remove);
NETWORK_COMMAND(IpRouteIpv4List);
NETWORK_COMMAND(IpRouteIpv6Add);
NETWORK_COMMAND(IpRouteIpv6Remove);
NETWORK_COMMAND(IpRouteIpv6List);
NETWORK_COMMAND(IpNeighborList);
NETWORK_COMMAND(IpNeighborRemove);
NETWORK_COMMAND(IpConnectionList);
NETWORK_COMMAND(MulticastGroupList);

}  // namespace ZanvexCli::NetworkNamespace
