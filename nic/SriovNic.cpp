// `network sriovnic list`, `sriovnic vf list` and `sriovnic vf stats`: NICs with SR-IOV enabled
// and their virtual functions.
#include <cstdlib>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "nic/NicCommon.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kName[] = "Name";
constexpr char kPciDevice[] = "PCI Device";
constexpr char kDriver[] = "Driver";
constexpr char kLink[] = "Link";
constexpr char kSpeed[] = "Speed";
constexpr char kDuplex[] = "Duplex";
constexpr char kMacAddress[] = "MAC Address";
constexpr char kMtu[] = "MTU";
constexpr char kDescription[] = "Description";

constexpr Field kSriovNicFields[] = {
    {kName, FieldType::String, 1},        {kPciDevice, FieldType::String, 2},
    {kDriver, FieldType::String, 3},      {kLink, FieldType::String, 4},
    {kSpeed, FieldType::Int, 5},          {kDuplex, FieldType::String, 6},
    {kMacAddress, FieldType::String, 7},  {kMtu, FieldType::Int, 8},
    {kDescription, FieldType::String, 9},
};
constexpr Declare::StructShape kSriovNic = {"SriovNic", kSriovNicFields};

constexpr char kVfId[] = "VF ID";
constexpr char kActive[] = "Active";
constexpr char kHexPciAddress[] = "Hex PCI Address";
constexpr char kPciAddress[] = "PCI Address";
constexpr char kOwnerWorldId[] = "Owner World ID";

constexpr Field kVfFields[] = {
    {kVfId, FieldType::Int, 1},
    {kActive, FieldType::Bool, 2},
    {kHexPciAddress, FieldType::String, 3},
    {kPciAddress, FieldType::String},
    {kOwnerWorldId, FieldType::String, 4},
};
constexpr Declare::StructShape kVfListStruct = {"VFList", kVfFields};

constexpr char kNicNameField[] = "NIC Name";
constexpr const char* kCounterNames[] = {
    "Rx Unicast Pkt",
    "Rx Unicast Bytes",
    "Rx Multicast Pkts",
    "Rx Multicast Bytes",
    "Rx Broadcast Pkts",
    "Rx Broadcast Bytes",
    "Rx Out of Buffer drops",
    "Rx Error drops",
    "Rx LRO Pkts",
    "Rx LRO Bytes",
    "Tx Unicast Pkt",
    "Tx Unicast Bytes",
    "Tx Multicast Pkts",
    "Tx Multicast Bytes",
    "Tx Broadcast Pkts",
    "Tx Broadcast Bytes",
    "Tx Errors",
    "Tx Discards",
    "Tx TSO Pkts",
    "Tx TSO Bytes",
};
constexpr Field kVfStatsLeadingFields[] = {{kNicNameField, FieldType::String},
                                           {kVfId, FieldType::Int}};
constexpr auto kVfStatsFields = Declare::FieldsWithRows(
    kVfStatsLeadingFields, kCounterNames, FieldType::Int, [](const char* name) { return name; });
constexpr Declare::StructShape kVfStatsStruct = {"VfStats", kVfStatsFields, "VFStats"};
constexpr Declare::OutputParameter kVfStatsOutput[] = {
    {"header:VF", "Statistics for %vf% VF of %NIC Name%"},
};

constexpr char kVfIdParameter[] = "vf-id";
constexpr Declare::Parameter kVfListParameters[] = {
    {kNicNameParameter, "n", Declare::Type::String, true,
     "The name of the SRIOV NIC to configured. This must be one of the cards listed in the "
     "sriovNic list command."},
};
constexpr Declare::Parameter kVfStatsParameters[] = {
    {kNicNameParameter, "n", Declare::Type::String, true,
     "The name of the SRIOV NIC. This must be one of the cards listed in the sriovNic list "
     "command."},
    {kVfIdParameter, "v", Declare::Type::Int, true,
     "The VF ID of the virtual function whose stats are to be collected. This must be one of the "
     "VF IDs listed in the sriovnic vf list command."},
};

constexpr char kUp[] = "Up";
constexpr char kDown[] = "Down";
constexpr char kPseudo[] = "Pseudo";
constexpr char kUnknown[] = "Unknown";
constexpr char kListError[] = "Unable to list NICs.  Error was ";
constexpr char kNoSriovNic[] = "There is no SRIOV Nic with name ";
constexpr char kVfInfoError[] = "Unable to get VF Info. Error:";
constexpr char kVfStatsError[] = "Unable to get VF Stats. Error:";
constexpr char kInvalidVfId[] = "Invalid vf id:";
constexpr char kInvalidVfIdEnd[] = " provided. vf id starts from 0";

}  // namespace

constexpr Declare::CommandShape kSriovNicListShape = {
    .description =
        "This command will list the SRIOV Enabled NICs (PFs) currently installed and loaded on "
        "the system.",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kSriovNic,
};

constexpr Declare::CommandShape kVfListShape = {
    .description = "Get the generic configuration of VFs for SRIOV NIC.",
    .formatter = "table",
    .parameters = kVfListParameters,
    .root = Declare::Root::List,
    .structure = &kVfListStruct,
};

constexpr Declare::CommandShape kVfStatsShape = {
    .description = "Get statistics for given VF of a SRIOV NIC.",
    .formatter = "simple",
    .outputParameters = kVfStatsOutput,
    .parameters = kVfStatsParameters,
    .root = Declare::Root::List,
    .structure = &kVfStatsStruct,
};

NETWORK_COMMAND(SriovNicList, kSriovNicListShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        for (const auto& pnic : networkInfo.GetSriovNics()) {
            if (!pnic) {
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kName, pnic->GetName());
            std::string pciText = kPseudo;
            std::string vendor = kUnknown;
            std::string device = kUnknown;
            if (auto pciDevice = pnic->GetPciDevice()) {
                pciText = pciDevice->GetAddress();
                vendor = pciDevice->GetVendorName();
                device = pciDevice->GetDeviceName();
            }
            row->SetField(kPciDevice, std::move(pciText));
            row->SetField(kDriver, pnic->GetDriverName());
            row->SetField(kLink, pnic->IsLinkUp() ? kUp : kDown);
            row->SetField(kSpeed, static_cast<long>(pnic->GetSpeed()));
            row->SetField(kDuplex, DuplexWord(pnic->GetDuplex()));
            row->SetField(kMacAddress, pnic->GetMacAddress().GetStringAddress());
            row->SetField(kMtu, static_cast<long>(pnic->GetMtu()));
            row->SetField(kDescription, vendor + " " + device);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kListError + std::string(e.what()));
    }
}

NETWORK_COMMAND(VfList, kVfListShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const std::string& name = input->GetParameter(kNicNameParameter);
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        if (!networkInfo.GetSriovNicByName(name)) {
            output->AddErrorMessage(kNoSriovNic + name);
            return;
        }
        for (const auto& vf : networkInfo.GetSriovNicVFInfo(name)) {
            auto row = GetOutputStructure();
            row->SetField(kVfId, static_cast<long>(vf.vfId));
            row->SetField(kActive, vf.active != 0);
            row->SetField(kHexPciAddress, vf.hexPciAddress);
            row->SetField(kPciAddress, vf.pciAddress);
            row->SetField(kOwnerWorldId, vf.ownerWorldId);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kVfInfoError + std::string(e.what()));
    }
}

// The network model is made ahead of the guarded block, so a failure to make it reaches the
// command host.
NETWORK_COMMAND(VfStats, kVfStatsShape) {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        const std::string& name = input->GetParameter(kNicNameParameter);
        const std::string& vfText = input->GetParameter(kVfIdParameter);
        const int vfId = static_cast<int>(std::strtol(vfText.c_str(), nullptr, 10));
        if (vfId < 0) {
            output->AddErrorMessage(kInvalidVfId + vfText + kInvalidVfIdEnd);
            return;
        }
        if (!networkInfo.GetSriovNicByName(name)) {
            output->AddErrorMessage(kNoSriovNic + name);
            return;
        }
        HostCtl::Network::SriovNicVFStats stats;
        networkInfo.GetSriovNicVFStats(&stats, name, vfId);
        const std::uint64_t counters[] = {
            stats.rxUnicastPkts,      stats.rxUnicastBytes,   stats.rxMulticastPkts,
            stats.rxMulticastBytes,   stats.rxBroadcastPkts,  stats.rxBroadcastBytes,
            stats.rxOutOfBufferDrops, stats.rxErrorDrops,     stats.rxLroPkts,
            stats.rxLroBytes,         stats.txUnicastPkts,    stats.txUnicastBytes,
            stats.txMulticastPkts,    stats.txMulticastBytes, stats.txBroadcastPkts,
            stats.txBroadcastBytes,   stats.txErrors,         stats.txDiscards,
            stats.txTsoPkts,          stats.txTsoBytes,
        };
        auto row = GetOutputStructure();
        row->SetField(kNicNameField, name);
        row->SetField(kVfId, static_cast<long>(vfId));
        for (std::size_t i = 0; i < std::size(counters); ++i) {
            row->SetField(kCounterNames[i], static_cast<long>(counters[i]));
        }
        list->Add(row);
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(kVfStatsError + std::string(e.what()));
    }
}

}  // namespace ZanvexCli::NetworkNamespace
