// `network ip interface ipv4 get` (also `ipv4 address list`) and `network ip interface ipv4
// set`: the IPv4 settings of Kelm interfaces.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "ip/InterfaceSelection.h"
#include "kelmctl/KelmNicInfoImpl.h"
#include "kelmctl/RoutingInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using Declare::Type;
using HostCtl::Network::Ipv4Address;

constexpr char kName[] = "Name";
constexpr char kIpv4Address[] = "IPv4 Address";
constexpr char kIpv4Netmask[] = "IPv4 Netmask";
constexpr char kIpv4Broadcast[] = "IPv4 Broadcast";
constexpr char kAddressType[] = "Address Type";
constexpr char kGateway[] = "Gateway";
constexpr char kDhcpDns[] = "DHCP DNS";

constexpr char kTypeDhcp[] = "DHCP";
constexpr char kTypeNone[] = "NONE";
constexpr char kTypeStatic[] = "STATIC";
constexpr char kNoGateway[] = "0.0.0.0";

constexpr char kIpv4Parameter[] = "ipv4";
constexpr char kNetmaskParameter[] = "netmask";
constexpr char kGatewayParameter[] = "gateway";
constexpr char kPeerDnsParameter[] = "peer-dns";

constexpr char kStatic[] = "static";
constexpr char kDhcp[] = "dhcp";
constexpr char kNone[] = "none";

constexpr char kStaticNeedsAddress[] =
    "The --type=static requires the --ipv4 and --netmask options.";
constexpr char kInvalidIpv4[] =
    "Invalid --ipv4 option provided. This address is not a valid IPv4 address";
constexpr char kInvalidNetmask[] =
    "Invalid --netmask option provided. This address is not a valid IPv4 address";
constexpr char kInvalidGateway[] =
    "Invalid --gateway option provided. This address is not a valid IPv4 address";
constexpr char kOnlyIfStatic[] =
    "-I|--ipv4 or -g|--gateway can be specified only if type is static";
constexpr char kOnlyIfType[] =
    "-I|--ipv4 or -g|--gateway can be specified only if type is specified";
constexpr char kPeerDnsNeedsDhcp[] = "-P|--peer-dns can be specified only if DHCP is enabled";

constexpr Field kFields[] = {
    {kName, FieldType::String, 1},        {kIpv4Address, FieldType::String, 2},
    {kIpv4Netmask, FieldType::String, 3}, {kIpv4Broadcast, FieldType::String, 4},
    {kAddressType, FieldType::String, 5}, {kGateway, FieldType::String, 6},
    {kDhcpDns, FieldType::Bool, 7},
};
constexpr Declare::StructShape kIpv4Interface = {"IPv4Interface", kFields};

constexpr Declare::Parameter kGetParameters[] = {
    {kNetstackParameter, "N", Type::String, false,
     "The network stack instance; if unspecified, consider all netstack instances"},
    {kInterfaceNameParameter, "i", Type::String, false,
     "The name of the Kelm network interface to limit the output of this command to."},
    {kInterfaceTypeParameter, "t", Type::String, false,
     "List IPv4 information of Kelm network interface with given type(e.g. system)."},
};

constexpr Declare::Choice kTypeChoices[] = {
    {kStatic,
     "Set Static IPv4 information for this interface. Requires --ipv4 and --netmask options."},
    {kDhcp, "Use DHCP to aquire IPv4 setting for this interface."},
    {kNone, "Remove IPv4 settings form this interface."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {.name = kInterfaceNameParameter,
     .shortName = "i",
     .type = Type::String,
     .required = true,
     .description = "The name of the Kelm network interface to set IPv4 settings for. This name "
                    "must be an interface listed in the interface list command."},
    {.name = kInterfaceTypeParameter,
     .shortName = "t",
     .type = Type::String,
     .required = false,
     .description = "IPv4 Address type: %FULLENUM%",
     .stringChoices = kTypeChoices},
    {.name = kIpv4Parameter,
     .shortName = "I",
     .type = Type::String,
     .required = false,
     .description = "The static IPv4 address for this interface."},
    {.name = kNetmaskParameter,
     .shortName = "N",
     .type = Type::String,
     .required = false,
     .description = "The static IPv4 netmask for this interface."},
    {.name = kGatewayParameter,
     .shortName = "g",
     .type = Type::String,
     .required = false,
     .description = "The default gateway for this interface. The value must be a valid IPv4 "
                    "address. Gateway would be reset if not provided"},
    {.name = kPeerDnsParameter,
     .shortName = "P",
     .type = Type::Bool,
     .required = false,
     .description = "A boolean value to indicate if the system should use the DNS settings "
                    "published via DHCPv4 for this interface."},
};

// Applies `type=static` to the working configuration; false after adding the messages of what
// is missing or invalid.
bool ApplyStatic(const Input& input, Output& output, HostCtl::Network::IpConfig& config) {
    const std::string& address = input.GetParameter(kIpv4Parameter);
    const std::string& netmask = input.GetParameter(kNetmaskParameter);
    std::string gateway = kNoGateway;
    bool valid = true;
    if (address.empty() || netmask.empty()) {
        output.AddErrorMessage(kStaticNeedsAddress);
        valid = false;
    }
    if (!Ipv4Address::IsValidAddress(address)) {
        output.AddErrorMessage(kInvalidIpv4);
        valid = false;
    }
    if (!Ipv4Address::IsValidAddress(netmask)) {
        output.AddErrorMessage(kInvalidNetmask);
        valid = false;
    }
    if (input.HasParameter(kGatewayParameter)) {
        gateway = input.GetParameter(kGatewayParameter);
        if (!Ipv4Address::IsValidAddress(gateway)) {
            output.AddErrorMessage(kInvalidGateway);
            return false;
        }
    }
    if (!valid) {
        return false;
    }
    config.SetIpv4Address(Ipv4Address(address));
    config.SetIpv4Netmask(Ipv4Address(netmask));
    config.SetIpv4Gateway(Ipv4Address(gateway));
    return true;
}

}  // namespace

constexpr Declare::CommandShape kIpInterfaceIpv4GetShape = {
    .description = "List the IPv4 addresses assigned to Kelm network interfaces.",
    .formatter = "table",
    .parameters = kGetParameters,
    .root = Declare::Root::List,
    .structure = &kIpv4Interface,
};

NETWORK_COMMAND(IpInterfaceIpv4Get, kIpInterfaceIpv4GetShape) {
    try {
        const std::string& name = input->GetParameter(kInterfaceNameParameter);
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        KelmCtl::Network::KelmNicInfoImpl nics;
        KelmCtl::Network::RoutingInfoImpl routing(kDefaultNetstack);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const auto type = ReadInterfaceType(*input, *output, netstack);
        if (!type) {
            return;
        }
        auto interfaces = ChooseInterfaces(nics, name, netstack, *type, *output);
        if (!interfaces) {
            return;
        }
        for (const auto& nic : *interfaces) {
            if (!nic) {
                continue;
            }
            const HostCtl::Network::IpConfig config = nic->GetIpConfig();
            auto row = GetOutputStructure();
            row->SetField(kName, nic->GetInterfaceName());
            row->SetField(kIpv4Address, config.GetIpv4Address().GetStringAddress());
            row->SetField(kIpv4Netmask, config.GetIpv4Netmask().GetStringAddress());
            row->SetField(kIpv4Broadcast, config.GetIpv4Broadcast().GetStringAddress());
            Ipv4Address gateway = config.GetIpv4Gateway();
            bool dhcpDns = false;
            const char* addressType = kTypeStatic;
            if (config.GetUseDhcp()) {
                addressType = kTypeDhcp;
                dhcpDns = nic->GetConfiguredIpConfig().GetDhcpDns();
            } else if (config.GetIpv4UseNone()) {
                addressType = kTypeNone;
            } else if (gateway == Ipv4Address(kNoGateway)) {
                routing.SetNetstackInstanceKey(nic->GetNetstackInstanceKey());
                routing.Refresh();
                gateway = routing.GetKelmDefaultGateway();
            }
            row->SetField(kAddressType, addressType);
            row->SetField(kGateway, gateway.GetStringAddress());
            row->SetField(kDhcpDns, dhcpDns);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(std::string("Error getting IPv4 configuration. Error was: ") +
                                e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceIpv4SetShape = {
    .description = "Configure IPv4 setting for a given Kelm network interface.",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceIpv4Set, kIpInterfaceIpv4SetShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        auto nic = FindKelmInterface(nics, name, *output);
        if (!nic) {
            return;
        }
        HostCtl::Network::IpConfig config = nic->GetIpConfig();
        config.SetIpv6DhcpDns(nic->GetConfiguredIpConfig().GetIpv6DhcpDns());
        const bool hasAddressOrGateway =
            input->HasParameter(kIpv4Parameter) || input->HasParameter(kGatewayParameter);
        if (input->HasParameter(kInterfaceTypeParameter)) {
            const std::string& type = input->GetParameter(kInterfaceTypeParameter);
            if (type == kStatic) {
                if (!ApplyStatic(*input, *output, config)) {
                    return;
                }
            } else {
                if (hasAddressOrGateway) {
                    output->AddErrorMessage(kOnlyIfStatic);
                    return;
                }
                if (type == kDhcp) {
                    config.SetUseDhcp(true);
                } else if (type == kNone) {
                    config.SetIpv4UseNone();
                }
            }
        } else if (hasAddressOrGateway) {
            output->AddErrorMessage(kOnlyIfType);
            return;
        }
        if (input->HasParameter(kPeerDnsParameter)) {
            const bool peerDns = input->GetParameterBool(kPeerDnsParameter);
            if (config.GetUseDhcp()) {
                config.SetDhcpDns(peerDns);
            } else if (peerDns) {
                output->AddErrorMessage(kPeerDnsNeedsDhcp);
                return;
            }
        }
        nic->SetIpConfig(config);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage("Error changing IPv4 configuration for the interface " + name +
                                ". Error was: " + e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
