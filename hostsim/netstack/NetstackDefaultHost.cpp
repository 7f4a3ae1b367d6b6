// The netstack instances of the built-in default host: the default instance and the migration
// instance "glidex", both up.
#include "hostsim/netstack/NetstackStore.h"

namespace HostSim::Ip {

const char* const kDefaultNetstacks = R"json([
  {"key": "defaultTcpipStack", "name": "defaultTcpipStack", "enabled": true,
   "maxConnections": 11000, "congestionControl": "newreno", "ipv6": true, "ecn": "enabled",
   "workers": 2},
  {"key": "glidex", "name": "glidex", "enabled": true,
   "maxConnections": 11000, "congestionControl": "cubic", "ipv6": true, "ecn": "echo-only",
   "workers": 2}
])json";

}  // namespace HostSim::Ip
