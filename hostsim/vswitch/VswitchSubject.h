// The switching subject's section of a profile.
#pragma once

#include <string>

#include "hostsim/core/Subject.h"

namespace HostSim::Vswitch {

// The switches of the built-in default host.
extern const char* const kDefaultSection;

// The name of a port group in copy `copy` of a scaled profile: the scaled name, or, for a name
// that scaling keeps ("VM Network"), the name, a blank and the copy's number ("VM Network 2").
// Other subjects that name a port group use this too.
std::string PortGroupCopyName(const Scale& scale, const std::string& name, unsigned copy);

}  // namespace HostSim::Vswitch
