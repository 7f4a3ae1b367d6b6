// The host as a whole, the way in to its system model.
#pragma once

#include <memory>

#include "hostctl/NetworkInfo.h"
#include "hostctl/SystemInfo.h"

namespace HostCtl {

class Host {
public:
    virtual ~Host() = default;
    static std::unique_ptr<System::SystemInfo> GetSystemInfo();

    // The root of the network model, as NetworkFactory::GetNetworkInfo gives it.
    static std::unique_ptr<Network::NetworkInfo> GetNetworkInfo();
};

class HostFactory {
public:
    // Belongs to the host-control layer; never released by the caller.
    static Host* GetHost();
};

}  // namespace HostCtl
