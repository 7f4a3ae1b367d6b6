// `network nic attachment add|remove|list`: branch uplinks attached to a trunk NIC with a VLAN
// ID each.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "hostctl/PortGroup.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PnicImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kTrunkParameter[] = "trunk";
constexpr char kBranchParameter[] = "branch";
constexpr char kVlanIdParameter[] = "vlan-id";

constexpr Declare::Parameter kAddParameters[] = {
    {kTrunkParameter, "t", Declare::Type::String, true,
     "The name of the NIC to be configured as trunk uplink."},
    {kBranchParameter, "b", Declare::Type::String, true,
     "The name of the NIC to be attached as branch uplink."},
    {.name = kVlanIdParameter,
     .shortName = "v",
     .type = Declare::Type::Int,
     .required = true,
     .description = "The vlan ID for the branch uplink. Valid values: %ENUM%",
     .range = true,
     .low = HostCtl::Network::PortGroup::MIN_VLAN_ID + 1,
     .high = HostCtl::Network::PortGroup::MAX_VLAN_ID - 1},
};
constexpr Declare::Parameter kRemoveParameters[] = {
    {kTrunkParameter, "t", Declare::Type::String, true, "The name of the trunk uplink."},
    {kBranchParameter, "b", Declare::Type::String, true, "The name of the branch uplink."},
};
constexpr Declare::Parameter kListParameters[] = {
    {kTrunkParameter, "t", Declare::Type::String, false,
     "Show information only for the specified NIC."},
};

constexpr char kTrunk[] = "Trunk";
constexpr char kBranch[] = "Branch";
constexpr char kBranchMac[] = "Branch MAC";
constexpr char kVlanId[] = "VLAN ID";
constexpr Field kAttachmentFields[] = {
    {kTrunk, FieldType::String, 1},
    {kBranch, FieldType::String, 2},
    {kBranchMac, FieldType::String, 3},
    {kVlanId, FieldType::Int, 4},
};
constexpr Declare::StructShape kAttachment = {"AttachmentInfo", kAttachmentFields};

constexpr char kSameUplink[] = "Trunk uplink and branch uplink need to be different.";
constexpr char kInvalidTrunk[] = "Invalid trunk PNIC name ";
constexpr char kInvalidBranch[] = "Invalid branch PNIC name ";
constexpr char kInvalidPnic[] = "Invalid PNIC name ";
constexpr char kAttachFailed[] = "Failed to attach uplink ";
constexpr char kDetachFailed[] = "Failed to detach uplink ";
constexpr char kListFailed[] = "Unable to list uplink's attachment info: ";

}  // namespace

constexpr Declare::CommandShape kNicAttachmentAddShape = {
    .description = "Attach one uplink as a branch to a trunk uplink with specified VLAN ID.",
    .parameters = kAddParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicAttachmentRemoveShape = {
    .description = "Detach a branch uplink from its trunk.",
    .parameters = kRemoveParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicAttachmentListShape = {
    .description = "Show uplink attachment information.",
    .formatter = "table",
    .parameters = kListParameters,
    .root = Declare::Root::List,
    .structure = &kAttachment,
};

NETWORK_COMMAND(NicAttachmentAdd, kNicAttachmentAddShape) {
    const std::string& trunk = input->GetParameter(kTrunkParameter);
    const std::string& branch = input->GetParameter(kBranchParameter);
    const auto vlanId = static_cast<std::uint16_t>(input->GetParameterInt(kVlanIdParameter));
    if (trunk == branch) {
        output->AddErrorMessage(kSameUplink);
        return;
    }
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        auto trunkPnic = networkInfo.GetPnicByName(trunk, false);
        if (!trunkPnic) {
            output->AddErrorMessage(kInvalidTrunk + trunk);
            return;
        }
        if (!networkInfo.GetPnicByName(branch, false)) {
            output->AddErrorMessage(kInvalidBranch + branch);
            return;
        }
        trunkPnic->AddAttachment(branch, vlanId);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kAttachFailed + branch + " to " + trunk + ": " + e.what());
    }
}

// The branch isn't looked up: the host judges it.
NETWORK_COMMAND(NicAttachmentRemove, kNicAttachmentRemoveShape) {
    const std::string& trunk = input->GetParameter(kTrunkParameter);
    const std::string& branch = input->GetParameter(kBranchParameter);
    try {
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        auto trunkPnic = networkInfo.GetPnicByName(trunk, false);
        if (!trunkPnic) {
            output->AddErrorMessage(kInvalidPnic + trunk);
            return;
        }
        trunkPnic->RemoveAttachment(branch);
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kDetachFailed + branch + " from " + trunk + ": " + e.what());
    }
}

NETWORK_COMMAND(NicAttachmentList, kNicAttachmentListShape) {
    auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
    try {
        std::vector<std::unique_ptr<HostCtl::Network::Pnic>> pnics;
        if (input->HasParameter(kTrunkParameter)) {
            const std::string& trunk = input->GetParameter(kTrunkParameter);
            auto pnic = networkInfo->GetPnicByName(trunk, false);
            if (!pnic) {
                output->AddErrorMessage(kInvalidPnic + trunk);
                return;
            }
            pnics.push_back(std::move(pnic));
        } else {
            pnics = networkInfo->GetPnics(HostCtl::Network::PnicGetAll);
        }
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        for (const auto& pnic : pnics) {
            if (!pnic) {
                continue;
            }
            const auto attachments = pnic->GetAttachments();
            list->Reserve(list->GetCount() + attachments.size());
            for (const auto& attachment : attachments) {
                auto row = GetOutputStructure();
                KelmCtl::Network::PnicImpl branch(attachment.branch);
                row->SetField(kTrunk, pnic->GetName());
                row->SetField(kBranch, attachment.branch);
                row->SetField(kBranchMac, branch.GetMacAddress().GetStringAddress());
                row->SetField(kVlanId, static_cast<long>(attachment.vlanId));
                list->Add(row);
            }
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kListFailed + std::string(e.what()));
    }
}

}  // namespace ZanvexCli::NetworkNamespace
