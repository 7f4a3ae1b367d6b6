// Every host operation of every IP services command, failed in turn: each run ends in a
// message and no root, except where a command keeps a root beside its message or has no
// handler for what fails.
#include <algorithm>

#include "IpServicesTest.h"

namespace {

using IpServicesTesting::Words;

class IpServicesFaultSweep : public IpServicesTesting::IpServicesTest {
protected:
    // The operations a normal run of `words` makes, on a fresh default host.
    Words Operations(const Words& words) {
        Testing::TemporaryDirectory fresh;
        HostSim::UseStateDirectory(fresh.Path());
        HostSim::StartTrace();
        Run(words);
        Words names;
        for (const auto& call : HostSim::StopTrace()) {
            names.push_back(call.operation);
        }
        HostSim::UseStateDirectory(StateDirectory());
        return names;
    }

    // Those of the operations whose name starts with one of `prefixes`.
    Words OperationsOf(const Words& words, const Words& prefixes) {
        Words chosen;
        for (const auto& name : Operations(words)) {
            if (std::any_of(prefixes.begin(), prefixes.end(), [&name](const std::string& prefix) {
                    return name.rfind(prefix, 0) == 0;
                })) {
                chosen.push_back(name);
            }
        }
        return chosen;
    }

    void Sweep(const Words& words, const Words& expected, const SweepRules& rules = {}) {
        SCOPED_TRACE(::testing::PrintToString(words));
        Words swept;
        for (const auto& call : ExpectEveryFaultFails(words, rules)) {
            swept.push_back(call.operation);
        }
        for (const auto& operation : expected) {
            EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end()) << operation;
        }
    }
};

TEST_F(IpServicesFaultSweep, Routes) {
    Sweep({"ip", "route", "ipv4", "add", "-n", "203.0.113.16/28", "-g", "192.0.2.254"},
          {"RoutingInfoImpl::RoutingInfoImpl", "RoutingInfoImpl::AddKelmRoute"});
    Sweep({"ip", "route", "ipv4", "remove", "-n", "203.0.113.64/26", "-g", "192.0.2.254", "-N",
           "defaultTcpipStack"},
          {"RoutingInfoImpl::RemoveKelmRoute"});
    Sweep({"ip", "route", "ipv4", "remove", "-n", "default", "-g", "192.0.2.1"},
          {"RoutingInfoImpl::GetKelmDefaultGateway", "RoutingInfoImpl::SetKelmDefaultGateway"});
    Sweep({"ip", "route", "ipv4", "remove", "-n", "default", "-g", "198.51.100.1", "-N", "glidex"},
          {"RoutingInfoImpl::GetKelmDefaultGateway", "RoutingInfoImpl::SetKelmDefaultGateway"});
    Sweep({"ip", "route", "ipv4", "list"},
          {"RoutingInfoImpl::GetCurrentKelmRoutes", "RoutingInfoImpl::GetDefaultGatewaySource"});
    Sweep({"ip", "route", "ipv6", "add", "-n", "2001:db8:aa::/48", "-g", "2001:db8:0:1::fe"},
          {"NetworkInfoImpl::NetworkInfoImpl", "RoutingInfoImpl::AddIpv6KelmRoute",
           "NetworkInfoImpl::GetNetDumperEnabled", "NetworkInfo::RefreshNetDumper"});
    Sweep({"ip", "route", "ipv6", "remove", "-n", "default", "-g", "2001:db8:0:1::1"},
          {"RoutingInfoImpl::GetIpv6KelmDefaultGateway",
           "RoutingInfoImpl::SetIpv6KelmDefaultGateway", "NetworkInfo::RefreshNetDumper"});
    Sweep({"ip", "route", "ipv6", "remove", "-n", "2001:db8:0:100::/56", "-g", "2001:db8:0:1::fe"},
          {"RoutingInfoImpl::RemoveIpv6KelmRoute"});
    Sweep({"ip", "route", "ipv6", "list", "-t", "system"},
          {"RoutingInfoImpl::GetCurrentIpv6KelmRoutes"});
}

TEST_F(IpServicesFaultSweep, NeighborsConnectionsAndMulticast) {
    // The neighbour list has no handler: every failure leaves the command.
    const Words list{"ip", "neighbor", "list", "-i", "kelm0"};
    Sweep(list,
          {"RoutingInfoImpl::GetCurrentIpv4KelmNeighbors", "RoutingInfoImpl::GetIpv4NeighborType",
           "NetworkInfoImpl::IsKelmIpv6Enabled", "RoutingInfoImpl::GetCurrentIpv6KelmNeighbors",
           "RoutingInfoImpl::GetIpv6NeighborState", "RoutingInfoImpl::GetIpv6NeighborType"},
          {.escapingOperations = Operations(list)});
    // Removal looks the interface up ahead of its handler.
    const Words remove{"ip", "neighbor",         "remove", "-v",   "6",
                       "-a", "2001:db8:0:1::31", "-i",     "kelm0"};
    Sweep(remove, {"NetworkInfoImpl::IsKelmIpv6Enabled", "RoutingInfoImpl::RemoveIpv6Neighbor"},
          {.escapingOperations =
               OperationsOf(remove, {"KelmNicInfo", "KelmNic::", "RoutingInfoImpl::RoutingInfoImpl",
                                     "NetworkInfoImpl::NetworkInfoImpl"})});
    Sweep({"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.31"},
          {"RoutingInfoImpl::RemoveIpv4Neighbor"},
          {.escapingOperations = {"KelmNicInfoImpl::KelmNicInfoImpl",
                                  "RoutingInfoImpl::RoutingInfoImpl",
                                  "NetworkInfoImpl::NetworkInfoImpl"}});
    Sweep({"ip", "connection", "list"},
          {"NetworkInfoImpl::GetCurrentTcpKelmConnections",
           "NetworkInfoImpl::GetCurrentUdpKelmConnections",
           "NetworkInfoImpl::GetCurrentIpKelmConnections", "ResourceInfoImpl::ResourceInfoImpl",
           "ResourceInfoImpl::GetWorldName"});
    Sweep({"multicast", "group", "list"}, {"KelmNic::GetMulticastGroups"});
}

TEST_F(IpServicesFaultSweep, NameServices) {
    const SweepRules rootStays{.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"},
                               .rootMayStay = true};
    Sweep({"ip", "dns", "server", "list", "-N", "glidex"}, {"DnsConfigImpl::GetNameServers"},
          {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}});
    const Words add{"ip", "dns", "server", "add", "-s", "192.0.2.54"};
    auto addRules = rootStays;
    for (const auto& name : OperationsOf(add, {"KelmNicInfo", "KelmNic::"})) {
        addRules.escapingOperations.push_back(name);
    }
    Sweep(add, {"DnsConfigImpl::AddUserNameServer", "DnsConfigImpl::SaveConfig"}, addRules);
    Sweep({"ip", "dns", "server", "remove", "-s", "192.0.2.53"},
          {"DnsConfigImpl::RemoveNameServer", "DnsConfigImpl::SaveConfig"}, rootStays);
    Sweep({"ip", "dns", "server", "remove", "-a", "-N", "glidex"},
          {"DnsConfigImpl::RemoveNameServers", "DnsConfigImpl::SaveConfig"}, rootStays);
    Sweep({"ip", "dns", "search", "list"}, {"DnsConfigImpl::GetSearchDomainsString"},
          {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}});
    Sweep({"ip", "dns", "search", "add", "-d", "lab.example.com"},
          {"DnsConfigImpl::AddUserSearchDomain", "DnsConfigImpl::SaveConfig"}, rootStays);
    Sweep({"ip", "dns", "search", "remove", "-d", "example.com"},
          {"DnsConfigImpl::RemoveSearchDomain", "DnsConfigImpl::SaveConfig"}, rootStays);
    Sweep({"ip", "hosts", "list"}, {"HostsFile::HostsFile", "HostsFile::GetEntriesFromConfig"});
    Sweep({"ip", "hosts", "add", "-I", "192.0.2.77", "-H", "lab.example.com", "-A", "lab"},
          {"HostsFile::AddEntryFromUser"});
    Sweep({"ip", "hosts", "remove", "-I", "192.0.2.31", "-H", "console.mgmt.example.com"},
          {"HostsFile::RemoveEntryFromUser"});
    Sweep({"ip", "get"}, {"NetworkInfoImpl::IsKelmIpv6Enabled"});
    Sweep({"ip", "set", "-e", "false"}, {"NetworkInfoImpl::SetKelmIpv6Enabled"});
}

TEST_F(IpServicesFaultSweep, Ipsec) {
    Sweep({"ip", "ipsec",       "sa", "add", "-n", "sa9",        "-s", "2001:db8::1",
           "-d", "2001:db8::2", "-p", "99",  "-e", "aes128-cbc", "-k", "key",
           "-i", "hmac-sha1",   "-K", "key", "-m", "tunnel"},
          {"IpSecConfigImpl::IpSecConfigImpl", "IpSecConfigImpl::StringToIpSecMode",
           "IpSecConfigImpl::StringToIpSecEncyptAlgo", "IpSecConfigImpl::StringToIpSecAuthAlgo",
           "IpSecConfigImpl::AddSADConfig"});
    Sweep({"ip", "ipsec", "sa", "remove", "-n", "sa-mgmt0"}, {"IpSecConfigImpl::RemoveSADConfig"});
    Sweep({"ip", "ipsec", "sa", "remove", "-n", "auto", "-s", "2001:db8:0:1::10", "-d",
           "2001:db8:0:1::42", "-p", "2f1a"},
          {"IpSecConfigImpl::RemoveAutoSADConfig"});
    Sweep({"ip", "ipsec", "sa", "remove", "-a"}, {"IpSecConfigImpl::FlushSADConfig"});
    Sweep({"ip", "ipsec", "sa", "list"}, {"IpSecConfigImpl::GetSADConfigList"});
    Sweep({"ip", "ipsec",         "sp", "add",      "-n", "sp9", "-s", "any",
           "-d", "2001:db8::/32", "-p", "0",        "-P", "0",   "-A", "ipsec",
           "-m", "transport",     "-a", "sa-mgmt0", "-w", "out"},
          {"IpSecConfigImpl::StringToIpSecULProtoType", "IpSecConfigImpl::StringToIpSecDirection",
           "IpSecConfigImpl::StringToIpSecAction", "IpSecConfigImpl::StringToIpSecMode",
           "IpSecConfigImpl::AddSPDConfig"});
    Sweep({"ip", "ipsec", "sp", "remove", "-n", "sp-drop1"}, {"IpSecConfigImpl::RemoveSPDConfig"});
    Sweep({"ip", "ipsec", "sp", "remove", "-a"}, {"IpSecConfigImpl::FlushSPDConfig"});
    Sweep({"ip", "ipsec", "sp", "list"}, {"IpSecConfigImpl::GetSPDConfigList"});
}

}  // namespace
