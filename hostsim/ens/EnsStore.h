// The ENS subject: the host's maximum of contexts, its NUMA nodes, and the contexts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"

namespace HostSim::Ens {

// Its section of the built-in default host.
extern const char* const kDefaultSection;

// The most contexts the host can be set to allow, and the highest context id.
inline constexpr std::uint32_t kMaximumLcores = 256;
inline constexpr std::uint64_t kMaximumLcoreId = 1023;
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

Settings LoadSettings(Database& database);
void InsertSettings(Database& database, const Settings& settings);
std::vector<Lcore> LoadLcores(Database& database);
std::optional<Lcore> LoadLcore(Database& database, std::uint64_t id);
void InsertLcore(Database& database, const Lcore& lcore);
// Whether a standard or distributed switch of that name exists.
bool IsSwitch(Database& database, const std::string& name);

}  // namespace HostSim::Ens
