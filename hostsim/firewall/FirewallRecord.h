// What the firewall holds, as records both hosts use: the simulated host keeps them in its store,
// the live host in an nftables table of its own; and their column tables in the store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostctl/FirewallRuleset.h"
#include "hostsim/core/ColumnTable.h"

namespace HostSim::Firewall {

// A kernel module the host has loaded.
struct ModuleRecord {
    std::string name;
    std::string options;
    bool persistent = false;
    std::int32_t users = 0;
};

// Whether the firewall filters, and what it does with what no ruleset accepts (true is PASS).
struct StateRecord {
    bool enabled = true;
    bool pass = false;
};

// What the firewall keeps of a ruleset besides its rules and addresses.
struct RulesetRecord {
    bool enabled = false;
    bool allowedAll = true;
    bool enabledFixed = false;
    bool allowedIpFixed = false;
    std::int32_t clients = 0;
};

enum class AddressKind { Ipv4Address = 0, Ipv4Network = 1, Ipv6Address = 2, Ipv6Network = 3 };

// An allowed address in its canonical text form.
struct AllowedAddress {
    AddressKind kind;
    std::string text;
    bool operator==(const AllowedAddress&) const = default;
};

// A ruleset whole, with its rules and allowed addresses in order.
struct Ruleset {
    std::string id;
    RulesetRecord record;
    std::vector<HostCtl::System::FirewallPortRule> rules;
    std::vector<AllowedAddress> addresses;
};

// The firewall whole: whether it filters, what it does with what no ruleset accepts (true is
// PASS), and its rulesets in the host's order.
struct Configuration {
    bool enabled = true;
    bool pass = false;
    std::vector<Ruleset> rulesets;
};

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

}  // namespace HostSim::Firewall
