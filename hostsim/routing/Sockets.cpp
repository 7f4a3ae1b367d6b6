// The sockets of the netstack instances, as NetworkInfoImpl lists them, and the names of the
// worlds that own them.
#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/routing/RoutingStore.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/ResourceInfoImpl.h"

namespace {

constexpr const char* kStates[] = {"CLOSED",      "LISTEN",     "SYN_SENT",   "RCVD",
                                   "ESTABLISHED", "CLOSE_WAIT", "FIN_WAIT_1", "CLOSING",
                                   "LAST_ACK",    "FIN_WAIT_2", "TIME_WAIT"};
// The state of a socket that has none, a UDP or raw IP one.
constexpr std::uint32_t kNoState = std::size(kStates);

std::uint32_t StateIndex(const std::string& word) {
    for (std::uint32_t state = 0; state < kNoState; ++state) {
        if (word == kStates[state]) {
            return state;
        }
    }
    return kNoState;
}

void Connections(std::vector<HostCtl::Network::TcpIpConnection>& connections,
                 const std::string& netstack, const char* protocol) {
    HostSim::Database& database = HostSim::Store();
    HostSim::Routing::RequireNetstack(database, netstack);
    for (const auto& json : HostSim::Routing::ReadTable(database, netstack, "connections")) {
        if (json.at("protocol") != protocol) {
            continue;
        }
        HostCtl::Network::TcpIpConnection connection;
        connection.localAddress = json.at("localAddress").get<std::string>();
        connection.addressFamily = connection.localAddress.find(':') != std::string::npos ? 6 : 4;
        connection.recvQueue = json.at("recvQueue").get<std::uint32_t>();
        connection.sendQueue = json.at("sendQueue").get<std::uint32_t>();
        connection.localPort = json.at("localPort").get<std::uint16_t>();
        connection.foreignAddress = json.at("foreignAddress").get<std::string>();
        connection.foreignPort = json.at("foreignPort").get<std::uint16_t>();
        connection.state = StateIndex(json.at("state").get<std::string>());
        connection.worldId = json.at("worldId").get<std::uint32_t>();
        connection.ccAlgorithm = json.at("ccAlgorithm").get<std::string>();
        connections.push_back(std::move(connection));
    }
}

}  // namespace

namespace KelmCtl::Network {

void NetworkInfoImpl::GetCurrentTcpKelmConnections(
    std::vector<HostCtl::Network::TcpIpConnection>& connections, const std::string& netstack) {
    HostSim::PassOperation("NetworkInfoImpl::GetCurrentTcpKelmConnections", netstack);
    if (auto* live = HostSim::LiveHost()) {
        live->Sockets().List(netstack, HostSim::Live::SocketKind::Tcp, connections);
        return;
    }
    Connections(connections, netstack, "tcp");
}

void NetworkInfoImpl::GetCurrentUdpKelmConnections(
    std::vector<HostCtl::Network::TcpIpConnection>& connections, const std::string& netstack) {
    HostSim::PassOperation("NetworkInfoImpl::GetCurrentUdpKelmConnections", netstack);
    if (auto* live = HostSim::LiveHost()) {
        live->Sockets().List(netstack, HostSim::Live::SocketKind::Udp, connections);
        return;
    }
    Connections(connections, netstack, "udp");
}

void NetworkInfoImpl::GetCurrentIpKelmConnections(
    std::vector<HostCtl::Network::TcpIpConnection>& connections, const std::string& netstack) {
    HostSim::PassOperation("NetworkInfoImpl::GetCurrentIpKelmConnections", netstack);
    if (auto* live = HostSim::LiveHost()) {
        live->Sockets().List(netstack, HostSim::Live::SocketKind::Raw, connections);
        return;
    }
    Connections(connections, netstack, "ip");
}

}  // namespace KelmCtl::Network

namespace KelmCtl::Resource {

ResourceInfoImpl::ResourceInfoImpl() {
    HostSim::PassOperation("ResourceInfoImpl::ResourceInfoImpl");
}

ResourceInfoImpl::~ResourceInfoImpl() = default;

// The worlds the host knows are those that own sockets; their names are read once for all the
// rows of a listing. Linux has no worlds, so the live host knows none.
std::string ResourceInfoImpl::GetWorldName(std::uint64_t worldId) {
    HostSim::PassOperation("ResourceInfoImpl::GetWorldName", std::to_string(worldId));
    if (HostSim::LiveHost() != nullptr) {
        return {};
    }
    if (!loaded_) {
        HostSim::Database& database = HostSim::Store();
        for (const std::string& netstack : HostSim::Routing::ReadNetstacks(database)) {
            for (const auto& json :
                 HostSim::Routing::ReadTable(database, netstack, "connections")) {
                names_.emplace(json.at("worldId").get<std::uint64_t>(),
                               json.at("worldName").get<std::string>());
            }
        }
        loaded_ = true;
    }
    const auto name = names_.find(worldId);
    return name == names_.end() ? std::string() : name->second;
}

}  // namespace KelmCtl::Resource
