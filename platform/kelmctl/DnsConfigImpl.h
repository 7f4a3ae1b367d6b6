// The resolver configuration of one netstack instance: its name servers, in the order of use,
// and its search domains. The object keeps a copy of the host's configuration, read on first
// use; changes go to the copy and take effect, all together, with SaveConfig.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hostctl/IpAddress.h"

namespace KelmCtl::Network {

class DnsConfigImpl {
public:
    explicit DnsConfigImpl(const std::string& netstackKey);
    ~DnsConfigImpl();

    // Reads the host's configuration again; unsaved changes are dropped.
    void Refresh();
    std::vector<std::string> GetNameServers();
    // The search domains, separated by blanks.
    std::string GetSearchDomainsString();

    void AddUserNameServer(const HostCtl::Network::IpAddress& server);
    void RemoveNameServer(const HostCtl::Network::IpAddress& server);
    void RemoveNameServers();
    void AddUserSearchDomain(const std::string& domain);
    void RemoveSearchDomain(const std::string& domain);
    // Applies the changes made since the copy was read to the host's configuration, as it
    // stands now, in one step.
    void SaveConfig();

    struct Config {
        std::vector<std::string> servers;
        std::vector<std::string> domains;
    };

private:
    using Change = std::function<void(Config&)>;
    const Config& Loaded();
    // Applies `change` to the copy, and keeps it for SaveConfig.
    void Apply(Change change);

    std::string netstackKey_;
    bool loaded_ = false;
    Config config_;
    std::vector<Change> changes_;
};

}  // namespace KelmCtl::Network
