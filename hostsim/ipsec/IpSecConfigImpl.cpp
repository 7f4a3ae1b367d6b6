#include "kelmctl/IpSecConfigImpl.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Names.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/ipsec/IpsecStore.h"
#include "hostsim/linux/LiveHost.h"

namespace KelmCtl::Network {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::IpSecSadParam;
using HostCtl::Network::IpSecSpdParam;
using HostSim::PassOperation;

constexpr int kMatureState = 1;

// The index of `word` among the first `words` names of `table`; an empty word gives `words`,
// the value a record starts with.
template <std::size_t N>
int Convert(const char* const (&table)[N], const std::string& word, const char* what) {
    if (word.empty()) {
        return static_cast<int>(N - 1);
    }
    for (std::size_t index = 0; index + 1 < N; ++index) {
        if (word == table[index]) {
            return static_cast<int>(index);
        }
    }
    std::string known;
    for (std::size_t index = 0; index + 1 < N; ++index) {
        known += (index == 0 ? "" : index + 2 == N ? " or " : ", ") + std::string(table[index]);
    }
    throw HostCtlException("Unknown " + std::string(what) + " '" + word + "': expected " + known);
}

std::string SpiText(std::uint32_t spi) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%" PRIx32, spi);
    return text;
}

bool SameFlow(const IpSecSadParam& a, const IpSecSadParam& b) {
    return a.source == b.source && a.destination == b.destination && a.spi == b.spi;
}

// One change of the databases: read both, change, write back what changed.
template <class Change>
void Modify(Change&& change) {
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    auto associations = HostSim::Ipsec::ReadAssociations(database);
    auto policies = HostSim::Ipsec::ReadPolicies(database);
    change(associations, policies);
    HostSim::Ipsec::WriteAssociations(database, associations);
    HostSim::Ipsec::WritePolicies(database, policies);
    transaction.Commit();
}

HostCtlException NoAssociationNamed(const std::string& name) {
    return HostCtlException("There is no security association named " + name);
}

HostCtlException NoAutoAssociation(const IpSecSadParam& association) {
    return HostCtlException("There is no automatic security association from " +
                            association.source.GetStringAddress() + " to " +
                            association.destination.GetStringAddress() + " with SPI " +
                            SpiText(association.spi));
}

HostCtlException NoPolicyNamed(const std::string& name) {
    return HostCtlException("There is no security policy named " + name);
}

// The records as the live host takes them, with their addresses as text.
HostSim::Live::IpsecAssociation LiveAssociation(const IpSecSadParam& association) {
    return {association.name,
            association.state,
            association.lifetime,
            association.spi,
            association.source.GetStringAddress(),
            association.destination.GetStringAddress(),
            association.mode,
            association.encryptionAlgorithm,
            association.encryptionKey,
            association.integrityAlgorithm,
            association.integrityKey};
}

HostSim::Live::IpsecPolicy LivePolicy(const IpSecSpdParam& policy) {
    return {policy.name,
            policy.source.GetStringAddress(),
            policy.sourcePrefixLength,
            policy.sourcePort,
            policy.destination.GetStringAddress(),
            policy.destinationPrefixLength,
            policy.destinationPort,
            policy.upperLayerProtocol,
            policy.direction,
            policy.action,
            policy.mode,
            policy.saName};
}

// Policies that named a removed association keep their place, naming "UNKNOWN".
void ForgetAssociation(std::vector<IpSecSpdParam>& policies, const std::string& name) {
    for (auto& policy : policies) {
        if (policy.saName == name) {
            policy.saName = HostSim::Ipsec::kUnknownSa;
        }
    }
}

}  // namespace

const char* const IpSecConfigImpl::SA_STATE[5] = {"larval", "mature", "dying", "dead", "unknown"};
const char* const IpSecConfigImpl::SA_MODE[3] = {"transport", "tunnel", "any"};
const char* const IpSecConfigImpl::SA_ENCPT_ALG[4] = {"null", "3des-cbc", "aes128-cbc", "unknown"};
const char* const IpSecConfigImpl::SA_AUTH_ALG[3] = {"hmac-sha1", "hmac-sha2-256", "unknown"};
const char* const IpSecConfigImpl::SP_UL_PROTO_TYPE[5] = {"any", "tcp", "udp", "icmp6", "unknown"};
const char* const IpSecConfigImpl::SP_DIRECTION[3] = {"in", "out", "unknown"};
const char* const IpSecConfigImpl::SP_ACTION[4] = {"none", "discard", "ipsec", "unknown"};

IpSecConfigImpl::IpSecConfigImpl() {
    PassOperation("IpSecConfigImpl::IpSecConfigImpl");
    if (HostSim::LiveHost() == nullptr) {
        HostSim::Store();
    }
}

int IpSecConfigImpl::StringToIpSecMode(const std::string& word) {
    PassOperation("IpSecConfigImpl::StringToIpSecMode", word);
    return Convert(SA_MODE, word, "IPsec mode");
}

int IpSecConfigImpl::StringToIpSecEncyptAlgo(const std::string& word) {
    PassOperation("IpSecConfigImpl::StringToIpSecEncyptAlgo", word);
    return Convert(SA_ENCPT_ALG, word, "encryption algorithm");
}

int IpSecConfigImpl::StringToIpSecAuthAlgo(const std::string& word) {
    PassOperation("IpSecConfigImpl::StringToIpSecAuthAlgo", word);
    return Convert(SA_AUTH_ALG, word, "integrity algorithm");
}

int IpSecConfigImpl::StringToIpSecULProtoType(const std::string& word) {
    PassOperation("IpSecConfigImpl::StringToIpSecULProtoType", word);
    return word.empty() ? 0 : Convert(SP_UL_PROTO_TYPE, word, "upper layer protocol");
}

int IpSecConfigImpl::StringToIpSecDirection(const std::string& word) {
    PassOperation("IpSecConfigImpl::StringToIpSecDirection", word);
    return Convert(SP_DIRECTION, word, "flow direction");
}

int IpSecConfigImpl::StringToIpSecAction(const std::string& word) {
    PassOperation("IpSecConfigImpl::StringToIpSecAction", word);
    return Convert(SP_ACTION, word, "action");
}

void IpSecConfigImpl::AddSADConfig(const IpSecSadParam& association) {
    PassOperation("IpSecConfigImpl::AddSADConfig", association.name);
    HostSim::CheckObjectName(association.name, "security association");
    HostSim::CheckStoredText(association.encryptionKey, "encryption key");
    HostSim::CheckStoredText(association.integrityKey, "integrity key");
    if (association.name == HostSim::Ipsec::kAutoName) {
        throw HostCtlException(
            "The name auto is kept for the security associations the kernel "
            "makes");
    }
    if (association.encryptionAlgorithm < 0 || association.encryptionAlgorithm > 2 ||
        association.integrityAlgorithm < 0 || association.integrityAlgorithm > 1) {
        throw HostCtlException("Security association " + association.name +
                               " needs an encryption and an integrity algorithm");
    }
    if (auto* live = HostSim::LiveHost()) {
        live->Ipsec().AddAssociation(LiveAssociation(association));
        return;
    }
    Modify([&association](std::vector<IpSecSadParam>& associations, std::vector<IpSecSpdParam>&) {
        for (const auto& existing : associations) {
            if (existing.name == association.name) {
                throw HostCtlException("Security association " + association.name +
                                       " already exists");
            }
            if (SameFlow(existing, association)) {
                throw HostCtlException("Security association " + existing.name + " from " +
                                       existing.source.GetStringAddress() + " to " +
                                       existing.destination.GetStringAddress() +
                                       " already has SPI " + SpiText(existing.spi));
            }
        }
        IpSecSadParam added = association;
        added.state = kMatureState;
        associations.push_back(added);
    });
}

void IpSecConfigImpl::RemoveSADConfig(const std::string& name) {
    PassOperation("IpSecConfigImpl::RemoveSADConfig", name);
    if (auto* live = HostSim::LiveHost()) {
        if (name == HostSim::Ipsec::kAutoName || !live->Ipsec().RemoveAssociation(name)) {
            throw NoAssociationNamed(name);
        }
        return;
    }
    Modify([&name](std::vector<IpSecSadParam>& associations, std::vector<IpSecSpdParam>& policies) {
        if (name == HostSim::Ipsec::kAutoName ||
            std::erase_if(associations, [&name](const IpSecSadParam& association) {
                return association.name == name;
            }) == 0) {
            throw NoAssociationNamed(name);
        }
        ForgetAssociation(policies, name);
    });
}

void IpSecConfigImpl::RemoveAutoSADConfig(const IpSecSadParam& association) {
    PassOperation("IpSecConfigImpl::RemoveAutoSADConfig", association.name);
    if (auto* live = HostSim::LiveHost()) {
        if (!live->Ipsec().RemoveAutoAssociation(LiveAssociation(association))) {
            throw NoAutoAssociation(association);
        }
        return;
    }
    Modify([&association](std::vector<IpSecSadParam>& associations, std::vector<IpSecSpdParam>&) {
        if (std::erase_if(associations, [&association](const IpSecSadParam& existing) {
                return existing.name == HostSim::Ipsec::kAutoName &&
                       SameFlow(existing, association);
            }) == 0) {
            throw NoAutoAssociation(association);
        }
    });
}

void IpSecConfigImpl::FlushSADConfig() {
    PassOperation("IpSecConfigImpl::FlushSADConfig");
    if (auto* live = HostSim::LiveHost()) {
        live->Ipsec().FlushAssociations();
        return;
    }
    Modify([](std::vector<IpSecSadParam>& associations, std::vector<IpSecSpdParam>& policies) {
        for (const auto& association : associations) {
            ForgetAssociation(policies, association.name);
        }
        associations.clear();
    });
}

void IpSecConfigImpl::GetSADConfigList(std::vector<IpSecSadParam>& associations) {
    PassOperation("IpSecConfigImpl::GetSADConfigList");
    if (auto* live = HostSim::LiveHost()) {
        for (const auto& listed : live->Ipsec().Associations()) {
            IpSecSadParam& association = associations.emplace_back();
            association.name = listed.name;
            association.state = listed.state;
            association.lifetime = listed.lifetime;
            association.spi = listed.spi;
            association.source = HostCtl::Network::Ipv6Address(listed.source);
            association.destination = HostCtl::Network::Ipv6Address(listed.destination);
            association.mode = listed.mode;
            association.encryptionAlgorithm = listed.encryptionAlgorithm;
            association.integrityAlgorithm = listed.integrityAlgorithm;
        }
        return;
    }
    auto stored = HostSim::Ipsec::ReadAssociations(HostSim::Store());
    associations.insert(associations.end(), stored.begin(), stored.end());
}

void IpSecConfigImpl::AddSPDConfig(const IpSecSpdParam& policy) {
    PassOperation("IpSecConfigImpl::AddSPDConfig", policy.name);
    HostSim::CheckObjectName(policy.name, "security policy");
    if (policy.direction < 0 || policy.direction > 1) {
        throw HostCtlException("Security policy " + policy.name +
                               " needs a flow direction, in or out");
    }
    if (policy.action < 0 || policy.action > 2) {
        throw HostCtlException("Security policy " + policy.name +
                               " needs an action, none, discard or ipsec");
    }
    if (auto* live = HostSim::LiveHost()) {
        live->Ipsec().AddPolicy(LivePolicy(policy));
        return;
    }
    Modify([&policy](std::vector<IpSecSadParam>& associations,
                     std::vector<IpSecSpdParam>& policies) {
        for (const auto& existing : policies) {
            if (existing.name == policy.name) {
                throw HostCtlException("Security policy " + policy.name + " already exists");
            }
        }
        if (!policy.saName.empty() && std::none_of(associations.begin(), associations.end(),
                                                   [&policy](const IpSecSadParam& association) {
                                                       return association.name == policy.saName &&
                                                              policy.saName !=
                                                                  HostSim::Ipsec::kAutoName;
                                                   })) {
            throw NoAssociationNamed(policy.saName);
        }
        policies.push_back(policy);
    });
}

void IpSecConfigImpl::RemoveSPDConfig(const std::string& name) {
    PassOperation("IpSecConfigImpl::RemoveSPDConfig", name);
    if (auto* live = HostSim::LiveHost()) {
        if (!live->Ipsec().RemovePolicy(name)) {
            throw NoPolicyNamed(name);
        }
        return;
    }
    Modify([&name](std::vector<IpSecSadParam>&, std::vector<IpSecSpdParam>& policies) {
        if (std::erase_if(policies, [&name](const IpSecSpdParam& policy) {
                return policy.name == name;
            }) == 0) {
            throw NoPolicyNamed(name);
        }
    });
}

void IpSecConfigImpl::FlushSPDConfig() {
    PassOperation("IpSecConfigImpl::FlushSPDConfig");
    if (auto* live = HostSim::LiveHost()) {
        live->Ipsec().FlushPolicies();
        return;
    }
    Modify([](std::vector<IpSecSadParam>&, std::vector<IpSecSpdParam>& policies) {
        policies.clear();
    });
}

void IpSecConfigImpl::GetSPDConfigList(std::vector<IpSecSpdParam>& policies) {
    PassOperation("IpSecConfigImpl::GetSPDConfigList");
    if (auto* live = HostSim::LiveHost()) {
        for (const auto& listed : live->Ipsec().Policies()) {
            IpSecSpdParam& policy = policies.emplace_back();
            policy.name = listed.name;
            policy.source = HostCtl::Network::Ipv6Address(listed.source);
            policy.sourcePrefixLength = listed.sourcePrefixLength;
            policy.sourcePort = listed.sourcePort;
            policy.destination = HostCtl::Network::Ipv6Address(listed.destination);
            policy.destinationPrefixLength = listed.destinationPrefixLength;
            policy.destinationPort = listed.destinationPort;
            policy.upperLayerProtocol = listed.upperLayerProtocol;
            policy.direction = listed.direction;
            policy.action = listed.action;
            policy.mode = listed.mode;
            policy.saName = listed.saName;
        }
        return;
    }
    auto stored = HostSim::Ipsec::ReadPolicies(HostSim::Store());
    policies.insert(policies.end(), stored.begin(), stored.end());
}

}  // namespace KelmCtl::Network
