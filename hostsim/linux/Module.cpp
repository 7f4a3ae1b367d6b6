// The live host module's entry.
#include "hostsim/linux/Bridges.h"
#include "hostsim/linux/FirewallTable.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Nics.h"

namespace HostSim::Linux {
namespace {

class LinuxHost final : public Live::Host {
public:
    Live::NicDriver& Nics() override { return nics_; }
    Live::FirewallDriver& Firewall() override { return firewall_; }
    Live::BridgeDriver& Bridges() override { return bridges_; }

private:
    Linux::Nics nics_;
    FirewallTable firewall_;
    Linux::Bridges bridges_;
};

}  // namespace
}  // namespace HostSim::Linux

extern "C" __attribute__((visibility("default"))) HostSim::Live::Host* HostSim_LiveHost() {
    static HostSim::Linux::LinuxHost host;
    return &host;
}
