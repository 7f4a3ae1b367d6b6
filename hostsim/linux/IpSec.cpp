// IPsec of the live host as XFRM: an association is an ESP state of IPv6, known to the kernel
// by its destination and SPI; a policy is an XFRM policy of an IPv6 selector, known by the
// index the kernel gives it. The kernel keeps no names, so the names given here are kept in a
// file of the namespace's own under /run, which lives as long as the kernel's databases do
// (until the next boot); a name whose state or policy has gone is forgotten.
#include <arpa/inet.h>
#include <linux/xfrm.h>
#include <netinet/in.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

#include "hostctl/HostCtlException.h"
#include "hostsim/linux/Files.h"
#include "hostsim/linux/IpSec.h"
#include "hostsim/linux/Netlink.h"
#include "hostsim/values/AddressText.h"

namespace HostSim::Linux {

namespace {

using HostCtl::Lib::HostCtlException;
using Live::IpsecAssociation;
using Live::IpsecPolicy;
using Address = std::array<std::uint8_t, 16>;

constexpr char kNamesFolder[] = "/run/autocli/ipsec";
constexpr mode_t kNamesMode = 0600;
constexpr mode_t kNamesFolderMode = 0700;

// Indices of the host's name tables (IpSecConfigImpl's SA_* and SP_* arrays).
constexpr int kLarval = 0;
constexpr int kMature = 1;
constexpr int kAnyMode = 2;
constexpr int kUnknownProtocol = 4;
constexpr int kUnknownDirection = 2;
constexpr int kActionNone = 0;
constexpr int kActionDiscard = 1;
constexpr int kActionIpsec = 2;
constexpr char kUnknownSa[] = "UNKNOWN";

// The kernel's algorithms by the host's index, and the integrity lengths it truncates to.
constexpr const char* kEncryptionAlgorithms[] = {"ecb(cipher_null)", "cbc(des3_ede)", "cbc(aes)"};
constexpr const char* kIntegrityAlgorithms[] = {"hmac(sha1)", "hmac(sha256)"};
constexpr unsigned kIntegrityTruncation[] = {96, 128};
constexpr std::uint8_t kProtocols[] = {0, IPPROTO_TCP, IPPROTO_UDP, IPPROTO_ICMPV6};

struct NamedState {
    std::string name;
    Address destination{};
    std::uint32_t spi = 0;
};

struct NamedPolicy {
    std::string name;
    std::uint32_t index = 0;
    std::string saName;
};

struct Names {
    std::vector<NamedState> states;
    std::vector<NamedPolicy> policies;
};

struct KernelState {
    xfrm_usersa_info info{};
    bool hasAlgorithms = false;
    int encryption = std::size(kEncryptionAlgorithms);
    int integrity = std::size(kIntegrityAlgorithms);
};

struct KernelPolicy {
    xfrm_userpolicy_info info{};
    std::vector<xfrm_user_tmpl> templates;
};

Address FromXfrm(const xfrm_address_t& address) {
    Address bytes{};
    std::memcpy(bytes.data(), &address.in6, bytes.size());
    return bytes;
}

xfrm_address_t ToXfrm(const Address& bytes) {
    xfrm_address_t address{};
    std::memcpy(&address.in6, bytes.data(), bytes.size());
    return address;
}

// The bytes of an address the host library gave as text in its canonical form.
Address FromText(const std::string& text) {
    Address bytes{};
    inet_pton(AF_INET6, text.c_str(), bytes.data());
    return bytes;
}

std::string AddressText(const Address& bytes) {
    return Ipv6Text(bytes.data());
}

// The names file of the namespace the process runs in, named after the namespace's inode.
std::string NamesPath() {
    struct stat space {};
    if (stat("/proc/thread-self/ns/net", &space) != 0) {
        ThrowKernelError(errno, "/proc/thread-self/ns/net");
    }
    return std::string(kNamesFolder) + "/net-" + std::to_string(space.st_ino);
}

// Lines "sa<TAB>destination<TAB>spi<TAB>name" and "sp<TAB>index<TAB>SA name<TAB>name"; a name
// holds no control character, so neither a tab nor a newline.
Names ReadNames() {
    Names names;
    const auto text = ReadTextFile(NamesPath());
    if (!text) {
        return names;
    }
    std::istringstream lines(*text);
    std::string line;
    while (std::getline(lines, line)) {
        std::vector<std::string> fields;
        std::istringstream parts(line);
        for (std::string field; std::getline(parts, field, '\t');) {
            fields.push_back(field);
        }
        if (fields.size() != 4) {
            continue;
        }
        if (fields[0] == "sa") {
            NamedState state{fields[3]};
            if (inet_pton(AF_INET6, fields[1].c_str(), state.destination.data()) == 1) {
                state.spi =
                    static_cast<std::uint32_t>(std::strtoul(fields[2].c_str(), nullptr, 16));
                names.states.push_back(state);
            }
        } else if (fields[0] == "sp") {
            names.policies.push_back(
                {fields[3],
                 static_cast<std::uint32_t>(std::strtoul(fields[1].c_str(), nullptr, 10)),
                 fields[2]});
        }
    }
    return names;
}

void WriteNames(const Names& names) {
    std::ostringstream text;
    for (const NamedState& state : names.states) {
        text << "sa\t" << AddressText(state.destination) << '\t' << std::hex << state.spi
             << std::dec << '\t' << state.name << '\n';
    }
    for (const NamedPolicy& policy : names.policies) {
        text << "sp\t" << policy.index << '\t' << policy.saName << '\t' << policy.name << '\n';
    }
    MakeFolders(kNamesFolder, kNamesFolderMode);
    ReplaceTextFile(NamesPath(), text.str(), kNamesMode);
}

// The host's index of the kernel's algorithm name; the table's size for one it has no word for.
template <std::size_t N>
int AlgorithmIndex(const char* name, const char* const (&table)[N]) {
    for (std::size_t index = 0; index < N; ++index) {
        if (std::strcmp(name, table[index]) == 0) {
            return static_cast<int>(index);
        }
    }
    return static_cast<int>(N);
}

// The ESP states of IPv6, in the kernel's order.
std::vector<KernelState> DumpStates(NetlinkSocket& xfrm) {
    std::vector<KernelState> states;
    Message request(XFRM_MSG_GETSA, NLM_F_DUMP);
    xfrm.Exchange(request, [&states](const nlmsghdr& message) {
        KernelState state;
        std::memcpy(&state.info, mnl_nlmsg_get_payload(&message), sizeof state.info);
        if (state.info.family != AF_INET6 || state.info.id.proto != IPPROTO_ESP) {
            return;
        }
        const auto attributes = ParseAttributes(message, sizeof state.info, XFRMA_MAX);
        if (const nlattr* crypt = attributes[XFRMA_ALG_CRYPT]) {
            const auto* algorithm = static_cast<const xfrm_algo*>(mnl_attr_get_payload(crypt));
            state.encryption = AlgorithmIndex(algorithm->alg_name, kEncryptionAlgorithms);
            state.hasAlgorithms = true;
        }
        const nlattr* auth = attributes[XFRMA_ALG_AUTH_TRUNC] != nullptr
                                 ? attributes[XFRMA_ALG_AUTH_TRUNC]
                                 : attributes[XFRMA_ALG_AUTH];
        if (auth != nullptr) {
            // Both forms begin with the name.
            const auto* algorithm = static_cast<const char*>(mnl_attr_get_payload(auth));
            state.integrity = AlgorithmIndex(algorithm, kIntegrityAlgorithms);
            state.hasAlgorithms = true;
        }
        states.push_back(state);
    });
    return states;
}

// Every policy of the main type, in the kernel's order.
std::vector<KernelPolicy> DumpPolicies(NetlinkSocket& xfrm) {
    std::vector<KernelPolicy> policies;
    Message request(XFRM_MSG_GETPOLICY, NLM_F_DUMP);
    xfrm.Exchange(request, [&policies](const nlmsghdr& message) {
        KernelPolicy policy;
        std::memcpy(&policy.info, mnl_nlmsg_get_payload(&message), sizeof policy.info);
        const auto attributes = ParseAttributes(message, sizeof policy.info, XFRMA_MAX);
        if (const nlattr* type = attributes[XFRMA_POLICY_TYPE]) {
            const auto* policyType =
                static_cast<const xfrm_userpolicy_type*>(mnl_attr_get_payload(type));
            if (policyType->type != XFRM_POLICY_TYPE_MAIN) {
                return;
            }
        }
        if (const nlattr* templates = attributes[XFRMA_TMPL]) {
            const auto* first = static_cast<const xfrm_user_tmpl*>(mnl_attr_get_payload(templates));
            policy.templates.assign(
                first, first + mnl_attr_get_payload_len(templates) / sizeof(xfrm_user_tmpl));
        }
        policies.push_back(std::move(policy));
    });
    return policies;
}

bool SameState(const NamedState& named, const xfrm_usersa_info& info) {
    return named.destination == FromXfrm(info.id.daddr) && named.spi == ntohl(info.id.spi);
}

// The names whose state or policy is still there.
Names LiveNames(const std::vector<KernelState>& states, const std::vector<KernelPolicy>& policies) {
    Names names = ReadNames();
    std::erase_if(names.states, [&states](const NamedState& named) {
        return std::none_of(states.begin(), states.end(), [&named](const KernelState& state) {
            return SameState(named, state.info);
        });
    });
    std::erase_if(names.policies, [&policies](const NamedPolicy& named) {
        return std::none_of(policies.begin(), policies.end(), [&named](const KernelPolicy& policy) {
            return policy.info.index == named.index;
        });
    });
    return names;
}

const NamedState* FindState(const Names& names, const std::string& name) {
    const auto found =
        std::find_if(names.states.begin(), names.states.end(),
                     [&name](const NamedState& state) { return state.name == name; });
    return found == names.states.end() ? nullptr : &*found;
}

const NamedPolicy* FindPolicy(const Names& names, const std::string& name) {
    const auto found =
        std::find_if(names.policies.begin(), names.policies.end(),
                     [&name](const NamedPolicy& policy) { return policy.name == name; });
    return found == names.policies.end() ? nullptr : &*found;
}

// A key as the user gave it: "0x" and hexadecimal digits, else the text's own bytes.
std::string KeyBytes(const std::string& text) {
    const bool hex = text.size() > 2 && text.compare(0, 2, "0x") == 0 && text.size() % 2 == 0 &&
                     text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos;
    if (!hex) {
        return text;
    }
    std::string bytes;
    for (std::size_t i = 2; i < text.size(); i += 2) {
        bytes.push_back(static_cast<char>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

template <class Algorithm>
void PutAlgorithm(Message& message, std::uint16_t type, Algorithm algorithm,
                  const std::string& key) {
    std::vector<char> payload(sizeof algorithm + key.size());
    algorithm.alg_key_len = static_cast<unsigned>(key.size() * 8);
    std::memcpy(payload.data(), &algorithm, sizeof algorithm);
    std::memcpy(payload.data() + sizeof algorithm, key.data(), key.size());
    mnl_attr_put(message.Header(), type, payload.size(), payload.data());
}

void FillLifetime(xfrm_lifetime_cfg& lifetime) {
    lifetime.soft_byte_limit = XFRM_INF;
    lifetime.hard_byte_limit = XFRM_INF;
    lifetime.soft_packet_limit = XFRM_INF;
    lifetime.hard_packet_limit = XFRM_INF;
}

std::uint8_t XfrmMode(int mode) {
    return mode == 1 ? XFRM_MODE_TUNNEL : XFRM_MODE_TRANSPORT;
}

int HostMode(std::uint8_t mode) {
    return mode == XFRM_MODE_TRANSPORT ? 0 : mode == XFRM_MODE_TUNNEL ? 1 : kAnyMode;
}

xfrm_usersa_id StateId(const Address& destination, std::uint32_t spi) {
    xfrm_usersa_id id{};
    id.daddr = ToXfrm(destination);
    id.spi = htonl(spi);
    id.family = AF_INET6;
    id.proto = IPPROTO_ESP;
    return id;
}

void DeleteState(NetlinkSocket& xfrm, const Address& destination, std::uint32_t spi) {
    Message request(XFRM_MSG_DELSA, 0);
    *request.PutExtra<xfrm_usersa_id>() = StateId(destination, spi);
    xfrm.Exchange(request);
}

xfrm_selector Selector(const IpsecPolicy& policy) {
    xfrm_selector selector{};
    selector.family = AF_INET6;
    selector.saddr = ToXfrm(FromText(policy.source));
    selector.daddr = ToXfrm(FromText(policy.destination));
    selector.prefixlen_s = static_cast<std::uint8_t>(policy.sourcePrefixLength);
    selector.prefixlen_d = static_cast<std::uint8_t>(policy.destinationPrefixLength);
    if (policy.sourcePort != 0) {
        selector.sport = htons(static_cast<std::uint16_t>(policy.sourcePort));
        selector.sport_mask = 0xffff;
    }
    if (policy.destinationPort != 0) {
        selector.dport = htons(static_cast<std::uint16_t>(policy.destinationPort));
        selector.dport_mask = 0xffff;
    }
    if (policy.upperLayerProtocol >= 0 &&
        policy.upperLayerProtocol < static_cast<int>(std::size(kProtocols))) {
        selector.proto = kProtocols[policy.upperLayerProtocol];
    }
    return selector;
}

int HostProtocol(std::uint8_t protocol) {
    const auto* found = std::find(std::begin(kProtocols), std::end(kProtocols), protocol);
    return found == std::end(kProtocols) ? kUnknownProtocol
                                         : static_cast<int>(found - std::begin(kProtocols));
}

}  // namespace

void IpSec::AddAssociation(const IpsecAssociation& association) {
    NetlinkSocket xfrm(NETLINK_XFRM);
    Names names = LiveNames(DumpStates(xfrm), DumpPolicies(xfrm));
    if (FindState(names, association.name) != nullptr) {
        throw HostCtlException("Security association " + association.name + " already exists");
    }
    Message request(XFRM_MSG_NEWSA, NLM_F_CREATE | NLM_F_EXCL);
    auto* info = request.PutExtra<xfrm_usersa_info>();
    info->family = AF_INET6;
    info->sel.family = AF_INET6;
    info->id.daddr = ToXfrm(FromText(association.destination));
    info->id.spi = htonl(association.spi);
    info->id.proto = IPPROTO_ESP;
    info->saddr = ToXfrm(FromText(association.source));
    info->mode = XfrmMode(association.mode);
    FillLifetime(info->lft);
    info->lft.hard_add_expires_seconds = association.lifetime;
    xfrm_algo encryption{};
    std::snprintf(encryption.alg_name, sizeof encryption.alg_name, "%s",
                  kEncryptionAlgorithms[association.encryptionAlgorithm]);
    PutAlgorithm(request, XFRMA_ALG_CRYPT, encryption, KeyBytes(association.encryptionKey));
    xfrm_algo_auth integrity{};
    std::snprintf(integrity.alg_name, sizeof integrity.alg_name, "%s",
                  kIntegrityAlgorithms[association.integrityAlgorithm]);
    integrity.alg_trunc_len = kIntegrityTruncation[association.integrityAlgorithm];
    PutAlgorithm(request, XFRMA_ALG_AUTH_TRUNC, integrity, KeyBytes(association.integrityKey));
    xfrm.Exchange(request);
    names.states.push_back({association.name, FromText(association.destination), association.spi});
    WriteNames(names);
}

bool IpSec::RemoveAssociation(const std::string& name) {
    NetlinkSocket xfrm(NETLINK_XFRM);
    Names names = LiveNames(DumpStates(xfrm), DumpPolicies(xfrm));
    const NamedState* named = FindState(names, name);
    if (named == nullptr) {
        return false;
    }
    DeleteState(xfrm, named->destination, named->spi);
    std::erase_if(names.states, [&name](const NamedState& state) { return state.name == name; });
    WriteNames(names);
    return true;
}

bool IpSec::RemoveAutoAssociation(const IpsecAssociation& association) {
    NetlinkSocket xfrm(NETLINK_XFRM);
    const auto states = DumpStates(xfrm);
    const NamedState wanted{{}, FromText(association.destination), association.spi};
    const bool automatic =
        std::any_of(states.begin(), states.end(),
                    [&wanted](const KernelState& state) { return SameState(wanted, state.info); });
    const Names names = LiveNames(states, DumpPolicies(xfrm));
    const bool named =
        std::any_of(names.states.begin(), names.states.end(), [&wanted](const NamedState& state) {
            return state.destination == wanted.destination && state.spi == wanted.spi;
        });
    if (!automatic || named) {
        return false;
    }
    DeleteState(xfrm, wanted.destination, wanted.spi);
    return true;
}

void IpSec::FlushAssociations() {
    NetlinkSocket xfrm(NETLINK_XFRM);
    Message request(XFRM_MSG_FLUSHSA, 0);
    request.PutExtra<xfrm_usersa_flush>()->proto = IPPROTO_ESP;
    xfrm.Exchange(request);
    Names names = LiveNames(DumpStates(xfrm), DumpPolicies(xfrm));
    WriteNames(names);
}

std::vector<Live::IpsecAssociation> IpSec::Associations() {
    NetlinkSocket xfrm(NETLINK_XFRM);
    const auto states = DumpStates(xfrm);
    const Names names = LiveNames(states, DumpPolicies(xfrm));
    std::vector<Live::IpsecAssociation> associations;
    for (const KernelState& state : states) {
        Live::IpsecAssociation association;
        const auto named = std::find_if(
            names.states.begin(), names.states.end(),
            [&state](const NamedState& named) { return SameState(named, state.info); });
        association.name = named == names.states.end() ? "auto" : named->name;
        // A state the kernel made for an acquire has no algorithms until it is filled in.
        association.state = state.hasAlgorithms ? kMature : kLarval;
        association.lifetime = state.info.lft.hard_add_expires_seconds;
        association.spi = ntohl(state.info.id.spi);
        association.source = AddressText(FromXfrm(state.info.saddr));
        association.destination = AddressText(FromXfrm(state.info.id.daddr));
        association.mode = HostMode(state.info.mode);
        association.encryptionAlgorithm = state.encryption;
        association.integrityAlgorithm = state.integrity;
        associations.push_back(std::move(association));
    }
    return associations;
}

void IpSec::AddPolicy(const IpsecPolicy& policy) {
    NetlinkSocket xfrm(NETLINK_XFRM);
    const auto states = DumpStates(xfrm);
    Names names = LiveNames(states, DumpPolicies(xfrm));
    if (FindPolicy(names, policy.name) != nullptr) {
        throw HostCtlException("Security policy " + policy.name + " already exists");
    }
    const NamedState* association = nullptr;
    if (policy.action == kActionIpsec && !policy.saName.empty()) {
        association = FindState(names, policy.saName);
        if (association == nullptr) {
            throw HostCtlException("There is no security association named " + policy.saName);
        }
    }
    Message request(XFRM_MSG_NEWPOLICY, NLM_F_CREATE | NLM_F_EXCL);
    auto* info = request.PutExtra<xfrm_userpolicy_info>();
    info->sel = Selector(policy);
    FillLifetime(info->lft);
    info->dir = policy.direction == 0 ? XFRM_POLICY_IN : XFRM_POLICY_OUT;
    info->action = policy.action == kActionDiscard ? XFRM_POLICY_BLOCK : XFRM_POLICY_ALLOW;
    if (policy.action == kActionIpsec) {
        // ESP by any association of the kernel's choosing, or by the one named.
        xfrm_user_tmpl ipsec{};
        ipsec.family = AF_INET6;
        ipsec.id.proto = IPPROTO_ESP;
        ipsec.mode = XfrmMode(policy.mode);
        ipsec.aalgos = ~0U;
        ipsec.ealgos = ~0U;
        ipsec.calgos = ~0U;
        if (association != nullptr) {
            const auto state =
                std::find_if(states.begin(), states.end(), [association](const KernelState& state) {
                    return SameState(*association, state.info);
                });
            ipsec.id.daddr = state->info.id.daddr;
            ipsec.id.spi = state->info.id.spi;
            ipsec.saddr = state->info.saddr;
        }
        mnl_attr_put(request.Header(), XFRMA_TMPL, sizeof ipsec, &ipsec);
    }
    const xfrm_selector selector = info->sel;
    const std::uint8_t direction = info->dir;
    xfrm.Exchange(request);
    // The kernel chose the policy's index; its selector and direction find it.
    Message lookup(XFRM_MSG_GETPOLICY, 0);
    auto* id = lookup.PutExtra<xfrm_userpolicy_id>();
    id->sel = selector;
    id->dir = direction;
    std::uint32_t index = 0;
    xfrm.Exchange(lookup, [&index](const nlmsghdr& message) {
        index = static_cast<const xfrm_userpolicy_info*>(mnl_nlmsg_get_payload(&message))->index;
    });
    names.policies.push_back(
        {policy.name, index, policy.action == kActionIpsec ? policy.saName : std::string()});
    WriteNames(names);
}

bool IpSec::RemovePolicy(const std::string& name) {
    NetlinkSocket xfrm(NETLINK_XFRM);
    Names names = LiveNames(DumpStates(xfrm), DumpPolicies(xfrm));
    const NamedPolicy* named = FindPolicy(names, name);
    if (named == nullptr) {
        return false;
    }
    Message request(XFRM_MSG_DELPOLICY, 0);
    auto* id = request.PutExtra<xfrm_userpolicy_id>();
    id->index = named->index;
    id->dir = static_cast<std::uint8_t>(named->index & 7);
    xfrm.Exchange(request);
    std::erase_if(names.policies,
                  [&name](const NamedPolicy& policy) { return policy.name == name; });
    WriteNames(names);
    return true;
}

void IpSec::FlushPolicies() {
    NetlinkSocket xfrm(NETLINK_XFRM);
    Message request(XFRM_MSG_FLUSHPOLICY, 0);
    xfrm.Exchange(request);
    Names names = LiveNames(DumpStates(xfrm), DumpPolicies(xfrm));
    WriteNames(names);
}

// Policies of other families than IPv6 are left out: these commands deal in IPv6 only.
std::vector<Live::IpsecPolicy> IpSec::Policies() {
    NetlinkSocket xfrm(NETLINK_XFRM);
    const auto states = DumpStates(xfrm);
    const auto policies = DumpPolicies(xfrm);
    const Names names = LiveNames(states, policies);
    std::vector<Live::IpsecPolicy> result;
    for (const KernelPolicy& policy : policies) {
        const xfrm_selector& selector = policy.info.sel;
        if (selector.family != AF_INET6) {
            continue;
        }
        Live::IpsecPolicy listed;
        const auto named = std::find_if(
            names.policies.begin(), names.policies.end(),
            [&policy](const NamedPolicy& named) { return named.index == policy.info.index; });
        if (named != names.policies.end()) {
            listed.name = named->name;
            if (!named->saName.empty()) {
                listed.saName =
                    FindState(names, named->saName) != nullptr ? named->saName : kUnknownSa;
            }
        }
        listed.source = AddressText(FromXfrm(selector.saddr));
        listed.sourcePrefixLength = selector.prefixlen_s;
        listed.sourcePort = selector.sport_mask != 0 ? ntohs(selector.sport) : 0;
        listed.destination = AddressText(FromXfrm(selector.daddr));
        listed.destinationPrefixLength = selector.prefixlen_d;
        listed.destinationPort = selector.dport_mask != 0 ? ntohs(selector.dport) : 0;
        listed.upperLayerProtocol = HostProtocol(selector.proto);
        listed.direction = policy.info.dir == XFRM_POLICY_IN    ? 0
                           : policy.info.dir == XFRM_POLICY_OUT ? 1
                                                                : kUnknownDirection;
        listed.action = policy.info.action == XFRM_POLICY_BLOCK ? kActionDiscard
                        : policy.templates.empty()              ? kActionNone
                                                                : kActionIpsec;
        listed.mode = policy.templates.empty() ? kAnyMode : HostMode(policy.templates[0].mode);
        result.push_back(std::move(listed));
    }
    return result;
}

}  // namespace HostSim::Linux
