// Command classes of `network ip netstack`: netstack instances.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(IpNetstackInstanceList);
NETWORK_COMMAND(IpNetstackInstanceAdd);
NETWORK_COMMAND(IpNetstackInstanceRemove);
NETWORK_COMMAND(IpNetstackInstanceGet);

// `netstack set`, whose congestion control algorithms are the host's, asked for each time the
// input spec is built.
class IpNetstackInstanceSet final : public CommandNode {
public:
    NETWORK_COMMAND_MEMBERS(IpNetstackInstanceSet)
    IpNetstackInstanceSet() { TakeShape(kShape); }

protected:
    std::shared_ptr<InputSpec> GetInputSpecInternal() override;
    void ExecuteInternal(const std::shared_ptr<Input>& input,
                         const std::shared_ptr<Output>& output) override;
};

}  // namespace ZanvexCli::NetworkNamespace
