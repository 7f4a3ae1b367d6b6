// `network vswitch dvs zanvex lacp config get`: LACP as configured on the distributed switches,
// in its older form (a setting of the uplink ports of a port group) and as LAGs.
#include <map>

#include "frame/Declaration.h"
#include "hostctl/HostCtlException.h"
#include "hostctl/NetworkInfo.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using Declare::Field;
using Declare::FieldType;
using HostCtl::Network::DVSwitch;
using HostCtl::Network::NetworkFactory;

constexpr char kDvsParameter[] = "dvs";

constexpr char kDvsName[] = "DVS Name";
constexpr char kLagName[] = "LAG Name";
constexpr char kLagId[] = "LAG ID";
constexpr char kNics[] = "NICs";
constexpr char kEnabled[] = "Enabled";
constexpr char kMode[] = "Mode";
constexpr char kLoadBalance[] = "Load balance";

constexpr Field kFields[] = {
    {kDvsName, FieldType::String, 1},     {kLagName, FieldType::String, 2},
    {kLagId, FieldType::String, 3},       {kNics, FieldType::String, 4},
    {kEnabled, FieldType::Bool, 5},       {kMode, FieldType::String, 6},
    {kLoadBalance, FieldType::String, 7},
};
constexpr Declare::StructShape kLacp = {"LACP", kFields};

constexpr Declare::Parameter kParameters[] = {
    {kDvsParameter, "s", Declare::Type::String, false, "The name of DVS to get configuration on"},
};

constexpr char kNoDvs[] =
    "LACP is supported on Zanvex DVSwitch only, and there is no DVSwitch configured on host.";
constexpr char kDisabled[] = "LACP is disabled on DVSwitch.";
constexpr char kUplinkPortGroupLag[] = "default_uplink_pg_lag";
constexpr char kOlderFormLagId[] = "0";
constexpr char kOlderFormLoadBalance[] = "---";
constexpr char kActive[] = "Active";
constexpr char kPassive[] = "Passive";
constexpr char kNone[] = "None";

// Indexed by a LAG's load-balancing code.
constexpr const char* kLoadBalanceWords[] = {
    "None",
    "Dst mac",
    "Src mac",
    "Src and dst mac",
    "Dst ip",
    "Src ip",
    "Src and dst ip",
    "Vlan",
    "Dst ip and vlan",
    "Src ip and vlan",
    "Src and dst ip, vlan",
    "Dst port",
    "Src port",
    "Src and dst port",
    "Dst ip and dst port",
    "Src ip and src port",
    "Src and dst ip, port",
    "Dst ip and dst port, vlan",
    "Src ip and src port, vlan",
    "Src and dst ip, port, vlan",
    "Src portID",
};

const char* ModeWord(std::uint32_t mode) {
    return mode == 1 ? kActive : mode == 2 ? kPassive : kNone;
}

void AppendName(std::string& text, const std::string& name) {
    if (!text.empty()) {
        text += ",";
    }
    text += name;
}

// Enabled, mode and load balancing of a row of the older form.
void SetPortSetting(MetaStruct& row, const HostCtl::Network::DVPortLacpConfig& config) {
    row.SetField(kEnabled, config.enabled);
    row.SetField(kMode, config.enabled ? ModeWord(config.mode) : "");
    row.SetField(kLoadBalance, kOlderFormLoadBalance);
}

std::shared_ptr<MetaStruct> OlderFormRow(const DVSwitch& dvSwitch) {
    auto row = Declare::MakeStruct(Declare::PackStruct<kLacp>());
    row->SetField(kDvsName, dvSwitch.GetDvsName());
    row->SetField(kLagName, kUplinkPortGroupLag);
    row->SetField(kLagId, kOlderFormLagId);
    return row;
}

// One row per uplink port group with LACP on some uplink; counts the rows.
long AddOlderFormRows(const DVSwitch& dvSwitch, MetaList& list) {
    long rows = 0;
    const auto uplinkPorts = dvSwitch.GetUplinkPorts();
    if (!uplinkPorts.empty()) {
        std::map<std::string, std::vector<std::string>> groups;
        for (const auto& [nic, param] : uplinkPorts) {
            groups[NetworkFactory::GetDVPort(param)->GetDVPortgroupId()].push_back(nic);
        }
        for (const auto& [group, nics] : groups) {
            auto row = OlderFormRow(dvSwitch);
            std::string nicText;
            HostCtl::Network::DVPortLacpConfig config;
            for (const std::string& nic : nics) {
                config = NetworkFactory::GetDVPort(uplinkPorts.at(nic))->GetLacpConfig();
                if (config.enabled) {
                    AppendName(nicText, nic);
                }
            }
            if (nicText.empty()) {
                continue;
            }
            row->SetField(kNics, nicText);
            SetPortSetting(*row, config);
            list.Add(row);
            ++rows;
        }
        return rows;
    }
    std::vector<std::string> first;
    std::vector<std::string> second;
    dvSwitch.GetDVPortIds(first, second, false);
    std::map<std::string, std::string> representatives;
    for (const std::string& id : second) {
        auto port = dvSwitch.GetDVPortById(id);
        if (!port || !port->GetLacpConfig().enabled) {
            continue;
        }
        representatives.emplace(port->GetDVPortgroupId(), id);
    }
    for (const auto& [group, id] : representatives) {
        auto row = OlderFormRow(dvSwitch);
        SetPortSetting(*row, dvSwitch.GetDVPortById(id)->GetLacpConfig());
        list.Add(row);
        ++rows;
    }
    return rows;
}

long AddLagRows(const DVSwitch& dvSwitch, MetaList& list) {
    std::vector<HostCtl::Network::LagConfig> lags;
    dvSwitch.GetLagConfigs(lags);
    for (const auto& lag : lags) {
        auto row = Declare::MakeStruct(Declare::PackStruct<kLacp>());
        row->SetField(kDvsName, dvSwitch.GetDvsName());
        row->SetField(kLagName, lag.lagName);
        row->SetField(kLagId, lag.lagId);
        const auto uplinkPorts = dvSwitch.GetUplinkPorts();
        std::string nicText;
        for (std::uint32_t index = 0; index < lag.portCount; ++index) {
            const std::string portName = lag.lagName + "-" + std::to_string(index);
            for (const auto& [nic, param] : uplinkPorts) {
                if (NetworkFactory::GetDVPort(param)->GetName() == portName) {
                    AppendName(nicText, nic);
                    break;
                }
            }
        }
        row->SetField(kNics, nicText);
        row->SetField(kEnabled, true);
        row->SetField(kMode, ModeWord(lag.mode));
        row->SetField(kLoadBalance, kLoadBalanceWords[lag.loadBalance]);
        list.Add(row);
    }
    return static_cast<long>(lags.size());
}

}  // namespace

constexpr Declare::CommandShape kLacpGetConfigShape = {
    .description = "Get LACP configuration on DVS",
    .formatter = "table",
    .parameters = kParameters,
    .root = Declare::Root::List,
    .structure = &kLacp,
};

NETWORK_COMMAND(LacpGetConfig, kLacpGetConfigShape) {
    try {
        auto list = MetaList::New(CppTools::MetaObj::MetaTypeStruct, GetOutputStructure());
        std::vector<std::unique_ptr<DVSwitch>> switches;
        if (input->HasParameter(kDvsParameter)) {
            switches.push_back(
                NetworkFactory::GetDVSwitchByName(input->GetParameter(kDvsParameter)));
        } else {
            KelmCtl::Network::VirtualSwitchInfoImpl info;
            switches = info.GetDVSwitches();
            for (auto& opaque : info.GetOpaqueDVSwitches()) {
                switches.push_back(std::move(opaque));
            }
            if (switches.empty()) {
                output->AddErrorMessage(kNoDvs);
                return;
            }
        }
        long rows = 0;
        for (const auto& dvSwitch : switches) {
            rows += AddOlderFormRows(*dvSwitch, *list);
            rows += AddLagRows(*dvSwitch, *list);
        }
        if (rows == 0) {
            output->AddErrorMessage(kDisabled);
            return;
        }
        output->SetRootObject(list);
    } catch (const HostCtl::Lib::HostCtlException& e) {
        output->AddErrorMessage(e.what());
    }
}

}  // namespace ZanvexCli::NetworkNamespace
