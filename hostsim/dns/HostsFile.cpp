#include "kelmctl/HostsFile.h"

#include "hostctl/HostCtlException.h"
#include "hostctl/IpAddress.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/dns/NameServiceStore.h"

namespace KelmCtl::Network {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;
using HostSim::Json;
using HostSim::PassOperation;

// The address in its normal form, so that one address written two ways is one entry.
std::string NormalAddress(const std::string& text) {
    if (Ipv4Address::IsValidAddress(text)) {
        return Ipv4Address(text).GetStringAddress();
    }
    if (Ipv6Address::IsValidAddress(text)) {
        return Ipv6Address(text).GetStringAddress();
    }
    throw HostCtlException("'" + text + "' is not a valid IPv4 or IPv6 address");
}

}  // namespace

HostsFileEntry::HostsFileEntry(std::string ipAddress, std::string hostName,
                               std::vector<std::string> aliases, std::string comment)
    : ipAddress_(std::move(ipAddress)),
      hostName_(std::move(hostName)),
      aliases_(std::move(aliases)),
      comment_(std::move(comment)) {}

HostsFile::HostsFile() {
    PassOperation("HostsFile::HostsFile");
    HostSim::Store();
}

std::vector<HostsFileEntry> HostsFile::GetEntriesFromConfig() {
    PassOperation("HostsFile::GetEntriesFromConfig");
    std::vector<HostsFileEntry> entries;
    for (const Json& entry : HostSim::NameService::ReadHosts(HostSim::Store())) {
        entries.emplace_back(entry.at("ip").get<std::string>(),
                             entry.at("hostname").get<std::string>(),
                             entry.at("aliases").get<std::vector<std::string>>(),
                             entry.at("comment").get<std::string>());
    }
    return entries;
}

void HostsFile::AddEntryFromUser(const std::string& ipAddress, const std::string& hostName,
                                 const std::vector<std::string>& aliases,
                                 const std::string& comment) {
    PassOperation("HostsFile::AddEntryFromUser", hostName);
    const std::string address = NormalAddress(ipAddress);
    HostSim::NameService::CheckHostsEntry(hostName, aliases, comment);
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    Json entries = HostSim::NameService::ReadHosts(database);
    for (const Json& entry : entries) {
        if (entry.at("ip") == address && entry.at("hostname") == hostName) {
            HostSim::NameService::RefuseSecondHostsEntry(address, hostName);
        }
    }
    entries.push_back(
        {{"ip", address}, {"hostname", hostName}, {"aliases", aliases}, {"comment", comment}});
    HostSim::NameService::WriteHosts(database, entries);
    transaction.Commit();
}

void HostsFile::RemoveEntryFromUser(const std::string& ipAddress, const std::string& hostName) {
    PassOperation("HostsFile::RemoveEntryFromUser", hostName);
    const std::string address = NormalAddress(ipAddress);
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    Json entries = HostSim::NameService::ReadHosts(database);
    Json kept = Json::array();
    for (const Json& entry : entries) {
        if (entry.at("ip") != address || entry.at("hostname") != hostName) {
            kept.push_back(entry);
        }
    }
    if (kept.size() == entries.size()) {
        throw HostCtlException("The hosts file has no entry mapping " + address + " to " +
                               hostName);
    }
    HostSim::NameService::WriteHosts(database, kept);
    transaction.Commit();
}

}  // namespace KelmCtl::Network
