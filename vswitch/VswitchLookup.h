// Parameters and look-ups that several switch and port group commands share.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "frame/Declaration.h"
#include "hostctl/PortGroup.h"
#include "hostctl/VirtualSwitch.h"

namespace KelmCtl::Network {
class VirtualSwitchInfoImpl;
}

namespace ZanvexCli::NetworkNamespace {

inline constexpr char kVswitchNameParameter[] = "vswitch-name";
inline constexpr char kPortgroupNameParameter[] = "portgroup-name";
inline constexpr char kUplinkNameParameter[] = "uplink-name";
inline constexpr char kTypeParameter[] = "type";
inline constexpr char kUseVswitchParameter[] = "use-vswitch";

// The switch a policy command names, or null after adding "Unable to find a legacy virtual
// switch with the name <name>" to `output`.
std::unique_ptr<HostCtl::Network::VirtualSwitch> FindLegacySwitch(
    KelmCtl::Network::VirtualSwitchInfoImpl& switches, const std::string& name, Output& output);

// The port group of that name, or null after adding "Unable to find a port group with the
// name <name>" to `output`.
std::unique_ptr<HostCtl::Network::PortGroup> FindPortGroup(const std::string& name, Output& output);

// The portset type of a listing's `type` parameter: ordinary when absent, system for
// "system"; anything else adds "Invalid type value, should be 'system'." and gives nothing.
std::optional<HostCtl::Network::PortsetGetType> ReadPortsetType(const Input& input, Output& output);

}  // namespace ZanvexCli::NetworkNamespace
