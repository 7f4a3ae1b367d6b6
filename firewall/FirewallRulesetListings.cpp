// Listings over the rulesets: the rulesets themselves, their rules, and their allowed addresses.
#include "firewall/FirewallCommon.h"
#include "frame/Declaration.h"
#include "kelmctl/SystemInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using HostCtl::System::FirewallRuleset;

constexpr char kRulesetNotFound[] = "Ruleset Not Found: ";
constexpr char kLookupFailed[] = "Failed to check loaded status: ";

// Ruleset rows.
constexpr char kName[] = "Name";
constexpr char kEnabled[] = "Enabled";
constexpr char kEnabledConfigurable[] = "Enable/Disable configurable";
constexpr char kAllowedIpConfigurable[] = "Allowed IP configurable";
constexpr Declare::Field kRulesetFields[] = {
    {kName, Declare::FieldType::String, 1},
    {kEnabled, Declare::FieldType::Bool, 2},
    {kEnabledConfigurable, Declare::FieldType::Bool, 3},
    {kAllowedIpConfigurable, Declare::FieldType::Bool, 4},
};
constexpr Declare::StructShape kRuleset = {"Ruleset", kRulesetFields};
constexpr Declare::Parameter kRulesetParameters[] = {
    {Firewall::kRulesetIdParameter, Firewall::kRulesetShortName, Declare::Type::String, false,
     "List configuration for specfic ruleset"},
};

// Rule rows.
constexpr char kRulesetColumn[] = "Ruleset";
constexpr char kPortType[] = "Port Type";
constexpr char kPortBegin[] = "Port Begin";
constexpr char kPortEnd[] = "Port End";
constexpr char kDirection[] = "Direction";
constexpr char kProtocol[] = "Protocol";
constexpr Declare::Field kRuleFields[] = {
    {kRulesetColumn, Declare::FieldType::String, 1}, {kPortType, Declare::FieldType::String, 4},
    {kPortBegin, Declare::FieldType::Int, 5},        {kPortEnd, Declare::FieldType::Int, 6},
    {kDirection, Declare::FieldType::String, 2},     {kProtocol, Declare::FieldType::String, 3},
};
constexpr Declare::StructShape kRule = {"FirewallPortRule", kRuleFields};
constexpr Declare::Parameter kRuleParameters[] = {
    {Firewall::kRulesetIdParameter, Firewall::kRulesetShortName, Declare::Type::String, false,
     "List rules for specfic ruleset"},
};
constexpr int kDestinationPort = 1;
constexpr char kDestination[] = "Dst";
constexpr char kSource[] = "Src";
constexpr char kInbound[] = "Inbound";
constexpr char kOutbound[] = "Outbound";
constexpr char kTcp[] = "TCP";
constexpr char kUdp[] = "UDP";

// Allowed address rows.
constexpr char kAllowedAddresses[] = "Allowed IP Addresses";
constexpr Declare::Field kAllowedIpFields[] = {
    {kRulesetColumn, Declare::FieldType::String, 1},
    {kAllowedAddresses, Declare::FieldType::StringList, 2},
};
constexpr Declare::StructShape kAllowedIp = {"FirewallRulesetAllowedip", kAllowedIpFields};
constexpr Declare::Parameter kAllowedIpParameters[] = {
    {Firewall::kRulesetIdParameter, Firewall::kRulesetShortName, Declare::Type::String, false,
     Firewall::kRulesetLabelDescription},
};
constexpr char kAllAddresses[] = "All";

using RowWriter = void (*)(FirewallRuleset& ruleset, MetaList& rows);

// Lists the ruleset of `ruleset-id`, or every ruleset when it is not given, with the rows that
// `writeRows` makes of each. Any failure leaves no list.
void ListRulesets(const Input& input, Output& output, std::shared_ptr<MetaStruct> prototype,
                  RowWriter writeRows) {
    try {
        KelmCtl::System::SystemInfoImpl system;
        const bool selected = input.HasParameter(Firewall::kRulesetIdParameter);
        auto rows = MetaList::New(CppTools::MetaObj::MetaTypeStruct, std::move(prototype));
        std::vector<std::unique_ptr<FirewallRuleset>> rulesets;
        if (selected) {
            const std::string& id = input.GetParameter(Firewall::kRulesetIdParameter);
            try {
                auto ruleset = system.GetFirewallRulesetById(id);
                if (!ruleset->IsValid()) {
                    output.AddErrorMessage(kRulesetNotFound + id);
                    return;
                }
                rulesets.push_back(std::move(ruleset));
            } catch (const HostCtl::Lib::HostCtlException& error) {
                output.AddErrorMessage(kLookupFailed + std::string(error.what()));
                return;
            }
        } else {
            rulesets = system.GetFirewallRulesets();
        }
        for (const auto& ruleset : rulesets) {
            if (ruleset) {
                writeRows(*ruleset, *rows);
            }
        }
        output.SetRootObject(rows);
    } catch (const HostCtl::Lib::HostCtlException& error) {
        output.AddErrorMessage(error.what());
    }
}

void WriteRulesetRow(FirewallRuleset& ruleset, MetaList& rows) {
    auto row = Declare::MakeStruct(Declare::PackStruct<kRuleset>());
    row->SetField(kName, ruleset.GetRulesetId());
    row->SetField(kEnabled, ruleset.IsEnabled());
    row->SetField(kEnabledConfigurable, !ruleset.IsEnabledFixed());
    row->SetField(kAllowedIpConfigurable, !ruleset.IsAllowedIpFixed());
    rows.Add(row);
}

void WriteRuleRows(FirewallRuleset& ruleset, MetaList& rows) {
    const std::string id = ruleset.GetRulesetId();
    for (const auto& rule : ruleset.GetRules()) {
        auto row = Declare::MakeStruct(Declare::PackStruct<kRule>());
        row->SetField(kRulesetColumn, id);
        row->SetField(kPortType, rule->portType == kDestinationPort ? kDestination : kSource);
        row->SetField(kPortBegin, static_cast<long>(rule->portBegin));
        row->SetField(kPortEnd, static_cast<long>(rule->portEnd));
        row->SetField(kDirection, rule->direction == 0 ? kInbound : kOutbound);
        row->SetField(kProtocol, rule->protocol == 0 ? kTcp : kUdp);
        rows.Add(row);
    }
}

// Addresses before networks, IPv4 before IPv6.
void WriteAllowedIpRow(FirewallRuleset& ruleset, MetaList& rows) {
    auto row = Declare::MakeStruct(Declare::PackStruct<kAllowedIp>());
    row->SetField(kRulesetColumn, ruleset.GetRulesetId());
    auto addresses = MetaList::New(CppTools::MetaObj::MetaTypeString);
    if (ruleset.IsAllowedAll()) {
        addresses->Add(kAllAddresses);
    } else {
        const auto allowed = ruleset.GetAllowedIpList();
        for (const auto& address : allowed->ipv4Addresses) {
            addresses->Add(address.GetStringAddress());
        }
        for (const auto& address : allowed->ipv6Addresses) {
            addresses->Add(address.GetStringAddress());
        }
        for (const auto& network : allowed->ipv4Networks) {
            addresses->Add(network.GetStringAddress());
        }
        for (const auto& network : allowed->ipv6Networks) {
            addresses->Add(network.GetStringAddress());
        }
    }
    row->SetField(kAllowedAddresses, addresses);
    rows.Add(row);
}

}  // namespace

constexpr Declare::CommandShape kFirewallRulesetListShape = {
    .description = "List the rulesets in firewall.",
    .formatter = "table",
    .parameters = kRulesetParameters,
    .root = Declare::Root::List,
    .structure = &kRuleset,
};

constexpr Declare::CommandShape kFirewallRulesetRuleListShape = {
    .description = "List the rules of each ruleset in firewall.",
    .formatter = "table",
    .parameters = kRuleParameters,
    .root = Declare::Root::List,
    .structure = &kRule,
};

constexpr Declare::CommandShape kFirewallRulesetAllowedipListShape = {
    .description = "List allowed IP addresses for rulesets.",
    .formatter = "table",
    .parameters = kAllowedIpParameters,
    .root = Declare::Root::List,
    .structure = &kAllowedIp,
};

NETWORK_COMMAND(FirewallRulesetList, kFirewallRulesetListShape) {
    ListRulesets(*input, *output, GetOutputStructure(), WriteRulesetRow);
}

NETWORK_COMMAND(FirewallRulesetRuleList, kFirewallRulesetRuleListShape) {
    ListRulesets(*input, *output, GetOutputStructure(), WriteRuleRows);
}

NETWORK_COMMAND(FirewallRulesetAllowedipList, kFirewallRulesetAllowedipListShape) {
    ListRulesets(*input, *output, GetOutputStructure(), WriteAllowedIpRow);
}

}  // namespace ZanvexCli::NetworkNamespace
