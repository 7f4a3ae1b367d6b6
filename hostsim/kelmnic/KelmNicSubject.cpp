// The Kelm interface subject: the kelmnic table and the "kelmnics" section of a profile.
#include <algorithm>
#include <map>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/MacAddress.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Subject.h"
#include "hostsim/dvs/DvsStore.h"
#include "hostsim/kelmnic/KelmNicStore.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/KelmNicInfoImpl.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::ConnectionPoint;
using HostCtl::Network::IpConfig;
using KelmCtl::Network::KelmNicRecord;

constexpr const char* kKelmNicSchemaSteps[] = {
    "CREATE TABLE kelmnic ("
    " position INTEGER PRIMARY KEY,"
    " name TEXT NOT NULL UNIQUE, netstack TEXT NOT NULL, system INTEGER NOT NULL,"
    " mac TEXT NOT NULL, mtu INTEGER NOT NULL, tso_mss INTEGER NOT NULL,"
    " rx_queues INTEGER NOT NULL, enabled INTEGER NOT NULL, port_id INTEGER NOT NULL,"
    " cp_type INTEGER NOT NULL, portset TEXT NOT NULL, portgroup TEXT NOT NULL,"
    " dvs_id TEXT NOT NULL, dvport TEXT NOT NULL, connection_id INTEGER NOT NULL,"
    " opaque TEXT, tags TEXT NOT NULL, net_dump INTEGER NOT NULL,"
    " ip_config TEXT NOT NULL, configured_ip_config TEXT NOT NULL)",
};
constexpr const char* kKelmNicTables[] = {"kelmnic"};

std::vector<HostCtl::Network::KelmNicTagType> TagsFromJson(const Json& json,
                                                           const std::string& name) {
    std::vector<HostCtl::Network::KelmNicTagType> tags;
    for (const Json& tagJson : json) {
        const std::string tagName = tagJson.get<std::string>();
        const auto tag = Ip::TagOfName(tagName);
        if (*KelmCtl::Network::KelmNicTagIdToName(tag) == '\0') {
            throw HostCtlException("Kelm interface " + name + " has an unknown tag " + tagName);
        }
        tags.push_back(tag);
    }
    return tags;
}

KelmNicRecord KelmNicFromJson(const Json& json) {
    KelmNicRecord record;
    record.name = json.at("name").get<std::string>();
    CheckObjectName(record.name, "Kelm interface");
    record.netstack = json.value("netstack", Ip::kDefaultNetstack);
    record.system = json.value("system", false);
    record.mac = json.at("mac").get<std::string>();
    if (!HostCtl::Network::MacAddress::IsValid(record.mac)) {
        throw HostCtlException("Kelm interface " + record.name + " has an invalid MAC address \"" +
                               record.mac + "\"");
    }
    record.mac = HostCtl::Network::MacAddress(record.mac).GetStringAddress();
    record.mtu = json.value("mtu", Ip::kDefaultMtu);
    Ip::CheckMtu(record.mtu);
    record.tsoMss = json.value("tsoMss", Ip::kDefaultTsoMss);
    record.rxQueues = json.value("rxQueues", 1u);
    record.enabled = json.value("enabled", true);
    record.portId = json.value("portId", 0u);
    const Json& connection = ObjectMember(json, "connection");
    if (connection.contains("portGroup")) {
        record.connectionType = ConnectionPoint::kPortGroup;
        record.portGroup = connection.at("portGroup").get<std::string>();
    } else if (connection.contains("dvs")) {
        record.connectionType = ConnectionPoint::kDVPort;
        record.portset = connection.at("dvs").get<std::string>();
        record.dvPort = connection.at("dvPort").get<std::string>();
        record.connectionId = connection.value("connectionId", 0u);
    } else if (connection.contains("opaqueNetwork")) {
        const Json& opaque = connection.at("opaqueNetwork");
        record.connectionType = ConnectionPoint::kOpaqueNetwork;
        record.portset = connection.value("portset", "");
        record.opaque = {opaque.value("id", ""), opaque.value("type", ""),
                         opaque.value("externalId", "")};
    } else if (!connection.empty()) {
        throw HostCtlException("Kelm interface " + record.name +
                               " has a connection of no known kind");
    }
    record.tags = TagsFromJson(ArrayMember(json, "tags"), record.name);
    const Json& netDump = ObjectMember(json, "netDump");
    record.netDumper = netDump.value("dumper", false);
    record.ipv6ReadyPrimary = netDump.value("ipv6ReadyPrimary", false);
    record.ipv6ReadySecondary = netDump.value("ipv6ReadySecondary", false);
    const Json& ipConfig = ObjectMember(json, "ipConfig");
    try {
        const auto inForce = Ip::IpConfigFromJson(ipConfig);
        const auto configured = Ip::IpConfigFromJson(json.value("configuredIpConfig", ipConfig));
        Ip::CheckIpConfig(inForce, record.name);
        Ip::CheckIpConfig(configured, record.name);
        record.ipConfig = Ip::IpConfigToJson(inForce).dump();
        record.configuredIpConfig = Ip::IpConfigToJson(configured).dump();
    } catch (const HostCtlException& e) {
        throw HostCtlException("Kelm interface " + record.name + ": " + e.what());
    }
    return record;
}

Json KelmNicToJson(const KelmNicRecord& record) {
    Json json = {{"name", record.name}, {"netstack", record.netstack}};
    if (record.system) {
        json["system"] = true;
    }
    json["mac"] = record.mac;
    json["mtu"] = record.mtu;
    json["tsoMss"] = record.tsoMss;
    json["rxQueues"] = record.rxQueues;
    json["enabled"] = record.enabled;
    json["portId"] = record.portId;
    if (record.connectionType == ConnectionPoint::kPortGroup) {
        json["connection"] = {{"portGroup", record.portGroup}};
    } else if (record.connectionType == ConnectionPoint::kDVPort) {
        json["connection"] = {{"dvs", record.portset},
                              {"dvPort", record.dvPort},
                              {"connectionId", record.connectionId}};
    } else if (record.connectionType == ConnectionPoint::kOpaqueNetwork) {
        json["connection"] = {{"portset", record.portset},
                              {"opaqueNetwork",
                               {{"id", record.opaque.opaqueNetworkId},
                                {"type", record.opaque.opaqueNetworkType},
                                {"externalId", record.opaque.externalId}}}};
    }
    Json tags = Json::array();
    for (const auto tag : record.tags) {
        tags.push_back(KelmCtl::Network::KelmNicTagIdToName(tag));
    }
    json["tags"] = std::move(tags);
    json["netDump"] = {{"dumper", record.netDumper},
                       {"ipv6ReadyPrimary", record.ipv6ReadyPrimary},
                       {"ipv6ReadySecondary", record.ipv6ReadySecondary}};
    json["ipConfig"] = Json::parse(record.ipConfig);
    if (record.configuredIpConfig != record.ipConfig) {
        json["configuredIpConfig"] = Json::parse(record.configuredIpConfig);
    }
    return json;
}

// An IP configuration without the static IPv4 address it may give.
std::string WithoutStaticIpv4Address(const std::string& ipConfig) {
    IpConfig config = Ip::IpConfigFromJson(Json::parse(ipConfig));
    if (!Ip::StaticIpv4Address(config)) {
        return ipConfig;
    }
    config.SetIpv4UseNone();
    return Ip::IpConfigToJson(config).dump();
}

// Copy `copy` of an interface: its own name, MAC address and port, on the copies of its
// netstack and port group. A static IPv4 address belongs to one interface of an instance, so
// a copy in its original's instance has none.
KelmNicRecord ScaledKelmNic(KelmNicRecord record, const Scale& scale, unsigned copy) {
    record.name = scale.Name(record.name, copy);
    if (copy > 0 && scale.Name(record.netstack, copy) == record.netstack) {
        record.ipConfig = WithoutStaticIpv4Address(record.ipConfig);
        record.configuredIpConfig = WithoutStaticIpv4Address(record.configuredIpConfig);
    }
    record.netstack = scale.Name(record.netstack, copy);
    record.mac = Scale::MacAddress(record.mac, copy);
    if (record.portId != 0) {
        record.portId += copy * 0x10000u;
    }
    if (record.connectionType == ConnectionPoint::kPortGroup) {
        record.portGroup = Vswitch::PortGroupCopyName(scale, record.portGroup, copy);
    } else if (record.connectionType == ConnectionPoint::kDVPort) {
        record.portset = scale.Name(record.portset, copy);
    }
    return record;
}

// Attaches an imported interface to its DVPort, which must exist, and makes it the port's
// client.
void AttachImportedToDVPort(Database& database, KelmNicRecord& record) {
    auto dvs = Dvs::LoadSwitch(database, record.portset);
    const bool hasPort =
        dvs && std::any_of(dvs->dvports.begin(), dvs->dvports.end(),
                           [&record](const auto& port) { return port.id == record.dvPort; });
    if (!hasPort) {
        throw HostCtlException("Kelm interface " + record.name + " is on DVPort " + record.dvPort +
                               " of " + record.portset + ", which the host does not have");
    }
    record.dvsId = dvs->id;
    Ip::AddDVPortClient(database, record.dvsId, record.dvPort, record.name);
}

// Attaches an imported interface to its port group or DVPort, which must exist, and makes it
// one of its users.
void AttachImported(Database& database, KelmNicRecord& record) {
    if (record.connectionType == ConnectionPoint::kDVPort) {
        AttachImportedToDVPort(database, record);
        return;
    }
    if (record.connectionType != ConnectionPoint::kPortGroup) {
        return;
    }
    auto group = Vswitch::LoadPortGroup(database, record.portGroup);
    if (!group) {
        throw HostCtlException("Kelm interface " + record.name + " is on port group " +
                               record.portGroup + ", which the host does not have");
    }
    record.portset = group->switchName;
    Ip::AddPortGroupUser(database, record.portGroup, record.name);
}

void ImportKelmNics(Database& database, const Json& section, const Scale& scale) {
    std::vector<KelmNicRecord> records;
    for (const Json& json : section) {
        records.push_back(KelmNicFromJson(json));
    }
    std::set<std::string> names;
    std::set<std::string> macs;
    // Static IPv4 addresses in force, by netstack, with the interface that has each.
    std::map<std::pair<std::string, std::uint32_t>, std::string> addresses;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const KelmNicRecord& original : records) {
            KelmNicRecord record = ScaledKelmNic(original, scale, copy);
            if (const auto address =
                    Ip::StaticIpv4Address(Ip::IpConfigFromJson(Json::parse(record.ipConfig)))) {
                auto [user, added] =
                    addresses.try_emplace({record.netstack, address->GetValue()}, record.name);
                if (!added) {
                    Ip::RefuseIpv4AddressInUse(*address, user->second, record.netstack);
                }
            }
            if (!names.insert(record.name).second) {
                throw HostCtlException("The profile has more than one Kelm interface named " +
                                       record.name);
            }
            if (!macs.insert(record.mac).second) {
                throw HostCtlException("The profile gives the MAC address " + record.mac +
                                       " to more than one Kelm interface");
            }
            if (!Ip::LoadNetstack(database, record.netstack)) {
                throw HostCtlException("Kelm interface " + record.name + " is in netstack " +
                                       record.netstack + ", which the host does not have");
            }
            AttachImported(database, record);
            Ip::InsertKelmNic(database, record);
        }
    }
}

Json ExportKelmNics(Database& database) {
    return JsonArrayOf(Ip::LoadKelmNics(database, {}), KelmNicToJson);
}

}  // namespace

extern const Subject kelmnicSubject;
const Subject kelmnicSubject = {
    .name = "kelmnics",
    .schemaSteps = kKelmNicSchemaSteps,
    .tables = kKelmNicTables,
    .defaultSection = Ip::kDefaultKelmNics,
    .importSection = ImportKelmNics,
    .exportSection = ExportKelmNics,
};

}  // namespace HostSim
