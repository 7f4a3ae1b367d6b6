// The sockets and multicast groups of the live host, made by the test in its own network
// namespace and checked against what ss and ip (which nobody here wrote) say of the same
// namespace.
#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "hostsim/kelmnic/KelmNicImpl.h"
#include "support/LiveHostTest.h"

namespace {

using nlohmann::json;
using Testing::Int;
using Testing::Rows;
using Testing::Str;

// A socket of the test: its type, family and the address it is bound to; a stream socket
// listens, and with `connect` another one connects to it.
struct SocketCase {
    int type;
    int family;
    const char* address;
    std::uint16_t port;
    bool connect = false;
};

constexpr SocketCase kSockets[] = {
    {SOCK_STREAM, AF_INET, "127.0.0.1", 47001, true}, {SOCK_STREAM, AF_INET, "0.0.0.0", 47002},
    {SOCK_STREAM, AF_INET6, "::1", 47003, true},      {SOCK_STREAM, AF_INET6, "::", 47004},
    {SOCK_DGRAM, AF_INET, "127.0.0.1", 47005},        {SOCK_DGRAM, AF_INET6, "::1", 47006},
    {SOCK_DGRAM, AF_INET, "0.0.0.0", 47007},
};

// The states as ss writes them, by the host's words.
const std::map<std::string, std::string> kSsStates = {
    {"LISTEN", "LISTEN"},       {"ESTAB", "ESTABLISHED"},     {"SYN-SENT", "SYN_SENT"},
    {"SYN-RECV", "RCVD"},       {"FIN-WAIT-1", "FIN_WAIT_1"}, {"FIN-WAIT-2", "FIN_WAIT_2"},
    {"TIME-WAIT", "TIME_WAIT"}, {"CLOSE", "CLOSED"},          {"CLOSE-WAIT", "CLOSE_WAIT"},
    {"LAST-ACK", "LAST_ACK"},   {"CLOSING", "CLOSING"},       {"UNCONN", ""},
};

// An address of ss ("[::1]:80", "0.0.0.0:*", "*:80", "*:*") in the host's form ("[::1]:80",
// "0.0.0.0:0"); ss writes "*" for the unspecified address and port.
std::string HostEndpoint(std::string endpoint, bool ipv6) {
    if (endpoint.ends_with(":*")) {
        endpoint.replace(endpoint.size() - 1, 1, "0");
    }
    if (endpoint.starts_with("*:")) {
        endpoint = (ipv6 ? "[::]" : "0.0.0.0") + endpoint.substr(1);
    }
    return endpoint;
}

class LiveConnections : public Testing::LiveHostTest {
protected:
    void SetUp() override {
        LiveHostTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        Witness("ip link set lo up");
    }

    // Connections are reset rather than closed, so that none is left in TIME_WAIT for the
    // next test.
    void TearDown() override {
        const linger reset{1, 0};
        for (const int descriptor : descriptors_) {
            setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
            close(descriptor);
        }
        LiveHostTest::TearDown();
    }

    int Open(int family, int type, int protocol = 0) {
        const int descriptor = socket(family, type | SOCK_CLOEXEC, protocol);
        EXPECT_GE(descriptor, 0) << std::strerror(errno);
        descriptors_.push_back(descriptor);
        return descriptor;
    }

    static sockaddr_storage Address(int family, const char* text, std::uint16_t port) {
        sockaddr_storage address{};
        if (family == AF_INET) {
            auto* ipv4 = reinterpret_cast<sockaddr_in*>(&address);
            ipv4->sin_family = AF_INET;
            ipv4->sin_port = htons(port);
            inet_pton(AF_INET, text, &ipv4->sin_addr);
        } else {
            auto* ipv6 = reinterpret_cast<sockaddr_in6*>(&address);
            ipv6->sin6_family = AF_INET6;
            ipv6->sin6_port = htons(port);
            inet_pton(AF_INET6, text, &ipv6->sin6_addr);
        }
        return address;
    }

    void OpenSockets() {
        for (const SocketCase& wanted : kSockets) {
            const int descriptor = Open(wanted.family, wanted.type);
            const int on = 1;
            setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
            setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
            const sockaddr_storage address = Address(wanted.family, wanted.address, wanted.port);
            ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address),
                      0)
                << wanted.address << ": " << std::strerror(errno);
            if (wanted.type != SOCK_STREAM) {
                continue;
            }
            ASSERT_EQ(listen(descriptor, 8), 0);
            if (wanted.connect) {
                const int client = Open(wanted.family, SOCK_STREAM);
                ASSERT_EQ(
                    connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
                    << std::strerror(errno);
                descriptors_.push_back(accept(descriptor, nullptr, nullptr));
            }
        }
    }

    // ss's rows of the protocol ("-t", "-u", "-w") in the host's words: state, queues and
    // the two endpoints; the IPv4 ones, then the IPv6 ones, each in ss's order.
    std::vector<std::string> SsRows(const std::string& protocol) {
        std::vector<std::string> rows;
        for (const bool ipv6 : {false, true}) {
            std::istringstream lines(Witness("ss -anH " + protocol + (ipv6 ? " -6" : " -4")));
            std::string state, receive, send, local, foreign;
            while (lines >> state >> receive >> send >> local >> foreign) {
                rows.push_back(kSsStates.at(state) + " " + receive + " " + send + " " +
                               HostEndpoint(local, ipv6) + " " + HostEndpoint(foreign, ipv6));
            }
        }
        return rows;
    }

    // The rows of `ip connection list -t type` in the same form.
    std::vector<std::string> ListedRows(const std::string& type,
                                        const std::vector<std::string>& extra = {}) {
        std::vector<std::string> words = {"ip", "connection", "list", "-t", type};
        words.insert(words.end(), extra.begin(), extra.end());
        std::vector<std::string> rows;
        for (const auto& row : Rows(RunList(words))) {
            EXPECT_EQ(Str(row, "Proto"), type);
            EXPECT_EQ(Int(row, "World ID"), 0);
            EXPECT_EQ(Str(row, "World Name"), "");
            rows.push_back(Str(row, "State") + " " + std::to_string(Int(row, "Recv Q")) + " " +
                           std::to_string(Int(row, "Send Q")) + " " + Str(row, "Local Address") +
                           " " + Str(row, "Foreign Address"));
        }
        return rows;
    }

    std::vector<int> descriptors_;
};

TEST_F(LiveConnections, EachProtocolListsTheSocketsSsShowsInItsOrder) {
    OpenSockets();
    const std::vector<std::string> tcp = ListedRows("tcp");
    EXPECT_EQ(tcp, SsRows("-t"));
    // Each listener, and each end of each connection.
    const auto streams = std::count_if(std::begin(kSockets), std::end(kSockets),
                                       [](const SocketCase& s) { return s.type == SOCK_STREAM; });
    const auto connected = std::count_if(std::begin(kSockets), std::end(kSockets),
                                         [](const SocketCase& s) { return s.connect; });
    EXPECT_EQ(tcp.size(), static_cast<std::size_t>(streams + 2 * connected));
    EXPECT_EQ(ListedRows("udp"), SsRows("-u"));
    EXPECT_EQ(ListedRows("udp").size(), std::size(kSockets) - streams);
}

TEST_F(LiveConnections, TcpRowsCarryTheCongestionControlOfTheSocket) {
    OpenSockets();
    const std::string algorithm = Witness("cat /proc/sys/net/ipv4/tcp_congestion_control");
    for (const auto& row : Rows(RunList({"ip", "connection", "list", "-t", "tcp"}))) {
        EXPECT_EQ(Str(row, "CC Algo") + "\n", algorithm) << Str(row, "Local Address");
    }
    for (const auto& row : Rows(RunList({"ip", "connection", "list", "-t", "udp"}))) {
        EXPECT_EQ(Str(row, "CC Algo"), "");
        EXPECT_EQ(Str(row, "State"), "");
    }
}

TEST_F(LiveConnections, RawSocketsAreTheIpConnections) {
    const int icmp = Open(AF_INET, SOCK_RAW, IPPROTO_ICMP);
    const int icmp6 = Open(AF_INET6, SOCK_RAW, IPPROTO_ICMPV6);
    ASSERT_GE(icmp, 0);
    ASSERT_GE(icmp6, 0);
    std::vector<std::string> raw = SsRows("-w");
    EXPECT_EQ(ListedRows("ip"), raw);
    EXPECT_EQ(raw.size(), 2u);
}

TEST_F(LiveConnections, AllListsTcpThenUdpThenIp) {
    OpenSockets();
    Open(AF_INET, SOCK_RAW, IPPROTO_ICMP);
    std::vector<std::string> protocols;
    for (const auto& row : Rows(RunList({"ip", "connection", "list"}))) {
        protocols.push_back(Str(row, "Proto"));
    }
    EXPECT_TRUE(std::is_sorted(
        protocols.begin(), protocols.end(), [](const std::string& a, const std::string& b) {
            auto rank = [](const std::string& p) { return p == "tcp" ? 0 : p == "udp" ? 1 : 2; };
            return rank(a) < rank(b);
        }));
    EXPECT_EQ(protocols.size(),
              ListedRows("tcp").size() + ListedRows("udp").size() + ListedRows("ip").size());
}

// A socket opened while the thread is in the named namespace stays there: the netstack of that
// name lists it, and the default one doesn't.
TEST_F(LiveConnections, ANamedNetstackListsTheSocketsOfItsNamespace) {
    Witness("ip netns add lab && ip -n lab link set lo up");
    const int home = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    const int lab = open("/run/netns/lab", O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(setns(lab, CLONE_NEWNET), 0) << std::strerror(errno);
    const int listener = Open(AF_INET, SOCK_STREAM);
    const sockaddr_storage address = Address(AF_INET, "127.0.0.1", 47100);
    const bool bound =
        bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        listen(listener, 1) == 0;
    ASSERT_EQ(setns(home, CLONE_NEWNET), 0);
    close(home);
    close(lab);
    ASSERT_TRUE(bound) << std::strerror(errno);

    EXPECT_EQ(ListedRows("tcp", {"-N", "lab"}),
              std::vector<std::string>{"LISTEN 0 1 127.0.0.1:47100 0.0.0.0:0"});
    EXPECT_EQ(ListedRows("tcp", {"-N", "defaultTcpipStack"}), std::vector<std::string>{});
    EXPECT_EQ(RunError({"ip", "connection", "list", "-N", "nolab"}),
              "Unable to get connection list: There is no netstack instance nolab");
    Witness("ip netns del lab");
}

TEST_F(LiveConnections, EndToEndTheJsonListAgreesWithSs) {
    OpenSockets();
    const auto result =
        LiveAutocli({"--formatter=json", "network", "ip", "connection", "list", "-t", "tcp"});
    ASSERT_EQ(result.status, 0) << result.err;
    std::vector<std::string> rows;
    for (const auto& row : json::parse(result.out)) {
        rows.push_back(row["State"].get<std::string>() + " " +
                       std::to_string(row["Recv Q"].get<long>()) + " " +
                       std::to_string(row["Send Q"].get<long>()) + " " +
                       row["Local Address"].get<std::string>() + " " +
                       row["Foreign Address"].get<std::string>());
    }
    EXPECT_EQ(rows, SsRows("-t"));
}

// The groups of an interface, through the Kelm interface's own operation, against ip maddr:
// every group it has joined, how many sockets hold it, and the Ethernet address it maps to,
// which is among the link's multicast addresses.
TEST_F(LiveConnections, MulticastGroupsAgreeWithIpMaddr) {
    AddVethPair("v0", "v1");
    // No link-local address: the kernel would join its solicited-node group whenever the
    // address came, between the listing and the witness's reading.
    Witness("ip link set v0 addrgenmode none && ip link set v0 up && ip link set v1 up");
    const unsigned index = if_nametoindex("v0");
    ip_mreqn ipv4{};
    inet_pton(AF_INET, "224.1.2.3", &ipv4.imr_multiaddr);
    ipv4.imr_ifindex = static_cast<int>(index);
    for (int holder = 0; holder < 2; ++holder) {
        ASSERT_EQ(setsockopt(Open(AF_INET, SOCK_DGRAM), IPPROTO_IP, IP_ADD_MEMBERSHIP, &ipv4,
                             sizeof ipv4),
                  0)
            << std::strerror(errno);
    }
    ipv6_mreq ipv6{};
    inet_pton(AF_INET6, "ff02::1:3", &ipv6.ipv6mr_multiaddr);
    ipv6.ipv6mr_interface = index;
    ASSERT_EQ(
        setsockopt(Open(AF_INET6, SOCK_DGRAM), IPPROTO_IPV6, IPV6_JOIN_GROUP, &ipv6, sizeof ipv6),
        0)
        << std::strerror(errno);

    KelmCtl::Network::KelmNicRecord record;
    record.name = "v0";
    record.netstack = "defaultTcpipStack";
    std::vector<HostCtl::Network::KelmNic::MulticastGroup> groups;
    KelmCtl::Network::KelmNicImpl(record).GetMulticastGroups(groups);

    const json link = WitnessJson("ip -j maddr show dev v0")[0]["maddr"];
    std::vector<std::string> expected;
    std::vector<std::string> linkLayer;
    for (const auto& entry : link) {
        if (entry.contains("link")) {
            linkLayer.push_back(entry["link"]);
        } else {
            expected.push_back(entry["address"].get<std::string>() + " " +
                               std::to_string(entry.value("users", 1)));
        }
    }
    std::vector<std::string> listed;
    for (const auto& group : groups) {
        EXPECT_EQ(group.interfaceName, "v0");
        EXPECT_NE(std::find(linkLayer.begin(), linkLayer.end(), group.linkLayerAddress),
                  linkLayer.end())
            << group.group << " " << group.linkLayerAddress;
        listed.push_back(group.group + " " + std::to_string(group.refCount));
    }
    EXPECT_EQ(listed, expected);
    EXPECT_NE(std::find(listed.begin(), listed.end(), "224.1.2.3 2"), listed.end());
    EXPECT_NE(std::find(listed.begin(), listed.end(), "ff02::1:3 1"), listed.end());
}

TEST_F(LiveConnections, EveryFaultOfTheConnectionListEndsInAnError) {
    OpenSockets();
    SweepTable({
        {{"ip", "connection", "list"},
         {"NetworkInfoImpl::GetCurrentTcpKelmConnections",
          "NetworkInfoImpl::GetCurrentUdpKelmConnections",
          "NetworkInfoImpl::GetCurrentIpKelmConnections", "ResourceInfoImpl::GetWorldName"}},
        {{"ip", "connection", "list", "-t", "udp"},
         {"NetworkInfoImpl::GetCurrentUdpKelmConnections"}},
    });
}

}  // namespace
