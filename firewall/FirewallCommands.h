// Command classes of `network firewall`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(FirewallGet);
NETWORK_COMMAND(FirewallSet);
NETWORK_COMMAND(FirewallLoad);
NETWORK_COMMAND(FirewallRefresh);
NETWORK_COMMAND(FirewallUnload);
NETWORK_COMMAND(FirewallRulesetList);
NETWORK_COMMAND(FirewallRulesetSet);
NETWORK_COMMAND(FirewallRulesetRuleList);
NETWORK_COMMAND(FirewallRulesetClientGet);
NETWORK_COMMAND(FirewallRulesetClientAdd);
NETWORK_COMMAND(FirewallRulesetClientRemove);
NETWORK_COMMAND(FirewallRulesetAllowedipList);
NETWORK_COMMAND(FirewallRulesetAllowedipAdd);
NETWORK_COMMAND(FirewallRulesetAllowedipRemove);

}  // namespace ZanvexCli::NetworkNamespace
