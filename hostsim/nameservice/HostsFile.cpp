#include "kelmctl/HostsFile.h"

#include <functional>

#include "hostctl/HostCtlException.h"
#include "hostctl/IpAddress.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/nameservice/NameServiceRecord.h"
#include "hostsim/nameservice/NameServiceStore.h"

namespace KelmCtl::Network {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;
using HostSim::Json;
using HostSim::PassOperation;
using HostSim::NameService::HostsRecord;

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

// The user's entries, changed by `change` in one step: on the live host in /etc/hosts, on the
// simulated one in the store.
void EditEntries(const std::function<void(std::vector<HostsRecord>&)>& change) {
    if (auto* live = HostSim::LiveHost()) {
        live->NameService().EditHosts(change);
        return;
    }
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    std::vector<HostsRecord> entries;
    for (const Json& entry : HostSim::NameService::ReadHosts(database)) {
        entries.push_back({entry.at("ip").get<std::string>(),
                           entry.at("hostname").get<std::string>(),
                           entry.at("aliases").get<std::vector<std::string>>(),
                           entry.at("comment").get<std::string>()});
    }
    change(entries);
    Json stored = Json::array();
    for (const HostsRecord& entry : entries) {
        stored.push_back({{"ip", entry.address},
                          {"hostname", entry.hostName},
                          {"aliases", entry.aliases},
                          {"comment", entry.comment}});
    }
    HostSim::NameService::WriteHosts(database, stored);
    transaction.Commit();
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
    if (HostSim::LiveHost() == nullptr) {
        HostSim::Store();
    }
}

std::vector<HostsFileEntry> HostsFile::GetEntriesFromConfig() {
    PassOperation("HostsFile::GetEntriesFromConfig");
    std::vector<HostsFileEntry> entries;
    if (auto* live = HostSim::LiveHost()) {
        for (HostsRecord& entry : live->NameService().ReadHosts()) {
            entries.emplace_back(std::move(entry.address), std::move(entry.hostName),
                                 std::move(entry.aliases), std::move(entry.comment));
        }
        return entries;
    }
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
    EditEntries([&](std::vector<HostsRecord>& entries) {
        for (const HostsRecord& entry : entries) {
            if (entry.address == address && entry.hostName == hostName) {
                HostSim::NameService::RefuseSecondHostsEntry(address, hostName);
            }
        }
        entries.push_back({address, hostName, aliases, comment});
    });
}

void HostsFile::RemoveEntryFromUser(const std::string& ipAddress, const std::string& hostName) {
    PassOperation("HostsFile::RemoveEntryFromUser", hostName);
    const std::string address = NormalAddress(ipAddress);
    EditEntries([&](std::vector<HostsRecord>& entries) {
        if (std::erase_if(entries, [&](const HostsRecord& entry) {
                return entry.address == address && entry.hostName == hostName;
            }) == 0) {
            throw HostCtlException("The hosts file has no entry mapping " + address + " to " +
                                   hostName);
        }
    });
}

}  // namespace KelmCtl::Network
