#include "hostsim/linux/FirewallTable.h"

#include <linux/netfilter.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <sstream>

#include "hostctl/HostCtlException.h"

namespace HostSim::Linux {

using Firewall::AddressKind;
using Firewall::AllowedAddress;
using Firewall::Configuration;
using Firewall::Ruleset;
using HostCtl::Lib::HostCtlException;
using HostCtl::System::FirewallPortRule;
using nlohmann::json;

namespace {

constexpr std::uint8_t kFamily = NFPROTO_INET;
constexpr char kTableName[] = "kelmfw";
constexpr char kTable[] = "inet kelmfw";
constexpr char kInbound[] = "inbound";
constexpr char kOutbound[] = "outbound";
constexpr char kIpv4Suffix[] = ".ipv4";
constexpr char kIpv6Suffix[] = ".ipv6";
// The comment of a base chain: "defaultAction=PASS" or "defaultAction=DROP".
constexpr char kDefaultActionKey[] = "defaultAction=";
constexpr char kPass[] = "PASS";
constexpr char kDrop[] = "DROP";
// Reads and writes that another writer got in between are made again, this many times at most.
constexpr int kAttempts = 32;

std::string NotLoaded() {
    return std::string("The firewall is not loaded: there is no table ") + kTable;
}

// A ruleset's id names its chain and sets, and a label is a rule's comment: nft takes an id
// that is a plain name and a label without quotes.
void CheckNames(const Ruleset& ruleset) {
    const std::string& id = ruleset.id;
    const bool plain =
        !id.empty() && (std::isalpha(static_cast<unsigned char>(id[0])) || id[0] == '_') &&
        std::all_of(id.begin(), id.end(),
                    [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; });
    if (!plain || id == kInbound || id == kOutbound) {
        throw HostCtlException("The ruleset id " + id + " can't name a chain of table " + kTable);
    }
    for (const FirewallPortRule& rule : ruleset.rules) {
        if (rule.label.find_first_of("\"\\\n") != std::string::npos) {
            throw HostCtlException("The rule label " + rule.label + " of ruleset " + id +
                                   " can't be a comment of table " + kTable);
        }
    }
}

// The settings a ruleset's chain carries in its comment.
constexpr const char* kSettingKeys[] = {"allowedAll", "clients", "enabledFixed", "allowedIpFixed"};

std::string SettingsComment(const Firewall::RulesetRecord& record) {
    auto word = [](bool value) { return value ? "true" : "false"; };
    return std::string("allowedAll=") + word(record.allowedAll) +
           " clients=" + std::to_string(record.clients) +
           " enabledFixed=" + word(record.enabledFixed) +
           " allowedIpFixed=" + word(record.allowedIpFixed);
}

// Empty for a comment that is not a ruleset's settings.
std::optional<Firewall::RulesetRecord> ParseSettings(const std::string& comment) {
    std::map<std::string, std::string> values;
    std::istringstream words(comment);
    for (std::string word; words >> word;) {
        const auto equals = word.find('=');
        if (equals == std::string::npos) {
            return std::nullopt;
        }
        values[word.substr(0, equals)] = word.substr(equals + 1);
    }
    for (const char* key : kSettingKeys) {
        if (!values.contains(key)) {
            return std::nullopt;
        }
    }
    Firewall::RulesetRecord record;
    record.allowedAll = values["allowedAll"] == "true";
    record.enabledFixed = values["enabledFixed"] == "true";
    record.allowedIpFixed = values["allowedIpFixed"] == "true";
    try {
        record.clients = std::stoi(values["clients"]);
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return record;
}

std::string PortMatch(const FirewallPortRule& rule) {
    std::string text = rule.protocol == 0 ? "tcp" : "udp";
    text += rule.portType == 1 ? " dport " : " sport ";
    text += std::to_string(rule.portBegin);
    if (rule.portEnd != rule.portBegin) {
        text += "-" + std::to_string(rule.portEnd);
    }
    return text;
}

void AppendRules(std::ostringstream& text, const Ruleset& ruleset) {
    for (const FirewallPortRule& rule : ruleset.rules) {
        const bool inbound = rule.direction == 0;
        const std::string match =
            std::string(inbound ? "meta oif 0 " : "meta iif 0 ") + PortMatch(rule);
        const std::string verdict =
            " accept" + (rule.label.empty() ? "" : " comment \"" + rule.label + "\"") + "\n";
        if (ruleset.record.allowedAll) {
            text << "\t\t" << match << verdict;
            continue;
        }
        const std::string peer = inbound ? " saddr @" : " daddr @";
        text << "\t\t" << match << " ip" << peer << ruleset.id << kIpv4Suffix << verdict;
        text << "\t\t" << match << " ip6" << peer << ruleset.id << kIpv6Suffix << verdict;
    }
}

void AppendSet(std::ostringstream& text, const Ruleset& ruleset, bool ipv6) {
    text << "\tset " << ruleset.id << (ipv6 ? kIpv6Suffix : kIpv4Suffix) << " {\n"
         << "\t\ttype " << (ipv6 ? "ipv6_addr" : "ipv4_addr") << "\n\t\tflags interval\n";
    std::string elements;
    for (const AllowedAddress& address : ruleset.addresses) {
        const bool v6 =
            address.kind == AddressKind::Ipv6Address || address.kind == AddressKind::Ipv6Network;
        if (v6 == ipv6) {
            elements += (elements.empty() ? "" : ", ") + address.text;
        }
    }
    if (!elements.empty()) {
        text << "\t\telements = { " << elements << " }\n";
    }
    text << "\t}\n";
}

// A base chain carries the default action in its comment too, which is where it stays while
// the firewall is disabled: the chain is then hooked nowhere, and so filters nothing.
void AppendBaseChain(std::ostringstream& text, const Configuration& configuration, const char* name,
                     const char* hook, const char* loopback) {
    text << "\tchain " << name << " {\n\t\tcomment \"" << kDefaultActionKey
         << (configuration.pass ? kPass : kDrop) << "\"\n";
    if (configuration.enabled) {
        text << "\t\ttype filter hook " << hook << " priority filter; policy "
             << (configuration.pass ? "accept" : "drop") << ";\n";
    }
    text << "\t\tct state established,related accept\n"
         << "\t\t" << loopback << " \"lo\" accept\n"
         << "\t\ticmpv6 type { nd-router-solicit, nd-router-advert, nd-neighbor-solicit, "
            "nd-neighbor-advert } accept\n";
    for (const Ruleset& ruleset : configuration.rulesets) {
        if (ruleset.record.enabled) {
            text << "\t\tjump " << ruleset.id << "\n";
        }
    }
    text << "\t}\n";
}

// The table whole, as nft's command language adds it.
std::string TableText(const Configuration& configuration) {
    for (const Ruleset& ruleset : configuration.rulesets) {
        CheckNames(ruleset);
    }
    std::ostringstream text;
    text << "table " << kTable << " {\n";
    for (const Ruleset& ruleset : configuration.rulesets) {
        AppendSet(text, ruleset, false);
        AppendSet(text, ruleset, true);
    }
    AppendBaseChain(text, configuration, kInbound, "input", "iif");
    AppendBaseChain(text, configuration, kOutbound, "output", "oif");
    for (const Ruleset& ruleset : configuration.rulesets) {
        text << "\tchain " << ruleset.id << " {\n\t\tcomment \"" << SettingsComment(ruleset.record)
             << "\"\n";
        AppendRules(text, ruleset);
        text << "\t}\n";
    }
    text << "}\n";
    return text.str();
}

// What one rule of a ruleset's chain says, as the library's JSON gives its expressions.
struct RuleReading {
    std::optional<std::int32_t> direction;
    std::optional<std::int32_t> protocol;
    std::int32_t portType = 0;
    std::int32_t portBegin = 0;
    std::int32_t portEnd = 0;
    bool ipv6Peer = false;
    bool accepts = false;
};

void ReadPorts(const json& right, RuleReading& reading) {
    if (right.is_number_integer()) {
        reading.portBegin = reading.portEnd = right.get<std::int32_t>();
    } else if (right.is_object() && right.contains("range")) {
        reading.portBegin = right["range"].at(0).get<std::int32_t>();
        reading.portEnd = right["range"].at(1).get<std::int32_t>();
    }
}

RuleReading ReadRule(const json& expressions) {
    RuleReading reading;
    for (const json& expression : expressions) {
        if (expression.contains("accept")) {
            reading.accepts = true;
            continue;
        }
        if (!expression.contains("match")) {
            continue;
        }
        const json& match = expression["match"];
        const json& left = match.at("left");
        if (left.contains("meta")) {
            const std::string key = left["meta"].value("key", "");
            if (key == "oif" || key == "iif") {
                reading.direction = key == "oif" ? 0 : 1;
            }
        } else if (left.contains("payload")) {
            const std::string protocol = left["payload"].value("protocol", "");
            const std::string field = left["payload"].value("field", "");
            if ((protocol == "tcp" || protocol == "udp") &&
                (field == "dport" || field == "sport")) {
                reading.protocol = protocol == "tcp" ? 0 : 1;
                reading.portType = field == "dport" ? 1 : 0;
                ReadPorts(match.at("right"), reading);
            } else if (protocol == "ip6") {
                reading.ipv6Peer = true;
            }
        }
    }
    return reading;
}

// An element of an allowed set: an address, or a network in prefix form. Ranges of another
// shape are no element this tool writes.
std::optional<AllowedAddress> ReadElement(const json& element, bool ipv6) {
    const json& value =
        element.is_object() && element.contains("elem") ? element["elem"].at("val") : element;
    if (value.is_string()) {
        return AllowedAddress{ipv6 ? AddressKind::Ipv6Address : AddressKind::Ipv4Address,
                              value.get<std::string>()};
    }
    if (value.is_object() && value.contains("prefix")) {
        const json& prefix = value["prefix"];
        return AllowedAddress{ipv6 ? AddressKind::Ipv6Network : AddressKind::Ipv4Network,
                              prefix.at("addr").get<std::string>() + "/" +
                                  std::to_string(prefix.at("len").get<int>())};
    }
    return std::nullopt;
}

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The configuration a listing of the table holds, with the comments of its chains in the
// table's order; `handle` is set to the listed table's.
Configuration ReadConfiguration(const json& listing, const std::vector<ChainHead>& chains,
                                std::uint64_t& handle) {
    Configuration configuration;
    std::map<std::string, std::size_t> positions;
    for (const ChainHead& chain : chains) {
        if (chain.name == kInbound) {
            configuration.pass = chain.comment == std::string(kDefaultActionKey) + kPass;
        } else if (auto settings = ParseSettings(chain.comment)) {
            positions[chain.name] = configuration.rulesets.size();
            configuration.rulesets.push_back({chain.name, *settings, {}, {}});
        }
    }
    configuration.enabled = false;
    for (const json& item : listing) {
        if (item.contains("table")) {
            handle = item["table"].value("handle", std::uint64_t{0});
        } else if (item.contains("chain") && item["chain"].value("name", "") == kInbound &&
                   item["chain"].contains("hook")) {
            // What the kernel applies is the hooked chain's policy.
            configuration.enabled = true;
            configuration.pass = item["chain"].value("policy", "accept") == "accept";
        }
    }
    auto rulesetNamed = [&](const std::string& name) -> Ruleset* {
        const auto found = positions.find(name);
        return found == positions.end() ? nullptr : &configuration.rulesets[found->second];
    };
    for (const json& item : listing) {
        if (item.contains("set")) {
            const json& set = item["set"];
            const std::string name = set.value("name", "");
            const bool ipv6 = EndsWith(name, kIpv6Suffix);
            if (!ipv6 && !EndsWith(name, kIpv4Suffix)) {
                continue;
            }
            const std::size_t suffix = std::strlen(ipv6 ? kIpv6Suffix : kIpv4Suffix);
            Ruleset* ruleset = rulesetNamed(name.substr(0, name.size() - suffix));
            for (const json& element :
                 ruleset != nullptr ? set.value("elem", json::array()) : json::array()) {
                if (auto address = ReadElement(element, ipv6)) {
                    ruleset->addresses.push_back(*address);
                }
            }
        } else if (item.contains("rule")) {
            const json& rule = item["rule"];
            const std::string chain = rule.value("chain", "");
            const json expressions = rule.value("expr", json::array());
            if (chain == kInbound) {
                for (const json& expression : expressions) {
                    if (expression.contains("jump")) {
                        if (Ruleset* target =
                                rulesetNamed(expression["jump"].value("target", ""))) {
                            target->record.enabled = true;
                        }
                    }
                }
                continue;
            }
            Ruleset* ruleset = rulesetNamed(chain);
            const RuleReading reading = ReadRule(expressions);
            // The second line of a rule that tests both address families is the same rule.
            if (ruleset == nullptr || !reading.direction || !reading.protocol || !reading.accepts ||
                reading.ipv6Peer) {
                continue;
            }
            ruleset->rules.push_back({rule.value("comment", ""), reading.portType,
                                      reading.portBegin, reading.portEnd, *reading.direction,
                                      *reading.protocol});
        }
    }
    return configuration;
}

}  // namespace

Nftables& FirewallTable::Library() {
    if (!library_) {
        library_ = std::make_unique<Nftables>();
    }
    return *library_;
}

NetlinkSocket& FirewallTable::Netfilter() {
    if (!netfilter_) {
        netfilter_ = std::make_unique<NetlinkSocket>(NETLINK_NETFILTER);
    }
    return *netfilter_;
}

std::optional<std::uint64_t> FirewallTable::Handle() {
    return ReadTableHandle(Netfilter(), kFamily, kTableName);
}

bool FirewallTable::IsLoaded() {
    return Handle().has_value();
}

// The library's listing leaves out the chains' comments, which netlink gives; the table's
// handle, the same before and after, shows that both saw one table.
FirewallTable::Snapshot FirewallTable::ReadSnapshot() {
    for (int attempt = 1;; ++attempt) {
        const auto handle = Handle();
        if (!handle) {
            throw HostCtlException(NotLoaded());
        }
        try {
            const std::vector<ChainHead> chains = ReadChains(Netfilter(), kFamily, kTableName);
            const json listing = Library().List(std::string("list table ") + kTable);
            Snapshot snapshot;
            snapshot.configuration = ReadConfiguration(listing, chains, snapshot.handle);
            if (snapshot.handle == *handle && Handle() == handle) {
                return snapshot;
            }
        } catch (const HostCtlException&) {
            if (Handle() == handle) {
                throw;
            }
        }
        if (attempt == kAttempts) {
            throw HostCtlException(std::string("The table ") + kTable +
                                   " kept changing while it was read");
        }
    }
}

Configuration FirewallTable::Read() {
    return ReadSnapshot().configuration;
}

Configuration FirewallTable::Change(const std::function<void(Configuration&)>& change) {
    for (int attempt = 1;; ++attempt) {
        Snapshot snapshot = ReadSnapshot();
        change(snapshot.configuration);
        const std::string batch = std::string("delete table inet handle ") +
                                  std::to_string(snapshot.handle) + "\n" +
                                  TableText(snapshot.configuration);
        try {
            Library().Run(batch);
            return snapshot.configuration;
        } catch (const HostCtlException&) {
            const auto handle = Handle();
            if (!handle) {
                throw HostCtlException(NotLoaded());
            }
            if (*handle == snapshot.handle || attempt == kAttempts) {
                throw;
            }
        }
    }
}

void FirewallTable::Load(const Configuration& initial) {
    if (IsLoaded()) {
        return;
    }
    try {
        Library().Run(std::string("create table ") + kTable + "\n" + TableText(initial));
    } catch (const HostCtlException&) {
        if (!IsLoaded()) {
            throw;
        }
    }
}

void FirewallTable::Unload() {
    try {
        Library().Run(std::string("delete table ") + kTable);
    } catch (const HostCtlException&) {
        if (!IsLoaded()) {
            throw HostCtlException(NotLoaded());
        }
        throw;
    }
}

}  // namespace HostSim::Linux
