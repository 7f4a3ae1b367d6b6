// IPsec on the live host: the XFRM states and policies of the process's namespace, through
// the kernel's XFRM netlink family, and the names given to them here.
#pragma once

#include "hostsim/linux/LiveHost.h"

namespace HostSim::Linux {

class IpSec final : public Live::IpsecDriver {
public:
    void AddAssociation(const Live::IpsecAssociation& association) override;
    bool RemoveAssociation(const std::string& name) override;
    bool RemoveAutoAssociation(const Live::IpsecAssociation& association) override;
    void FlushAssociations() override;
    std::vector<Live::IpsecAssociation> Associations() override;

    void AddPolicy(const Live::IpsecPolicy& policy) override;
    bool RemovePolicy(const std::string& name) override;
    void FlushPolicies() override;
    std::vector<Live::IpsecPolicy> Policies() override;
};

}  // namespace HostSim::Linux
