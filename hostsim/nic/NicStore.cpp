#include "hostsim/nic/NicStore.h"

namespace HostSim::Nic {

using HostCtl::Network::PnicInfo;
using HostCtl::Network::PnicLinkMode;
using HostCtl::Network::PnicPauseParams;
using HostCtl::Network::WakeOnMode;

namespace {

#define NIC_COLUMNS                                                                     \
    "name, pci_address, pci_vendor, pci_device, descriptor, descriptor_error, driver, " \
    "admin_up, cable_connected, speed, duplex, mac, mtu, dpu_id, link_info, pause, "    \
    "driver_version, firmware_version, bus_info"

Record ReadRecord(const Statement& row) {
    Record record;
    record.name = row.Text(0);
    record.pciAddress = row.Text(1);
    record.pciVendor = row.Text(2);
    record.pciDevice = row.Text(3);
    record.descriptor = row.Text(4);
    record.descriptorError = row.Text(5);
    record.driver = row.Text(6);
    record.adminUp = row.Bool(7);
    record.cableConnected = row.Bool(8);
    record.speed = static_cast<std::uint32_t>(row.Int(9));
    record.duplex = static_cast<std::uint32_t>(row.Int(10));
    record.mac = row.Text(11);
    record.mtu = static_cast<std::uint32_t>(row.Int(12));
    record.dpuId = row.Text(13);
    record.linkInfo = row.Text(14);
    record.pause = row.Text(15);
    record.driverVersion = row.Text(16);
    record.firmwareVersion = row.Text(17);
    record.busInfo = row.Text(18);
    return record;
}

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

std::vector<std::unique_ptr<Record>> LoadAll(Database& database) {
    std::vector<std::unique_ptr<Record>> records;
    auto query = database.Query("SELECT " NIC_COLUMNS " FROM nic ORDER BY position");
    while (query.Step()) {
        records.push_back(std::make_unique<Record>(ReadRecord(query)));
    }
    return records;
}

std::optional<Record> Load(Database& database, const std::string& name) {
    auto query = database.Query("SELECT " NIC_COLUMNS " FROM nic WHERE name = ?1");
    query.Bind(1, name);
    if (!query.Step()) {
        return std::nullopt;
    }
    return ReadRecord(query);
}

void Insert(Database& database, const Record& record) {
    auto insert = database.Query("INSERT INTO nic (" NIC_COLUMNS
                                 ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, "
                                 "?13, ?14, ?15, ?16, ?17, ?18, ?19)");
    insert.Bind(1, record.name)
        .BindOptional(2, record.pciAddress)
        .BindOptional(3, record.pciVendor)
        .BindOptional(4, record.pciDevice)
        .BindOptional(5, record.descriptor)
        .BindOptional(6, record.descriptorError)
        .Bind(7, record.driver)
        .Bind(8, record.adminUp)
        .Bind(9, record.cableConnected)
        .Bind(10, record.speed)
        .Bind(11, record.duplex)
        .Bind(12, record.mac)
        .Bind(13, record.mtu)
        .BindOptional(14, record.dpuId)
        .Bind(15, record.linkInfo)
        .Bind(16, record.pause)
        .Bind(17, record.driverVersion)
        .Bind(18, record.firmwareVersion)
        .Bind(19, record.busInfo)
        .Run();
}

bool SetAdminState(Database& database, const std::string& name, bool up) {
    WriteTransaction transaction(database);
    database.Query("UPDATE nic SET admin_up = ?1 WHERE name = ?2").Bind(1, up).Bind(2, name).Run();
    bool found = database.Changes() > 0;
    transaction.Commit();
    return found;
}

void UpdateLinkSettings(Database& database, const Record& record) {
    database
        .Query("UPDATE nic SET speed = ?1, duplex = ?2, link_info = ?3, pause = ?4 WHERE name = ?5")
        .Bind(1, record.speed)
        .Bind(2, record.duplex)
        .Bind(3, record.linkInfo)
        .Bind(4, record.pause)
        .Bind(5, record.name)
        .Run();
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
