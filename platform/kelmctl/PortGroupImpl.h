// A port group of the host, read when it is made, or when first asked for more than its name
// if a switch listed it.
#pragma once

#include <memory>
#include <string>

#include "hostctl/PortGroup.h"

namespace KelmCtl::Network {

struct PortGroupRecord;

class PortGroupImpl : public HostCtl::Network::PortGroup {
  public:
    // Throws HostCtlException when there is no port group of that name.
    explicit PortGroupImpl(const std::string& name);
    ~PortGroupImpl() override;

    std::string GetName() const override;
    std::string GetPortsetName() const override;
    // Whether the port group still exists on the host.
    bool IsValid() const override;
    std::uint32_t GetActiveClients() const override;
    std::uint16_t GetVlanId() const override;
    void SetVlanId(int vlanId) override;
    std::unique_ptr<HostCtl::Network::VirtualSwitch> GetVirtualSwitch() const override;

    HostCtl::Network::PortSecurityPolicy GetEffectiveSecurityPolicy() const override;
    HostCtl::Network::PortSecurityPolicy GetSecurityPolicy() const override;
    void SetSecurityPolicy(const HostCtl::Network::PortSecurityPolicy& policy) override;
    HostCtl::Network::ShapingPolicy GetEffectiveShapingPolicy() const override;
    HostCtl::Network::ShapingPolicy GetShapingPolicy() const override;
    void SetShapingPolicy(const HostCtl::Network::ShapingPolicy& policy) override;
    HostCtl::Network::NicTeamingPolicy GetEffectiveTeamingPolicy() const override;
    HostCtl::Network::NicTeamingPolicy GetTeamingPolicy() const override;
    void SetTeamingPolicy(const HostCtl::Network::NicTeamingPolicy& policy) override;

    // Made from a record already read, by the look-ups that read many at once.
    explicit PortGroupImpl(std::unique_ptr<PortGroupRecord> record);

    // As a connection point of Kelm interfaces.
    int GetType() const override;
    std::string GetPortGroupName() const override;

  private:
    std::unique_ptr<PortGroupRecord> record_;
};

}  // namespace KelmCtl::Network
