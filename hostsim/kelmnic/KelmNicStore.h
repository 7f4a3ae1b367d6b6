// The Kelm interface subject's store: the JSON form of IP configurations, the host's rules for
// interfaces, and the queries and changes of the store.
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
#include "hostsim/kelmnic/KelmNicRecord.h"
#include "hostsim/netstack/NetstackStore.h"

namespace HostSim::Ip {

// The Kelm interfaces of the built-in default host.
extern const char* const kDefaultKelmNics;

inline constexpr std::uint32_t kDefaultMtu = 1500;
inline constexpr std::uint32_t kDefaultTsoMss = 65535;
inline constexpr std::uint32_t kMaximumRxQueues = 1000;

// The host's rule for the MTU of an interface; throws HostCtlException.
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
