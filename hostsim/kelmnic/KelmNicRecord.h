// What the host keeps of one Kelm interface, and its column table in the store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostctl/ConnectionPoint.h"
#include "hostctl/KelmNic.h"
#include "hostsim/core/ColumnTable.h"

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

using KelmCtl::Network::KelmNicRecord;

// The fields the kelmnic table keeps in one column: the opaque network of a connection to one
// as JSON text (empty for other connections), the tags as their numbers separated by commas,
// and the net dump switches as flags.
std::string OpaqueText(const KelmNicRecord& record);
void SetOpaque(KelmNicRecord& record, const std::string& text);
std::string TagsText(const KelmNicRecord& record);
void SetTags(KelmNicRecord& record, const std::string& tags);
std::int64_t NetDumpFlags(const KelmNicRecord& record);
void SetNetDumpFlags(KelmNicRecord& record, std::int64_t flags);

// Table kelmnic, after its position. The profile's form of an interface is its subject's.
inline constexpr Column<KelmNicRecord> kKelmNicColumns[] = {
    {.sql = "name", .member = &KelmNicRecord::name},
    {.sql = "netstack", .member = &KelmNicRecord::netstack},
    {.sql = "system", .member = &KelmNicRecord::system},
    {.sql = "mac", .member = &KelmNicRecord::mac},
    {.sql = "mtu", .member = &KelmNicRecord::mtu},
    {.sql = "tso_mss", .member = &KelmNicRecord::tsoMss},
    {.sql = "rx_queues", .member = &KelmNicRecord::rxQueues},
    {.sql = "enabled", .member = &KelmNicRecord::enabled},
    {.sql = "port_id", .member = &KelmNicRecord::portId},
    {.sql = "cp_type", .member = &KelmNicRecord::connectionType},
    {.sql = "portset", .member = &KelmNicRecord::portset},
    {.sql = "portgroup", .member = &KelmNicRecord::portGroup},
    {.sql = "dvs_id", .member = &KelmNicRecord::dvsId},
    {.sql = "dvport", .member = &KelmNicRecord::dvPort},
    {.sql = "connection_id", .member = &KelmNicRecord::connectionId},
    {.sql = "opaque",
     .member = TextAccess<KelmNicRecord>{OpaqueText, SetOpaque},
     .nullWhenEmpty = true},
    {.sql = "tags", .member = TextAccess<KelmNicRecord>{TagsText, SetTags}},
    {.sql = "net_dump", .member = NumberAccess<KelmNicRecord>{NetDumpFlags, SetNetDumpFlags}},
    {.sql = "ip_config", .member = &KelmNicRecord::ipConfig},
    {.sql = "configured_ip_config", .member = &KelmNicRecord::configuredIpConfig},
};

}  // namespace HostSim::Ip
