// The IP subjects' sections of the built-in default host.
#pragma once

namespace HostSim::Ip {

extern const char* const kDefaultNetstacks;
extern const char* const kDefaultKelmNics;

}  // namespace HostSim::Ip
