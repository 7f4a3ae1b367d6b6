// Command classes of the host's name services and global IP settings: `network ip dns`,
// `network ip hosts`, `network ip get` and `network ip set`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(IpDNSServerList);
NETWORK_COMMAND(IpDNSServerAdd);
NETWORK_COMMAND(IpDNSServerRemove);
NETWORK_COMMAND(IpDNSSearchList);
NETWORK_COMMAND(IpDNSSearchAdd);
NETWORK_COMMAND(IpDNSSearchRemove);
NETWORK_COMMAND(IpHostsList);
NETWORK_COMMAND(IpHostsAdd);
NETWORK_COMMAND(IpHostsRemove);
NETWORK_COMMAND(IpGet);
NETWORK_COMMAND(IpSet);

}  // namespace ZanvexCli::NetworkNamespace
