// The `network` namespace tree and the plug-in's one entry.
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "frame/Registration.h"

namespace ZanvexCli::NetworkNamespace {
namespace {

using CppTools::AutoCli::Namespace;
using CppTools::AutoCli::NamespaceNode;
using NodeFactory = std::shared_ptr<NamespaceNode> (*)();

// Paths are views, their lengths counted once at compile time, for the look-ups below.
struct NamespaceRow {
    std::string_view path;
    const char* description;
};

// An entry of a namespace: a command, made by `make`, or the sub-namespace of that name.
struct EntryRow {
    constexpr EntryRow(std::string_view parent, const char* name) : parent(parent), name(name) {}
    constexpr EntryRow(std::string_view parent, const char* name, NodeFactory make)
        : parent(parent), name(name), make(make), command(true) {}

    std::string_view parent;
    const char* name;
    NodeFactory make = nullptr;
    // Set with `make`: the address of a function is no constant expression in every build.
    bool command = false;
};

// Namespaces in the order of a depth-first walk, one to a line with its description whole.
// clang-format off
constexpr NamespaceRow kNamespaces[] = {
    {"network",
     "Operations that pertain to the maintenance of networking on an Ostrel host. This includes a wide variety of commands to manipulate virtual networking components (vswitch, portgroup, etc) as well as local host IP, DNS and general host networking settings."},
    {"network ip",
     "Operations that can be performed on kelmnics"},
    {"network ip neighbor",
     "Operations that can be performed on arp tables"},
    {"network ip connection",
     "List active tcpip connections"},
    {"network ip dns",
     "Operations pertaining to Domain Name Server configuration."},
    {"network ip dns server",
     "Operations pertaining to DNS server configuration."},
    {"network ip dns search",
     "Operations pertaining to DNS search domain configuration."},
    {"network ip route",
     "Operations pertaining to route configuration"},
    {"network ip route ipv4",
     "IPv4 route operations"},
    {"network ip route ipv6",
     "IPv6 route operations"},
    {"network ip ipsec",
     "Operations on Internet Protocol Security"},
    {"network ip ipsec sa",
     "Operations pertaining to Security Association"},
    {"network ip ipsec sp",
     "Operations pertaining to Security Policy"},
    {"network ip interface",
     "Operations having to do with the creation, management and deletion of Kelm network interfaces (kelmnic)."},
    {"network ip interface ipv4",
     "Commands to get and set IPv4 settings for kelmnic."},
    {"network ip interface ipv4 address",
     "Commands for managing IPv4 addresses assigned to Kelm network interfaces."},
    {"network ip interface ipv6",
     "Commands to get and set IPv6 settings for kelmnic."},
    {"network ip interface ipv6 address",
     "Commands to list and update IPv6 addresses assigned to the system."},
    {"network ip interface tag",
     "Commands to add and remove tags on kelmnics."},
    {"network ip netstack",
     "Operations having to do with the creation, management and deletion of Kelm Netstack Instances."},
    {"network ip hosts",
     "Operations pertaining to /etc/hosts"},
    {"network multicast",
     "Operations having to do with multicast"},
    {"network multicast group",
     "Operations to list multicast groups"},
    {"network nic",
     "Operations having to do with the configuration of Network Interface Card and getting and updating the NIC settings."},
    {"network nic stats",
     "Get packet statistics for a NIC"},
    {"network nic vlan",
     "Get VLAN information for a NIC"},
    {"network nic vlan stats",
     "Commands to access VLAN statistics for a NIC"},
    {"network nic coalesce",
     "Commands to access coalesce paramaters for a NIC"},
    {"network nic coalesce low",
     "Commands to access coalesce parameters for a NIC at low packet rate"},
    {"network nic coalesce high",
     "Commands to access coalesce parameters for a NIC at high packet rate"},
    {"network nic cso",
     "Commands to access checksum offload settings for a NIC"},
    {"network nic tso",
     "Commands to access TCP segmentation offload settings for a NIC"},
    {"network nic sg",
     "Commands to access scatter-gather settings for a NIC"},
    {"network nic pauseParams",
     "Commands to access pause parameters for a NIC"},
    {"network nic register",
     "Commands to access registers for a NIC"},
    {"network nic eeprom",
     "Commands to access EEPROM for a NIC"},
    {"network nic negotiate",
     "Commands to access negotiation feature on a NIC"},
    {"network nic selftest",
     "Commands to access self test feature on a NIC"},
    {"network nic queue",
     "Commands to access RX/TX netqueue features on a NIC"},
    {"network nic queue loadbalancer",
     "Commands to access load balancer features of netqueue"},
    {"network nic queue loadbalancer state",
     "Commands to access load balancer state on a NIC"},
    {"network nic queue loadbalancer plugin",
     "Commands to access load balancer plugins on a NIC"},
    {"network nic queue count",
     "Commands to access netqueue count on a NIC"},
    {"network nic queue filterclass",
     "Commands to access supported filter class"},
    {"network nic software",
     "Commands to access NIC feature software simulation settings"},
    {"network nic ring",
     "Commands to access NIC RX/TX ring buffer parameters"},
    {"network nic ring preset",
     "Commands to access preset maximums for NIC RX/TX ring buffer parameters."},
    {"network nic ring current",
     "Commands to access current NIC RX/TX ring buffer parameters"},
    {"network nic hwCap",
     "Commands to access hardware capabilities on a NIC."},
    {"network nic hwCap supported",
     "Commands to access supported hardware capabilities of physical NICs."},
    {"network nic hwCap activated",
     "Commands to access activated hardware capabilities of physical NICs."},
    {"network nic dcb",
     "Commands regarding DCB (Data Center Bridging) protocol."},
    {"network nic dcb status",
     "Status information for DCB (Data Center Briding) protocol."},
    {"network nic attachment",
     "Commands to access attachment info for a NIC."},
    {"network sriovnic",
     "Operations having to do with the configuration of SRIOV enabled Network Interface Card and getting and updating the NIC settings."},
    {"network sriovnic vf",
     "Operations related to VFs of a SRIOV capable pNIC"},
    {"network vswitch",
     "Commands to list and manipulate Virtual Switches on an Ostrel host."},
    {"network vswitch standard",
     "Commands to list and manipulate Legacy Virtual Switches on an Ostrel host."},
    {"network vswitch standard uplink",
     "Commands to add and remove uplink on given virtual switch."},
    {"network vswitch standard policy",
     "Commands to manipulate network policy settings governing the given virtual switch."},
    {"network vswitch standard policy shaping",
     "Commands to manipulate shaping policy setting for the given virtual switch."},
    {"network vswitch standard policy security",
     "Commands to manipulate security policy setting for the given virtual switch."},
    {"network vswitch standard policy failover",
     "Commands to manipulate failover policy setting for the given virtual switch."},
    {"network vswitch standard portgroup",
     "Commands to list and manipulate Port Groups on an Ostrel host."},
    {"network vswitch standard portgroup policy",
     "Commands to manipulate network policy settings governing the given portgroup."},
    {"network vswitch standard portgroup policy shaping",
     "Commands to manipulate shaping policy setting for the given portgroup."},
    {"network vswitch standard portgroup policy failover",
     "Commands to manipulate failover policy setting for the given portgroup."},
    {"network vswitch standard portgroup policy security",
     "Commands to manipulate security policy setting for the given portgroup."},
    {"network vswitch dvs",
     "Commands to retrieve Distributed Virtual Switch information"},
    {"network vswitch dvs zanvex",
     "Commands to retrieve Zanvex Orbiq Distributed Switch information"},
    {"network vswitch dvs zanvex lacp",
     "A set of commands for LACP related operations"},
    {"network vswitch dvs zanvex lacp config",
     "Command to get LACP configuration"},
    {"network vswitch dvs zanvex lacp status",
     "Command to get LACP port status"},
    {"network vswitch dvs zanvex lacp stats",
     "Command to get LACP protocol statistics"},
    {"network vswitch dvs zanvex lacp timeout",
     "Command to set LACP LAG timeout"},
    {"network firewall",
     "A set of commands for firewall related operations"},
    {"network firewall ruleset",
     "Commands to list and update firewall ruleset configuration"},
    {"network firewall ruleset client",
     "Commands related to firewall ruleset clients"},
    {"network firewall ruleset rule",
     "Commands to list rules in the ruleset"},
    {"network firewall ruleset allowedip",
     "Commands to list and add/remove allowedip on ruleset"},
    {"network port",
     "Commands to get information about a port"},
    {"network port stats",
     "Commands to get port statistics"},
    {"network port filter",
     "Commands to get port filter information"},
    {"network port filter stats",
     "Commands to get port filter statistics"},
    {"network vm",
     "A set of commands for VM related operations"},
    {"network vm port",
     "Command to list ports of a given VM"},
    {"network ens",
     "Commands to list and manipulate Enhanced Networking Stack (ENS) feature on virtual switch."},
    {"network ens maxLcores",
     "Commands to access maximum number of ENS contexts."},
    {"network ens lcore",
     "Commands to list and manipulate ENS context parameters."},
    {"network ens lcore switch",
     "Commands to access switch associated with given ENS context."},
    {"network ens lcore affinity",
     "Commands to access affinity for a given ENS context."},
};
// clang-format on

}  // namespace

// The commands' classes are named here only for their makers: each is defined in its source.
// clang-format off
constexpr EntryRow kEntries[] = {
    {"network", "ip"},
    {"network", "multicast"},
    {"network", "nic"},
    {"network", "sriovnic"},
    {"network", "vswitch"},
    {"network", "firewall"},
    {"network", "port"},
    {"network", "vm"},
    {"network", "ens"},
    {"network ip", "get", &MakeCommandNode<class IpGet>},
    {"network ip", "set", &MakeCommandNode<class IpSet>},
    {"network ip", "neighbor"},
    {"network ip", "connection"},
    {"network ip", "dns"},
    {"network ip", "route"},
    {"network ip", "ipsec"},
    {"network ip", "interface"},
    {"network ip", "netstack"},
    {"network ip", "hosts"},
    {"network ip dns", "server"},
    {"network ip dns", "search"},
    {"network ip route", "ipv4"},
    {"network ip route", "ipv6"},
    {"network ip ipsec", "sa"},
    {"network ip ipsec", "sp"},
    {"network ip interface", "add", &MakeCommandNode<class IpInterfaceAdd>},
    {"network ip interface", "remove", &MakeCommandNode<class IpInterfaceRemove>},
    {"network ip interface", "list", &MakeCommandNode<class IpInterfaceList>},
    {"network ip interface", "set", &MakeCommandNode<class IpInterfaceSet>},
    {"network ip interface", "ipv4"},
    {"network ip interface", "ipv6"},
    {"network ip interface", "tag"},
    {"network ip interface ipv4", "get", &MakeCommandNode<class IpInterfaceIpv4Get>},
    {"network ip interface ipv4", "set", &MakeCommandNode<class IpInterfaceIpv4Set>},
    {"network ip interface ipv4", "address"},
    {"network ip interface ipv6", "set", &MakeCommandNode<class IpInterfaceIpv6Set>},
    {"network ip interface ipv6", "get", &MakeCommandNode<class IpInterfaceIpv6Get>},
    {"network ip interface ipv6", "address"},
    {"network ip interface ipv4 address", "list", &MakeCommandNode<class IpInterfaceIpv4Get>},
    {"network ip interface ipv6 address", "list", &MakeCommandNode<class IpInterfaceIpv6AddressList>},
    {"network ip interface ipv6 address", "add", &MakeCommandNode<class IpInterfaceIpv6AddressAdd>},
    {"network ip interface ipv6 address", "remove", &MakeCommandNode<class IpInterfaceIpv6AddressRemove>},
    {"network ip interface tag", "add", &MakeCommandNode<class IpInterfaceTagAdd>},
    {"network ip interface tag", "remove", &MakeCommandNode<class IpInterfaceTagRemove>},
    {"network ip interface tag", "get", &MakeCommandNode<class IpInterfaceTagGet>},
    {"network ip netstack", "list", &MakeCommandNode<class IpNetstackInstanceList>},
    {"network ip netstack", "add", &MakeCommandNode<class IpNetstackInstanceAdd>},
    {"network ip netstack", "remove", &MakeCommandNode<class IpNetstackInstanceRemove>},
    {"network ip netstack", "get", &MakeCommandNode<class IpNetstackInstanceGet>},
    {"network ip netstack", "set", &MakeCommandNode<class IpNetstackInstanceSet>},
    {"network multicast", "group"},
    {"network ip neighbor", "list", &MakeCommandNode<class IpNeighborList>},
    {"network ip neighbor", "remove", &MakeCommandNode<class IpNeighborRemove>},
    {"network ip connection", "list", &MakeCommandNode<class IpConnectionList>},
    {"network ip dns server", "list", &MakeCommandNode<class IpDNSServerList>},
    {"network ip dns server", "add", &MakeCommandNode<class IpDNSServerAdd>},
    {"network ip dns server", "remove", &MakeCommandNode<class IpDNSServerRemove>},
    {"network ip dns search", "add", &MakeCommandNode<class IpDNSSearchAdd>},
    {"network ip dns search", "remove", &MakeCommandNode<class IpDNSSearchRemove>},
    {"network ip dns search", "list", &MakeCommandNode<class IpDNSSearchList>},
    {"network ip route ipv4", "add", &MakeCommandNode<class IpRouteIpv4Add>},
    {"network ip route ipv4", "remove", &MakeCommandNode<class IpRouteIpv4Remove>},
    {"network ip route ipv4", "list", &MakeCommandNode<class IpRouteIpv4List>},
    {"network ip route ipv6", "add", &MakeCommandNode<class IpRouteIpv6Add>},
    {"network ip route ipv6", "remove", &MakeCommandNode<class IpRouteIpv6Remove>},
    {"network ip route ipv6", "list", &MakeCommandNode<class IpRouteIpv6List>},
    {"network ip ipsec sa", "add", &MakeCommandNode<class IpIpsecSAAdd>},
    {"network ip ipsec sa", "remove", &MakeCommandNode<class IpIpsecSARemove>},
    {"network ip ipsec sa", "list", &MakeCommandNode<class IpIpsecSAList>},
    {"network ip ipsec sp", "add", &MakeCommandNode<class IpIpsecSPAdd>},
    {"network ip ipsec sp", "remove", &MakeCommandNode<class IpIpsecSPRemove>},
    {"network ip ipsec sp", "list", &MakeCommandNode<class IpIpsecSPList>},
    {"network ip hosts", "list", &MakeCommandNode<class IpHostsList>},
    {"network ip hosts", "add", &MakeCommandNode<class IpHostsAdd>},
    {"network ip hosts", "remove", &MakeCommandNode<class IpHostsRemove>},
    {"network multicast group", "list", &MakeCommandNode<class MulticastGroupList>},
    {"network nic", "list", &MakeCommandNode<class NicList>},
    {"network nic", "up", &MakeCommandNode<class NicUp>},
    {"network nic", "get", &MakeCommandNode<class NicGet>},
    {"network nic", "set", &MakeCommandNode<class NicSet>},
    {"network nic", "down", &MakeCommandNode<class NicDown>},
    {"network nic", "stats"},
    {"network nic", "vlan"},
    {"network nic", "coalesce"},
    {"network nic", "cso"},
    {"network nic", "tso"},
    {"network nic", "sg"},
    {"network nic", "pauseParams"},
    {"network nic", "register"},
    {"network nic", "eeprom"},
    {"network nic", "negotiate"},
    {"network nic", "selftest"},
    {"network nic", "queue"},
    {"network nic", "software"},
    {"network nic", "ring"},
    {"network nic", "hwCap"},
    {"network nic", "dcb"},
    {"network nic", "attachment"},
    {"network nic stats", "get", &MakeCommandNode<class NicStatsGet>},
    {"network nic vlan", "stats"},
    {"network nic vlan stats", "get", &MakeCommandNode<class NicVlanStatsGet>},
    {"network nic vlan stats", "set", &MakeCommandNode<class NicVlanStatsSet>},
    {"network nic coalesce", "get", &MakeCommandNode<class NicCoalesceGet>},
    {"network nic coalesce", "set", &MakeCommandNode<class NicCoalesceSet>},
    {"network nic coalesce", "low"},
    {"network nic coalesce", "high"},
    {"network nic coalesce low", "get", &MakeCommandNode<class NicCoalesceLowGet>},
    {"network nic coalesce low", "set", &MakeCommandNode<class NicCoalesceLowSet>},
    {"network nic coalesce high", "get", &MakeCommandNode<class NicCoalesceHighGet>},
    {"network nic coalesce high", "set", &MakeCommandNode<class NicCoalesceHighSet>},
    {"network nic cso", "get", &MakeCommandNode<class NicCsoGet>},
    {"network nic cso", "set", &MakeCommandNode<class NicCsoSet>},
    {"network nic tso", "get", &MakeCommandNode<class NicTsoGet>},
    {"network nic tso", "set", &MakeCommandNode<class NicTsoSet>},
    {"network nic sg", "get", &MakeCommandNode<class NicSgGet>},
    {"network nic sg", "set", &MakeCommandNode<class NicSgSet>},
    {"network nic pauseParams", "list", &MakeCommandNode<class NicPauseParamsList>},
    {"network nic pauseParams", "set", &MakeCommandNode<class NicPauseParamsSet>},
    {"network nic software", "list", &MakeCommandNode<class NicSoftwareList>},
    {"network nic software", "set", &MakeCommandNode<class NicSoftwareSet>},
    {"network nic queue", "loadbalancer"},
    {"network nic queue", "count"},
    {"network nic queue", "filterclass"},
    {"network nic queue loadbalancer", "list", &MakeCommandNode<class NicQueueLbSettingList>},
    {"network nic queue loadbalancer", "set", &MakeCommandNode<class NicQueueLbSettingSet>},
    {"network nic queue loadbalancer", "state"},
    {"network nic queue loadbalancer", "plugin"},
    {"network nic ring", "preset"},
    {"network nic ring", "current"},
    {"network nic ring preset", "get", &MakeCommandNode<class NicRingPresetGet>},
    {"network nic ring current", "get", &MakeCommandNode<class NicRingCurrentGet>},
    {"network nic ring current", "set", &MakeCommandNode<class NicRingCurrentSet>},
    {"network nic hwCap", "supported"},
    {"network nic hwCap", "activated"},
    {"network nic dcb", "status"},
    {"network nic register", "dump", &MakeCommandNode<class NicRegisterDump>},
    {"network nic eeprom", "dump", &MakeCommandNode<class NicEepromDump>},
    {"network nic eeprom", "change", &MakeCommandNode<class NicEepromChange>},
    {"network nic negotiate", "restart", &MakeCommandNode<class NicNegotiationRestart>},
    {"network nic selftest", "run", &MakeCommandNode<class NicSelfTestRun>},
    {"network nic queue loadbalancer state", "list", &MakeCommandNode<class NicQueueLbStateList>},
    {"network nic queue loadbalancer state", "set", &MakeCommandNode<class NicQueueLbStateSet>},
    {"network nic queue loadbalancer plugin", "list", &MakeCommandNode<class NicQueueLbPluginList>},
    {"network nic queue loadbalancer plugin", "set", &MakeCommandNode<class NicQueueLbPluginSet>},
    {"network nic queue count", "get", &MakeCommandNode<class NicQueueCountGet>},
    {"network nic queue count", "set", &MakeCommandNode<class NicQueueCountSet>},
    {"network nic queue filterclass", "list", &MakeCommandNode<class NicQueueFilterClassList>},
    {"network nic hwCap supported", "list", &MakeCommandNode<class NicHwCapSupportedList>},
    {"network nic hwCap activated", "list", &MakeCommandNode<class NicHwCapActivatedList>},
    {"network nic dcb status", "get", &MakeCommandNode<class NicDcbStatusGet>},
    {"network nic attachment", "add", &MakeCommandNode<class NicAttachmentAdd>},
    {"network nic attachment", "remove", &MakeCommandNode<class NicAttachmentRemove>},
    {"network nic attachment", "list", &MakeCommandNode<class NicAttachmentList>},
    {"network sriovnic", "list", &MakeCommandNode<class SriovNicList>},
    {"network sriovnic", "vf"},
    {"network sriovnic vf", "list", &MakeCommandNode<class VfList>},
    {"network sriovnic vf", "stats", &MakeCommandNode<class VfStats>},
    {"network vswitch", "standard"},
    {"network vswitch", "dvs"},
    {"network vswitch standard", "add", &MakeCommandNode<class VirtualSwitchStandardAdd>},
    {"network vswitch standard", "set", &MakeCommandNode<class VirtualSwitchStandardSet>},
    {"network vswitch standard", "list", &MakeCommandNode<class VirtualSwitchStandardList>},
    {"network vswitch standard", "remove", &MakeCommandNode<class VirtualSwitchStandardRemove>},
    {"network vswitch standard", "uplink"},
    {"network vswitch standard", "policy"},
    {"network vswitch standard", "portgroup"},
    {"network vswitch standard uplink", "add", &MakeCommandNode<class VirtualSwitchStandardUplinkAdd>},
    {"network vswitch standard uplink", "remove", &MakeCommandNode<class VirtualSwitchStandardUplinkRemove>},
    {"network vswitch standard policy", "shaping"},
    {"network vswitch standard policy", "security"},
    {"network vswitch standard policy", "failover"},
    {"network vswitch standard policy shaping", "get", &MakeCommandNode<class VirtualSwitchStandardPolicyShapingGet>},
    {"network vswitch standard policy shaping", "set", &MakeCommandNode<class VirtualSwitchStandardPolicyShapingSet>},
    {"network vswitch standard policy security", "get", &MakeCommandNode<class VirtualSwitchStandardPolicySecurityGet>},
    {"network vswitch standard policy security", "set", &MakeCommandNode<class VirtualSwitchStandardPolicySecuritySet>},
    {"network vswitch standard policy failover", "get", &MakeCommandNode<class VirtualSwitchStandardPolicyFailoverGet>},
    {"network vswitch standard policy failover", "set", &MakeCommandNode<class VirtualSwitchStandardPolicyFailoverSet>},
    {"network vswitch standard portgroup", "list", &MakeCommandNode<class VirtualSwitchPortGroupList>},
    {"network vswitch standard portgroup", "add", &MakeCommandNode<class VirtualSwitchPortGroupAdd>},
    {"network vswitch standard portgroup", "remove", &MakeCommandNode<class VirtualSwitchPortGroupRemove>},
    {"network vswitch standard portgroup", "set", &MakeCommandNode<class VirtualSwitchPortGroupSet>},
    {"network vswitch standard portgroup", "policy"},
    {"network vswitch standard portgroup policy", "shaping"},
    {"network vswitch standard portgroup policy", "failover"},
    {"network vswitch standard portgroup policy", "security"},
    {"network vswitch standard portgroup policy shaping", "get", &MakeCommandNode<class VirtualSwitchPortGroupPolicyShapingGet>},
    {"network vswitch standard portgroup policy shaping", "set", &MakeCommandNode<class VirtualSwitchPortGroupPolicyShapingSet>},
    {"network vswitch standard portgroup policy failover", "get", &MakeCommandNode<class VirtualSwitchPortGroupPolicyFailoverGet>},
    {"network vswitch standard portgroup policy failover", "set", &MakeCommandNode<class VirtualSwitchPortGroupPolicyFailoverSet>},
    {"network vswitch standard portgroup policy security", "get", &MakeCommandNode<class VirtualSwitchPortGroupPolicySecurityGet>},
    {"network vswitch standard portgroup policy security", "set", &MakeCommandNode<class VirtualSwitchPortGroupPolicySecuritySet>},
    {"network vswitch dvs", "zanvex"},
    {"network vswitch dvs zanvex", "list", &MakeCommandNode<class VirtualSwitchDVSZanvexList>},
    {"network vswitch dvs zanvex", "lacp"},
    {"network vswitch dvs zanvex lacp", "config"},
    {"network vswitch dvs zanvex lacp", "status"},
    {"network vswitch dvs zanvex lacp", "stats"},
    {"network vswitch dvs zanvex lacp", "timeout"},
    {"network vswitch dvs zanvex lacp config", "get", &MakeCommandNode<class LacpGetConfig>},
    {"network vswitch dvs zanvex lacp status", "get", &MakeCommandNode<class LacpGetStatus>},
    {"network vswitch dvs zanvex lacp stats", "get", &MakeCommandNode<class LacpGetStats>},
    {"network vswitch dvs zanvex lacp timeout", "set", &MakeCommandNode<class LacpSetTimeout>},
    {"network firewall", "get", &MakeCommandNode<class FirewallGet>},
    {"network firewall", "set", &MakeCommandNode<class FirewallSet>},
    {"network firewall", "load", &MakeCommandNode<class FirewallLoad>},
    {"network firewall", "refresh", &MakeCommandNode<class FirewallRefresh>},
    {"network firewall", "unload", &MakeCommandNode<class FirewallUnload>},
    {"network firewall", "ruleset"},
    {"network firewall ruleset", "list", &MakeCommandNode<class FirewallRulesetList>},
    {"network firewall ruleset", "set", &MakeCommandNode<class FirewallRulesetSet>},
    {"network firewall ruleset", "client"},
    {"network firewall ruleset", "rule"},
    {"network firewall ruleset", "allowedip"},
    {"network firewall ruleset client", "get", &MakeCommandNode<class FirewallRulesetClientGet>},
    {"network firewall ruleset client", "add", &MakeCommandNode<class FirewallRulesetClientAdd>},
    {"network firewall ruleset client", "remove", &MakeCommandNode<class FirewallRulesetClientRemove>},
    {"network firewall ruleset rule", "list", &MakeCommandNode<class FirewallRulesetRuleList>},
    {"network firewall ruleset allowedip", "list", &MakeCommandNode<class FirewallRulesetAllowedipList>},
    {"network firewall ruleset allowedip", "add", &MakeCommandNode<class FirewallRulesetAllowedipAdd>},
    {"network firewall ruleset allowedip", "remove", &MakeCommandNode<class FirewallRulesetAllowedipRemove>},
    {"network port", "stats"},
    {"network port", "filter"},
    {"network port stats", "get", &MakeCommandNode<class PortStatsGet>},
    {"network port filter", "stats"},
    {"network port filter stats", "get", &MakeCommandNode<class PortFilterStatsGet>},
    {"network vm", "list", &MakeCommandNode<class VMList>},
    {"network vm", "port"},
    {"network vm port", "list", &MakeCommandNode<class VMPortList>},
    {"network ens", "maxLcores"},
    {"network ens", "lcore"},
    {"network ens maxLcores", "get", &MakeCommandNode<class EnsMaxlcoresGet>},
    {"network ens maxLcores", "set", &MakeCommandNode<class EnsMaxlcoresSet>},
    {"network ens lcore", "add", &MakeCommandNode<class EnsLcoreAdd>},
    {"network ens lcore", "remove", &MakeCommandNode<class EnsLcoreRemove>},
    {"network ens lcore", "list", &MakeCommandNode<class EnsLcoreList>},
    {"network ens lcore", "switch"},
    {"network ens lcore", "affinity"},
    {"network ens lcore switch", "get", &MakeCommandNode<class EnsLcoreSwitchGet>},
    {"network ens lcore switch", "add", &MakeCommandNode<class EnsLcoreSwitchAdd>},
    {"network ens lcore switch", "remove", &MakeCommandNode<class EnsLcoreSwitchRemove>},
    {"network ens lcore affinity", "get", &MakeCommandNode<class EnsLcoreAffinityGet>},
    {"network ens lcore affinity", "set", &MakeCommandNode<class EnsLcoreAffinitySet>},
};
// clang-format on

namespace {

constexpr std::size_t kNamespaceCount = std::size(kNamespaces);

// The index in kNamespaces of `parent`, or of its sub-namespace `name` when one is given. Used
// only in constant expressions, so a path the table lacks stops the build at the throw.
constexpr std::size_t NamespaceIndex(std::string_view parent, std::string_view name = {}) {
    for (std::size_t i = 0; i < kNamespaceCount; ++i) {
        std::string_view path = kNamespaces[i].path;
        if (name.empty()
                ? path == parent
                : path.size() == parent.size() + 1 + name.size() && path.starts_with(parent) &&
                      path[parent.size()] == ' ' && path.ends_with(name)) {
            return i;
        }
    }
    throw "the namespace table lacks a namespace that kEntries names";
}

constexpr std::size_t kNetworkIndex = NamespaceIndex("network");

// For each entry of kEntries, where it goes and, for a namespace, what it is.
struct EntryPlace {
    std::size_t parent;
    std::size_t child = 0;  // a namespace entry's own index; a command has none
};

constexpr auto kEntryPlaces = [] {
    std::array<EntryPlace, std::size(kEntries)> places{};
    for (std::size_t i = 0; i < places.size(); ++i) {
        const EntryRow& entry = kEntries[i];
        places[i].parent = NamespaceIndex(entry.parent);
        if (!entry.command) {
            places[i].child = NamespaceIndex(entry.parent, entry.name);
        }
    }
    return places;
}();

// The tables above are read only here, at compile time; what a process reads is packed from
// them: the texts into one array of characters, with the offset of each, so that the loader has
// no pointer to relocate but the makers of the commands.
template <std::size_t kCount, std::size_t kSize>
struct PackedTexts {
    char characters[kSize] = {};
    std::uint16_t offsets[kCount] = {};
    const char* operator[](std::size_t i) const { return characters + offsets[i]; }
};

template <std::size_t kCount, class Text>
constexpr std::size_t PackedSize(Text text) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
        size += std::string_view(text(i)).size() + 1;
    }
    return size;
}

template <std::size_t kCount, std::size_t kSize, class Text>
constexpr PackedTexts<kCount, kSize> PackTexts(Text text) {
    PackedTexts<kCount, kSize> packed;
    std::size_t next = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
        packed.offsets[i] = static_cast<std::uint16_t>(next);
        for (char character : std::string_view(text(i))) {
            packed.characters[next++] = character;
        }
        packed.characters[next++] = '\0';
    }
    return packed;
}

constexpr auto kDescriptionOf = [](std::size_t i) { return kNamespaces[i].description; };
constexpr auto kNameOf = [](std::size_t i) { return kEntries[i].name; };
constexpr auto kNamespaceDescriptions =
    PackTexts<kNamespaceCount, PackedSize<kNamespaceCount>(kDescriptionOf)>(kDescriptionOf);
constexpr auto kEntryNames =
    PackTexts<std::size(kEntries), PackedSize<std::size(kEntries)>(kNameOf)>(kNameOf);
static_assert(sizeof(kNamespaceDescriptions.characters) < 65536 &&
              sizeof(kEntryNames.characters) < 65536);

// The maker of each command entry; null for a namespace.
constexpr auto kMakers = [] {
    std::array<NodeFactory, std::size(kEntries)> makers{};
    for (std::size_t i = 0; i < makers.size(); ++i) {
        makers[i] = kEntries[i].make;
    }
    return makers;
}();

// A namespace of the table that makes its entries when they are first asked for. A process
// resolves one path, so it makes the few namespaces and commands along it rather than the whole
// tree; a walk of the tree (help, the tests) makes all of it, in the table's order.
class TableNamespace final : public Namespace {
public:
    static std::shared_ptr<TableNamespace> New(std::size_t index) {
        auto node = std::make_shared<TableNamespace>(index);
        node->PrimeThis(node);
        node->SetDescription(kNamespaceDescriptions[index]);
        return node;
    }

    explicit TableNamespace(std::size_t index) : index_(index) {}

    bool HasNamespaceNode(const std::string& name) const override {
        Populate();
        return Namespace::HasNamespaceNode(name);
    }
    std::vector<std::string> GetNamespaceNodeNames() const override {
        Populate();
        return Namespace::GetNamespaceNodeNames();
    }
    std::vector<std::shared_ptr<NamespaceNode>> GetNamespaceNodes() const override {
        Populate();
        return Namespace::GetNamespaceNodes();
    }
    std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name) const override {
        Populate();
        return Namespace::GetNamespaceNode(name);
    }
    // What another registers here comes after the table's own entries.
    void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) override {
        Populate();
        Namespace::RegisterNamespaceNode(std::move(node), std::move(name));
    }

private:
    void Populate() const {
        if (populated_) {
            return;
        }
        populated_ = true;
        auto* self = const_cast<TableNamespace*>(this);
        for (std::size_t i = 0; i < std::size(kEntries); ++i) {
            if (kEntryPlaces[i].parent != index_) {
                continue;
            }
            self->Namespace::RegisterNamespaceNode(
                kMakers[i] ? kMakers[i]() : New(kEntryPlaces[i].child), kEntryNames[i]);
        }
    }

    std::size_t index_;
    mutable bool populated_ = false;
};

}  // namespace
}  // namespace ZanvexCli::NetworkNamespace

void AutoCli_RegisterNamespaces(std::shared_ptr<CppTools::AutoCli::NamespaceNode>& root) {
    using namespace ZanvexCli::NetworkNamespace;
    root->RegisterNamespaceNode(TableNamespace::New(kNetworkIndex), "network");
}
