// The distributed-switch subject's section of a profile.
#pragma once

namespace HostSim::Dvs {

// The distributed switches of the built-in default host.
extern const char* const kDefaultSection;

}  // namespace HostSim::Dvs
