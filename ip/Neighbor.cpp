// `network ip neighbor list|remove`: the ARP and IPv6 neighbour tables of a netstack instance.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "ip/NetstackParameter.h"
#include "kelmctl/KelmNicInfoImpl.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/RoutingInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using KelmCtl::Network::RoutingInfoImpl;

constexpr char kVersionParameter[] = "version";
constexpr char kInterfaceParameter[] = "interface-name";
constexpr char kTypeParameter[] = "type";
constexpr char kAddressParameter[] = "neighbor-addr";
constexpr char kVersionDescription[] = "IP version: %ENUM%";
constexpr char kAllVersions[] = "all";
constexpr char kIpv4[] = "4";
constexpr char kIpv6[] = "6";
constexpr char kSystemType[] = "system";
constexpr char kInvalidType[] = "Invalid type value, should be 'system'.";
constexpr char kInvalidNetstack[] = "Invalid netstack value, should be 'defaultTcpipStack'.";
constexpr char kNoInterface[] = "Unable to find a Kelm interface with the name ";

constexpr char kNeighbor[] = "Neighbor";
constexpr char kMacAddress[] = "Mac Address";
constexpr char kKelmnic[] = "Kelmnic";
constexpr char kExpiry[] = "Expiry";
constexpr char kState[] = "State";
constexpr char kType[] = "Type";

constexpr Declare::Choice kListVersions[] = {{"4"}, {"6"}, {"all"}};
constexpr Declare::Choice kRemoveVersions[] = {{"4"}, {"6"}};

constexpr Declare::Parameter kListParameters[] = {
    {kVersionParameter,
     "v",
     Declare::Type::String,
     false,
     kVersionDescription,
     false,
     0,
     0,
     {},
     kListVersions},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
    {kInterfaceParameter, "i", Declare::Type::String, false,
     "The name of the Kelm network interface to limit the output of this command to; if "
     "unspecified, list neighbors on all interfaces."},
    {kTypeParameter, "t", Declare::Type::String, false,
     "List IP neighbors with given type(e.g. system)."},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kVersionParameter,
     "v",
     Declare::Type::String,
     true,
     kVersionDescription,
     false,
     0,
     0,
     {},
     kRemoveVersions},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
    {kInterfaceParameter, "i", Declare::Type::String, false,
     "The name of the Kelm network interface to remove the neighbor entry from. If not "
     "specified, neighbor will be removed from all interfaces"},
    {kAddressParameter, "a", Declare::Type::String, true, "The IPv4/IPv6 address of the neighbor."},
};

constexpr Field kFields[] = {
    {kNeighbor, FieldType::String, 1}, {kMacAddress, FieldType::String, 2},
    {kKelmnic, FieldType::String, 3},  {kExpiry, FieldType::Int, 4},
    {kState, FieldType::String, 5},    {kType, FieldType::String, 6},
};
constexpr Declare::StructShape kNetworkNeighbor = {"NetworkNeighbor", kFields};

constexpr Declare::OutputParameter kListOutputParameters[] = {
    {"units:NetworkNeighbor.Expiry", "sec"},
};

std::string NetstackKey(const Input& input) {
    const std::string& netstack = input.GetParameter(kNetstackParameter);
    return netstack.empty() ? kDefaultNetstack : netstack;
}

}  // namespace

constexpr Declare::CommandShape kIpNeighborListShape = {
    .description = "List ARP table entries",
    .formatter = "table",
    .outputParameters = kListOutputParameters,
    .parameters = kListParameters,
    .root = Declare::Root::List,
    .structure = &kNetworkNeighbor,
};

constexpr Declare::CommandShape kIpNeighborRemoveShape = {
    .description = "Remove ARP table entries",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

// No handler of its own: a failure of the host leaves the command.
NETWORK_COMMAND(IpNeighborList, kIpNeighborListShape) {
    KelmCtl::Network::KelmNicInfoImpl interfaces;
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    std::string version = kAllVersions;
    const std::string& interfaceName = input->GetParameter(kInterfaceParameter);
    RoutingInfoImpl routing(kDefaultNetstack);
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    const std::string key = NetstackKey(*input);
    routing.SetNetstackInstanceKey(key);
    if (input->HasParameter(kVersionParameter)) {
        version = input->GetParameter(kVersionParameter);
    }
    auto type = HostCtl::Network::PortsetGetNormal;
    if (input->HasParameter(kTypeParameter)) {
        if (input->GetParameter(kTypeParameter) != kSystemType) {
            output->AddErrorMessage(kInvalidType);
            return;
        }
        type = HostCtl::Network::PortsetGetSystem;
        if (key != kDefaultNetstack) {
            output->AddErrorMessage(kInvalidNetstack);
            return;
        }
    }
    if (!interfaceName.empty() && !interfaces.GetKelmNicByInterface(interfaceName, false, type)) {
        output->AddErrorMessage(kNoInterface + interfaceName);
        return;
    }
    if (version == kAllVersions || version == kIpv4) {
        std::vector<HostCtl::Network::Ipv4Neighbor> neighbors;
        routing.GetCurrentIpv4KelmNeighbors(neighbors, interfaceName, type);
        for (const auto& neighbor : neighbors) {
            auto row = std::make_shared<MetaStruct>(*list->GetPrototype());
            row->SetField(kNeighbor, neighbor.address.GetStringAddress());
            row->SetField(kMacAddress, neighbor.macAddress);
            row->SetField(kKelmnic, neighbor.interfaceName);
            row->SetField(kExpiry, static_cast<long>(neighbor.expiry));
            row->SetField(kState, "");
            row->SetField(kType, routing.GetIpv4NeighborType(neighbor));
            list->Add(row);
        }
    }
    if ((version == kAllVersions || version == kIpv6) && networkInfo.IsKelmIpv6Enabled()) {
        std::vector<HostCtl::Network::Ipv6Neighbor> neighbors;
        routing.GetCurrentIpv6KelmNeighbors(neighbors, interfaceName, type);
        for (const auto& neighbor : neighbors) {
            auto row = std::make_shared<MetaStruct>(*list->GetPrototype());
            row->SetField(kNeighbor, neighbor.address.GetStringAddress());
            row->SetField(kMacAddress, neighbor.macAddress);
            row->SetField(kKelmnic, neighbor.interfaceName);
            row->SetField(kExpiry, static_cast<long>(neighbor.expiry));
            row->SetField(kState, routing.GetIpv6NeighborState(neighbor));
            row->SetField(kType, routing.GetIpv6NeighborType(neighbor));
            list->Add(row);
        }
    }
    output->SetRootObject(list);
}

// The interface look-up stands ahead of the handler: its failure leaves the command.
NETWORK_COMMAND(IpNeighborRemove, kIpNeighborRemoveShape) {
    KelmCtl::Network::KelmNicInfoImpl interfaces;
    const std::string& interfaceName = input->GetParameter(kInterfaceParameter);
    const std::string& version = input->GetParameter(kVersionParameter);
    RoutingInfoImpl routing(kDefaultNetstack);
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    const std::string key = NetstackKey(*input);
    if (!interfaceName.empty()) {
        const auto kelmNic = interfaces.GetKelmNicByInterface(interfaceName, false,
                                                              HostCtl::Network::PortsetGetNormal);
        if (!kelmNic) {
            output->AddErrorMessage(kNoInterface + interfaceName);
            return;
        }
        routing.SetNetstackInstanceKey(kelmNic->GetNetstackInstanceKey());
    } else {
        routing.SetNetstackInstanceKey(key);
    }
    try {
        if (version == kIpv4) {
            HostCtl::Network::Ipv4Neighbor neighbor;
            neighbor.address =
                HostCtl::Network::Ipv4Address(input->GetParameter(kAddressParameter));
            neighbor.interfaceName = interfaceName;
            routing.RemoveIpv4Neighbor(neighbor);
        } else if (version == kIpv6 && networkInfo.IsKelmIpv6Enabled()) {
            HostCtl::Network::Ipv6Neighbor neighbor;
            neighbor.address =
                HostCtl::Network::Ipv6Address(input->GetParameter(kAddressParameter));
            neighbor.interfaceName = interfaceName;
            routing.RemoveIpv6Neighbor(neighbor);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
