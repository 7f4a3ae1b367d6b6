#include "hostsim/nicdevices/DeviceStore.h"

#include <algorithm>
#include <unordered_map>

#include "hostsim/core/Store.h"

namespace HostSim::NicDevices {

const char* const kFeatureNames[] = {
    "RxQPair",    "RxQNoFeature", "PreEmptibleQ", "RxQLatency", "RxDynamicLB", "DynamicQPool",
    "MacLearnLB", "RSS",          "LRO",          "GeneveOAM",  "RSSLRO",
};
const char* const kFilterClassNames[] = {"MacOnly", "VlanOnly", "VlanMac",
                                         "Vxlan",   "Geneve",   "GenericEncap"};

namespace {

#define DEVICE_COLUMNS                                                                           \
    "nic, sriov, netqueue, tx_queues, rx_queues, max_tx_queues, max_rx_queues, balancer, "       \
    "allowed, supported, filter_classes, plugins, hw_capabilities, hw_supported, hw_activated, " \
    "dcb, diagnostics, attachments"

Device ReadDevice(const Statement& row) {
    Device device;
    device.nic = row.Text(0);
    device.sriov = row.Text(1);
    device.netqueue = row.Bool(2);
    device.txQueues = static_cast<std::uint32_t>(row.Int(3));
    device.rxQueues = static_cast<std::uint32_t>(row.Int(4));
    device.maxTxQueues = static_cast<std::uint32_t>(row.Int(5));
    device.maxRxQueues = static_cast<std::uint32_t>(row.Int(6));
    device.balancerEnabled = row.Bool(7);
    device.allowed = static_cast<std::uint32_t>(row.Int(8));
    device.supported = static_cast<std::uint32_t>(row.Int(9));
    device.filterClasses = static_cast<std::uint32_t>(row.Int(10));
    device.plugins = row.Text(11);
    device.hwCapabilities = row.Bool(12);
    device.hwSupported = static_cast<std::uint64_t>(row.Int(13));
    device.hwActivated = static_cast<std::uint64_t>(row.Int(14));
    device.dcb = row.Text(15);
    device.diagnostics = row.Text(16);
    device.attachments = row.Text(17);
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
    auto query = database.Query("SELECT " DEVICE_COLUMNS " FROM nic_device ORDER BY position");
    while (query.Step()) {
        devices.push_back(ReadDevice(query));
    }
    return devices;
}

std::optional<Device> Load(Database& database, const std::string& nic) {
    auto query = database.Query("SELECT " DEVICE_COLUMNS " FROM nic_device WHERE nic = ?1");
    query.Bind(1, nic);
    if (!query.Step()) {
        return std::nullopt;
    }
    return ReadDevice(query);
}

void Save(Database& database, const Device& device) {
    auto save = database.Query(
        "INSERT INTO nic_device (" DEVICE_COLUMNS
        ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18)"
        " ON CONFLICT (nic) DO UPDATE SET sriov = ?2, netqueue = ?3, tx_queues = ?4,"
        " rx_queues = ?5, max_tx_queues = ?6, max_rx_queues = ?7, balancer = ?8, allowed = ?9,"
        " supported = ?10, filter_classes = ?11, plugins = ?12, hw_capabilities = ?13,"
        " hw_supported = ?14, hw_activated = ?15, dcb = ?16, diagnostics = ?17, attachments = ?18");
    save.Bind(1, device.nic)
        .BindOptional(2, device.sriov)
        .Bind(3, device.netqueue)
        .Bind(4, device.txQueues)
        .Bind(5, device.rxQueues)
        .Bind(6, device.maxTxQueues)
        .Bind(7, device.maxRxQueues)
        .Bind(8, device.balancerEnabled)
        .Bind(9, device.allowed)
        .Bind(10, device.supported)
        .Bind(11, device.filterClasses)
        .Bind(12, device.plugins)
        .Bind(13, device.hwCapabilities)
        .Bind(14, static_cast<std::int64_t>(device.hwSupported))
        .Bind(15, static_cast<std::int64_t>(device.hwActivated))
        .BindOptional(16, device.dcb)
        .BindOptional(17, device.diagnostics)
        .Bind(18, device.attachments)
        .Run();
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
