// The root of the host's network model.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/Pnic.h"
#include "hostctl/PortGroup.h"
#include "hostctl/VirtualSwitch.h"

namespace HostCtl::Network {

class NetworkInfo {
public:
    virtual ~NetworkInfo() = default;
    // The vector may hold null entries, which callers skip.
    virtual std::vector<std::unique_ptr<Pnic>> GetPnics(PnicGetType type) = 0;
    // Null when there is no such NIC.
    virtual std::unique_ptr<Pnic> GetPnicByName(const std::string& name, bool refresh) = 0;
};

class NetworkFactory {
public:
    static std::unique_ptr<NetworkInfo> GetNetworkInfo();
    // Null when there is no switch of that name and type.
    static std::unique_ptr<VirtualSwitch> GetVirtualSwitchById(const std::string& name,
                                                               PortsetGetType type);
    // Null when there is no port group of that name.
    static std::unique_ptr<PortGroup> GetPortGroupByName(const std::string& name);
};

}  // namespace HostCtl::Network
