// The ports subject's record of one port, and the column tables of the port table.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostctl/Port.h"
#include "hostsim/core/ColumnTable.h"

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

using KelmCtl::Network::PortRecord;

// A port's MAC addresses are stored as one text, joined by ",".
std::vector<std::string> SplitMacs(const std::string& text);
std::string JoinMacs(const std::vector<std::string>& macs);

// Table port, after its position: what a listing reads.
inline constexpr Column<PortRecord> kPortColumns[] = {
    {.sql = "id", .member = &PortRecord::id},
    {.sql = "switch", .member = &PortRecord::switchName},
    {.sql = "type", .member = &PortRecord::type},
    {.sql = "world", .member = &PortRecord::world},
    {.sql = "portgroup", .member = &PortRecord::portGroup},
    {.sql = "dvport", .member = &PortRecord::dvport},
    {.sql = "macs",
     .member = TextAccess<PortRecord>{
         [](const PortRecord& record) { return JoinMacs(record.macs); },
         [](PortRecord& record, const std::string& text) { record.macs = SplitMacs(text); }}},
    {.sql = "ip", .member = &PortRecord::ip},
    {.sql = "team_uplink", .member = &PortRecord::teamUplink},
};

// Then its counters and filters, read on first use.
inline constexpr Column<PortRecord> kPortDetailColumns[] = {
    {.sql = "stats", .member = &PortRecord::stats},
    {.sql = "filters", .member = &PortRecord::filters},
};

}  // namespace HostSim::Ports
