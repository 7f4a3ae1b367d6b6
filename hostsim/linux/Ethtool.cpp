#include "hostsim/linux/Ethtool.h"

#include <linux/genetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

namespace HostSim::Linux {

Ethtool::Ethtool() : socket_(NETLINK_GENERIC) {
    Message request(GENL_ID_CTRL, 0);
    auto* header = request.PutExtra<genlmsghdr>();
    header->cmd = CTRL_CMD_GETFAMILY;
    header->version = 1;
    mnl_attr_put_strz(request.Header(), CTRL_ATTR_FAMILY_NAME, ETHTOOL_GENL_NAME);
    socket_.Exchange(request, [this](const nlmsghdr& reply) {
        const auto attributes = ParseAttributes(reply, sizeof(genlmsghdr), CTRL_ATTR_MAX);
        if (attributes[CTRL_ATTR_FAMILY_ID] != nullptr) {
            family_ = mnl_attr_get_u16(attributes[CTRL_ATTR_FAMILY_ID]);
        }
    });
}

Message Ethtool::Request(std::uint8_t command, const std::string& name) {
    Message request(family_, name.empty() ? NLM_F_DUMP : 0);
    auto* header = request.PutExtra<genlmsghdr>();
    header->cmd = command;
    header->version = ETHTOOL_GENL_VERSION;
    // Every request's header is its attribute 1.
    nlattr* nest = mnl_attr_nest_start(request.Header(), 1);
    if (!name.empty()) {
        mnl_attr_put_strz(request.Header(), ETHTOOL_A_HEADER_DEV_NAME, name.c_str());
    }
    mnl_attr_put_u32(request.Header(), ETHTOOL_A_HEADER_FLAGS, ETHTOOL_FLAG_COMPACT_BITSETS);
    mnl_attr_nest_end(request.Header(), nest);
    return request;
}

void Ethtool::Exchange(Message& request, const std::function<void(const nlmsghdr&)>& onReply) {
    socket_.Exchange(request, onReply);
}

Attributes Ethtool::Attributes(const nlmsghdr& reply, unsigned maximum) {
    return ParseAttributes(reply, sizeof(genlmsghdr), maximum);
}

std::string Ethtool::LinkName(const nlattr* header) {
    const auto fields = ParseNested(header, ETHTOOL_A_HEADER_MAX);
    return fields[ETHTOOL_A_HEADER_DEV_NAME] != nullptr
               ? mnl_attr_get_str(fields[ETHTOOL_A_HEADER_DEV_NAME])
               : std::string();
}

void EthtoolIoctl(const std::string& name, void* data) {
    if (name.size() >= IFNAMSIZ) {
        ThrowKernelError(ENODEV);
    }
    // Any socket of the namespace takes the command; one serves the whole process.
    static const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        ThrowKernelError(EAFNOSUPPORT);
    }
    ifreq request{};
    std::memcpy(request.ifr_name, name.c_str(), name.size());
    request.ifr_data = static_cast<char*>(data);
    if (ioctl(descriptor, SIOCETHTOOL, &request) < 0) {
        ThrowKernelError(errno);
    }
}

}  // namespace HostSim::Linux
