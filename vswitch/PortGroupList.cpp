// `network vswitch standard portgroup list`: every port group with its switch, clients and
// VLAN.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kName[] = "Name";
constexpr char kVirtualSwitch[] = "Virtual Switch";
constexpr char kActiveClients[] = "Active Clients";
constexpr char kVlanId[] = "VLAN ID";

constexpr Field kFields[] = {
    {kName, FieldType::String, 1},
    {kVirtualSwitch, FieldType::String, 2},
    {kActiveClients, FieldType::Int, 3},
    {kVlanId, FieldType::Int, 4},
};
constexpr Declare::StructShape kPortGroup = {"PortGroup", kFields};

constexpr Declare::Parameter kParameters[] = {
    {kTypeParameter, "t", Declare::Type::String, false,
     "List port groups with given type(e.g. system)."},
};

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchPortGroupListShape = {
    .description = "List all of the port groups currently on the system.",
    .formatter = "table",
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kPortGroup,
};

NETWORK_COMMAND(VirtualSwitchPortGroupList, kVirtualSwitchPortGroupListShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const auto type = ReadPortsetType(*input, *output);
        if (!type) {
            return;
        }
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        for (const auto& portGroup : networkInfo.GetAllPortGroups(*type)) {
            if (!portGroup) {
                continue;
            }
            auto row = MetaStruct::New(kPortGroup.name);
            row->SetField(kName, portGroup->GetName());
            row->SetField(kVirtualSwitch, portGroup->GetPortsetName());
            row->SetField(kActiveClients, static_cast<long>(portGroup->GetActiveClients()));
            row->SetField(kVlanId, static_cast<long>(portGroup->GetVlanId()));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
