// The switching subject's records, the JSON form of policies, the merge of own over inherited
// policy fields, and the queries and changes of the store.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/NetworkPolicy.h"
#include "hostctl/VirtualSwitch.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/core/Subject.h"
#include "kelmctl/PortGroupImpl.h"

namespace HostSim::Vswitch {

// The switches of the built-in default host.
extern const char* const kDefaultSection;

// The name of a port group in copy `copy` of a scaled profile: the scaled name, or, for a name
// that scaling keeps ("VM Network"), the name, a blank and the copy's number ("VM Network 2").
// Other subjects that name a port group use this too.
std::string PortGroupCopyName(const Scale& scale, const std::string& name, unsigned copy);

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

// The switches of a type, or of every type when none is given, in the order they were made; or
// the one of that name and type.
std::vector<SwitchRecord> LoadSwitches(Database& database,
                                       std::optional<HostCtl::Network::PortsetGetType> type);
std::optional<SwitchRecord> LoadSwitch(Database& database, const std::string& name,
                                       std::optional<HostCtl::Network::PortsetGetType> type);
// What the port groups of `record` give it, read now.
PortGroupSummary SummarizePortGroups(Database& database, const SwitchRecord& record);
// The names of a switch's uplinks, in the order they were attached.
std::vector<std::string> LoadUplinks(Database& database, const std::string& switchName);
bool SwitchExists(Database& database, const std::string& name);
// Throws "There is no virtual switch named <name>" when there is none.
void RequireSwitch(Database& database, const std::string& name);

// Port groups of the switches of a type, switch by switch; those of one switch; one by name.
std::vector<KelmCtl::Network::PortGroupRecord> LoadPortGroups(
    Database& database, HostCtl::Network::PortsetGetType type);
std::vector<KelmCtl::Network::PortGroupRecord> LoadPortGroupsOf(Database& database,
                                                                const std::string& switchName);
std::optional<KelmCtl::Network::PortGroupRecord> LoadPortGroup(Database& database,
                                                               const std::string& name);
// The port groups of a switch by name alone, in order: what a listing of names needs.
std::vector<KelmCtl::Network::PortGroupRecord> ListPortGroupsOf(Database& database,
                                                                const std::string& switchName);

// The names of all NICs that some switch, standard or distributed, uses as an uplink.
std::vector<std::string> UplinkNicNames(Database& database);

// Rows as the profile and the host operations write them.
void InsertSwitch(Database& database, const SwitchRecord& record);
void InsertUplink(Database& database, const std::string& switchName, const std::string& nicName);
void InsertPortGroup(Database& database, const KelmCtl::Network::PortGroupRecord& record);

}  // namespace HostSim::Vswitch
