// The fault sweep's lines of the switching, port, VM and ENS commands: each command line, the
// host operations its sweep must fail, and what else the sweep allows.
#pragma once

#include "support/CommandTest.h"

namespace VswitchSweeps {

using Testing::SweepCase;

inline const std::vector<SweepCase> kSwitchLifecycle{
    {{"vswitch", "standard", "add", "-v", "labswitch9", "-P", "256"},
     {"NicTeamingPolicy::GetDefaultPolicy", "PortSecurityPolicy::GetDefaultPolicy",
      "ShapingPolicy::GetDefaultPolicy", "NicCapabilities::GetDefaultPolicy",
      "VirtualSwitchInfoImpl::AddVirtualSwitchWithPolicy"}},
    {{"vswitch", "standard", "set", "-v", "lanswitch0", "--mtu=9000", "--cdp-status=both"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
      "VirtualSwitch::SetMTU", "VirtualSwitch::SetCdpStatus"}},
    {{"vswitch", "standard", "list"},
     {"VirtualSwitchInfoImpl::GetVirtualSwitches", "NetworkInfoImpl::NetworkInfoImpl",
      "NetworkInfo::GetPnics", "Pnic::GetName", "Portset::GetName", "Portset::GetClass",
      "Portset::GetNumPorts", "Portset::GetNumUsedPorts", "Portset::GetNumConfiguredPorts",
      "VirtualSwitch::GetMTU", "VirtualSwitch::GetCdpStatus", "VirtualSwitch::GetBeaconEnabled",
      "VirtualSwitch::GetBeaconInterval", "VirtualSwitch::GetBeaconThreshold",
      "VirtualSwitch::GetBeaconRequiredBy", "Portset::GetUplinks", "VirtualSwitch::GetPortGroups",
      "PortGroup::GetName"}},
    {{"vswitch", "standard", "list", "-v", "storageswitch1"},
     {"VirtualSwitchInfoImpl::GetVirtualSwitchByName"}},
    // Every switch of the default host is in use, so removal is swept on one made for it.
    {{"vswitch", "standard", "remove", "-v", "labswitch9"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::RemoveVirtualSwitch"},
     {.setup = {{"vswitch", "standard", "add", "-v", "labswitch9"}}}},
    {{"vswitch", "standard", "uplink", "add", "-v", "lanswitch0", "-u", "hwnic4"},
     {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::AddUplink"}},
    {{"vswitch", "standard", "uplink", "remove", "-v", "lanswitch0", "-u", "hwnic1"},
     {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::RemoveUplink"}},
};

inline const std::vector<SweepCase> kSwitchPolicies{
    {{"vswitch", "standard", "policy", "shaping", "get", "-v", "storageswitch1"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
      "VirtualSwitch::GetEffectiveShapingPolicy"}},
    {{"vswitch", "standard", "policy", "shaping", "set", "-v", "storageswitch1",
      "--avg-bandwidth=1000"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
      "VirtualSwitch::GetEffectiveShapingPolicy", "VirtualSwitch::SetShapingPolicy"}},
    {{"vswitch", "standard", "policy", "security", "get", "-v", "storageswitch1"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
      "VirtualSwitch::GetEffectiveSecurityPolicy"}},
    {{"vswitch", "standard", "policy", "security", "set", "-v", "storageswitch1", "-p", "true"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
      "VirtualSwitch::GetEffectiveSecurityPolicy", "VirtualSwitch::SetSecurityPolicy"}},
    {{"vswitch", "standard", "policy", "failover", "get", "-v", "storageswitch1"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
      "VirtualSwitch::GetEffectiveTeamingPolicy", "Portset::GetUplinks"}},
    {{"vswitch", "standard", "policy", "failover", "set", "-v", "lanswitch0", "-l", "mac", "-f",
      "beacon"},
     {"VirtualSwitch::GetTeamingPolicy", "VirtualSwitch::SetTeamingPolicy"}},
    {{"vswitch", "standard", "policy", "failover", "set", "-v", "storageswitch1",
      "--active-uplinks=hwnic3", "--standby-uplinks=hwnic2"},
     {"PortsetImpl::IsValidVirtualSwitch", "VirtualSwitchInfoImpl::GetVirtualSwitchByName",
      "VirtualSwitch::GetEffectiveTeamingPolicy", "VirtualSwitch::GetTeamingPolicy",
      "Portset::GetUplinks", "PnicImpl::IsValidPnic", "VirtualSwitch::SetTeamingPolicy"}},
};

inline const std::vector<SweepCase> kPortGroups{
    {{"vswitch", "standard", "portgroup", "list"},
     {"NetworkInfoImpl::NetworkInfoImpl", "NetworkInfoImpl::GetAllPortGroups", "PortGroup::GetName",
      "ConnectionPoint::GetPortsetName", "PortGroup::GetActiveClients", "PortGroup::GetVlanId"}},
    {{"vswitch", "standard", "portgroup", "add", "-p", "Lab", "-v", "lanswitch0"},
     {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::AddPortGroup"}},
    {{"vswitch", "standard", "portgroup", "remove", "-p", "VM Network", "-v", "lanswitch0"},
     {"NetworkFactory::GetVirtualSwitchById", "VirtualSwitch::RemovePortGroup"}},
    {{"vswitch", "standard", "portgroup", "set", "-p", "VM Network", "--vlan-id=12"},
     {"NetworkFactory::GetPortGroupByName", "PortGroup::SetVlanId"}},
    {{"vswitch", "standard", "portgroup", "policy", "failover", "get", "-p", "Management Network"},
     {"NetworkFactory::GetPortGroupByName", "PortGroup::GetVirtualSwitch",
      "PortGroup::GetEffectiveTeamingPolicy", "PortGroup::GetTeamingPolicy",
      "Portset::GetUplinks"}},
    {{"vswitch", "standard", "portgroup", "policy", "failover", "set", "-p", "VM Network", "-u",
      "-a", "hwnic1"},
     {"PortGroup::GetEffectiveTeamingPolicy", "PortGroup::GetTeamingPolicy",
      "PortGroup::GetVirtualSwitch", "Portset::GetUplinks", "PnicImpl::IsValidPnic",
      "PortGroup::SetTeamingPolicy"}},
    {{"vswitch", "standard", "portgroup", "policy", "failover", "set", "-p", "VM Network", "-l",
      "iphash", "-f", "beacon", "-n", "false", "-b", "false"},
     {"PortGroup::GetTeamingPolicy", "PortGroup::SetTeamingPolicy"}},
    {{"vswitch", "standard", "portgroup", "policy", "security", "get", "-p", "Backup Network"},
     {"PortGroup::GetEffectiveSecurityPolicy", "PortGroup::GetSecurityPolicy"}},
    {{"vswitch", "standard", "portgroup", "policy", "security", "set", "-p", "Backup Network", "-u",
      "-m", "true"},
     {"PortGroup::GetSecurityPolicy", "PortGroup::SetSecurityPolicy"}},
    {{"vswitch", "standard", "portgroup", "policy", "shaping", "get", "-p", "Backup Network"},
     {"PortGroup::GetEffectiveShapingPolicy", "PortGroup::GetShapingPolicy"}},
    {{"vswitch", "standard", "portgroup", "policy", "shaping", "set", "-p", "VM Network", "-e",
      "true", "-b", "10", "-k", "20", "-t", "30"},
     {"PortGroup::GetShapingPolicy", "PortGroup::GetEffectiveShapingPolicy",
      "PortGroup::SetShapingPolicy"}},
};

inline const std::vector<SweepCase> kDistributedSwitchesAndLacp{
    {{"vswitch", "dvs", "zanvex", "list"},
     {"VirtualSwitchInfoImpl::GetDVSwitches", "NetworkInfo::GetPnics", "DVSwitch::GetDvsId",
      "DVSwitchImpl::GetDVPorts", "DVPortImpl::IsInUse", "Portset::GetUplinks"}},
    {{"vswitch", "dvs", "zanvex", "list", "-v", "distswitch0"},
     {"NetworkFactory::GetDVSwitchByName", "DVSwitchImpl::GetBeaconTimeout"}},
    {{"vswitch", "dvs", "zanvex", "lacp", "config", "get"},
     {"VirtualSwitchInfoImpl::GetOpaqueDVSwitches", "DVSwitch::GetUplinkPorts",
      "NetworkFactory::GetDVPort", "DVPort::GetLacpConfig", "DVSwitch::GetLagConfigs",
      "DVPort::GetName"}},
    {{"vswitch", "dvs", "zanvex", "lacp", "status", "get", "-s", "distswitch0"},
     {"DVSwitch::GetLacpStatus", "DVSwitch::IsLacpStateOnDpu"}},
    {{"vswitch", "dvs", "zanvex", "lacp", "stats", "get"}, {"DVSwitch::GetLacpStatus"}},
    {{"vswitch", "dvs", "zanvex", "lacp", "timeout", "set", "-s", "distswitch0", "-l", "1", "-t",
      "1"},
     {"NetworkFactory::GetDVSwitchByName", "DVSwitch::SetLacpTimeout"}},
};

inline const std::vector<SweepCase> kEnsContexts{
    {{"ens", "maxLcores", "get"}, {"NetworkFactory::GetNetworkInfo"}},
    {{"ens", "maxLcores", "set", "-n", "6"}, {"NetworkInfo::SetEnsMaxLcores"}},
    {{"ens", "lcore", "add", "-l", "5"}, {"NetworkInfo::CreateEnsLcore"}},
    {{"ens", "lcore", "remove", "-l", "3"}, {"NetworkInfo::DestroyEnsLcore"}},
    {{"ens", "lcore", "list"},
     {"NetworkInfo::GetEnsLcores", "NetworkInfo::GetEnsLcoreSwitch",
      "NetworkInfo::GetEnsLcoreAffinity"}},
    {{"ens", "lcore", "switch", "get", "-l", "0"}, {"NetworkInfo::GetEnsLcoreSwitch"}},
    {{"ens", "lcore", "switch", "add", "-l", "3", "-s", "lanswitch0"},
     {"NetworkInfo::SetEnsLcoreSwitch"}},
    {{"ens", "lcore", "switch", "remove", "-l", "0"}, {"NetworkInfo::SetEnsLcoreSwitch"}},
    {{"ens", "lcore", "affinity", "get", "-l", "0"}, {"NetworkInfo::GetEnsLcoreAffinity"}},
    {{"ens", "lcore", "affinity", "set", "-l", "0", "-a", "1"},
     {"NetworkInfo::SetEnsLcoreAffinity"}},
};

inline const std::vector<SweepCase> kPortsAndVms{
    {{"port", "stats", "get", "-p", "3011"},
     {"VirtualSwitchInfoImpl::GetAllSwitches", "Portset::GetPorts", "PortImpl::GetId",
      "PortImpl::GetPortStats", "PortImpl::GetPacketStats"}},
    {{"port", "filter", "stats", "get", "-p", "1010"},
     {"PortImpl::GetFilterStats", "PortImpl::GetType"}},
    {{"vm", "list"},
     {"VirtualSwitchInfoImpl::IsLegacySwitch", "VirtualSwitchInfoImpl::IsDVSwitch",
      "VirtualSwitchInfoImpl::IsOpaqueSwitch", "PortImpl::GetWorldLeader",
      "PortImpl::GetPortGroupName", "PortImpl::GetDVPortID", "PortsetImpl::GetSwitchKey",
      "DVPortImpl::DVPortImpl", "DVPort::GetDVPortgroupId", "WorldImpl::WorldImpl",
      "WorldImpl::GetWorldName"}},
    {{"vm", "port", "list", "-w", "1049601"},
     {"DVSwitch::GetDvsName", "PortImpl::GetMacAddresses", "PortImpl::GetPortClientIpv4Address",
      "PortImpl::GetSchedTeamUplink", "PnicImpl::PnicImpl", "PnicImpl::GetPort", "Pnic::GetName"}},
};

}  // namespace VswitchSweeps
