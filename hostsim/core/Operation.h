// The choke point of the simulated host: every host operation passes it first.
#pragma once

#include <string>

namespace HostSim {

// Throws the fault set for `operation` ("Pnic::SetLinkState") on `object` (a NIC's name, or
// empty), from HOSTSIM_FAULTS or InjectFault, and records the operation while a trace runs.
void PassOperation(const char* operation, const std::string& object = {});

}  // namespace HostSim
