// The NIC settings subject's record of one NIC (counters, VLAN counters, coalescing, offload,
// software simulation, rings), its JSON form, and the queries that read and write it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostctl/PnicSettings.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"

namespace HostSim::NicSettings {

// VLAN counters of an uplink while collection is on; they count for the switch named only.
struct VlanCounters {
    std::string switchName;
    std::vector<HostCtl::Network::PnicVlanStats> vlans;
};

struct Settings {
    std::string name;
    HostCtl::Network::PnicStats stats;
    std::optional<VlanCounters> vlanStats;  // none: collection is off
    // None: the driver has no interrupt coalescing.
    std::optional<HostCtl::Network::PnicCoalesceParams> coalesce;
    HostCtl::Network::PnicOffloadParams offload;
    // The offload flags (PnicOffloadParams::kRxChecksum...) the hardware can switch on.
    std::uint8_t offloadCapabilities = 0;
    HostCtl::Network::PnicSoftwareSimulation software;
    HostCtl::Network::PnicRingParams ringMaximum;
    HostCtl::Network::PnicRingParams ringCurrent;
};

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
