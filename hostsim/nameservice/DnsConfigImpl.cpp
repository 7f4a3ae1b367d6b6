#include "kelmctl/DnsConfigImpl.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nameservice/NameServiceStore.h"
#include "hostsim/routing/RoutingStore.h"

namespace KelmCtl::Network {

namespace {

using HostCtl::Lib::HostCtlException;
using HostSim::PassOperation;

void RemoveServer(DnsConfigImpl::Config& config, const std::string& server,
                  const std::string& netstack) {
    if (std::erase(config.servers, server) == 0) {
        throw HostCtlException("DNS server " + server + " is not in the list of netstack " +
                               netstack);
    }
}

void RemoveDomain(DnsConfigImpl::Config& config, const std::string& domain,
                  const std::string& netstack) {
    if (std::erase(config.domains, domain) == 0) {
        throw HostCtlException("Search domain " + domain +
                               " is not in the search list of netstack " + netstack);
    }
}

}  // namespace

DnsConfigImpl::DnsConfigImpl(const std::string& netstackKey) : netstackKey_(netstackKey) {
    PassOperation("DnsConfigImpl::DnsConfigImpl", netstackKey);
}

DnsConfigImpl::~DnsConfigImpl() = default;

void DnsConfigImpl::Refresh() {
    PassOperation("DnsConfigImpl::Refresh", netstackKey_);
    loaded_ = false;
    changes_.clear();
    Loaded();
}

const DnsConfigImpl::Config& DnsConfigImpl::Loaded() {
    if (loaded_) {
        return config_;
    }
    if (auto* live = HostSim::LiveHost()) {
        config_ = live->NameService().ReadResolver(netstackKey_);
    } else {
        HostSim::Database& database = HostSim::Store();
        HostSim::Routing::RequireNetstack(database, netstackKey_);
        config_ = HostSim::NameService::ReadDns(database, netstackKey_);
    }
    loaded_ = true;
    return config_;
}

void DnsConfigImpl::Apply(Change change) {
    Loaded();
    change(config_);
    changes_.push_back(std::move(change));
}

std::vector<std::string> DnsConfigImpl::GetNameServers() {
    PassOperation("DnsConfigImpl::GetNameServers", netstackKey_);
    return Loaded().servers;
}

std::string DnsConfigImpl::GetSearchDomainsString() {
    PassOperation("DnsConfigImpl::GetSearchDomainsString", netstackKey_);
    std::string text;
    for (const std::string& domain : Loaded().domains) {
        text += (text.empty() ? "" : " ") + domain;
    }
    return text;
}

void DnsConfigImpl::AddUserNameServer(const HostCtl::Network::IpAddress& server) {
    PassOperation("DnsConfigImpl::AddUserNameServer", netstackKey_);
    Apply([server = server.GetStringAddress(), netstack = netstackKey_](Config& config) {
        HostSim::NameService::AddServer(config, server, netstack);
    });
}

void DnsConfigImpl::RemoveNameServer(const HostCtl::Network::IpAddress& server) {
    PassOperation("DnsConfigImpl::RemoveNameServer", netstackKey_);
    Apply([server = server.GetStringAddress(), netstack = netstackKey_](Config& config) {
        RemoveServer(config, server, netstack);
    });
}

void DnsConfigImpl::RemoveNameServers() {
    PassOperation("DnsConfigImpl::RemoveNameServers", netstackKey_);
    Apply([](Config& config) { config.servers.clear(); });
}

void DnsConfigImpl::AddUserSearchDomain(const std::string& domain) {
    PassOperation("DnsConfigImpl::AddUserSearchDomain", netstackKey_);
    HostSim::NameService::CheckHostName(domain, "search domain");
    Apply([domain, netstack = netstackKey_](Config& config) {
        HostSim::NameService::AddSearchDomain(config, domain, netstack);
    });
}

void DnsConfigImpl::RemoveSearchDomain(const std::string& domain) {
    PassOperation("DnsConfigImpl::RemoveSearchDomain", netstackKey_);
    Apply([domain, netstack = netstackKey_](Config& config) {
        RemoveDomain(config, domain, netstack);
    });
}

// The changes are made again on the configuration as it stands now, so that changes saved by
// others since this copy was read are kept, and one that no longer fits fails here.
void DnsConfigImpl::SaveConfig() {
    PassOperation("DnsConfigImpl::SaveConfig", netstackKey_);
    if (auto* live = HostSim::LiveHost()) {
        config_ = live->NameService().EditResolver(netstackKey_, [this](Config& current) {
            for (const Change& change : changes_) {
                change(current);
            }
        });
        changes_.clear();
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    HostSim::Routing::RequireNetstack(database, netstackKey_);
    Config current = HostSim::NameService::ReadDns(database, netstackKey_);
    for (const Change& change : changes_) {
        change(current);
    }
    HostSim::NameService::WriteDns(database, netstackKey_, current);
    transaction.Commit();
    config_ = current;
    changes_.clear();
}

}  // namespace KelmCtl::Network
