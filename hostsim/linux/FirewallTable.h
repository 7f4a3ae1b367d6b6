// The live host's firewall: the nftables table "inet kelmfw", which is the tool's own.
//
//   table inet kelmfw {
//       set ID.ipv4 { type ipv4_addr; flags interval; elements = { ... } }
//       set ID.ipv6 { type ipv6_addr; flags interval; elements = { ... } }
//       chain inbound {
//           comment "defaultAction=DROP"
//           type filter hook input priority filter; policy drop;   accept for PASS; no hook
//                                                                   while disabled
//           ct state established,related accept
//           iif "lo" accept
//           icmpv6 type { nd-... } accept   neighbour discovery, without which IPv6 stops
//           jump ID                         one for each enabled ruleset
//       }
//       chain outbound { the same on the output hook, with oif "lo" }
//       chain ID {                          one for each ruleset, in the rulesets' order
//           comment "allowedAll=false clients=0 enabledFixed=false allowedIpFixed=false"
//           meta oif 0 tcp dport 22 ip saddr @ID.ipv4 accept comment "LABEL"
//           meta oif 0 tcp dport 22 ip6 saddr @ID.ipv6 accept comment "LABEL"
//       }
//   }
//
// A disabled firewall's base chains are hooked nowhere, so the table filters nothing; the
// default action stays in their comment. (A dormant table would do as much, but libnftables
// 1.0.6 frees the text of a table's flags before it prints them, so such a table can't be
// listed as JSON.) A rule of a ruleset is one line, or, while the ruleset admits only its
// allowed addresses, one line for each address family, testing the peer (the source of what
// comes in, the destination of what goes out) against the ruleset's set. What comes in has no
// output link and what goes out no input link, which is how a ruleset's chain, jumped to from
// both hooks, tells them apart.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Netlink.h"
#include "hostsim/linux/Nftables.h"

namespace HostSim::Linux {

class FirewallTable final : public Live::FirewallDriver {
public:
    bool IsLoaded() override;
    void Load(const Firewall::Configuration& initial) override;
    void Unload() override;
    Firewall::Configuration Read() override;
    Firewall::Configuration Change(
        const std::function<void(Firewall::Configuration&)>& change) override;

private:
    struct Snapshot {
        std::uint64_t handle = 0;
        Firewall::Configuration configuration;
    };
    // The table as it stood at one moment, with the handle that names that table.
    Snapshot ReadSnapshot();
    std::optional<std::uint64_t> Handle();

    // Opened on first use and kept for the process.
    Nftables& Library();
    NetlinkSocket& Netfilter();

    std::unique_ptr<Nftables> library_;
    std::unique_ptr<NetlinkSocket> netfilter_;
};

}  // namespace HostSim::Linux
