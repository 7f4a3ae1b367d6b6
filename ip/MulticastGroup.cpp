// `network multicast group list`: the multicast memberships of every ordinary Kelm interface.
#include "frame/Declaration.h"
#include "hostctl/Host.h"
#include "hostctl/HostCtlException.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kInterface[] = "Interface";
constexpr char kRefcount[] = "Refcount";
constexpr char kGroup[] = "Group";
constexpr char kLinkLayer[] = "Link Layer";

constexpr Field kFields[] = {
    {kInterface, FieldType::String, 1},
    {kRefcount, FieldType::Int, 2},
    {kGroup, FieldType::String, 3},
    {kLinkLayer, FieldType::String, 4},
};
constexpr Declare::StructShape kNic = {"Nic", kFields, "Interface"};

}  // namespace

constexpr Declare::CommandShape kMulticastGroupListShape = {
    .description = "List all the multicast group members.",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kNic,
};

NETWORK_COMMAND(MulticastGroupList, kMulticastGroupListShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        HostCtl::HostFactory::GetHost();
        const auto interfaces = HostCtl::Host::GetNetworkInfo()->GetKelmNicInfo();
        for (const auto& kelmNic : interfaces->GetKelmNics(HostCtl::Network::PortsetGetNormal)) {
            if (!kelmNic) {
                continue;
            }
            std::vector<HostCtl::Network::KelmNic::MulticastGroup> groups;
            kelmNic->GetMulticastGroups(groups);
            for (const auto& group : groups) {
                auto row = GetOutputStructure();
                row->SetField(kInterface, group.interfaceName);
                row->SetField(kRefcount, static_cast<long>(group.refCount));
                row->SetField(kGroup, group.group);
                row->SetField(kLinkLayer, group.linkLayerAddress);
                list->Add(row);
            }
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
