// `network vswitch standard list`: the standard switches with their ports, settings, uplinks
// and port groups.
#include <algorithm>

#include "frame/Declaration.h"
#include "frame/SharedConstants.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"
#include "vswitch/PolicyParameters.h"
#include "vswitch/VswitchLookup.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;

constexpr char kName[] = "Name";
constexpr char kClass[] = "Class";
constexpr char kNumPorts[] = "Num Ports";
constexpr char kUsedPorts[] = "Used Ports";
constexpr char kConfiguredPorts[] = "Configured Ports";
constexpr char kMtu[] = "MTU";
constexpr char kCdpStatus[] = "CDP Status";
constexpr char kBeaconEnabled[] = "Beacon Enabled";
constexpr char kBeaconInterval[] = "Beacon Interval";
constexpr char kBeaconThreshold[] = "Beacon Threshold";
constexpr char kBeaconRequiredBy[] = "Beacon Required By";
constexpr char kUplinks[] = "Uplinks";
constexpr char kPortgroups[] = "Portgroups";

constexpr Field kFields[] = {
    {kName, FieldType::String, 1},
    {kClass, FieldType::String, 2},
    {kNumPorts, FieldType::Int, 3},
    {kUsedPorts, FieldType::Int, 4},
    {kConfiguredPorts, FieldType::Int, 5},
    {kMtu, FieldType::Int, 6},
    {kCdpStatus, FieldType::String, 7},
    {kBeaconEnabled, FieldType::Bool, 8},
    {kBeaconInterval, FieldType::Int, 9},
    {kBeaconThreshold, FieldType::Int, 10},
    {kBeaconRequiredBy, FieldType::StringList, 11},
    {kUplinks, FieldType::StringList, 12},
    {kPortgroups, FieldType::StringList, 13},
};
constexpr Declare::StructShape kVirtualSwitch = {"VirtualSwitch", kFields};

constexpr Declare::OutputParameter kOutputParameters[] = {
    {"header:VirtualSwitch", "%Name%"},
};

constexpr Declare::Parameter kParameters[] = {
    {kVswitchNameParameter, "v", Declare::Type::String, false,
     "Limit the output of this command to only virtual switches with the given name."},
    {kTypeParameter, "t", Declare::Type::String, false,
     "List virtual switches with given type(e.g. system)."},
};

constexpr char kNullPortset[] = "Unable to access null portset.";

// The names of the NICs that serve as uplinks.
std::vector<std::string> UplinkNicNames() {
    KelmCtl::Network::NetworkInfoImpl networkInfo;
    std::vector<std::string> names;
    for (const auto& pnic : networkInfo.GetPnics(HostCtl::Network::PnicGetUplinks)) {
        if (pnic) {
            names.push_back(pnic->GetName());
        }
    }
    return names;
}

}  // namespace

constexpr Declare::CommandShape kVirtualSwitchStandardListShape = {
    .description = "List the virtual switches current on the Ostrel host.",
    .formatter = "simple",
    .outputParameters = kOutputParameters,
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kVirtualSwitch,
};

NETWORK_COMMAND(VirtualSwitchStandardList, kVirtualSwitchStandardListShape) {
    try {
        const auto type = ReadPortsetType(*input, *output);
        if (!type) {
            return;
        }
        KelmCtl::Network::VirtualSwitchInfoImpl switches;
        std::vector<std::unique_ptr<HostCtl::Network::VirtualSwitch>> selected;
        if (input->HasParameter(kVswitchNameParameter)) {
            selected.push_back(
                switches.GetVirtualSwitchByName(input->GetParameter(kVswitchNameParameter), *type));
        } else {
            selected = switches.GetVirtualSwitches(*type);
        }
        const std::vector<std::string> pnicNames = UplinkNicNames();
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        for (const auto& virtualSwitch : selected) {
            if (!virtualSwitch) {
                output->AddErrorMessage(kNullPortset);
                continue;
            }
            auto row = GetOutputStructure();
            row->SetField(kName, virtualSwitch->GetName());
            row->SetField(kClass, virtualSwitch->GetClass());
            row->SetField(kNumPorts, static_cast<long>(virtualSwitch->GetNumPorts()));
            row->SetField(kUsedPorts, static_cast<long>(virtualSwitch->GetNumUsedPorts()));
            row->SetField(kConfiguredPorts,
                          static_cast<long>(virtualSwitch->GetNumConfiguredPorts()));
            row->SetField(kMtu, static_cast<long>(virtualSwitch->GetMTU()));
            row->SetField(kCdpStatus, kCdpStatusWords[virtualSwitch->GetCdpStatus()]);
            row->SetField(kBeaconEnabled, virtualSwitch->GetBeaconEnabled());
            row->SetField(kBeaconInterval, static_cast<long>(virtualSwitch->GetBeaconInterval()));
            row->SetField(kBeaconThreshold, static_cast<long>(virtualSwitch->GetBeaconThreshold()));
            row->SetField(kBeaconRequiredBy, virtualSwitch->GetBeaconRequiredBy());
            std::vector<std::string> uplinks = virtualSwitch->GetUplinks(false);
            std::erase_if(uplinks, [&pnicNames](const std::string& uplink) {
                return std::find(pnicNames.begin(), pnicNames.end(), uplink) == pnicNames.end();
            });
            row->SetField(kUplinks, uplinks);
            std::vector<std::string> portGroups;
            for (const auto& portGroup : virtualSwitch->GetPortGroups()) {
                if (portGroup) {
                    portGroups.push_back(portGroup->GetName());
                }
            }
            row->SetField(kPortgroups, portGroups);
            list->Add(row);
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
