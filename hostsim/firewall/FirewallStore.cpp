#include "hostsim/firewall/FirewallStore.h"

#include <arpa/inet.h>

#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostctl/IpAddress.h"

namespace HostSim::Firewall {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv4Network;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;

namespace {

std::string InvalidAddress(const std::string& text) {
    return "Invalid address '" + text +
           "': expected an IPv4 or IPv6 address, or a network in prefix form such as "
           "192.0.2.0/24";
}

std::string HostBitsSet(const std::string& text, unsigned int prefixLength,
                        const std::string& network) {
    return "Invalid network '" + text + "': bits are set beyond the /" +
           std::to_string(prefixLength) + " prefix, the network is " + network;
}

AllowedAddress ParseIpv4Network(const std::string& text) {
    const Ipv4Network network(text);
    const std::uint32_t mask = network.GetNetmask().GetValue();
    const std::uint32_t address = network.GetNetwork().GetValue();
    if ((address & ~mask) != 0) {
        const std::string prefix = "/" + std::to_string(network.GetPrefixLength());
        throw HostCtlException(
            HostBitsSet(text, network.GetPrefixLength(),
                        Ipv4Address::FromValue(address & mask).GetStringAddress() + prefix));
    }
    return {AddressKind::Ipv4Network, network.GetStringAddress()};
}

AllowedAddress ParseIpv6Network(const std::string& text) {
    const Ipv6Network network(text);
    const unsigned int length = network.GetNetmask();
    auto bytes = network.GetAddress().GetBytes();
    bool hostBits = false;
    for (unsigned int bit = length; bit < bytes.size() * 8; ++bit) {
        const auto mask = static_cast<std::uint8_t>(0x80u >> (bit % 8));
        hostBits = hostBits || (bytes[bit / 8] & mask) != 0;
        bytes[bit / 8] &= static_cast<std::uint8_t>(~mask);
    }
    if (hostBits) {
        char masked[INET6_ADDRSTRLEN];
        inet_ntop(AF_INET6, bytes.data(), masked, sizeof masked);
        throw HostCtlException(HostBitsSet(text, length, masked + ("/" + std::to_string(length))));
    }
    return {AddressKind::Ipv6Network, network.GetStringAddress()};
}

}  // namespace

AllowedAddress ParseAllowedAddress(const std::string& text) {
    if (Ipv4Address::IsValidAddress(text)) {
        return {AddressKind::Ipv4Address, Ipv4Address(text).GetStringAddress()};
    }
    if (Ipv6Address::IsValidAddress(text)) {
        return {AddressKind::Ipv6Address, Ipv6Address(text).GetStringAddress()};
    }
    if (Ipv4Network::IsValidAddressAndNetmask(text)) {
        return ParseIpv4Network(text);
    }
    if (Ipv6Network::IsValidAddressAndNetmask(text)) {
        return ParseIpv6Network(text);
    }
    throw HostCtlException(InvalidAddress(text));
}

bool IsModuleLoaded(Database& database, const std::string& name) {
    return database.Query("SELECT 1 FROM kernel_module WHERE name = ?1").Bind(1, name).Step();
}

void RequireFirewallLoaded(Database& database) {
    if (!IsModuleLoaded(database, kModuleName)) {
        throw HostCtlException(std::string("The firewall module ") + kModuleName +
                               " is not loaded");
    }
}

void SetFirewallModuleUsers(Database& database, std::int64_t users) {
    database.Query("UPDATE kernel_module SET users = ?2 WHERE name = ?1")
        .Bind(1, kModuleName)
        .Bind(2, users)
        .Run();
}

std::string NoSuchRuleset(const std::string& id) {
    return "There is no firewall ruleset with id " + id;
}

namespace {
RulesetRecord RulesetFromRow(const Statement& row, int first) {
    return {row.Bool(first), row.Bool(first + 1), row.Bool(first + 2), row.Bool(first + 3),
            static_cast<std::int32_t>(row.Int(first + 4))};
}
}  // namespace

std::optional<RulesetRecord> ReadRuleset(Database& database, const std::string& id) {
    auto row = database.Query(
        "SELECT enabled, allowed_all, enabled_fixed, allowed_ip_fixed, clients"
        " FROM firewall_ruleset WHERE id = ?1");
    row.Bind(1, id);
    if (!row.Step()) {
        return std::nullopt;
    }
    return RulesetFromRow(row, 0);
}

std::vector<NamedRuleset> ReadRulesets(Database& database) {
    std::vector<NamedRuleset> rulesets;
    auto row = database.Query(
        "SELECT id, enabled, allowed_all, enabled_fixed, allowed_ip_fixed, clients"
        " FROM firewall_ruleset ORDER BY position");
    while (row.Step()) {
        rulesets.push_back({row.Text(0), RulesetFromRow(row, 1)});
    }
    return rulesets;
}

void WriteRuleset(Database& database, const std::string& id, const RulesetRecord& record) {
    database
        .Query(
            "UPDATE firewall_ruleset SET enabled = ?2, allowed_all = ?3, enabled_fixed = ?4,"
            " allowed_ip_fixed = ?5, clients = ?6 WHERE id = ?1")
        .Bind(1, id)
        .Bind(2, record.enabled)
        .Bind(3, record.allowedAll)
        .Bind(4, record.enabledFixed)
        .Bind(5, record.allowedIpFixed)
        .Bind(6, record.clients)
        .Run();
}

std::vector<HostCtl::System::FirewallPortRule> ReadRules(Database& database,
                                                         const std::string& id) {
    std::vector<HostCtl::System::FirewallPortRule> rules;
    auto row = database.Query(
        "SELECT label, port_type, port_begin, port_end, direction, protocol"
        " FROM firewall_rule WHERE ruleset = ?1 ORDER BY position");
    row.Bind(1, id);
    while (row.Step()) {
        rules.push_back(
            {row.Text(0), static_cast<std::int32_t>(row.Int(1)),
             static_cast<std::int32_t>(row.Int(2)), static_cast<std::int32_t>(row.Int(3)),
             static_cast<std::int32_t>(row.Int(4)), static_cast<std::int32_t>(row.Int(5))});
    }
    return rules;
}

std::vector<AllowedAddress> ReadAllowedAddresses(Database& database, const std::string& id) {
    std::vector<AllowedAddress> addresses;
    auto row = database.Query(
        "SELECT kind, address FROM firewall_allowed_ip WHERE ruleset = ?1 ORDER BY position");
    row.Bind(1, id);
    while (row.Step()) {
        addresses.push_back({static_cast<AddressKind>(row.Int(0)), row.Text(1)});
    }
    return addresses;
}

namespace {

std::string AlreadyAllowed(const std::string& id, const AllowedAddress& address) {
    return address.text + " is already an allowed address of ruleset " + id;
}

std::string NotAllowed(const std::string& id, const AllowedAddress& address) {
    return address.text + " is not an allowed address of ruleset " + id;
}

}  // namespace

void InsertAllowedAddress(Database& database, const std::string& id,
                          const AllowedAddress& address) {
    auto insert = database.Query(
        "INSERT INTO firewall_allowed_ip (ruleset, kind, address) VALUES (?1, ?2, ?3)"
        " ON CONFLICT DO NOTHING");
    insert.Bind(1, id).Bind(2, static_cast<std::int64_t>(address.kind)).Bind(3, address.text);
    insert.Run();
    if (database.Changes() == 0) {
        throw HostCtlException(AlreadyAllowed(id, address));
    }
}

void DeleteAllowedAddress(Database& database, const std::string& id,
                          const AllowedAddress& address) {
    database.Query("DELETE FROM firewall_allowed_ip WHERE ruleset = ?1 AND address = ?2")
        .Bind(1, id)
        .Bind(2, address.text)
        .Run();
    if (database.Changes() == 0) {
        throw HostCtlException(NotAllowed(id, address));
    }
}

void InsertAllowedAddress(Ruleset& ruleset, const AllowedAddress& address) {
    if (std::find(ruleset.addresses.begin(), ruleset.addresses.end(), address) !=
        ruleset.addresses.end()) {
        throw HostCtlException(AlreadyAllowed(ruleset.id, address));
    }
    ruleset.addresses.push_back(address);
}

void DeleteAllowedAddress(Ruleset& ruleset, const AllowedAddress& address) {
    if (std::erase(ruleset.addresses, address) == 0) {
        throw HostCtlException(NotAllowed(ruleset.id, address));
    }
}

}  // namespace HostSim::Firewall
