// The host's rules for switches, uplinks, port groups and their policies, with the words it
// refuses in. Each check throws HostCtlException naming the object.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostctl/NetworkPolicy.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace HostSim::Vswitch {

inline constexpr std::uint32_t kMaximumSwitchPorts = 4096;
inline constexpr std::uint32_t kMaximumHostPorts = 4608;
inline constexpr long kMinimumMtu = 1280;
inline constexpr long kMaximumMtu = 9000;

// Names the host can store: see CheckObjectName.
void CheckSwitchName(const std::string& name);
void CheckPortGroupName(const std::string& name);
void CheckPorts(long ports);
void CheckMtu(long mtu);
void CheckCdpStatus(long status);
// Gives the id back when it is in range.
long CheckVlanId(long vlanId);
// The ports, MTU and CDP status of a switch as a profile or a change gives them.
void CheckSwitchSettings(const SwitchRecord& record);

// A teaming policy may order only uplinks of its switch, each once, and make no negative number
// of them active; its load balancing must be one the host knows.
void CheckTeaming(const HostCtl::Network::NicTeamingPolicy& policy,
                  const std::vector<std::string>& switchUplinks, const std::string& owner);

// Takes a NIC out of a policy's uplink order, one active uplink fewer when it was active.
// False when the policy does not order it.
bool DropUplink(HostCtl::Network::NicTeamingPolicy& policy, const std::string& nicName);

}  // namespace HostSim::Vswitch
