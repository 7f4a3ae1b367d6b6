// The switching subject's records: switches and port groups with their own policies, the JSON
// form of policies and the merge of own over inherited policy fields; and the column tables of
// the vswitch and vswitch_portgroup tables.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/NetworkPolicy.h"
#include "hostsim/core/ColumnTable.h"
#include "hostsim/core/Json.h"
#include "kelmctl/PortGroupImpl.h"

namespace HostSim::Vswitch {

struct Policies {
    HostCtl::Network::NicTeamingPolicy teaming;
    HostCtl::Network::PortSecurityPolicy security;
    HostCtl::Network::ShapingPolicy shaping;
};

// The host's own defaults, every field set: what a switch inherits where its own policy is
// silent.
const Policies& DefaultPolicies();

// The fields set in `own` over those of `inherited`; the result has the fields of both set.
Policies Merge(const Policies& own, const Policies& inherited);

// A policy as JSON holds exactly its set fields.
Json TeamingToJson(const HostCtl::Network::NicTeamingPolicy& policy);
HostCtl::Network::NicTeamingPolicy TeamingFromJson(const Json& json);
Json SecurityToJson(const HostCtl::Network::PortSecurityPolicy& policy);
HostCtl::Network::PortSecurityPolicy SecurityFromJson(const Json& json);
Json ShapingToJson(const HostCtl::Network::ShapingPolicy& policy);
HostCtl::Network::ShapingPolicy ShapingFromJson(const Json& json);

}  // namespace HostSim::Vswitch

namespace KelmCtl::Network {

struct PortGroupRecord {
    std::string name;
    std::string switchName;
    std::uint16_t vlanId = 0;
    // The kernel interfaces attached to the port group; one in use can't be removed.
    std::vector<std::string> users;
    HostSim::Vswitch::Policies own;
    // The effective policies of the switch, read with the port group.
    HostSim::Vswitch::Policies inherited;
    // False for a port group listed by name, whose other fields are read when first asked for.
    bool detailed = true;

    HostSim::Vswitch::Policies Effective() const { return HostSim::Vswitch::Merge(own, inherited); }
};

}  // namespace KelmCtl::Network

namespace HostSim::Vswitch {

// What a switch has from its port groups: the clients that hold its ports, and the port groups
// whose effective failure detection is the beacon.
struct PortGroupSummary {
    std::uint32_t activeClients = 0;
    std::vector<std::string> beaconRequiredBy;
};

struct SwitchRecord {
    std::string name;
    bool system = false;
    std::string className;
    std::uint32_t ports = 0;
    std::uint32_t mtu = 0;
    int cdpStatus = 0;
    bool beaconEnabled = false;
    std::uint32_t beaconInterval = 0;
    std::uint32_t beaconThreshold = 0;
    Policies own;
    // Read with the switch, from its uplink rows.
    std::vector<std::string> uplinks;
    // Read with the switches of a listing, in one pass over all port groups; a switch looked up
    // alone leaves it to SummarizePortGroups, when asked, so that adding one port group to a
    // switch of thousands reads none of them.
    std::optional<PortGroupSummary> portGroups;

    Policies Effective() const { return Merge(own, DefaultPolicies()); }
};

using KelmCtl::Network::PortGroupRecord;

// The list of text a column holds as a JSON array.
std::vector<std::string> StringsFromJson(const std::string& text);
// The JSON of a policy column. A switch's policies come again with each of its port groups, and
// most columns hold the same few texts, so each text is parsed once and kept (a bounded few).
const Json& ParsedPolicy(const std::string& text);

// The policy columns of a switch or a port group, its own policies as JSON text.
template <typename Record>
inline constexpr Column<Record> kPolicyColumns[] = {
    {.sql = "teaming",
     .member = TextAccess<Record>{
         [](const Record& record) { return TeamingToJson(record.own.teaming).dump(); },
         [](Record& record, const std::string& text) {
             record.own.teaming = TeamingFromJson(ParsedPolicy(text));
         }}},
    {.sql = "security",
     .member = TextAccess<Record>{
         [](const Record& record) { return SecurityToJson(record.own.security).dump(); },
         [](Record& record, const std::string& text) {
             record.own.security = SecurityFromJson(ParsedPolicy(text));
         }}},
    {.sql = "shaping",
     .member = TextAccess<Record>{
         [](const Record& record) { return ShapingToJson(record.own.shaping).dump(); },
         [](Record& record, const std::string& text) {
             record.own.shaping = ShapingFromJson(ParsedPolicy(text));
         }}},
};

// Table vswitch, after its position: then its policy columns.
inline constexpr Column<SwitchRecord> kSwitchColumns[] = {
    {.sql = "name", .member = &SwitchRecord::name},
    {.sql = "system", .member = &SwitchRecord::system},
    {.sql = "class", .member = &SwitchRecord::className},
    {.sql = "ports", .member = &SwitchRecord::ports},
    {.sql = "mtu", .member = &SwitchRecord::mtu},
    {.sql = "cdp_status", .member = &SwitchRecord::cdpStatus},
    {.sql = "beacon_enabled", .member = &SwitchRecord::beaconEnabled},
    {.sql = "beacon_interval", .member = &SwitchRecord::beaconInterval},
    {.sql = "beacon_threshold", .member = &SwitchRecord::beaconThreshold},
};

// Table vswitch_portgroup, after its position: then its policy columns.
inline constexpr Column<PortGroupRecord> kPortGroupColumns[] = {
    {.sql = "name", .member = &PortGroupRecord::name},
    {.sql = "vswitch", .member = &PortGroupRecord::switchName},
    {.sql = "vlan_id", .member = NumberMember<&PortGroupRecord::vlanId>},
    {.sql = "users",
     .member = TextAccess<PortGroupRecord>{
         [](const PortGroupRecord& record) { return Json(record.users).dump(); },
         [](PortGroupRecord& record, const std::string& text) {
             record.users = StringsFromJson(text);
         }}},
};

// The three policy texts of a row, as they are stored.
struct PolicyTexts {
    std::string teaming;
    std::string security;
    std::string shaping;
    bool operator==(const PolicyTexts&) const = default;
};
inline constexpr Column<PolicyTexts> kPolicyTextColumns[] = {
    {.sql = "teaming", .member = &PolicyTexts::teaming},
    {.sql = "security", .member = &PolicyTexts::security},
    {.sql = "shaping", .member = &PolicyTexts::shaping},
};

}  // namespace HostSim::Vswitch
