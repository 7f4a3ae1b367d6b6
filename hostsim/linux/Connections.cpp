// The sockets of a netstack's namespace: one dump of the kernel's socket table per address
// family, through the inet handler of the socket diagnostics. A kernel built without the
// handler for raw sockets shows them only in its tables /proc/net/raw and /proc/net/raw6,
// which are read then.
#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "hostsim/linux/Connections.h"
#include "hostsim/linux/Netlink.h"
#include "hostsim/linux/Netstack.h"
#include "hostsim/values/AddressText.h"

namespace HostSim::Linux {

namespace {

// The index of a TCP state in the host's table of state names, "CLOSED" to "TIME_WAIT".
enum StateIndex : std::uint32_t {
    kClosed = 0,
    kListen = 1,
    kSynSent = 2,
    kReceived = 3,
    kEstablished = 4,
    kCloseWait = 5,
    kFinWait1 = 6,
    kClosing = 7,
    kLastAck = 8,
    kFinWait2 = 9,
    kTimeWait = 10,
    // A socket without a TCP state: a datagram or raw one.
    kNoState = 11,
};

std::uint32_t TcpStateIndex(std::uint8_t state) {
    switch (state) {
        case TCP_ESTABLISHED:
            return kEstablished;
        case TCP_SYN_SENT:
            return kSynSent;
        case TCP_SYN_RECV:
            return kReceived;
        case TCP_FIN_WAIT1:
            return kFinWait1;
        case TCP_FIN_WAIT2:
            return kFinWait2;
        case TCP_TIME_WAIT:
            return kTimeWait;
        case TCP_CLOSE:
            return kClosed;
        case TCP_CLOSE_WAIT:
            return kCloseWait;
        case TCP_LAST_ACK:
            return kLastAck;
        case TCP_LISTEN:
            return kListen;
        case TCP_CLOSING:
            return kClosing;
        default:
            return kNoState;
    }
}

std::uint8_t Protocol(Live::SocketKind kind) {
    switch (kind) {
        case Live::SocketKind::Tcp:
            return IPPROTO_TCP;
        case Live::SocketKind::Udp:
            return IPPROTO_UDP;
        case Live::SocketKind::Raw:
            return IPPROTO_RAW;
    }
    return IPPROTO_RAW;
}

std::string AddressText(int family, const __be32* address) {
    if (family == AF_INET) {
        return Ipv4Text(ntohl(address[0]));
    }
    return Ipv6Text(reinterpret_cast<const unsigned char*>(address));
}

HostCtl::Network::TcpIpConnection FromDiagnostics(const nlmsghdr& message, bool tcp) {
    const auto* socket = static_cast<const inet_diag_msg*>(mnl_nlmsg_get_payload(&message));
    const int family = socket->idiag_family;
    HostCtl::Network::TcpIpConnection connection;
    connection.addressFamily = family == AF_INET6 ? 6 : 4;
    connection.recvQueue = socket->idiag_rqueue;
    connection.sendQueue = socket->idiag_wqueue;
    connection.localAddress = AddressText(family, socket->id.idiag_src);
    connection.localPort = ntohs(socket->id.idiag_sport);
    connection.foreignAddress = AddressText(family, socket->id.idiag_dst);
    connection.foreignPort = ntohs(socket->id.idiag_dport);
    connection.state = tcp ? TcpStateIndex(socket->idiag_state) : kNoState;
    if (tcp) {
        const auto attributes = ParseAttributes(message, sizeof(inet_diag_msg), INET_DIAG_CONG);
        if (attributes[INET_DIAG_CONG] != nullptr) {
            connection.ccAlgorithm = mnl_attr_get_str(attributes[INET_DIAG_CONG]);
        }
    }
    return connection;
}

// One hexadecimal field of the kernel's table: 32-bit words of an address, each printed as the
// host reads it, so their bytes in memory are the address's.
void ReadAddress(const std::string& hex, void* address, std::size_t words) {
    for (std::size_t word = 0; word < words; ++word) {
        const auto value =
            static_cast<std::uint32_t>(std::strtoul(hex.substr(word * 8, 8).c_str(), nullptr, 16));
        std::memcpy(static_cast<char*>(address) + word * 4, &value, 4);
    }
}

// A line "sl: local:port remote:port state tx_queue:rx_queue ..." of /proc/net/raw or raw6.
bool ParseRawLine(const std::string& line, int family, HostCtl::Network::TcpIpConnection& row) {
    std::istringstream fields(line);
    std::string slot, local, remote, state, queues;
    if (!(fields >> slot >> local >> remote >> state >> queues)) {
        return false;
    }
    const std::size_t words = family == AF_INET6 ? 4 : 1;
    const std::size_t colon = words * 8;
    if (local.size() <= colon || remote.size() <= colon || local[colon] != ':' ||
        remote[colon] != ':' || queues.find(':') == std::string::npos) {
        return false;
    }
    __be32 address[4] = {};
    row.addressFamily = family == AF_INET6 ? 6 : 4;
    ReadAddress(local, address, words);
    row.localAddress = AddressText(family, address);
    row.localPort =
        static_cast<std::uint16_t>(std::strtoul(local.c_str() + colon + 1, nullptr, 16));
    ReadAddress(remote, address, words);
    row.foreignAddress = AddressText(family, address);
    row.foreignPort =
        static_cast<std::uint16_t>(std::strtoul(remote.c_str() + colon + 1, nullptr, 16));
    row.sendQueue = static_cast<std::uint32_t>(std::strtoul(queues.c_str(), nullptr, 16));
    row.recvQueue = static_cast<std::uint32_t>(
        std::strtoul(queues.c_str() + queues.find(':') + 1, nullptr, 16));
    row.state = kNoState;
    return true;
}

void ReadRawTable(int family, std::deque<HostCtl::Network::TcpIpConnection>& sockets) {
    const char* path =
        family == AF_INET6 ? "/proc/thread-self/net/raw6" : "/proc/thread-self/net/raw";
    std::ifstream table(path);
    if (!table) {
        ThrowKernelError(errno, path);
    }
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        HostCtl::Network::TcpIpConnection row;
        if (ParseRawLine(line, family, row)) {
            sockets.push_back(std::move(row));
        }
    }
}

}  // namespace

// Linux has no worlds: a socket's world is left 0, as for a socket no world owns.
void Sockets::List(const std::string& netstack, Live::SocketKind kind,
                   std::vector<HostCtl::Network::TcpIpConnection>& sockets) {
    const bool tcp = kind == Live::SocketKind::Tcp;
    NetstackScope scope(netstack);
    NetlinkSocket diagnostics(NETLINK_SOCK_DIAG);
    // Gathered in blocks, which grow without copying what they hold, and moved into `sockets`
    // at the end; the freed blocks serve the listing's rows after.
    std::deque<HostCtl::Network::TcpIpConnection> found;
    for (const std::uint8_t family : {AF_INET, AF_INET6}) {
        Message request(SOCK_DIAG_BY_FAMILY, NLM_F_DUMP);
        auto* filter = request.PutExtra<inet_diag_req_v2>();
        filter->sdiag_family = family;
        filter->sdiag_protocol = Protocol(kind);
        filter->idiag_states = ~0U;
        if (tcp) {
            filter->idiag_ext = 1U << (INET_DIAG_CONG - 1);
        }
        try {
            diagnostics.Exchange(request, [&found, tcp](const nlmsghdr& message) {
                found.push_back(FromDiagnostics(message, tcp));
            });
        } catch (const KernelError& error) {
            if (kind != Live::SocketKind::Raw || error.Error() != ENOENT) {
                throw;
            }
            ReadRawTable(family, found);
        }
    }
    sockets.reserve(sockets.size() + found.size());
    std::move(found.begin(), found.end(), std::back_inserter(sockets));
}

}  // namespace HostSim::Linux
