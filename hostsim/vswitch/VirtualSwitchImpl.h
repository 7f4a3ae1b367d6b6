// The host's implementation of a standard switch. It holds a copy of the switch as it was read;
// changes go to the host and to the copy.
#pragma once

#include "hostctl/VirtualSwitch.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace HostSim::Vswitch {

class VirtualSwitchImpl final : public HostCtl::Network::VirtualSwitch {
public:
    explicit VirtualSwitchImpl(SwitchRecord record) : record_(std::move(record)) {}

    std::string GetName() const override;
    std::string GetClass() const override;
    std::uint32_t GetNumPorts() const override;
    std::uint32_t GetNumUsedPorts() const override;
    std::uint32_t GetNumConfiguredPorts() const override;
    std::vector<std::string> GetUplinks(bool activeOnly) const override;

    std::uint32_t GetMTU() const override;
    void SetMTU(int mtu) override;
    int GetCdpStatus() const override;
    void SetCdpStatus(int status) override;
    bool GetBeaconEnabled() const override;
    std::uint32_t GetBeaconInterval() const override;
    std::uint32_t GetBeaconThreshold() const override;
    std::vector<std::string> GetBeaconRequiredBy() const override;

    std::vector<std::unique_ptr<HostCtl::Network::PortGroup>> GetPortGroups() const override;
    std::unique_ptr<HostCtl::Network::PortGroup> AddPortGroup(const std::string& name) override;
    void RemovePortGroup(const std::string& name) override;
    void AddUplink(const std::string& nicName, bool hotAdd) override;
    void RemoveUplink(const std::string& nicName, bool force) override;

    HostCtl::Network::PortSecurityPolicy GetEffectiveSecurityPolicy() const override;
    HostCtl::Network::PortSecurityPolicy GetSecurityPolicy() const override;
    void SetSecurityPolicy(const HostCtl::Network::PortSecurityPolicy& policy) override;
    HostCtl::Network::ShapingPolicy GetEffectiveShapingPolicy() const override;
    HostCtl::Network::ShapingPolicy GetShapingPolicy() const override;
    void SetShapingPolicy(const HostCtl::Network::ShapingPolicy& policy) override;
    HostCtl::Network::NicTeamingPolicy GetEffectiveTeamingPolicy() const override;
    HostCtl::Network::NicTeamingPolicy GetTeamingPolicy() const override;
    void SetTeamingPolicy(const HostCtl::Network::NicTeamingPolicy& policy) override;

private:
    // What the port groups give the switch: as a listing read it, else read now.
    PortGroupSummary PortGroups() const;

    SwitchRecord record_;
};

}  // namespace HostSim::Vswitch
