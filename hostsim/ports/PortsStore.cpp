#include "hostsim/ports/PortsStore.h"

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Columns.h"

namespace HostSim::Ports {

using HostCtl::Network::FilterStats;
using HostCtl::Network::PacketStats;
using HostCtl::Network::PortByteStats;
using KelmCtl::Network::PortRecord;

namespace {

std::string SelectPorts(const char* where) {
    return "SELECT " + ColumnNames(kPortColumns) + " FROM port " + where;
}

PortRecord ReadPort(const Statement& row) {
    PortRecord record;
    ReadColumns(row, 0, kPortColumns, record);
    return record;
}

}  // namespace

std::vector<std::string> SplitMacs(const std::string& text) {
    std::vector<std::string> macs;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find(',', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        macs.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return macs;
}

std::string JoinMacs(const std::vector<std::string>& macs) {
    std::string text;
    for (const std::string& mac : macs) {
        text += (text.empty() ? "" : ",") + mac;
    }
    return text;
}

std::vector<PortRecord> LoadAllPorts(Database& database) {
    static const std::string sql = "SELECT " + ColumnNames(kPortColumns) + ", " +
                                   ColumnNames(kPortDetailColumns) + " FROM port ORDER BY position";
    auto query = database.Query(sql.c_str());
    std::vector<PortRecord> records;
    while (query.Step()) {
        PortRecord& record = records.emplace_back(ReadPort(query));
        ReadColumns(query, std::size(kPortColumns), kPortDetailColumns, record);
        record.detailLoaded = true;
    }
    return records;
}

void InsertPort(Database& database, const PortRecord& record) {
    static const std::string sql =
        "INSERT INTO port (" + ColumnNames(kPortColumns) + ", " + ColumnNames(kPortDetailColumns) +
        ") VALUES (" +
        ColumnParameters(1, std::size(kPortColumns) + std::size(kPortDetailColumns)) + ")";
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kPortColumns, record);
    BindColumns(insert, 1 + std::size(kPortColumns), kPortDetailColumns, record);
    insert.Run();
}

std::vector<PortRecord> LoadPortsOf(Database& database, const std::string& switchName) {
    static const std::string sql = SelectPorts("WHERE switch = ?1 ORDER BY id");
    auto query = database.Query(sql.c_str());
    query.Bind(1, switchName);
    std::vector<PortRecord> records;
    while (query.Step()) {
        records.push_back(ReadPort(query));
    }
    return records;
}

std::optional<PortRecord> LoadUplinkPort(Database& database, const std::string& nicName) {
    static const std::string sql = SelectPorts("WHERE type = 4 AND team_uplink = ?1");
    auto query = database.Query(sql.c_str());
    query.Bind(1, nicName);
    if (!query.Step()) {
        return std::nullopt;
    }
    return ReadPort(query);
}

void LoadPortDetail(Database& database, PortRecord& record) {
    if (record.detailLoaded) {
        return;
    }
    static const std::string sql =
        "SELECT " + ColumnNames(kPortDetailColumns) + " FROM port WHERE id = ?1";
    auto query = database.Query(sql.c_str());
    query.Bind(1, static_cast<std::int64_t>(record.id));
    if (!query.Step()) {
        throw HostCtl::Lib::HostCtlException("There is no port " + std::to_string(record.id));
    }
    ReadColumns(query, 0, kPortDetailColumns, record);
    record.detailLoaded = true;
}

std::optional<std::string> LoadWorldName(Database& database, std::uint32_t worldId) {
    auto query = database.Query("SELECT name FROM port_world WHERE id = ?1");
    query.Bind(1, static_cast<std::int64_t>(worldId));
    if (!query.Step()) {
        return std::nullopt;
    }
    return query.Text(0);
}

std::vector<std::uint32_t> LoadWorldIds(Database& database) {
    auto query = database.Query("SELECT id FROM port_world ORDER BY id");
    std::vector<std::uint32_t> ids;
    while (query.Step()) {
        ids.push_back(static_cast<std::uint32_t>(query.Int(0)));
    }
    return ids;
}

Json PacketStatsToJson(const PacketStats& stats) {
    return {{"txPackets", stats.txPackets},     {"txMulticast", stats.txMulticast},
            {"txBroadcast", stats.txBroadcast}, {"rxPackets", stats.rxPackets},
            {"rxMulticast", stats.rxMulticast}, {"rxBroadcast", stats.rxBroadcast},
            {"txDropped", stats.txDropped},     {"rxDropped", stats.rxDropped}};
}

PacketStats PacketStatsFromJson(const Json& json) {
    PacketStats stats;
    stats.txPackets = json.value("txPackets", std::uint64_t{0});
    stats.txMulticast = json.value("txMulticast", std::uint64_t{0});
    stats.txBroadcast = json.value("txBroadcast", std::uint64_t{0});
    stats.rxPackets = json.value("rxPackets", std::uint64_t{0});
    stats.rxMulticast = json.value("rxMulticast", std::uint64_t{0});
    stats.rxBroadcast = json.value("rxBroadcast", std::uint64_t{0});
    stats.txDropped = json.value("txDropped", std::uint64_t{0});
    stats.rxDropped = json.value("rxDropped", std::uint64_t{0});
    return stats;
}

Json ByteStatsToJson(const PortByteStats& stats) {
    return {{"packetsSent", stats.packetsSent},
            {"bytesSent", stats.bytesSent},
            {"packetsReceived", stats.packetsReceived},
            {"bytesReceived", stats.bytesReceived}};
}

PortByteStats ByteStatsFromJson(const Json& json) {
    PortByteStats stats;
    stats.packetsSent = json.value("packetsSent", std::uint64_t{0});
    stats.bytesSent = json.value("bytesSent", std::uint64_t{0});
    stats.packetsReceived = json.value("packetsReceived", std::uint64_t{0});
    stats.bytesReceived = json.value("bytesReceived", std::uint64_t{0});
    return stats;
}

Json FilterToJson(const FilterStats& filter) {
    Json json = {{"name", filter.filterName},
                 {"orderKey", filter.orderKey},
                 {"active", filter.isActive},
                 {"transmit", filter.isTransmit},
                 {"packetsIn", filter.packetsIn},
                 {"packetsOut", filter.packetsOut},
                 {"packetsDropped", filter.packetsDropped}};
    if (filter.hasDetail) {
        json["detail"] = {{"packetsFiltered", filter.packetsFiltered},
                          {"packetsFaulted", filter.packetsFaulted},
                          {"packetsQueued", filter.packetsQueued},
                          {"packetsInjected", filter.packetsInjected},
                          {"packetErrors", filter.packetErrors}};
    }
    return json;
}

FilterStats FilterFromJson(const Json& json) {
    FilterStats filter;
    filter.filterName = json.at("name").get<std::string>();
    filter.orderKey = json.value("orderKey", "");
    filter.isActive = json.value("active", true);
    filter.isTransmit = json.value("transmit", false);
    filter.packetsIn = json.value("packetsIn", std::uint64_t{0});
    filter.packetsOut = json.value("packetsOut", std::uint64_t{0});
    filter.packetsDropped = json.value("packetsDropped", std::uint64_t{0});
    if (auto detail = json.find("detail"); detail != json.end()) {
        filter.hasDetail = true;
        filter.packetsFiltered = detail->value("packetsFiltered", std::uint64_t{0});
        filter.packetsFaulted = detail->value("packetsFaulted", std::uint64_t{0});
        filter.packetsQueued = detail->value("packetsQueued", std::uint64_t{0});
        filter.packetsInjected = detail->value("packetsInjected", std::uint64_t{0});
        filter.packetErrors = detail->value("packetErrors", std::uint64_t{0});
    }
    return filter;
}

}  // namespace HostSim::Ports
