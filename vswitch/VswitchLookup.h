// Parameters and look-ups that several switch and port group commands share.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/PortGroup.h"
#include "hostctl/VirtualSwitch.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

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

// Runs `body` with the switch that `vswitch-name` names, in the one handler of the switch policy
// commands: a switch not found or a host failure leaves one message and no root.
template <class Body>
void WithLegacySwitch(const Input& input, Output& output, Body body) {
    const std::string& name = input.GetParameter(kVswitchNameParameter);
    try {
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        if (auto virtualSwitch = FindLegacySwitch(switches, name, output)) {
            body(*virtualSwitch);
        }
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output.AddErrorMessage(e.what());
    }
}

// Runs `body` with the port group that `portgroup-name` names, in the one handler of the port
// group commands.
template <class Body>
void WithPortGroup(const Input& input, Output& output, Body body) {
    const std::string& name = input.GetParameter(kPortgroupNameParameter);
    try {
        if (auto portGroup = FindPortGroup(name, output)) {
            body(*portGroup);
        }
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output.AddErrorMessage(e.what());
    }
}

// The portset type of a listing's `type` parameter: ordinary when absent, system for
// "system"; anything else adds "Invalid type value, should be 'system'." and gives nothing.
std::optional<HostCtl::Network::PortsetGetType> ReadPortsetType(const Input& input, Output& output);

}  // namespace ZanvexCli::NetworkNamespace
