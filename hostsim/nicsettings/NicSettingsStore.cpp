#include "hostsim/nicsettings/NicSettingsStore.h"

#include <iterator>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/Columns.h"

namespace HostSim::NicSettings {

using HostCtl::Network::PnicCoalesceParams;
using HostCtl::Network::PnicOffloadParams;
using HostCtl::Network::PnicRingParams;
using HostCtl::Network::PnicSoftwareSimulation;
using HostCtl::Network::PnicStats;
using HostCtl::Network::PnicVlanStats;

const ColumnDocument kMemberDocument = {
    [](const std::string& text) { return text.empty() ? Json() : Json::parse(text); },
    [](const Json* value) { return value != nullptr ? value->dump() : std::string(); },
};

namespace {

template <class Record, class Member>
struct Key {
    const char* name;
    Member Record::*member;
};

constexpr Key<PnicStats, std::uint64_t> kStatsKeys[] = {
    {"txPackets", &PnicStats::txPackets},
    {"rxPackets", &PnicStats::rxPackets},
    {"txBytes", &PnicStats::txBytes},
    {"rxBytes", &PnicStats::rxBytes},
    {"txErrors", &PnicStats::txErrors},
    {"rxErrors", &PnicStats::rxErrors},
    {"txDropped", &PnicStats::txDropped},
    {"rxDropped", &PnicStats::rxDropped},
    {"rxMulticast", &PnicStats::rxMulticast},
    {"rxBroadcast", &PnicStats::rxBroadcast},
    {"txMulticast", &PnicStats::txMulticast},
    {"txBroadcast", &PnicStats::txBroadcast},
    {"rxLengthErrors", &PnicStats::rxLengthErrors},
    {"rxOverErrors", &PnicStats::rxOverErrors},
    {"rxCrcErrors", &PnicStats::rxCrcErrors},
    {"rxFrameErrors", &PnicStats::rxFrameErrors},
    {"rxFifoErrors", &PnicStats::rxFifoErrors},
    {"rxMissedErrors", &PnicStats::rxMissedErrors},
    {"txAbortedErrors", &PnicStats::txAbortedErrors},
    {"txFifoErrors", &PnicStats::txFifoErrors},
    {"txCarrierErrors", &PnicStats::txCarrierErrors},
    {"txHeartbeatErrors", &PnicStats::txHeartbeatErrors},
    {"txWindowErrors", &PnicStats::txWindowErrors},
};

constexpr Key<PnicCoalesceParams, std::uint32_t> kCoalesceKeys[] = {
    {"reserved0", &PnicCoalesceParams::reserved0},
    {"sampleIntervalSeconds", &PnicCoalesceParams::sampleIntervalSeconds},
    {"lowPacketRate", &PnicCoalesceParams::lowPacketRate},
    {"highPacketRate", &PnicCoalesceParams::highPacketRate},
    {"rxUsecs", &PnicCoalesceParams::rxUsecs},
    {"rxMaxFrames", &PnicCoalesceParams::rxMaxFrames},
    {"reserved1", &PnicCoalesceParams::reserved1},
    {"reserved2", &PnicCoalesceParams::reserved2},
    {"txUsecs", &PnicCoalesceParams::txUsecs},
    {"txMaxFrames", &PnicCoalesceParams::txMaxFrames},
    {"reserved3", &PnicCoalesceParams::reserved3},
    {"reserved4", &PnicCoalesceParams::reserved4},
    {"lowRxUsecs", &PnicCoalesceParams::lowRxUsecs},
    {"lowRxMaxFrames", &PnicCoalesceParams::lowRxMaxFrames},
    {"lowTxUsecs", &PnicCoalesceParams::lowTxUsecs},
    {"lowTxMaxFrames", &PnicCoalesceParams::lowTxMaxFrames},
    {"highRxUsecs", &PnicCoalesceParams::highRxUsecs},
    {"highRxMaxFrames", &PnicCoalesceParams::highRxMaxFrames},
    {"highTxUsecs", &PnicCoalesceParams::highTxUsecs},
    {"highTxMaxFrames", &PnicCoalesceParams::highTxMaxFrames},
};

constexpr Key<PnicOffloadParams, std::uint8_t> kOffloadKeys[] = {
    {"rxChecksum", &PnicOffloadParams::rxChecksum},
    {"txChecksum", &PnicOffloadParams::txChecksum},
    {"scatterGather", &PnicOffloadParams::scatterGather},
    {"tso", &PnicOffloadParams::tso},
    {"vlanInsert", &PnicOffloadParams::vlanInsert},
    {"vlanStrip", &PnicOffloadParams::vlanStrip},
};

constexpr Key<PnicSoftwareSimulation, std::uint8_t> kSoftwareKeys[] = {
    {"ipv4Cso", &PnicSoftwareSimulation::ipv4Cso},
    {"ipv4Tso", &PnicSoftwareSimulation::ipv4Tso},
    {"scatterGather", &PnicSoftwareSimulation::scatterGather},
    {"offsetBasedOffload", &PnicSoftwareSimulation::offsetBasedOffload},
    {"vxlanEncap", &PnicSoftwareSimulation::vxlanEncap},
    {"ipv6Tso", &PnicSoftwareSimulation::ipv6Tso},
    {"ipv6TsoExt", &PnicSoftwareSimulation::ipv6TsoExt},
    {"ipv6Cso", &PnicSoftwareSimulation::ipv6Cso},
    {"ipv6CsoExt", &PnicSoftwareSimulation::ipv6CsoExt},
    {"highDma", &PnicSoftwareSimulation::highDma},
    {"scatterGatherMp", &PnicSoftwareSimulation::scatterGatherMp},
    {"vlanTagging", &PnicSoftwareSimulation::vlanTagging},
    {"vlanUntagging", &PnicSoftwareSimulation::vlanUntagging},
    {"geneveOffload", &PnicSoftwareSimulation::geneveOffload},
};

constexpr Key<PnicRingParams, std::uint32_t> kRingKeys[] = {
    {"rx", &PnicRingParams::rx},
    {"rxMini", &PnicRingParams::rxMini},
    {"rxJumbo", &PnicRingParams::rxJumbo},
    {"tx", &PnicRingParams::tx},
};

template <class Record, class Member, std::size_t N>
void ReadNumbers(const Json& json, const Key<Record, Member> (&keys)[N], Record& record) {
    for (const auto& key : keys) {
        record.*key.member = json.value(key.name, Member{});
    }
}

template <class Record, class Member, std::size_t N>
Json WriteNumbers(const Key<Record, Member> (&keys)[N], const Record& record) {
    Json json = Json::object();
    for (const auto& key : keys) {
        json[key.name] = record.*key.member;
    }
    return json;
}

// Flags read and write as JSON bools.
template <class Record, std::size_t N>
void ReadFlags(const Json& json, const Key<Record, std::uint8_t> (&keys)[N], Record& record) {
    for (const auto& key : keys) {
        record.*key.member = json.value(key.name, false) ? 1 : 0;
    }
}

template <class Record, std::size_t N>
Json WriteFlags(const Key<Record, std::uint8_t> (&keys)[N], const Record& record) {
    Json json = Json::object();
    for (const auto& key : keys) {
        json[key.name] = record.*key.member != 0;
    }
    return json;
}

PnicCoalesceParams CoalesceFromJson(const Json& json) {
    PnicCoalesceParams params;
    params.useAdaptiveRx = json.value("useAdaptiveRx", false) ? 1 : 0;
    params.useAdaptiveTx = json.value("useAdaptiveTx", false) ? 1 : 0;
    ReadNumbers(json, kCoalesceKeys, params);
    return params;
}

Json CoalesceToJson(const PnicCoalesceParams& params) {
    Json json = {{"useAdaptiveRx", params.useAdaptiveRx != 0},
                 {"useAdaptiveTx", params.useAdaptiveTx != 0}};
    json.update(WriteNumbers(kCoalesceKeys, params));
    return json;
}

Json OffloadToJson(const Settings& settings) {
    Json json = WriteFlags(kOffloadKeys, settings.offload);
    json["engine"] = settings.offload.engine;
    Json capabilities = Json::array();
    for (std::size_t i = 0; i < kOffloadFlagCount; ++i) {
        if (settings.offloadCapabilities & (1u << i)) {
            capabilities.push_back(kOffloadKeys[i].name);
        }
    }
    json["capabilities"] = capabilities;
    return json;
}

void OffloadFromJson(const Json& json, Settings& settings) {
    ReadFlags(json, kOffloadKeys, settings.offload);
    settings.offload.engine = json.value("engine", "");
    settings.offloadCapabilities = 0;
    for (const auto& capability : json.value("capabilities", Json::array())) {
        const auto name = capability.get<std::string>();
        std::size_t i = 0;
        while (i < kOffloadFlagCount && name != kOffloadKeys[i].name) {
            ++i;
        }
        if (i == kOffloadFlagCount) {
            throw HostCtl::Lib::HostCtlException(
                "NIC " + settings.name + " names an unknown offload capability \"" + name + "\"");
        }
        settings.offloadCapabilities |= static_cast<std::uint8_t>(1u << i);
    }
}

Json VlanStatsToJson(const VlanCounters& counters) {
    Json vlans = Json::array();
    for (const auto& vlan : counters.vlans) {
        vlans.push_back({{"vlanId", vlan.vlanId},
                         {"rxPackets", vlan.rxPackets},
                         {"txPackets", vlan.txPackets}});
    }
    return {{"switch", counters.switchName}, {"vlans", vlans}};
}

VlanCounters VlanStatsFromJson(const Json& json) {
    VlanCounters counters;
    counters.switchName = json.at("switch").get<std::string>();
    for (const auto& vlan : json.value("vlans", Json::array())) {
        counters.vlans.push_back({vlan.at("vlanId").get<std::uint16_t>(),
                                  vlan.value("rxPackets", std::uint64_t{0}),
                                  vlan.value("txPackets", std::uint64_t{0})});
    }
    return counters;
}

std::string SelectSettings(const char* where) {
    return "SELECT " + ColumnNames(kColumns) + " FROM nic_settings " + where;
}

Settings ReadRow(const Statement& row) {
    SettingsRow stored;
    ReadColumns(row, 0, kColumns, stored);
    Json json = Json::object();
    ColumnsToJson(kColumns, stored, json);
    return FromJson(json);
}

}  // namespace

std::uint8_t& SoftwareFlag(PnicSoftwareSimulation& settings, std::size_t i) {
    return settings.*kSoftwareKeys[i].member;
}

std::uint8_t SoftwareFlag(const PnicSoftwareSimulation& settings, std::size_t i) {
    return settings.*kSoftwareKeys[i].member;
}

std::uint32_t& RingSize(PnicRingParams& params, std::size_t i) {
    return params.*kRingKeys[i].member;
}

std::uint32_t RingSize(const PnicRingParams& params, std::size_t i) {
    return params.*kRingKeys[i].member;
}

std::uint8_t& OffloadFlag(PnicOffloadParams& params, std::size_t i) {
    return params.*kOffloadKeys[i].member;
}

std::uint8_t OffloadFlag(const PnicOffloadParams& params, std::size_t i) {
    return params.*kOffloadKeys[i].member;
}

Settings FromJson(const Json& json) {
    Settings settings;
    settings.name = json.at("name").get<std::string>();
    const Json none = Json::object();
    auto member = [&json, &none](const char* key) -> const Json& {
        auto found = json.find(key);
        return found == json.end() || found->is_null() ? none : *found;
    };
    ReadNumbers(member("stats"), kStatsKeys, settings.stats);
    const auto driverCounters = member("stats").value("driverCounters", Json::array());
    for (std::size_t i = 0;
         i < driverCounters.size() && i < std::size(settings.stats.driverCounters); ++i) {
        settings.stats.driverCounters[i] = driverCounters[i].get<std::uint64_t>();
    }
    if (auto vlanStats = json.find("vlanStats"); vlanStats != json.end() && !vlanStats->is_null()) {
        settings.vlanStats = VlanStatsFromJson(*vlanStats);
    }
    if (auto coalesce = json.find("coalesce"); coalesce != json.end() && !coalesce->is_null()) {
        settings.coalesce = CoalesceFromJson(*coalesce);
    }
    OffloadFromJson(member("offload"), settings);
    ReadFlags(member("software"), kSoftwareKeys, settings.software);
    ReadNumbers(member("rings").value("maximum", Json::object()), kRingKeys, settings.ringMaximum);
    ReadNumbers(member("rings").value("current", Json::object()), kRingKeys, settings.ringCurrent);
    return settings;
}

Json ToJson(const Settings& settings) {
    Json stats = WriteNumbers(kStatsKeys, settings.stats);
    stats["driverCounters"] = settings.stats.driverCounters;
    Json json = {{"name", settings.name}, {"stats", stats}};
    if (settings.vlanStats) {
        json["vlanStats"] = VlanStatsToJson(*settings.vlanStats);
    }
    if (settings.coalesce) {
        json["coalesce"] = CoalesceToJson(*settings.coalesce);
    }
    json["offload"] = OffloadToJson(settings);
    json["software"] = WriteFlags(kSoftwareKeys, settings.software);
    json["rings"] = {{"maximum", WriteNumbers(kRingKeys, settings.ringMaximum)},
                     {"current", WriteNumbers(kRingKeys, settings.ringCurrent)}};
    return json;
}

Settings Load(Database& database, const std::string& name) {
    static const std::string sql = SelectSettings("WHERE name = ?1");
    auto query = database.Query(sql.c_str());
    query.Bind(1, name);
    if (!query.Step()) {
        Settings settings;
        settings.name = name;
        return settings;
    }
    return ReadRow(query);
}

std::vector<Settings> LoadAll(Database& database) {
    static const std::string sql = SelectSettings("ORDER BY position");
    std::vector<Settings> all;
    auto query = database.Query(sql.c_str());
    while (query.Step()) {
        all.push_back(ReadRow(query));
    }
    return all;
}

void Save(Database& database, const Settings& settings) {
    static const std::string sql = InsertStatement("nic_settings", kColumns) +
                                   " ON CONFLICT (name) DO UPDATE SET " +
                                   ColumnAssignments(std::span(kColumns).subspan(1), 2);
    SettingsRow row;
    ColumnsFromJson(kColumns, ToJson(settings), row);
    auto save = database.Query(sql.c_str());
    BindColumns(save, 1, kColumns, row);
    save.Run();
}

}  // namespace HostSim::NicSettings
