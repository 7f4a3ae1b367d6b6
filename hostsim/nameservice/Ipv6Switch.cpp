// The host-wide switches that NetworkInfoImpl reads and sets: IPv6 and the network dumper.
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nameservice/NameServiceStore.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace KelmCtl::Network {

// The configured value, which the host takes for the running one as well: the simulated host
// is never rebooted, so a change holds from the next command on. On Linux the switch takes
// effect at once.
bool NetworkInfoImpl::IsKelmIpv6Enabled() {
    HostSim::PassOperation("NetworkInfoImpl::IsKelmIpv6Enabled");
    if (auto* live = HostSim::LiveHost()) {
        return live->NameService().Ipv6Enabled();
    }
    return HostSim::NameService::ReadIpv6Enabled(HostSim::Store());
}

void NetworkInfoImpl::SetKelmIpv6Enabled(bool enabled) {
    HostSim::PassOperation("NetworkInfoImpl::SetKelmIpv6Enabled");
    if (auto* live = HostSim::LiveHost()) {
        live->NameService().SetIpv6Enabled(enabled);
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::NameService::WriteIpv6Enabled(database, enabled);
    transaction.Commit();
}

bool NetworkInfoImpl::GetNetDumperEnabled() {
    HostSim::PassOperation("NetworkInfoImpl::GetNetDumperEnabled");
    // Linux has no network dumper, so none is on.
    if (HostSim::LiveHost() != nullptr) {
        return false;
    }
    return HostSim::NameService::ReadNetDumperEnabled(HostSim::Store());
}

}  // namespace KelmCtl::Network
