// The firewall subject: kernel modules, the firewall state and its rulesets, the "firewall"
// section of a profile, and its default data.
#include <set>

#include "hostctl/HostCtlException.h"
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

// Words of a rule's fields in a profile, for the values 0 and 1 of the host's record.
struct RuleWords {
    const char* key;
    const char* zero;
    const char* one;
};
constexpr RuleWords kPortWords = {"port", "src", "dst"};
constexpr RuleWords kDirectionWords = {"direction", "inbound", "outbound"};
constexpr RuleWords kProtocolWords = {"protocol", "tcp", "udp"};
constexpr int kHighestPort = 65535;

std::int64_t RuleValue(const json& rule, const RuleWords& words) {
    const std::string word = rule.at(words.key).get<std::string>();
    if (word == words.zero || word == words.one) {
        return word == words.one ? 1 : 0;
    }
    throw HostCtlException(std::string("A rule's \"") + words.key + "\" is \"" + words.zero +
                           "\" or \"" + words.one + "\", not \"" + word + "\"");
}

std::vector<HostCtl::System::FirewallPortRule> ParseRules(const std::string& id,
                                                          const json& rules) {
    std::vector<HostCtl::System::FirewallPortRule> parsed;
    for (const json& rule : rules) {
        const int begin = rule.at("begin").get<int>();
        const int end = rule.at("end").get<int>();
        if (begin < 0 || begin > end || end > kHighestPort) {
            throw HostCtlException("Rule ports of ruleset " + id +
                                   " must be 0 <= begin <= end <= " + std::to_string(kHighestPort));
        }
        parsed.push_back({rule.value("label", ""),
                          static_cast<std::int32_t>(RuleValue(rule, kPortWords)), begin, end,
                          static_cast<std::int32_t>(RuleValue(rule, kDirectionWords)),
                          static_cast<std::int32_t>(RuleValue(rule, kProtocolWords))});
    }
    return parsed;
}

void ImportModules(Database& database, const json& section) {
    for (const json& module : section.value("modules", json::array())) {
        database
            .Query(
                "INSERT INTO kernel_module (name, options, persistent, users)"
                " VALUES (?1, ?2, ?3, ?4)")
            .Bind(1, module.at("name").get<std::string>())
            .Bind(2, module.value("options", ""))
            .Bind(3, module.value("persistent", false))
            .Bind(4, module.value("users", 0))
            .Run();
    }
    const std::string action = section.value("defaultAction", "DROP");
    if (action != "PASS" && action != "DROP") {
        throw HostCtlException("The firewall's \"defaultAction\" is \"PASS\" or \"DROP\", not \"" +
                               action + "\"");
    }
    database.Query("INSERT INTO firewall_state (id, enabled, default_pass) VALUES (1, ?1, ?2)")
        .Bind(1, section.value("enabled", true))
        .Bind(2, action == "PASS")
        .Run();
}

void InsertRules(Database& database, const Firewall::Ruleset& ruleset) {
    std::int64_t position = 0;
    for (const auto& rule : ruleset.rules) {
        database
            .Query(
                "INSERT INTO firewall_rule (ruleset, position, label, port_type, port_begin,"
                " port_end, direction, protocol) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)")
            .Bind(1, ruleset.id)
            .Bind(2, position++)
            .Bind(3, rule.label)
            .Bind(4, rule.portType)
            .Bind(5, rule.portBegin)
            .Bind(6, rule.portEnd)
            .Bind(7, rule.direction)
            .Bind(8, rule.protocol)
            .Run();
    }
}

// A host has one firewall: its rulesets are not copied when the host is scaled.
void ImportSection(Database& database, const json& section, const Scale&) {
    ImportModules(database, section);
    std::int64_t position = 0;
    for (const Firewall::Ruleset& ruleset : Firewall::ParseRulesets(section)) {
        database
            .Query(
                "INSERT INTO firewall_ruleset (position, id, enabled, allowed_all,"
                " enabled_fixed, allowed_ip_fixed, clients)"
                " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)")
            .Bind(1, position++)
            .Bind(2, ruleset.id)
            .Bind(3, ruleset.record.enabled)
            .Bind(4, ruleset.record.allowedAll)
            .Bind(5, ruleset.record.enabledFixed)
            .Bind(6, ruleset.record.allowedIpFixed)
            .Bind(7, ruleset.record.clients)
            .Run();
        InsertRules(database, ruleset);
        for (const Firewall::AllowedAddress& address : ruleset.addresses) {
            Firewall::InsertAllowedAddress(database, ruleset.id, address);
        }
    }
}

json ExportRules(Database& database, const std::string& id) {
    json rules = json::array();
    for (const auto& rule : Firewall::ReadRules(database, id)) {
        auto word = [](const RuleWords& words, std::int32_t value) {
            return value == 0 ? words.zero : words.one;
        };
        rules.push_back({{"label", rule.label},
                         {"direction", word(kDirectionWords, rule.direction)},
                         {"protocol", word(kProtocolWords, rule.protocol)},
                         {"port", word(kPortWords, rule.portType)},
                         {"begin", rule.portBegin},
                         {"end", rule.portEnd}});
    }
    return rules;
}

json ExportSection(Database& database) {
    json section = json::object();
    json modules = json::array();
    auto module =
        database.Query("SELECT name, options, persistent, users FROM kernel_module ORDER BY name");
    while (module.Step()) {
        modules.push_back({{"name", module.Text(0)},
                           {"options", module.Text(1)},
                           {"persistent", module.Bool(2)},
                           {"users", module.Int(3)}});
    }
    section["modules"] = modules;
    auto state = database.Query("SELECT enabled, default_pass FROM firewall_state");
    if (state.Step()) {
        section["enabled"] = state.Bool(0);
        section["defaultAction"] = state.Bool(1) ? "PASS" : "DROP";
    }
    json rulesets = json::array();
    for (const auto& [id, record] : Firewall::ReadRulesets(database)) {
        json addresses = json::array();
        for (const auto& address : Firewall::ReadAllowedAddresses(database, id)) {
            addresses.push_back(address.text);
        }
        rulesets.push_back({{"id", id},
                            {"enabled", record.enabled},
                            {"allowedAll", record.allowedAll},
                            {"enabledFixed", record.enabledFixed},
                            {"allowedIpFixed", record.allowedIpFixed},
                            {"clients", record.clients},
                            {"rules", ExportRules(database, id)},
                            {"allowedIps", addresses}});
    }
    section["rulesets"] = rulesets;
    return section;
}

}  // namespace

namespace Firewall {

std::vector<Ruleset> ParseRulesets(const Json& section) {
    std::vector<Ruleset> rulesets;
    std::set<std::string> ids;
    for (const json& entry : section.value("rulesets", json::array())) {
        Ruleset ruleset;
        ruleset.id = entry.at("id").get<std::string>();
        if (!ids.insert(ruleset.id).second) {
            throw HostCtlException("Duplicate firewall ruleset id " + ruleset.id);
        }
        const int clients = entry.value("clients", 0);
        if (clients < 0) {
            throw HostCtlException("The clients of ruleset " + ruleset.id + " can't be negative");
        }
        ruleset.record = {entry.value("enabled", false), entry.value("allowedAll", true),
                          entry.value("enabledFixed", false), entry.value("allowedIpFixed", false),
                          clients};
        ruleset.rules = ParseRules(ruleset.id, entry.value("rules", json::array()));
        for (const json& address : entry.value("allowedIps", json::array())) {
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
