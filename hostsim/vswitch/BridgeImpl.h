// A standard switch of the live host: a Linux bridge, with the NICs enslaved to it as its
// uplinks. What a bridge has no counterpart for (port groups, policies, CDP, beacon probing) is
// not available; what a listing reads of it is what the bridge has.
#pragma once

#include "hostctl/VirtualSwitch.h"
#include "hostsim/linux/LiveHost.h"

namespace HostSim::Vswitch {

class BridgeImpl final : public HostCtl::Network::VirtualSwitch {
public:
    // The ports every bridge has: the kernel numbers a bridge's ports in 10 bits.
    static constexpr std::uint32_t kBridgePorts = 1024;

    explicit BridgeImpl(Live::BridgeRecord record) : record_(std::move(record)) {}

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
    Live::BridgeRecord record_;
};

}  // namespace HostSim::Vswitch
