// Command classes of `network vswitch standard`: switches, uplinks, port groups and the
// policies of both.
#pragma once

#include "frame/Declaration.h"
#include "vswitch/PolicyParameters.h"

namespace ZanvexCli::NetworkNamespace {

// Declares a command whose parameters are those of its table followed by those that
// `AddParameters(spec)` adds.
#define NETWORK_COMMAND_WITH_PARAMETERS(ClassName, AddParameters)             \
    class ClassName final : public CommandNode {                              \
    public:                                                                   \
        NETWORK_COMMAND_MEMBERS(ClassName)                                    \
        ClassName() { TakeShape(kShape); }                                    \
                                                                              \
    protected:                                                                \
        std::shared_ptr<InputSpec> GetInputSpecInternal() override {          \
            auto spec = CommandNode::GetInputSpecInternal();                  \
            AddParameters(spec);                                              \
            return spec;                                                      \
        }                                                                     \
        void ExecuteInternal(const std::shared_ptr<Input>& input,             \
                             const std::shared_ptr<Output>& output) override; \
    }

// The VLAN id parameter of `portgroup set`, whose description names the host's range.
void AddVlanIdParameter(const std::shared_ptr<InputSpec>& spec);

NETWORK_COMMAND(VirtualSwitchStandardAdd);
NETWORK_COMMAND(VirtualSwitchStandardSet);
NETWORK_COMMAND(VirtualSwitchStandardList);
NETWORK_COMMAND(VirtualSwitchStandardRemove);
NETWORK_COMMAND(VirtualSwitchStandardUplinkAdd);
NETWORK_COMMAND(VirtualSwitchStandardUplinkRemove);
NETWORK_COMMAND(VirtualSwitchStandardPolicyShapingGet);
NETWORK_COMMAND_WITH_PARAMETERS(VirtualSwitchStandardPolicyShapingSet, AddShapingParameters);
NETWORK_COMMAND(VirtualSwitchStandardPolicySecurityGet);
NETWORK_COMMAND(VirtualSwitchStandardPolicySecuritySet);
NETWORK_COMMAND(VirtualSwitchStandardPolicyFailoverGet);
NETWORK_COMMAND_WITH_PARAMETERS(VirtualSwitchStandardPolicyFailoverSet, AddFailoverParameters);
NETWORK_COMMAND(VirtualSwitchPortGroupList);
NETWORK_COMMAND(VirtualSwitchPortGroupAdd);
NETWORK_COMMAND(VirtualSwitchPortGroupRemove);
NETWORK_COMMAND_WITH_PARAMETERS(VirtualSwitchPortGroupSet, AddVlanIdParameter);
NETWORK_COMMAND(VirtualSwitchPortGroupPolicyFailoverGet);
NETWORK_COMMAND_WITH_PARAMETERS(VirtualSwitchPortGroupPolicyFailoverSet, AddFailoverParameters);
NETWORK_COMMAND(VirtualSwitchPortGroupPolicySecurityGet);
NETWORK_COMMAND_WITH_PARAMETERS(VirtualSwitchPortGroupPolicySecuritySet, AddSecurityParameters);
NETWORK_COMMAND(VirtualSwitchPortGroupPolicyShapingGet);
NETWORK_COMMAND_WITH_PARAMETERS(VirtualSwitchPortGroupPolicyShapingSet, AddShapingParameters);

}  // namespace ZanvexCli::NetworkNamespace
