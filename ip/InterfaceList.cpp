// `network ip interface list` and `network ip interface set`: every Kelm interface with its
// attachment, limits and state; enabling one and changing its MTU.
#include "frame/Declaration.h"
#include "hostctl/DVSwitch.h"
#include "hostctl/HostCtlException.h"
#include "ip/InterfaceSelection.h"
#include "kelmctl/KelmNicInfoImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using Declare::Type;
using HostCtl::Network::ConnectionPoint;

constexpr char kName[] = "Name";
constexpr char kMacAddress[] = "MAC Address";
constexpr char kPortset[] = "Portset";
constexpr char kPortgroup[] = "Portgroup";
constexpr char kNetstackInstance[] = "Netstack Instance";
constexpr char kOdsName[] = "ODS Name";
constexpr char kOdsUuid[] = "ODS UUID";
constexpr char kOdsPort[] = "ODS Port";
constexpr char kOdsConnection[] = "ODS Connection";
constexpr char kOpaqueNetworkId[] = "Opaque Network ID";
constexpr char kOpaqueNetworkType[] = "Opaque Network Type";
constexpr char kExternalId[] = "External ID";
constexpr char kMtu[] = "MTU";
constexpr char kTsoMss[] = "TSO MSS";
constexpr char kRxQueueSize[] = "RXDispQueue Size";
constexpr char kEnabled[] = "Enabled";
constexpr char kPortId[] = "Port ID";

constexpr char kNotApplicable[] = "N/A";
constexpr long kNoConnection = -1;

constexpr char kNoOds[] = "Unable to access the associated ODS";
constexpr char kUnknownConnectionPoint[] =
    "Unknown ConnectionPoint type found in list of Kelm network interfaces.";
constexpr char kNoInterface[] = "Unable to find an interface with name ";
constexpr char kNegativeMtu[] = "MTU size should be a positive value";

constexpr char kEnabledParameter[] = "enabled";
constexpr char kMtuParameter[] = "mtu";

constexpr Field kFields[] = {
    {kName, FieldType::String, 1},
    {kMacAddress, FieldType::String, 2},
    {kPortset, FieldType::String, 4},
    {kPortgroup, FieldType::String, 5},
    {kNetstackInstance, FieldType::String, 6},
    {kOdsName, FieldType::String, 7},
    {kOdsUuid, FieldType::String, 8},
    {kOdsPort, FieldType::String, 9},
    {kOdsConnection, FieldType::Int, 10},
    {kOpaqueNetworkId, FieldType::String, 11},
    {kOpaqueNetworkType, FieldType::String, 12},
    {kExternalId, FieldType::String, 13},
    {kMtu, FieldType::Int, 14},
    {kTsoMss, FieldType::Int, 15},
    {kRxQueueSize, FieldType::Int, 16},
    {kEnabled, FieldType::Bool, 3},
    {kPortId, FieldType::Int, 17},
};
constexpr Declare::StructShape kNetworkInterface = {"NetworkInterface", kFields};

constexpr Declare::OutputParameter kListOutput[] = {
    {"header:NetworkInterface", "%Name%"},
};

constexpr Declare::Parameter kListParameters[] = {
    {kNetstackParameter, "N", Type::String, false,
     "The network stack instance; if unspecified, consider all netstack instances"},
    {kInterfaceTypeParameter, "t", Type::String, false,
     "List Kelm network interfaces with given type(e.g. system)."},
};

constexpr Declare::Parameter kSetParameters[] = {
    {kInterfaceNameParameter, "i", Type::String, true,
     "The name of the interface to apply the configurations."},
    {kEnabledParameter, "e", Type::Bool, false,
     "Set to true to enable the interface, set to false to disable it."},
    {kMtuParameter, "m", Type::Int, false, "The MTU size of the IP interface. "},
};

// Fills the attachment columns of a row from the interface's connection point.
void SetAttachment(const HostCtl::Network::KelmNic& nic, MetaStruct& row, Output& output) {
    auto point = nic.GetConnectionPoint();
    if (!point) {
        for (const char* field : {kPortset, kPortgroup, kNetstackInstance, kOdsName, kOdsUuid,
                                  kOdsPort, kOpaqueNetworkId, kOpaqueNetworkType, kExternalId}) {
            row.SetField(field, kNotApplicable);
        }
        row.SetField(kOdsConnection, kNoConnection);
        return;
    }
    const std::string portset = point->GetPortsetName();
    row.SetField(kPortset, portset.empty() ? std::string(kNotApplicable) : portset);
    const int type = point->GetType();
    if (type < ConnectionPoint::kPortGroup || type > ConnectionPoint::kOpaqueNetwork) {
        output.AddErrorMessage(kUnknownConnectionPoint);
        return;
    }
    row.SetField(kPortgroup,
                 type == ConnectionPoint::kPortGroup ? point->GetPortGroupName() : kNotApplicable);
    row.SetField(kNetstackInstance, nic.GetNetstackInstanceKey());
    if (type == ConnectionPoint::kDVPort) {
        const HostCtl::Network::DVPortParam param = point->GetDVPortParam();
        row.SetField(kOdsName, kNotApplicable);
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        if (auto dvs = switches.GetDVSwitchByName(point->GetPortsetName())) {
            row.SetField(kOdsName, dvs->GetDvsName());
        } else {
            output.AddErrorMessage(kNoOds);
        }
        row.SetField(kOdsUuid, param.dvsId);
        row.SetField(kOdsPort, param.dvPortId);
        row.SetField(kOdsConnection, static_cast<long>(param.connectionId));
    } else {
        row.SetField(kOdsName, kNotApplicable);
        row.SetField(kOdsUuid, kNotApplicable);
        row.SetField(kOdsPort, kNotApplicable);
        row.SetField(kOdsConnection, kNoConnection);
    }
    if (type == ConnectionPoint::kOpaqueNetwork) {
        const HostCtl::Network::OpaqueNetworkParam& opaque = point->GetOpaqueNetworkParam();
        row.SetField(kOpaqueNetworkId, opaque.opaqueNetworkId);
        row.SetField(kOpaqueNetworkType, opaque.opaqueNetworkType);
        row.SetField(kExternalId, opaque.externalId);
    } else {
        row.SetField(kOpaqueNetworkId, kNotApplicable);
        row.SetField(kOpaqueNetworkType, kNotApplicable);
        row.SetField(kExternalId, kNotApplicable);
    }
}

}  // namespace

constexpr Declare::CommandShape kIpInterfaceListShape = {
    .description =
        "This command will list the Kelm network interfaces currently known to the system.",
    .formatter = "simple",
    .outputParameters = kListOutput,
    .parameters = kListParameters,
    .root = Declare::Root::List,
    .structure = &kNetworkInterface,
};

NETWORK_COMMAND(IpInterfaceList, kIpInterfaceListShape) {
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const std::string& netstack = input->GetParameter(kNetstackParameter);
        const auto type = ReadInterfaceType(*input, *output, netstack);
        if (!type) {
            return;
        }
        auto interfaces = netstack.empty() ? nics.GetKelmNics(*type)
                                           : nics.GetKelmNicsByInstanceKey(netstack, *type);
        list->Reserve(interfaces.size());
        for (const auto& nic : interfaces) {
            if (!nic) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kName, nic->GetInterfaceName());
            row->SetField(kMacAddress, nic->GetMacAddress().GetStringAddress());
            SetAttachment(*nic, *row, *output);
            row->SetField(kMtu, static_cast<long>(nic->GetMtu()));
            row->SetField(kTsoMss, static_cast<long>(nic->GetTsoMss()));
            row->SetField(kRxQueueSize, static_cast<long>(nic->GetNumRxQueue()));
            row->SetField(kEnabled, nic->IsEnabled());
            if (auto port = nic->GetPort()) {
                row->SetField(kPortId, static_cast<long>(port->GetId()));
            }
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

constexpr Declare::CommandShape kIpInterfaceSetShape = {
    .description = "This command sets the enabled status and MTU size of a given IP interface ",
    .parameters = kSetParameters,
    .root = Declare::Root::Bool,
};

NETWORK_COMMAND(IpInterfaceSet, kIpInterfaceSetShape) {
    const std::string& name = input->GetParameter(kInterfaceNameParameter);
    try {
        KelmCtl::Network::KelmNicInfoImpl nics;
        auto nic = WalkToInterface(nics, name);
        if (!nic) {
            output->AddErrorMessage(kNoInterface + name);
            return;
        }
        if (input->HasParameter(kEnabledParameter)) {
            if (input->GetParameterBool(kEnabledParameter)) {
                nic->Enable();
            } else {
                nic->Disable();
            }
        }
        if (input->HasParameter(kMtuParameter)) {
            const long mtu = input->GetParameterInt(kMtuParameter);
            if (mtu < 0) {
                output->AddErrorMessage(kNegativeMtu);
                return;
            }
            nic->SetMtu(static_cast<unsigned>(mtu));
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
