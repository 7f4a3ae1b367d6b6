// Host operations of the VLAN counters of uplinks, which a switch keeps per uplink, and the
// collection of every portset in which commands look for a NIC's switch.
#include <algorithm>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/VirtualSwitch.h"
#include "hostsim/core/Operation.h"
#include "hostsim/core/Store.h"
#include "hostsim/nicsettings/NicSettingsStore.h"
#include "hostsim/vswitch/VirtualSwitchImpl.h"
#include "hostsim/vswitch/VswitchStore.h"
#include "kelmctl/VirtualSwitchInfoImpl.h"

namespace {

using HostCtl::Network::PnicVlanStats;

// VLAN 4095 on a port group passes every VLAN: it names no VLAN of its own to count.
constexpr std::uint16_t kHighestVlan = 4094;

void RequireUplink(HostSim::Database& database, const std::string& switchName,
                   const std::string& nic) {
    const auto uplinks = HostSim::Vswitch::LoadUplinks(database, switchName);
    if (std::find(uplinks.begin(), uplinks.end(), nic) == uplinks.end()) {
        throw HostCtl::Lib::HostCtlException("NIC " + nic + " is not an uplink of " + switchName);
    }
}

// Counters that start at zero for the untagged traffic and each VLAN of the switch's port
// groups.
std::vector<PnicVlanStats> FreshCounters(HostSim::Database& database,
                                         const std::string& switchName) {
    std::set<std::uint16_t> vlans{0};
    for (const auto& portGroup : HostSim::Vswitch::LoadPortGroupsOf(database, switchName)) {
        if (portGroup.vlanId <= kHighestVlan) {
            vlans.insert(portGroup.vlanId);
        }
    }
    std::vector<PnicVlanStats> counters;
    for (std::uint16_t vlan : vlans) {
        counters.push_back({vlan, 0, 0});
    }
    return counters;
}

}  // namespace

namespace HostCtl::Network {

std::vector<PnicVlanStats*> Portset::GetVlanStats(const std::string& nic) const {
    const std::string switchName = GetName();
    HostSim::PassOperation("Portset::GetVlanStats", nic);
    HostSim::Database& database = HostSim::Store();
    RequireUplink(database, switchName, nic);
    const auto settings = HostSim::NicSettings::Load(database, nic);
    std::vector<PnicVlanStats*> stats;
    if (settings.vlanStats && settings.vlanStats->switchName == switchName) {
        for (const auto& vlan : settings.vlanStats->vlans) {
            stats.push_back(new PnicVlanStats(vlan));
        }
    }
    return stats;
}

// Switching collection on keeps the counters that run already; off drops them.
void Portset::SetVlanStatsEnabled(const std::string& nic, bool enabled) {
    const std::string switchName = GetName();
    HostSim::PassOperation("Portset::SetVlanStatsEnabled", nic);
    HostSim::Database& database = HostSim::Store();
    HostSim::WriteTransaction transaction(database);
    RequireUplink(database, switchName, nic);
    auto settings = HostSim::NicSettings::Load(database, nic);
    const bool counting = settings.vlanStats && settings.vlanStats->switchName == switchName;
    if (enabled && !counting) {
        settings.vlanStats =
            HostSim::NicSettings::VlanCounters{switchName, FreshCounters(database, switchName)};
    } else if (!enabled) {
        settings.vlanStats.reset();
    }
    HostSim::NicSettings::Save(database, settings);
    transaction.Commit();
}

}  // namespace HostCtl::Network
