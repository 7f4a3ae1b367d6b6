// A port group of a standard virtual switch: a VLAN and policies that override the switch's
// field by field.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "hostctl/ConnectionPoint.h"
#include "hostctl/NetworkPolicy.h"
#include "hostctl/VirtualSwitch.h"

namespace HostCtl::Network {

class PortGroup : public ConnectionPoint {
  public:
    // 0 is no VLAN; 4095 passes every VLAN to the guest.
    static constexpr std::uint16_t MIN_VLAN_ID = 0;
    static constexpr std::uint16_t MAX_VLAN_ID = 4095;

    virtual std::string GetName() const = 0;
    // The ports in use on the port group.
    virtual std::uint32_t GetActiveClients() const = 0;
    virtual std::uint16_t GetVlanId() const = 0;
    virtual void SetVlanId(int vlanId) = 0;
    // Never null.
    virtual std::unique_ptr<VirtualSwitch> GetVirtualSwitch() const = 0;

    // The effective reads give the port group's own fields over its switch's; the own reads
    // give only what the port group overrides.
    virtual PortSecurityPolicy GetEffectiveSecurityPolicy() const = 0;
    virtual PortSecurityPolicy GetSecurityPolicy() const = 0;
    virtual void SetSecurityPolicy(const PortSecurityPolicy& policy) = 0;
    virtual ShapingPolicy GetEffectiveShapingPolicy() const = 0;
    virtual ShapingPolicy GetShapingPolicy() const = 0;
    virtual void SetShapingPolicy(const ShapingPolicy& policy) = 0;
    virtual NicTeamingPolicy GetEffectiveTeamingPolicy() const = 0;
    virtual NicTeamingPolicy GetTeamingPolicy() const = 0;
    virtual void SetTeamingPolicy(const NicTeamingPolicy& policy) = 0;
};

}  // namespace HostCtl::Network
