// The host's default policies, as a new switch gets them.
#include "hostsim/core/Operation.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace HostCtl::Network {

NicTeamingPolicy NicTeamingPolicy::GetDefaultPolicy() {
    HostSim::PassOperation("NicTeamingPolicy::GetDefaultPolicy");
    return HostSim::Vswitch::DefaultPolicies().teaming;
}

PortSecurityPolicy PortSecurityPolicy::GetDefaultPolicy() {
    HostSim::PassOperation("PortSecurityPolicy::GetDefaultPolicy");
    return HostSim::Vswitch::DefaultPolicies().security;
}

ShapingPolicy ShapingPolicy::GetDefaultPolicy() {
    HostSim::PassOperation("ShapingPolicy::GetDefaultPolicy");
    return HostSim::Vswitch::DefaultPolicies().shaping;
}

// Checksum and segmentation offloads, VLAN tagging in hardware.
NicCapabilities NicCapabilities::GetDefaultPolicy() {
    HostSim::PassOperation("NicCapabilities::GetDefaultPolicy");
    return {0x1f, 0};
}

}  // namespace HostCtl::Network
