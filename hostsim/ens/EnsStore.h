// The ENS subject's store: the queries and changes of its tables.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"
#include "hostsim/ens/EnsRecord.h"

namespace HostSim::Ens {

// Its section of the built-in default host.
extern const char* const kDefaultSection;

// The most contexts the host can be set to allow, and the highest context id.
inline constexpr std::uint32_t kMaximumLcores = 256;
inline constexpr std::uint64_t kMaximumLcoreId = 1023;
Settings LoadSettings(Database& database);
void InsertSettings(Database& database, const Settings& settings);
std::vector<Lcore> LoadLcores(Database& database);
std::optional<Lcore> LoadLcore(Database& database, std::uint64_t id);
void InsertLcore(Database& database, const Lcore& lcore);
// Whether a standard or distributed switch of that name exists.
bool IsSwitch(Database& database, const std::string& name);

}  // namespace HostSim::Ens
