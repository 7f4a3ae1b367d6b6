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
