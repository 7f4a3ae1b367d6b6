// The multicast memberships of a Kelm interface, kept with its netstack instance's tables.
#include "hostctl/KelmNic.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/routing/RoutingStore.h"

namespace HostCtl::Network {

void KelmNic::GetMulticastGroups(std::vector<MulticastGroup>& groups) const {
    const std::string name = GetInterfaceName();
    HostSim::PassOperation("KelmNic::GetMulticastGroups", name);
    if (auto* live = HostSim::LiveHost()) {
        live->Multicast().Groups(GetNetstackInstanceKey(), name, groups);
        return;
    }
    for (const auto& json :
         HostSim::Routing::ReadTable(HostSim::Store(), GetNetstackInstanceKey(), "multicast")) {
        if (json.at("interface") == name) {
            groups.push_back({name, json.at("group").get<std::string>(),
                              json.at("linkLayer").get<std::string>(),
                              json.at("refcount").get<std::int32_t>()});
        }
    }
}

}  // namespace HostCtl::Network
