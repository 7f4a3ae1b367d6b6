// The ENS subject: the host's maximum of contexts, its NUMA nodes, and the contexts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostsim/core/Database.h"

namespace HostSim::Ens {

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

Settings LoadSettings(Database& database);
std::vector<Lcore> LoadLcores(Database& database);
std::optional<Lcore> LoadLcore(Database& database, std::uint64_t id);
void InsertLcore(Database& database, const Lcore& lcore);
// Whether a standard or distributed switch of that name exists.
bool IsSwitch(Database& database, const std::string& name);

}  // namespace HostSim::Ens
