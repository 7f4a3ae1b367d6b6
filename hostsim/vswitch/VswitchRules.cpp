#include "hostsim/vswitch/VswitchRules.h"

#include <algorithm>
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/PortGroup.h"
#include "hostsim/core/Names.h"

namespace HostSim::Vswitch {

namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::NicTeamingPolicy;

void CheckRange(long value, long low, long high, const char* what) {
    if (value < low || value > high) {
        throw HostCtlException(std::string(what) + " " + std::to_string(value) +
                               " is out of range (" + std::to_string(low) + "-" +
                               std::to_string(high) + ")");
    }
}

}  // namespace

void CheckSwitchName(const std::string& name) {
    CheckObjectName(name, "virtual switch");
}

void CheckPortGroupName(const std::string& name) {
    CheckObjectName(name, "port group");
}

void CheckPorts(long ports) {
    CheckRange(ports, 1, kMaximumSwitchPorts, "Port count");
}

void CheckMtu(long mtu) {
    CheckRange(mtu, kMinimumMtu, kMaximumMtu, "MTU");
}

void CheckCdpStatus(long status) {
    CheckRange(status, 0, 3, "CDP status");
}

long CheckVlanId(long vlanId) {
    CheckRange(vlanId, HostCtl::Network::PortGroup::MIN_VLAN_ID,
               HostCtl::Network::PortGroup::MAX_VLAN_ID, "VLAN ID");
    return vlanId;
}

void CheckSwitchSettings(const SwitchRecord& record) {
    CheckSwitchName(record.name);
    CheckPorts(record.ports);
    CheckMtu(record.mtu);
    CheckCdpStatus(record.cdpStatus);
}

void CheckTeaming(const NicTeamingPolicy& policy, const std::vector<std::string>& switchUplinks,
                  const std::string& owner) {
    if ((policy.setFields & NicTeamingPolicy::kTeamPolicyBit) != 0 &&
        (policy.teamPolicy < HostCtl::Network::TeamPolicyIpHash ||
         policy.teamPolicy > HostCtl::Network::TeamPolicyExplicitOrder)) {
        throw HostCtlException("Load balancing policy " +
                               std::to_string(static_cast<int>(policy.teamPolicy)) + " of " +
                               owner + " is not supported");
    }
    if ((policy.setFields & NicTeamingPolicy::kUplinksBit) == 0) {
        return;
    }
    std::set<std::string> seen;
    for (const std::string& uplink : policy.uplinkOrder) {
        if (std::find(switchUplinks.begin(), switchUplinks.end(), uplink) == switchUplinks.end()) {
            throw HostCtlException("The teaming policy of " + owner + " names " + uplink +
                                   ", which is not an uplink of its virtual switch");
        }
        if (!seen.insert(uplink).second) {
            throw HostCtlException("The teaming policy of " + owner + " names " + uplink +
                                   " more than once");
        }
    }
    // A count above the length of the order makes every ordered uplink active, as a profile
    // may say; only a negative count means nothing.
    if (policy.maxActiveUplinks < 0) {
        throw HostCtlException("The teaming policy of " + owner + " makes " +
                               std::to_string(policy.maxActiveUplinks) + " uplinks active");
    }
}

bool DropUplink(NicTeamingPolicy& policy, const std::string& nicName) {
    auto& order = policy.uplinkOrder;
    const auto found = std::find(order.begin(), order.end(), nicName);
    if (found == order.end()) {
        return false;
    }
    if (found - order.begin() < policy.maxActiveUplinks) {
        --policy.maxActiveUplinks;
    }
    order.erase(found);
    return true;
}

}  // namespace HostSim::Vswitch
