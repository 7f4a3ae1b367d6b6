// The ports subject's records and the queries of the store. A port's counters and filters are
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

namespace KelmCtl::Network {

struct PortRecord {
    std::uint32_t id = 0;
    std::string switchName;
    int type = 0;
    std::uint32_t world = 0;
    std::string portGroup;
    std::string dvport;
    std::vector<std::string> macs;
    std::string ip;
    std::string teamUplink;
    // {"packets": {...}, "bytes": {...}} and [filter, ...], as stored; read on first use.
    bool detailLoaded = false;
    std::string stats;
    std::string filters;
};

}  // namespace KelmCtl::Network

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

// A port's MAC addresses are stored as one text, joined by ",".
std::vector<std::string> SplitMacs(const std::string& text);
std::string JoinMacs(const std::vector<std::string>& macs);

Json PacketStatsToJson(const HostCtl::Network::PacketStats& stats);
HostCtl::Network::PacketStats PacketStatsFromJson(const Json& json);
Json ByteStatsToJson(const HostCtl::Network::PortByteStats& stats);
HostCtl::Network::PortByteStats ByteStatsFromJson(const Json& json);
Json FilterToJson(const HostCtl::Network::FilterStats& filter);
HostCtl::Network::FilterStats FilterFromJson(const Json& json);

}  // namespace HostSim::Ports
