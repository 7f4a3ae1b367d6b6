// The ENS subject's records: the host's maximum of contexts and its NUMA nodes, and the
// contexts; and their column tables.
#pragma once

#include <cstdint>
#include <string>

#include "hostsim/core/ColumnTable.h"

namespace HostSim::Ens {

// A context's switch when it serves none.
inline constexpr char kNoSwitch[] = "null";

struct Settings {
    std::uint32_t maxLcores = 0;
    std::int32_t numaNodes = 1;
};

struct Lcore {
    std::uint64_t id = 0;
    // kNoSwitch when the context serves no switch.
    std::string switchName = kNoSwitch;
    // The NUMA node; -1 for none.
    std::int32_t affinity = -1;
};

// Table ens, its one row. A profile's maximum is read apart: the host caps it.
inline constexpr Column<Settings> kSettingsColumns[] = {
    {.sql = "max_lcores", .member = &Settings::maxLcores},
    {.sql = "numa_nodes", .member = &Settings::numaNodes, .json = "numaNodes", .fallback = 2},
};

// Table ens_lcore, after its position. A context that serves no switch has NULL there.
inline constexpr Column<Lcore> kLcoreColumns[] = {
    {.sql = "id", .member = &Lcore::id, .json = "id", .required = true},
    {.sql = "switch",
     .member = &Lcore::switchName,
     .json = "switch",
     .fallbackText = kNoSwitch,
     .nullWhenEmpty = true},
    {.sql = "affinity", .member = &Lcore::affinity, .json = "affinity", .fallback = -1},
};

}  // namespace HostSim::Ens
