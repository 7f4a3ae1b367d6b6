#include "hostsim/netstack/NetstackStore.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Names.h"

namespace HostSim::Ip {

using HostCtl::Lib::HostCtlException;
using KelmCtl::Network::NetstackRecord;

namespace {

void CheckOneOf(const std::string& value, const std::vector<std::string>& allowed,
                const char* what) {
    if (std::find(allowed.begin(), allowed.end(), value) != allowed.end()) {
        return;
    }
    std::string list;
    for (const std::string& name : allowed) {
        list += (list.empty() ? "" : ", ") + name;
    }
    throw HostCtlException(std::string(what) + " " + value + " is not one of " + list);
}

}  // namespace

void CheckRange(long value, long low, long high, const char* what) {
    if (value < low || value > high) {
        throw HostCtlException(std::string(what) + " " + std::to_string(value) +
                               " is out of range (" + std::to_string(low) + "-" +
                               std::to_string(high) + ")");
    }
}

const std::vector<std::string>& PredefinedNetstackKeys() {
    static const std::vector<std::string> keys = {kDefaultNetstack, "glidex", "mirrorlock",
                                                  "OrbiqProvisioning"};
    return keys;
}

const std::vector<std::string>& CongestionControlAlgorithms() {
    static const std::vector<std::string> names = {"newreno", "cubic"};
    return names;
}

const std::vector<std::string>& EcnStatuses() {
    static const std::vector<std::string> names = {"disabled", "enabled", "echo-only"};
    return names;
}

void CheckNetstackKey(const std::string& key) {
    CheckObjectName(key, "netstack instance");
}

void CheckMaxConnections(unsigned long maxConnections) {
    CheckRange(static_cast<long>(maxConnections), 1, kMaximumConnections, "Maximum connections");
}

void CheckCongestionControl(const std::string& name) {
    CheckOneOf(name, CongestionControlAlgorithms(), "Congestion control algorithm");
}

void CheckEcn(const std::string& status) {
    CheckOneOf(status, EcnStatuses(), "ECN status");
}

std::vector<NetstackRecord> LoadNetstacks(Database& database) {
    static const std::string sql =
        "SELECT " + ColumnNames(kNetstackColumns) + " FROM netstack ORDER BY position";
    std::vector<NetstackRecord> records;
    auto query = database.Query(sql.c_str());
    while (query.Step()) {
        ReadColumns(query, 0, kNetstackColumns, records.emplace_back());
    }
    return records;
}

std::optional<NetstackRecord> LoadNetstack(Database& database, const std::string& key) {
    static const std::string sql =
        "SELECT " + ColumnNames(kNetstackColumns) + " FROM netstack WHERE key = ?1";
    auto query = database.Query(sql.c_str());
    query.Bind(1, key);
    if (!query.Step()) {
        return std::nullopt;
    }
    NetstackRecord record;
    ReadColumns(query, 0, kNetstackColumns, record);
    return record;
}

void InsertNetstack(Database& database, const NetstackRecord& record) {
    static const std::string sql = InsertStatement("netstack", kNetstackColumns);
    auto statement = database.Query(sql.c_str());
    BindColumns(statement, 1, kNetstackColumns, record);
    statement.Run();
}

// The key is the first column, and stays.
void UpdateNetstack(Database& database, const NetstackRecord& record) {
    static const std::string sql = "UPDATE netstack SET " +
                                   ColumnAssignments(std::span(kNetstackColumns).subspan(1), 2) +
                                   " WHERE key = ?1";
    auto statement = database.Query(sql.c_str());
    BindColumns(statement, 1, kNetstackColumns, record);
    statement.Run();
}

}  // namespace HostSim::Ip
