// Building a host from a profile in-process, as `hostsim import` does from a file.
#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace HostSim {

void ImportProfile(const std::string& profileJson) {
    Json profile = Json::parse(profileJson, nullptr, false);
    if (profile.is_discarded()) {
        throw HostCtl::Lib::HostCtlException("The profile is not valid JSON");
    }
    ReplaceHost(Store(), profile, 1, "");
}

}  // namespace HostSim
