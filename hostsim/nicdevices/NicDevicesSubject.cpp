// The NIC device subject: the nic_device table, the "nicDevices" section of a profile, and its
// default data. It refers to the NICs of the "nics" section by name.
#include <algorithm>
#include <map>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Subject.h"
#include "hostsim/nicdevices/NicDevicesStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using NicDevices::Device;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE nic_device ("
    " position INTEGER PRIMARY KEY,"
    " nic TEXT NOT NULL UNIQUE,"
    " sriov TEXT,"
    " netqueue INTEGER NOT NULL,"
    " tx_queues INTEGER NOT NULL, rx_queues INTEGER NOT NULL,"
    " max_tx_queues INTEGER NOT NULL, max_rx_queues INTEGER NOT NULL,"
    " balancer INTEGER NOT NULL, allowed INTEGER NOT NULL, supported INTEGER NOT NULL,"
    " filter_classes INTEGER NOT NULL, plugins TEXT NOT NULL,"
    " hw_capabilities INTEGER NOT NULL, hw_supported INTEGER NOT NULL,"
    " hw_activated INTEGER NOT NULL,"
    " dcb TEXT, diagnostics TEXT, attachments TEXT NOT NULL)",
};

constexpr const char* kTables[] = {"nic_device"};

constexpr unsigned kStatsCount = 20;
constexpr unsigned kPerClass = 8;

// A set of names, as a bit mask over `names`.
std::uint32_t MaskFromNames(const Json& json, const char* const* names, unsigned count,
                            const std::string& nic, const char* what) {
    std::uint32_t mask = 0;
    for (const auto& entry : json) {
        const std::string name = entry.get<std::string>();
        unsigned bit = 0;
        while (bit < count && name != names[bit]) {
            ++bit;
        }
        if (bit == count) {
            throw HostCtlException("NIC " + nic + " names an unknown " + what + " \"" + name +
                                   "\"");
        }
        mask |= 1u << bit;
    }
    return mask;
}

Json NamesFromMask(std::uint32_t mask, const char* const* names, unsigned count) {
    Json json = Json::array();
    for (unsigned bit = 0; bit < count; ++bit) {
        if (mask & (1u << bit)) {
            json.push_back(names[bit]);
        }
    }
    return json;
}

std::uint64_t BitsFromJson(const Json& json, const std::string& nic) {
    std::uint64_t mask = 0;
    for (const auto& entry : json) {
        const unsigned bit = entry.get<unsigned>();
        if (bit > 63) {
            throw HostCtlException("NIC " + nic + " names hardware capability bit " +
                                   std::to_string(bit) + ", beyond 63");
        }
        mask |= std::uint64_t{1} << bit;
    }
    return mask;
}

Json BitsToJson(std::uint64_t mask) {
    Json json = Json::array();
    for (unsigned bit = 0; bit < 64; ++bit) {
        if (mask & (std::uint64_t{1} << bit)) {
            json.push_back(bit);
        }
    }
    return json;
}

void CheckArray(const Json& json, const char* key, std::size_t size, const std::string& nic) {
    if (!json.at(key).is_array() || json.at(key).size() != size) {
        throw HostCtlException("NIC " + nic + ": \"" + key + "\" must hold " +
                               std::to_string(size) + " numbers");
    }
}

Json SriovFromJson(const Json& json, const std::string& nic) {
    Json sriov = {{"enabled", json.value("enabled", true)}, {"virtualFunctions", Json::array()}};
    std::set<unsigned> ids;
    for (const auto& vf : ArrayMember(json, "virtualFunctions")) {
        const unsigned id = vf.at("id").get<unsigned>();
        if (id > 255 || !ids.insert(id).second) {
            throw HostCtlException("NIC " + nic + " has a duplicate or invalid virtual function " +
                                   std::to_string(id));
        }
        Json stats = ArrayMember(vf, "stats");
        if (stats.empty()) {
            stats = Json(std::vector<std::uint64_t>(kStatsCount, 0));
        }
        Json entry = {{"id", id},
                      {"active", vf.value("active", false)},
                      {"pciAddress", vf.at("pciAddress").get<std::string>()},
                      {"ownerWorldId", vf.value("ownerWorldId", "")},
                      {"stats", stats}};
        CheckArray(entry, "stats", kStatsCount, nic);
        entry["stats"] = entry["stats"].get<std::vector<std::uint64_t>>();
        sriov["virtualFunctions"].push_back(std::move(entry));
    }
    return sriov;
}

void NetqueueFromJson(const Json& json, Device& device) {
    const std::string& nic = device.nic;
    device.netqueue = true;
    device.maxTxQueues = json.at("maxTxQueues").get<std::uint32_t>();
    device.maxRxQueues = json.at("maxRxQueues").get<std::uint32_t>();
    device.txQueues = json.at("txQueues").get<std::uint32_t>();
    device.rxQueues = json.at("rxQueues").get<std::uint32_t>();
    if (device.txQueues < 1 || device.txQueues > device.maxTxQueues || device.rxQueues < 1 ||
        device.rxQueues > device.maxRxQueues) {
        throw HostCtlException("NIC " + nic + " has netqueue counts outside 1 to their maxima");
    }
    device.balancerEnabled = json.value("balancerEnabled", true);
    constexpr unsigned kFeatures = 11;
    device.supported = MaskFromNames(ArrayMember(json, "supported"), NicDevices::kFeatureNames,
                                     kFeatures, nic, "netqueue feature") &
                       ~NicDevices::kFeaturesWithoutSupport;
    device.allowed = MaskFromNames(ArrayMember(json, "allowed"), NicDevices::kFeatureNames,
                                   kFeatures, nic, "netqueue feature");
    if (device.allowed & ~(device.supported | NicDevices::kFeaturesWithoutSupport)) {
        throw HostCtlException("NIC " + nic + " allows a netqueue feature it doesn't support");
    }
    device.filterClasses = MaskFromNames(ArrayMember(json, "filterClasses"),
                                         NicDevices::kFilterClassNames, 6, nic, "filter class");
    std::vector<NicDevices::Plugin> plugins;
    std::set<std::pair<std::string, std::string>> names;
    for (const auto& entry : ArrayMember(json, "plugins")) {
        NicDevices::Plugin plugin{entry.at("module").get<std::string>(),
                                  entry.at("plugin").get<std::string>(),
                                  entry.value("description", ""), entry.value("active", false)};
        CheckObjectName(plugin.module, "netqueue balancer module");
        CheckObjectName(plugin.plugin, "netqueue balancer plug-in");
        if (std::any_of(plugin.description.begin(), plugin.description.end(),
                        [](unsigned char c) { return c < 0x20 || c == 0x7f; })) {
            throw HostCtlException("The description of netqueue balancer plug-in " + plugin.plugin +
                                   " holds a control character");
        }
        if (!names.emplace(plugin.module, plugin.plugin).second) {
            throw HostCtlException("NIC " + nic + " lists the netqueue plug-in " + plugin.module +
                                   "/" + plugin.plugin + " twice");
        }
        plugins.push_back(std::move(plugin));
    }
    device.plugins = NicDevices::PluginsToText(plugins);
}

Json PluginsToJson(const std::string& text) {
    Json plugins = Json::array();
    for (const auto& plugin : NicDevices::PluginsFromText(text)) {
        plugins.push_back({{"module", plugin.module},
                           {"plugin", plugin.plugin},
                           {"description", plugin.description},
                           {"active", plugin.active}});
    }
    return plugins;
}

Json NetqueueToJson(const Device& device) {
    return {
        {"txQueues", device.txQueues},
        {"rxQueues", device.rxQueues},
        {"maxTxQueues", device.maxTxQueues},
        {"maxRxQueues", device.maxRxQueues},
        {"balancerEnabled", device.balancerEnabled},
        {"supported", NamesFromMask(device.supported, NicDevices::kFeatureNames, 11)},
        {"allowed", NamesFromMask(device.allowed, NicDevices::kFeatureNames, 11)},
        {"filterClasses", NamesFromMask(device.filterClasses, NicDevices::kFilterClassNames, 6)},
        {"plugins", PluginsToJson(device.plugins)}};
}

Json DcbFromJson(const Json& json, const std::string& nic) {
    const unsigned mode = json.at("mode").get<unsigned>();
    if (mode > 3) {
        throw HostCtlException("NIC " + nic + " has an unknown DCB mode " + std::to_string(mode));
    }
    const Json& capabilities = json.at("capabilities");
    const Json& ets = json.at("ets");
    const Json& pfc = json.at("pfc");
    for (const char* key : {"txBandwidth", "rxBandwidth", "tsaTable", "priorityAssignment",
                            "recommendedBandwidth", "recommendedTsa", "recommendedPriority"}) {
        CheckArray(ets, key, kPerClass, nic);
    }
    CheckArray(pfc, "sent", kPerClass, nic);
    CheckArray(pfc, "received", kPerClass, nic);
    Json apps = Json::array();
    for (const auto& app : ArrayMember(json, "apps")) {
        apps.push_back({{"appType", app.at("appType").get<std::string>()},
                        {"protocolId", app.at("protocolId").get<std::string>()},
                        {"userPriority", app.at("userPriority").get<std::string>()}});
    }
    auto bytes = [](const Json& array) { return array.get<std::vector<std::uint8_t>>(); };
    return {
        {"mode", mode},
        {"enabled", json.value("enabled", true)},
        {"capabilities",
         {{"priorityGroup", capabilities.value("priorityGroup", false)},
          {"priorityFlowControl", capabilities.value("priorityFlowControl", false)},
          {"upToTcMap", capabilities.value("upToTcMap", false)},
          {"pgTrafficClasses", capabilities.value("pgTrafficClasses", std::uint8_t{0})},
          {"pfcTrafficClasses", capabilities.value("pfcTrafficClasses", std::uint8_t{0})}}},
        {"pfcEnabled", json.value("pfcEnabled", false)},
        {"pfcConfig", json.value("pfcConfig", std::uint8_t{0})},
        {"ets",
         {{"willing", ets.value("willing", std::uint8_t{0})},
          {"supportedCapacity", ets.value("supportedCapacity", std::uint8_t{0})},
          {"creditBasedShaper", ets.value("creditBasedShaper", "")},
          {"txBandwidth", bytes(ets.at("txBandwidth"))},
          {"rxBandwidth", bytes(ets.at("rxBandwidth"))},
          {"tsaTable", bytes(ets.at("tsaTable"))},
          {"priorityAssignment", bytes(ets.at("priorityAssignment"))},
          {"recommendedBandwidth", bytes(ets.at("recommendedBandwidth"))},
          {"recommendedTsa", bytes(ets.at("recommendedTsa"))},
          {"recommendedPriority", bytes(ets.at("recommendedPriority"))}}},
        {"pfc",
         {{"trafficClasses", pfc.value("trafficClasses", std::uint8_t{0})},
          {"pfcConfig", pfc.value("pfcConfig", std::uint8_t{0})},
          {"macsecBypass", pfc.value("macsecBypass", std::uint8_t{0})},
          {"delay", pfc.value("delay", std::uint8_t{0})},
          {"sent", pfc.at("sent").get<std::vector<std::uint64_t>>()},
          {"received", pfc.at("received").get<std::vector<std::uint64_t>>()}}},
        {"apps", apps},
    };
}

Json DiagnosticsFromJson(const Json& json, const std::string& nic) {
    const std::string eeprom = json.value("eeprom", "");
    if (eeprom.size() % 2 != 0 ||
        eeprom.find_first_not_of("0123456789abcdef") != std::string::npos) {
        throw HostCtlException("NIC " + nic +
                               ": \"eeprom\" must be lower-case hexadecimal, two digits a byte");
    }
    const Json& selfTest = ObjectMember(json, "selfTest");
    return {{"eepromMagic", json.value("eepromMagic", std::uint32_t{0})},
            {"eeprom", eeprom},
            {"registers", ArrayMember(json, "registers").get<std::vector<std::uint32_t>>()},
            {"selfTest",
             {{"failed", selfTest.value("failed", false)},
              {"offline", ArrayMember(selfTest, "offline").get<std::vector<std::string>>()},
              {"online", ArrayMember(selfTest, "online").get<std::vector<std::string>>()}}}};
}

Device DeviceFromJson(const Json& json) {
    Device device;
    device.nic = json.at("nic").get<std::string>();
    if (auto sriov = json.find("sriov"); sriov != json.end()) {
        device.sriov = SriovFromJson(*sriov, device.nic).dump();
    }
    if (auto netqueue = json.find("netqueue"); netqueue != json.end()) {
        NetqueueFromJson(*netqueue, device);
    }
    if (auto hw = json.find("hwCapabilities"); hw != json.end()) {
        device.hwCapabilities = true;
        device.hwSupported = BitsFromJson(ArrayMember(*hw, "supported"), device.nic);
        device.hwActivated = BitsFromJson(ArrayMember(*hw, "activated"), device.nic);
        if (device.hwActivated & ~device.hwSupported) {
            throw HostCtlException("NIC " + device.nic +
                                   " activates a hardware capability it doesn't support");
        }
    }
    if (auto dcb = json.find("dcb"); dcb != json.end()) {
        device.dcb = DcbFromJson(*dcb, device.nic).dump();
    }
    if (auto diagnostics = json.find("diagnostics"); diagnostics != json.end()) {
        device.diagnostics = DiagnosticsFromJson(*diagnostics, device.nic).dump();
    }
    Json attachments = Json::array();
    for (const auto& attachment : ArrayMember(json, "attachments")) {
        attachments.push_back({{"branch", attachment.at("branch").get<std::string>()},
                               {"vlanId", attachment.at("vlanId").get<unsigned>()}});
    }
    device.attachments = attachments.dump();
    return device;
}

Json DeviceToJson(const Device& device) {
    Json json = {{"nic", device.nic}};
    if (!device.sriov.empty()) {
        json["sriov"] = Json::parse(device.sriov);
    }
    if (device.netqueue) {
        json["netqueue"] = NetqueueToJson(device);
    }
    if (device.hwCapabilities) {
        json["hwCapabilities"] = {{"supported", BitsToJson(device.hwSupported)},
                                  {"activated", BitsToJson(device.hwActivated)}};
    }
    if (!device.dcb.empty()) {
        json["dcb"] = Json::parse(device.dcb);
    }
    if (!device.diagnostics.empty()) {
        json["diagnostics"] = Json::parse(device.diagnostics);
    }
    json["attachments"] = Json::parse(device.attachments);
    return json;
}

// The attachment rules of the host, over the whole section: a branch is a NIC of the host,
// hangs on one trunk, is no trunk itself, and a VLAN ID is used once per trunk.
void CheckAttachments(Database& database, const std::vector<Device>& devices) {
    std::map<std::string, std::string> trunkOfBranch;
    std::set<std::string> trunks;
    for (const Device& device : devices) {
        std::set<unsigned> vlans;
        for (const auto& attachment : Json::parse(device.attachments)) {
            const std::string branch = attachment["branch"].get<std::string>();
            const unsigned vlan = attachment["vlanId"].get<unsigned>();
            if (!NicDevices::NicExists(database, branch)) {
                throw HostCtlException("Branch uplink " + branch + " of trunk " + device.nic +
                                       " is no NIC of the host");
            }
            if (branch == device.nic || vlan < 1 || vlan > 4094 || !vlans.insert(vlan).second) {
                throw HostCtlException("Trunk " + device.nic + " has an invalid attachment of " +
                                       branch + " with VLAN " + std::to_string(vlan));
            }
            if (!trunkOfBranch.emplace(branch, device.nic).second) {
                throw HostCtlException("NIC " + branch + " is a branch of more than one trunk");
            }
            trunks.insert(device.nic);
        }
    }
    for (const auto& [branch, trunk] : trunkOfBranch) {
        if (trunks.count(branch) != 0) {
            throw HostCtlException("NIC " + branch + " is both a trunk and a branch of " + trunk);
        }
    }
}

// The copy `copy` of a NIC's features: its own NIC, branches and virtual function addresses.
Device ScaledDevice(Device device, const Scale& scale, unsigned copy) {
    device.nic = scale.Name(device.nic, copy);
    if (!device.sriov.empty()) {
        Json sriov = Json::parse(device.sriov);
        for (auto& vf : sriov["virtualFunctions"]) {
            vf["pciAddress"] = Scale::PciAddress(vf["pciAddress"].get<std::string>(), copy);
        }
        device.sriov = sriov.dump();
    }
    Json attachments = Json::parse(device.attachments);
    for (auto& attachment : attachments) {
        attachment["branch"] = scale.Name(attachment["branch"].get<std::string>(), copy);
    }
    device.attachments = attachments.dump();
    return device;
}

void ImportDevices(Database& database, const Json& section, const Scale& scale) {
    std::vector<Device> devices;
    for (const auto& entry : section) {
        devices.push_back(DeviceFromJson(entry));
    }
    std::vector<Device> scaled;
    std::set<std::string> names;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const Device& device : devices) {
            Device copied = ScaledDevice(device, scale, copy);
            if (!NicDevices::NicExists(database, copied.nic)) {
                throw HostCtlException("The device features of " + copied.nic +
                                       " name no NIC of the host");
            }
            if (!names.insert(copied.nic).second) {
                throw HostCtlException("The profile has device features for " + copied.nic +
                                       " more than once");
            }
            scaled.push_back(std::move(copied));
        }
    }
    CheckAttachments(database, scaled);
    for (const Device& device : scaled) {
        NicDevices::Save(database, device);
    }
}

Json ExportDevices(Database& database) {
    return JsonArrayOf(NicDevices::LoadAll(database), DeviceToJson);
}

}  // namespace

extern const Subject nicdevicesSubject;
const Subject nicdevicesSubject = {
    .name = "nicDevices",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = NicDevices::kDefaultSection,
    .importSection = ImportDevices,
    .exportSection = ExportDevices,
};

}  // namespace HostSim
