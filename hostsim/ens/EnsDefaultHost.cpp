// The ENS contexts of the built-in default host.
#include "hostsim/ens/EnsStore.h"

namespace HostSim::Ens {

// Contexts 0 and 1 serve distswitch0, one on each NUMA node; context 2 serves lanswitch0;
// context 3 is idle.
const char* const kDefaultSection = R"json({
  "maxLcores": 8, "numaNodes": 2,
  "lcores": [
    {"id": 0, "switch": "distswitch0", "affinity": 0},
    {"id": 1, "switch": "distswitch0", "affinity": 1},
    {"id": 2, "switch": "lanswitch0", "affinity": 0},
    {"id": 3, "switch": "null", "affinity": -1}
  ]
})json";

}  // namespace HostSim::Ens
