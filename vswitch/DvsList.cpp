// `network vswitch dvs zanvex list`: the distributed switches with their settings, uplinks and
// ports.
#include <algorithm>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "kelmctl/DVPortImpl.h"
#include "kelmctl/DVSwitchImpl.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kOdsNameParameter[] = "ods-name";

constexpr char kName[] = "Name";
constexpr char kOdsId[] = "ODS ID";
constexpr char kClass[] = "Class";
constexpr char kNumPorts[] = "Num Ports";
constexpr char kUsedPorts[] = "Used Ports";
constexpr char kConfiguredPorts[] = "Configured Ports";
constexpr char kMtu[] = "MTU";
constexpr char kCdpStatus[] = "CDP Status";
constexpr char kBeaconTimeout[] = "Beacon Timeout";
constexpr char kUplinks[] = "Uplinks";
constexpr char kZanvexBranded[] = "Zanvex Branded";
constexpr char kDVPort[] = "DVPort";

constexpr char kPortId[] = "Port ID";
constexpr char kInUse[] = "In Use";
constexpr char kDVPortgroupId[] = "DVPortgroup ID";
constexpr char kClient[] = "Client";

constexpr Field kDVPortFields[] = {
    {kPortId, FieldType::String},
    {kInUse, FieldType::Bool},
    {kDVPortgroupId, FieldType::String},
    {kClient, FieldType::StringList},
};
constexpr Declare::StructShape kDVPortShape = {"DVPort", kDVPortFields};

constexpr Field kFields[] = {
    {kName, FieldType::String},
    {kOdsId, FieldType::String},
    {kClass, FieldType::String},
    {kNumPorts, FieldType::Int},
    {kUsedPorts, FieldType::Int},
    {kConfiguredPorts, FieldType::Int},
    {kMtu, FieldType::Int},
    {kCdpStatus, FieldType::String},
    {kBeaconTimeout, FieldType::Int},
    {kUplinks, FieldType::StringList},
    {kZanvexBranded, FieldType::Bool},
    {kDVPort, FieldType::StructList, 0, &kDVPortShape},
};
constexpr Declare::StructShape kOds = {"ODS", kFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:ODS", "%Name%"},
    {"table-columns",
     "Name,ODS ID,Class,Num Ports,Used Ports,Configured Ports,MTU,CDP Status,Beacon "
     "Timeout,Uplinks,Zanvex Branded,DVPort"},
};

constexpr Declare::Parameter kParameters[] = {
    {kOdsNameParameter, "v", Declare::Type::String, false,
     "Limit the output of this command to only oDS with the given name."},
};

constexpr char kUnableToAccessAll[] = "Unable to access all oDS";

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchDVSZanvexListShape = {
    .description =
        "List the Zanvex Orbiq Distributed Switch currently configured on the Ostrel host.",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kOds,
};

namespace {

// The struct of one port of a switch, an element of its "DVPort" list.
std::shared_ptr<MetaStruct> DVPortStructure() {
    return Declare::MakeStruct(Declare::PackStruct<kDVPortShape>());
}

// The "DVPort" list of a switch's ports.
std::shared_ptr<MetaList> DVPortList(
    const std::vector<std::unique_ptr<HostCtl::Network::DVPort>>& ports) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, DVPortStructure());
    for (const auto& port : ports) {
        const auto* impl = dynamic_cast<const KelmCtl::Network::DVPortImpl*>(port.get());
        if (impl == nullptr) {
            continue;
        }
        std::vector<std::string> clients;
        const bool inUse = impl->IsInUse(clients);
        auto row = DVPortStructure();
        row->SetField(kPortId, impl->GetPortId());
        row->SetField(kInUse, inUse);
        row->SetField(kDVPortgroupId, impl->GetDVPortgroupId());
        row->SetField(kClient, clients);
        list->Add(row);
    }
    return list;
}

}  // namespace

NETWORK_COMMAND(VirtualSwitchDVSZanvexList, kVirtualSwitchDVSZanvexListShape) {
    const std::string name = input->GetParameter(kOdsNameParameter);
    try {
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        KelmCtl::Network::NetworkInfoImpl networkInfo;
        std::vector<std::unique_ptr<HostCtl::Network::DVSwitch>> selected;
        if (name.empty()) {
            selected = switches.GetDVSwitches();
        } else {
            selected.push_back(HostCtl::Network::NetworkFactory::GetDVSwitchByName(name));
        }
        std::vector<std::string> pnicNames;
        for (const auto& pnic : networkInfo.GetPnics(HostCtl::Network::PnicGetUplinks)) {
            if (pnic) {
                pnicNames.push_back(pnic->GetName());
            }
        }
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        for (const auto& element : selected) {
            auto* dvSwitch = dynamic_cast<KelmCtl::Network::DVSwitchImpl*>(element.get());
            if (dvSwitch == nullptr) {
                output->AddErrorMessage(kUnableToAccessAll);
                break;
            }
            auto row = GetOutputStructure();
            row->SetField(kName, dvSwitch->GetDvsName());
            row->SetField(kOdsId, dvSwitch->GetDvsId());
            row->SetField(kClass, dvSwitch->GetClass());
            row->SetField(kNumPorts, static_cast<long>(dvSwitch->GetNumPorts()));
            row->SetField(kUsedPorts, static_cast<long>(dvSwitch->GetNumUsedPorts()));
            row->SetField(kConfiguredPorts, static_cast<long>(dvSwitch->GetNumConfiguredPorts()));
            row->SetField(kMtu, static_cast<long>(dvSwitch->GetMTU()));
            row->SetField(kCdpStatus, dvSwitch->GetCdpStatusString());
            row->SetField(kBeaconTimeout, static_cast<long>(dvSwitch->GetBeaconTimeout()));
            row->SetField(kZanvexBranded, dvSwitch->IsZanvexBranded());
            row->SetField(kDVPort, DVPortList(dvSwitch->GetDVPorts()));
            std::vector<std::string> uplinks = dvSwitch->GetUplinks(false);
            std::erase_if(uplinks, [&pnicNames](const std::string& uplink) {
                return std::find(pnicNames.begin(), pnicNames.end(), uplink) == pnicNames.end();
            });
            row->SetField(kUplinks, uplinks);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
