// The ports subject's section of a profile.
#pragma once

namespace HostSim::Ports {

// The worlds and ports of the built-in default host.
extern const char* const kDefaultSection;

}  // namespace HostSim::Ports
