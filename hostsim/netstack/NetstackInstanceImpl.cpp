// Host operations of netstack instances.
#include "kelmctl/NetstackInstanceImpl.h"

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/kelmnic/KelmNicStore.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/netstack/NetstackStore.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostSim::PassOperation;
using HostSim::Store;

namespace {

// Runs `change` on the instance's current row in a write transaction, writes it back and keeps
// it as the copy held.
template <class Change>
void ChangeNetstack(NetstackRecord& held, Change change) {
    HostSim::Database& database = Store();
    HostSim::WriteTransaction transaction(database);
    auto current = HostSim::Ip::LoadNetstack(database, held.key);
    if (!current) {
        throw HostCtlException("There is no netstack instance named " + held.key);
    }
    change(database, *current);
    HostSim::Ip::UpdateNetstack(database, *current);
    transaction.Commit();
    held = std::move(*current);
}

[[noreturn]] void NotAvailable() {
    throw HostCtlException(HostSim::Live::kNotAvailable);
}

}  // namespace

NetstackInstanceImpl::NetstackInstanceImpl(const std::string& key, unsigned maxConnections,
                                           const std::string& congestionControlAlgorithm,
                                           bool ipv6Enabled, unsigned workers,
                                           const std::string& ecnStatus)
    : record_(std::make_unique<NetstackRecord>()), onHost_(false) {
    record_->key = key;
    record_->name = key;
    record_->maxConnections = maxConnections;
    record_->congestionControl = congestionControlAlgorithm;
    record_->ipv6 = ipv6Enabled;
    record_->workers = workers;
    record_->ecn = ecnStatus;
}

NetstackInstanceImpl::NetstackInstanceImpl(std::unique_ptr<NetstackRecord> record)
    : record_(std::move(record)), onHost_(true) {}

NetstackInstanceImpl::~NetstackInstanceImpl() = default;

std::vector<std::string> NetstackInstanceImpl::GetCongestionControlAlgorithmList() {
    if (auto* live = HostSim::LiveHost()) {
        return live->Netstacks().CongestionControlAlgorithms();
    }
    return HostSim::Ip::CongestionControlAlgorithms();
}

std::string NetstackInstanceImpl::GetKey() const {
    PassOperation("NetstackInstance::GetKey", record_->key);
    return record_->key;
}

std::string NetstackInstanceImpl::GetInstanceName() const {
    PassOperation("NetstackInstance::GetInstanceName", record_->key);
    return record_->name;
}

int NetstackInstanceImpl::GetState() const {
    PassOperation("NetstackInstance::GetState", record_->key);
    return record_->up ? kStateUp : 0;
}

unsigned NetstackInstanceImpl::GetMaxConnections() const {
    PassOperation("NetstackInstance::GetMaxConnections", record_->key);
    return record_->maxConnections;
}

unsigned NetstackInstanceImpl::GetCurrentMaxConnections() const {
    PassOperation("NetstackInstance::GetCurrentMaxConnections", record_->key);
    return record_->up ? record_->currentMaxConnections : 0;
}

std::string NetstackInstanceImpl::GetCongestionControlAlgorithm() const {
    PassOperation("NetstackInstance::GetCongestionControlAlgorithm", record_->key);
    return record_->congestionControl;
}

bool NetstackInstanceImpl::GetIpv6Enabled() const {
    PassOperation("NetstackInstance::GetIpv6Enabled", record_->key);
    return record_->ipv6;
}

bool NetstackInstanceImpl::GetCurrentIpv6Enabled() const {
    PassOperation("NetstackInstance::GetCurrentIpv6Enabled", record_->key);
    return record_->up && record_->currentIpv6;
}

std::string NetstackInstanceImpl::GetEcnStatus() const {
    PassOperation("NetstackInstance::GetEcnStatus", record_->key);
    return record_->ecn;
}

unsigned NetstackInstanceImpl::GetWorkers() const {
    return record_->workers;
}

void NetstackInstanceImpl::SetInstanceName(const std::string& name, bool) {
    PassOperation("NetstackInstance::SetInstanceName", record_->key);
    HostSim::Ip::CheckNetstackKey(name);
    // A namespace is known by its name alone.
    if (onHost_ && HostSim::LiveHost() != nullptr) {
        NotAvailable();
    }
    if (!onHost_) {
        record_->name = name;
        return;
    }
    ChangeNetstack(*record_,
                   [&](HostSim::Database&, NetstackRecord& record) { record.name = name; });
}

void NetstackInstanceImpl::Enable() {
    PassOperation("NetstackInstance::Enable", record_->key);
    // A namespace is in the kernel from its making to its removal.
    if (onHost_ && HostSim::LiveHost() != nullptr) {
        if (!record_->up) {
            NotAvailable();
        }
        return;
    }
    if (!onHost_) {
        record_->up = true;
        return;
    }
    ChangeNetstack(*record_, [](HostSim::Database&, NetstackRecord& record) {
        if (!record.up) {
            record.up = true;
            record.currentMaxConnections = record.maxConnections;
            record.currentIpv6 = record.ipv6;
        }
    });
}

void NetstackInstanceImpl::Disable() {
    PassOperation("NetstackInstance::Disable", record_->key);
    if (onHost_ && HostSim::LiveHost() != nullptr) {
        NotAvailable();
    }
    if (!onHost_) {
        record_->up = false;
        return;
    }
    ChangeNetstack(*record_, [](HostSim::Database& database, NetstackRecord& record) {
        if (record.key == HostSim::Ip::kDefaultNetstack) {
            throw HostCtlException("The default netstack instance " + record.key +
                                   " can't be disabled");
        }
        const auto users = HostSim::Ip::LoadKelmNics(database, {.netstack = record.key});
        if (!users.empty()) {
            throw HostCtlException("Netstack instance " + record.key + " is in use by " +
                                   users.front().name);
        }
        record.up = false;
        record.currentMaxConnections = 0;
        record.currentIpv6 = false;
    });
}

void NetstackInstanceImpl::SetMaxConnections(const unsigned& maxConnections, bool) {
    PassOperation("NetstackInstance::SetMaxConnections", record_->key);
    HostSim::Ip::CheckMaxConnections(maxConnections);
    // Linux sets no limit on a namespace's connections.
    if (onHost_ && HostSim::LiveHost() != nullptr) {
        NotAvailable();
    }
    if (!onHost_) {
        record_->maxConnections = maxConnections;
        return;
    }
    ChangeNetstack(*record_, [&](HostSim::Database&, NetstackRecord& record) {
        record.maxConnections = maxConnections;
    });
}

void NetstackInstanceImpl::SetCongestionControlAlgorithm(const std::string& name, bool) {
    PassOperation("NetstackInstance::SetCongestionControlAlgorithm", record_->key);
    // The kernel names the algorithms it has, and refuses another in its own words.
    if (auto* live = HostSim::LiveHost(); live != nullptr && onHost_) {
        live->Netstacks().SetCongestionControl(record_->key, name);
        record_->congestionControl = name;
        return;
    }
    HostSim::Ip::CheckCongestionControl(name);
    if (!onHost_) {
        record_->congestionControl = name;
        return;
    }
    ChangeNetstack(*record_, [&](HostSim::Database&, NetstackRecord& record) {
        record.congestionControl = name;
    });
}

void NetstackInstanceImpl::SetEcnStatus(const std::string& status) {
    PassOperation("NetstackInstance::SetEcnStatus", record_->key);
    HostSim::Ip::CheckEcn(status);
    if (auto* live = HostSim::LiveHost(); live != nullptr && onHost_) {
        live->Netstacks().SetEcn(record_->key, status);
        record_->ecn = status;
        return;
    }
    if (!onHost_) {
        record_->ecn = status;
        return;
    }
    ChangeNetstack(*record_,
                   [&](HostSim::Database&, NetstackRecord& record) { record.ecn = status; });
}

}  // namespace KelmCtl::Network
