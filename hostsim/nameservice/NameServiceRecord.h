// The name-service subject's records: one of the user's hosts file entries, as both hosts keep
// it, and the resolver configuration of a netstack instance with its column table.
#pragma once

#include <string>
#include <vector>

#include "hostsim/core/ColumnTable.h"
#include "kelmctl/DnsConfigImpl.h"

namespace HostSim::NameService {

struct HostsRecord {
    std::string address;  // in its normal form
    std::string hostName;
    std::vector<std::string> aliases;
    std::string comment;  // one line, empty for none

    bool operator==(const HostsRecord&) const = default;
};

using DnsConfig = KelmCtl::Network::DnsConfigImpl::Config;

// The lists of a resolver configuration as the dns table keeps them: JSON arrays of text.
std::string ServersText(const DnsConfig& config);
void SetServers(DnsConfig& config, const std::string& text);
std::string DomainsText(const DnsConfig& config);
void SetDomains(DnsConfig& config, const std::string& text);

// Table dns, after the instance.
inline constexpr Column<DnsConfig> kDnsColumns[] = {
    {.sql = "servers", .member = TextAccess<DnsConfig>{ServersText, SetServers}},
    {.sql = "domains", .member = TextAccess<DnsConfig>{DomainsText, SetDomains}},
};

}  // namespace HostSim::NameService
