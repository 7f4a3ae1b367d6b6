// The simulated host's feature switches. The data-processing-unit transport tag is off, as on
// a host without such a unit; HostSim::SetFeature turns a switch on or off in-process.
#include "audit/FeatureList.h"

#include "hostsim/Control.h"

namespace {

unsigned char dpuTransportTag = 0;

}  // namespace

extern "C" const ZanvexFeatureList FeatureList = {&dpuTransportTag};

namespace HostSim {

void SetFeature(const std::string& name, bool on) {
    if (name == "kelmNicDpuTransportTag") {
        dpuTransportTag = on ? 1 : 0;
    }
}

}  // namespace HostSim
