// Portsets as the host implements them.
#pragma once

#include <string>

#include "hostctl/VirtualSwitch.h"

namespace KelmCtl::Network {

class PortsetImpl : public virtual HostCtl::Network::Portset {
public:
    // Whether a virtual switch of that name, ordinary or system, exists on the host.
    static bool IsValidVirtualSwitch(const std::string& name);

    // The switch's half of the key of a distributed port: the identity of the switch.
    std::string GetSwitchKey() const;

protected:
    explicit PortsetImpl(std::string switchKey) : switchKey_(std::move(switchKey)) {}

private:
    std::string switchKey_;
};

}  // namespace KelmCtl::Network
