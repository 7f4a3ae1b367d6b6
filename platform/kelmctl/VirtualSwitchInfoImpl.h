// The host's standard virtual switches as a collection.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/NetworkPolicy.h"
#include "hostctl/VirtualSwitch.h"

namespace KelmCtl::Network {

class VirtualSwitchInfoImpl {
  public:
    // Makes a switch with these policies and `ports` configured ports. Throws HostCtlException
    // when the name is taken or empty, or the ports are out of range or over the host's total.
    std::unique_ptr<HostCtl::Network::VirtualSwitch> AddVirtualSwitchWithPolicy(
        const HostCtl::Network::NicTeamingPolicy& teaming,
        const HostCtl::Network::PortSecurityPolicy& security,
        const HostCtl::Network::ShapingPolicy& shaping,
        const HostCtl::Network::NicCapabilities& capabilities, const std::string& name,
        unsigned ports);
    // Null when there is no switch of that name and type.
    std::unique_ptr<HostCtl::Network::VirtualSwitch> GetVirtualSwitchByName(
        const std::string& name, HostCtl::Network::PortsetGetType type);
    // In the order they were made.
    std::vector<std::unique_ptr<HostCtl::Network::VirtualSwitch>> GetVirtualSwitches(
        HostCtl::Network::PortsetGetType type);
    // Throws when there is no such switch, or one of its port groups is in use.
    void RemoveVirtualSwitch(const std::string& name);

    // Every portset of the host, ordinary and system, in the order they were made.
    std::vector<std::unique_ptr<HostCtl::Network::Portset>> GetAllSwitches();
};

}  // namespace KelmCtl::Network
