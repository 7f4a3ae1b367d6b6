// Command classes of the NIC settings: `nic set`, statistics, coalescing, offload, software
// simulation, rings and pause parameters.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(NicSet);

NETWORK_COMMAND(NicStatsGet);
NETWORK_COMMAND(NicVlanStatsGet);
NETWORK_COMMAND(NicVlanStatsSet);

NETWORK_COMMAND(NicCoalesceGet);
NETWORK_COMMAND(NicCoalesceSet);
NETWORK_COMMAND(NicCoalesceLowGet);
NETWORK_COMMAND(NicCoalesceLowSet);
NETWORK_COMMAND(NicCoalesceHighGet);
NETWORK_COMMAND(NicCoalesceHighSet);

NETWORK_COMMAND(NicCsoGet);
NETWORK_COMMAND(NicCsoSet);
NETWORK_COMMAND(NicTsoGet);
NETWORK_COMMAND(NicTsoSet);
NETWORK_COMMAND(NicSgGet);
NETWORK_COMMAND(NicSgSet);
NETWORK_COMMAND(NicSoftwareList);
NETWORK_COMMAND(NicSoftwareSet);

NETWORK_COMMAND(NicRingPresetGet);
NETWORK_COMMAND(NicRingCurrentGet);
NETWORK_COMMAND(NicRingCurrentSet);
NETWORK_COMMAND(NicPauseParamsList);
NETWORK_COMMAND(NicPauseParamsSet);

}  // namespace ZanvexCli::NetworkNamespace
