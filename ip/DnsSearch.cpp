// `network ip dns search list|add|remove`: the search domains of a netstack instance, in the
// order in which they are tried.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "ip/NetstackParameter.h"
#include "kelmctl/DnsConfigImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kDomainParameter[] = "domain";
constexpr char kSeparator[] = " ";

constexpr char kSearchDomains[] = "DNS Search Domains";

constexpr Declare::Parameter kListParameters[] = {
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kAddParameters[] = {
    {kDomainParameter, "d", Declare::Type::String, true,
     "The string name of a domain to add to the list of search domains."},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kDomainParameter, "d", Declare::Type::String, true,
     "The string name of a domain to remove from the list of search domains."},
    {kNetstackParameter, "N", Declare::Type::String, false, kNetstackDescription},
};

constexpr Field kFields[] = {
    {kSearchDomains, FieldType::StringList},
};
constexpr Declare::StructShape kSearchList = {"DNSSearchList", kFields};

std::string NetstackKey(const Input& input) {
    const std::string& netstack = input.GetParameter(kNetstackParameter);
    return netstack.empty() ? kDefaultNetstack : netstack;
}

}  // namespace

constexpr Declare::CommandShape kIpDNSSearchListShape = {
    .description =
        "List the search domains currently configured on the Ostrel host in the order "
        "in which they will be used when searching.",
    .formatter = "simple",
    .parameters = kListParameters,
    .root = Declare::Root::Struct,
    .structure = &kSearchList,
};

constexpr Declare::CommandShape kIpDNSSearchAddShape = {
    .description =
        "Add a search domain to the list of domains to be searched when trying to "
        "resolve an host name on the Ostrel host.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpDNSSearchRemoveShape = {
    .description =
        "Remove a search domain from the list of domains to be searched when trying to "
        "resolve an host name on the Ostrel host.",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpDNSSearchList, kIpDNSSearchListShape) {
    KelmCtl::Network::DnsConfigImpl dns(NetstackKey(*input));
    try {
        auto domains = MetaList::New(CppTools::MetaObj::MetaTypeString);
        auto result = GetOutputStructure();
        std::vector<std::string> tokens;
        HostCtl::Misc::StringTokenize(dns.GetSearchDomainsString(), tokens, kSeparator);
        for (const std::string& domain : tokens) {
            domains->Add(domain);
        }
        result->SetField(kSearchDomains, domains);
        output->SetRootObject(result);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpDNSSearchAdd, kIpDNSSearchAddShape) {
    KelmCtl::Network::DnsConfigImpl dns(NetstackKey(*input));
    const std::string& domain = input->GetParameter(kDomainParameter);
    try {
        dns.AddUserSearchDomain(domain);
        dns.SaveConfig();
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
    output->SetRootObject(MetaBool::New(true));
}

NETWORK_COMMAND(IpDNSSearchRemove, kIpDNSSearchRemoveShape) {
    KelmCtl::Network::DnsConfigImpl dns(NetstackKey(*input));
    const std::string& domain = input->GetParameter(kDomainParameter);
    try {
        dns.RemoveSearchDomain(domain);
        dns.SaveConfig();
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
    output->SetRootObject(MetaBool::New(true));
}

}  // namespace ZanvexCli::NetworkNamespace
