// The netstack subject: the netstack table and the "netstacks" section of a profile.
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Subject.h"
#include "hostsim/netstack/NetstackStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using KelmCtl::Network::NetstackRecord;

constexpr const char* kNetstackSchemaSteps[] = {
    "CREATE TABLE netstack ("
    " position INTEGER PRIMARY KEY,"
    " key TEXT NOT NULL UNIQUE, name TEXT NOT NULL, up INTEGER NOT NULL,"
    " max_connections INTEGER NOT NULL, congestion_control TEXT NOT NULL,"
    " ipv6 INTEGER NOT NULL, ecn TEXT NOT NULL, workers INTEGER NOT NULL,"
    " current_max_connections INTEGER NOT NULL, current_ipv6 INTEGER NOT NULL)",
};
constexpr const char* kNetstackTables[] = {"netstack"};

NetstackRecord NetstackFromJson(const Json& json) {
    NetstackRecord record;
    ColumnsFromJson(Ip::kNetstackColumns, json, record);
    if (!json.contains("name")) {
        record.name = record.key;
    }
    record.currentMaxConnections =
        record.up ? json.value("currentMaxConnections", record.maxConnections) : 0;
    record.currentIpv6 = record.up && json.value("currentIpv6", record.ipv6);
    Ip::CheckNetstackKey(record.key);
    Ip::CheckNetstackKey(record.name);
    Ip::CheckMaxConnections(record.maxConnections);
    Ip::CheckCongestionControl(record.congestionControl);
    Ip::CheckEcn(record.ecn);
    return record;
}

Json NetstackToJson(const NetstackRecord& record) {
    Json json = Json::object();
    ColumnsToJson(Ip::kNetstackColumns, record, json);
    if (record.up) {
        json["currentMaxConnections"] = record.currentMaxConnections;
        json["currentIpv6"] = record.currentIpv6;
    }
    return json;
}

void ImportNetstacks(Database& database, const Json& section, const Scale& scale) {
    std::vector<NetstackRecord> records;
    for (const Json& json : section) {
        records.push_back(NetstackFromJson(json));
    }
    // A key that scaling keeps ("glidex") names one instance of the host, made once.
    std::set<std::string> keys;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (NetstackRecord record : records) {
            const std::string key = scale.Name(record.key, copy);
            if (copy != 0 && key == record.key) {
                continue;
            }
            record.key = key;
            if (!keys.insert(record.key).second) {
                throw HostCtlException("The profile has more than one netstack instance named " +
                                       record.key);
            }
            Ip::InsertNetstack(database, record);
        }
    }
    if (!section.empty() && !keys.contains(Ip::kDefaultNetstack)) {
        throw HostCtlException(std::string("The profile has no netstack instance ") +
                               Ip::kDefaultNetstack);
    }
}

Json ExportNetstacks(Database& database) {
    return JsonArrayOf(Ip::LoadNetstacks(database), NetstackToJson);
}

}  // namespace

extern const Subject netstackSubject;
const Subject netstackSubject = {
    .name = "netstacks",
    .schemaSteps = kNetstackSchemaSteps,
    .tables = kNetstackTables,
    .defaultSection = Ip::kDefaultNetstacks,
    .importSection = ImportNetstacks,
    .exportSection = ExportNetstacks,
};

}  // namespace HostSim
