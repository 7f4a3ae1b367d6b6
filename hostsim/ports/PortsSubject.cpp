// The ports subject: the port_world and port tables and the "ports" section of a profile:
// the host's worlds by number, and the ports of every kind of switch.
#include <algorithm>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/IpAddress.h"
#include "hostctl/MacAddress.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Subject.h"
#include "hostsim/dvs/DvsStore.h"
#include "hostsim/ports/PortsStore.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/PortImpl.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using KelmCtl::Network::PortImpl;
using KelmCtl::Network::PortRecord;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE port_world (position INTEGER PRIMARY KEY, id INTEGER NOT NULL UNIQUE,"
    " name TEXT NOT NULL);"
    "CREATE TABLE port ("
    " position INTEGER PRIMARY KEY,"
    " id INTEGER NOT NULL UNIQUE, switch TEXT NOT NULL, type INTEGER NOT NULL,"
    " world INTEGER NOT NULL, portgroup TEXT NOT NULL, dvport TEXT NOT NULL,"
    " macs TEXT NOT NULL, ip TEXT NOT NULL, team_uplink TEXT NOT NULL,"
    " stats TEXT NOT NULL, filters TEXT NOT NULL);"
    "CREATE INDEX port_by_switch ON port (switch, id);",
};

constexpr const char* kTables[] = {"port", "port_world"};

struct World {
    std::uint32_t id = 0;
    std::string name;
};

// What a switch of a port offers it: its kind, uplinks, port groups or DVPorts.
struct SwitchView {
    bool distributed = false;
    std::uint32_t ports = 0;
    std::vector<std::string> uplinks;
    std::vector<std::string> attachments;
};

std::optional<SwitchView> ViewSwitch(Database& database, const std::string& name) {
    SwitchView view;
    if (auto standard = Vswitch::LoadSwitch(database, name, std::nullopt)) {
        view.ports = standard->ports;
        view.uplinks = standard->uplinks;
        for (const auto& portGroup : Vswitch::LoadPortGroupsOf(database, name)) {
            view.attachments.push_back(portGroup.name);
        }
        return view;
    }
    if (auto distributed = Dvs::LoadSwitch(database, name)) {
        view.distributed = true;
        view.ports = distributed->ports;
        for (const auto& uplink : distributed->uplinks) {
            view.uplinks.push_back(uplink.first);
        }
        for (const auto& port : distributed->dvports) {
            view.attachments.push_back(port.id);
        }
        return view;
    }
    return std::nullopt;
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

PortRecord PortFromJson(const Json& json) {
    PortRecord record;
    record.id = json.at("id").get<std::uint32_t>();
    record.switchName = json.at("switch").get<std::string>();
    record.type = json.value("type", PortImpl::kTypeVirtualNic);
    record.world = json.value("world", 0u);
    record.portGroup = json.value("portgroup", "");
    record.dvport = json.value("dvport", "");
    record.macs = json.value("macs", std::vector<std::string>{});
    record.ip = json.value("ip", "0.0.0.0");
    record.teamUplink = json.value("teamUplink", "");
    const Json& stats = ObjectMember(json, "stats");
    record.stats =
        Json{{"packets",
              Ports::PacketStatsToJson(Ports::PacketStatsFromJson(ObjectMember(stats, "packets")))},
             {"bytes",
              Ports::ByteStatsToJson(Ports::ByteStatsFromJson(ObjectMember(stats, "bytes")))}}
            .dump();
    Json filters = Json::array();
    for (const Json& filter : ArrayMember(json, "filters")) {
        filters.push_back(Ports::FilterToJson(Ports::FilterFromJson(filter)));
    }
    record.filters = filters.dump();
    return record;
}

void CheckPort(Database& database, const PortRecord& record,
               const std::set<std::uint32_t>& worlds) {
    const std::string owner = "Port " + std::to_string(record.id);
    const auto view = ViewSwitch(database, record.switchName);
    if (!view) {
        throw HostCtlException(owner + " is on " + record.switchName +
                               ", which is no switch of this host");
    }
    if (record.type != PortImpl::kTypeVirtualNic && record.type != PortImpl::kTypeKelmNic &&
        record.type != PortImpl::kTypeUplink) {
        throw HostCtlException(owner + " has an unknown type " + std::to_string(record.type));
    }
    if (record.world != 0 && worlds.count(record.world) == 0) {
        throw HostCtlException(owner + " belongs to world " + std::to_string(record.world) +
                               ", which the host doesn't have");
    }
    if (!Contains(view->uplinks, record.teamUplink)) {
        throw HostCtlException(owner + " has team uplink \"" + record.teamUplink +
                               "\", which is no uplink of " + record.switchName);
    }
    if (record.type != PortImpl::kTypeUplink) {
        const std::string& attachment = view->distributed ? record.dvport : record.portGroup;
        if (!Contains(view->attachments, attachment)) {
            throw HostCtlException(owner + " is on " +
                                   (view->distributed ? "DVPort \"" : "port group \"") +
                                   attachment + "\", which " + record.switchName + " lacks");
        }
    }
    if (record.macs.empty()) {
        throw HostCtlException(owner + " has no MAC address");
    }
    for (const std::string& mac : record.macs) {
        if (!HostCtl::Network::MacAddress::IsValid(mac)) {
            throw HostCtlException(owner + " has an invalid MAC address \"" + mac + "\"");
        }
    }
    if (!HostCtl::Network::Ipv4Address::IsValidAddress(record.ip)) {
        throw HostCtlException(owner + " has an invalid IPv4 address \"" + record.ip + "\"");
    }
}

std::uint64_t Stride(std::uint64_t highest) {
    return highest + 1;
}

void ImportPorts(Database& database, const Json& section, const Scale& scale) {
    std::vector<World> worlds;
    std::uint64_t worldStride = 1;
    for (const Json& json : ArrayMember(section, "worlds")) {
        World world{json.at("id").get<std::uint32_t>(), json.at("name").get<std::string>()};
        CheckObjectName(world.name, "world");
        worldStride = std::max(worldStride, Stride(world.id));
        worlds.push_back(std::move(world));
    }
    std::vector<PortRecord> ports;
    std::uint64_t portStride = 1;
    for (const Json& json : ArrayMember(section, "ports")) {
        ports.push_back(PortFromJson(json));
        portStride = std::max(portStride, Stride(ports.back().id));
    }
    const auto scaledId = [&scale](std::uint64_t id, std::uint64_t stride, unsigned copy,
                                   const char* what) {
        const std::uint64_t scaled = id == 0 ? 0 : id + copy * stride;
        if (scaled > UINT32_MAX) {
            throw HostCtlException(std::string("The scale ") + std::to_string(scale.Copies()) +
                                   " takes " + what + " ids beyond 32 bits");
        }
        return static_cast<std::uint32_t>(scaled);
    };
    std::set<std::uint32_t> worldIds;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const World& world : worlds) {
            const std::uint32_t id = scaledId(world.id, worldStride, copy, "world");
            if (id == 0 || !worldIds.insert(id).second) {
                throw HostCtlException("The profile has world id " + std::to_string(id) +
                                       " more than once, or as 0");
            }
            database.Query("INSERT INTO port_world (id, name) VALUES (?1, ?2)")
                .Bind(1, static_cast<std::int64_t>(id))
                .Bind(2, scale.Name(world.name, copy))
                .Run();
        }
    }
    std::set<std::uint32_t> portIds;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (PortRecord record : ports) {
            record.id = scaledId(record.id, portStride, copy, "port");
            record.world = scaledId(record.world, worldStride, copy, "world");
            record.switchName = scale.Name(record.switchName, copy);
            if (!record.portGroup.empty()) {
                record.portGroup = Vswitch::PortGroupCopyName(scale, record.portGroup, copy);
            }
            record.teamUplink = scale.Name(record.teamUplink, copy);
            for (std::string& mac : record.macs) {
                mac = Scale::MacAddress(mac, copy);
            }
            if (!portIds.insert(record.id).second) {
                throw HostCtlException("The profile has more than one port with id " +
                                       std::to_string(record.id));
            }
            CheckPort(database, record, worldIds);
            Ports::InsertPort(database, record);
        }
    }
    enum CrowdedColumn { kCrowdedSwitch, kCrowdedPorts };
    auto crowded = database.Query(
        "SELECT p.switch, count(*) FROM port p LEFT JOIN vswitch s ON s.name = p.switch"
        " LEFT JOIN dvs d ON d.name = p.switch GROUP BY p.switch"
        " HAVING count(*) > coalesce(s.ports, d.ports)");
    if (crowded.Step()) {
        throw HostCtlException("The profile gives " + crowded.Text(kCrowdedSwitch) + " " +
                               std::to_string(crowded.Int(kCrowdedPorts)) +
                               " ports, more than it has");
    }
}

Json ExportPorts(Database& database) {
    Json worlds = Json::array();
    enum WorldColumn { kWorldId, kWorldName };
    auto worldQuery = database.Query("SELECT id, name FROM port_world ORDER BY position");
    while (worldQuery.Step()) {
        worlds.push_back({{"id", worldQuery.Int(kWorldId)}, {"name", worldQuery.Text(kWorldName)}});
    }
    Json ports = Json::array();
    for (const PortRecord& record : Ports::LoadAllPorts(database)) {
        ports.push_back({{"id", record.id},
                         {"switch", record.switchName},
                         {"type", record.type},
                         {"world", record.world},
                         {"portgroup", record.portGroup},
                         {"dvport", record.dvport},
                         {"macs", record.macs},
                         {"ip", record.ip},
                         {"teamUplink", record.teamUplink},
                         {"stats", Json::parse(record.stats)},
                         {"filters", Json::parse(record.filters)}});
    }
    return {{"worlds", std::move(worlds)}, {"ports", std::move(ports)}};
}

}  // namespace

extern const Subject portsSubject;
const Subject portsSubject = {
    .name = "ports",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Ports::kDefaultSection,
    .importSection = ImportPorts,
    .exportSection = ExportPorts,
};

}  // namespace HostSim
