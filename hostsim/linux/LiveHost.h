// The live Linux host: what the host library asks of the kernel of the network namespace the
// process runs in. It is built as a module of its own (liblinuxhost.so) that the host library
// loads only when a process chooses the live host, so that a process on the simulated host
// loads none of the kernel libraries it needs. Every function throws HostCtlException with the
// kernel's own words ("Operation not permitted") when the kernel refuses.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/Pnic.h"
#include "hostctl/Sriov.h"
#include "hostsim/firewall/FirewallRecord.h"
#include "hostsim/linux/IpServices.h"
#include "hostsim/netstack/NetstackRecord.h"
#include "hostsim/nic/NicRecord.h"

namespace HostSim::Live {

// The text every host operation that Linux has no counterpart for fails with.
inline constexpr const char kNotAvailable[] = "not available on a Linux host";

// The links of the namespace that are NICs: an Ethernet link with a bus device behind it, or an
// Ethernet link of a kind that stands in for one (veth, tun/tap, dummy) as a pseudo NIC.
class NicDriver {
public:
    virtual ~NicDriver() = default;

    // Every NIC, in the kernel's order of link indices, from one dump of the link table.
    virtual std::vector<std::unique_ptr<NicRecord>> LoadAll() = 0;
    // The NICs enslaved to a bridge, which serve a standard switch as its uplinks.
    virtual std::vector<std::unique_ptr<NicRecord>> LoadUplinks() = 0;
    // Null when there is no NIC of that name.
    virtual std::optional<NicRecord> Load(const std::string& name) = 0;
    virtual void SetAdminState(const std::string& name, bool up) = 0;
    virtual void GetStats(const std::string& name, HostCtl::Network::PnicStats& stats) = 0;

    // Link settings: modes, auto negotiation, port, PHY address, transceiver, wake-on, message
    // level; and pause.
    virtual void GetLinkInfo(const std::string& name, HostCtl::Network::PnicInfo& info) = 0;
    virtual void SetLinkInfo(const std::string& name, const HostCtl::Network::PnicInfo& change) = 0;
    virtual void SetSpeedDuplex(const std::string& name, unsigned speed, int duplex) = 0;
    virtual void GetPause(const std::string& name, HostCtl::Network::PnicPauseParams& params) = 0;
    virtual void SetPause(const std::string& name,
                          const HostCtl::Network::PnicPauseParams& params) = 0;

    // Driver settings.
    virtual void GetCoalesce(const std::string& name,
                             HostCtl::Network::PnicCoalesceParams& params) = 0;
    virtual void SetCoalesce(const std::string& name,
                             const HostCtl::Network::PnicCoalesceParams& params) = 0;
    virtual void GetOffload(const std::string& name,
                            HostCtl::Network::PnicOffloadParams& params) = 0;
    virtual void SetOffload(const std::string& name,
                            const HostCtl::Network::PnicOffloadParams& params) = 0;
    virtual void GetRings(const std::string& name, HostCtl::Network::PnicRingParams& preset,
                          HostCtl::Network::PnicRingParams& current) = 0;
    virtual void SetRings(const std::string& name,
                          const HostCtl::Network::PnicRingParams& params) = 0;
    // The queue counts, from the kernel's channels; the balancer's parts are left empty.
    virtual void GetQueues(const std::string& name,
                           HostCtl::Network::PnicNetqueueParams& params) = 0;
    virtual void SetQueues(const std::string& name,
                           const HostCtl::Network::PnicNetqueueParams& params) = 0;

    // Diagnostics the driver offers. The driver's name, version, firmware and bus, into `info`;
    // a driver that answers no ethtool request leaves it as it was.
    virtual void GetDriverInfo(const std::string& name, HostCtl::Network::PnicDriverInfo& info) = 0;
    virtual void DumpRegisters(const std::string& name, std::vector<std::uint32_t>& words) = 0;
    // The bytes from `offset`, `length` of them (0: to the end), cut at the EEPROM's end.
    virtual void GetEeprom(const std::string& name, std::vector<unsigned char>& data,
                           std::uint32_t length, std::uint32_t offset) = 0;
    // Writes `bytes` from `offset`; `magic` must be the driver's.
    virtual void SetEeprom(const std::string& name, std::uint32_t magic, std::uint32_t offset,
                           const std::vector<unsigned char>& bytes) = 0;
    virtual void RestartNegotiation(const std::string& name) = 0;
    virtual void RunSelfTest(const std::string& name, HostCtl::Network::PnicSelfTestResult& result,
                             bool online) = 0;

    // SR-IOV: the NICs with virtual functions enabled, and their functions.
    virtual std::vector<std::unique_ptr<NicRecord>> LoadSriovNics() = 0;
    // Each function's hexPciAddress and active flag; the caller derives the other forms.
    virtual std::vector<HostCtl::Network::SriovNicVFInfo> GetVirtualFunctions(
        const std::string& name) = 0;
    virtual void GetVirtualFunctionStats(const std::string& name, int vfId,
                                         HostCtl::Network::SriovNicVFStats& stats) = 0;
};

// Netstacks are network namespaces: "defaultTcpipStack" is the one the process runs in, the
// others the named namespaces of /run/netns.
class NetstackDriver {
public:
    virtual ~NetstackDriver() = default;

    // The default netstack, then the named ones in name order; each with the kernel's settings
    // of its namespace (a name whose namespace is gone is listed down, without settings).
    virtual std::vector<NetstackRecord> LoadAll() = 0;
    virtual std::optional<NetstackRecord> Load(const std::string& key) = 0;
    // A new namespace, bound to /run/netns/KEY; the kernel's defaults are its settings.
    virtual void Add(const std::string& key) = 0;
    // Refused while the namespace holds interfaces or routes.
    virtual void Remove(const std::string& key) = 0;
    virtual void SetCongestionControl(const std::string& key, const std::string& name) = 0;
    // "disabled", "enabled" or "echo-only".
    virtual void SetEcn(const std::string& key, const std::string& status) = 0;
    // The algorithms the kernel offers to the process's namespace.
    virtual std::vector<std::string> CongestionControlAlgorithms() = 0;
};

// An interface: a link of a netstack that carries the host's own traffic, every link but
// loopback.
struct InterfaceRecord {
    std::string name;
    std::string netstack;
    std::string mac;  // empty for a link without a hardware address
    std::uint32_t mtu = 0;
    std::uint32_t tsoMss = 0;  // the largest packet the link takes for segmentation offload
    std::uint32_t rxQueues = 0;
    bool up = false;
    std::string master;  // the bridge the link is enslaved to, empty for none
};

// An IPv6 address of an interface, with its type and status as Ipv6Network numbers them.
struct Ipv6AddressRecord {
    std::string address;
    unsigned prefixLength = 0;
    int type = 0;
    int status = 1;
};

// The IP setting of an interface that kernel objects hold. An empty address means none.
struct InterfaceIp {
    std::string ipv4Address;  // the primary address
    unsigned ipv4PrefixLength = 0;
    std::string ipv4Broadcast;
    // The gateways of the netstack's default routes that leave through the interface.
    std::string ipv4Gateway;
    std::string ipv6Gateway;
    bool ipv6Enabled = false;
    std::vector<Ipv6AddressRecord> ipv6Addresses;
};

class InterfaceDriver {
public:
    virtual ~InterfaceDriver() = default;

    // The interfaces of a netstack in the order of link indices, from one dump of its links.
    virtual std::vector<InterfaceRecord> LoadAll(const std::string& netstack) = 0;
    // Empty when the netstack has no interface of that name.
    virtual std::optional<InterfaceRecord> Load(const std::string& netstack,
                                                const std::string& name) = 0;
    virtual void SetUp(const std::string& netstack, const std::string& name, bool up) = 0;
    virtual void SetMtu(const std::string& netstack, const std::string& name, unsigned mtu) = 0;
    // The IP setting of every interface of a netstack by name, from one dump of its addresses
    // and one of its routes.
    virtual std::map<std::string, InterfaceIp> LoadIp(const std::string& netstack) = 0;
    // Brings the kernel's objects from what they hold to `wanted`: the IPv6 switch of the
    // link, its primary IPv4 address (none removes every IPv4 address), its IPv6 addresses,
    // and the default routes through it.
    virtual void SetIp(const std::string& netstack, const std::string& name,
                       const InterfaceIp& wanted) = 0;
};

// A unicast route of a netstack's main table.
struct RouteRecord {
    std::string network;
    unsigned prefixLength = 0;
    std::string gateway;  // empty for a network reached directly
    std::string interfaceName;
    std::string source;  // who made it: "MANUAL", "DHCP", or a routing protocol's name
    // Of an IPv4 route, the network and the gateway (0 for none) in host byte order, as the
    // kernel gave them: a listing need not read its own texts back.
    std::uint32_t ipv4Network = 0;
    std::uint32_t ipv4Gateway = 0;
};

class RouteDriver {
public:
    virtual ~RouteDriver() = default;

    // The routes of one family (4 or 6) in the kernel's order, from one dump of the table.
    virtual std::vector<RouteRecord> LoadAll(const std::string& netstack, int family) = 0;
    // The default route in force, of the lowest metric; empty when there is none.
    virtual std::optional<RouteRecord> LoadDefault(const std::string& netstack, int family) = 0;
    // Adds or removes the route to `network`/`prefixLength` via `gateway` (empty: reached
    // directly).
    virtual void Add(const std::string& netstack, int family, const RouteRecord& route) = 0;
    virtual void Remove(const std::string& netstack, int family, const RouteRecord& route) = 0;
    // Makes `gateway` the default route, replacing the one in force; an empty one removes it.
    virtual void SetDefaultGateway(const std::string& netstack, int family,
                                   const std::string& gateway, bool fromDhcp) = 0;
};

// An entry of a neighbour table.
struct NeighborRecord {
    std::string address;
    std::string mac;  // empty while unresolved
    std::string interfaceName;
    std::int64_t expiry = 0;  // seconds left of its reachable time; -1 for one that never expires
    std::uint16_t state = 0;  // the kernel's NUD_ state
    bool router = false;
};

class NeighborDriver {
public:
    virtual ~NeighborDriver() = default;

    // The entries of one family (4 or 6), on the interface or on every one when it is empty, in
    // the kernel's order, from one dump of the table.
    virtual std::vector<NeighborRecord> LoadAll(const std::string& netstack, int family,
                                                const std::string& interfaceName) = 0;
    // Removes the entries of the address, on the interface or on every one when it is empty;
    // throws when there is none.
    virtual void Remove(const std::string& netstack, int family, const std::string& address,
                        const std::string& interfaceName) = 0;
};

// The firewall: one nftables table of the tool's own, which holds the rulesets with their
// rules and allowed addresses, the default action and the enabled flag. It touches no other
// table.
class FirewallDriver {
public:
    virtual ~FirewallDriver() = default;

    // Whether the table is there.
    virtual bool IsLoaded() = 0;
    // Makes the table as `initial` says; one that is there already stays as it is.
    virtual void Load(const Firewall::Configuration& initial) = 0;
    // Removes the table with everything in it.
    virtual void Unload() = 0;
    // What the table holds. Throws while there is none.
    virtual Firewall::Configuration Read() = 0;
    // Reads the table, lets `change` change what it holds, and writes it back whole in one
    // batch, which the kernel applies at once or not at all; again from the start when another
    // writer came in between. Returns what was written. What `change` throws ends it unwritten.
    virtual Firewall::Configuration Change(
        const std::function<void(Firewall::Configuration&)>& change) = 0;
};

// A bridge of the namespace, which stands for a standard switch.
struct BridgeRecord {
    std::string name;
    std::uint32_t mtu = 0;
    // The links enslaved to it, in the kernel's order of link indices.
    std::vector<std::string> ports;
};

// The bridges of the namespace: standard switches, with the NICs enslaved to them as uplinks.
class BridgeDriver {
public:
    virtual ~BridgeDriver() = default;

    // Every bridge, from one dump of the link table.
    virtual std::vector<BridgeRecord> LoadAll() = 0;
    // Empty when there is no bridge of that name.
    virtual std::optional<BridgeRecord> Load(const std::string& name) = 0;
    virtual void Add(const std::string& name) = 0;
    // Refuses a name that is no bridge's.
    virtual void Remove(const std::string& name) = 0;
    virtual void SetMtu(const std::string& name, std::uint32_t mtu) = 0;
    // Enslaves the link to the bridge; refuses a link that another link holds already.
    virtual void AddPort(const std::string& bridge, const std::string& link) = 0;
    // Frees the link; refuses one that is no port of the bridge.
    virtual void RemovePort(const std::string& bridge, const std::string& link) = 0;
};

class Host {
public:
    virtual ~Host() = default;
    virtual NicDriver& Nics() = 0;
    virtual NetstackDriver& Netstacks() = 0;
    virtual InterfaceDriver& Interfaces() = 0;
    virtual RouteDriver& Routes() = 0;
    virtual NeighborDriver& Neighbors() = 0;
    virtual SocketDriver& Sockets() = 0;
    virtual MulticastDriver& Multicast() = 0;
    virtual NameServiceDriver& NameService() = 0;
    virtual IpsecDriver& Ipsec() = 0;
    virtual FirewallDriver& Firewall() = 0;
    virtual BridgeDriver& Bridges() = 0;
};

}  // namespace HostSim::Live

// The module's one entry: the live host, made on the first call and kept for the process.
extern "C" HostSim::Live::Host* HostSim_LiveHost();
