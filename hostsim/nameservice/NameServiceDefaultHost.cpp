// The resolvers, hosts file entries and switches of the built-in default host.
#include "hostsim/nameservice/NameServiceStore.h"

namespace HostSim::NameService {

// Resolvers on the management network for the default instance, one on the migration network
// for "glidex", and the hosts the administrators named by hand.
const char* const kDefaultSection = R"json({
  "ipv6Enabled": true,
  "netDumperEnabled": true,
  "dns": [
    {"netstack": "defaultTcpipStack", "servers": ["192.0.2.53", "2001:db8:0:1::53"],
     "searchDomains": ["mgmt.example.com", "example.com"]},
    {"netstack": "glidex", "servers": ["198.51.100.53"],
     "searchDomains": ["migration.example.net"]}
  ],
  "hosts": [
    {"ip": "192.0.2.31", "hostname": "console.mgmt.example.com", "aliases": ["console"],
     "comment": "management console"},
    {"ip": "2001:db8:0:1::31", "hostname": "console6.mgmt.example.com", "aliases": [],
     "comment": ""},
    {"ip": "198.51.100.42", "hostname": "peer.migration.example.net",
     "aliases": ["peer", "glidex-peer"], "comment": "migration peer"}
  ]
})json";

}  // namespace HostSim::NameService
