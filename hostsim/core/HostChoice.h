// Which host the process acts on: the simulated host (the default) or the live Linux host of
// the network namespace the process runs in. AUTOCLI_HOST ("sim" or "linux") chooses, once, at
// the first host call.
#pragma once

namespace HostSim {

namespace Live {
class Host;
}

// The live host when the process acts on it, its module loaded on the first call; null on the
// simulated host. Throws HostCtlException for an unknown AUTOCLI_HOST, or when the module can't
// be loaded.
Live::Host* LiveHost();

}  // namespace HostSim
