#include "hostsim/nicdevices/NicDevicesStore.h"

#include <algorithm>
#include <unordered_map>

#include "hostsim/core/Columns.h"
#include "hostsim/core/Store.h"

namespace HostSim::NicDevices {

const char* const kFeatureNames[] = {
    "RxQPair",    "RxQNoFeature", "PreEmptibleQ", "RxQLatency", "RxDynamicLB", "DynamicQPool",
    "MacLearnLB", "RSS",          "LRO",          "GeneveOAM",  "RSSLRO",
};
const char* const kFilterClassNames[] = {"MacOnly", "VlanOnly", "VlanMac",
                                         "Vxlan",   "Geneve",   "GenericEncap"};

namespace {

std::string SelectDevices(const char* where) {
    return "SELECT " + ColumnNames(kColumns) + " FROM nic_device " + where;
}

Device ReadDevice(const Statement& row) {
    Device device;
    ReadColumns(row, 0, kColumns, device);
    return device;
}

struct Listing {
    const void* owner = nullptr;
    bool loaded = false;
    std::unordered_map<std::string, std::shared_ptr<const Device>> rows;
};

// Per thread: a listing and the look-ups of its rows run on the thread of the command.
Listing& CurrentListing() {
    thread_local Listing listing;
    return listing;
}

}  // namespace

std::vector<Plugin> PluginsFromText(std::string_view text) {
    std::vector<Plugin> plugins;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        std::string_view fields[4];
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t tab = std::min(line.find('\t'), line.size());
            fields[i] = line.substr(0, tab);
            line.remove_prefix(std::min(tab + 1, line.size()));
        }
        fields[3] = line;
        plugins.push_back({std::string(fields[0]), std::string(fields[1]), std::string(fields[3]),
                           fields[2] == "1"});
    }
    return plugins;
}

std::string PluginsToText(const std::vector<Plugin>& plugins) {
    std::string text;
    for (const Plugin& plugin : plugins) {
        text += plugin.module + '\t' + plugin.plugin + '\t' + (plugin.active ? '1' : '0') + '\t' +
                plugin.description + '\n';
    }
    return text;
}

std::vector<Device> LoadAll(Database& database) {
    std::vector<Device> devices;
    static const std::string sql = SelectDevices("ORDER BY position");
    auto query = database.Query(sql.c_str());
    while (query.Step()) {
        devices.push_back(ReadDevice(query));
    }
    return devices;
}

std::optional<Device> Load(Database& database, const std::string& nic) {
    static const std::string sql = SelectDevices("WHERE nic = ?1");
    auto query = database.Query(sql.c_str());
    query.Bind(1, nic);
    if (!query.Step()) {
        return std::nullopt;
    }
    return ReadDevice(query);
}

void Save(Database& database, const Device& device) {
    static const std::string sql = InsertStatement("nic_device", kColumns) +
                                   " ON CONFLICT (nic) DO UPDATE SET " +
                                   ColumnAssignments(std::span(kColumns).subspan(1), 2);
    auto save = database.Query(sql.c_str());
    BindColumns(save, 1, kColumns, device);
    save.Run();
    ForgetListedRows();
}

std::shared_ptr<const Device> Lookup(const std::string& nic) {
    Listing& listing = CurrentListing();
    if (listing.owner == nullptr) {
        auto device = Load(Store(), nic);
        return device ? std::make_shared<const Device>(std::move(*device)) : nullptr;
    }
    if (!listing.loaded) {
        listing.rows.clear();
        for (Device& device : LoadAll(Store())) {
            std::string name = device.nic;
            listing.rows.emplace(std::move(name),
                                 std::make_shared<const Device>(std::move(device)));
        }
        listing.loaded = true;
    }
    auto found = listing.rows.find(nic);
    return found == listing.rows.end() ? nullptr : found->second;
}

void RememberListing(const void* owner) {
    Listing& listing = CurrentListing();
    listing.owner = owner;
    listing.loaded = false;
    listing.rows.clear();
}

void ForgetListing(const void* owner) {
    Listing& listing = CurrentListing();
    if (listing.owner == owner) {
        listing.owner = nullptr;
        listing.loaded = false;
        listing.rows.clear();
    }
}

void ForgetListedRows() {
    Listing& listing = CurrentListing();
    listing.loaded = false;
    listing.rows.clear();
}

bool NicExists(Database& database, const std::string& nic) {
    auto query = database.Query("SELECT 1 FROM nic WHERE name = ?1");
    query.Bind(1, nic);
    return query.Step();
}

}  // namespace HostSim::NicDevices
