// Command classes of the NICs' device features: `network sriovnic`, `network nic queue`,
// `network nic hwCap`, `network nic dcb`, the diagnostics and `network nic attachment`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

// `Command` as a virtual base, for NETWORK_COMMAND_FORM. It is reached through CommandNode, so
// that its tables of virtual functions point into this library as every other command's do.
class VirtualCommand : public virtual CommandNode {};

NETWORK_COMMAND_FORM(SriovNicList, VirtualCommand);
NETWORK_COMMAND_FORM(VfList, VirtualCommand);
NETWORK_COMMAND_FORM(VfStats, VirtualCommand);

NETWORK_COMMAND_FORM(NicQueueCountGet, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueCountSet, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueFilterClassList, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueLbSettingList, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueLbSettingSet, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueLbStateList, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueLbStateSet, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueLbPluginList, VirtualCommand);
NETWORK_COMMAND_FORM(NicQueueLbPluginSet, VirtualCommand);

NETWORK_COMMAND_FORM(NicHwCapSupportedList, CommandNode);
NETWORK_COMMAND_FORM(NicHwCapActivatedList, CommandNode);
NETWORK_COMMAND(NicDcbStatusGet);

NETWORK_COMMAND_FORM(NicEepromDump, VirtualCommand);
NETWORK_COMMAND_FORM(NicEepromChange, VirtualCommand);
NETWORK_COMMAND_FORM(NicRegisterDump, VirtualCommand);
NETWORK_COMMAND_FORM(NicSelfTestRun, VirtualCommand);
NETWORK_COMMAND_FORM(NicNegotiationRestart, VirtualCommand);

NETWORK_COMMAND(NicAttachmentAdd);
NETWORK_COMMAND(NicAttachmentRemove);
NETWORK_COMMAND(NicAttachmentList);

}  // namespace ZanvexCli::NetworkNamespace
