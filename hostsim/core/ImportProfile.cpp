// Building a host from a profile in-process, as `hostsim import` does from a file.
#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace HostSim {

void ImportProfile(const std::string& profileJson) {
    auto profile = nlohmann::json::parse(profileJson, nullptr, false);
    if (profile.is_discarded() || !profile.is_object()) {
        throw HostCtl::Lib::HostCtlException("The profile is not a JSON object");
    }
    ReplaceHost(Store(), profile, 1, "");
}

}  // namespace HostSim
