// The switches of the built-in default host: lanswitch0 for management and virtual machines,
// storageswitch1 with jumbo frames for storage and migration, and the host's own system switch.
// hwnic4 and hwnic5 are left free for new uplinks. "Management Network" overrides the teaming
// of its switch, "Backup Network" its security and shaping. "Management Network" is in use by
// the kernel interface kelm0, so neither it nor lanswitch0 can be removed.
#include "hostsim/vswitch/VswitchStore.h"

namespace HostSim::Vswitch {

const char* const kDefaultSection = R"json([
  {
    "name": "lanswitch0",
    "ports": 128, "mtu": 1500, "cdpStatus": 1,
    "beacon": {"enabled": false, "interval": 1, "threshold": 3},
    "uplinks": ["hwnic0", "hwnic1"],
    "policies": {
      "teaming": {"teamPolicy": 3, "notifySwitchOnFailure": true,
                  "linkCriteria": {"criteriaMask": 16, "criteriaValues": 16},
                  "uplinkOrder": ["hwnic0", "hwnic1"], "maxActiveUplinks": 2,
                  "rollingRestoration": false},
      "security": {"allowPromiscuous": false, "allowMacAddressChange": true,
                   "allowForgedTransmits": true},
      "shaping": {"enabled": false, "averageBps": 100000000, "peakBps": 100000000,
                  "burstSize": 104857600}
    },
    "portGroups": [
      {"name": "Management Network", "vlanId": 0, "users": ["kelm0"],
       "policies": {"teaming": {"teamPolicy": 4, "uplinkOrder": ["hwnic0", "hwnic1"],
                                "maxActiveUplinks": 1}}},
      {"name": "VM Network", "vlanId": 0}
    ]
  },
  {
    "name": "storageswitch1",
    "ports": 256, "mtu": 9000, "cdpStatus": 3,
    "beacon": {"enabled": true, "interval": 1, "threshold": 3},
    "uplinks": ["hwnic2", "hwnic3"],
    "policies": {
      "teaming": {"teamPolicy": 1, "notifySwitchOnFailure": true,
                  "linkCriteria": {"criteriaMask": 16, "criteriaValues": 0},
                  "uplinkOrder": ["hwnic2", "hwnic3"], "maxActiveUplinks": 1,
                  "rollingRestoration": true},
      "security": {"allowPromiscuous": false, "allowMacAddressChange": false,
                   "allowForgedTransmits": false},
      "shaping": {"enabled": true, "averageBps": 500000000, "peakBps": 1000000000,
                  "burstSize": 52428800}
    },
    "portGroups": [
      {"name": "Storage Network", "vlanId": 20},
      {"name": "Migration Network", "vlanId": 30},
      {"name": "Backup Network", "vlanId": 4095,
       "policies": {"security": {"allowPromiscuous": true},
                    "shaping": {"enabled": true, "averageBps": 200000000,
                                "peakBps": 400000000, "burstSize": 26214400}}}
    ]
  },
  {
    "name": "kelmSystemSwitch0", "system": true, "class": "etherswitch",
    "ports": 64, "mtu": 1500, "cdpStatus": 0,
    "portGroups": [
      {"name": "Kelm System Network", "vlanId": 0, "users": ["kelm9"]}
    ]
  }
])json";

}  // namespace HostSim::Vswitch
