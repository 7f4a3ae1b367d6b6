#include "hostsim/ipsec/IpsecStore.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "hostctl/HostCtlException.h"
#include "kelmctl/IpSecConfigImpl.h"

namespace HostSim::Ipsec {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::IpSecSadParam;
using HostCtl::Network::IpSecSpdParam;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;
using KelmCtl::Network::IpSecConfigImpl;

constexpr std::int64_t kAssociation = 0;
constexpr std::int64_t kPolicy = 1;

template <std::size_t N>
const char* Word(const char* const (&table)[N], int index) {
    return index >= 0 && static_cast<std::size_t>(index) < N ? table[index] : table[N - 1];
}

template <std::size_t N>
int Index(const char* const (&table)[N], const std::string& word, const char* what) {
    for (std::size_t index = 0; index < N; ++index) {
        if (word == table[index]) {
            return static_cast<int>(index);
        }
    }
    throw HostCtlException(std::string("Unknown ") + what + " \"" + word + "\"");
}

std::string NetworkText(const Ipv6Address& address, std::uint32_t prefixLength) {
    if (address == Ipv6Address() && prefixLength == 0) {
        return "any";
    }
    return address.GetStringAddress() + "/" + std::to_string(prefixLength);
}

Ipv6Network NetworkFromText(const std::string& text) {
    return text == "any" ? Ipv6Network() : Ipv6Network(text);
}

std::vector<std::string> ReadDetails(Database& database, std::int64_t kind) {
    auto row = database.Query("SELECT detail FROM ipsec WHERE kind = ?1 ORDER BY position");
    row.Bind(1, kind);
    std::vector<std::string> details;
    while (row.Step()) {
        details.push_back(row.Text(0));
    }
    return details;
}

void WriteDetails(Database& database, std::int64_t kind, const std::vector<Json>& records) {
    database.Query("DELETE FROM ipsec WHERE kind = ?1").Bind(1, kind).Run();
    for (const Json& record : records) {
        database.Query("INSERT INTO ipsec (kind, detail) VALUES (?1, ?2)")
            .Bind(1, kind)
            .Bind(2, record.dump())
            .Run();
    }
}

}  // namespace

Json AssociationToJson(const IpSecSadParam& association) {
    char spi[16];
    std::snprintf(spi, sizeof spi, "0x%" PRIx32, association.spi);
    return {
        {"name", association.name},
        {"source", association.source.GetStringAddress()},
        {"destination", association.destination.GetStringAddress()},
        {"spi", spi},
        {"state", Word(IpSecConfigImpl::SA_STATE, association.state)},
        {"lifetime", association.lifetime},
        {"mode", Word(IpSecConfigImpl::SA_MODE, association.mode)},
        {"encryptionAlgorithm",
         Word(IpSecConfigImpl::SA_ENCPT_ALG, association.encryptionAlgorithm)},
        {"encryptionKey", association.encryptionKey},
        {"integrityAlgorithm", Word(IpSecConfigImpl::SA_AUTH_ALG, association.integrityAlgorithm)},
        {"integrityKey", association.integrityKey}};
}

IpSecSadParam AssociationFromJson(const Json& json) {
    IpSecSadParam association;
    association.name = json.at("name").get<std::string>();
    association.source = Ipv6Address(json.at("source").get<std::string>());
    association.destination = Ipv6Address(json.at("destination").get<std::string>());
    const std::string spi = json.at("spi").get<std::string>();
    char* end = nullptr;
    const unsigned long value = std::strtoul(spi.c_str(), &end, 16);
    if (spi.empty() || *end != '\0' || value > 0xffffffffUL) {
        throw HostCtlException("The SPI of security association " + association.name +
                               " is a 32-bit hexadecimal number, not \"" + spi + "\"");
    }
    association.spi = static_cast<std::uint32_t>(value);
    association.state = Index(IpSecConfigImpl::SA_STATE, json.value("state", "mature"), "state");
    association.lifetime = json.value("lifetime", std::uint64_t{0});
    association.mode = Index(IpSecConfigImpl::SA_MODE, json.value("mode", "transport"), "mode");
    association.encryptionAlgorithm =
        Index(IpSecConfigImpl::SA_ENCPT_ALG, json.at("encryptionAlgorithm").get<std::string>(),
              "encryption algorithm");
    association.encryptionKey = json.value("encryptionKey", "");
    association.integrityAlgorithm =
        Index(IpSecConfigImpl::SA_AUTH_ALG, json.at("integrityAlgorithm").get<std::string>(),
              "integrity algorithm");
    association.integrityKey = json.value("integrityKey", "");
    return association;
}

Json PolicyToJson(const IpSecSpdParam& policy) {
    return {{"name", policy.name},
            {"source", NetworkText(policy.source, policy.sourcePrefixLength)},
            {"sourcePort", policy.sourcePort},
            {"destination", NetworkText(policy.destination, policy.destinationPrefixLength)},
            {"destinationPort", policy.destinationPort},
            {"protocol", Word(IpSecConfigImpl::SP_UL_PROTO_TYPE, policy.upperLayerProtocol)},
            {"direction", Word(IpSecConfigImpl::SP_DIRECTION, policy.direction)},
            {"action", Word(IpSecConfigImpl::SP_ACTION, policy.action)},
            {"mode", Word(IpSecConfigImpl::SA_MODE, policy.mode)},
            {"saName", policy.saName}};
}

IpSecSpdParam PolicyFromJson(const Json& json) {
    IpSecSpdParam policy;
    policy.name = json.at("name").get<std::string>();
    const Ipv6Network source = NetworkFromText(json.at("source").get<std::string>());
    policy.source = source.GetAddress();
    policy.sourcePrefixLength = source.GetNetmask();
    policy.sourcePort = json.value("sourcePort", 0);
    const Ipv6Network destination = NetworkFromText(json.at("destination").get<std::string>());
    policy.destination = destination.GetAddress();
    policy.destinationPrefixLength = destination.GetNetmask();
    policy.destinationPort = json.value("destinationPort", 0);
    policy.upperLayerProtocol =
        Index(IpSecConfigImpl::SP_UL_PROTO_TYPE, json.value("protocol", "any"), "protocol");
    policy.direction =
        Index(IpSecConfigImpl::SP_DIRECTION, json.at("direction").get<std::string>(), "direction");
    policy.action =
        Index(IpSecConfigImpl::SP_ACTION, json.at("action").get<std::string>(), "action");
    policy.mode = Index(IpSecConfigImpl::SA_MODE, json.value("mode", "any"), "mode");
    policy.saName = json.value("saName", "");
    return policy;
}

std::vector<IpSecSadParam> ReadAssociations(Database& database) {
    std::vector<IpSecSadParam> associations;
    for (const std::string& detail : ReadDetails(database, kAssociation)) {
        associations.push_back(AssociationFromJson(Json::parse(detail)));
    }
    return associations;
}

std::vector<IpSecSpdParam> ReadPolicies(Database& database) {
    std::vector<IpSecSpdParam> policies;
    for (const std::string& detail : ReadDetails(database, kPolicy)) {
        policies.push_back(PolicyFromJson(Json::parse(detail)));
    }
    return policies;
}

void WriteAssociations(Database& database, const std::vector<IpSecSadParam>& associations) {
    std::vector<Json> records;
    for (const auto& association : associations) {
        records.push_back(AssociationToJson(association));
    }
    WriteDetails(database, kAssociation, records);
}

void WritePolicies(Database& database, const std::vector<IpSecSpdParam>& policies) {
    std::vector<Json> records;
    for (const auto& policy : policies) {
        records.push_back(PolicyToJson(policy));
    }
    WriteDetails(database, kPolicy, records);
}

}  // namespace HostSim::Ipsec
