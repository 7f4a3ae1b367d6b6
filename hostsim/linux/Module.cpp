// The live host module's entry.
#include "hostsim/linux/Bridges.h"
#include "hostsim/linux/Connections.h"
#include "hostsim/linux/FirewallTable.h"
#include "hostsim/linux/Interfaces.h"
#include "hostsim/linux/IpSec.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/NameService.h"
#include "hostsim/linux/Neighbors.h"
#include "hostsim/linux/Netstacks.h"
#include "hostsim/linux/Nics.h"
#include "hostsim/linux/Routes.h"

namespace HostSim::Linux {
namespace {

class LinuxHost final : public Live::Host {
public:
    Live::NicDriver& Nics() override { return nics_; }
    Live::NetstackDriver& Netstacks() override { return netstacks_; }
    Live::InterfaceDriver& Interfaces() override { return interfaces_; }
    Live::RouteDriver& Routes() override { return routes_; }
    Live::NeighborDriver& Neighbors() override { return neighbors_; }
    Live::SocketDriver& Sockets() override { return sockets_; }
    Live::MulticastDriver& Multicast() override { return multicast_; }
    Live::NameServiceDriver& NameService() override { return nameService_; }
    Live::IpsecDriver& Ipsec() override { return ipsec_; }
    Live::FirewallDriver& Firewall() override { return firewall_; }
    Live::BridgeDriver& Bridges() override { return bridges_; }

private:
    Linux::Nics nics_;
    Linux::Netstacks netstacks_;
    Linux::Interfaces interfaces_;
    Linux::Routes routes_;
    Linux::Neighbors neighbors_;
    Linux::Sockets sockets_;
    Linux::Multicast multicast_;
    Linux::NameService nameService_;
    Linux::IpSec ipsec_;
    FirewallTable firewall_;
    Linux::Bridges bridges_;
};

}  // namespace
}  // namespace HostSim::Linux

extern "C" __attribute__((visibility("default"))) HostSim::Live::Host* HostSim_LiveHost() {
    static HostSim::Linux::LinuxHost host;
    return &host;
}
