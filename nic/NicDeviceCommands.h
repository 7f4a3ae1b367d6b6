// Command classes of the NICs' device features: `network sriovnic`, `network nic queue`,
// `network nic hwCap`, `network nic dcb`, the diagnostics and `network nic attachment`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(SriovNicList);
NETWORK_COMMAND(VfList);
NETWORK_COMMAND(VfStats);

NETWORK_COMMAND(NicQueueCountGet);
NETWORK_COMMAND(NicQueueCountSet);
NETWORK_COMMAND(NicQueueFilterClassList);
NETWORK_COMMAND(NicQueueLbSettingList);
NETWORK_COMMAND(NicQueueLbSettingSet);
NETWORK_COMMAND(NicQueueLbStateList);
NETWORK_COMMAND(NicQueueLbStateSet);
NETWORK_COMMAND(NicQueueLbPluginList);
NETWORK_COMMAND(NicQueueLbPluginSet);

NETWORK_COMMAND(NicHwCapSupportedList);
NETWORK_COMMAND(NicHwCapActivatedList);
NETWORK_COMMAND(NicDcbStatusGet);

NETWORK_COMMAND(NicEepromDump);
NETWORK_COMMAND(NicEepromChange);
NETWORK_COMMAND(NicRegisterDump);
NETWORK_COMMAND(NicSelfTestRun);
NETWORK_COMMAND(NicNegotiationRestart);

NETWORK_COMMAND(NicAttachmentAdd);
NETWORK_COMMAND(NicAttachmentRemove);
NETWORK_COMMAND(NicAttachmentList);

}  // namespace ZanvexCli::NetworkNamespace
