// The switching subject: the vswitch, vswitch_uplink and vswitch_portgroup tables and the
// "vswitches" section of a profile.

#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/vswitch/VswitchRules.h"
#include "hostsim/vswitch/VswitchStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using KelmCtl::Network::PortGroupRecord;
using Vswitch::Policies;
using Vswitch::SwitchRecord;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE vswitch ("
    " position INTEGER PRIMARY KEY,"
    " name TEXT NOT NULL UNIQUE,"
    " system INTEGER NOT NULL, class TEXT NOT NULL, ports INTEGER NOT NULL,"
    " mtu INTEGER NOT NULL, cdp_status INTEGER NOT NULL,"
    " beacon_enabled INTEGER NOT NULL, beacon_interval INTEGER NOT NULL,"
    " beacon_threshold INTEGER NOT NULL,"
    " teaming TEXT NOT NULL, security TEXT NOT NULL, shaping TEXT NOT NULL);"
    "CREATE TABLE vswitch_uplink ("
    " position INTEGER PRIMARY KEY,"
    " vswitch TEXT NOT NULL, nic TEXT NOT NULL UNIQUE);"
    "CREATE TABLE vswitch_portgroup ("
    " position INTEGER PRIMARY KEY,"
    " name TEXT NOT NULL UNIQUE, vswitch TEXT NOT NULL, vlan_id INTEGER NOT NULL,"
    " users TEXT NOT NULL,"
    " teaming TEXT NOT NULL, security TEXT NOT NULL, shaping TEXT NOT NULL);"
    "CREATE INDEX vswitch_portgroup_by_switch ON vswitch_portgroup (vswitch);",
    // A switch's uplinks are read by its name, without a pass over every switch's.
    "CREATE INDEX vswitch_uplink_by_switch ON vswitch_uplink (vswitch);",
};

constexpr const char* kTables[] = {"vswitch_portgroup", "vswitch_uplink", "vswitch"};

constexpr char kDefaultClass[] = "etherswitch";

Policies PoliciesFromJson(const Json& json) {
    return {Vswitch::TeamingFromJson(ObjectMember(json, "teaming")),
            Vswitch::SecurityFromJson(ObjectMember(json, "security")),
            Vswitch::ShapingFromJson(ObjectMember(json, "shaping"))};
}

Json PoliciesToJson(const Policies& policies) {
    Json json = Json::object();
    const auto addIfAny = [&json](const char* key, Json policy) {
        if (!policy.empty()) {
            json[key] = std::move(policy);
        }
    };
    addIfAny("teaming", Vswitch::TeamingToJson(policies.teaming));
    addIfAny("security", Vswitch::SecurityToJson(policies.security));
    addIfAny("shaping", Vswitch::ShapingToJson(policies.shaping));
    return json;
}

struct SwitchEntry {
    SwitchRecord record;
    std::vector<PortGroupRecord> portGroups;
};

SwitchEntry EntryFromJson(const Json& json) {
    SwitchEntry entry;
    SwitchRecord& record = entry.record;
    record.name = json.at("name").get<std::string>();
    record.system = json.value("system", false);
    record.className = json.value("class", kDefaultClass);
    record.ports = json.value("ports", HostCtl::Network::Portset::DEF_NUM_PORTS);
    record.mtu = json.value("mtu", 1500u);
    record.cdpStatus = json.value("cdpStatus", 1);
    const Json& beacon = ObjectMember(json, "beacon");
    record.beaconEnabled = beacon.value("enabled", false);
    record.beaconInterval = beacon.value("interval", 1u);
    record.beaconThreshold = beacon.value("threshold", 3u);
    record.uplinks = json.value("uplinks", std::vector<std::string>{});
    record.own = PoliciesFromJson(ObjectMember(json, "policies"));
    Vswitch::CheckSwitchSettings(record);
    for (const Json& portGroupJson : ArrayMember(json, "portGroups")) {
        PortGroupRecord portGroup;
        portGroup.name = portGroupJson.at("name").get<std::string>();
        portGroup.switchName = record.name;
        portGroup.vlanId =
            static_cast<std::uint16_t>(Vswitch::CheckVlanId(portGroupJson.value("vlanId", 0)));
        portGroup.users = portGroupJson.value("users", std::vector<std::string>{});
        portGroup.own = PoliciesFromJson(ObjectMember(portGroupJson, "policies"));
        entry.portGroups.push_back(std::move(portGroup));
    }
    return entry;
}

std::vector<std::string> ScaledNames(const Scale& scale, const std::vector<std::string>& names,
                                     unsigned copy) {
    std::vector<std::string> scaled;
    for (const std::string& name : names) {
        scaled.push_back(scale.Name(name, copy));
    }
    return scaled;
}

void ScalePolicies(const Scale& scale, Policies& policies, unsigned copy) {
    policies.teaming.uplinkOrder = ScaledNames(scale, policies.teaming.uplinkOrder, copy);
}

void ImportSwitches(Database& database, const Json& section, const Scale& scale) {
    std::vector<SwitchEntry> entries;
    for (const Json& json : section) {
        entries.push_back(EntryFromJson(json));
    }
    std::set<std::string> switchNames;
    std::set<std::string> portGroupNames;
    std::set<std::string> uplinks;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const SwitchEntry& entry : entries) {
            SwitchRecord record = entry.record;
            record.name = scale.Name(record.name, copy);
            ScalePolicies(scale, record.own, copy);
            if (!switchNames.insert(record.name).second) {
                throw HostCtlException("The profile has more than one virtual switch named " +
                                       record.name);
            }
            Vswitch::InsertSwitch(database, record);
            for (const std::string& uplink : ScaledNames(scale, record.uplinks, copy)) {
                if (!uplinks.insert(uplink).second) {
                    throw HostCtlException("The profile gives NIC " + uplink +
                                           " to more than one virtual switch");
                }
                Vswitch::InsertUplink(database, record.name, uplink);
            }
            for (PortGroupRecord portGroup : entry.portGroups) {
                portGroup.name = Vswitch::PortGroupCopyName(scale, portGroup.name, copy);
                portGroup.switchName = record.name;
                portGroup.users = ScaledNames(scale, portGroup.users, copy);
                ScalePolicies(scale, portGroup.own, copy);
                if (!portGroupNames.insert(portGroup.name).second) {
                    throw HostCtlException("The profile has more than one port group named " +
                                           portGroup.name);
                }
                Vswitch::InsertPortGroup(database, portGroup);
            }
        }
    }
}

Json ExportSwitches(Database& database) {
    Json section = Json::array();
    for (const SwitchRecord& record : Vswitch::LoadSwitches(database, std::nullopt)) {
        Json json = {{"name", record.name}};
        if (record.system) {
            json["system"] = true;
        }
        json["class"] = record.className;
        json["ports"] = record.ports;
        json["mtu"] = record.mtu;
        json["cdpStatus"] = record.cdpStatus;
        json["beacon"] = {{"enabled", record.beaconEnabled},
                          {"interval", record.beaconInterval},
                          {"threshold", record.beaconThreshold}};
        json["uplinks"] = record.uplinks;
        json["policies"] = PoliciesToJson(record.own);
        Json portGroups = Json::array();
        for (const PortGroupRecord& portGroup : Vswitch::LoadPortGroupsOf(database, record.name)) {
            portGroups.push_back({{"name", portGroup.name},
                                  {"vlanId", portGroup.vlanId},
                                  {"users", portGroup.users},
                                  {"policies", PoliciesToJson(portGroup.own)}});
        }
        json["portGroups"] = std::move(portGroups);
        section.push_back(std::move(json));
    }
    return section;
}

}  // namespace

namespace Vswitch {

std::string PortGroupCopyName(const Scale& scale, const std::string& name, unsigned copy) {
    std::string scaled = scale.Name(name, copy);
    if (copy == 0 || scaled != name) {
        return scaled;
    }
    return name + " " + std::to_string(copy);
}

}  // namespace Vswitch

extern const Subject vswitchSubject;
const Subject vswitchSubject = {
    .name = "vswitches",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Vswitch::kDefaultSection,
    .importSection = ImportSwitches,
    .exportSection = ExportSwitches,
};

}  // namespace HostSim
