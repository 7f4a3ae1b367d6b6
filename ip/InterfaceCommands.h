// Command classes of `network ip interface`: Kelm interfaces, their IPv4 and IPv6 settings and
// addresses, and their tags.
#pragma once

#include "frame/Declaration.h"

namespace ZanvexCli::NetworkNamespace {

NETWORK_COMMAND(IpInterfaceAdd);
NETWORK_COMMAND(IpInterfaceRemove);
NETWORK_COMMAND(IpInterfaceList);
NETWORK_COMMAND(IpInterfaceSet);
// Registered twice: as `ipv4 get` and as `ipv4 address list`.
NETWORK_COMMAND(IpInterfaceIpv4Get);
NETWORK_COMMAND(IpInterfaceIpv4Set);
NETWORK_COMMAND(IpInterfaceIpv6Get);
NETWORK_COMMAND(IpInterfaceIpv6Set);
NETWORK_COMMAND(IpInterfaceIpv6AddressList);
NETWORK_COMMAND(IpInterfaceIpv6AddressAdd);
NETWORK_COMMAND(IpInterfaceIpv6AddressRemove);
NETWORK_COMMAND(IpInterfaceTagRemove);
NETWORK_COMMAND(IpInterfaceTagGet);

// `tag add`, whose description lists the tags the host offers when the object is made.
class IpInterfaceTagAdd final : public CommandNode {
public:
    NETWORK_COMMAND_MEMBERS(IpInterfaceTagAdd)
    IpInterfaceTagAdd();

protected:
    void ExecuteInternal(const std::shared_ptr<Input>& input,
                         const std::shared_ptr<Output>& output) override;
};

}  // namespace ZanvexCli::NetworkNamespace
