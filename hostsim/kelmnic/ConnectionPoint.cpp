// What every connection point answers unless its kind says otherwise, and port groups and
// DVPorts as connection points of Kelm interfaces.
#include "hostctl/ConnectionPoint.h"

#include "hostctl/DVSwitch.h"
#include "hostsim/core/Operation.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/DVPortImpl.h"
#include "kelmctl/PortGroupImpl.h"

namespace HostCtl::Network {

int ConnectionPoint::GetType() const {
    return kNone;
}

std::string ConnectionPoint::GetPortGroupName() const {
    return {};
}

DVPortParam ConnectionPoint::GetDVPortParam() const {
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

int DVPortImpl::GetType() const {
    HostSim::PassOperation("ConnectionPoint::GetType", param_.dvPortId);
    return kDVPort;
}

}  // namespace KelmCtl::Network
