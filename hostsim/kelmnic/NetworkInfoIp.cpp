// The network root's operations on Kelm interfaces and netstack instances.
#include <algorithm>

#include "hostctl/Host.h"
#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/kelmnic/KelmNicStore.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nameservice/NameServiceStore.h"
#include "hostsim/routing/RoutingStore.h"
#include "kelmctl/KelmNicInfoImpl.h"
#include "kelmctl/NetstackInstanceImpl.h"
#include "kelmctl/NetworkInfoImpl.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::NetstackInstance;
using HostSim::PassOperation;
using HostSim::Store;

namespace {

std::unique_ptr<NetstackInstance> InstanceOf(NetstackRecord record) {
    return std::make_unique<NetstackInstanceImpl>(
        std::make_unique<NetstackRecord>(std::move(record)));
}

[[noreturn]] void NotAvailable() {
    throw HostCtlException(HostSim::Live::kNotAvailable);
}

}  // namespace

std::unique_ptr<HostCtl::Network::KelmNicInfo> NetworkInfoImpl::GetKelmNicInfo() {
    PassOperation("NetworkInfo::GetKelmNicInfo");
    return std::make_unique<KelmNicInfoImpl>();
}

std::vector<std::unique_ptr<NetstackInstance>> NetworkInfoImpl::ListNetstackInstances() {
    PassOperation("NetworkInfo::ListNetstackInstances");
    auto* live = HostSim::LiveHost();
    std::vector<std::unique_ptr<NetstackInstance>> instances;
    for (NetstackRecord& record :
         live != nullptr ? live->Netstacks().LoadAll() : HostSim::Ip::LoadNetstacks(Store())) {
        instances.push_back(InstanceOf(std::move(record)));
    }
    return instances;
}

std::unique_ptr<NetstackInstance> NetworkInfoImpl::LookupNetstackInstanceByKey(
    const std::string& key) {
    PassOperation("NetworkInfo::LookupNetstackInstanceByKey", key);
    auto* live = HostSim::LiveHost();
    auto record =
        live != nullptr ? live->Netstacks().Load(key) : HostSim::Ip::LoadNetstack(Store(), key);
    if (!record) {
        return nullptr;
    }
    return InstanceOf(std::move(*record));
}

void NetworkInfoImpl::AddNetstackInstance(const NetstackInstance& instance, bool configOnly) {
    PassOperation("NetworkInfo::AddNetstackInstance", instance.GetKey());
    // A namespace is made with the kernel's own settings; none exists in configuration only.
    if (auto* live = HostSim::LiveHost()) {
        if (configOnly) {
            NotAvailable();
        }
        HostSim::Ip::CheckNetstackKey(instance.GetKey());
        live->Netstacks().Add(instance.GetKey());
        return;
    }
    NetstackRecord record;
    record.key = instance.GetKey();
    record.name = instance.GetInstanceName();
    record.maxConnections = instance.GetMaxConnections();
    record.congestionControl = instance.GetCongestionControlAlgorithm();
    record.ipv6 = instance.GetIpv6Enabled();
    record.ecn = instance.GetEcnStatus();
    const auto* impl = dynamic_cast<const NetstackInstanceImpl*>(&instance);
    record.workers = impl != nullptr ? impl->GetWorkers() : 1;
    HostSim::Ip::CheckNetstackKey(record.key);
    HostSim::Ip::CheckNetstackKey(record.name);
    HostSim::Ip::CheckMaxConnections(record.maxConnections);
    HostSim::Ip::CheckCongestionControl(record.congestionControl);
    HostSim::Ip::CheckEcn(record.ecn);
    if (!configOnly) {
        record.up = true;
        record.currentMaxConnections = record.maxConnections;
        record.currentIpv6 = record.ipv6;
    }
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    if (HostSim::Ip::LoadNetstack(database, record.key)) {
        throw HostCtlException("Netstack instance " + record.key + " already exists");
    }
    HostSim::Ip::InsertNetstack(database, record);
    transaction.Commit();
}

void NetworkInfoImpl::RemoveNetstackInstance(const std::string& key, bool keepConfig) {
    PassOperation("NetworkInfo::RemoveNetstackInstance", key);
    if (auto* live = HostSim::LiveHost()) {
        if (keepConfig) {
            NotAvailable();
        }
        live->Netstacks().Remove(key);
        return;
    }
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    auto record = HostSim::Ip::LoadNetstack(database, key);
    if (!record) {
        throw HostCtlException("There is no netstack instance named " + key);
    }
    if (key == HostSim::Ip::kDefaultNetstack) {
        throw HostCtlException("The default netstack instance " + key + " can't be removed");
    }
    const auto users = HostSim::Ip::LoadKelmNics(database, {.netstack = key});
    if (!users.empty()) {
        throw HostCtlException("Netstack instance " + key + " is in use by " + users.front().name);
    }
    if (keepConfig) {
        record->up = false;
        record->currentMaxConnections = 0;
        record->currentIpv6 = false;
        HostSim::Ip::UpdateNetstack(database, *record);
    } else {
        database.Query("DELETE FROM netstack WHERE key = ?1").Bind(1, key).Run();
        HostSim::Routing::ForgetNetstack(database, key);
        HostSim::NameService::ForgetDns(database, key);
    }
    transaction.Commit();
}

int NetworkInfoImpl::GetNetstackState(const std::string& key) {
    PassOperation("NetworkInfo::GetNetstackState", key);
    auto* live = HostSim::LiveHost();
    auto record =
        live != nullptr ? live->Netstacks().Load(key) : HostSim::Ip::LoadNetstack(Store(), key);
    return record && record->up ? NetstackInstance::kStateUp : 0;
}

std::vector<std::string> NetworkInfoImpl::GetPredefinedNetstackKeys() {
    PassOperation("NetworkInfo::GetPredefinedNetstackKeys");
    if (HostSim::LiveHost() != nullptr) {
        NotAvailable();
    }
    return HostSim::Ip::PredefinedNetstackKeys();
}

// The dumper reads the interfaces when it runs; the simulated host keeps nothing of its own.
// Linux has no network dumper.
void NetworkInfoImpl::RefreshNetDumper() {
    PassOperation("NetworkInfo::RefreshNetDumper");
    if (HostSim::LiveHost() != nullptr) {
        NotAvailable();
    }
}

}  // namespace KelmCtl::Network

namespace HostCtl {

std::unique_ptr<Network::NetworkInfo> Host::GetNetworkInfo() {
    HostSim::PassOperation("Host::GetNetworkInfo");
    return std::make_unique<KelmCtl::Network::NetworkInfoImpl>();
}

}  // namespace HostCtl
