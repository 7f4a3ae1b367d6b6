#include "hostsim/nameservice/NameServiceStore.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Columns.h"
#include "hostsim/core/Names.h"

namespace HostSim::NameService {

namespace {

constexpr std::size_t kMaximumLabel = 63;
constexpr std::size_t kMaximumName = 253;

bool IsLabelCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
}

std::vector<std::string> Strings(const std::string& text) {
    return Json::parse(text).get<std::vector<std::string>>();
}

// The host-wide row, made on first need.
void EnsureRow(Database& database) {
    database
        .Query(
            "INSERT OR IGNORE INTO name_service (id, ipv6_enabled, net_dumper_enabled, hosts)"
            " VALUES (1, 1, 0, '[]')")
        .Run();
}

}  // namespace

std::string ServersText(const DnsConfig& config) {
    return Json(config.servers).dump();
}

void SetServers(DnsConfig& config, const std::string& text) {
    config.servers = Strings(text);
}

std::string DomainsText(const DnsConfig& config) {
    return Json(config.domains).dump();
}

void SetDomains(DnsConfig& config, const std::string& text) {
    config.domains = Strings(text);
}

KelmCtl::Network::DnsConfigImpl::Config ReadDns(Database& database, const std::string& netstack) {
    static const std::string sql =
        "SELECT " + ColumnNames(kDnsColumns) + " FROM dns WHERE netstack = ?1";
    auto row = database.Query(sql.c_str());
    row.Bind(1, netstack);
    KelmCtl::Network::DnsConfigImpl::Config config;
    if (row.Step()) {
        ReadColumns(row, 0, kDnsColumns, config);
    }
    return config;
}

void WriteDns(Database& database, const std::string& netstack,
              const KelmCtl::Network::DnsConfigImpl::Config& config) {
    static const std::string sql = "INSERT INTO dns (netstack, " + ColumnNames(kDnsColumns) +
                                   ") VALUES (?1, " + ColumnParameters(2, std::size(kDnsColumns)) +
                                   ") ON CONFLICT (netstack) DO UPDATE SET " +
                                   ColumnAssignments(kDnsColumns, 2);
    auto write = database.Query(sql.c_str());
    write.Bind(1, netstack);
    BindColumns(write, 2, kDnsColumns, config);
    write.Run();
}

void ForgetDns(Database& database, const std::string& netstack) {
    database.Query("DELETE FROM dns WHERE netstack = ?1").Bind(1, netstack).Run();
}

Json ReadHosts(Database& database) {
    auto row = database.Query("SELECT hosts FROM name_service WHERE id = 1");
    return row.Step() ? Json::parse(row.Text(0)) : Json::array();
}

void WriteHosts(Database& database, const Json& entries) {
    EnsureRow(database);
    database.Query("UPDATE name_service SET hosts = ?1 WHERE id = 1").Bind(1, entries.dump()).Run();
}

bool ReadIpv6Enabled(Database& database) {
    auto row = database.Query("SELECT ipv6_enabled FROM name_service WHERE id = 1");
    return !row.Step() || row.Bool(0);
}

void WriteIpv6Enabled(Database& database, bool enabled) {
    EnsureRow(database);
    database.Query("UPDATE name_service SET ipv6_enabled = ?1 WHERE id = 1")
        .Bind(1, enabled ? 1 : 0)
        .Run();
}

bool ReadNetDumperEnabled(Database& database) {
    auto row = database.Query("SELECT net_dumper_enabled FROM name_service WHERE id = 1");
    return row.Step() && row.Bool(0);
}

void WriteNetDumperEnabled(Database& database, bool enabled) {
    EnsureRow(database);
    database.Query("UPDATE name_service SET net_dumper_enabled = ?1 WHERE id = 1")
        .Bind(1, enabled ? 1 : 0)
        .Run();
}

void CheckHostName(const std::string& name, const char* what) {
    auto refuse = [&name, what](const std::string& why) {
        throw HostCtl::Lib::HostCtlException("Invalid " + std::string(what) + " '" + name +
                                             "': " + why);
    };
    if (name.empty() || name.size() > kMaximumName) {
        refuse("a name has 1 to 253 characters");
    }
    std::size_t start = 0;
    while (start <= name.size()) {
        std::size_t end = name.find('.', start);
        if (end == std::string::npos) {
            end = name.size();
        }
        const std::string label = name.substr(start, end - start);
        if (label.empty() || label.size() > kMaximumLabel) {
            refuse("each part between dots has 1 to 63 characters");
        }
        for (char c : label) {
            if (!IsLabelCharacter(c)) {
                refuse("only letters, digits, hyphens and dots are allowed");
            }
        }
        if (label.front() == '-' || label.back() == '-') {
            refuse("a part can't start or end with a hyphen");
        }
        start = end + 1;
    }
}

void AddServer(KelmCtl::Network::DnsConfigImpl::Config& config, const std::string& server,
               const std::string& netstack) {
    if (std::find(config.servers.begin(), config.servers.end(), server) != config.servers.end()) {
        throw HostCtl::Lib::HostCtlException("DNS server " + server +
                                             " is already in the list of netstack " + netstack);
    }
    config.servers.push_back(server);
}

void AddSearchDomain(KelmCtl::Network::DnsConfigImpl::Config& config, const std::string& domain,
                     const std::string& netstack) {
    CheckHostName(domain, "search domain");
    if (std::find(config.domains.begin(), config.domains.end(), domain) != config.domains.end()) {
        throw HostCtl::Lib::HostCtlException(
            "Search domain " + domain + " is already in the search list of netstack " + netstack);
    }
    config.domains.push_back(domain);
}

void CheckHostsEntry(const std::string& hostName, const std::vector<std::string>& aliases,
                     const std::string& comment) {
    CheckHostName(hostName, "host name");
    for (const std::string& alias : aliases) {
        CheckHostName(alias, "alias");
    }
    if (comment.find_first_of("\r\n") != std::string::npos) {
        throw HostCtl::Lib::HostCtlException("A hosts file comment is one line");
    }
    CheckStoredText(comment, "hosts file comment");
}

void RefuseSecondHostsEntry(const std::string& address, const std::string& hostName) {
    throw HostCtl::Lib::HostCtlException("The hosts file already maps " + address + " to " +
                                         hostName);
}

}  // namespace HostSim::NameService
