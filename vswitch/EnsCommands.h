// Command classes of `network ens`: the ENS contexts (lcores), their switch and NUMA affinity.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(EnsMaxlcoresGet);
NETWORK_COMMAND(EnsMaxlcoresSet);
NETWORK_COMMAND(EnsLcoreAdd);
NETWORK_COMMAND(EnsLcoreRemove);
NETWORK_COMMAND(EnsLcoreList);
NETWORK_COMMAND(EnsLcoreSwitchGet);
NETWORK_COMMAND(EnsLcoreSwitchAdd);
NETWORK_COMMAND(EnsLcoreSwitchRemove);
NETWORK_COMMAND(EnsLcoreAffinityGet);
NETWORK_COMMAND(EnsLcoreAffinitySet);

}  // namespace ZanvexCli::NetworkNamespace
