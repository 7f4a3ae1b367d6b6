#include "hostsim/kelmnic/KelmNicStore.h"

#include <algorithm>
#include <bit>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Names.h"
#include "hostsim/dvs/DvsStore.h"
#include "kelmctl/KelmNicInfoImpl.h"

namespace HostSim::Ip {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::IpConfig;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;
using KelmCtl::Network::KelmNicRecord;

namespace {

struct Word {
    int value;
    const char* word;
};
constexpr Word kTypeWords[] = {
    {Ipv6Network::kTypeStatic, "static"},
    {Ipv6Network::kTypeAutoconf, "autoconf"},
    {Ipv6Network::kTypeDhcp, "dhcp"},
};
constexpr Word kStatusWords[] = {
    {Ipv6Network::kStatusPreferred, "preferred"},
    {Ipv6Network::kStatusTentative, "tentative"},
    {Ipv6Network::kStatusDuplicated, "duplicated"},
    {Ipv6Network::kStatusDeprecated, "deprecated"},
};

// A known value as its word, any other as its number.
template <std::size_t N>
Json ToWord(int value, const Word (&words)[N]) {
    for (const Word& word : words) {
        if (word.value == value) {
            return word.word;
        }
    }
    return value;
}

template <std::size_t N>
int FromWord(const Json& json, const Word (&words)[N], const char* what) {
    if (json.is_number_integer()) {
        return json.get<int>();
    }
    const std::string text = json.get<std::string>();
    for (const Word& word : words) {
        if (text == word.word) {
            return word.value;
        }
    }
    throw HostCtlException(std::string("Unknown IPv6 address ") + what + " " + text);
}

Ipv4Address Ipv4FromJson(const Json& json, const char* key) {
    const std::string text = json.value(key, "0.0.0.0");
    if (!Ipv4Address::IsValidAddress(text)) {
        throw HostCtlException("Invalid IPv4 address " + text);
    }
    return Ipv4Address(text);
}

bool IsContiguousNetmask(std::uint32_t netmask) {
    return netmask != 0 && std::countl_one(netmask) + std::countr_zero(netmask) == 32;
}

constexpr int kNetDumper = 1;
constexpr int kIpv6ReadyPrimary = 2;
constexpr int kIpv6ReadySecondary = 4;

std::vector<std::string> PortGroupUsers(Database& database, const std::string& portGroup) {
    auto query = database.Query("SELECT users FROM vswitch_portgroup WHERE name = ?1");
    query.Bind(1, portGroup);
    if (!query.Step()) {
        return {};
    }
    return Json::parse(query.Text(0)).get<std::vector<std::string>>();
}

void WritePortGroupUsers(Database& database, const std::string& portGroup,
                         const std::vector<std::string>& users) {
    database.Query("UPDATE vswitch_portgroup SET users = ?1 WHERE name = ?2")
        .Bind(1, Json(users).dump())
        .Bind(2, portGroup)
        .Run();
}

}  // namespace

// The opaque network of a connection to one, as JSON text; empty for other connections.
std::string OpaqueText(const KelmNicRecord& record) {
    if (record.connectionType != HostCtl::Network::ConnectionPoint::kOpaqueNetwork) {
        return {};
    }
    return Json{{"id", record.opaque.opaqueNetworkId},
                {"type", record.opaque.opaqueNetworkType},
                {"externalId", record.opaque.externalId}}
        .dump();
}

void SetOpaque(KelmNicRecord& record, const std::string& text) {
    if (!text.empty()) {
        const Json opaque = Json::parse(text);
        record.opaque = {opaque.value("id", ""), opaque.value("type", ""),
                         opaque.value("externalId", "")};
    }
}

// The tags as their numbers, separated by commas.
std::string TagsText(const KelmNicRecord& record) {
    std::string tags;
    for (int tag : record.tags) {
        tags += (tags.empty() ? "" : ",") + std::to_string(tag);
    }
    return tags;
}

void SetTags(KelmNicRecord& record, const std::string& tags) {
    for (std::size_t start = 0; start < tags.size();) {
        std::size_t end = std::min(tags.find(',', start), tags.size());
        record.tags.push_back(std::stoi(tags.substr(start, end - start)));
        start = end + 1;
    }
}

std::int64_t NetDumpFlags(const KelmNicRecord& record) {
    return (record.netDumper ? kNetDumper : 0) | (record.ipv6ReadyPrimary ? kIpv6ReadyPrimary : 0) |
           (record.ipv6ReadySecondary ? kIpv6ReadySecondary : 0);
}

void SetNetDumpFlags(KelmNicRecord& record, std::int64_t flags) {
    record.netDumper = (flags & kNetDumper) != 0;
    record.ipv6ReadyPrimary = (flags & kIpv6ReadyPrimary) != 0;
    record.ipv6ReadySecondary = (flags & kIpv6ReadySecondary) != 0;
}

void CheckMtu(long mtu) {
    CheckRange(mtu, HostCtl::Network::KelmNic::MIN_MTU, HostCtl::Network::KelmNic::MAX_MTU, "MTU");
}

Json IpConfigToJson(const IpConfig& config) {
    Json addresses = Json::array();
    for (const Ipv6Network& network : config.GetIpv6Network()) {
        addresses.push_back({{"address", network.GetStringAddress()},
                             {"type", ToWord(network.GetIpv6AddressType(), kTypeWords)},
                             {"status", ToWord(network.GetIpv6AddressStatus(), kStatusWords)}});
    }
    return {{"ipv4",
             {{"address", config.GetIpv4Address().GetStringAddress()},
              {"netmask", config.GetIpv4Netmask().GetStringAddress()},
              {"broadcast", config.GetIpv4Broadcast().GetStringAddress()},
              {"gateway", config.GetIpv4Gateway().GetStringAddress()},
              {"dhcp", config.GetUseDhcp()},
              {"none", config.GetIpv4UseNone()},
              {"dhcpDns", config.GetDhcpDns()}}},
            {"ipv6",
             {{"enabled", config.GetUseIpv6()},
              {"dhcp", config.GetUseIpv6Dhcp()},
              {"routerAdvertised", config.GetUseIpv6RouterAdvertised()},
              {"dhcpDns", config.GetIpv6DhcpDns()},
              {"gateway", config.GetIpv6Gateway().GetStringAddress()},
              {"addresses", std::move(addresses)}}}};
}

IpConfig IpConfigFromJson(const Json& json) {
    IpConfig config;
    const Json ipv4 = json.value("ipv4", Json::object());
    config.SetIpv4Address(Ipv4FromJson(ipv4, "address"));
    config.SetIpv4Netmask(Ipv4FromJson(ipv4, "netmask"));
    config.SetIpv4Gateway(Ipv4FromJson(ipv4, "gateway"));
    config.SetIpv4Broadcast(Ipv4FromJson(ipv4, "broadcast"));
    if (ipv4.value("dhcp", false)) {
        config.SetUseDhcp(true);
    } else if (ipv4.value("none", false)) {
        config.SetIpv4UseNone();
    }
    config.SetDhcpDns(ipv4.value("dhcpDns", false));

    const Json ipv6 = json.value("ipv6", Json::object());
    config.SetUseIpv6(ipv6.value("enabled", false));
    config.SetUseIpv6Dhcp(ipv6.value("dhcp", false));
    config.SetUseIpv6RouterAdvertised(ipv6.value("routerAdvertised", false));
    config.SetIpv6DhcpDns(ipv6.value("dhcpDns", false));
    const std::string gateway = ipv6.value("gateway", "::");
    if (!Ipv6Address::IsValidAddress(gateway)) {
        throw HostCtlException("Invalid IPv6 gateway " + gateway);
    }
    config.SetIpv6Gateway(Ipv6Address(gateway));
    std::vector<Ipv6Network> networks;
    for (const Json& entry : ipv6.value("addresses", Json::array())) {
        const std::string text = entry.at("address").get<std::string>();
        if (!Ipv6Network::IsValidAddressAndNetmask(text)) {
            throw HostCtlException("Invalid IPv6 address " + text);
        }
        Ipv6Network network(text);
        network.SetIpv6AddressType(
            FromWord(entry.value("type", Json("static")), kTypeWords, "type"));
        network.SetIpv6AddressStatus(
            FromWord(entry.value("status", Json("preferred")), kStatusWords, "status"));
        networks.push_back(network);
    }
    config.SetIpv6Networks(std::move(networks));
    return config;
}

IpConfig InForce(const IpConfig& configured, std::uint32_t leaseNumber) {
    IpConfig config = configured;
    if (config.GetUseDhcp()) {
        // The simulated DHCP server leases from 198.51.100.0/24.
        const bool dhcpDns = config.GetDhcpDns();
        config.SetIpv4Address(Ipv4Address::FromValue(0xC6336400u + 100 + leaseNumber % 150));
        config.SetIpv4Netmask(Ipv4Address("255.255.255.0"));
        config.SetIpv4Gateway(Ipv4Address("198.51.100.1"));
        config.SetUseDhcp(true);
        config.SetDhcpDns(dhcpDns);
    }
    const std::uint32_t address = config.GetIpv4Address().GetValue();
    const std::uint32_t netmask = config.GetIpv4Netmask().GetValue();
    config.SetIpv4Broadcast(
        Ipv4Address::FromValue(address == 0 || netmask == 0 ? 0 : (address | ~netmask)));
    if (config.GetIpv4UseNone()) {
        config.SetIpv4UseNone();
    }
    return config;
}

void CheckIpConfig(const IpConfig& config, const std::string& interface) {
    if (!config.GetUseDhcp() && !config.GetIpv4UseNone() &&
        config.GetIpv4Address().GetValue() != 0 &&
        !IsContiguousNetmask(config.GetIpv4Netmask().GetValue())) {
        throw HostCtlException("IPv4 netmask " + config.GetIpv4Netmask().GetStringAddress() +
                               " of " + interface + " is not a valid netmask");
    }
    const auto& networks = config.GetIpv6Network();
    for (auto it = networks.begin(); it != networks.end(); ++it) {
        for (auto other = networks.begin(); other != it; ++other) {
            if (other->GetAddress() == it->GetAddress()) {
                throw HostCtlException("IPv6 address " + it->GetAddress().GetStringAddress() +
                                       " is assigned to " + interface + " more than once");
            }
        }
    }
}

std::optional<Ipv4Address> StaticIpv4Address(const IpConfig& config) {
    if (config.GetUseDhcp() || config.GetIpv4UseNone() || config.GetIpv4Address().GetValue() == 0) {
        return std::nullopt;
    }
    return config.GetIpv4Address();
}

void RefuseIpv4AddressInUse(const Ipv4Address& address, const std::string& user,
                            const std::string& netstack) {
    throw HostCtlException("IPv4 address " + address.GetStringAddress() + " is in use by " + user +
                           " in netstack " + netstack);
}

std::vector<KelmNicRecord> LoadKelmNics(Database& database, const KelmNicFilter& filter) {
    std::vector<KelmNicRecord> records;
    static const std::string sql = "SELECT " + ColumnNames(kKelmNicColumns) +
                                   " FROM kelmnic WHERE (?1 IS NULL OR system = ?1) AND (?2 IS"
                                   " NULL OR netstack = ?2) AND (?3 IS NULL OR name = ?3)"
                                   " ORDER BY position";
    auto query = database.Query(sql.c_str());
    if (filter.system) {
        query.Bind(1, static_cast<std::int64_t>(*filter.system));
    }
    if (filter.netstack) {
        query.Bind(2, *filter.netstack);
    }
    if (filter.name) {
        query.Bind(3, *filter.name);
    }
    while (query.Step()) {
        ReadColumns(query, 0, kKelmNicColumns, records.emplace_back());
    }
    return records;
}

std::optional<KelmNicRecord> LoadKelmNic(Database& database, const std::string& name) {
    auto records = LoadKelmNics(database, {.name = name});
    if (records.empty()) {
        return std::nullopt;
    }
    return std::move(records.front());
}

void InsertKelmNic(Database& database, const KelmNicRecord& record) {
    static const std::string sql = InsertStatement("kelmnic", kKelmNicColumns);
    auto statement = database.Query(sql.c_str());
    BindColumns(statement, 1, kKelmNicColumns, record);
    statement.Run();
}

void UpdateKelmNic(Database& database, const KelmNicRecord& record) {
    // The name is the first column, and stays.
    static const std::string sql = "UPDATE kelmnic SET " +
                                   ColumnAssignments(std::span(kKelmNicColumns).subspan(1), 2) +
                                   " WHERE name = ?1";
    auto statement = database.Query(sql.c_str());
    BindColumns(statement, 1, kKelmNicColumns, record);
    statement.Run();
}

void DeleteKelmNic(Database& database, const std::string& name) {
    database.Query("DELETE FROM kelmnic WHERE name = ?1").Bind(1, name).Run();
}

void AddPortGroupUser(Database& database, const std::string& portGroup, const std::string& name) {
    std::vector<std::string> users = PortGroupUsers(database, portGroup);
    if (std::find(users.begin(), users.end(), name) == users.end()) {
        users.push_back(name);
        WritePortGroupUsers(database, portGroup, users);
    }
}

void DropPortGroupUser(Database& database, const std::string& portGroup, const std::string& name) {
    std::vector<std::string> users = PortGroupUsers(database, portGroup);
    if (std::erase(users, name) != 0) {
        WritePortGroupUsers(database, portGroup, users);
    }
}

namespace {

// Changes the clients of a DVPort with `change` and writes the switch's ports back.
template <class Change>
void ChangeDVPort(Database& database, const std::string& dvsId, const std::string& dvPort,
                  Change change) {
    auto record = Dvs::LoadSwitchById(database, dvsId);
    if (!record) {
        return;
    }
    Json dvports = Json::array();
    for (KelmCtl::Network::DVPortRecord& port : record->dvports) {
        if (port.id == dvPort) {
            change(port.clients);
            port.inUse = !port.clients.empty();
        }
        dvports.push_back(Dvs::DVPortToJson(port));
    }
    database.Query("UPDATE dvs SET dvports = ?1 WHERE id = ?2")
        .Bind(1, dvports.dump())
        .Bind(2, dvsId)
        .Run();
}

}  // namespace

void AddDVPortClient(Database& database, const std::string& dvsId, const std::string& dvPort,
                     const std::string& name) {
    ChangeDVPort(database, dvsId, dvPort, [&name](std::vector<std::string>& clients) {
        if (std::find(clients.begin(), clients.end(), name) == clients.end()) {
            clients.push_back(name);
        }
    });
}

void DropDVPortClient(Database& database, const std::string& dvsId, const std::string& dvPort,
                      const std::string& name) {
    ChangeDVPort(database, dvsId, dvPort,
                 [&name](std::vector<std::string>& clients) { std::erase(clients, name); });
}

HostCtl::Network::KelmNicTagType TagOfName(const std::string& name) {
    return KelmCtl::Network::KelmNicTagNameToId(name);
}

}  // namespace HostSim::Ip
