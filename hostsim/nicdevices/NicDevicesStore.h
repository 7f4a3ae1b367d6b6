// The device features of the simulated NICs: one row per NIC that has any, keyed by the NIC's
// name. Listings read the rows once; the nested records stay JSON text until asked for.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/nicdevices/NicDevicesRecord.h"

namespace HostSim::NicDevices {

// A netqueue balancer plug-in of a NIC. Listings read the plug-ins of every NIC, so the store
// keeps them as plain text, one line each: module, plug-in, 1 or 0 for active, description,
// separated by tabs. Names and descriptions hold no control characters.
struct Plugin {
    std::string module;
    std::string plugin;
    std::string description;
    bool active = false;
};
std::vector<Plugin> PluginsFromText(std::string_view text);
std::string PluginsToText(const std::vector<Plugin>& plugins);

// The names of the balancer features and filter classes, in the order of their bits.
extern const char* const kFeatureNames[];
extern const char* const kFilterClassNames[];
// The features that have no supported flag of their own: RxQNoFeature, RxDynamicLB,
// MacLearnLB.
inline constexpr std::uint32_t kFeaturesWithoutSupport = 0x2 | 0x10 | 0x40;

std::vector<Device> LoadAll(Database& database);
std::optional<Device> Load(Database& database, const std::string& nic);
// Inserts the row, or replaces the NIC's row; inside the caller's write transaction.
void Save(Database& database, const Device& device);

// The NIC's row as the host has it now: from the listing that the calling thread's network
// model is walking (all rows read in one query), or from the store. Null when the NIC has no
// device features.
std::shared_ptr<const Device> Lookup(const std::string& nic);
// While a network model lists NICs, its rows are read once for the whole listing.
void RememberListing(const void* owner);
void ForgetListing(const void* owner);
// A change makes the rows of a listing stale.
void ForgetListedRows();

// A NIC of the host of that name.
bool NicExists(Database& database, const std::string& nic);

// The default host's device features.
extern const char* const kDefaultSection;

}  // namespace HostSim::NicDevices
