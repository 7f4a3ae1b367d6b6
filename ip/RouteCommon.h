// Parameter names, descriptions, messages and field names that the IPv4 and IPv6 route commands
// share.
#pragma once

#include "ip/NetstackParameter.h"

namespace ZanvexCli::NetworkNamespace::Route {

constexpr char kNetworkParameter[] = "network";
constexpr char kGatewayParameter[] = "gateway";
constexpr char kTypeParameter[] = "type";
constexpr char kDefaultNetwork[] = "default";
constexpr char kSystemType[] = "system";
constexpr char kNotDefaultRoute[] = " is not a default route.";
constexpr char kInvalidType[] = "Invalid type value, should be 'system'.";
constexpr char kInvalidNetstack[] = "Invalid netstack value, should be 'defaultTcpipStack'.";

constexpr char kNetwork[] = "Network";
constexpr char kNetmask[] = "Netmask";
constexpr char kGateway[] = "Gateway";
constexpr char kInterface[] = "Interface";

}  // namespace ZanvexCli::NetworkNamespace::Route
