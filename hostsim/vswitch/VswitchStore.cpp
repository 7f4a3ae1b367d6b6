#include "hostsim/vswitch/VswitchStore.h"

#include <array>
#include <map>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Columns.h"
#include "hostsim/dvs/DvsStore.h"

namespace HostSim::Vswitch {

using HostCtl::Network::LinkCriteriaSelectionPolicy;
using HostCtl::Network::NicTeamingPolicy;
using HostCtl::Network::PortSecurityPolicy;
using HostCtl::Network::PortsetGetType;
using HostCtl::Network::ShapingPolicy;
using KelmCtl::Network::PortGroupRecord;

namespace {

// Copies `field` of `from` into `to` when `bit` is set in `from`'s mask.
template <class Policy, class Field>
void TakeIfSet(const Policy& from, Policy& to, std::uint32_t bit, Field Policy::*field) {
    if ((from.setFields & bit) != 0) {
        to.*field = from.*field;
    }
}

bool IsBeaconDetection(const NicTeamingPolicy& policy) {
    constexpr auto kBeacon = LinkCriteriaSelectionPolicy::kBeaconBit;
    return (policy.linkCriteria.criteriaMask & kBeacon) != 0 &&
           (policy.linkCriteria.criteriaValues & kBeacon) == 0;
}

// Binds the system flag a type selects, or NULL for every type.
void BindType(Statement& query, int index, std::optional<PortsetGetType> type) {
    if (type) {
        query.Bind(index, static_cast<std::int64_t>(*type == HostCtl::Network::PortsetGetSystem));
    } else {
        query.BindNull(index);
    }
}

const std::string& SwitchColumnNames() {
    static const std::string names =
        ColumnNames(kSwitchColumns) + ", " + ColumnNames(kPolicyColumns<SwitchRecord>);
    return names;
}

SwitchRecord ReadSwitch(const Statement& row) {
    SwitchRecord record;
    ReadColumns(row, 0, kSwitchColumns, record);
    ReadColumns(row, std::size(kSwitchColumns), kPolicyColumns<SwitchRecord>, record);
    return record;
}

// A port group's columns, its own policies, and its switch's policies.
std::string PortGroupSelect(const char* where) {
    return "SELECT " + ColumnNames(kPortGroupColumns, "g.") + ", " +
           ColumnNames(kPolicyTextColumns, "g.") + ", " + ColumnNames(kPolicyTextColumns, "s.") +
           " FROM vswitch_portgroup g JOIN vswitch s ON s.name = g.vswitch " + where;
}

// Reads port groups row by row. Rows of one switch carry the same switch policies, and most port
// groups carry the same few policies of their own: each distinct text is parsed once, so that
// listing thousands of port groups doesn't parse the same JSON thousands of times.
class PortGroupReader {
public:
    PortGroupRecord Read(const Statement& row) {
        constexpr int kOwnPolicies = std::size(kPortGroupColumns);
        constexpr int kSwitchPolicies = kOwnPolicies + std::size(kPolicyTextColumns);
        PortGroupRecord record;
        ReadColumns(row, 0, kPortGroupColumns, record);
        record.own = own_.Read(row, kOwnPolicies);
        const Policies& inherited = switch_.Read(row, kSwitchPolicies);
        if (switch_.changed) {
            inherited_ = Merge(inherited, DefaultPolicies());
        }
        record.inherited = inherited_;
        return record;
    }

private:
    // The policies of the policy columns from `first` on, parsed again only when their text
    // changes.
    struct LastPolicies {
        const Policies& Read(const Statement& row, int first) {
            PolicyTexts texts;
            ReadColumns(row, first, kPolicyTextColumns, texts);
            changed = !read || texts != texts_;
            if (changed) {
                policies = {TeamingFromJson(ParsedPolicy(texts.teaming)),
                            SecurityFromJson(ParsedPolicy(texts.security)),
                            ShapingFromJson(ParsedPolicy(texts.shaping))};
                texts_ = std::move(texts);
                read = true;
            }
            return policies;
        }

        Policies policies;
        bool read = false;
        bool changed = false;

    private:
        PolicyTexts texts_;
    };

    LastPolicies own_;
    LastPolicies switch_;
    Policies inherited_;
};

// The columns of the port group rows a switch's summary reads, in the order its queries select
// them: "SELECT vswitch, name, users, teaming FROM vswitch_portgroup ...".
enum SummaryColumn { kSummarySwitch, kSummaryName, kSummaryUsers, kSummaryTeaming };

// Adds a port group row (SummaryColumn) to the summary of its switch.
void Summarize(const Statement& row, const SwitchRecord& record, PortGroupSummary& summary) {
    summary.activeClients +=
        static_cast<std::uint32_t>(StringsFromJson(row.Text(kSummaryUsers)).size());
    Policies own;
    own.teaming = TeamingFromJson(Json::parse(row.Text(kSummaryTeaming)));
    if (IsBeaconDetection(Merge(own, record.Effective()).teaming)) {
        summary.beaconRequiredBy.push_back(row.Text(kSummaryName));
    }
}

// Fills the uplinks, and what the port groups give, into the switches of a listing.
void Complete(Database& database, std::vector<SwitchRecord>& switches) {
    std::map<std::string, SwitchRecord*, std::less<>> byName;
    for (SwitchRecord& record : switches) {
        byName[record.name] = &record;
        record.portGroups.emplace();
    }
    enum UplinkColumn { kUplinkSwitch, kUplinkNic };
    auto uplinks = database.Query("SELECT vswitch, nic FROM vswitch_uplink ORDER BY position");
    while (uplinks.Step()) {
        if (auto found = byName.find(uplinks.Text(kUplinkSwitch)); found != byName.end()) {
            found->second->uplinks.push_back(uplinks.Text(kUplinkNic));
        }
    }
    auto portGroups = database.Query(
        "SELECT vswitch, name, users, teaming FROM vswitch_portgroup ORDER BY position");
    while (portGroups.Step()) {
        if (auto found = byName.find(portGroups.Text(kSummarySwitch)); found != byName.end()) {
            Summarize(portGroups, *found->second, *found->second->portGroups);
        }
    }
}

}  // namespace

std::vector<std::string> StringsFromJson(const std::string& text) {
    return Json::parse(text).get<std::vector<std::string>>();
}

// The JSON of a policy column. A switch's policies come again with each of its port groups, and
// most columns hold the same few texts, so each text is parsed once and kept (a bounded few).
const Json& ParsedPolicy(const std::string& text) {
    constexpr std::size_t kKeptTexts = 64;
    thread_local std::map<std::string, Json, std::less<>> parsed;
    if (auto found = parsed.find(text); found != parsed.end()) {
        return found->second;
    }
    if (parsed.size() == kKeptTexts) {
        parsed.clear();
    }
    return parsed.emplace(text, Json::parse(text)).first->second;
}

const Policies& DefaultPolicies() {
    static const Policies defaults = [] {
        Policies policies;
        NicTeamingPolicy& teaming = policies.teaming;
        teaming.SetTeamingPolicy(HostCtl::Network::TeamPolicyOriginatingPort);
        teaming.SetNotifySwitchOnFailure(true);
        LinkCriteriaSelectionPolicy linkState;
        linkState.SetBeacon(true);
        teaming.SetLinkCriteria(linkState);
        teaming.SetUplinkOrder({});
        teaming.SetMaxActiveUplinks(0);
        teaming.SetRollingRestoration(false);
        policies.security.SetAllowPromiscuous(false);
        policies.security.SetAllowMacAddressChange(true);
        policies.security.SetAllowForgedTransmits(true);
        policies.shaping.SetEnabled(false);
        policies.shaping.SetAverageBps(100'000'000);
        policies.shaping.SetPeakBps(100'000'000);
        policies.shaping.SetBurstSize(104'857'600);
        return policies;
    }();
    return defaults;
}

Policies Merge(const Policies& own, const Policies& inherited) {
    Policies merged = inherited;
    NicTeamingPolicy& teaming = merged.teaming;
    TakeIfSet(own.teaming, teaming, NicTeamingPolicy::kTeamPolicyBit,
              &NicTeamingPolicy::teamPolicy);
    TakeIfSet(own.teaming, teaming, NicTeamingPolicy::kNotifySwitchBit,
              &NicTeamingPolicy::notifySwitchOnFailure);
    TakeIfSet(own.teaming, teaming, NicTeamingPolicy::kLinkCriteriaBit,
              &NicTeamingPolicy::linkCriteria);
    TakeIfSet(own.teaming, teaming, NicTeamingPolicy::kUplinksBit, &NicTeamingPolicy::uplinkOrder);
    TakeIfSet(own.teaming, teaming, NicTeamingPolicy::kUplinksBit,
              &NicTeamingPolicy::maxActiveUplinks);
    TakeIfSet(own.teaming, teaming, NicTeamingPolicy::kRollingRestorationBit,
              &NicTeamingPolicy::rollingRestoration);
    teaming.setFields |= own.teaming.setFields;

    PortSecurityPolicy& security = merged.security;
    TakeIfSet(own.security, security, PortSecurityPolicy::kPromiscuousBit,
              &PortSecurityPolicy::allowPromiscuous);
    TakeIfSet(own.security, security, PortSecurityPolicy::kMacChangeBit,
              &PortSecurityPolicy::allowMacAddressChange);
    TakeIfSet(own.security, security, PortSecurityPolicy::kForgedTransmitsBit,
              &PortSecurityPolicy::allowForgedTransmits);
    security.setFields |= own.security.setFields;

    ShapingPolicy& shaping = merged.shaping;
    TakeIfSet(own.shaping, shaping, ShapingPolicy::kPeakBit, &ShapingPolicy::peakBps);
    TakeIfSet(own.shaping, shaping, ShapingPolicy::kAverageBit, &ShapingPolicy::averageBps);
    TakeIfSet(own.shaping, shaping, ShapingPolicy::kBurstBit, &ShapingPolicy::burstSize);
    TakeIfSet(own.shaping, shaping, ShapingPolicy::kEnabledBit, &ShapingPolicy::enabled);
    shaping.setFields |= own.shaping.setFields;
    return merged;
}

Json TeamingToJson(const NicTeamingPolicy& policy) {
    Json json = Json::object();
    if (policy.setFields & NicTeamingPolicy::kTeamPolicyBit) {
        json["teamPolicy"] = static_cast<int>(policy.teamPolicy);
    }
    if (policy.setFields & NicTeamingPolicy::kNotifySwitchBit) {
        json["notifySwitchOnFailure"] = policy.notifySwitchOnFailure != 0;
    }
    if (policy.setFields & NicTeamingPolicy::kLinkCriteriaBit) {
        const LinkCriteriaSelectionPolicy& criteria = policy.linkCriteria;
        json["linkCriteria"] = {{"criteriaMask", criteria.criteriaMask},
                                {"criteriaValues", criteria.criteriaValues},
                                {"minimumSpeed", criteria.minimumSpeed},
                                {"fullDuplex", criteria.fullDuplex}};
    }
    if (policy.setFields & NicTeamingPolicy::kUplinksBit) {
        json["uplinkOrder"] = policy.uplinkOrder;
        json["maxActiveUplinks"] = policy.maxActiveUplinks;
    }
    if (policy.setFields & NicTeamingPolicy::kRollingRestorationBit) {
        json["rollingRestoration"] = policy.rollingRestoration != 0;
    }
    return json;
}

NicTeamingPolicy TeamingFromJson(const Json& json) {
    NicTeamingPolicy policy;
    if (json.contains("teamPolicy")) {
        policy.SetTeamingPolicy(
            static_cast<HostCtl::Network::TeamPolicyType>(json.at("teamPolicy").get<int>()));
    }
    if (json.contains("notifySwitchOnFailure")) {
        policy.SetNotifySwitchOnFailure(json.at("notifySwitchOnFailure").get<bool>());
    }
    if (json.contains("linkCriteria")) {
        const Json& criteria = json.at("linkCriteria");
        LinkCriteriaSelectionPolicy linkCriteria;
        linkCriteria.criteriaMask = criteria.value("criteriaMask", 0u);
        linkCriteria.criteriaValues = criteria.value("criteriaValues", 0u);
        linkCriteria.minimumSpeed = criteria.value("minimumSpeed", 0u);
        linkCriteria.fullDuplex = criteria.value("fullDuplex", 0u);
        policy.SetLinkCriteria(linkCriteria);
    }
    if (json.contains("uplinkOrder") || json.contains("maxActiveUplinks")) {
        policy.SetUplinkOrder(json.value("uplinkOrder", std::vector<std::string>{}));
        policy.SetMaxActiveUplinks(json.value("maxActiveUplinks", 0));
    }
    if (json.contains("rollingRestoration")) {
        policy.SetRollingRestoration(json.at("rollingRestoration").get<bool>());
    }
    return policy;
}

Json SecurityToJson(const PortSecurityPolicy& policy) {
    Json json = Json::object();
    if (policy.setFields & PortSecurityPolicy::kPromiscuousBit) {
        json["allowPromiscuous"] = policy.allowPromiscuous != 0;
    }
    if (policy.setFields & PortSecurityPolicy::kMacChangeBit) {
        json["allowMacAddressChange"] = policy.allowMacAddressChange != 0;
    }
    if (policy.setFields & PortSecurityPolicy::kForgedTransmitsBit) {
        json["allowForgedTransmits"] = policy.allowForgedTransmits != 0;
    }
    return json;
}

PortSecurityPolicy SecurityFromJson(const Json& json) {
    PortSecurityPolicy policy;
    if (json.contains("allowPromiscuous")) {
        policy.SetAllowPromiscuous(json.at("allowPromiscuous").get<bool>());
    }
    if (json.contains("allowMacAddressChange")) {
        policy.SetAllowMacAddressChange(json.at("allowMacAddressChange").get<bool>());
    }
    if (json.contains("allowForgedTransmits")) {
        policy.SetAllowForgedTransmits(json.at("allowForgedTransmits").get<bool>());
    }
    return policy;
}

Json ShapingToJson(const ShapingPolicy& policy) {
    Json json = Json::object();
    if (policy.setFields & ShapingPolicy::kEnabledBit) {
        json["enabled"] = policy.enabled != 0;
    }
    if (policy.setFields & ShapingPolicy::kAverageBit) {
        json["averageBps"] = policy.averageBps;
    }
    if (policy.setFields & ShapingPolicy::kPeakBit) {
        json["peakBps"] = policy.peakBps;
    }
    if (policy.setFields & ShapingPolicy::kBurstBit) {
        json["burstSize"] = policy.burstSize;
    }
    return json;
}

ShapingPolicy ShapingFromJson(const Json& json) {
    ShapingPolicy policy;
    if (json.contains("enabled")) {
        policy.SetEnabled(json.at("enabled").get<bool>());
    }
    if (json.contains("averageBps")) {
        policy.SetAverageBps(json.at("averageBps").get<std::uint64_t>());
    }
    if (json.contains("peakBps")) {
        policy.SetPeakBps(json.at("peakBps").get<std::uint64_t>());
    }
    if (json.contains("burstSize")) {
        policy.SetBurstSize(json.at("burstSize").get<std::uint64_t>());
    }
    return policy;
}

std::vector<SwitchRecord> LoadSwitches(Database& database, std::optional<PortsetGetType> type) {
    std::vector<SwitchRecord> switches;
    static const std::string sql =
        "SELECT " + SwitchColumnNames() +
        " FROM vswitch WHERE ?1 IS NULL OR system = ?1 ORDER BY position";
    auto query = database.Query(sql.c_str());
    BindType(query, 1, type);
    while (query.Step()) {
        switches.push_back(ReadSwitch(query));
    }
    Complete(database, switches);
    return switches;
}

std::optional<SwitchRecord> LoadSwitch(Database& database, const std::string& name,
                                       std::optional<PortsetGetType> type) {
    static const std::string sql = "SELECT " + SwitchColumnNames() +
                                   " FROM vswitch WHERE name = ?1 AND (?2 IS NULL OR system = ?2)";
    auto query = database.Query(sql.c_str());
    query.Bind(1, name);
    BindType(query, 2, type);
    if (!query.Step()) {
        return std::nullopt;
    }
    SwitchRecord record = ReadSwitch(query);
    record.uplinks = LoadUplinks(database, name);
    return record;
}

PortGroupSummary SummarizePortGroups(Database& database, const SwitchRecord& record) {
    PortGroupSummary summary;
    auto portGroups = database.Query(
        "SELECT vswitch, name, users, teaming FROM vswitch_portgroup WHERE vswitch = ?1"
        " ORDER BY position");
    portGroups.Bind(1, record.name);
    while (portGroups.Step()) {
        Summarize(portGroups, record, summary);
    }
    return summary;
}

bool SwitchExists(Database& database, const std::string& name) {
    auto query = database.Query("SELECT 1 FROM vswitch WHERE name = ?1");
    query.Bind(1, name);
    return query.Step();
}

void RequireSwitch(Database& database, const std::string& name) {
    if (!SwitchExists(database, name)) {
        throw HostCtl::Lib::HostCtlException("There is no virtual switch named " + name);
    }
}

std::vector<std::string> LoadUplinks(Database& database, const std::string& switchName) {
    std::vector<std::string> names;
    auto query =
        database.Query("SELECT nic FROM vswitch_uplink WHERE vswitch = ?1 ORDER BY position");
    query.Bind(1, switchName);
    while (query.Step()) {
        names.push_back(query.Text(0));
    }
    return names;
}

std::vector<PortGroupRecord> LoadPortGroups(Database& database, PortsetGetType type) {
    std::vector<PortGroupRecord> portGroups;
    static const std::string sql =
        PortGroupSelect("WHERE s.system = ?1 ORDER BY s.position, g.position");
    auto query = database.Query(sql.c_str());
    query.Bind(1, static_cast<std::int64_t>(type == HostCtl::Network::PortsetGetSystem));
    PortGroupReader reader;
    while (query.Step()) {
        portGroups.push_back(reader.Read(query));
    }
    return portGroups;
}

std::vector<PortGroupRecord> LoadPortGroupsOf(Database& database, const std::string& switchName) {
    std::vector<PortGroupRecord> portGroups;
    static const std::string sql = PortGroupSelect("WHERE s.name = ?1 ORDER BY g.position");
    auto query = database.Query(sql.c_str());
    query.Bind(1, switchName);
    PortGroupReader reader;
    while (query.Step()) {
        portGroups.push_back(reader.Read(query));
    }
    return portGroups;
}

std::optional<PortGroupRecord> LoadPortGroup(Database& database, const std::string& name) {
    static const std::string sql = PortGroupSelect("WHERE g.name = ?1");
    auto query = database.Query(sql.c_str());
    query.Bind(1, name);
    if (!query.Step()) {
        return std::nullopt;
    }
    return PortGroupReader().Read(query);
}

std::vector<PortGroupRecord> ListPortGroupsOf(Database& database, const std::string& switchName) {
    std::vector<PortGroupRecord> portGroups;
    auto query =
        database.Query("SELECT name FROM vswitch_portgroup WHERE vswitch = ?1 ORDER BY position");
    query.Bind(1, switchName);
    while (query.Step()) {
        PortGroupRecord& record = portGroups.emplace_back();
        record.name = query.Text(0);
        record.switchName = switchName;
        record.detailed = false;
    }
    return portGroups;
}

std::vector<std::string> UplinkNicNames(Database& database) {
    std::vector<std::string> names;
    auto query = database.Query("SELECT nic FROM vswitch_uplink ORDER BY position");
    while (query.Step()) {
        names.push_back(query.Text(0));
    }
    for (std::string& name : Dvs::UplinkNicNames(database)) {
        names.push_back(std::move(name));
    }
    return names;
}

void InsertSwitch(Database& database, const SwitchRecord& record) {
    constexpr int kPolicies = 1 + std::size(kSwitchColumns);
    static const std::string sql =
        "INSERT INTO vswitch (" + SwitchColumnNames() + ") VALUES (" +
        ColumnParameters(1, std::size(kSwitchColumns) + std::size(kPolicyColumns<SwitchRecord>)) +
        ")";
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kSwitchColumns, record);
    BindColumns(insert, kPolicies, kPolicyColumns<SwitchRecord>, record);
    insert.Run();
}

void InsertUplink(Database& database, const std::string& switchName, const std::string& nicName) {
    database.Query("INSERT INTO vswitch_uplink (vswitch, nic) VALUES (?1, ?2)")
        .Bind(1, switchName)
        .Bind(2, nicName)
        .Run();
}

void InsertPortGroup(Database& database, const PortGroupRecord& record) {
    constexpr int kPolicies = 1 + std::size(kPortGroupColumns);
    static const std::string sql =
        "INSERT INTO vswitch_portgroup (" + ColumnNames(kPortGroupColumns) + ", " +
        ColumnNames(kPolicyColumns<PortGroupRecord>) + ") VALUES (" +
        ColumnParameters(
            1, std::size(kPortGroupColumns) + std::size(kPolicyColumns<PortGroupRecord>)) +
        ")";
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kPortGroupColumns, record);
    BindColumns(insert, kPolicies, kPolicyColumns<PortGroupRecord>, record);
    insert.Run();
}

}  // namespace HostSim::Vswitch
