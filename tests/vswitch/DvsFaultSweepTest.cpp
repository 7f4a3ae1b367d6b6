// Every host operation of the distributed switch, LACP, ENS, port and VM commands, failed in
// turn: each run ends in the host's message (behind the command's prefix) and no root.
#include <algorithm>

#include "support/CommandTest.h"

namespace {

using Words = std::vector<std::string>;

class DvsFaultSweep : public Testing::CommandTest {
protected:
    // Sweeps `network <words...>` and checks that the sweep failed each of `expected`.
    void Sweep(const Words& words, const Words& expected) {
        SCOPED_TRACE(::testing::PrintToString(words));
        Words swept;
        for (const auto& call : ExpectEveryFaultFails(words)) {
            swept.push_back(call.operation);
        }
        for (const auto& operation : expected) {
            EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end()) << operation;
        }
    }
};

TEST_F(DvsFaultSweep, DistributedSwitchesAndLacp) {
    Sweep({"vswitch", "dvs", "zanvex", "list"},
          {"VirtualSwitchInfoImpl::GetDVSwitches", "NetworkInfo::GetPnics", "DVSwitch::GetDvsId",
           "DVSwitchImpl::GetDVPorts", "DVPortImpl::IsInUse", "Portset::GetUplinks"});
    Sweep({"vswitch", "dvs", "zanvex", "list", "-v", "distswitch0"},
          {"NetworkFactory::GetDVSwitchByName", "DVSwitchImpl::GetBeaconTimeout"});
    Sweep({"vswitch", "dvs", "zanvex", "lacp", "config", "get"},
          {"VirtualSwitchInfoImpl::GetOpaqueDVSwitches", "DVSwitch::GetUplinkPorts",
           "NetworkFactory::GetDVPort", "DVPort::GetLacpConfig", "DVSwitch::GetLagConfigs",
           "DVPort::GetName"});
    Sweep({"vswitch", "dvs", "zanvex", "lacp", "status", "get", "-s", "distswitch0"},
          {"DVSwitch::GetLacpStatus", "DVSwitch::IsLacpStateOnDpu"});
    Sweep({"vswitch", "dvs", "zanvex", "lacp", "stats", "get"}, {"DVSwitch::GetLacpStatus"});
    Sweep({"vswitch", "dvs", "zanvex", "lacp", "timeout", "set", "-s", "distswitch0", "-l", "1",
           "-t", "1"},
          {"NetworkFactory::GetDVSwitchByName", "DVSwitch::SetLacpTimeout"});
}

TEST_F(DvsFaultSweep, EnsContexts) {
    Sweep({"ens", "maxLcores", "get"}, {"NetworkFactory::GetNetworkInfo"});
    Sweep({"ens", "maxLcores", "set", "-n", "6"}, {"NetworkInfo::SetEnsMaxLcores"});
    Sweep({"ens", "lcore", "add", "-l", "5"}, {"NetworkInfo::CreateEnsLcore"});
    Sweep({"ens", "lcore", "remove", "-l", "3"}, {"NetworkInfo::DestroyEnsLcore"});
    Sweep({"ens", "lcore", "list"}, {"NetworkInfo::GetEnsLcores", "NetworkInfo::GetEnsLcoreSwitch",
                                     "NetworkInfo::GetEnsLcoreAffinity"});
    Sweep({"ens", "lcore", "switch", "get", "-l", "0"}, {"NetworkInfo::GetEnsLcoreSwitch"});
    Sweep({"ens", "lcore", "switch", "add", "-l", "3", "-s", "lanswitch0"},
          {"NetworkInfo::SetEnsLcoreSwitch"});
    Sweep({"ens", "lcore", "switch", "remove", "-l", "0"}, {"NetworkInfo::SetEnsLcoreSwitch"});
    Sweep({"ens", "lcore", "affinity", "get", "-l", "0"}, {"NetworkInfo::GetEnsLcoreAffinity"});
    Sweep({"ens", "lcore", "affinity", "set", "-l", "0", "-a", "1"},
          {"NetworkInfo::SetEnsLcoreAffinity"});
}

TEST_F(DvsFaultSweep, PortsAndVms) {
    Sweep({"port", "stats", "get", "-p", "3011"},
          {"VirtualSwitchInfoImpl::GetAllSwitches", "Portset::GetPorts", "PortImpl::GetId",
           "PortImpl::GetPortStats", "PortImpl::GetPacketStats"});
    Sweep({"port", "filter", "stats", "get", "-p", "1010"},
          {"PortImpl::GetFilterStats", "PortImpl::GetType"});
    Sweep({"vm", "list"},
          {"VirtualSwitchInfoImpl::IsLegacySwitch", "VirtualSwitchInfoImpl::IsDVSwitch",
           "VirtualSwitchInfoImpl::IsOpaqueSwitch", "PortImpl::GetWorldLeader",
           "PortImpl::GetPortGroupName", "PortImpl::GetDVPortID", "PortsetImpl::GetSwitchKey",
           "DVPortImpl::DVPortImpl", "DVPort::GetDVPortgroupId", "WorldImpl::WorldImpl",
           "WorldImpl::GetWorldName"});
    Sweep({"vm", "port", "list", "-w", "1049601"},
          {"DVSwitch::GetDvsName", "PortImpl::GetMacAddresses",
           "PortImpl::GetPortClientIpv4Address", "PortImpl::GetSchedTeamUplink",
           "PnicImpl::PnicImpl", "PnicImpl::GetPort", "Pnic::GetName"});
}

}  // namespace
