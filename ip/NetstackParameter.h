// The netstack parameter that the IP commands share: its name, its help and the instance it
// stands for when it is left out.
#pragma once

namespace ZanvexCli::NetworkNamespace {

constexpr char kNetstackParameter[] = "netstack";
constexpr char kNetstackDescription[] =
    "The network stack instance; if unspecified, use the default netstack instance";
constexpr char kDefaultNetstack[] = "defaultTcpipStack";

}  // namespace ZanvexCli::NetworkNamespace
