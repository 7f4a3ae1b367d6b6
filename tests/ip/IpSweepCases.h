// The fault sweep's lines of the IP and multicast commands: each command line, the host
// operations its sweep must fail, and what else the sweep allows.
#pragma once

#include "support/CommandTest.h"

namespace IpSweeps {

using Testing::SweepCase;

inline const std::vector<SweepCase> kInterfaceLifecycle{
    // The netstack look-up and the connection point's validity come ahead of the guarded
    // block.
    {{"ip", "interface", "add", "-p", "VM Network", "-i", "kelm5", "-N", "defaultTcpipStack"},
     {"KelmNicInfoImpl::AddKelmNic", "KelmNic::SetIpConfig"},
     {.escapingOperations = {"NetworkInfoImpl::NetworkInfoImpl",
                             "NetworkInfo::ListNetstackInstances", "NetstackInstance::GetKey",
                             "ConnectionPoint::IsValid"}}},
    {{"ip", "interface", "add", "-s", "distswitch0", "-P", "9", "-N", "glidex"},
     {"KelmNicInfoImpl::AddKelmNic", "KelmNicInfoImpl::GetKelmNicsByTag", "KelmNic::AddTag",
      "KelmNic::GetNetstackInstanceKey"},
     {.escapingOperations = {"NetworkInfoImpl::NetworkInfoImpl",
                             "NetworkInfo::ListNetstackInstances", "NetstackInstance::GetKey"}}},
    {{"ip", "interface", "remove", "-p", "Management Network"},
     {"KelmNicInfoImpl::RemoveKelmNic"},
     {.escapingOperations = {"ConnectionPoint::IsValid"}}},
    // A DVPort's validity is first asked while the DVPort is built, in the guarded block.
    {{"ip", "interface", "remove", "-s", "distswitch0", "-P", "8"},
     {"KelmNicInfoImpl::RemoveKelmNic", "ConnectionPoint::IsValid"}},
    {{"ip", "interface", "remove", "-i", "kelm2"}, {"KelmNicInfo::GetKelmNics", "KelmNic::Remove"}},
};

inline const std::vector<SweepCase> kInterfaceSettings{
    {{"ip", "interface", "list"},
     {"KelmNicInfo::GetKelmNics", "KelmNic::GetInterfaceName", "KelmNic::GetMacAddress",
      "KelmNic::GetConnectionPoint", "KelmNic::GetMtu", "KelmNic::IsEnabled"}},
    {{"ip", "interface", "list", "-t", "system", "-N", "defaultTcpipStack"},
     {"KelmNicInfoImpl::GetKelmNicsByInstanceKey"}},
    {{"ip", "interface", "set", "-i", "kelm0", "-e", "false", "-m", "9000"},
     {"KelmNic::Disable", "KelmNic::SetMtu"}},
    {{"ip", "interface", "ipv4", "get"},
     {"KelmNic::GetIpConfig", "RoutingInfoImpl::GetKelmDefaultGateway"}},
    {{"ip", "interface", "ipv4", "set", "-i", "kelm0", "-t", "static", "-I", "192.0.2.50", "-N",
      "255.255.255.0"},
     {"KelmNicInfoImpl::GetKelmNicByInterface", "KelmNic::SetIpConfig"}},
    {{"ip", "interface", "ipv4", "address", "list", "-i", "kelm1"},
     {"KelmNicInfoImpl::GetKelmNicByInterface", "KelmNic::GetIpConfig",
      "RoutingInfoImpl::GetKelmDefaultGateway"}},
    {{"ip", "interface", "ipv6", "get"}, {"KelmNic::GetIpConfig"}},
    {{"ip", "interface", "ipv6", "set", "-i", "kelm0", "-e", "true"}, {"KelmNic::SetIpConfig"}},
    {{"ip", "interface", "ipv6", "address", "list"}, {"KelmNic::GetIpConfig"}},
    {{"ip", "interface", "ipv6", "address", "add", "-i", "kelm0", "-I", "2001:db8:0:1::77/64"},
     {"KelmNic::SetIpConfig"}},
    {{"ip", "interface", "ipv6", "address", "remove", "-i", "kelm0", "-I", "2001:db8:0:1::10/64"},
     {"KelmNic::SetIpConfig"}},
    {{"ip", "interface", "tag", "add", "-i", "kelm0", "-t", "Provisioning"},
     {"NetworkInfo::GetNetstackState", "KelmNic::AddTag"}},
    {{"ip", "interface", "tag", "get", "-i", "kelm0"}, {"KelmNic::GetTags"}},
    // Only an interface made for it carries a tag that may be removed.
    {{"ip", "interface", "tag", "remove", "-i", "kelm5", "-t", "Management"},
     {"Host::GetNetworkInfo", "NetworkInfo::GetPredefinedNetstackKeys", "KelmNic::RemoveTag"},
     {.setup = {{"vswitch", "standard", "portgroup", "add", "-v", "lanswitch0", "-p",
                 "Lab Network"},
                {"ip", "netstack", "add", "-N", "labstack1"},
                {"ip", "interface", "add", "-p", "Lab Network", "-N", "labstack1", "-i", "kelm5"},
                {"ip", "interface", "tag", "add", "-i", "kelm5", "-t", "Management"}}}},
};

inline const std::vector<SweepCase> kNetstacks{
    {{"ip", "netstack", "list"}, {"NetworkInfo::ListNetstackInstances"}},
    {{"ip", "netstack", "get", "-N", "glidex"},
     {"NetworkInfo::LookupNetstackInstanceByKey", "NetstackInstance::GetState",
      "NetstackInstance::GetCurrentMaxConnections", "NetstackInstance::GetEcnStatus"}},
    {{"ip", "netstack", "add", "-N", "mirrorlock", "--disabled"},
     {"NetworkInfo::AddNetstackInstance"}},
    {{"ip", "netstack", "set", "-N", "glidex", "-n", "Glide", "-m", "5000", "-c", "newreno",
      "--ecn", "disabled"},
     {}},
    // Enabling and removal need an instance made first.
    {{"ip", "netstack", "set", "-N", "labstack1", "-e", "true"},
     {"NetstackInstance::Enable"},
     {.setup = {{"ip", "netstack", "add", "-N", "labstack1", "--disabled"}}}},
    {{"ip", "netstack", "remove", "-N", "labstack1"},
     {"NetworkInfo::RemoveNetstackInstance"},
     {.setup = {{"ip", "netstack", "add", "-N", "labstack1", "--disabled"}}}},
};

inline const std::vector<SweepCase> kRoutes{
    {{"ip", "route", "ipv4", "add", "-n", "203.0.113.16/28", "-g", "192.0.2.254"},
     {"RoutingInfoImpl::RoutingInfoImpl", "RoutingInfoImpl::AddKelmRoute"}},
    {{"ip", "route", "ipv4", "remove", "-n", "203.0.113.64/26", "-g", "192.0.2.254", "-N",
      "defaultTcpipStack"},
     {"RoutingInfoImpl::RemoveKelmRoute"}},
    {{"ip", "route", "ipv4", "remove", "-n", "default", "-g", "192.0.2.1"},
     {"RoutingInfoImpl::GetKelmDefaultGateway", "RoutingInfoImpl::SetKelmDefaultGateway"}},
    {{"ip", "route", "ipv4", "remove", "-n", "default", "-g", "198.51.100.1", "-N", "glidex"},
     {"RoutingInfoImpl::GetKelmDefaultGateway", "RoutingInfoImpl::SetKelmDefaultGateway"}},
    {{"ip", "route", "ipv4", "list"},
     {"RoutingInfoImpl::GetCurrentKelmRoutes", "RoutingInfoImpl::GetDefaultGatewaySource"}},
    {{"ip", "route", "ipv6", "add", "-n", "2001:db8:aa::/48", "-g", "2001:db8:0:1::fe"},
     {"NetworkInfoImpl::NetworkInfoImpl", "RoutingInfoImpl::AddIpv6KelmRoute",
      "NetworkInfoImpl::GetNetDumperEnabled", "NetworkInfo::RefreshNetDumper"}},
    {{"ip", "route", "ipv6", "remove", "-n", "default", "-g", "2001:db8:0:1::1"},
     {"RoutingInfoImpl::GetIpv6KelmDefaultGateway", "RoutingInfoImpl::SetIpv6KelmDefaultGateway",
      "NetworkInfo::RefreshNetDumper"}},
    {{"ip", "route", "ipv6", "remove", "-n", "2001:db8:0:100::/56", "-g", "2001:db8:0:1::fe"},
     {"RoutingInfoImpl::RemoveIpv6KelmRoute"}},
    {{"ip", "route", "ipv6", "list", "-t", "system"},
     {"RoutingInfoImpl::GetCurrentIpv6KelmRoutes"}},
};

inline const std::vector<SweepCase> kNeighborsConnectionsAndMulticast{
    // The neighbour list has no handler: every failure leaves the command.
    {{"ip", "neighbor", "list", "-i", "kelm0"},
     {"RoutingInfoImpl::GetCurrentIpv4KelmNeighbors", "RoutingInfoImpl::GetIpv4NeighborType",
      "NetworkInfoImpl::IsKelmIpv6Enabled", "RoutingInfoImpl::GetCurrentIpv6KelmNeighbors",
      "RoutingInfoImpl::GetIpv6NeighborState", "RoutingInfoImpl::GetIpv6NeighborType"},
     {.everyFailureEscapes = true}},
    // Removal looks the interface up ahead of its handler.
    {{"ip", "neighbor", "remove", "-v", "6", "-a", "2001:db8:0:1::31", "-i", "kelm0"},
     {"NetworkInfoImpl::IsKelmIpv6Enabled", "RoutingInfoImpl::RemoveIpv6Neighbor"},
     {.escapingOperations = {"KelmNicInfoImpl::KelmNicInfoImpl", "RoutingInfoImpl::RoutingInfoImpl",
                             "NetworkInfoImpl::NetworkInfoImpl",
                             "KelmNicInfoImpl::GetKelmNicByInterface",
                             "KelmNic::GetNetstackInstanceKey"}}},
    {{"ip", "neighbor", "remove", "-v", "4", "-a", "192.0.2.31"},
     {"RoutingInfoImpl::RemoveIpv4Neighbor"},
     {.escapingOperations = {"KelmNicInfoImpl::KelmNicInfoImpl", "RoutingInfoImpl::RoutingInfoImpl",
                             "NetworkInfoImpl::NetworkInfoImpl"}}},
    {{"ip", "connection", "list"},
     {"NetworkInfoImpl::GetCurrentTcpKelmConnections",
      "NetworkInfoImpl::GetCurrentUdpKelmConnections",
      "NetworkInfoImpl::GetCurrentIpKelmConnections", "ResourceInfoImpl::ResourceInfoImpl",
      "ResourceInfoImpl::GetWorldName"}},
    {{"multicast", "group", "list"}, {"KelmNic::GetMulticastGroups"}},
};

// A DNS change keeps a true root beside the message of a failed save.
inline const std::vector<SweepCase> kNameServices{
    {{"ip", "dns", "server", "list", "-N", "glidex"},
     {"DnsConfigImpl::GetNameServers"},
     {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}}},
    // The interfaces' DHCP settings are read ahead of the handler, to refuse a server while
    // DHCP gives them.
    {{"ip", "dns", "server", "add", "-s", "192.0.2.54"},
     {"DnsConfigImpl::AddUserNameServer", "DnsConfigImpl::SaveConfig"},
     {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl", "KelmNicInfoImpl::KelmNicInfoImpl",
                             "KelmNicInfoImpl::GetKelmNicsByInstanceKey", "KelmNic::GetIpConfig",
                             "KelmNic::GetConfiguredIpConfig"},
      .rootMayStay = true}},
    {{"ip", "dns", "server", "remove", "-s", "192.0.2.53"},
     {"DnsConfigImpl::RemoveNameServer", "DnsConfigImpl::SaveConfig"},
     {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}, .rootMayStay = true}},
    {{"ip", "dns", "server", "remove", "-a", "-N", "glidex"},
     {"DnsConfigImpl::RemoveNameServers", "DnsConfigImpl::SaveConfig"},
     {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}, .rootMayStay = true}},
    {{"ip", "dns", "search", "list"},
     {"DnsConfigImpl::GetSearchDomainsString"},
     {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}}},
    {{"ip", "dns", "search", "add", "-d", "lab.example.com"},
     {"DnsConfigImpl::AddUserSearchDomain", "DnsConfigImpl::SaveConfig"},
     {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}, .rootMayStay = true}},
    {{"ip", "dns", "search", "remove", "-d", "example.com"},
     {"DnsConfigImpl::RemoveSearchDomain", "DnsConfigImpl::SaveConfig"},
     {.escapingOperations = {"DnsConfigImpl::DnsConfigImpl"}, .rootMayStay = true}},
    {{"ip", "hosts", "list"}, {"HostsFile::HostsFile", "HostsFile::GetEntriesFromConfig"}},
    {{"ip", "hosts", "add", "-I", "192.0.2.77", "-H", "lab.example.com", "-A", "lab"},
     {"HostsFile::AddEntryFromUser"}},
    {{"ip", "hosts", "remove", "-I", "192.0.2.31", "-H", "console.mgmt.example.com"},
     {"HostsFile::RemoveEntryFromUser"}},
    {{"ip", "get"}, {"NetworkInfoImpl::IsKelmIpv6Enabled"}},
    {{"ip", "set", "-e", "false"}, {"NetworkInfoImpl::SetKelmIpv6Enabled"}},
};

inline const std::vector<SweepCase> kIpsec{
    {{"ip", "ipsec",       "sa", "add", "-n", "sa9",        "-s", "2001:db8::1",
      "-d", "2001:db8::2", "-p", "99",  "-e", "aes128-cbc", "-k", "key",
      "-i", "hmac-sha1",   "-K", "key", "-m", "tunnel"},
     {"IpSecConfigImpl::IpSecConfigImpl", "IpSecConfigImpl::StringToIpSecMode",
      "IpSecConfigImpl::StringToIpSecEncyptAlgo", "IpSecConfigImpl::StringToIpSecAuthAlgo",
      "IpSecConfigImpl::AddSADConfig"}},
    {{"ip", "ipsec", "sa", "remove", "-n", "sa-mgmt0"}, {"IpSecConfigImpl::RemoveSADConfig"}},
    {{"ip", "ipsec", "sa", "remove", "-n", "auto", "-s", "2001:db8:0:1::10", "-d",
      "2001:db8:0:1::42", "-p", "2f1a"},
     {"IpSecConfigImpl::RemoveAutoSADConfig"}},
    {{"ip", "ipsec", "sa", "remove", "-a"}, {"IpSecConfigImpl::FlushSADConfig"}},
    {{"ip", "ipsec", "sa", "list"}, {"IpSecConfigImpl::GetSADConfigList"}},
    {{"ip", "ipsec",         "sp", "add",      "-n", "sp9", "-s", "any",
      "-d", "2001:db8::/32", "-p", "0",        "-P", "0",   "-A", "ipsec",
      "-m", "transport",     "-a", "sa-mgmt0", "-w", "out"},
     {"IpSecConfigImpl::StringToIpSecULProtoType", "IpSecConfigImpl::StringToIpSecDirection",
      "IpSecConfigImpl::StringToIpSecAction", "IpSecConfigImpl::StringToIpSecMode",
      "IpSecConfigImpl::AddSPDConfig"}},
    {{"ip", "ipsec", "sp", "remove", "-n", "sp-drop1"}, {"IpSecConfigImpl::RemoveSPDConfig"}},
    {{"ip", "ipsec", "sp", "remove", "-a"}, {"IpSecConfigImpl::FlushSPDConfig"}},
    {{"ip", "ipsec", "sp", "list"}, {"IpSecConfigImpl::GetSPDConfigList"}},
};

}  // namespace IpSweeps
