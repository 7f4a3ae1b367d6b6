// The firewall's part of the host state: the kernel modules, the firewall's own state, the
// rulesets with their rules and allowed addresses, and the host rules that guard them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/FirewallRuleset.h"
#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/firewall/FirewallRecord.h"

namespace HostSim::Firewall {

// The "firewall" section of the default host, JSON text.
extern const char kDefaultSection[];

// The module that carries the firewall.
inline constexpr char kModuleName[] = "ostrelfw";

// Words of a number in a profile: its values 0 and 1, and how a word it does not know is refused.
Json DefaultActionToJson(std::int64_t pass);
std::int64_t DefaultActionFromJson(const Json& word);
inline constexpr ColumnWords kDefaultActionWords = {DefaultActionToJson, DefaultActionFromJson};
extern const ColumnWords kPortTypeWords;
extern const ColumnWords kDirectionWords;
extern const ColumnWords kProtocolWords;

// Table kernel_module.
inline constexpr Column<ModuleRecord> kModuleColumns[] = {
    {.sql = "name", .member = &ModuleRecord::name, .json = "name", .required = true},
    {.sql = "options", .member = &ModuleRecord::options, .json = "options"},
    {.sql = "persistent", .member = &ModuleRecord::persistent, .json = "persistent"},
    {.sql = "users", .member = &ModuleRecord::users, .json = "users"},
};

// Table firewall_state, its one row.
inline constexpr Column<StateRecord> kStateColumns[] = {
    {.sql = "enabled", .member = &StateRecord::enabled, .json = "enabled", .fallback = true},
    {.sql = "default_pass",
     .member = &StateRecord::pass,
     .json = "defaultAction",
     .words = &kDefaultActionWords},
};

// Table firewall_ruleset, after its position and id.
inline constexpr Column<RulesetRecord> kRulesetColumns[] = {
    {.sql = "enabled", .member = &RulesetRecord::enabled, .json = "enabled"},
    {.sql = "allowed_all",
     .member = &RulesetRecord::allowedAll,
     .json = "allowedAll",
     .fallback = true},
    {.sql = "enabled_fixed", .member = &RulesetRecord::enabledFixed, .json = "enabledFixed"},
    {.sql = "allowed_ip_fixed", .member = &RulesetRecord::allowedIpFixed, .json = "allowedIpFixed"},
    {.sql = "clients", .member = &RulesetRecord::clients, .json = "clients"},
};

// Table firewall_rule, after its ruleset and position.
using PortRule = HostCtl::System::FirewallPortRule;
inline constexpr Column<PortRule> kRuleColumns[] = {
    {.sql = "label", .member = &PortRule::label, .json = "label"},
    {.sql = "direction",
     .member = &PortRule::direction,
     .json = "direction",
     .required = true,
     .words = &kDirectionWords},
    {.sql = "protocol",
     .member = &PortRule::protocol,
     .json = "protocol",
     .required = true,
     .words = &kProtocolWords},
    {.sql = "port_type",
     .member = &PortRule::portType,
     .json = "port",
     .required = true,
     .words = &kPortTypeWords},
    {.sql = "port_begin", .member = &PortRule::portBegin, .json = "begin", .required = true},
    {.sql = "port_end", .member = &PortRule::portEnd, .json = "end", .required = true},
};

// Table firewall_allowed_ip, after its ruleset. A profile lists the addresses' texts.
inline constexpr Column<AllowedAddress> kAllowedAddressColumns[] = {
    {.sql = "kind", .member = NumberMember<&AllowedAddress::kind>},
    {.sql = "address", .member = &AllowedAddress::text},
};

// The rulesets of a profile's "firewall" section, checked, in order.
std::vector<Ruleset> ParseRulesets(const Json& section);
// The rulesets of the default host.
std::vector<Ruleset> DefaultRulesets();

struct NamedRuleset {
    std::string id;
    RulesetRecord record;
};

// Parses an IPv4 or IPv6 address, or a network in prefix form; refuses anything else, and a
// network with bits set beyond its prefix, in the host's words.
AllowedAddress ParseAllowedAddress(const std::string& text);

std::vector<ModuleRecord> ReadModules(Database& database);
void InsertModule(Database& database, const ModuleRecord& module);
bool IsModuleLoaded(Database& database, const std::string& name);
// Throws unless the firewall module is loaded.
void RequireFirewallLoaded(Database& database);
// Sets how many users hold the firewall module.
void SetFirewallModuleUsers(Database& database, std::int64_t users);

// The firewall's state; none before a profile or a command has set it.
std::optional<StateRecord> ReadState(Database& database);
void WriteState(Database& database, const StateRecord& state);

std::string NoSuchRuleset(const std::string& id);
std::optional<RulesetRecord> ReadRuleset(Database& database, const std::string& id);
// Every ruleset, in the host's order.
std::vector<NamedRuleset> ReadRulesets(Database& database);
void WriteRuleset(Database& database, const std::string& id, const RulesetRecord& record);
// Adds a ruleset with its rules and allowed addresses at `position` of the host's order.
void InsertRuleset(Database& database, std::int64_t position, const Ruleset& ruleset);

std::vector<HostCtl::System::FirewallPortRule> ReadRules(Database& database, const std::string& id);
std::vector<AllowedAddress> ReadAllowedAddresses(Database& database, const std::string& id);
// Adds `address`, refusing one the ruleset has already.
void InsertAllowedAddress(Database& database, const std::string& id, const AllowedAddress& address);
// Removes `address`, refusing one the ruleset does not have.
void DeleteAllowedAddress(Database& database, const std::string& id, const AllowedAddress& address);
// The same for a ruleset held whole.
void InsertAllowedAddress(Ruleset& ruleset, const AllowedAddress& address);
void DeleteAllowedAddress(Ruleset& ruleset, const AllowedAddress& address);

}  // namespace HostSim::Firewall
