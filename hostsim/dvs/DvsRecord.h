// The distributed-switch subject's records: switches with their DVPorts and LAGs, their JSON
// form (the profile's and the store's), and the column table of the dvs table.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostctl/DVSwitch.h"
#include "hostsim/core/ColumnTable.h"

namespace HostSim::Dvs {

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

// A switch's DVPorts and LAGs as the JSON text of their columns. DVPorts take the switch's name
// and id, read before them.
std::string DVPortsText(const KelmCtl::Network::DVSwitchRecord& record);
void SetDVPorts(KelmCtl::Network::DVSwitchRecord& record, const std::string& text);
std::string LagsText(const KelmCtl::Network::DVSwitchRecord& record);
void SetLags(KelmCtl::Network::DVSwitchRecord& record, const std::string& text);

// Table dvs, after its position.
inline constexpr Column<KelmCtl::Network::DVSwitchRecord> kSwitchColumns[] = {
    {.sql = "name", .member = &KelmCtl::Network::DVSwitchRecord::name},
    {.sql = "id", .member = &KelmCtl::Network::DVSwitchRecord::id},
    {.sql = "class", .member = &KelmCtl::Network::DVSwitchRecord::className},
    {.sql = "ports", .member = &KelmCtl::Network::DVSwitchRecord::ports},
    {.sql = "mtu", .member = &KelmCtl::Network::DVSwitchRecord::mtu},
    {.sql = "cdp_status", .member = &KelmCtl::Network::DVSwitchRecord::cdpStatus},
    {.sql = "beacon_timeout", .member = &KelmCtl::Network::DVSwitchRecord::beaconTimeout},
    {.sql = "branded", .member = &KelmCtl::Network::DVSwitchRecord::zanvexBranded},
    {.sql = "opaque", .member = &KelmCtl::Network::DVSwitchRecord::opaque},
    {.sql = "lacp_on_dpu", .member = &KelmCtl::Network::DVSwitchRecord::lacpOnDpu},
    {.sql = "dvports",
     .member = TextAccess<KelmCtl::Network::DVSwitchRecord>{DVPortsText, SetDVPorts}},
    {.sql = "lags", .member = TextAccess<KelmCtl::Network::DVSwitchRecord>{LagsText, SetLags}},
};

}  // namespace HostSim::Dvs
