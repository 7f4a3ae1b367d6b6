// The firewall subject: kernel modules, the firewall state and its rulesets, the "firewall"
// section of a profile, and its default data.
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Subject.h"
#include "hostsim/firewall/FirewallStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using json = Json;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE kernel_module ("
    " name TEXT PRIMARY KEY, options TEXT NOT NULL, persistent INTEGER NOT NULL,"
    " users INTEGER NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE firewall_state ("
    " id INTEGER PRIMARY KEY CHECK (id = 1), enabled INTEGER NOT NULL,"
    " default_pass INTEGER NOT NULL);"
    "CREATE TABLE firewall_ruleset ("
    " position INTEGER PRIMARY KEY, id TEXT NOT NULL UNIQUE, enabled INTEGER NOT NULL,"
    " allowed_all INTEGER NOT NULL, enabled_fixed INTEGER NOT NULL,"
    " allowed_ip_fixed INTEGER NOT NULL, clients INTEGER NOT NULL CHECK (clients >= 0));"
    "CREATE TABLE firewall_rule ("
    " ruleset TEXT NOT NULL, position INTEGER NOT NULL, label TEXT NOT NULL,"
    " port_type INTEGER NOT NULL, port_begin INTEGER NOT NULL, port_end INTEGER NOT NULL,"
    " direction INTEGER NOT NULL, protocol INTEGER NOT NULL,"
    " PRIMARY KEY (ruleset, position)) WITHOUT ROWID;"
    "CREATE TABLE firewall_allowed_ip ("
    " position INTEGER PRIMARY KEY, ruleset TEXT NOT NULL, kind INTEGER NOT NULL,"
    " address TEXT NOT NULL, UNIQUE (ruleset, address));",
};

constexpr const char* kTables[] = {"firewall_allowed_ip", "firewall_rule", "firewall_ruleset",
                                   "firewall_state", "kernel_module"};

constexpr int kHighestPort = 65535;

std::vector<HostCtl::System::FirewallPortRule> ParseRules(const std::string& id,
                                                          const json& rules) {
    std::vector<HostCtl::System::FirewallPortRule> parsed;
    for (const json& entry : rules) {
        auto& rule = parsed.emplace_back();
        ColumnsFromJson(Firewall::kRuleColumns, entry, rule);
        if (rule.portBegin < 0 || rule.portBegin > rule.portEnd || rule.portEnd > kHighestPort) {
            throw HostCtlException("Rule ports of ruleset " + id +
                                   " must be 0 <= begin <= end <= " + std::to_string(kHighestPort));
        }
    }
    return parsed;
}

void ImportModules(Database& database, const json& section) {
    for (const json& entry : ArrayMember(section, "modules")) {
        Firewall::ModuleRecord module;
        ColumnsFromJson(Firewall::kModuleColumns, entry, module);
        Firewall::InsertModule(database, module);
    }
    Firewall::StateRecord state;
    ColumnsFromJson(Firewall::kStateColumns, section, state);
    Firewall::WriteState(database, state);
}

// A host has one firewall: its rulesets are not copied when the host is scaled.
void ImportSection(Database& database, const json& section, const Scale&) {
    ImportModules(database, section);
    std::int64_t position = 0;
    for (const Firewall::Ruleset& ruleset : Firewall::ParseRulesets(section)) {
        Firewall::InsertRuleset(database, position++, ruleset);
    }
}

json ExportSection(Database& database) {
    json section = json::object();
    json modules = json::array();
    for (const auto& module : Firewall::ReadModules(database)) {
        ColumnsToJson(Firewall::kModuleColumns, module, modules.emplace_back(json::object()));
    }
    section["modules"] = modules;
    if (const auto state = Firewall::ReadState(database)) {
        ColumnsToJson(Firewall::kStateColumns, *state, section);
    }
    json rulesets = json::array();
    for (const auto& [id, record] : Firewall::ReadRulesets(database)) {
        json& ruleset = rulesets.emplace_back(json{{"id", id}});
        ColumnsToJson(Firewall::kRulesetColumns, record, ruleset);
        json& rules = ruleset["rules"] = json::array();
        for (const auto& rule : Firewall::ReadRules(database, id)) {
            ColumnsToJson(Firewall::kRuleColumns, rule, rules.emplace_back(json::object()));
        }
        json& addresses = ruleset["allowedIps"] = json::array();
        for (const auto& address : Firewall::ReadAllowedAddresses(database, id)) {
            addresses.push_back(address.text);
        }
    }
    section["rulesets"] = rulesets;
    return section;
}

}  // namespace

namespace Firewall {

std::vector<Ruleset> ParseRulesets(const Json& section) {
    std::vector<Ruleset> rulesets;
    std::set<std::string> ids;
    for (const json& entry : ArrayMember(section, "rulesets")) {
        Ruleset ruleset;
        ruleset.id = entry.at("id").get<std::string>();
        if (!ids.insert(ruleset.id).second) {
            throw HostCtlException("Duplicate firewall ruleset id " + ruleset.id);
        }
        ColumnsFromJson(kRulesetColumns, entry, ruleset.record);
        if (ruleset.record.clients < 0) {
            throw HostCtlException("The clients of ruleset " + ruleset.id + " can't be negative");
        }
        ruleset.rules = ParseRules(ruleset.id, ArrayMember(entry, "rules"));
        for (const json& address : ArrayMember(entry, "allowedIps")) {
            InsertAllowedAddress(ruleset, ParseAllowedAddress(address.get<std::string>()));
        }
        rulesets.push_back(std::move(ruleset));
    }
    return rulesets;
}

std::vector<Ruleset> DefaultRulesets() {
    return ParseRulesets(Json::parse(kDefaultSection));
}

}  // namespace Firewall

extern const Subject firewallSubject;
const Subject firewallSubject = {
    .name = "firewall",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Firewall::kDefaultSection,
    .importSection = ImportSection,
    .exportSection = ExportSection,
};

}  // namespace HostSim
