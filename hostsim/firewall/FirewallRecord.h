// What the firewall holds, as records both hosts use: the simulated host keeps them in its store,
// the live host in an nftables table of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostctl/FirewallRuleset.h"

namespace HostSim::Firewall {

// A kernel module the host has loaded.
struct ModuleRecord {
    std::string name;
    std::string options;
    bool persistent = false;
    std::int32_t users = 0;
};

// Whether the firewall filters, and what it does with what no ruleset accepts (true is PASS).
struct StateRecord {
    bool enabled = true;
    bool pass = false;
};

// What the firewall keeps of a ruleset besides its rules and addresses.
struct RulesetRecord {
    bool enabled = false;
    bool allowedAll = true;
    bool enabledFixed = false;
    bool allowedIpFixed = false;
    std::int32_t clients = 0;
};

enum class AddressKind { Ipv4Address = 0, Ipv4Network = 1, Ipv6Address = 2, Ipv6Network = 3 };

// An allowed address in its canonical text form.
struct AllowedAddress {
    AddressKind kind;
    std::string text;
    bool operator==(const AllowedAddress&) const = default;
};

// A ruleset whole, with its rules and allowed addresses in order.
struct Ruleset {
    std::string id;
    RulesetRecord record;
    std::vector<HostCtl::System::FirewallPortRule> rules;
    std::vector<AllowedAddress> addresses;
};

// The firewall whole: whether it filters, what it does with what no ruleset accepts (true is
// PASS), and its rulesets in the host's order.
struct Configuration {
    bool enabled = true;
    bool pass = false;
    std::vector<Ruleset> rulesets;
};

}  // namespace HostSim::Firewall
