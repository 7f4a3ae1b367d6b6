// The name-service subject: the resolver configuration of each netstack instance, the user's
// hosts file entries and the IPv6 switch, the "nameService" section of a profile, and its
// default data.
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/IpAddress.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Subject.h"
#include "hostsim/nameservice/NameServiceStore.h"
#include "hostsim/routing/RoutingStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE dns ("
    " netstack TEXT PRIMARY KEY, servers TEXT NOT NULL, domains TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE name_service ("
    " id INTEGER PRIMARY KEY CHECK (id = 1), ipv6_enabled INTEGER NOT NULL,"
    " net_dumper_enabled INTEGER NOT NULL, hosts TEXT NOT NULL);",
};

constexpr const char* kTables[] = {"dns", "name_service"};

std::string NormalAddress(const std::string& text) {
    return text.find(':') != std::string::npos ? Ipv6Address(text).GetStringAddress()
                                               : Ipv4Address(text).GetStringAddress();
}

// The resolver configuration is copied only for the instances a scaled host renames.
void ImportDns(Database& database, const Json& section, const Scale& scale) {
    std::set<std::string> keys;
    for (const Json& dns : ArrayMember(section, "dns")) {
        const std::string key = dns.at("netstack").get<std::string>();
        CheckObjectName(key, "netstack instance");
        if (!keys.insert(key).second) {
            throw HostCtlException("Netstack instance " + key +
                                   " appears twice in the DNS configuration");
        }
        KelmCtl::Network::DnsConfigImpl::Config config;
        for (const Json& server : ArrayMember(dns, "servers")) {
            NameService::AddServer(config, NormalAddress(server.get<std::string>()), key);
        }
        for (const Json& domain : ArrayMember(dns, "searchDomains")) {
            NameService::AddSearchDomain(config, domain.get<std::string>(), key);
        }
        for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
            const std::string target = scale.Name(key, copy);
            if (copy == 0 || target != key) {
                Routing::RequireNetstack(database, target);
                NameService::WriteDns(database, target, config);
            }
        }
    }
}

// A host has one hosts file: it is not copied when the host is scaled.
void ImportSection(Database& database, const Json& section, const Scale& scale) {
    NameService::WriteIpv6Enabled(database, section.value("ipv6Enabled", true));
    NameService::WriteNetDumperEnabled(database, section.value("netDumperEnabled", false));
    ImportDns(database, section, scale);
    // Gathered as a plain vector: each push_back onto a JSON array would set the parent of every
    // element before it again.
    Json::array_t hosts;
    std::set<std::pair<std::string, std::string>> mapped;
    for (const Json& entry : ArrayMember(section, "hosts")) {
        const std::string name = entry.at("hostname").get<std::string>();
        const auto aliases = entry.value("aliases", std::vector<std::string>{});
        const std::string comment = entry.value("comment", "");
        NameService::CheckHostsEntry(name, aliases, comment);
        const std::string address = NormalAddress(entry.at("ip").get<std::string>());
        if (!mapped.emplace(address, name).second) {
            NameService::RefuseSecondHostsEntry(address, name);
        }
        hosts.push_back(
            {{"ip", address}, {"hostname", name}, {"aliases", aliases}, {"comment", comment}});
    }
    NameService::WriteHosts(database, Json(std::move(hosts)));
}

Json ExportSection(Database& database) {
    Json dns = Json::array();
    auto row = database.Query("SELECT netstack FROM dns ORDER BY netstack");
    while (row.Step()) {
        const std::string key = row.Text(0);
        const auto config = NameService::ReadDns(database, key);
        dns.push_back(
            {{"netstack", key}, {"servers", config.servers}, {"searchDomains", config.domains}});
    }
    return {{"ipv6Enabled", NameService::ReadIpv6Enabled(database)},
            {"netDumperEnabled", NameService::ReadNetDumperEnabled(database)},
            {"dns", dns},
            {"hosts", NameService::ReadHosts(database)}};
}

}  // namespace

extern const Subject nameServiceSubject;
const Subject nameServiceSubject = {
    .name = "nameService",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = NameService::kDefaultSection,
    .importSection = ImportSection,
    .exportSection = ExportSection,
};

}  // namespace HostSim
