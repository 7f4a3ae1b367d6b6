// The NIC settings subject's record of one NIC (counters, VLAN counters, coalescing, offload,
// software simulation, rings), the row it is stored as, and the row's column table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/PnicSettings.h"
#include "hostsim/core/ColumnTable.h"

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

// A member of the settings' JSON, kept in its column as JSON text.
extern const ColumnDocument kMemberDocument;

// A row of nic_settings: the settings' JSON, one member of it per column, as text; empty for
// a member the settings lack, which the column holds as NULL.
struct SettingsRow {
    std::string name;
    std::string stats;
    std::string vlanStats;
    std::string coalesce;
    std::string offload;
    std::string software;
    std::string rings;
};

// Table nic_settings, after its position. The name is the first column.
inline constexpr Column<SettingsRow> kColumns[] = {
    {.sql = "name", .member = &SettingsRow::name, .json = "name"},
    {.sql = "stats", .member = &SettingsRow::stats, .json = "stats", .document = &kMemberDocument},
    {.sql = "vlan_stats",
     .member = &SettingsRow::vlanStats,
     .json = "vlanStats",
     .nullWhenEmpty = true,
     .document = &kMemberDocument},
    {.sql = "coalesce",
     .member = &SettingsRow::coalesce,
     .json = "coalesce",
     .nullWhenEmpty = true,
     .document = &kMemberDocument},
    {.sql = "offload",
     .member = &SettingsRow::offload,
     .json = "offload",
     .document = &kMemberDocument},
    {.sql = "software",
     .member = &SettingsRow::software,
     .json = "software",
     .document = &kMemberDocument},
    {.sql = "rings", .member = &SettingsRow::rings, .json = "rings", .document = &kMemberDocument},
};

}  // namespace HostSim::NicSettings
