// The IPsec subject's table, one row per association or policy in the order they were made,
// and the JSON form of both records, which the profile and the table's detail column share.
#pragma once

#include <vector>

#include "hostctl/IpSec.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"

namespace HostSim::Ipsec {

// Its section of the built-in default host.
extern const char* const kDefaultSection;

inline constexpr const char kAutoName[] = "auto";
inline constexpr const char kUnknownSa[] = "UNKNOWN";

// {"name", "source", "destination", "spi", "state", "lifetime", "mode", "encryptionAlgorithm",
// "encryptionKey", "integrityAlgorithm", "integrityKey"}, the enumerations by their words.
Json AssociationToJson(const HostCtl::Network::IpSecSadParam& association);
HostCtl::Network::IpSecSadParam AssociationFromJson(const Json& json);
// {"name", "source": "2001:db8::/64" or "any", "sourcePort", "destination",
// "destinationPort", "protocol", "direction", "action", "mode", "saName"}.
Json PolicyToJson(const HostCtl::Network::IpSecSpdParam& policy);
HostCtl::Network::IpSecSpdParam PolicyFromJson(const Json& json);

std::vector<HostCtl::Network::IpSecSadParam> ReadAssociations(Database& database);
std::vector<HostCtl::Network::IpSecSpdParam> ReadPolicies(Database& database);
// Empties the table's part and writes the records in their order.
void WriteAssociations(Database& database,
                       const std::vector<HostCtl::Network::IpSecSadParam>& associations);
void WritePolicies(Database& database,
                   const std::vector<HostCtl::Network::IpSecSpdParam>& policies);

}  // namespace HostSim::Ipsec
