// Command classes of the NICs' device features: `network sriovnic`, `network nic queue`,
// `network nic hwCap`, `network nic dcb`, the diagnostics and `network nic attachment`.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

// The forms of command class these commands keep: `Command` as a virtual base or a plain one,
// and New allocating the object alone (`new`) or with its reference counts (make_shared). The
// virtual base is reached through CommandNode, so that its tables of virtual functions point
// into this library as every other command's do.
class VirtualCommand : public virtual CommandNode {};

template <class Self, class Base, bool kOneBlock>
class FormedCommand : public Base {
public:
    static std::shared_ptr<Self> New() {
        std::shared_ptr<Self> command;
        if constexpr (kOneBlock) {
            command = std::make_shared<Self>();
        } else {
            command = std::shared_ptr<Self>(new Self);
        }
        command->PrimeThis(command);
        return command;
    }

    static std::shared_ptr<MetaStruct> GetOutputStructure() {
        return Declare::MakeStruct(*Self::kShape.structure);
    }

protected:
    std::shared_ptr<InputSpec> GetInputSpecInternal() override {
        return Declare::MakeInputSpec(Self::kShape);
    }
    std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
        return Declare::MakeOutputSpec(Self::kShape);
    }
};

#define NETWORK_COMMAND_FORM(ClassName, Base, oneBlock)                       \
    class ClassName final : public FormedCommand<ClassName, Base, oneBlock> { \
    public:                                                                   \
        static const Declare::PackedShape kShape;                             \
        ClassName() { Declare::ApplyShape(*this, kShape); }                   \
                                                                              \
    protected:                                                                \
        void ExecuteInternal(const std::shared_ptr<Input>& input,             \
                             const std::shared_ptr<Output>& output) override; \
    }

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
