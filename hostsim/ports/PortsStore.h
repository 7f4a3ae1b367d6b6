// The ports subject's store: the queries of its tables. A port's counters and filters are
// JSON columns, parsed only when an operation asks for them, so that listings of many ports
// stay cheap.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/Port.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/ports/PortsRecord.h"

namespace HostSim::Ports {

// The worlds and ports of the built-in default host.
extern const char* const kDefaultSection;

// Every port with its counters and filters, in the profile's order.
std::vector<KelmCtl::Network::PortRecord> LoadAllPorts(Database& database);
void InsertPort(Database& database, const KelmCtl::Network::PortRecord& record);

// The ports of a switch, in the order of their ids.
std::vector<KelmCtl::Network::PortRecord> LoadPortsOf(Database& database,
                                                      const std::string& switchName);
// Reads the counters and filters of a port whose record was read without them.
void LoadPortDetail(Database& database, KelmCtl::Network::PortRecord& record);
// The uplink port of a NIC.
std::optional<KelmCtl::Network::PortRecord> LoadUplinkPort(Database& database,
                                                           const std::string& nicName);
std::optional<std::string> LoadWorldName(Database& database, std::uint32_t worldId);
std::vector<std::uint32_t> LoadWorldIds(Database& database);

Json PacketStatsToJson(const HostCtl::Network::PacketStats& stats);
HostCtl::Network::PacketStats PacketStatsFromJson(const Json& json);
Json ByteStatsToJson(const HostCtl::Network::PortByteStats& stats);
HostCtl::Network::PortByteStats ByteStatsFromJson(const Json& json);
Json FilterToJson(const HostCtl::Network::FilterStats& filter);
HostCtl::Network::FilterStats FilterFromJson(const Json& json);

}  // namespace HostSim::Ports
