// `network ip ipsec sp add|remove|list`: security policies, each protecting a flow between two
// networks with an action, and for the action "ipsec" a mode and a security association.
#include "frame/Declaration.h"
#include "frame/SharedConstants.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/Misc.h"
#include "ip/IpsecLifetime.h"
#include "kelmctl/IpSecConfigImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::IpSecSpdParam;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;
using KelmCtl::Network::IpSecConfigImpl;

constexpr char kNameParameter[] = "sp-name";
constexpr char kSaNameParameter[] = "sa-name";
constexpr char kSourceParameter[] = "sp-source";
constexpr char kDestinationParameter[] = "sp-destination";
constexpr char kModeParameter[] = "sp-mode";
constexpr char kSourcePortParameter[] = "source-port";
constexpr char kDestinationPortParameter[] = "destination-port";
constexpr char kActionParameter[] = "action";
constexpr char kProtocolParameter[] = "upper-layer-protocol";
constexpr char kDirectionParameter[] = "flow-direction";
constexpr char kRemoveAllParameter[] = "remove-all";

constexpr char kAnyNetwork[] = "any";
constexpr char kIpsecAction[] = "ipsec";
constexpr char kUnknownSa[] = "UNKNOWN";
constexpr char kDeadSaMark[] = "*";
constexpr char kNetworkFormat[] = "%s/%u";
constexpr char kWhichRemoval[] = "You should specify exactly one of : --remove-all, --sa-name";
constexpr char kDeadSaNote[] =
    "*Some SPs with unique but deleted SAs were found. Please remove these SPs as they cannot "
    "be used anymore.";

constexpr char kName[] = "Name";
constexpr char kSourceAddress[] = "Source Address";
constexpr char kSourcePort[] = "Source Port";
constexpr char kDestinationAddress[] = "Destination Address";
constexpr char kDestinationPort[] = "Destination Port";
constexpr char kProtocol[] = "Protocol";
constexpr char kFlow[] = "Flow";
constexpr char kAction[] = "Action";
constexpr char kMode[] = "Mode";
constexpr char kSaName[] = "SA Name";

constexpr Declare::Choice kModes[] = {{"transport"}, {"tunnel"}};
constexpr Declare::Choice kActions[] = {{"none"}, {"discard"}, {"ipsec"}};
constexpr Declare::Choice kProtocols[] = {{"any"}, {"tcp"}, {"udp"}, {"icmp6"}};
constexpr Declare::Choice kDirections[] = {{"in"}, {"out"}};

constexpr Declare::Parameter kAddParameters[] = {
    {kNameParameter, "n", Declare::Type::String, true, "Name for the Security Policy to be added."},
    {kSaNameParameter, "a", Declare::Type::String, false,
     "Name for the Security Association. Not being Specified lets kelm automatically choose an "
     "Security Association. If no applicable Security Association exists, then kelm may request "
     "one using IKE."},
    {kSourceParameter, "s", Declare::Type::String, true,
     "Ipv6 address and prefix length of Security Policy source. Can be specified as 'any' or a "
     "correct IPv6 network address."},
    {kDestinationParameter, "d", Declare::Type::String, true,
     "Ipv6 address and prefix length of Security Policy destination. Can be specified as 'any' "
     "or a correct Ipv6 network address."},
    {kModeParameter,
     "m",
     Declare::Type::String,
     false,
     "Security Policy mode. Should be one in set %ENUM%.",
     false,
     0,
     0,
     {},
     kModes},
    {kSourcePortParameter, "p", Declare::Type::Int, true,
     "Source Port for Security Policy. '0' stands for 'any'"},
    {kDestinationPortParameter, "P", Declare::Type::Int, true,
     "Destination Port for Security Policy. '0' stands for 'any'"},
    {kActionParameter,
     "A",
     Declare::Type::String,
     false,
     "Action for Security Policy. Should be one in set %ENUM%.",
     false,
     0,
     0,
     {},
     kActions},
    {kProtocolParameter,
     "u",
     Declare::Type::String,
     false,
     "Upper layer protocol for Security Policy, Should be one in set %ENUM%.",
     false,
     0,
     0,
     {},
     kProtocols},
    {kDirectionParameter,
     "w",
     Declare::Type::String,
     false,
     "Flow direction for Security Policy. Should be one in set %ENUM%.",
     false,
     0,
     0,
     {},
     kDirections},
};

constexpr Declare::Parameter kRemoveParameters[] = {
    {kNameParameter, "n", Declare::Type::String, false,
     "Name for the Security Policy to be removed."},
    {kRemoveAllParameter, "a", Declare::Type::Flag, false, "Set to remove all Security Policys"},
};

constexpr Field kFields[] = {
    {kName, FieldType::String, 1},         {kSourceAddress, FieldType::String, 2},
    {kSourcePort, FieldType::Int, 3},      {kDestinationAddress, FieldType::String, 4},
    {kDestinationPort, FieldType::Int, 5}, {kProtocol, FieldType::String, 6},
    {kFlow, FieldType::String, 7},         {kAction, FieldType::String, 8},
    {kMode, FieldType::String, 9},         {kSaName, FieldType::String, 10},
};
constexpr Declare::StructShape kPolicy = {"SecurityPolicy", kFields};

// "any" stands for the network of every address, a default one.
Ipv6Network ReadNetwork(const Input& input, const char* parameter) {
    const std::string& text = input.GetParameter(parameter);
    return text == kAnyNetwork ? Ipv6Network() : Ipv6Network(text);
}

}  // namespace

constexpr Declare::CommandShape kIpIpsecSPAddShape = {
    .description = "Add a Security Policy.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpIpsecSPRemoveShape = {
    .description = "Operation to remove Security Policy",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kIpIpsecSPListShape = {
    .description = "List configured Security Policys",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kPolicy,
};

NETWORK_COMMAND(IpIpsecSPAdd, kIpIpsecSPAddShape) {
    try {
        IpSecConfigImpl config;
        IpSecSpdParam policy;
        policy.source = Ipv6Address(kUnspecifiedIpv6Address);
        policy.destination = Ipv6Address(kUnspecifiedIpv6Address);
        const std::string saName =
            input->HasParameter(kSaNameParameter) ? input->GetParameter(kSaNameParameter) : "";
        policy.sourcePort = static_cast<std::int32_t>(input->GetParameterInt(kSourcePortParameter));
        policy.destinationPort =
            static_cast<std::int32_t>(input->GetParameterInt(kDestinationPortParameter));
        const Ipv6Network source = ReadNetwork(*input, kSourceParameter);
        policy.source = source.GetAddress();
        policy.sourcePrefixLength = source.GetNetmask();
        const Ipv6Network destination = ReadNetwork(*input, kDestinationParameter);
        policy.destination = destination.GetAddress();
        policy.destinationPrefixLength = destination.GetNetmask();
        const std::string& mode = input->GetParameter(kModeParameter);
        const std::string& protocol = input->GetParameter(kProtocolParameter);
        const std::string& direction = input->GetParameter(kDirectionParameter);
        const std::string& action = input->GetParameter(kActionParameter);
        policy.upperLayerProtocol = IpSecConfigImpl::StringToIpSecULProtoType(protocol);
        policy.direction = IpSecConfigImpl::StringToIpSecDirection(direction);
        policy.action = IpSecConfigImpl::StringToIpSecAction(action);
        if (action == kIpsecAction) {
            policy.mode = IpSecConfigImpl::StringToIpSecMode(mode);
            policy.saName = saName;
        }
        policy.name = input->GetParameter(kNameParameter);
        config.AddSPDConfig(policy);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpIpsecSPRemove, kIpIpsecSPRemoveShape) {
    try {
        IpSecConfigImpl config;
        const bool named = input->HasParameter(kNameParameter);
        const bool all = input->IsFlagSet(kRemoveAllParameter);
        if (named && !all) {
            config.RemoveSPDConfig(input->GetParameter(kNameParameter));
        } else if (!named && all) {
            config.FlushSPDConfig();
        } else {
            output->AddErrorMessage(kWhichRemoval);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(IpIpsecSPList, kIpIpsecSPListShape) {
    try {
        IpSecConfigImpl config;
        std::vector<IpSecSpdParam> policies;
        config.GetSPDConfigList(policies);
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        bool deadSa = false;
        for (const auto& policy : policies) {
            std::string saName = policy.saName;
            if (saName == kUnknownSa) {
                saName += kDeadSaMark;
                deadSa = true;
            }
            auto row = GetOutputStructure();
            row->SetField(kName, policy.name);
            row->SetField(
                kSourceAddress,
                HostCtl::Misc::StrPrintf(kNetworkFormat, policy.source.GetStringAddress().c_str(),
                                         policy.sourcePrefixLength));
            row->SetField(kSourcePort, static_cast<long>(policy.sourcePort));
            row->SetField(kDestinationAddress,
                          HostCtl::Misc::StrPrintf(kNetworkFormat,
                                                   policy.destination.GetStringAddress().c_str(),
                                                   policy.destinationPrefixLength));
            row->SetField(kDestinationPort, static_cast<long>(policy.destinationPort));
            row->SetField(kProtocol, IpSecConfigImpl::SP_UL_PROTO_TYPE[policy.upperLayerProtocol]);
            row->SetField(kFlow, IpSecConfigImpl::SP_DIRECTION[policy.direction]);
            row->SetField(kAction, IpSecConfigImpl::SP_ACTION[policy.action]);
            row->SetField(kMode, IpSecConfigImpl::SA_MODE[policy.mode]);
            row->SetField(kSaName, saName);
            list->Add(row);
        }
        if (deadSa) {
            output->AddErrorMessage(kDeadSaNote);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
