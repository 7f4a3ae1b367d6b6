// Portsets and standard virtual switches of the host.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/HostCtlObject.h"
#include "hostctl/NetworkPolicy.h"
#include "hostctl/PnicSettings.h"

namespace HostCtl::Network {

class PortGroup;
class Port;

// Which portsets a listing or look-up means: the ordinary ones, or the host's own.
enum PortsetGetType {
    PortsetGetNormal = 0,
    PortsetGetSystem = 1,
};

class Portset : public virtual Lib::HostCtlObject {
  public:
    // The ports a new switch gets when none are asked for.
    static constexpr std::uint32_t DEF_NUM_PORTS = 128;

    virtual std::string GetName() const = 0;
    virtual std::string GetClass() const = 0;
    virtual std::uint32_t GetNumPorts() const = 0;
    virtual std::uint32_t GetNumUsedPorts() const = 0;
    virtual std::uint32_t GetNumConfiguredPorts() const = 0;
    // The uplinks attached, in the order they were attached. `activeOnly` limits them to those
    // the teaming policy makes active.
    virtual std::vector<std::string> GetUplinks(bool activeOnly) const = 0;

    // Per-VLAN counters of an uplink. The records belong to the caller; the vector is empty
    // while collection is off. Both throw HostCtlException when `nic` is no uplink of this
    // portset.
    std::vector<PnicVlanStats*> GetVlanStats(const std::string& nic) const;
    void SetVlanStatsEnabled(const std::string& nic, bool enabled);
    // Ports of every kind of switch.
    // The ports of the portset, in the order of their ids.
    virtual std::vector<std::unique_ptr<Port>> GetPorts() const;
};

class VirtualSwitch : public virtual Portset {
  public:
    virtual std::uint32_t GetMTU() const = 0;
    virtual void SetMTU(int mtu) = 0;
    // 0 down, 1 listen, 2 advertise, 3 both.
    virtual int GetCdpStatus() const = 0;
    virtual void SetCdpStatus(int status) = 0;

    virtual bool GetBeaconEnabled() const = 0;
    virtual std::uint32_t GetBeaconInterval() const = 0;  // seconds
    virtual std::uint32_t GetBeaconThreshold() const = 0;
    // The port groups whose failure detection needs the beacon.
    virtual std::vector<std::string> GetBeaconRequiredBy() const = 0;

    // In the order they were added; entries may be null.
    virtual std::vector<std::unique_ptr<PortGroup>> GetPortGroups() const = 0;
    virtual std::unique_ptr<PortGroup> AddPortGroup(const std::string& name) = 0;
    virtual void RemovePortGroup(const std::string& name) = 0;

    // `hotAdd`: the NIC is brought into service at once.
    virtual void AddUplink(const std::string& nicName, bool hotAdd) = 0;
    // `force`: also while ports depend on the uplink.
    virtual void RemoveUplink(const std::string& nicName, bool force) = 0;

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
