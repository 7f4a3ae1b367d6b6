// The host's implementation of the network model root.
#pragma once

#include "hostctl/NetworkInfo.h"

namespace KelmCtl::Network {

class NetworkInfoImpl : public HostCtl::Network::NetworkInfo {
public:
    NetworkInfoImpl();
    ~NetworkInfoImpl() override;
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> GetPnics(
        HostCtl::Network::PnicGetType type) override;
    std::unique_ptr<HostCtl::Network::Pnic> GetPnicByName(const std::string& name,
                                                          bool refresh) override;
    // The port groups of the switches of that type, switch by switch in the order they were
    // made.
    std::vector<std::unique_ptr<HostCtl::Network::PortGroup>> GetAllPortGroups(
        HostCtl::Network::PortsetGetType type);
};

}  // namespace KelmCtl::Network
