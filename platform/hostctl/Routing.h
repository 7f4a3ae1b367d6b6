// Records of the Kelm IP stacks' live tables: routes, neighbours and sockets.
#pragma once

#include <cstdint>
#include <string>

#include "hostctl/IpAddress.h"

namespace HostCtl::Network {

struct Ipv4Route {
    Ipv4Network network;
    Ipv4Address gateway;  // 0.0.0.0 for a network reached directly
    std::string interfaceName;
};

struct Ipv6Route {
    Ipv6Network network;
    Ipv6Address gateway;  // :: for a network reached directly
    std::string interfaceName;
};

struct Ipv4Neighbor {
    Ipv4Address address;
    std::string macAddress;
    std::string interfaceName;
    std::int32_t expiry = 0;  // seconds; negative for an entry that does not expire
    std::uint32_t flags = 0;  // Ipv4NeighborFlags
};

// Bits of Ipv4Neighbor::flags.
enum Ipv4NeighborFlags : std::uint32_t {
    Ipv4NeighborStatic = 1,
};

struct Ipv6Neighbor {
    Ipv6Address address;
    std::string macAddress;
    std::string interfaceName;
    std::uint32_t expiry = 0;  // seconds
    std::uint32_t state = 0;   // Ipv6NeighborState
    std::uint32_t flags = 0;   // Ipv6NeighborFlags
};

// The states of neighbour discovery.
enum Ipv6NeighborState : std::uint32_t {
    Ipv6NeighborIncomplete = 0,
    Ipv6NeighborReachable = 1,
    Ipv6NeighborStale = 2,
    Ipv6NeighborDelay = 3,
    Ipv6NeighborProbe = 4,
};

// Bits of Ipv6Neighbor::flags.
enum Ipv6NeighborFlags : std::uint32_t {
    Ipv6NeighborRouter = 1,
    Ipv6NeighborStatic = 2,
};

// One socket of a netstack instance.
struct TcpIpConnection {
    std::uint32_t addressFamily = 0;  // 4 or 6
    std::uint32_t recvQueue = 0;
    std::uint32_t sendQueue = 0;
    std::string localAddress;
    std::uint16_t localPort = 0;
    std::string foreignAddress;
    std::uint16_t foreignPort = 0;
    std::uint32_t state = 0;  // index of the TCP state, 0 CLOSED to 10 TIME_WAIT
    std::uint32_t worldId = 0;
    std::string ccAlgorithm;
};

}  // namespace HostCtl::Network
