// Every host operation of every switching command, failed in turn: each run ends in the host's
// message and no root.
#include <algorithm>

#include "support/CommandTest.h"

namespace {

class VswitchFaultSweep : public Testing::CommandTest {
protected:
    // Sweeps `network vswitch standard <words...>` and checks that the sweep failed each of
    // `expected` in turn.
    void Sweep(const std::vector<std::string>& words, const std::vector<std::string>& expected) {
        std::vector<std::string> line{"vswitch", "standard"};
        line.insert(line.end(), words.begin(), words.end());
        SCOPED_TRACE(::testing::PrintToString(line));
        std::vector<std::string> swept;
        for (const auto& call : ExpectEveryFaultFails(line)) {
            swept.push_back(call.operation);
        }
        for (const auto& operation : expected) {
            EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end()) << operation;
        }
    }
};

TEST_F(VswitchFaultSweep, SwitchLifecycle) {
    Sweep({"add", "-v", "labswitch9", "-P", "256"},
          {"NicTeamingPolicy::GetDefaultPolicy", "PortSecurityPolicy::GetDefaultPolicy",
           "ShapingPolicy::GetDefaultPolicy", "NicCapabilities::GetDefaultPolicy",
           "VirtualSwitchInfoImpl::AddVirtualSwitchWithPolicy"});
    Sweep({"set", "-v", "lanswitch0", "--mtu=9000", "--cdp-status=both"},
          {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
           "VirtualSwitch::SetMTU", "VirtualSwitch::SetCdpStatus"});
    Sweep({"list"},
          {"VirtualSwitchInfoImpl::GetVirtualSwitches", "NetworkInfoImpl::NetworkInfoImpl",
           "NetworkInfo::GetPnics", "Pnic::GetName", "Portset::GetName", "Portset::GetClass",
           "Portset::GetNumPorts", "Portset::GetNumUsedPorts", "Portset::GetNumConfiguredPorts",
           "VirtualSwitch::GetMTU", "VirtualSwitch::GetCdpStatus",
           "VirtualSwitch::GetBeaconEnabled", "VirtualSwitch::GetBeaconInterval",
           "VirtualSwitch::GetBeaconThreshold", "VirtualSwitch::GetBeaconRequiredBy",
           "Portset::GetUplinks", "VirtualSwitch::GetPortGroups", "PortGroup::GetName"});
    Sweep({"list", "-v", "storageswitch1"}, {"VirtualSwitchInfoImpl::GetVirtualSwitchByName"});
}

// Every switch of the default host is in use, so removal is swept on one made for it.
TEST_F(VswitchFaultSweep, SwitchRemoval) {
    const std::vector<std::string> remove{"vswitch", "standard", "remove", "-v", "labswitch9"};
    for (const char* operation :
         {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::RemoveVirtualSwitch"}) {
        SCOPED_TRACE(operation);
        RunOk({"vswitch", "standard", "add", "-v", "labswitch9"});
        HostSim::InjectFault(operation, "", "injected fault");
        EXPECT_EQ(RunError(remove), "injected fault");
        HostSim::ClearFaults();
        RunOk(remove);
    }
}

TEST_F(VswitchFaultSweep, Uplinks) {
    Sweep({"uplink", "add", "-v", "lanswitch0", "-u", "hwnic4"},
          {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::AddUplink"});
    Sweep({"uplink", "remove", "-v", "lanswitch0", "-u", "hwnic1"},
          {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::RemoveUplink"});
}

TEST_F(VswitchFaultSweep, SwitchPolicies) {
    const std::vector<std::string> lookup{"PortsetImpl::IsValidVirtualSwitch",
                                          "VirtualSwitchInfoImpl::GetVirtualSwitchByName"};
    auto with = [&lookup](std::vector<std::string> more) {
        more.insert(more.begin(), lookup.begin(), lookup.end());
        return more;
    };
    Sweep({"policy", "shaping", "get", "-v", "storageswitch1"},
          with({"VirtualSwitch::GetEffectiveShapingPolicy"}));
    Sweep({"policy", "shaping", "set", "-v", "storageswitch1", "--avg-bandwidth=1000"},
          with({"VirtualSwitch::GetEffectiveShapingPolicy", "VirtualSwitch::SetShapingPolicy"}));
    Sweep({"policy", "security", "get", "-v", "storageswitch1"},
          with({"VirtualSwitch::GetEffectiveSecurityPolicy"}));
    Sweep({"policy", "security", "set", "-v", "storageswitch1", "-p", "true"},
          with({"VirtualSwitch::GetEffectiveSecurityPolicy", "VirtualSwitch::SetSecurityPolicy"}));
    Sweep({"policy", "failover", "get", "-v", "storageswitch1"},
          with({"VirtualSwitch::GetEffectiveTeamingPolicy", "Portset::GetUplinks"}));
    Sweep(
        {"policy", "failover", "set", "-v", "storageswitch1", "--active-uplinks=hwnic3",
         "--standby-uplinks=hwnic2"},
        with({"VirtualSwitch::GetEffectiveTeamingPolicy", "VirtualSwitch::GetTeamingPolicy",
              "Portset::GetUplinks", "PnicImpl::IsValidPnic", "VirtualSwitch::SetTeamingPolicy"}));
}

TEST_F(VswitchFaultSweep, PortGroups) {
    Sweep({"portgroup", "list"},
          {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfoImpl::GetAllPortGroups",
           "PortGroup::GetName", "ConnectionPoint::GetPortsetName", "PortGroup::GetActiveClients",
           "PortGroup::GetVlanId"});
    Sweep({"portgroup", "add", "-p", "Lab", "-v", "lanswitch0"},
          {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::AddPortGroup"});
    Sweep({"portgroup", "remove", "-p", "VM Network", "-v", "lanswitch0"},
          {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::RemovePortGroup"});
    Sweep({"portgroup", "set", "-p", "VM Network", "--vlan-id=12"},
          {"NetworkFactory::GetPortGroupByName", "PortGroup::SetVlanId"});
}

TEST_F(VswitchFaultSweep, PortGroupPolicies) {
    Sweep({"portgroup", "policy", "failover", "get", "-p", "Management Network"},
          {"NetworkFactory::GetPortGroupByName", "PortGroup::GetVirtualSwitch",
           "PortGroup::GetEffectiveTeamingPolicy", "PortGroup::GetTeamingPolicy",
           "Portset::GetUplinks"});
    Sweep({"portgroup", "policy", "failover", "set", "-p", "VM Network", "-u", "-a", "hwnic1"},
          {"PortGroup::GetEffectiveTeamingPolicy", "PortGroup::GetTeamingPolicy",
           "PortGroup::GetVirtualSwitch", "Portset::GetUplinks", "PnicImpl::IsValidPnic",
           "PortGroup::SetTeamingPolicy"});
    Sweep({"portgroup", "policy", "security", "get", "-p", "Backup Network"},
          {"PortGroup::GetEffectiveSecurityPolicy", "PortGroup::GetSecurityPolicy"});
    Sweep({"portgroup", "policy", "security", "set", "-p", "Backup Network", "-u", "-m", "true"},
          {"PortGroup::GetSecurityPolicy", "PortGroup::SetSecurityPolicy"});
    Sweep({"portgroup", "policy", "shaping", "get", "-p", "Backup Network"},
          {"PortGroup::GetEffectiveShapingPolicy", "PortGroup::GetShapingPolicy"});
    Sweep({"portgroup", "policy", "shaping", "set", "-p", "VM Network", "-e", "true", "-b", "10",
           "-k", "20", "-t", "30"},
          {"PortGroup::GetShapingPolicy", "PortGroup::GetEffectiveShapingPolicy",
           "PortGroup::SetShapingPolicy"});
}

}  // namespace
