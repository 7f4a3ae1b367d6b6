// Command classes of `network vswitch dvs zanvex`: the distributed switches and their LACP.
#pragma once

#include <memory>
#include <vector>

#include "frame/Declaration.h"
#include "hostctl/DVSwitch.h"

namespace ZanvexCli::NetworkNamespace {

class VirtualSwitchDVSZanvexList final : public CommandNode {
public:
    NETWORK_COMMAND_MEMBERS(VirtualSwitchDVSZanvexList)
    VirtualSwitchDVSZanvexList() { TakeShape(kShape); }

    // The struct of one port of a switch, an element of its "DVPort" list.
    static std::shared_ptr<MetaStruct> GetDVPortStructure();
    // The "DVPort" list of a switch's ports.
    static std::shared_ptr<MetaList> GetDVPortList(
        const std::vector<std::unique_ptr<HostCtl::Network::DVPort>>& ports);

protected:
    void ExecuteInternal(const std::shared_ptr<Input>& input,
                         const std::shared_ptr<Output>& output) override;
};

NETWORK_COMMAND(LacpGetConfig);

class LacpGetStatus final : public CommandNode {
public:
    NETWORK_COMMAND_MEMBERS(LacpGetStatus)
    LacpGetStatus() { TakeShape(kShape); }

    // The structs nested in a "LAG" row: one NIC, and its local and partner sides.
    static std::shared_ptr<MetaStruct> GetLACPNicInfoStruct();
    static std::shared_ptr<MetaStruct> GetLACPLocalInfoStruct();
    static std::shared_ptr<MetaStruct> GetLACPPartnerInfoStruct();

protected:
    void ExecuteInternal(const std::shared_ptr<Input>& input,
                         const std::shared_ptr<Output>& output) override;
};

NETWORK_COMMAND(LacpGetStats);
NETWORK_COMMAND(LacpSetTimeout);

}  // namespace ZanvexCli::NetworkNamespace
