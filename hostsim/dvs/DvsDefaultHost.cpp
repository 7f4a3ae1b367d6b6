// The distributed switch of the built-in default host: distswitch0 with hwnic9 and hwnic10 as
// uplinks, both in the running LAG lag1, a second LAG lag2 configured but without NICs, VM ports
// on "distpg-web", and DVPort 8 on "distpg-infra" left free for a kernel interface.
#include "hostsim/dvs/DvsStore.h"

namespace HostSim::Dvs {

const char* const kDefaultSection = R"json([
  {
    "name": "distswitch0", "id": "3c9e2a41-7d5b-4f08-9a6e-5f1d2c7b0a10",
    "class": "distswitch", "ports": 512, "mtu": 9000, "cdpStatus": 1, "beaconTimeout": -1,
    "zanvexBranded": true, "opaque": false, "lacpStateOnDpu": false,
    "uplinks": [{"nic": "hwnic9", "dvport": "0"}, {"nic": "hwnic10", "dvport": "1"}],
    "dvports": [
      {"id": "0", "portgroup": "distpg-uplinks", "name": "lag1-0", "inUse": true,
       "clients": ["hwnic9"], "lacp": {"enabled": false, "mode": 1}},
      {"id": "1", "portgroup": "distpg-uplinks", "name": "lag1-1", "inUse": true,
       "clients": ["hwnic10"], "lacp": {"enabled": false, "mode": 1}},
      {"id": "2", "portgroup": "distpg-uplinks", "name": "uplink3", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "3", "portgroup": "distpg-uplinks", "name": "uplink4", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "4", "portgroup": "distpg-web", "inUse": true,
       "clients": ["vm-web01.eth1"], "lacp": {"enabled": false, "mode": 1}},
      {"id": "5", "portgroup": "distpg-web", "inUse": true,
       "clients": ["vm-web02.eth0"], "lacp": {"enabled": false, "mode": 1}},
      {"id": "6", "portgroup": "distpg-web", "inUse": true,
       "clients": ["vm-db01.eth2"], "lacp": {"enabled": false, "mode": 1}},
      {"id": "7", "portgroup": "distpg-web", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "8", "portgroup": "distpg-infra", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "9", "portgroup": "distpg-infra", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "10", "portgroup": "distpg-infra", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "11", "portgroup": "distpg-infra", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "12", "portgroup": "distpg-web", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "13", "portgroup": "distpg-web", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "14", "portgroup": "distpg-web", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}},
      {"id": "15", "portgroup": "distpg-web", "inUse": false,
       "clients": [], "lacp": {"enabled": false, "mode": 1}}
    ],
    "lags": [
      {"id": 1, "name": "lag1", "mode": 1, "loadBalance": 16, "portCount": 2,
       "running": {"nics": [
         {"nic": "hwnic9", "state": "Bundled", "portNumber": 1, "portPriority": 255,
          "adminKey": 1, "operKey": 1, "portState": 61, "flags": "SA",
          "partner": {"deviceId": "00:00:5e:00:53:01", "age": 12, "portNumber": 17,
                      "portPriority": 32768, "operKey": 13, "portState": 61, "flags": "SA"},
          "rxLacpdus": 187342, "txLacpdus": 187355, "rxErrors": 0, "txErrors": 0},
         {"nic": "hwnic10", "state": "Bundled", "portNumber": 2, "portPriority": 255,
          "adminKey": 1, "operKey": 1, "portState": 61, "flags": "SA",
          "partner": {"deviceId": "00:00:5e:00:53:01", "age": 3661, "portNumber": 18,
                      "portPriority": 32768, "operKey": 13, "portState": 63, "flags": "FA"},
          "rxLacpdus": 187339, "txLacpdus": 187355, "rxErrors": 2, "txErrors": 0}
       ]}},
      {"id": 2, "name": "lag2", "mode": 2, "loadBalance": 20, "portCount": 0}
    ]
  }
])json";

}  // namespace HostSim::Dvs
