// Distributed switches, their ports, and the LACP state of their link aggregation groups.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/ConnectionPoint.h"
#include "hostctl/VirtualSwitch.h"

namespace HostCtl::Network {

// Names a port of a distributed switch: the switch's identity (not its name), the port's id,
// and the connection that uses it (0 until one is given).
struct DVPortParam {
    std::string dvsId;
    std::string dvPortId;
    std::uint32_t connectionId = 0;
};

// LACP as a setting of one uplink port. Mode: 1 active, 2 passive.
struct DVPortLacpConfig {
    bool enabled = false;
    std::uint32_t mode = 0;
};

// One configured link aggregation group. Mode: 1 active, 2 passive. `loadBalance` indexes the
// host's table of load-balancing algorithms. The uplink ports of the group are named
// "<lagName>-<index>", index 0 to portCount - 1.
struct LagConfig {
    std::string lagId;
    std::string lagName;
    std::uint32_t mode = 0;
    std::int32_t loadBalance = 0;
    std::uint32_t flags = 0;
    std::uint32_t portCount = 0;
    // The NIC on each occupied uplink port of the group, by port name.
    std::map<std::string, std::string> nicByPort;
    // Settings of the group the host keeps as text.
    std::map<std::string, std::string> options;
};

// One NIC of a running group, as the LACP daemon packs it: 213 bytes, no alignment. Text
// fields are zero-terminated within their width; port states are the actor and partner state
// octets (bit 0 activity, 1 timeout, 2 aggregation, 3 synchronisation, 4 collecting,
// 5 distributing, 6 defaulted, 7 expired).
#pragma pack(push, 1)
struct LacpNicStatus {
    char nicName[32];
    char state[32];
    std::uint16_t portNumber;
    std::uint16_t portPriority;
    std::uint16_t adminKey;
    std::uint16_t operKey;
    std::uint8_t portState;
    std::uint8_t reserved;
    char flags[32];
    std::uint32_t partnerAge;  // seconds
    std::uint16_t partnerPortNumber;
    std::uint16_t partnerPortPriority;
    std::uint16_t partnerOperKey;
    std::uint8_t partnerPortState;
    char partnerDeviceId[32];
    char partnerFlags[32];
    std::uint64_t rxLacpdus;
    std::uint64_t txLacpdus;
    std::uint64_t rxErrors;
    std::uint64_t txErrors;
};
#pragma pack(pop)
static_assert(sizeof(LacpNicStatus) == 213);
static_assert(offsetof(LacpNicStatus, partnerAge) == 0x6a);
static_assert(offsetof(LacpNicStatus, partnerDeviceId) == 0x75);
static_assert(offsetof(LacpNicStatus, rxLacpdus) == 0xb5);

// One running group. Mode: 2 passive, anything else active. The record owns its NICs' records.
struct LagStatus {
    std::uint32_t lagId = 0;
    std::uint32_t portCount = 0;
    std::uint32_t mode = 0;
    std::int32_t loadBalance = 0;
    char lagName[64] = {};
    char dvsName[64] = {};
    std::vector<std::unique_ptr<LacpNicStatus>> nics;
};

class DVPort : public ConnectionPoint {
public:
    virtual std::string GetName() const = 0;
    virtual std::string GetDVPortgroupId() const = 0;
    virtual DVPortLacpConfig GetLacpConfig() const = 0;
};

class DVSwitch : public virtual Portset {
public:
    virtual std::string GetDvsName() const = 0;
    // The switch's identity, which names it in a DVPortParam.
    virtual std::string GetDvsId() const = 0;
    // The uplinks of the switch, by NIC name, each with the port it occupies.
    virtual std::map<std::string, DVPortParam> GetUplinkPorts() const = 0;
    // `uplinkPorts`: the ids of the uplink ports; `ports`: the ids of every port, or with
    // `uplinksOnly` of the uplink ports only. Both in port order.
    virtual void GetDVPortIds(std::vector<std::string>& uplinkPorts,
                              std::vector<std::string>& ports, bool uplinksOnly) const = 0;
    // Null when the switch has no port of that id.
    virtual std::unique_ptr<DVPort> GetDVPortById(const std::string& id) const = 0;
    // Appends the configured groups, in the order of their ids.
    virtual void GetLagConfigs(std::vector<LagConfig>& list) const = 0;
    // Appends the running groups, in the order of their ids.
    virtual void GetLacpStatus(std::vector<LagStatus>& list) const = 0;
    // Whether the running LACP state is held on a DPU rather than on the host.
    virtual bool IsLacpStateOnDpu() const = 0;
    // `timeout`: true for the short timeout. An empty NIC name means every NIC of the group.
    virtual void SetLacpTimeout(int lagId, bool timeout, const std::string& nicName) = 0;
};

}  // namespace HostCtl::Network
