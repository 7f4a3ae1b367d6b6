// Command classes of `network ip ipsec`: the security association and security policy
// databases of the kernel.
#pragma once

#include <cstdint>
#include <string>

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

// A lifetime in seconds as the lists show it: "infinite" for 0, else its non-zero parts in
// hours, minutes and seconds, each followed by a blank ("1h 1m 1s ").
std::string ConvertToHrsMinsAndSecs(std::uint64_t seconds);

NETWORK_COMMAND(IpIpsecSAAdd);
NETWORK_COMMAND(IpIpsecSARemove);
NETWORK_COMMAND(IpIpsecSAList);
NETWORK_COMMAND(IpIpsecSPAdd);
NETWORK_COMMAND(IpIpsecSPRemove);
NETWORK_COMMAND(IpIpsecSPList);

}  // namespace ZanvexCli::NetworkNamespace
