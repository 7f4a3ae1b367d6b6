#include "hostsim/dvs/DvsStore.h"

#include <map>

#include "hostsim/core/Columns.h"

namespace HostSim::Dvs {

using KelmCtl::Network::DVPortRecord;
using KelmCtl::Network::DVSwitchRecord;

namespace {

Json LagNicToJson(const LagNic& nic) {
    const LagPartner& partner = nic.partner;
    return {{"nic", nic.nic},
            {"state", nic.state},
            {"portNumber", nic.portNumber},
            {"portPriority", nic.portPriority},
            {"adminKey", nic.adminKey},
            {"operKey", nic.operKey},
            {"portState", nic.portState},
            {"flags", nic.flags},
            {"partner",
             {{"deviceId", partner.deviceId},
              {"age", partner.age},
              {"portNumber", partner.portNumber},
              {"portPriority", partner.portPriority},
              {"operKey", partner.operKey},
              {"portState", partner.portState},
              {"flags", partner.flags}}},
            {"rxLacpdus", nic.rxLacpdus},
            {"txLacpdus", nic.txLacpdus},
            {"rxErrors", nic.rxErrors},
            {"txErrors", nic.txErrors}};
}

LagNic LagNicFromJson(const Json& json) {
    LagNic nic;
    nic.nic = json.at("nic").get<std::string>();
    nic.state = json.value("state", "");
    nic.portNumber = json.value("portNumber", std::uint16_t{0});
    nic.portPriority = json.value("portPriority", std::uint16_t{255});
    nic.adminKey = json.value("adminKey", std::uint16_t{0});
    nic.operKey = json.value("operKey", std::uint16_t{0});
    nic.portState = json.value("portState", std::uint8_t{0});
    nic.flags = json.value("flags", "");
    const Json partner = json.value("partner", Json::object());
    nic.partner.deviceId = partner.value("deviceId", "");
    nic.partner.age = partner.value("age", 0u);
    nic.partner.portNumber = partner.value("portNumber", std::uint16_t{0});
    nic.partner.portPriority = partner.value("portPriority", std::uint16_t{0});
    nic.partner.operKey = partner.value("operKey", std::uint16_t{0});
    nic.partner.portState = partner.value("portState", std::uint8_t{0});
    nic.partner.flags = partner.value("flags", "");
    nic.rxLacpdus = json.value("rxLacpdus", std::uint64_t{0});
    nic.txLacpdus = json.value("txLacpdus", std::uint64_t{0});
    nic.rxErrors = json.value("rxErrors", std::uint64_t{0});
    nic.txErrors = json.value("txErrors", std::uint64_t{0});
    return nic;
}

std::string SelectSwitches(const char* where) {
    return "SELECT " + ColumnNames(kSwitchColumns) + " FROM dvs " + where;
}

DVSwitchRecord ReadSwitch(const Statement& row) {
    DVSwitchRecord record;
    ReadColumns(row, 0, kSwitchColumns, record);
    return record;
}

// Gives each switch its uplinks, with one query for all of them.
void AttachUplinks(Database& database, std::vector<DVSwitchRecord>& records) {
    std::map<std::string, DVSwitchRecord*> byName;
    for (DVSwitchRecord& record : records) {
        byName[record.name] = &record;
    }
    enum Column { kSwitch, kNic, kDVPort };
    auto query = database.Query("SELECT dvs, nic, dvport FROM dvs_uplink ORDER BY position");
    while (query.Step()) {
        if (auto found = byName.find(query.Text(kSwitch)); found != byName.end()) {
            found->second->uplinks.emplace_back(query.Text(kNic), query.Text(kDVPort));
        }
    }
}

std::optional<DVSwitchRecord> LoadOne(Database& database, Statement& query) {
    if (!query.Step()) {
        return std::nullopt;
    }
    DVSwitchRecord record = ReadSwitch(query);
    enum Column { kNic, kDVPort };
    auto uplinks =
        database.Query("SELECT nic, dvport FROM dvs_uplink WHERE dvs = ?1 ORDER BY position");
    uplinks.Bind(1, record.name);
    while (uplinks.Step()) {
        record.uplinks.emplace_back(uplinks.Text(kNic), uplinks.Text(kDVPort));
    }
    return record;
}

}  // namespace

// The switch's DVPorts, as JSON text; they take the switch's name and id, read before them.
std::string DVPortsText(const DVSwitchRecord& record) {
    Json dvports = Json::array();
    for (const DVPortRecord& port : record.dvports) {
        dvports.push_back(DVPortToJson(port));
    }
    return dvports.dump();
}

void SetDVPorts(DVSwitchRecord& record, const std::string& text) {
    for (const Json& port : Json::parse(text)) {
        DVPortRecord dvport = DVPortFromJson(port);
        dvport.dvsName = record.name;
        dvport.dvsId = record.id;
        record.dvports.push_back(std::move(dvport));
    }
}

std::string LagsText(const DVSwitchRecord& record) {
    Json lags = Json::array();
    for (const Lag& lag : record.lags) {
        lags.push_back(LagToJson(lag));
    }
    return lags.dump();
}

void SetLags(DVSwitchRecord& record, const std::string& text) {
    for (const Json& lag : Json::parse(text)) {
        record.lags.push_back(LagFromJson(lag));
    }
}

Json LagToJson(const Lag& lag) {
    Json json = {{"id", lag.id},
                 {"name", lag.name},
                 {"mode", lag.mode},
                 {"loadBalance", lag.loadBalance},
                 {"portCount", lag.portCount}};
    if (lag.running) {
        Json nics = Json::array();
        for (const LagNic& nic : lag.nics) {
            nics.push_back(LagNicToJson(nic));
        }
        json["running"] = {{"nics", std::move(nics)}};
    }
    return json;
}

Lag LagFromJson(const Json& json) {
    Lag lag;
    lag.id = json.at("id").get<std::uint32_t>();
    lag.name = json.at("name").get<std::string>();
    lag.mode = json.value("mode", 1u);
    lag.loadBalance = json.value("loadBalance", 0);
    lag.portCount = json.value("portCount", 0u);
    if (auto running = json.find("running"); running != json.end()) {
        lag.running = true;
        for (const Json& nic : running->value("nics", Json::array())) {
            lag.nics.push_back(LagNicFromJson(nic));
        }
    }
    return lag;
}

Json DVPortToJson(const DVPortRecord& port) {
    Json json = {{"id", port.id},
                 {"portgroup", port.portGroup},
                 {"inUse", port.inUse},
                 {"clients", port.clients},
                 {"lacp", {{"enabled", port.lacp.enabled}, {"mode", port.lacp.mode}}}};
    // A DVPort without a name has no "name": every "name" of a profile must be a valid one.
    if (!port.name.empty()) {
        json["name"] = port.name;
    }
    return json;
}

DVPortRecord DVPortFromJson(const Json& json) {
    DVPortRecord port;
    port.id = json.at("id").get<std::string>();
    port.portGroup = json.value("portgroup", "");
    port.name = json.value("name", "");
    port.clients = json.value("clients", std::vector<std::string>{});
    port.inUse = json.value("inUse", !port.clients.empty());
    const Json lacp = json.value("lacp", Json::object());
    port.lacp.enabled = lacp.value("enabled", false);
    port.lacp.mode = lacp.value("mode", 1u);
    return port;
}

std::vector<DVSwitchRecord> LoadSwitches(Database& database, std::optional<bool> opaque) {
    static const std::string sql =
        SelectSwitches("WHERE ?1 IS NULL OR opaque = ?1 ORDER BY position");
    auto query = database.Query(sql.c_str());
    if (opaque) {
        query.Bind(1, static_cast<std::int64_t>(*opaque));
    } else {
        query.BindNull(1);
    }
    std::vector<DVSwitchRecord> records;
    while (query.Step()) {
        records.push_back(ReadSwitch(query));
    }
    AttachUplinks(database, records);
    return records;
}

std::optional<DVSwitchRecord> LoadSwitch(Database& database, const std::string& name) {
    static const std::string sql = SelectSwitches("WHERE name = ?1");
    auto query = database.Query(sql.c_str());
    query.Bind(1, name);
    return LoadOne(database, query);
}

std::optional<DVSwitchRecord> LoadSwitchById(Database& database, const std::string& id) {
    static const std::string sql = SelectSwitches("WHERE id = ?1");
    auto query = database.Query(sql.c_str());
    query.Bind(1, id);
    return LoadOne(database, query);
}

bool SwitchExists(Database& database, const std::string& name) {
    auto query = database.Query("SELECT 1 FROM dvs WHERE name = ?1");
    query.Bind(1, name);
    return query.Step();
}

bool IsOpaque(Database& database, const std::string& name) {
    auto query = database.Query("SELECT opaque FROM dvs WHERE name = ?1");
    query.Bind(1, name);
    return query.Step() && query.Bool(0);
}

std::optional<std::string> SwitchOfUplink(Database& database, const std::string& nicName) {
    auto query = database.Query("SELECT dvs FROM dvs_uplink WHERE nic = ?1");
    query.Bind(1, nicName);
    if (!query.Step()) {
        return std::nullopt;
    }
    return query.Text(0);
}

std::vector<std::string> UplinkNicNames(Database& database) {
    std::vector<std::string> names;
    auto query = database.Query("SELECT nic FROM dvs_uplink ORDER BY position");
    while (query.Step()) {
        names.push_back(query.Text(0));
    }
    return names;
}

void InsertSwitch(Database& database, const DVSwitchRecord& record) {
    static const std::string sql = InsertStatement("dvs", kSwitchColumns);
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kSwitchColumns, record);
    insert.Run();
    for (const auto& [nic, dvport] : record.uplinks) {
        database.Query("INSERT INTO dvs_uplink (dvs, nic, dvport) VALUES (?1, ?2, ?3)")
            .Bind(1, record.name)
            .Bind(2, nic)
            .Bind(3, dvport)
            .Run();
    }
}

void UpdateLags(Database& database, const std::string& name, const std::vector<Lag>& lags) {
    Json json = Json::array();
    for (const Lag& lag : lags) {
        json.push_back(LagToJson(lag));
    }
    database.Query("UPDATE dvs SET lags = ?1 WHERE name = ?2")
        .Bind(1, json.dump())
        .Bind(2, name)
        .Run();
}

std::string NoSuchSwitch(const std::string& name) {
    return "There is no distributed switch named " + name;
}

}  // namespace HostSim::Dvs
