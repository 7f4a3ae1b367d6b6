// `network ip route ipv4 add|remove|list`: the IPv4 routes of a netstack instance. The network
// "default" stands for the default route, whose removal clears the instance's default gateway.
#include <algorithm>
#include <array>
#include <unordered_map>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "ip/RouteCommon.h"
#include "kelmctl/RoutingInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv4Network;
using KelmCtl::Network::RoutingInfoImpl;
using namespace Route;

constexpr char kAnyAddress[] = "0.0.0.0";
constexpr char kSource[] = "Source";

constexpr Declare::Parameter kAddParameters[] = {
    {kNetworkParameter, "n", Declare::Type::String, true,
     "The Ipv4 address and prefix length of the network to add the route to. Specify 'default' "
     "to indicate the default network."},
    {kGatewayParameter, "g", Declare::Type::String, true,
     "The Ipv4 address of the gateway through which a route to be added."},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kNetworkParameter, "n", Declare::Type::String, true,
     "The Ipv4 address and prefix length of the network to remove the route from. Specify "
     "'default' to indicate the default network."},
    {kGatewayParameter, "g", Declare::Type::String, true,
     "The Ipv4 address of the gateway through which a route to be removed"},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kListParameters[] = {
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
    {kTypeParameter, "t", Declare::Type::String, false,
     "List IPv4 routes with given type(e.g. system)."},
};

constexpr Field kFields[] = {
    {kNetwork, FieldType::String, 1}, {kNetmask, FieldType::String, 2},
    {kGateway, FieldType::String, 3}, {kInterface, FieldType::String, 4},
    {kSource, FieldType::String, 5},
};
constexpr Declare::StructShape kRoute = {"Ipv4Route", kFields};

// The instance named by `netstack`, or the default one.
void ApplyNetstack(const Input& input, RoutingInfoImpl& routing) {
    const std::string& netstack = input.GetParameter(kNetstackParameter);
    if (!netstack.empty()) {
        routing.SetNetstackInstanceKey(netstack);
    }
}

Ipv4Network ReadNetwork(const Input& input) {
    const std::string& network = input.GetParameter(kNetworkParameter);
    return network == kDefaultNetwork ? RoutingInfoImpl::DEFAULT_IPV4_ROUTE : Ipv4Network(network);
}

}  // namespace

constexpr Declare::CommandShape kIpRouteIpv4AddShape = {
    .description = "Add IPv4 route to the Kelm.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpRouteIpv4RemoveShape = {
    .description = "Remove IPv4 route",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpRouteIpv4ListShape = {
    .description = "List configured IPv4 routes",
    .formatter = "table",
    .parameters = kListParameters,
    .root = Declare::Root::List,
    .structure = &kRoute,
};

NETWORK_COMMAND(IpRouteIpv4Add, kIpRouteIpv4AddShape) {
    try {
        RoutingInfoImpl routing(kDefaultNetstack);
        ApplyNetstack(*input, routing);
        const Ipv4Address gateway(input->GetParameter(kGatewayParameter));
        const Ipv4Network network = ReadNetwork(*input);
        routing.AddKelmRoute(network, gateway);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpRouteIpv4Remove, kIpRouteIpv4RemoveShape) {
    try {
        RoutingInfoImpl routing(kDefaultNetstack);
        ApplyNetstack(*input, routing);
        const Ipv4Address gateway(input->GetParameter(kGatewayParameter));
        const Ipv4Network network = ReadNetwork(*input);
        if (network == RoutingInfoImpl::DEFAULT_IPV4_ROUTE) {
            if (gateway == routing.GetKelmDefaultGateway() ||
                gateway == routing.GetKelmConfigDefaultGateway()) {
                routing.SetKelmDefaultGateway(Ipv4Address(kAnyAddress), false);
            } else {
                output->AddErrorMessage(gateway.GetStringAddress() + kNotDefaultRoute);
            }
        } else {
            routing.RemoveKelmRoute(network, gateway);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpRouteIpv4List, kIpRouteIpv4ListShape) {
    try {
        RoutingInfoImpl routing(kDefaultNetstack);
        ApplyNetstack(*input, routing);
        auto type = HostCtl::Network::PortsetGetNormal;
        if (input->HasParameter(kTypeParameter)) {
            if (input->GetParameter(kTypeParameter) != kSystemType) {
                output->AddErrorMessage(kInvalidType);
                return;
            }
            if (routing.GetNetstackInstanceKey() != kDefaultNetstack) {
                output->AddErrorMessage(kInvalidNetstack);
                return;
            }
            type = HostCtl::Network::PortsetGetSystem;
        }
        const auto routes = routing.GetCurrentKelmRoutes(type);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        list->Reserve(routes.size());
        // A table has a few netmasks and gateways over many rows: each is written out once.
        std::array<std::string, 33> netmasks;
        std::unordered_map<std::uint32_t, std::string> gateways;
        for (const auto& route : routes) {
            std::string& netmask = netmasks[std::min(route.network.GetPrefixLength(), 32u)];
            if (netmask.empty()) {
                netmask = route.network.GetNetmask().GetStringAddress();
            }
            auto [gateway, added] = gateways.try_emplace(route.gateway.GetValue());
            if (added) {
                gateway->second = route.gateway.GetStringAddress();
            }
            // Fields in the order of kFields, as the row prototype has them.
            auto row = std::make_shared<MetaStruct>(*list->GetPrototype());
            row->SetField(kNetwork, route.network == RoutingInfoImpl::DEFAULT_IPV4_ROUTE
                                        ? std::string(kDefaultNetwork)
                                        : route.network.GetNetwork().GetStringAddress());
            row->SetField(kNetmask, netmask);
            row->SetField(kGateway, gateway->second);
            row->SetField(kInterface, route.interfaceName);
            row->SetField(kSource, routing.GetDefaultGatewaySource(route.network));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
