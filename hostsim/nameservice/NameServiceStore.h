// The name-service subject's tables: the resolver configuration of each netstack instance, and
// the host-wide row with the IPv6 switch, the network dumper switch and the user's hosts file
// entries.
#pragma once

#include <string>
#include <vector>

#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/nameservice/NameServiceRecord.h"
#include "kelmctl/DnsConfigImpl.h"

namespace HostSim::NameService {

// Its section of the built-in default host.
extern const char* const kDefaultSection;

// An instance without a row has no servers and no domains.
KelmCtl::Network::DnsConfigImpl::Config ReadDns(Database& database, const std::string& netstack);
void WriteDns(Database& database, const std::string& netstack,
              const KelmCtl::Network::DnsConfigImpl::Config& config);
// Drops the resolver configuration of an instance that is being removed.
void ForgetDns(Database& database, const std::string& netstack);

// The hosts file entries, each {"ip", "hostname", "aliases", "comment"}.
Json ReadHosts(Database& database);
void WriteHosts(Database& database, const Json& entries);

bool ReadIpv6Enabled(Database& database);
void WriteIpv6Enabled(Database& database, bool enabled);
// Whether the network dumper, which sends the host's core dumps over the network, is on.
bool ReadNetDumperEnabled(Database& database);
void WriteNetDumperEnabled(Database& database, bool enabled);

// Throws HostCtlException, in the host's words, for text that is no host or domain name: labels
// of letters, digits and hyphens, not starting or ending with a hyphen, of 1 to 63 characters,
// 253 in all.
void CheckHostName(const std::string& name, const char* what);

// The host's rules for a resolver configuration, for a change and a profile alike: a server and
// a search domain (a host name) are each in their list once. Each adds to `config` or throws
// HostCtlException naming the instance.
void AddServer(KelmCtl::Network::DnsConfigImpl::Config& config, const std::string& server,
               const std::string& netstack);
void AddSearchDomain(KelmCtl::Network::DnsConfigImpl::Config& config, const std::string& domain,
                     const std::string& netstack);

// The host's rules for a hosts file entry, for a change and a profile alike: a host name, aliases
// that are host names, and a comment of one line of stored text (Names.h). Throws
// HostCtlException.
void CheckHostsEntry(const std::string& hostName, const std::vector<std::string>& aliases,
                     const std::string& comment);
// The refusal of a second entry mapping `address` to `hostName`.
[[noreturn]] void RefuseSecondHostsEntry(const std::string& address, const std::string& hostName);

}  // namespace HostSim::NameService
