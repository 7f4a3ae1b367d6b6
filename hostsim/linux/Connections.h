// The sockets and multicast memberships of a netstack's namespace on the live host: the
// sockets from the kernel's socket diagnostics (NETLINK_SOCK_DIAG), the groups from rtnetlink.
#pragma once

#include "hostsim/linux/LiveHost.h"

namespace HostSim::Linux {

class Sockets final : public Live::SocketDriver {
public:
    void List(const std::string& netstack, Live::SocketKind kind,
              std::vector<HostCtl::Network::TcpIpConnection>& sockets) override;
};

class Multicast final : public Live::MulticastDriver {
public:
    void Groups(const std::string& netstack, const std::string& interface,
                std::vector<HostCtl::Network::KelmNic::MulticastGroup>& groups) override;
};

}  // namespace HostSim::Linux
