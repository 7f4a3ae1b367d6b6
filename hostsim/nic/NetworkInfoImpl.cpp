#include "kelmctl/NetworkInfoImpl.h"

#include <algorithm>

#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/nic/ListedDpus.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/nicdevices/DeviceStore.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/PnicImpl.h"

namespace KelmCtl::Network {

using HostSim::PassOperation;

// Opens the host's store, so that a host that can't be reached fails here.
NetworkInfoImpl::NetworkInfoImpl() {
    PassOperation("NetworkInfoImpl::NetworkInfoImpl");
    HostSim::Store();
}

NetworkInfoImpl::~NetworkInfoImpl() {
    HostSim::Nic::ForgetListedDpus(this);
    HostSim::NicDevices::ForgetListing(this);
}

// Every NIC, or those that some switch uses as an uplink.
std::vector<std::unique_ptr<HostCtl::Network::Pnic>> NetworkInfoImpl::GetPnics(
    HostCtl::Network::PnicGetType type) {
    PassOperation("NetworkInfo::GetPnics");
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
    auto records = HostSim::Nic::LoadAll(HostSim::Store());
    HostSim::Nic::RememberListedDpus(this, records);
    HostSim::NicDevices::RememberListing(this);
    if (type == HostCtl::Network::PnicGetUplinks) {
        const auto uplinks = HostSim::Vswitch::UplinkNicNames(HostSim::Store());
        std::erase_if(records, [&uplinks](const std::unique_ptr<HostSim::Nic::Record>& record) {
            return std::find(uplinks.begin(), uplinks.end(), record->name) == uplinks.end();
        });
    }
    pnics.reserve(records.size());
    for (auto& record : records) {
        pnics.push_back(std::make_unique<PnicImpl>(std::move(record)));
    }
    return pnics;
}

// The record is always read from the host, so `refresh` asks for nothing more.
std::unique_ptr<HostCtl::Network::Pnic> NetworkInfoImpl::GetPnicByName(const std::string& name,
                                                                       bool) {
    PassOperation("NetworkInfo::GetPnicByName", name);
    auto record = HostSim::Nic::Load(HostSim::Store(), name);
    if (!record) {
        return nullptr;
    }
    return std::make_unique<PnicImpl>(std::make_unique<PnicImpl::Record>(std::move(*record)));
}

}  // namespace KelmCtl::Network

namespace HostCtl::Network {

std::unique_ptr<NetworkInfo> NetworkFactory::GetNetworkInfo() {
    HostSim::PassOperation("NetworkFactory::GetNetworkInfo");
    return std::make_unique<KelmCtl::Network::NetworkInfoImpl>();
}

}  // namespace HostCtl::Network
