// `network ip connection list`: the TCP, UDP and raw IP sockets of a netstack instance, with
// the world that owns each.
#include <string>
#include <string_view>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/ResourceInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kNetstackParameter[] = "netstack";
constexpr char kTypeParameter[] = "type";
constexpr char kDefaultNetstack[] = "defaultTcpipStack";
constexpr char kAll[] = "all";
constexpr char kTcp[] = "tcp";
constexpr char kUdp[] = "udp";
constexpr char kIp[] = "ip";
constexpr char kFailed[] = "Unable to get connection list: ";

constexpr char kProto[] = "Proto";
constexpr char kRecvQ[] = "Recv Q";
constexpr char kSendQ[] = "Send Q";
constexpr char kLocalAddress[] = "Local Address";
constexpr char kForeignAddress[] = "Foreign Address";
constexpr char kState[] = "State";
constexpr char kWorldId[] = "World ID";
constexpr char kCcAlgo[] = "CC Algo";
constexpr char kWorldName[] = "World Name";
constexpr char kStructName[] = "IpConnection";

// Texts of the TCP states by the record's index.
constexpr const char* kStates[] = {"CLOSED",      "LISTEN",     "SYN_SENT",   "RCVD",
                                   "ESTABLISHED", "CLOSE_WAIT", "FIN_WAIT_1", "CLOSING",
                                   "LAST_ACK",    "FIN_WAIT_2", "TIME_WAIT"};

constexpr Declare::Choice kTypes[] = {{"ip"}, {"tcp"}, {"udp"}, {"all"}};

constexpr Declare::Parameter kParameters[] = {
    {kNetstackParameter, "N", Declare::Type::String, false,
     "The network stack instance; if unspecified, use the default netstack instance"},
    {kTypeParameter,
     "t",
     Declare::Type::String,
     false,
     "Connection type: %ENUM%",
     false,
     0,
     0,
     {},
     kTypes},
};

constexpr Field kFields[] = {
    {kProto, FieldType::String, 1},
    {kRecvQ, FieldType::Int, 2},
    {kSendQ, FieldType::Int, 3},
    {kLocalAddress, FieldType::String, 4},
    {kForeignAddress, FieldType::String, 5},
    {kState, FieldType::String, 6},
    {kWorldId, FieldType::Int, 7},
    {kCcAlgo, FieldType::String, 8},
    {kWorldName, FieldType::String, 9},
};
constexpr Declare::StructShape kConnection = {kStructName, kFields};

// "address:port", an IPv6 address in brackets: put together directly, as a listing of
// thousands of sockets makes two for each.
std::string Endpoint(const std::string& address, std::uint16_t port) {
    const bool ipv6 = address.find(':') != std::string::npos;
    std::string endpoint;
    endpoint.reserve(address.size() + 8);
    if (ipv6) {
        endpoint.push_back('[');
    }
    endpoint.append(address).append(ipv6 ? "]:" : ":").append(std::to_string(port));
    return endpoint;
}

void Collect(MetaList& list, std::string_view protocol, const std::string& key) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    KelmCtl::Resource::ResourceInfoImpl resources;
    std::vector<HostCtl::Network::TcpIpConnection> connections;
    if (protocol == kTcp) {
        networkInfo.GetCurrentTcpKelmConnections(connections, key);
    } else if (protocol == kUdp) {
        networkInfo.GetCurrentUdpKelmConnections(connections, key);
    } else {
        networkInfo.GetCurrentIpKelmConnections(connections, key);
    }
    list.Reserve(list.GetCount() + connections.size());
    for (const auto& connection : connections) {
        auto row = std::make_shared<MetaStruct>(*list.GetPrototype());
        row->SetField(kProto, std::string(protocol));
        row->SetField(kRecvQ, static_cast<long>(connection.recvQueue));
        row->SetField(kSendQ, static_cast<long>(connection.sendQueue));
        row->SetField(kLocalAddress, Endpoint(connection.localAddress, connection.localPort));
        row->SetField(kForeignAddress, Endpoint(connection.foreignAddress, connection.foreignPort));
        row->SetField(kState,
                      connection.state < std::size(kStates) ? kStates[connection.state] : "");
        row->SetField(kCcAlgo, connection.ccAlgorithm);
        row->SetField(kWorldId, static_cast<long>(connection.worldId));
        row->SetField(kWorldName, resources.GetWorldName(connection.worldId));
        list.Add(row);
    }
}

}  // namespace

constexpr Declare::CommandShape kIpConnectionListShape = {
    .description = "List active TCP/IP connections",
    .formatter = "table",
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kConnection,
};

NETWORK_COMMAND(IpConnectionList, kIpConnectionListShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        std::string selector = kAll;
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        const std::string key = netstack.empty() ? kDefaultNetstack : netstack;
        if (input->HasParameter(kTypeParameter)) {
            selector = input->GetParameter(kTypeParameter);
        }
        if (selector == kAll || selector == kTcp) {
            Collect(*list, kTcp, key);
        }
        if (selector == kAll || selector == kUdp) {
            Collect(*list, kUdp, key);
        }
        if (selector == kAll || selector == kIp) {
            Collect(*list, kIp, key);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kFailed + std::string(e.what()));
    }
}

}  // namespace ZanvexCli::NetworkNamespace
