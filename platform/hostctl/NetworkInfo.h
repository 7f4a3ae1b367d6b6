// The root of the host's network model.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/Pnic.h"

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
};

}  // namespace HostCtl::Network
