// What every connection point answers unless its kind says otherwise, and the port group as a
// connection point of Kelm interfaces.
#include "hostctl/ConnectionPoint.h"

#include "hostsim/core/Operation.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/PortGroupImpl.h"

namespace HostCtl::Network {

int ConnectionPoint::GetType() const {
    return kNone;
}

bool ConnectionPoint::IsValid() const {
    HostSim::PassOperation("ConnectionPoint::IsValid");
    return true;
}

std::string ConnectionPoint::GetPortGroupName() const {
    return {};
}

const OpaqueNetworkParam& ConnectionPoint::GetOpaqueNetworkParam() const {
    static const OpaqueNetworkParam empty;
    return empty;
}

}  // namespace HostCtl::Network

namespace KelmCtl::Network {

int PortGroupImpl::GetType() const {
    HostSim::PassOperation("ConnectionPoint::GetType", record_->name);
    return kPortGroup;
}

std::string PortGroupImpl::GetPortGroupName() const {
    HostSim::PassOperation("ConnectionPoint::GetPortGroupName", record_->name);
    return record_->name;
}

}  // namespace KelmCtl::Network
