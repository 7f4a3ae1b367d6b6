// The distributed-switch subject: the dvs and dvs_uplink tables and the "dvswitches" section of
// a profile. A switch's DVPorts and LAGs are JSON columns of its row: they are read with the
// switch and written back whole.
#include <algorithm>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Subject.h"
#include "hostsim/dvs/DvsStore.h"
#include "hostsim/nic/NicStore.h"
#include "hostsim/vswitch/VswitchRules.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace HostSim {

namespace {

using Dvs::Lag;
using Dvs::LagNic;
using HostCtl::Lib::HostCtlException;
using KelmCtl::Network::DVPortRecord;
using KelmCtl::Network::DVSwitchRecord;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE dvs ("
    " position INTEGER PRIMARY KEY,"
    " name TEXT NOT NULL UNIQUE, id TEXT NOT NULL UNIQUE,"
    " class TEXT NOT NULL, ports INTEGER NOT NULL, mtu INTEGER NOT NULL,"
    " cdp_status INTEGER NOT NULL, beacon_timeout INTEGER NOT NULL,"
    " branded INTEGER NOT NULL, opaque INTEGER NOT NULL, lacp_on_dpu INTEGER NOT NULL,"
    " dvports TEXT NOT NULL, lags TEXT NOT NULL);"
    "CREATE TABLE dvs_uplink ("
    " position INTEGER PRIMARY KEY,"
    " dvs TEXT NOT NULL, nic TEXT NOT NULL UNIQUE, dvport TEXT NOT NULL);",
    // A switch's uplinks are read by its name, without a pass over every switch's.
    "CREATE INDEX dvs_uplink_by_switch ON dvs_uplink (dvs);",
};

constexpr const char* kTables[] = {"dvs_uplink", "dvs"};

constexpr char kDefaultClass[] = "distswitch";

void CheckText(const std::string& text, const std::string& what, const std::string& owner) {
    if (text.size() > Dvs::kLacpTextWidth) {
        throw HostCtlException(owner + ": " + what + " \"" + text + "\" is longer than " +
                               std::to_string(Dvs::kLacpTextWidth) + " bytes");
    }
}

void CheckLags(const DVSwitchRecord& record) {
    std::set<std::uint32_t> ids;
    for (const Lag& lag : record.lags) {
        const std::string owner = "LAG " + std::to_string(lag.id) + " of " + record.name;
        if (!ids.insert(lag.id).second) {
            throw HostCtlException("Distributed switch " + record.name +
                                   " has more than one LAG with id " + std::to_string(lag.id));
        }
        CheckObjectName(lag.name, "LAG");
        if (lag.mode != 1 && lag.mode != 2) {
            throw HostCtlException(owner + " has an unknown mode " + std::to_string(lag.mode) +
                                   " (1 active, 2 passive)");
        }
        if (lag.loadBalance < 0 || lag.loadBalance >= Dvs::kLoadBalanceCount) {
            throw HostCtlException(owner + " has an unknown load balancing " +
                                   std::to_string(lag.loadBalance) + " (0-20)");
        }
        std::set<std::string> nics;
        for (const LagNic& nic : lag.nics) {
            const bool isUplink =
                std::any_of(record.uplinks.begin(), record.uplinks.end(),
                            [&nic](const auto& uplink) { return uplink.first == nic.nic; });
            if (!isUplink) {
                throw HostCtlException(owner + " runs on NIC " + nic.nic +
                                       ", which is no uplink of the switch");
            }
            if (!nics.insert(nic.nic).second) {
                throw HostCtlException(owner + " lists NIC " + nic.nic + " twice");
            }
            CheckText(nic.nic, "NIC name", owner);
            CheckText(nic.state, "state", owner);
            CheckText(nic.flags, "flags", owner);
            CheckText(nic.partner.deviceId, "partner device id", owner);
            CheckText(nic.partner.flags, "partner flags", owner);
        }
    }
}

DVSwitchRecord RecordFromJson(const Json& json) {
    DVSwitchRecord record;
    record.name = json.at("name").get<std::string>();
    record.id = json.at("id").get<std::string>();
    record.className = json.value("class", kDefaultClass);
    record.ports = json.value("ports", 128u);
    record.mtu = json.value("mtu", 1500u);
    record.cdpStatus = json.value("cdpStatus", 1);
    record.beaconTimeout = json.value("beaconTimeout", -1);
    record.zanvexBranded = json.value("zanvexBranded", true);
    record.opaque = json.value("opaque", false);
    record.lacpOnDpu = json.value("lacpStateOnDpu", false);
    for (const Json& port : ArrayMember(json, "dvports")) {
        record.dvports.push_back(Dvs::DVPortFromJson(port));
    }
    for (const Json& uplink : ArrayMember(json, "uplinks")) {
        record.uplinks.emplace_back(uplink.at("nic").get<std::string>(),
                                    uplink.at("dvport").get<std::string>());
    }
    for (const Json& lag : ArrayMember(json, "lags")) {
        record.lags.push_back(Dvs::LagFromJson(lag));
    }
    std::sort(record.lags.begin(), record.lags.end(),
              [](const Lag& a, const Lag& b) { return a.id < b.id; });
    CheckObjectName(record.name, "distributed switch");
    if (record.id.empty()) {
        throw HostCtlException("Distributed switch " + record.name + " has no id");
    }
    Vswitch::CheckMtu(record.mtu);
    Vswitch::CheckCdpStatus(record.cdpStatus);
    if (record.ports < record.dvports.size()) {
        throw HostCtlException("Distributed switch " + record.name + " has " +
                               std::to_string(record.dvports.size()) + " DVPorts but only " +
                               std::to_string(record.ports) + " ports");
    }
    std::set<std::string> portIds;
    for (const DVPortRecord& port : record.dvports) {
        if (port.id.empty() || !portIds.insert(port.id).second) {
            throw HostCtlException("Distributed switch " + record.name +
                                   " has an empty or repeated DVPort id \"" + port.id + "\"");
        }
    }
    std::set<std::string> uplinkPorts;
    for (const auto& [nic, dvport] : record.uplinks) {
        if (portIds.count(dvport) == 0 || !uplinkPorts.insert(dvport).second) {
            throw HostCtlException("Uplink " + nic + " of " + record.name + " is on DVPort \"" +
                                   dvport + "\", which the switch lacks or another uplink holds");
        }
    }
    CheckLags(record);
    return record;
}

// Copy k of a switch's identity: its last four hex digits advanced by k.
std::string ScaledId(const std::string& id, unsigned copy) {
    if (copy == 0 || id.size() < 4) {
        return id + (copy == 0 ? "" : "-" + std::to_string(copy));
    }
    const unsigned long tail = std::stoul(id.substr(id.size() - 4), nullptr, 16);
    return id.substr(0, id.size() - 4) + HostCtl::Misc::StrPrintf("%04lx", (tail + copy) & 0xffff);
}

void ImportSwitches(Database& database, const Json& section, const Scale& scale) {
    std::vector<DVSwitchRecord> records;
    for (const Json& json : section) {
        records.push_back(RecordFromJson(json));
    }
    std::set<std::string> names;
    std::set<std::string> ids;
    const std::vector<std::string> standardUplinks = Vswitch::UplinkNicNames(database);
    std::set<std::string> uplinks(standardUplinks.begin(), standardUplinks.end());
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (DVSwitchRecord record : records) {
            record.name = scale.Name(record.name, copy);
            record.id = ScaledId(record.id, copy);
            if (!names.insert(record.name).second || Vswitch::SwitchExists(database, record.name)) {
                throw HostCtlException("The profile has more than one switch named " + record.name);
            }
            if (!ids.insert(record.id).second) {
                throw HostCtlException("The profile has more than one distributed switch with id " +
                                       record.id);
            }
            for (auto& [nic, dvport] : record.uplinks) {
                nic = scale.Name(nic, copy);
                if (!Nic::Load(database, nic)) {
                    throw HostCtlException("Uplink " + nic + " of " + record.name +
                                           " is no NIC of this host");
                }
                if (!uplinks.insert(nic).second) {
                    throw HostCtlException("The profile gives NIC " + nic +
                                           " to more than one switch");
                }
            }
            for (DVPortRecord& port : record.dvports) {
                for (std::string& client : port.clients) {
                    client = scale.Name(client, copy);
                }
            }
            for (Lag& lag : record.lags) {
                for (LagNic& nic : lag.nics) {
                    nic.nic = scale.Name(nic.nic, copy);
                }
            }
            Dvs::InsertSwitch(database, record);
        }
    }
}

Json ExportSwitches(Database& database) {
    Json section = Json::array();
    for (const DVSwitchRecord& record : Dvs::LoadSwitches(database, std::nullopt)) {
        Json json = {{"name", record.name},
                     {"id", record.id},
                     {"class", record.className},
                     {"ports", record.ports},
                     {"mtu", record.mtu},
                     {"cdpStatus", record.cdpStatus},
                     {"beaconTimeout", record.beaconTimeout},
                     {"zanvexBranded", record.zanvexBranded},
                     {"opaque", record.opaque},
                     {"lacpStateOnDpu", record.lacpOnDpu}};
        Json uplinks = Json::array();
        for (const auto& [nic, dvport] : record.uplinks) {
            uplinks.push_back({{"nic", nic}, {"dvport", dvport}});
        }
        json["uplinks"] = std::move(uplinks);
        Json dvports = Json::array();
        for (const DVPortRecord& port : record.dvports) {
            dvports.push_back(Dvs::DVPortToJson(port));
        }
        json["dvports"] = std::move(dvports);
        Json lags = Json::array();
        for (const Lag& lag : record.lags) {
            lags.push_back(Dvs::LagToJson(lag));
        }
        json["lags"] = std::move(lags);
        section.push_back(std::move(json));
    }
    return section;
}

}  // namespace

extern const Subject dvsSubject;
const Subject dvsSubject = {
    .name = "dvswitches",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Dvs::kDefaultSection,
    .importSection = ImportSwitches,
    .exportSection = ExportSwitches,
};

}  // namespace HostSim
