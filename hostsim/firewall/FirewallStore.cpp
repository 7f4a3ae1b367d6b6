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

Json DefaultActionToJson(std::int64_t pass) {
    return pass != 0 ? "PASS" : "DROP";
}

std::int64_t DefaultActionFromJson(const Json& word) {
    const auto action = word.get<std::string>();
    if (action != "PASS" && action != "DROP") {
        throw HostCtlException("The firewall's \"defaultAction\" is \"PASS\" or \"DROP\", not \"" +
                               action + "\"");
    }
    return action == "PASS" ? 1 : 0;
}

namespace {

// Words of a rule's fields in a profile, for the values 0 and 1 of the host's record.
struct RuleWords {
    const char* key;
    const char* zero;
    const char* one;
};
constexpr RuleWords kPortWords = {"port", "src", "dst"};
constexpr RuleWords kDirectionRuleWords = {"direction", "inbound", "outbound"};
constexpr RuleWords kProtocolRuleWords = {"protocol", "tcp", "udp"};

template <const RuleWords& words>
Json RuleWordToJson(std::int64_t value) {
    return value == 0 ? words.zero : words.one;
}

template <const RuleWords& words>
std::int64_t RuleWordFromJson(const Json& value) {
    const auto word = value.get<std::string>();
    if (word == words.zero || word == words.one) {
        return word == words.one ? 1 : 0;
    }
    throw HostCtlException(std::string("A rule's \"") + words.key + "\" is \"" + words.zero +
                           "\" or \"" + words.one + "\", not \"" + word + "\"");
}

template <const RuleWords& words>
constexpr ColumnWords kRuleWords = {RuleWordToJson<words>, RuleWordFromJson<words>};

}  // namespace

const ColumnWords kPortTypeWords = kRuleWords<kPortWords>;
const ColumnWords kDirectionWords = kRuleWords<kDirectionRuleWords>;
const ColumnWords kProtocolWords = kRuleWords<kProtocolRuleWords>;

std::vector<ModuleRecord> ReadModules(Database& database) {
    static const std::string sql =
        "SELECT " + ColumnNames(kModuleColumns) + " FROM kernel_module ORDER BY name";
    std::vector<ModuleRecord> modules;
    auto row = database.Query(sql.c_str());
    while (row.Step()) {
        ReadColumns(row, 0, kModuleColumns, modules.emplace_back());
    }
    return modules;
}

void InsertModule(Database& database, const ModuleRecord& module) {
    static const std::string sql = InsertStatement("kernel_module", kModuleColumns);
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kModuleColumns, module);
    insert.Run();
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

std::optional<StateRecord> ReadState(Database& database) {
    static const std::string sql = "SELECT " + ColumnNames(kStateColumns) + " FROM firewall_state";
    auto row = database.Query(sql.c_str());
    if (!row.Step()) {
        return std::nullopt;
    }
    StateRecord state;
    ReadColumns(row, 0, kStateColumns, state);
    return state;
}

void WriteState(Database& database, const StateRecord& state) {
    static const std::string sql = "INSERT OR REPLACE INTO firewall_state (id, " +
                                   ColumnNames(kStateColumns) + ") VALUES (1, " +
                                   ColumnParameters(1, std::size(kStateColumns)) + ")";
    auto write = database.Query(sql.c_str());
    BindColumns(write, 1, kStateColumns, state);
    write.Run();
}

std::string NoSuchRuleset(const std::string& id) {
    return "There is no firewall ruleset with id " + id;
}

std::optional<RulesetRecord> ReadRuleset(Database& database, const std::string& id) {
    static const std::string sql =
        "SELECT " + ColumnNames(kRulesetColumns) + " FROM firewall_ruleset WHERE id = ?1";
    auto row = database.Query(sql.c_str());
    row.Bind(1, id);
    if (!row.Step()) {
        return std::nullopt;
    }
    RulesetRecord record;
    ReadColumns(row, 0, kRulesetColumns, record);
    return record;
}

std::vector<NamedRuleset> ReadRulesets(Database& database) {
    static const std::string sql =
        "SELECT id, " + ColumnNames(kRulesetColumns) + " FROM firewall_ruleset ORDER BY position";
    std::vector<NamedRuleset> rulesets;
    auto row = database.Query(sql.c_str());
    while (row.Step()) {
        auto& ruleset = rulesets.emplace_back(NamedRuleset{row.Text(0), {}});
        ReadColumns(row, 1, kRulesetColumns, ruleset.record);
    }
    return rulesets;
}

void WriteRuleset(Database& database, const std::string& id, const RulesetRecord& record) {
    static const std::string sql =
        "UPDATE firewall_ruleset SET " + ColumnAssignments(kRulesetColumns, 2) + " WHERE id = ?1";
    auto update = database.Query(sql.c_str());
    update.Bind(1, id);
    BindColumns(update, 2, kRulesetColumns, record);
    update.Run();
}

void InsertRuleset(Database& database, std::int64_t position, const Ruleset& ruleset) {
    static const std::string rulesetSql = "INSERT INTO firewall_ruleset (position, id, " +
                                          ColumnNames(kRulesetColumns) + ") VALUES (?1, ?2, " +
                                          ColumnParameters(3, std::size(kRulesetColumns)) + ")";
    static const std::string ruleSql = "INSERT INTO firewall_rule (ruleset, position, " +
                                       ColumnNames(kRuleColumns) + ") VALUES (?1, ?2, " +
                                       ColumnParameters(3, std::size(kRuleColumns)) + ")";
    auto insert = database.Query(rulesetSql.c_str());
    insert.Bind(1, position).Bind(2, ruleset.id);
    BindColumns(insert, 3, kRulesetColumns, ruleset.record);
    insert.Run();
    std::int64_t rulePosition = 0;
    for (const auto& rule : ruleset.rules) {
        auto insertRule = database.Query(ruleSql.c_str());
        insertRule.Bind(1, ruleset.id).Bind(2, rulePosition++);
        BindColumns(insertRule, 3, kRuleColumns, rule);
        insertRule.Run();
    }
    for (const AllowedAddress& address : ruleset.addresses) {
        InsertAllowedAddress(database, ruleset.id, address);
    }
}

std::vector<HostCtl::System::FirewallPortRule> ReadRules(Database& database,
                                                         const std::string& id) {
    static const std::string sql = "SELECT " + ColumnNames(kRuleColumns) +
                                   " FROM firewall_rule WHERE ruleset = ?1 ORDER BY position";
    std::vector<HostCtl::System::FirewallPortRule> rules;
    auto row = database.Query(sql.c_str());
    row.Bind(1, id);
    while (row.Step()) {
        ReadColumns(row, 0, kRuleColumns, rules.emplace_back());
    }
    return rules;
}

std::vector<AllowedAddress> ReadAllowedAddresses(Database& database, const std::string& id) {
    static const std::string sql = "SELECT " + ColumnNames(kAllowedAddressColumns) +
                                   " FROM firewall_allowed_ip WHERE ruleset = ?1 ORDER BY position";
    std::vector<AllowedAddress> addresses;
    auto row = database.Query(sql.c_str());
    row.Bind(1, id);
    while (row.Step()) {
        ReadColumns(row, 0, kAllowedAddressColumns, addresses.emplace_back());
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
    static const std::string sql = "INSERT INTO firewall_allowed_ip (ruleset, " +
                                   ColumnNames(kAllowedAddressColumns) + ") VALUES (?1, " +
                                   ColumnParameters(2, std::size(kAllowedAddressColumns)) +
                                   ") ON CONFLICT DO NOTHING";
    auto insert = database.Query(sql.c_str());
    insert.Bind(1, id);
    BindColumns(insert, 2, kAllowedAddressColumns, address);
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
