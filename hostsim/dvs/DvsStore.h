// The distributed-switch subject's store: the queries and changes of its tables.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hostctl/DVSwitch.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/dvs/DvsRecord.h"

namespace HostSim::Dvs {

// The distributed switches of the built-in default host.
extern const char* const kDefaultSection;

// The distributed switches, all or only the opaque or only the other ones, in the order they
// were made.
std::vector<KelmCtl::Network::DVSwitchRecord> LoadSwitches(Database& database,
                                                           std::optional<bool> opaque);
std::optional<KelmCtl::Network::DVSwitchRecord> LoadSwitch(Database& database,
                                                           const std::string& name);
std::optional<KelmCtl::Network::DVSwitchRecord> LoadSwitchById(Database& database,
                                                               const std::string& id);
bool SwitchExists(Database& database, const std::string& name);
bool IsOpaque(Database& database, const std::string& name);
// The distributed switch that uses the NIC as an uplink, if any.
std::optional<std::string> SwitchOfUplink(Database& database, const std::string& nicName);
// The NICs that distributed switches use as uplinks, switch by switch.
std::vector<std::string> UplinkNicNames(Database& database);

// Rows as the profile writes them.
void InsertSwitch(Database& database, const KelmCtl::Network::DVSwitchRecord& record);
// Writes back the LAGs of a switch.
void UpdateLags(Database& database, const std::string& name, const std::vector<Lag>& lags);

// "There is no distributed switch named <name>".
std::string NoSuchSwitch(const std::string& name);

}  // namespace HostSim::Dvs
