#include "hostsim/nic/NicStore.h"

namespace HostSim::Nic {

using HostCtl::Network::PnicInfo;
using HostCtl::Network::PnicLinkMode;
using HostCtl::Network::PnicPauseParams;
using HostCtl::Network::WakeOnMode;

namespace {

// A flag of a record reads and writes as a JSON bool.
void ReadFlag(const Json& json, const char* key, std::uint8_t& flag) {
    flag = json.value(key, false) ? 1 : 0;
}

template <class Number>
void ReadNumber(const Json& json, const char* key, Number& number) {
    number = json.value(key, Number{});
}

std::vector<PnicLinkMode> LinkModesFromJson(const Json& json, const char* key) {
    std::vector<PnicLinkMode> modes;
    for (const auto& mode : json.value(key, Json::array())) {
        modes.push_back({mode.at("speed").get<std::uint32_t>(),
                         mode.at("duplex").get<std::uint32_t>(),
                         mode.at("media").get<std::uint32_t>()});
    }
    return modes;
}

Json LinkModesToJson(const std::vector<PnicLinkMode>& modes) {
    Json json = Json::array();
    for (const auto& mode : modes) {
        json.push_back({{"speed", mode.speed}, {"duplex", mode.duplex}, {"media", mode.media}});
    }
    return json;
}

std::vector<WakeOnMode> WakeOnFromJson(const Json& json, const char* key) {
    std::vector<WakeOnMode> modes;
    for (const auto& mode : json.value(key, Json::array())) {
        modes.push_back(static_cast<WakeOnMode>(mode.get<std::uint32_t>()));
    }
    return modes;
}

Json WakeOnToJson(const std::vector<WakeOnMode>& modes) {
    Json json = Json::array();
    for (WakeOnMode mode : modes) {
        json.push_back(static_cast<std::uint32_t>(mode));
    }
    return json;
}

}  // namespace

const ColumnDocument kLinkInfoDocument = {
    [](const std::string& text) { return Json::parse(text); },
    [](const Json* value) {
        return LinkInfoToJson(LinkInfoFromJson(value != nullptr ? *value : Json::object())).dump();
    },
};

const ColumnDocument kPauseDocument = {
    [](const std::string& text) { return Json::parse(text); },
    [](const Json* value) {
        return PauseToJson(PauseFromJson(value != nullptr ? *value : Json::object())).dump();
    },
};

std::vector<std::unique_ptr<Record>> LoadAll(Database& database) {
    static const std::string sql =
        "SELECT " + ColumnNames(kColumns) + " FROM nic ORDER BY position";
    std::vector<std::unique_ptr<Record>> records;
    auto query = database.Query(sql.c_str());
    while (query.Step()) {
        ReadColumns(query, 0, kColumns, *records.emplace_back(std::make_unique<Record>()));
    }
    return records;
}

std::optional<Record> Load(Database& database, const std::string& name) {
    static const std::string sql = "SELECT " + ColumnNames(kColumns) + " FROM nic WHERE name = ?1";
    auto query = database.Query(sql.c_str());
    query.Bind(1, name);
    if (!query.Step()) {
        return std::nullopt;
    }
    Record record;
    ReadColumns(query, 0, kColumns, record);
    return record;
}

void Insert(Database& database, const Record& record) {
    static const std::string sql = InsertStatement("nic", kColumns);
    auto insert = database.Query(sql.c_str());
    BindColumns(insert, 1, kColumns, record);
    insert.Run();
}

bool SetAdminState(Database& database, const std::string& name, bool up) {
    WriteTransaction transaction(database);
    database.Query("UPDATE nic SET admin_up = ?1 WHERE name = ?2").Bind(1, up).Bind(2, name).Run();
    bool found = database.Changes() > 0;
    transaction.Commit();
    return found;
}

void UpdateLinkSettings(Database& database, const Record& record) {
    // The columns a change of link settings writes, after the NIC's name.
    static constexpr Column<Record> kLinkSettingsColumns[] = {
        {.sql = "speed", .member = &Record::speed},
        {.sql = "duplex", .member = &Record::duplex},
        {.sql = "link_info", .member = &Record::linkInfo},
        {.sql = "pause", .member = &Record::pause},
    };
    static const std::string sql =
        "UPDATE nic SET " + ColumnAssignments(kLinkSettingsColumns, 2) + " WHERE name = ?1";
    auto statement = database.Query(sql.c_str());
    statement.Bind(1, record.name);
    BindColumns(statement, 2, kLinkSettingsColumns, record);
    statement.Run();
}

std::string DpuId(Database& database, const std::string& name) {
    auto query = database.Query("SELECT dpu_id FROM nic WHERE name = ?1");
    query.Bind(1, name);
    return query.Step() ? query.Text(0) : std::string();
}

PnicInfo LinkInfoFromJson(const Json& json) {
    PnicInfo info;
    for (const auto& port : json.value("supportedPorts", Json::array())) {
        info.supportedPorts.push_back(port.get<std::uint32_t>());
    }
    info.supportedLinkModes = LinkModesFromJson(json, "supportedLinkModes");
    ReadFlag(json, "supportsAutoNegotiation", info.supportsAutoNegotiation);
    info.advertisedLinkModes = LinkModesFromJson(json, "advertisedLinkModes");
    ReadFlag(json, "advertisedAutoNegotiation", info.advertisedAutoNegotiation);
    ReadNumber(json, "port", info.port);
    ReadNumber(json, "phyAddress", info.phyAddress);
    ReadNumber(json, "transceiver", info.transceiver);
    ReadFlag(json, "autoNegotiation", info.autoNegotiation);
    ReadFlag(json, "supportsWakeOn", info.supportsWakeOn);
    info.supportedWakeOn = WakeOnFromJson(json, "supportedWakeOn");
    info.wakeOn = WakeOnFromJson(json, "wakeOn");
    ReadFlag(json, "supportsMessageLevel", info.supportsMessageLevel);
    ReadNumber(json, "messageLevel", info.messageLevel);
    ReadNumber(json, "virtualAddress", info.virtualAddress);
    return info;
}

Json LinkInfoToJson(const PnicInfo& info) {
    return {
        {"supportedPorts", info.supportedPorts},
        {"supportedLinkModes", LinkModesToJson(info.supportedLinkModes)},
        {"supportsAutoNegotiation", info.supportsAutoNegotiation != 0},
        {"advertisedLinkModes", LinkModesToJson(info.advertisedLinkModes)},
        {"advertisedAutoNegotiation", info.advertisedAutoNegotiation != 0},
        {"port", info.port},
        {"phyAddress", info.phyAddress},
        {"transceiver", info.transceiver},
        {"autoNegotiation", info.autoNegotiation != 0},
        {"supportsWakeOn", info.supportsWakeOn != 0},
        {"supportedWakeOn", WakeOnToJson(info.supportedWakeOn)},
        {"wakeOn", WakeOnToJson(info.wakeOn)},
        {"supportsMessageLevel", info.supportsMessageLevel != 0},
        {"messageLevel", info.messageLevel},
        {"virtualAddress", info.virtualAddress},
    };
}

PnicPauseParams PauseFromJson(const Json& json) {
    PnicPauseParams pause;
    ReadFlag(json, "supported", pause.supported);
    ReadFlag(json, "autoNegotiation", pause.autoNegotiation);
    ReadFlag(json, "rxPause", pause.rxPause);
    ReadFlag(json, "txPause", pause.txPause);
    ReadNumber(json, "rxResolution", pause.rxResolution);
    ReadNumber(json, "txResolution", pause.txResolution);
    return pause;
}

Json PauseToJson(const PnicPauseParams& pause) {
    return {
        {"supported", pause.supported != 0},  {"autoNegotiation", pause.autoNegotiation != 0},
        {"rxPause", pause.rxPause != 0},      {"txPause", pause.txPause != 0},
        {"rxResolution", pause.rxResolution}, {"txResolution", pause.txResolution},
    };
}

}  // namespace HostSim::Nic
