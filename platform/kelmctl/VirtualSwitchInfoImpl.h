// The host's standard virtual switches as a collection.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/DVSwitch.h"
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

    // Distributed switches and every kind of switch.
    // The distributed switches of the host's own make, in the order they were made.
    std::vector<std::unique_ptr<HostCtl::Network::DVSwitch>> GetDVSwitches();
    // The distributed switches that an outside controller manages, in the order they were made.
    std::vector<std::unique_ptr<HostCtl::Network::DVSwitch>> GetOpaqueDVSwitches();
    // Null when there is no distributed switch of that name.
    std::unique_ptr<HostCtl::Network::DVSwitch> GetDVSwitchByName(const std::string& name);
    // The ordinary standard switches, then the distributed ones, then the opaque ones.
    std::vector<std::unique_ptr<HostCtl::Network::Portset>> GetAllSwitches();
    // The kind of the switch of that name; false for a name the host doesn't know.
    bool IsLegacySwitch(const std::string& name);
    bool IsDVSwitch(const std::string& name);
    bool IsOpaqueSwitch(const std::string& name);
};

}  // namespace KelmCtl::Network
