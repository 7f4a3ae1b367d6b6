// Command classes of `network nic` and `network sriovnic`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(NicList);
NETWORK_COMMAND(NicUp);
NETWORK_COMMAND(NicDown);
NETWORK_COMMAND(NicGet);

}  // namespace ZanvexCli::NetworkNamespace
