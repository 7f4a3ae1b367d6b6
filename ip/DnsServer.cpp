// `network ip dns server list|add|remove`: the name servers of a netstack instance, in the
// order of use. On the default instance a server can't be added while an interface learns its
// DNS servers by DHCP.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/IpAddress.h"
#include "ip/NetstackParameter.h"
#include "kelmctl/DnsConfigImpl.h"
#include "kelmctl/KelmNicInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::IpAddress;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;

constexpr char kServerParameter[] = "server";
constexpr char kAllParameter[] = "all";
constexpr char kNotAddress[] = "The specified address '";
constexpr char kNotAddressEnd[] = "' is not recognised as a valid IP address";
constexpr char kIpv4DhcpDns[] = "Can't add DNS server when IPv4 DHCP DNS is enabled";
constexpr char kIpv6DhcpDns[] = "Can't add DNS server when IPv6 DHCP DNS is enabled";
constexpr char kExactlyOne[] = "You must specify exactly one of: --all, --server";

constexpr char kDnsServers[] = "DNS Servers";

constexpr Declare::Parameter kListParameters[] = {
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kAddParameters[] = {
    {kServerParameter, "s", Declare::Type::String, true,
     "The IP address (v4 or v6) of the DNS server to add to the DNS server list."},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kAllParameter, "a", Declare::Type::Flag, false, " "},
    {kServerParameter, "s", Declare::Type::String, false, " "},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Field kFields[] = {
    {kDnsServers, FieldType::StringList},
};
constexpr Declare::StructShape kNameServerList = {"NameServerList", kFields};

std::string NetstackKey(const Input& input) {
    const std::string& netstack = input.GetParameter(kNetstackParameter);
    return netstack.empty() ? kDefaultNetstack : netstack;
}

// The address of the text, IPv4 first; null, with the message given, when it is neither.
std::unique_ptr<IpAddress> ReadServer(const std::string& text, Output& output) {
    if (Ipv4Address::IsValidAddress(text)) {
        return std::make_unique<Ipv4Address>(text);
    }
    if (Ipv6Address::IsValidAddress(text)) {
        return std::make_unique<Ipv6Address>(text);
    }
    output.AddErrorMessage(kNotAddress + text + kNotAddressEnd);
    return nullptr;
}

// The message that forbids adding a server while an interface of the instance takes its DNS
// servers from DHCP; null when none does.
const char* DhcpDnsConflict(const std::string& key) {
    KelmCtl::Network::KelmNicInfoImpl interfaces;
    for (const auto& kelmNic :
         interfaces.GetKelmNicsByInstanceKey(key, HostCtl::Network::PortsetGetNormal)) {
        if (!kelmNic) {
            continue;
        }
        const auto inForce = kelmNic->GetIpConfig();
        const auto configured = kelmNic->GetConfiguredIpConfig();
        if (inForce.GetUseDhcp() && configured.GetDhcpDns()) {
            return kIpv4DhcpDns;
        }
        if ((inForce.GetUseIpv6Dhcp() || inForce.GetUseIpv6RouterAdvertised()) &&
            configured.GetIpv6DhcpDns()) {
            return kIpv6DhcpDns;
        }
    }
    return nullptr;
}

}  // namespace

constexpr Declare::CommandShape kIpDNSServerListShape = {
    .description =
        "Print a list of the DNS server currently configured on the system in the "
        "order in which they will be used.",
    .formatter = "simple",
    .parameters = kListParameters,
    .root = Declare::Root::Struct,
    .structure = &kNameServerList,
};

constexpr Declare::CommandShape kIpDNSServerAddShape = {
    .description =
        "Add a new DNS server to the end of the list of DNS servers to use for this "
        "Ostrel host.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpDNSServerRemoveShape = {
    .description = "Remove a DNS server from the list of DNS servers to use for this Ostrel host.",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpDNSServerList, kIpDNSServerListShape) {
    KelmCtl::Network::DnsConfigImpl dns(NetstackKey(*input));
    try {
        auto servers = MetaList::New(CppTools::MetaObj::MetaTypeString);
        auto result = GetOutputStructure();
        for (const std::string& server : dns.GetNameServers()) {
            servers->Add(server);
        }
        result->SetField(kDnsServers, servers);
        output->SetRootObject(result);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpDNSServerAdd, kIpDNSServerAddShape) {
    const std::string key = NetstackKey(*input);
    if (key == kDefaultNetstack) {
        if (const char* conflict = DhcpDnsConflict(key)) {
            output->AddErrorMessage(conflict);
            return;
        }
    }
    KelmCtl::Network::DnsConfigImpl dns(key);
    try {
        const auto server = ReadServer(input->GetParameter(kServerParameter), *output);
        if (!server) {
            return;
        }
        dns.AddUserNameServer(*server);
        dns.SaveConfig();
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
    output->SetRootObject(MetaBool::New(true));
}

NETWORK_COMMAND(IpDNSServerRemove, kIpDNSServerRemoveShape) {
    KelmCtl::Network::DnsConfigImpl dns(NetstackKey(*input));
    const bool all = input->IsFlagSet(kAllParameter);
    if (!all && !input->HasParameter(kServerParameter)) {
        output->AddErrorMessage(kExactlyOne);
        return;
    }
    try {
        if (all) {
            dns.RemoveNameServers();
        } else {
            const auto server = ReadServer(input->GetParameter(kServerParameter), *output);
            if (!server) {
                return;
            }
            dns.RemoveNameServer(*server);
        }
        dns.SaveConfig();
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
    output->SetRootObject(MetaBool::New(true));
}

}  // namespace ZanvexCli::NetworkNamespace
