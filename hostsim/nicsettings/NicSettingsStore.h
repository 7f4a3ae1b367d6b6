// The NIC settings subject's store: the JSON form of a NIC's settings, and the queries that
// read and write them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostctl/PnicSettings.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/nicsettings/NicSettingsRecord.h"

namespace HostSim::NicSettings {

// The settings of a NIC; a NIC the table has no row for has the settings of a driver that
// reports nothing: zero counters, no coalescing, no offload, no rings.
Settings Load(Database& database, const std::string& name);
// Every row, in the order they were written.
std::vector<Settings> LoadAll(Database& database);
// Writes the row of `settings.name`, replacing the one there.
void Save(Database& database, const Settings& settings);

// The JSON form of the profile: {"name": ..., "stats": {...}, "vlanStats": {...} or absent,
// "coalesce": {...} or absent, "offload": {...}, "software": {...}, "rings": {...}}.
Settings FromJson(const Json& json);
Json ToJson(const Settings& settings);

// Flag i of a software simulation record, in its order: bit i of `settingMask`.
inline constexpr std::size_t kSoftwareFlagCount = 14;
std::uint8_t& SoftwareFlag(HostCtl::Network::PnicSoftwareSimulation& settings, std::size_t i);
std::uint8_t SoftwareFlag(const HostCtl::Network::PnicSoftwareSimulation& settings, std::size_t i);
// Size i of a ring record, in its order: bit i of `changeMask`.
inline constexpr std::size_t kRingSizeCount = 4;
std::uint32_t& RingSize(HostCtl::Network::PnicRingParams& params, std::size_t i);
std::uint32_t RingSize(const HostCtl::Network::PnicRingParams& params, std::size_t i);
// Switchable offload flag i, in its order: bit i of `changeMask`.
inline constexpr std::size_t kOffloadFlagCount = 4;
std::uint8_t& OffloadFlag(HostCtl::Network::PnicOffloadParams& params, std::size_t i);
std::uint8_t OffloadFlag(const HostCtl::Network::PnicOffloadParams& params, std::size_t i);

extern const char* const kDefaultSection;

}  // namespace HostSim::NicSettings
