// `network nic queue count get|set` and `nic queue filterclass list`: how many netqueues a NIC
// has, and which filter classes they support.
#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "nic/NicQueueCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kTxCount[] = "Tx netqueue count";
constexpr char kRxCount[] = "Rx netqueue count";
constexpr Field kCountFields[] = {
    {kNicField, FieldType::String, 1},
    {kTxCount, FieldType::Int, 2},
    {kRxCount, FieldType::Int, 3},
};
constexpr Declare::StructShape kCountStruct = {"NetqueueCount", kCountFields};
constexpr Declare::Parameter kCountGetParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, false, "The name of pnic to get netqueue count"},
};

constexpr char kTxParameter[] = "tx";
constexpr char kRxParameter[] = "rx";
constexpr char kNumParameter[] = "num";
constexpr Declare::Parameter kCountSetParameters[] = {
    {kHwnicParameter, "n", Declare::Type::String, true, "Name of hwnic to set netqueue count."},
    {kTxParameter, "t", Declare::Type::Bool, false, "Tx netqueue to set count."},
    {kRxParameter, "r", Declare::Type::Bool, false, "Rx netqueue to set count."},
    {kNumParameter, "q", Declare::Type::Int, true, "Number of queues to set."},
};

constexpr const char* kFilterClassNames[] = {"MacOnly", "VlanOnly", "VlanMac",
                                             "Vxlan",   "Geneve",   "GenericEncap"};
constexpr Field kFilterClassLeadingFields[] = {{kNicField, FieldType::String, 1}};
constexpr auto kFilterClassFields =
    Declare::FieldsWithRows(kFilterClassLeadingFields, kFilterClassNames, FieldType::Bool,
                            [](const char* name) { return name; });
constexpr Declare::StructShape kFilterClassStruct = {"Settings", kFilterClassFields};

}  // namespace

constexpr Declare::CommandShape kNicQueueCountGetShape = {
    .description = "Get netqueue count on a nic",
    .formatter = "table",
    .parameters = kCountGetParameters,
    .root = Declare::Root::List,
    .structure = &kCountStruct,
};

constexpr Declare::CommandShape kNicQueueCountSetShape = {
    .description = "Set number of netqueues on a nic",
    .parameters = kCountSetParameters,
    .root = Declare::Root::Bool,
};

constexpr Declare::CommandShape kNicQueueFilterClassListShape = {
    .description =
        "List the netqueue supported filterclass of all physical NICs currently installed and "
        "loaded on the system.",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kFilterClassStruct,
};

NETWORK_COMMAND(NicQueueCountGet, kNicQueueCountGetShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        auto set = NetqueueNics(*networkInfo, *input, *output, PnicNotFound);
        if (!set) {
            return;
        }
        for (const auto& pnic : set->pnics) {
            if (!pnic) {
                continue;
            }
            HostCtl::Network::PnicNetqueueParams params;
            try {
                pnic->GetNetqueueParams(params);
            } catch (const HostCtl::Lib::HostCtlException& e) {
                if (set->named) {
                    output->AddErrorMessage(e.what());
                    return;
                }
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kNicField, pnic->GetName());
            row->SetField(kTxCount, static_cast<long>(params.txQueueCount));
            row->SetField(kRxCount, static_cast<long>(params.rxQueueCount));
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

// Only the presence of `tx` and `rx` selects a side; their values aren't read.
NETWORK_COMMAND(NicQueueCountSet, kNicQueueCountSetShape) {
    try {
        const std::string& name = input->GetParameter(kHwnicParameter);
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto pnic = networkInfo->GetPnicByName(name, false);
        if (!pnic) {
            output->AddErrorMessage(PnicNotFound(name));
            return;
        }
        HostCtl::Network::PnicNetqueueParams params;
        const auto num = static_cast<std::uint32_t>(input->GetParameterInt(kNumParameter));
        if (input->HasParameter(kTxParameter)) {
            params.txQueueCount = num;
            params.txCountChanged = 1;
        }
        if (input->HasParameter(kRxParameter)) {
            params.rxQueueCount = num;
            params.rxCountChanged = 1;
        }
        if (params.txCountChanged || params.rxCountChanged) {
            pnic->SetNetqueueParams(params);
        }
        output->SetRootObject(MetaBool::New(true));
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

NETWORK_COMMAND(NicQueueFilterClassList, kNicQueueFilterClassListShape) {
    try {
        auto networkInfo = HostCtl::Network::NetworkFactory::GetNetworkInfo();
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        HostCtl::Network::PnicNetqueueParams params;
        for (const auto& pnic : networkInfo->GetPnics(HostCtl::Network::PnicGetAll)) {
            if (!pnic) {
                continue;
            }
            try {
                pnic->GetNetqueueParams(params);
            } catch (const HostCtl::Lib::HostCtlException&) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kNicField, pnic->GetName());
            for (std::size_t i = 0; i < std::size(kFilterClassNames); ++i) {
                row->SetField(kFilterClassNames[i], params.filterClasses[i] != 0);
            }
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
