// Command classes of the NICs' device features: `network sriovnic`, `network nic queue`,
// `network nic hwCap`, `network nic dcb`, the diagnostics and `network nic attachment`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

// `Command` as a virtual base, for NETWORK_COMMAND_FORM. It is reached through CommandNode, so
// that its tables of virtual functions point into this library as every other command's do.
class VirtualCommand : public virtual CommandNode {};

NETWORK_COMMAND_FORM(SriovNicList, VirtualCommand, false);
NETWORK_COMMAND_FORM(VfList, VirtualCommand, false);
NETWORK_COMMAND_FORM(VfStats, VirtualCommand, false);

NETWORK_COMMAND_FORM(NicQueueCountGet, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueCountSet, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueFilterClassList, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueLbSettingList, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueLbSettingSet, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueLbStateList, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueLbStateSet, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueLbPluginList, VirtualCommand, true);
NETWORK_COMMAND_FORM(NicQueueLbPluginSet, VirtualCommand, true);

NETWORK_COMMAND_FORM(NicHwCapSupportedList, CommandNode, false);
NETWORK_COMMAND_FORM(NicHwCapActivatedList, CommandNode, false);
NETWORK_COMMAND(NicDcbStatusGet);

NETWORK_COMMAND_FORM(NicEepromDump, VirtualCommand, false);
NETWORK_COMMAND_FORM(NicEepromChange, VirtualCommand, false);
NETWORK_COMMAND_FORM(NicRegisterDump, VirtualCommand, false);
NETWORK_COMMAND_FORM(NicSelfTestRun, VirtualCommand, false);
NETWORK_COMMAND_FORM(NicNegotiationRestart, VirtualCommand, false);

NETWORK_COMMAND(NicAttachmentAdd);
NETWORK_COMMAND(NicAttachmentRemove);
NETWORK_COMMAND(NicAttachmentList);

}  // namespace ZanvexCli::NetworkNamespace
