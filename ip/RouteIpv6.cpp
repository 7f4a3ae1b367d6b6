// `network ip route ipv6 add|remove|list`: the IPv6 routes of a netstack instance. The network
// "default" stands for the default route, whose removal clears the instance's default gateway.
// A change brings the network dumper up to date when it is on.
#include "frame/Declaration.h"
#include "hostctl/Host.h"
#include "hostctl/HostCtlException.h"
#include "ip/RouteCommon.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/RoutingInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;
using KelmCtl::Network::RoutingInfoImpl;
using namespace Route;

constexpr Declare::Parameter kAddParameters[] = {
    {kNetworkParameter, "n", Declare::Type::String, true,
     "The Ipv6 address and prefix length of the network to add the route to. Specify 'default' "
     "to indicate the default network."},
    {kGatewayParameter, "g", Declare::Type::String, true,
     "The Ipv6 address of the gateway through which a route to be added."},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kNetworkParameter, "n", Declare::Type::String, true,
     "The Ipv6 address and prefix length of the network to remove the route from. Specify "
     "'default' to indicate the default network."},
    {kGatewayParameter, "g", Declare::Type::String, true,
     "The Ipv6 address of the gateway through which a route to be removed"},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kListParameters[] = {
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
    {kTypeParameter, "t", Declare::Type::String, false,
     "List IPv6 routes with given type(e.g. system)."},
};

constexpr Field kFields[] = {
    {kNetwork, FieldType::String, 1},
    {kNetmask, FieldType::String, 2},
    {kGateway, FieldType::String, 3},
    {kInterface, FieldType::String, 4},
};
constexpr Declare::StructShape kRoute = {"Ipv6Route", kFields};

Ipv6Network NetworkOf(const std::string& network) {
    return network == kDefaultNetwork ? RoutingInfoImpl::DEFAULT_IPV6_ROUTE : Ipv6Network(network);
}

// After a change of the routes the network dumper, when on, learns of it.
void RefreshNetDumper(KelmCtl::Network::NetworkInfoImpl& networkInfo) {
    if (networkInfo.GetNetDumperEnabled()) {
        HostCtl::Host::GetNetworkInfo()->RefreshNetDumper();
    }
}

}  // namespace

constexpr Declare::CommandShape kIpRouteIpv6AddShape = {
    .description = "Add IPv6 route to the Kelm.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpRouteIpv6RemoveShape = {
    .description = "Remove IPv6 route from the Kelm",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpRouteIpv6ListShape = {
    .description = "List configured IPv6 routes",
    .formatter = "table",
    .parameters = kListParameters,
    .root = Declare::Root::List,
    .structure = &kRoute,
};

NETWORK_COMMAND(IpRouteIpv6Add, kIpRouteIpv6AddShape) {
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        RoutingInfoImpl routing(kDefaultNetstack);
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        if (!netstack.empty()) {
            routing.SetNetstackInstanceKey(netstack);
        }
        const Ipv6Address gateway(input->GetParameter(kGatewayParameter));
        const Ipv6Network network = NetworkOf(input->GetParameter(kNetworkParameter));
        routing.AddIpv6KelmRoute(network, gateway);
        RefreshNetDumper(networkInfo);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpRouteIpv6Remove, kIpRouteIpv6RemoveShape) {
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        RoutingInfoImpl routing(kDefaultNetstack);
        const Ipv6Address gateway(input->GetParameter(kGatewayParameter));
        const Ipv6Network network = NetworkOf(input->GetParameter(kNetworkParameter));
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        if (!netstack.empty()) {
            routing.SetNetstackInstanceKey(netstack);
        }
        if (network == RoutingInfoImpl::DEFAULT_IPV6_ROUTE) {
            if (gateway == routing.GetIpv6KelmDefaultGateway() ||
                gateway == routing.GetIpv6KelmConfigDefaultGateway()) {
                routing.SetIpv6KelmDefaultGateway(Ipv6Address());
            } else {
                output->AddErrorMessage(gateway.GetStringAddress() + kNotDefaultRoute);
            }
        } else {
            routing.RemoveIpv6KelmRoute(network, gateway);
        }
        RefreshNetDumper(networkInfo);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpRouteIpv6List, kIpRouteIpv6ListShape) {
    try {
        RoutingInfoImpl routing(kDefaultNetstack);
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        if (!netstack.empty()) {
            routing.SetNetstackInstanceKey(netstack);
        }
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
        const auto routes = routing.GetCurrentIpv6KelmRoutes(type);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        list->Reserve(routes.size());
        for (const auto& route : routes) {
            auto row = GetOutputStructure();
            row->SetField(
                kNetmask,
                Ipv6Network::NetmaskFromNumber(route.network.GetNetmask()).GetStringAddress());
            row->SetField(kInterface, route.interfaceName);
            row->SetField(kNetwork, route.network == RoutingInfoImpl::DEFAULT_IPV6_ROUTE
                                        ? std::string(kDefaultNetwork)
                                        : route.network.GetAddress().GetStringAddress());
            row->SetField(kGateway, route.gateway.GetStringAddress());
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
