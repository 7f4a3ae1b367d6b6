#include "kelmctl/NetworkInfoImpl.h"

#include <algorithm>

#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nic/ListedDpus.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/nicdevices/NicDevicesStore.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/PnicImpl.h"

namespace KelmCtl::Network {

using HostSim::PassOperation;

// Reaches the host, so that a host that can't be reached fails here: the simulated host's store
// is opened, the live host's module loaded.
NetworkInfoImpl::NetworkInfoImpl() {
    PassOperation("NetworkInfoImpl::NetworkInfoImpl");
    if (HostSim::LiveHost() == nullptr) {
        HostSim::Store();
    }
}

NetworkInfoImpl::~NetworkInfoImpl() {
    HostSim::Nic::ForgetListedDpus(this);
    HostSim::NicDevices::ForgetListing(this);
}

namespace {

// The simulated host's NICs of a listing by `owner`, which remembers what they show until it
// goes.
std::vector<std::unique_ptr<HostSim::Nic::Record>> SimulatedNics(
    const void* owner, HostCtl::Network::PnicGetType type) {
    auto records = HostSim::Nic::LoadAll(HostSim::Store());
    HostSim::Nic::RememberListedDpus(owner, records);
    HostSim::NicDevices::RememberListing(owner);
    if (type == HostCtl::Network::PnicGetUplinks) {
        const auto uplinks = HostSim::Vswitch::UplinkNicNames(HostSim::Store());
        std::erase_if(records, [&uplinks](const std::unique_ptr<HostSim::Nic::Record>& record) {
            return std::find(uplinks.begin(), uplinks.end(), record->name) == uplinks.end();
        });
    }
    return records;
}

}  // namespace

// Every NIC, or those that some switch uses as an uplink.
std::vector<std::unique_ptr<HostCtl::Network::Pnic>> NetworkInfoImpl::GetPnics(
    HostCtl::Network::PnicGetType type) {
    PassOperation("NetworkInfo::GetPnics");
    auto* live = HostSim::LiveHost();
    auto records = live == nullptr                            ? SimulatedNics(this, type)
                   : type == HostCtl::Network::PnicGetUplinks ? live->Nics().LoadUplinks()
                                                              : live->Nics().LoadAll();
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
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
    auto* live = HostSim::LiveHost();
    auto record =
        live != nullptr ? live->Nics().Load(name) : HostSim::Nic::Load(HostSim::Store(), name);
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
