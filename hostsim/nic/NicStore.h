// The NIC subject's store: the queries that read and change its records (NicRecord.h).
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/Pnic.h"
#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/nic/NicRecord.h"

namespace HostSim::Nic {

// Every NIC in the profile's order, in one query. Each record is allocated once, so that a
// long listing moves pointers as it grows, not records.
std::vector<std::unique_ptr<Record>> LoadAll(Database& database);
std::optional<Record> Load(Database& database, const std::string& name);
void Insert(Database& database, const Record& record);
// Sets a NIC's administrative state in one write transaction; false when there is no such NIC.
bool SetAdminState(Database& database, const std::string& name, bool up);
// Writes a NIC's speed, duplex, link information and pause parameters, inside the caller's
// write transaction.
void UpdateLinkSettings(Database& database, const Record& record);
// The id of the DPU behind a NIC; empty when there is none or no such NIC.
std::string DpuId(Database& database, const std::string& name);

// The nested records and their JSON form in the profile and the store.
HostCtl::Network::PnicInfo LinkInfoFromJson(const Json& json);
Json LinkInfoToJson(const HostCtl::Network::PnicInfo& info);
HostCtl::Network::PnicPauseParams PauseFromJson(const Json& json);
Json PauseToJson(const HostCtl::Network::PnicPauseParams& pause);

// The NICs of the built-in default host.
extern const char* const kDefaultSection;

}  // namespace HostSim::Nic
