// `network ip interface ipv6 get|set` and `network ip interface ipv6 address list|add|remove`:
// the IPv6 settings and addresses of Kelm interfaces.
#include "frame/Declaration.h"
#include "hostctl/Host.h"
#include "hostctl/HostCtlException.h"
#include "ip/InterfaceSelection.h"
#include "kelmctl/KelmNicInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using Declare::Type;
using HostCtl::Network::IpConfig;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;

constexpr char kName[] = "Name";
constexpr char kIpv6Enabled[] = "IPv6 Enabled";
constexpr char kDhcpv6Enabled[] = "DHCPv6 Enabled";
constexpr char kRouterAdvEnabled[] = "Router Adv Enabled";
constexpr char kDhcpDns[] = "DHCP DNS";
constexpr char kGateway[] = "Gateway";

constexpr char kInterface[] = "Interface";
constexpr char kAddress[] = "Address";
constexpr char kNetmask[] = "Netmask";
constexpr char kType[] = "Type";
constexpr char kStatus[] = "Status";

constexpr char kEnableIpv6Parameter[] = "enable-ipv6";
constexpr char kEnableDhcpv6Parameter[] = "enable-dhcpv6";
constexpr char kEnableRouterAdvParameter[] = "enable-router-adv";
constexpr char kPeerDnsParameter[] = "peer-dns";
constexpr char kGatewayParameter[] = "gateway";
constexpr char kIpv6Parameter[] = "ipv6";

constexpr char kPeerDnsNeedsDhcp[] =
    "-P|--peer-dns can be specified only if DHCPv6 or RA is enabled";
constexpr char kPeerDnsStaysOn[] = "Cannot disable both DHCPv6 and RA when peer DNS is enabled";
constexpr char kGatewayWithRouterAdv[] =
    "Cannot set an interface gateway when Router Advertisement is enabled.";
constexpr char kInvalidGateway[] =
    "Invalid --gateway option provided.This address is not a valid IPv6 address";
constexpr char kInvalidFormat[] =
    "Invalid format for IPv6 address. Address must be in the format "
    "<ipv6-address>/<prefix-length>   Example: 1:2:3:4::/64";

struct Word {
    int value;
    const char* word;
};
constexpr Word kTypeWords[] = {
    {Ipv6Network::kTypeStatic, "STATIC"},
    {Ipv6Network::kTypeAutoconf, "AUTOCONF"},
    {Ipv6Network::kTypeDhcp, "DHCP"},
};
constexpr Word kStatusWords[] = {
    {Ipv6Network::kStatusTentative, "TENTATIVE"},
    {Ipv6Network::kStatusDuplicated, "DUPLICATED"},
    {Ipv6Network::kStatusDeprecated, "DEPRECATED"},
};
constexpr char kOtherType[] = "";
constexpr char kOtherStatus[] = "PREFERRED";

template <std::size_t N>
const char* WordOf(int value, const Word (&words)[N], const char* other) {
    for (const Word& word : words) {
        if (word.value == value) {
            return word.word;
        }
    }
    return other;
}

constexpr Field kSettingsFields[] = {
    {kName, FieldType::String, 1},        {kIpv6Enabled, FieldType::Bool, 2},
    {kDhcpv6Enabled, FieldType::Bool, 3}, {kRouterAdvEnabled, FieldType::Bool, 4},
    {kDhcpDns, FieldType::Bool, 5},       {kGateway, FieldType::String, 6},
};
constexpr Declare::StructShape kSettingsStruct = {"IPv6Interface", kSettingsFields};

constexpr Field kAddressFields[] = {
    {kInterface, FieldType::String, 1}, {kAddress, FieldType::String, 2},
    {kNetmask, FieldType::Int, 3},      {kType, FieldType::String, 4},
    {kStatus, FieldType::String, 5},
};
constexpr Declare::StructShape kAddressStruct = {"IPv6Interface", kAddressFields};

constexpr Declare::Parameter kGetParameters[] = {
    {kInterfaceNameParameter, "n", Type::String, false,
     "The name of the Kelm network interface to limit the output of this command to."},
    {kNetstackParameter, "N", Type::String, false,
     "The network stack instance; if unspecified, consider all netstack instances"},
    {kInterfaceTypeParameter, "t", Type::String, false,
     "List IPv6 information of Kelm network interface with given type(e.g. system)."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, true,
     "The name of the Kelm network interface to set IPv6 settings for. This name must be an "
     "interface listed in the interface list command."},
    {kEnableIpv6Parameter, "e", Type::Bool, false,
     "Setting this value to true enables IPv6 on thisinterface while setting it to false "
     "disables IPv6 on this interface."},
    {kEnableDhcpv6Parameter, "d", Type::Bool, false,
     "Setting this value to true will enable DHCPv6 on this interface and attempt to aquire an "
     "IPv6 address from the network "},
    {kEnableRouterAdvParameter, "r", Type::Bool, false,
     "Setting this value to true will enable IPv6 Router Advertised IPv6 addresses to be added "
     "to this interface from any routers broadcasting on the local network."},
    {kPeerDnsParameter, "P", Type::Bool, false,
     "A boolean value to indicate if the system should use the DNS settings published via "
     "DHCPv6 for this interface."},
    {kGatewayParameter, "g", Type::String, false,
     "A default gateway for this interface. The value must be a valid IPv6 address."},
};

constexpr Declare::Parameter kAddressListParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, false,
     "The name of the Kelm network interface to limit the output of this command to."},
    {kInterfaceTypeParameter, "t", Type::String, false,
     "List IPv6 addresses of Kelm network interface with given type(e.g. system)."},
};

constexpr Declare::Parameter kAddressAddParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, true,
     "The name of the Kelm network interface to add a static IPv6 address to. This name must be "
     "an interface listed in the interface list command."},
    {kIpv6Parameter, "I", Type::String, true,
     "The IPv6 address to add to the given Kelm network interface. This must be in X:X:X::/X "
     "format"},
};

constexpr Declare::Parameter kAddressRemoveParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, true,
     "The name of the Kelm network interface to remove an IPv6 address from. This name must be "
     "an interface listed in the interface list command."},
    {kIpv6Parameter, "I", Type::String, true,
     "The IPv6 address to remove from the given Kelm network interface. This must be in "
     "X:X:X::/X format"},
};

// Tells the network dumper that its interfaces changed.
void RefreshNetDumper() {
    HostCtl::HostFactory::GetHost();
    HostCtl::Host::GetNetworkInfo()->RefreshNetDumper();
}

// The steps `address add` and `address remove` share: check the text, find the interface,
// change its addresses with `change`, and hand the configuration back. Gives the interface and
// the configuration handed back, or nothing after a message.
template <class Change>
std::unique_ptr<HostCtl::Network::KelmNic> ChangeAddresses(const Input& input, Output& output,
                                                           IpConfig& config, Change change) {
    const std::string& name = input.GetParameter(kInterfaceNameParameter);
    const std::string& text = input.GetParameter(kIpv6Parameter);
    if (!Ipv6Network::IsValidAddressAndNetmask(text)) {
        output.AddErrorMessage(kInvalidFormat);
        return nullptr;
    }
    KelmCtl::Network::KelmNicInfoImpl nics;
    auto nic = FindKelmInterface(nics, name, output);
    if (!nic) {
        return nullptr;
    }
    config = nic->GetIpConfig();
    change(config, Ipv6Network(text));
    nic->SetIpConfig(config);
    return nic;
}

}  // namespace

constexpr Declare::CommandShape kIpInterfaceIpv6GetShape = {
    .description =
        "Get IPv6 settings for Kelm network interfaces. This does not include the IPv6 "
        "addresses which can be found in the \"address list\" command.",
    .formatter = "table",
    .parameters = kGetParameters,
    .root = Declare::Root::List,
    .structure = &kSettingsStruct,
};

NETWORK_COMMAND(IpInterfaceIpv6Get, kIpInterfaceIpv6GetShape) {
    try {
        const std::string& name = input->GetParameter(kInterfaceNameParameter);
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        KelmCtl::Network::KelmNicInfoImpl nics;
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
            const IpConfig config = nic->GetIpConfig();
            auto row = GetOutputStructure();
            row->SetField(kName, nic->GetInterfaceName());
            row->SetField(kIpv6Enabled, config.GetUseIpv6());
            row->SetField(kDhcpv6Enabled, config.GetUseIpv6Dhcp());
            row->SetField(kRouterAdvEnabled, config.GetUseIpv6RouterAdvertised());
            row->SetField(kGateway, config.GetIpv6Gateway().GetStringAddress());
            const bool learnt = config.GetUseIpv6Dhcp() || config.GetUseIpv6RouterAdvertised();
            row->SetField(kDhcpDns, learnt && nic->GetConfiguredIpConfig().GetIpv6DhcpDns());
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(std::string("Error getting IPv6 configuration. Error was: ") +
                                e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceIpv6SetShape = {
    .description = "Configure IPv6 settings for a given Kelm network interface.",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceIpv6Set, kIpInterfaceIpv6SetShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        auto nic = FindKelmInterface(nics, name, *output);
        if (!nic) {
            return;
        }
        IpConfig config = nic->GetIpConfig();
        // The last of DHCPv6 and router advertisement that was given, if any.
        std::optional<bool> lastLearning;
        if (input->HasParameter(kEnableDhcpv6Parameter)) {
            lastLearning = input->GetParameterBool(kEnableDhcpv6Parameter);
            config.SetUseIpv6Dhcp(*lastLearning);
        }
        if (input->HasParameter(kEnableRouterAdvParameter)) {
            lastLearning = input->GetParameterBool(kEnableRouterAdvParameter);
            config.SetUseIpv6RouterAdvertised(*lastLearning);
        }
        const bool learning = config.GetUseIpv6Dhcp() || config.GetUseIpv6RouterAdvertised();
        if (input->HasParameter(kPeerDnsParameter)) {
            const bool peerDns = input->GetParameterBool(kPeerDnsParameter);
            if (peerDns && !learning) {
                output->AddErrorMessage(kPeerDnsNeedsDhcp);
                return;
            }
            config.SetIpv6DhcpDns(peerDns);
        } else if (lastLearning == false && !learning && config.GetIpv6DhcpDns()) {
            output->AddErrorMessage(kPeerDnsStaysOn);
            return;
        }
        if (input->HasParameter(kEnableIpv6Parameter)) {
            config.SetUseIpv6(input->GetParameterBool(kEnableIpv6Parameter));
        }
        if (input->HasParameter(kGatewayParameter)) {
            const std::string& gateway = input->GetParameter(kGatewayParameter);
            if (config.GetUseIpv6RouterAdvertised()) {
                output->AddErrorMessage(kGatewayWithRouterAdv);
                return;
            }
            if (!Ipv6Address::IsValidAddress(gateway)) {
                output->AddErrorMessage(kInvalidGateway);
                return;
            }
            config.SetIpv6Gateway(Ipv6Address(gateway));
        } else {
            config.SetIpv6Gateway(Ipv6Address());
        }
        nic->SetIpConfig(config);
        if (nic->IsNetDumperInterface() && config.GetUseIpv6() &&
            (nic->IsIpv6ReadyPrimary() || nic->IsIpv6ReadySecondary())) {
            RefreshNetDumper();
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage("Error changing IPv6 configuration for the interface " + name +
                                ". Error was : " + e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceIpv6AddressListShape = {
    .description =
        "This command will list all of the IPv6 addresses currently assigned to the "
        "system",
    .formatter = "table",
    .parameters = kAddressListParameters,
    .root = Declare::Root::List,
    .structure = &kAddressStruct,
};

NETWORK_COMMAND(IpInterfaceIpv6AddressList, kIpInterfaceIpv6AddressListShape) {
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        const std::string& name = input->GetParameter(kInterfaceNameParameter);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const auto type = ReadInterfaceType(*input, *output, {}, false);
        if (!type) {
            return;
        }
        auto interfaces = ChooseInterfaces(nics, name, {}, *type, *output);
        if (!interfaces) {
            return;
        }
        for (const auto& nic : *interfaces) {
            if (!nic) {
                continue;
            }
            const IpConfig config = nic->GetIpConfig();
            for (const Ipv6Network& network : config.GetIpv6Network()) {
                auto row = GetOutputStructure();
                row->SetField(kInterface, nic->GetInterfaceName());
                row->SetField(kAddress, network.GetAddress().GetStringAddress());
                row->SetField(kNetmask, static_cast<long>(network.GetNetmask()));
                row->SetField(kType, WordOf(network.GetIpv6AddressType(), kTypeWords, kOtherType));
                row->SetField(kStatus,
                              WordOf(network.GetIpv6AddressStatus(), kStatusWords, kOtherStatus));
                list->Add(row);
            }
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(std::string("Unable to list IPv6 Addresses. Error was: ") +
                                e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceIpv6AddressAddShape = {
    .description = "Add a static IPv6 address to a given Kelm network interface.",
    .parameters = kAddressAddParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceIpv6AddressAdd, kIpInterfaceIpv6AddressAddShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    try {
        IpConfig config;
        auto nic = ChangeAddresses(
            *input, *output, config,
            [](IpConfig& held, const Ipv6Network& network) { held.AddIpv6Network(network); });
        if (!nic) {
            return;
        }
        if (nic->IsNetDumperInterface() && config.GetUseIpv6()) {
            RefreshNetDumper();
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage("Error adding IPv6 address for the interface " + name +
                                ". Error was: " + e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceIpv6AddressRemoveShape = {
    .description = "Remove an IPv6 address from a given Kelm network interface.",
    .parameters = kAddressRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceIpv6AddressRemove, kIpInterfaceIpv6AddressRemoveShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    try {
        IpConfig config;
        auto nic = ChangeAddresses(
            *input, *output, config,
            [](IpConfig& held, const Ipv6Network& network) { held.RemoveIpv6Network(network); });
        if (!nic) {
            return;
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage("Error removing IPv6 address for the interface " + name +
                                ". Error was: " + e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
