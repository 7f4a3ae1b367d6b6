// The switching subject's store: the queries and changes of its tables.
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
#include "hostsim/vswitch/VswitchRecord.h"
#include "kelmctl/PortGroupImpl.h"

namespace HostSim::Vswitch {

// The switches of the built-in default host.
extern const char* const kDefaultSection;

// The name of a port group in copy `copy` of a scaled profile: the scaled name, or, for a name
// that scaling keeps ("VM Network"), the name, a blank and the copy's number ("VM Network 2").
// Other subjects that name a port group use this too.
std::string PortGroupCopyName(const Scale& scale, const std::string& name, unsigned copy);

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
