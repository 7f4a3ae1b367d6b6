// The neighbour tables of a netstack (ARP and IPv6 neighbour discovery), read and changed
// through rtnetlink.
#pragma once

#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Rtnetlink.h"

namespace HostSim::Linux {

class Neighbors final : public Live::NeighborDriver {
public:
    std::vector<Live::NeighborRecord> LoadAll(const std::string& netstack, int family,
                                              const std::string& interfaceName) override;
    void Remove(const std::string& netstack, int family, const std::string& address,
                const std::string& interfaceName) override;

private:
    RouteSockets sockets_;
};

}  // namespace HostSim::Linux
