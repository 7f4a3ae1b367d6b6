// The netstack subject's store: the host's rules for the settings of an instance, and the
// queries and changes of the netstack table.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"
#include "hostsim/netstack/NetstackRecord.h"

namespace HostSim::Ip {

// The netstack instances of the built-in default host.
extern const char* const kDefaultNetstacks;

inline constexpr char kDefaultNetstack[] = "defaultTcpipStack";
inline constexpr unsigned kMaximumConnections = 1'000'000;

// The keys of the instances the system defines, the default one first.
const std::vector<std::string>& PredefinedNetstackKeys();
const std::vector<std::string>& CongestionControlAlgorithms();
const std::vector<std::string>& EcnStatuses();

// Throws HostCtlException naming `what` for a number outside low to high.
void CheckRange(long value, long low, long high, const char* what);

// The host's rules for the settings of an instance; each throws HostCtlException.
void CheckNetstackKey(const std::string& key);
void CheckMaxConnections(unsigned long maxConnections);
void CheckCongestionControl(const std::string& name);
void CheckEcn(const std::string& status);

// Netstack instances in the order they were made; one by key.
std::vector<KelmCtl::Network::NetstackRecord> LoadNetstacks(Database& database);
std::optional<KelmCtl::Network::NetstackRecord> LoadNetstack(Database& database,
                                                             const std::string& key);
void InsertNetstack(Database& database, const KelmCtl::Network::NetstackRecord& record);
void UpdateNetstack(Database& database, const KelmCtl::Network::NetstackRecord& record);

}  // namespace HostSim::Ip
