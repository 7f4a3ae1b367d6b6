// Constants that commands of several families share.
#pragma once

namespace ZanvexCli::NetworkNamespace {

// Words for a switch's CDP status, indexed by the status number.
inline constexpr const char* kCdpStatusWords[] = {"down", "listen", "advertise", "both"};

// The unspecified IPv6 address.
inline constexpr const char kUnspecifiedIpv6Address[] = "::";

// What a new netstack instance starts with.
inline constexpr const char kDefaultCongestionControl[] = "newreno";
inline constexpr const char kDefaultEcnStatus[] = "enabled";

}  // namespace ZanvexCli::NetworkNamespace
