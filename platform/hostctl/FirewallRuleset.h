// A labelled group of firewall rules held by the host, and the records it gives out.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/IpAddress.h"

namespace HostCtl::System {

// One port rule of a ruleset.
struct FirewallPortRule {
    std::string label;      // the rule's own name within its ruleset
    std::int32_t portType;  // 1 destination port, otherwise source port
    std::int32_t portBegin;
    std::int32_t portEnd;
    std::int32_t direction;  // 0 inbound, otherwise outbound
    std::int32_t protocol;   // 0 TCP, otherwise UDP
};

// The addresses and networks a ruleset admits while its allowed-all flag is clear.
struct AllowedIpList {
    std::vector<Network::Ipv4Address> ipv4Addresses;
    std::vector<Network::Ipv4Network> ipv4Networks;
    std::vector<Network::Ipv6Address> ipv6Addresses;
    std::vector<Network::Ipv6Network> ipv6Networks;
};

// What CheckConfigurable asks about.
enum FirewallSetting {
    FirewallSettingEnabled = 0,
    FirewallSettingAllowedIp = 1,
};

class FirewallRuleset {
public:
    virtual ~FirewallRuleset() = default;

    virtual std::string GetRulesetId() const = 0;
    // False when the ruleset was looked up by an id the host does not have.
    virtual bool IsValid() const = 0;

    virtual bool IsEnabled() const = 0;
    virtual void Enable() = 0;
    virtual void Disable() = 0;

    // True lets every address through; false admits only the allowed list.
    virtual bool IsAllowedAll() const = 0;
    virtual void SetAllowedAll(bool allowedAll) = 0;

    // Throws when `setting` is fixed for this ruleset. `internal` is true when the host itself
    // makes the change: fixed settings bind only outside callers.
    virtual void CheckConfigurable(int setting, bool internal) const = 0;
    virtual bool IsEnabledFixed() const = 0;
    virtual bool IsAllowedIpFixed() const = 0;

    virtual std::vector<std::unique_ptr<FirewallPortRule>> GetRules() const = 0;

    virtual std::int32_t GetClientCount() const = 0;
    // Counts one more client and enables the ruleset.
    virtual void AddClient() = 0;
    // Counts one client less; the last one leaving disables the ruleset.
    virtual void RemoveClient() = 0;

    // Never null.
    virtual std::unique_ptr<AllowedIpList> GetAllowedIpList() const = 0;
    // An IPv4 or IPv6 address, or a network in prefix form.
    virtual void AddAllowedIp(const std::string& address) = 0;
    virtual void RemoveAllowedIp(const std::string& address) = 0;
};

}  // namespace HostCtl::System
