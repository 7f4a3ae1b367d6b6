// `network vm list` and `network vm port list`: the ports that belong to worlds of virtual
// machines, over all switches, gathered by world.
#include <algorithm>
#include <cstdlib>
#include <unordered_map>

#include "frame/Declaration.h"
#include "hostctl/DVSwitch.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/DVPortImpl.h"
#include "kelmctl/PnicImpl.h"
#include "kelmctl/PortImpl.h"
#include "kelmctl/PortsetImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"
#include "kelmctl/WorldImpl.h"
#include "vswitch/FilterOrder.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using KelmCtl::Network::PortImpl;

constexpr char kWorldIdParameter[] = "world-id";

constexpr char kWorldId[] = "World ID";
constexpr char kName[] = "Name";
constexpr char kNumPorts[] = "Num Ports";
constexpr char kNetworks[] = "Networks";

constexpr Field kVmFields[] = {
    {kWorldId, FieldType::Int, 1},
    {kName, FieldType::String, 2},
    {kNumPorts, FieldType::Int, 3},
    {kNetworks, FieldType::StringList, 4},
};
constexpr Declare::StructShape kVm = {"VM", kVmFields};

constexpr char kPortId[] = "Port ID";
constexpr char kVswitch[] = "vSwitch";
constexpr char kPortgroup[] = "Portgroup";
constexpr char kDVPortId[] = "DVPort ID";
constexpr char kMacAddress[] = "MAC Address";
constexpr char kIpAddress[] = "IP Address";
constexpr char kTeamUplink[] = "Team Uplink";
constexpr char kUplinkPortId[] = "Uplink Port ID";
constexpr char kActiveFilters[] = "Active Filters";

constexpr Field kPortFields[] = {
    {kPortId, FieldType::Int, 1},
    {kVswitch, FieldType::String, 2},
    {kPortgroup, FieldType::String, 3},
    {kDVPortId, FieldType::String, 4},
    {kMacAddress, FieldType::String, 5},
    {kIpAddress, FieldType::String, 6},
    {kTeamUplink, FieldType::String, 7},
    {kUplinkPortId, FieldType::Int, 8},
    {kActiveFilters, FieldType::StringList, 9},
};
constexpr Declare::StructShape kPort = {"Port", kPortFields};

constexpr Declare::Parameter kPortParameters[] = {
    {kWorldIdParameter, "w", Declare::Type::Int, true, "World ID of the VM for listing ports."},
};

constexpr char kListFailed[] = "Unable to list VM's: ";
constexpr char kPortListFailed[] = "Unable to list ports for VM: ";
constexpr char kNoSuchVm[] = "Couldn't find VM with given world ID";
// The kind prefix of a world's name that the list leaves out.
constexpr std::size_t kWorldNamePrefix = 5;

// The port group of a port of a distributed switch.
std::string DVPortgroupOf(const PortImpl& port, const HostCtl::Network::Portset& portset) {
    const auto& switchImpl = dynamic_cast<const KelmCtl::Network::PortsetImpl&>(portset);
    KelmCtl::Network::DVPortImpl dvPort(port.GetDVPortID(), switchImpl.GetSwitchKey());
    return dvPort.GetDVPortgroupId();
}

}  // namespace

constexpr Declare::CommandShape kVMListShape = {
    .description = "List networking information for the VM's that have active ports.",
    .formatter = "table",
    .root = Declare::Root::List,
    .structure = &kVm,
};

NETWORK_COMMAND(VMList, kVMListShape) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    std::unordered_map<int, std::vector<std::string>> networks;
    KelmCtl::Network::VirtualSwitchInfoImpl info;
    try {
        for (const auto& portset : info.GetAllSwitches()) {
            const std::string name = portset->GetName();
            const bool legacy = info.IsLegacySwitch(name);
            const bool distributed = info.IsDVSwitch(name);
            const bool opaque = info.IsOpaqueSwitch(name);
            for (const auto& port : portset->GetPorts()) {
                const auto& impl = dynamic_cast<const PortImpl&>(*port);
                const std::uint32_t world = impl.GetWorldLeader();
                if (world == 0) {
                    continue;
                }
                if (legacy || opaque) {
                    networks[static_cast<int>(world)].push_back(impl.GetPortGroupName());
                } else if (distributed) {
                    networks[static_cast<int>(world)].push_back(DVPortgroupOf(impl, *portset));
                }
            }
        }
        for (const auto& [world, names] : networks) {
            auto row = GetOutputStructure();
            row->SetField(kWorldId, static_cast<long>(world));
            const std::string worldName =
                KelmCtl::Resource::WorldImpl(static_cast<std::uint32_t>(world)).GetWorldName();
            row->SetField(kName, worldName.size() > kWorldNamePrefix
                                     ? worldName.substr(kWorldNamePrefix)
                                     : std::string());
            row->SetField(kNumPorts, static_cast<long>(names.size()));
            row->SetField(kNetworks, names);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(std::string(kListFailed) + e.what());
    }
}

constexpr Declare::CommandShape kVMPortListShape = {
    .description = "List of active ports for a given VM.",
    .formatter = "simple",
    .parameters = kPortParameters,
    .root = Declare::Root::List,
    .structure = &kPort,
};

NETWORK_COMMAND(VMPortList, kVMPortListShape) {
    auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
    const long number = std::strtol(input->GetParameter(kWorldIdParameter).c_str(), nullptr, 10);
    KelmCtl::Network::VirtualSwitchInfoImpl info;
    try {
        for (const auto& portset : info.GetAllSwitches()) {
            const std::string name = portset->GetName();
            const bool standardKind = info.IsLegacySwitch(name) || info.IsOpaqueSwitch(name);
            for (const auto& port : portset->GetPorts()) {
                const auto& impl = dynamic_cast<const PortImpl&>(*port);
                const std::uint32_t world = impl.GetWorldLeader();
                if (world == 0 ||
                    static_cast<std::uint64_t>(world) != static_cast<std::uint64_t>(number)) {
                    continue;
                }
                auto row = GetOutputStructure();
                row->SetField(kPortId, static_cast<long>(impl.GetId()));
                if (standardKind) {
                    row->SetField(kVswitch, name);
                    row->SetField(kPortgroup, impl.GetPortGroupName());
                    row->SetField(kDVPortId, "");
                } else {
                    const auto& dvSwitch =
                        dynamic_cast<const HostCtl::Network::DVSwitch&>(*portset);
                    row->SetField(kVswitch, dvSwitch.GetDvsName());
                    row->SetField(kPortgroup, DVPortgroupOf(impl, *portset));
                    row->SetField(kDVPortId, impl.GetDVPortID());
                }
                row->SetField(kMacAddress, impl.GetMacAddresses().front().GetStringAddress());
                row->SetField(kIpAddress, impl.GetPortClientIpv4Address().GetStringAddress());
                KelmCtl::Network::PnicImpl uplink(impl.GetSchedTeamUplink());
                row->SetField(kTeamUplink, uplink.GetName());
                row->SetField(
                    kUplinkPortId,
                    static_cast<long>(dynamic_cast<const PortImpl&>(*uplink.GetPort()).GetId()));
                std::vector<std::string> filters;
                for (const auto& filter : impl.GetFilterStats()) {
                    if (filter->isActive && std::find(filters.begin(), filters.end(),
                                                      filter->filterName) == filters.end()) {
                        filters.push_back(filter->filterName);
                    }
                }
                row->SetField(kActiveFilters, filters);
                list->Add(row);
            }
        }
        if (list->GetCount() == 0) {
            output->AddErrorMessage(kNoSuchVm);
            return;
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(std::string(kPortListFailed) + e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
