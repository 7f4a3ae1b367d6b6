// Building a host from a profile in-process, as `hostsim import` does from a file.
#include "hostsim/Control.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace HostSim {

void ImportProfile(const std::string& profileJson) {
    ReplaceHost(Store(), ParseProfile(profileJson, "The profile"), 1, "");
}

}  // namespace HostSim
