// The IPsec subject: the security association and policy databases and the "ipsec" section of a
// profile. It has no record file of its own: its records are the platform's IpSecSadParam and
// IpSecSpdParam, kept whole as JSON in the detail column of one table, so there is no record
// type and no column table to describe (IpsecStore.h has their JSON form).
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Subject.h"
#include "hostsim/ipsec/IpsecStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::IpSecSadParam;
using HostCtl::Network::IpSecSpdParam;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE ipsec ("
    " position INTEGER PRIMARY KEY, kind INTEGER NOT NULL, name TEXT NOT NULL,"
    " detail TEXT NOT NULL);",
    // The name is read from the detail alone.
    "ALTER TABLE ipsec DROP COLUMN name;",
};

constexpr const char* kTables[] = {"ipsec"};

// Copies of a scaled host get their names renumbered and their SPIs moved by 0x10000 a copy.
constexpr std::uint32_t kSpiStride = 0x10000;

void ImportSection(Database& database, const Json& section, const Scale& scale) {
    std::vector<IpSecSadParam> associations;
    std::vector<IpSecSpdParam> policies;
    std::set<std::string> names;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const Json& json : ArrayMember(section, "securityAssociations")) {
            IpSecSadParam association = Ipsec::AssociationFromJson(json);
            association.name = scale.Name(association.name, copy);
            association.spi += copy * kSpiStride;
            if (association.name != Ipsec::kAutoName && !names.insert(association.name).second) {
                throw HostCtlException("Security association " + association.name +
                                       " appears twice");
            }
            associations.push_back(association);
        }
    }
    names.clear();
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const Json& json : ArrayMember(section, "securityPolicies")) {
            IpSecSpdParam policy = Ipsec::PolicyFromJson(json);
            policy.name = scale.Name(policy.name, copy);
            if (!policy.saName.empty() && policy.saName != Ipsec::kUnknownSa) {
                policy.saName = scale.Name(policy.saName, copy);
            }
            if (!names.insert(policy.name).second) {
                throw HostCtlException("Security policy " + policy.name + " appears twice");
            }
            policies.push_back(policy);
        }
    }
    Ipsec::WriteAssociations(database, associations);
    Ipsec::WritePolicies(database, policies);
}

Json ExportSection(Database& database) {
    Json associations = Json::array();
    for (const auto& association : Ipsec::ReadAssociations(database)) {
        associations.push_back(Ipsec::AssociationToJson(association));
    }
    Json policies = Json::array();
    for (const auto& policy : Ipsec::ReadPolicies(database)) {
        policies.push_back(Ipsec::PolicyToJson(policy));
    }
    return {{"securityAssociations", associations}, {"securityPolicies", policies}};
}

}  // namespace

extern const Subject ipsecSubject;
const Subject ipsecSubject = {
    .name = "ipsec",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Ipsec::kDefaultSection,
    .importSection = ImportSection,
    .exportSection = ExportSection,
};

}  // namespace HostSim
