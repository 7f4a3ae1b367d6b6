// The distributed-switch subject's records, their JSON form (the profile's and the store's),
// and the queries and changes of the store.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hostctl/DVSwitch.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"

namespace HostSim::Dvs {

// The distributed switches of the built-in default host.
extern const char* const kDefaultSection;

// The partner's side of one NIC of a running LAG.
struct LagPartner {
    std::string deviceId;
    std::uint32_t age = 0;
    std::uint16_t portNumber = 0;
    std::uint16_t portPriority = 0;
    std::uint16_t operKey = 0;
    std::uint8_t portState = 0;
    std::string flags;
};

// One NIC of a running LAG: the actor's side, the partner's, and the LACPDU counters.
struct LagNic {
    std::string nic;
    std::string state;
    std::uint16_t portNumber = 0;
    std::uint16_t portPriority = 0;
    std::uint16_t adminKey = 0;
    std::uint16_t operKey = 0;
    std::uint8_t portState = 0;
    std::string flags;
    LagPartner partner;
    std::uint64_t rxLacpdus = 0;
    std::uint64_t txLacpdus = 0;
    std::uint64_t rxErrors = 0;
    std::uint64_t txErrors = 0;
};

// A configured LAG; `running` with the state of its NICs when LACP runs on it.
struct Lag {
    std::uint32_t id = 0;
    std::string name;
    std::uint32_t mode = 1;
    std::int32_t loadBalance = 0;
    std::uint32_t portCount = 0;
    bool running = false;
    std::vector<LagNic> nics;
};

// The actor's timeout bit of a port state: set for the short timeout.
inline constexpr std::uint8_t kTimeoutBit = 0x02;
inline constexpr std::int32_t kLoadBalanceCount = 21;
// Text fields of a running NIC's record hold at most this many bytes.
inline constexpr std::size_t kLacpTextWidth = 31;

Json LagToJson(const Lag& lag);
Lag LagFromJson(const Json& json);

}  // namespace HostSim::Dvs

namespace KelmCtl::Network {

struct DVPortRecord {
    std::string dvsName;
    std::string dvsId;
    std::string id;
    std::string portGroup;
    std::string name;
    bool inUse = false;
    std::vector<std::string> clients;
    HostCtl::Network::DVPortLacpConfig lacp;
};

struct DVSwitchRecord {
    std::string name;
    std::string id;
    std::string className;
    std::uint32_t ports = 0;
    std::uint32_t mtu = 0;
    int cdpStatus = 0;
    int beaconTimeout = -1;
    bool zanvexBranded = true;
    bool opaque = false;
    bool lacpOnDpu = false;
    // In port order.
    std::vector<DVPortRecord> dvports;
    // (NIC, DVPort id), in the order the uplinks were attached.
    std::vector<std::pair<std::string, std::string>> uplinks;
    // In the order of their ids.
    std::vector<HostSim::Dvs::Lag> lags;
};

}  // namespace KelmCtl::Network

namespace HostSim::Dvs {

Json DVPortToJson(const KelmCtl::Network::DVPortRecord& port);
KelmCtl::Network::DVPortRecord DVPortFromJson(const Json& json);

// The distributed switches, all or only the opaque or only the other ones, in the order they
// were made.
std::vector<KelmCtl::Network::DVSwitchRecord> LoadSwitches(Database& database,
                                                           std::optional<bool> opaque);
std::optional<KelmCtl::Network::DVSwitchRecord> LoadSwitch(Database& database,
                                                           const std::string& name);
std::optional<KelmCtl::Network::DVSwitchRecord> LoadSwitchById(Database& database,
                                                               const std::string& id);
bool SwitchExists(Database& database, const std::string& name);
bool IsOpaque(Database& database, const std::string& name);
// The distributed switch that uses the NIC as an uplink, if any.
std::optional<std::string> SwitchOfUplink(Database& database, const std::string& nicName);
// The NICs that distributed switches use as uplinks, switch by switch.
std::vector<std::string> UplinkNicNames(Database& database);

// Rows as the profile writes them.
void InsertSwitch(Database& database, const KelmCtl::Network::DVSwitchRecord& record);
// Writes back the LAGs of a switch.
void UpdateLags(Database& database, const std::string& name, const std::vector<Lag>& lags);

// "There is no distributed switch named <name>".
std::string NoSuchSwitch(const std::string& name);

}  // namespace HostSim::Dvs
