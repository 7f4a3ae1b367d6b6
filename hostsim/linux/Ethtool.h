// The kernel's ethtool interfaces: its generic netlink family for link settings and driver
// settings, and the SIOCETHTOOL ioctl for what the family lacks (driver information,
// diagnostics).
#pragma once

#include <linux/ethtool_netlink.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "hostsim/linux/Netlink.h"

namespace HostSim::Linux {

class Ethtool {
public:
    // Resolves the family's number; a kernel without it refuses in its own words.
    Ethtool();

    // A request of `command` for the link `name`, or for every link as a dump when `name` is
    // empty. Bitsets come in their compact form.
    Message Request(std::uint8_t command, const std::string& name);
    void Exchange(Message& request, const std::function<void(const nlmsghdr&)>& onReply = {});

    // The attributes of a reply, by type up to `maximum`.
    static Linux::Attributes Attributes(const nlmsghdr& reply, unsigned maximum);
    // The link a reply speaks of, from its header attribute.
    static std::string LinkName(const nlattr* header);

private:
    NetlinkSocket socket_;
    std::uint16_t family_ = 0;
};

// Runs one SIOCETHTOOL command on the link; `data` starts with the command's number. A
// refusal throws HostCtlException with the kernel's words.
void EthtoolIoctl(const std::string& name, void* data);

}  // namespace HostSim::Linux
