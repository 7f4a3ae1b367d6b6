// The records of Kelm interfaces and netstack instances, the JSON form of IP configurations,
// and the queries and changes of the store.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/ConnectionPoint.h"
#include "hostctl/IpConfig.h"
#include "hostctl/KelmNic.h"
#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/ip/NetstackRecord.h"

namespace KelmCtl::Network {

struct KelmNicRecord {
    std::string name;
    std::string netstack;
    bool system = false;
    std::string mac;
    std::uint32_t mtu = 1500;
    std::uint32_t tsoMss = 65535;
    std::uint32_t rxQueues = 1;
    bool enabled = true;
    std::uint32_t portId = 0;  // 0: no port
    // The connection point: its kind and the fields of that kind.
    int connectionType = HostCtl::Network::ConnectionPoint::kNone;
    std::string portset;
    std::string portGroup;
    std::string dvsId;
    std::string dvPort;
    std::uint32_t connectionId = 0;
    HostCtl::Network::OpaqueNetworkParam opaque;
    std::vector<HostCtl::Network::KelmNicTagType> tags;
    bool netDumper = false;
    bool ipv6ReadyPrimary = false;
    bool ipv6ReadySecondary = false;
    // The configurations in force and stored, as JSON text, parsed when asked for.
    std::string ipConfig;
    std::string configuredIpConfig;
};

}  // namespace KelmCtl::Network

namespace HostSim::Ip {

inline constexpr char kDefaultNetstack[] = "defaultTcpipStack";
inline constexpr std::uint32_t kDefaultMtu = 1500;
inline constexpr std::uint32_t kDefaultTsoMss = 65535;
inline constexpr std::uint32_t kMaximumRxQueues = 1000;
inline constexpr unsigned kMaximumConnections = 1'000'000;

// Table netstack, after its position. A profile leaves out the kernel's values of an instance
// that is down, and an instance without a name of its own is named by its key.
using KelmCtl::Network::NetstackRecord;
inline constexpr Column<NetstackRecord> kNetstackColumns[] = {
    {.sql = "key", .member = &NetstackRecord::key, .json = "key", .required = true},
    {.sql = "name", .member = &NetstackRecord::name, .json = "name"},
    {.sql = "up", .member = &NetstackRecord::up, .json = "enabled", .fallback = true},
    {.sql = "max_connections",
     .member = &NetstackRecord::maxConnections,
     .json = "maxConnections",
     .fallback = 11000},
    {.sql = "congestion_control",
     .member = &NetstackRecord::congestionControl,
     .json = "congestionControl",
     .fallbackText = "newreno"},
    {.sql = "ipv6", .member = &NetstackRecord::ipv6, .json = "ipv6", .fallback = true},
    {.sql = "ecn", .member = &NetstackRecord::ecn, .json = "ecn", .fallbackText = "enabled"},
    {.sql = "workers", .member = &NetstackRecord::workers, .json = "workers", .fallback = 2},
    {.sql = "current_max_connections", .member = &NetstackRecord::currentMaxConnections},
    {.sql = "current_ipv6", .member = &NetstackRecord::currentIpv6},
};

// The keys of the instances the system defines, the default one first.
const std::vector<std::string>& PredefinedNetstackKeys();
const std::vector<std::string>& CongestionControlAlgorithms();
const std::vector<std::string>& EcnStatuses();

// The host's rules for the settings of an instance; each throws HostCtlException.
void CheckNetstackKey(const std::string& key);
void CheckMaxConnections(unsigned long maxConnections);
void CheckCongestionControl(const std::string& name);
void CheckEcn(const std::string& status);
void CheckMtu(long mtu);

// IP configurations as JSON, and the text forms of IPv6 address types and statuses.
Json IpConfigToJson(const HostCtl::Network::IpConfig& config);
HostCtl::Network::IpConfig IpConfigFromJson(const Json& json);
// The configuration the host puts in force for a stored one: the broadcast worked out from
// address and netmask, and a DHCP lease in place of the static address.
HostCtl::Network::IpConfig InForce(const HostCtl::Network::IpConfig& configured,
                                   std::uint32_t leaseNumber);
// Throws HostCtlException for a configuration the host can't take.
void CheckIpConfig(const HostCtl::Network::IpConfig& config, const std::string& interface);
// The static IPv4 address a configuration gives, when it gives one: not DHCP, not "none", not
// 0.0.0.0. Such an address is used by one interface of a netstack instance at most.
std::optional<HostCtl::Network::Ipv4Address> StaticIpv4Address(
    const HostCtl::Network::IpConfig& config);
// The refusal of a static IPv4 address that `user` has in `netstack` already.
[[noreturn]] void RefuseIpv4AddressInUse(const HostCtl::Network::Ipv4Address& address,
                                         const std::string& user, const std::string& netstack);

// Netstack instances in the order they were made; one by key.
std::vector<KelmCtl::Network::NetstackRecord> LoadNetstacks(Database& database);
std::optional<KelmCtl::Network::NetstackRecord> LoadNetstack(Database& database,
                                                             const std::string& key);
void InsertNetstack(Database& database, const KelmCtl::Network::NetstackRecord& record);
void UpdateNetstack(Database& database, const KelmCtl::Network::NetstackRecord& record);

// Which interfaces a query reads.
struct KelmNicFilter {
    std::optional<bool> system = std::nullopt;
    std::optional<std::string> netstack = std::nullopt;
    std::optional<std::string> name = std::nullopt;
};
std::vector<KelmCtl::Network::KelmNicRecord> LoadKelmNics(Database& database,
                                                          const KelmNicFilter& filter);
std::optional<KelmCtl::Network::KelmNicRecord> LoadKelmNic(Database& database,
                                                           const std::string& name);
void InsertKelmNic(Database& database, const KelmCtl::Network::KelmNicRecord& record);
void UpdateKelmNic(Database& database, const KelmCtl::Network::KelmNicRecord& record);
void DeleteKelmNic(Database& database, const std::string& name);
// Adds or drops an interface in the users of its port group.
void AddPortGroupUser(Database& database, const std::string& portGroup, const std::string& name);
void DropPortGroupUser(Database& database, const std::string& portGroup, const std::string& name);
// Marks a DVPort in use by an interface, or free of it again.
void AddDVPortClient(Database& database, const std::string& dvsId, const std::string& dvPort,
                     const std::string& name);
void DropDVPortClient(Database& database, const std::string& dvsId, const std::string& dvPort,
                      const std::string& name);

// The tag of a name, or 14.
HostCtl::Network::KelmNicTagType TagOfName(const std::string& name);

}  // namespace HostSim::Ip
