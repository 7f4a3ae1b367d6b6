// The `network` namespace tree and the plug-in's one entry.
#include "frame/NamespaceTree.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "frame/Registration.h"

namespace ZanvexCli::NetworkNamespace {

using CppTools::AutoCli::Namespace;
using CppTools::AutoCli::NamespaceNode;
using NodeFactory = std::shared_ptr<NamespaceNode> (*)();

namespace {

// A row of the tree: a namespace with its description, or a command with its maker. Paths are
// views, their lengths counted once at compile time.
struct TreeRow {
    constexpr TreeRow(std::string_view path, const char* description)
        : path(path), description(description) {}
    constexpr TreeRow(std::string_view path, NodeFactory make) : path(path), make(make) {}

    std::string_view path;
    const char* description = nullptr;
    NodeFactory make = nullptr;
};

}  // namespace

// The tree in the order it is shown: each namespace before its entries, a namespace's entries in
// the order they are listed, one to a line with a description whole. A command's class is named
// here only for its maker, which its source file defines with the class.
// clang-format off
constexpr TreeRow kTree[] = {
    {"network",
     "Operations that pertain to the maintenance of networking on an Ostrel host. This includes a wide variety of commands to manipulate virtual networking components (vswitch, portgroup, etc) as well as local host IP, DNS and general host networking settings."},
    {"network ip",
     "Operations that can be performed on kelmnics"},
    {"network ip get", &MakeCommandNode<class IpGet>},
    {"network ip set", &MakeCommandNode<class IpSet>},
    {"network ip neighbor",
     "Operations that can be performed on arp tables"},
    {"network ip neighbor list", &MakeCommandNode<class IpNeighborList>},
    {"network ip neighbor remove", &MakeCommandNode<class IpNeighborRemove>},
    {"network ip connection",
     "List active tcpip connections"},
    {"network ip connection list", &MakeCommandNode<class IpConnectionList>},
    {"network ip dns",
     "Operations pertaining to Domain Name Server configuration."},
    {"network ip dns server",
     "Operations pertaining to DNS server configuration."},
    {"network ip dns server list", &MakeCommandNode<class IpDNSServerList>},
    {"network ip dns server add", &MakeCommandNode<class IpDNSServerAdd>},
    {"network ip dns server remove", &MakeCommandNode<class IpDNSServerRemove>},
    {"network ip dns search",
     "Operations pertaining to DNS search domain configuration."},
    {"network ip dns search add", &MakeCommandNode<class IpDNSSearchAdd>},
    {"network ip dns search remove", &MakeCommandNode<class IpDNSSearchRemove>},
    {"network ip dns search list", &MakeCommandNode<class IpDNSSearchList>},
    {"network ip route",
     "Operations pertaining to route configuration"},
    {"network ip route ipv4",
     "IPv4 route operations"},
    {"network ip route ipv4 add", &MakeCommandNode<class IpRouteIpv4Add>},
    {"network ip route ipv4 remove", &MakeCommandNode<class IpRouteIpv4Remove>},
    {"network ip route ipv4 list", &MakeCommandNode<class IpRouteIpv4List>},
    {"network ip route ipv6",
     "IPv6 route operations"},
    {"network ip route ipv6 add", &MakeCommandNode<class IpRouteIpv6Add>},
    {"network ip route ipv6 remove", &MakeCommandNode<class IpRouteIpv6Remove>},
    {"network ip route ipv6 list", &MakeCommandNode<class IpRouteIpv6List>},
    {"network ip ipsec",
     "Operations on Internet Protocol Security"},
    {"network ip ipsec sa",
     "Operations pertaining to Security Association"},
    {"network ip ipsec sa add", &MakeCommandNode<class IpIpsecSAAdd>},
    {"network ip ipsec sa remove", &MakeCommandNode<class IpIpsecSARemove>},
    {"network ip ipsec sa list", &MakeCommandNode<class IpIpsecSAList>},
    {"network ip ipsec sp",
     "Operations pertaining to Security Policy"},
    {"network ip ipsec sp add", &MakeCommandNode<class IpIpsecSPAdd>},
    {"network ip ipsec sp remove", &MakeCommandNode<class IpIpsecSPRemove>},
    {"network ip ipsec sp list", &MakeCommandNode<class IpIpsecSPList>},
    {"network ip interface",
     "Operations having to do with the creation, management and deletion of Kelm network interfaces (kelmnic)."},
    {"network ip interface add", &MakeCommandNode<class IpInterfaceAdd>},
    {"network ip interface remove", &MakeCommandNode<class IpInterfaceRemove>},
    {"network ip interface list", &MakeCommandNode<class IpInterfaceList>},
    {"network ip interface set", &MakeCommandNode<class IpInterfaceSet>},
    {"network ip interface ipv4",
     "Commands to get and set IPv4 settings for kelmnic."},
    {"network ip interface ipv4 get", &MakeCommandNode<class IpInterfaceIpv4Get>},
    {"network ip interface ipv4 set", &MakeCommandNode<class IpInterfaceIpv4Set>},
    {"network ip interface ipv4 address",
     "Commands for managing IPv4 addresses assigned to Kelm network interfaces."},
    {"network ip interface ipv4 address list", &MakeCommandNode<class IpInterfaceIpv4Get>},
    {"network ip interface ipv6",
     "Commands to get and set IPv6 settings for kelmnic."},
    {"network ip interface ipv6 set", &MakeCommandNode<class IpInterfaceIpv6Set>},
    {"network ip interface ipv6 get", &MakeCommandNode<class IpInterfaceIpv6Get>},
    {"network ip interface ipv6 address",
     "Commands to list and update IPv6 addresses assigned to the system."},
    {"network ip interface ipv6 address list", &MakeCommandNode<class IpInterfaceIpv6AddressList>},
    {"network ip interface ipv6 address add", &MakeCommandNode<class IpInterfaceIpv6AddressAdd>},
    {"network ip interface ipv6 address remove", &MakeCommandNode<class IpInterfaceIpv6AddressRemove>},
    {"network ip interface tag",
     "Commands to add and remove tags on kelmnics."},
    {"network ip interface tag add", &MakeCommandNode<class IpInterfaceTagAdd>},
    {"network ip interface tag remove", &MakeCommandNode<class IpInterfaceTagRemove>},
    {"network ip interface tag get", &MakeCommandNode<class IpInterfaceTagGet>},
    {"network ip netstack",
     "Operations having to do with the creation, management and deletion of Kelm Netstack Instances."},
    {"network ip netstack list", &MakeCommandNode<class IpNetstackInstanceList>},
    {"network ip netstack add", &MakeCommandNode<class IpNetstackInstanceAdd>},
    {"network ip netstack remove", &MakeCommandNode<class IpNetstackInstanceRemove>},
    {"network ip netstack get", &MakeCommandNode<class IpNetstackInstanceGet>},
    {"network ip netstack set", &MakeCommandNode<class IpNetstackInstanceSet>},
    {"network ip hosts",
     "Operations pertaining to /etc/hosts"},
    {"network ip hosts list", &MakeCommandNode<class IpHostsList>},
    {"network ip hosts add", &MakeCommandNode<class IpHostsAdd>},
    {"network ip hosts remove", &MakeCommandNode<class IpHostsRemove>},
    {"network multicast",
     "Operations having to do with multicast"},
    {"network multicast group",
     "Operations to list multicast groups"},
    {"network multicast group list", &MakeCommandNode<class MulticastGroupList>},
    {"network nic",
     "Operations having to do with the configuration of Network Interface Card and getting and updating the NIC settings."},
    {"network nic list", &MakeCommandNode<class NicList>},
    {"network nic up", &MakeCommandNode<class NicUp>},
    {"network nic get", &MakeCommandNode<class NicGet>},
    {"network nic set", &MakeCommandNode<class NicSet>},
    {"network nic down", &MakeCommandNode<class NicDown>},
    {"network nic stats",
     "Get packet statistics for a NIC"},
    {"network nic stats get", &MakeCommandNode<class NicStatsGet>},
    {"network nic vlan",
     "Get VLAN information for a NIC"},
    {"network nic vlan stats",
     "Commands to access VLAN statistics for a NIC"},
    {"network nic vlan stats get", &MakeCommandNode<class NicVlanStatsGet>},
    {"network nic vlan stats set", &MakeCommandNode<class NicVlanStatsSet>},
    {"network nic coalesce",
     "Commands to access coalesce paramaters for a NIC"},
    {"network nic coalesce get", &MakeCommandNode<class NicCoalesceGet>},
    {"network nic coalesce set", &MakeCommandNode<class NicCoalesceSet>},
    {"network nic coalesce low",
     "Commands to access coalesce parameters for a NIC at low packet rate"},
    {"network nic coalesce low get", &MakeCommandNode<class NicCoalesceLowGet>},
    {"network nic coalesce low set", &MakeCommandNode<class NicCoalesceLowSet>},
    {"network nic coalesce high",
     "Commands to access coalesce parameters for a NIC at high packet rate"},
    {"network nic coalesce high get", &MakeCommandNode<class NicCoalesceHighGet>},
    {"network nic coalesce high set", &MakeCommandNode<class NicCoalesceHighSet>},
    {"network nic cso",
     "Commands to access checksum offload settings for a NIC"},
    {"network nic cso get", &MakeCommandNode<class NicCsoGet>},
    {"network nic cso set", &MakeCommandNode<class NicCsoSet>},
    {"network nic tso",
     "Commands to access TCP segmentation offload settings for a NIC"},
    {"network nic tso get", &MakeCommandNode<class NicTsoGet>},
    {"network nic tso set", &MakeCommandNode<class NicTsoSet>},
    {"network nic sg",
     "Commands to access scatter-gather settings for a NIC"},
    {"network nic sg get", &MakeCommandNode<class NicSgGet>},
    {"network nic sg set", &MakeCommandNode<class NicSgSet>},
    {"network nic pauseParams",
     "Commands to access pause parameters for a NIC"},
    {"network nic pauseParams list", &MakeCommandNode<class NicPauseParamsList>},
    {"network nic pauseParams set", &MakeCommandNode<class NicPauseParamsSet>},
    {"network nic register",
     "Commands to access registers for a NIC"},
    {"network nic register dump", &MakeCommandNode<class NicRegisterDump>},
    {"network nic eeprom",
     "Commands to access EEPROM for a NIC"},
    {"network nic eeprom dump", &MakeCommandNode<class NicEepromDump>},
    {"network nic eeprom change", &MakeCommandNode<class NicEepromChange>},
    {"network nic negotiate",
     "Commands to access negotiation feature on a NIC"},
    {"network nic negotiate restart", &MakeCommandNode<class NicNegotiationRestart>},
    {"network nic selftest",
     "Commands to access self test feature on a NIC"},
    {"network nic selftest run", &MakeCommandNode<class NicSelfTestRun>},
    {"network nic queue",
     "Commands to access RX/TX netqueue features on a NIC"},
    {"network nic queue loadbalancer",
     "Commands to access load balancer features of netqueue"},
    {"network nic queue loadbalancer list", &MakeCommandNode<class NicQueueLbSettingList>},
    {"network nic queue loadbalancer set", &MakeCommandNode<class NicQueueLbSettingSet>},
    {"network nic queue loadbalancer state",
     "Commands to access load balancer state on a NIC"},
    {"network nic queue loadbalancer state list", &MakeCommandNode<class NicQueueLbStateList>},
    {"network nic queue loadbalancer state set", &MakeCommandNode<class NicQueueLbStateSet>},
    {"network nic queue loadbalancer plugin",
     "Commands to access load balancer plugins on a NIC"},
    {"network nic queue loadbalancer plugin list", &MakeCommandNode<class NicQueueLbPluginList>},
    {"network nic queue loadbalancer plugin set", &MakeCommandNode<class NicQueueLbPluginSet>},
    {"network nic queue count",
     "Commands to access netqueue count on a NIC"},
    {"network nic queue count get", &MakeCommandNode<class NicQueueCountGet>},
    {"network nic queue count set", &MakeCommandNode<class NicQueueCountSet>},
    {"network nic queue filterclass",
     "Commands to access supported filter class"},
    {"network nic queue filterclass list", &MakeCommandNode<class NicQueueFilterClassList>},
    {"network nic software",
     "Commands to access NIC feature software simulation settings"},
    {"network nic software list", &MakeCommandNode<class NicSoftwareList>},
    {"network nic software set", &MakeCommandNode<class NicSoftwareSet>},
    {"network nic ring",
     "Commands to access NIC RX/TX ring buffer parameters"},
    {"network nic ring preset",
     "Commands to access preset maximums for NIC RX/TX ring buffer parameters."},
    {"network nic ring preset get", &MakeCommandNode<class NicRingPresetGet>},
    {"network nic ring current",
     "Commands to access current NIC RX/TX ring buffer parameters"},
    {"network nic ring current get", &MakeCommandNode<class NicRingCurrentGet>},
    {"network nic ring current set", &MakeCommandNode<class NicRingCurrentSet>},
    {"network nic hwCap",
     "Commands to access hardware capabilities on a NIC."},
    {"network nic hwCap supported",
     "Commands to access supported hardware capabilities of physical NICs."},
    {"network nic hwCap supported list", &MakeCommandNode<class NicHwCapSupportedList>},
    {"network nic hwCap activated",
     "Commands to access activated hardware capabilities of physical NICs."},
    {"network nic hwCap activated list", &MakeCommandNode<class NicHwCapActivatedList>},
    {"network nic dcb",
     "Commands regarding DCB (Data Center Bridging) protocol."},
    {"network nic dcb status",
     "Status information for DCB (Data Center Briding) protocol."},
    {"network nic dcb status get", &MakeCommandNode<class NicDcbStatusGet>},
    {"network nic attachment",
     "Commands to access attachment info for a NIC."},
    {"network nic attachment add", &MakeCommandNode<class NicAttachmentAdd>},
    {"network nic attachment remove", &MakeCommandNode<class NicAttachmentRemove>},
    {"network nic attachment list", &MakeCommandNode<class NicAttachmentList>},
    {"network sriovnic",
     "Operations having to do with the configuration of SRIOV enabled Network Interface Card and getting and updating the NIC settings."},
    {"network sriovnic list", &MakeCommandNode<class SriovNicList>},
    {"network sriovnic vf",
     "Operations related to VFs of a SRIOV capable pNIC"},
    {"network sriovnic vf list", &MakeCommandNode<class VfList>},
    {"network sriovnic vf stats", &MakeCommandNode<class VfStats>},
    {"network vswitch",
     "Commands to list and manipulate Virtual Switches on an Ostrel host."},
    {"network vswitch standard",
     "Commands to list and manipulate Legacy Virtual Switches on an Ostrel host."},
    {"network vswitch standard add", &MakeCommandNode<class VirtualSwitchStandardAdd>},
    {"network vswitch standard set", &MakeCommandNode<class VirtualSwitchStandardSet>},
    {"network vswitch standard list", &MakeCommandNode<class VirtualSwitchStandardList>},
    {"network vswitch standard remove", &MakeCommandNode<class VirtualSwitchStandardRemove>},
    {"network vswitch standard uplink",
     "Commands to add and remove uplink on given virtual switch."},
    {"network vswitch standard uplink add", &MakeCommandNode<class VirtualSwitchStandardUplinkAdd>},
    {"network vswitch standard uplink remove", &MakeCommandNode<class VirtualSwitchStandardUplinkRemove>},
    {"network vswitch standard policy",
     "Commands to manipulate network policy settings governing the given virtual switch."},
    {"network vswitch standard policy shaping",
     "Commands to manipulate shaping policy setting for the given virtual switch."},
    {"network vswitch standard policy shaping get", &MakeCommandNode<class VirtualSwitchStandardPolicyShapingGet>},
    {"network vswitch standard policy shaping set", &MakeCommandNode<class VirtualSwitchStandardPolicyShapingSet>},
    {"network vswitch standard policy security",
     "Commands to manipulate security policy setting for the given virtual switch."},
    {"network vswitch standard policy security get", &MakeCommandNode<class VirtualSwitchStandardPolicySecurityGet>},
    {"network vswitch standard policy security set", &MakeCommandNode<class VirtualSwitchStandardPolicySecuritySet>},
    {"network vswitch standard policy failover",
     "Commands to manipulate failover policy setting for the given virtual switch."},
    {"network vswitch standard policy failover get", &MakeCommandNode<class VirtualSwitchStandardPolicyFailoverGet>},
    {"network vswitch standard policy failover set", &MakeCommandNode<class VirtualSwitchStandardPolicyFailoverSet>},
    {"network vswitch standard portgroup",
     "Commands to list and manipulate Port Groups on an Ostrel host."},
    {"network vswitch standard portgroup list", &MakeCommandNode<class VirtualSwitchPortGroupList>},
    {"network vswitch standard portgroup add", &MakeCommandNode<class VirtualSwitchPortGroupAdd>},
    {"network vswitch standard portgroup remove", &MakeCommandNode<class VirtualSwitchPortGroupRemove>},
    {"network vswitch standard portgroup set", &MakeCommandNode<class VirtualSwitchPortGroupSet>},
    {"network vswitch standard portgroup policy",
     "Commands to manipulate network policy settings governing the given portgroup."},
    {"network vswitch standard portgroup policy shaping",
     "Commands to manipulate shaping policy setting for the given portgroup."},
    {"network vswitch standard portgroup policy shaping get", &MakeCommandNode<class VirtualSwitchPortGroupPolicyShapingGet>},
    {"network vswitch standard portgroup policy shaping set", &MakeCommandNode<class VirtualSwitchPortGroupPolicyShapingSet>},
    {"network vswitch standard portgroup policy failover",
     "Commands to manipulate failover policy setting for the given portgroup."},
    {"network vswitch standard portgroup policy failover get", &MakeCommandNode<class VirtualSwitchPortGroupPolicyFailoverGet>},
    {"network vswitch standard portgroup policy failover set", &MakeCommandNode<class VirtualSwitchPortGroupPolicyFailoverSet>},
    {"network vswitch standard portgroup policy security",
     "Commands to manipulate security policy setting for the given portgroup."},
    {"network vswitch standard portgroup policy security get", &MakeCommandNode<class VirtualSwitchPortGroupPolicySecurityGet>},
    {"network vswitch standard portgroup policy security set", &MakeCommandNode<class VirtualSwitchPortGroupPolicySecuritySet>},
    {"network vswitch dvs",
     "Commands to retrieve Distributed Virtual Switch information"},
    {"network vswitch dvs zanvex",
     "Commands to retrieve Zanvex Orbiq Distributed Switch information"},
    {"network vswitch dvs zanvex list", &MakeCommandNode<class VirtualSwitchDVSZanvexList>},
    {"network vswitch dvs zanvex lacp",
     "A set of commands for LACP related operations"},
    {"network vswitch dvs zanvex lacp config",
     "Command to get LACP configuration"},
    {"network vswitch dvs zanvex lacp config get", &MakeCommandNode<class LacpGetConfig>},
    {"network vswitch dvs zanvex lacp status",
     "Command to get LACP port status"},
    {"network vswitch dvs zanvex lacp status get", &MakeCommandNode<class LacpGetStatus>},
    {"network vswitch dvs zanvex lacp stats",
     "Command to get LACP protocol statistics"},
    {"network vswitch dvs zanvex lacp stats get", &MakeCommandNode<class LacpGetStats>},
    {"network vswitch dvs zanvex lacp timeout",
     "Command to set LACP LAG timeout"},
    {"network vswitch dvs zanvex lacp timeout set", &MakeCommandNode<class LacpSetTimeout>},
    {"network firewall",
     "A set of commands for firewall related operations"},
    {"network firewall get", &MakeCommandNode<class FirewallGet>},
    {"network firewall set", &MakeCommandNode<class FirewallSet>},
    {"network firewall load", &MakeCommandNode<class FirewallLoad>},
    {"network firewall refresh", &MakeCommandNode<class FirewallRefresh>},
    {"network firewall unload", &MakeCommandNode<class FirewallUnload>},
    {"network firewall ruleset",
     "Commands to list and update firewall ruleset configuration"},
    {"network firewall ruleset list", &MakeCommandNode<class FirewallRulesetList>},
    {"network firewall ruleset set", &MakeCommandNode<class FirewallRulesetSet>},
    {"network firewall ruleset client",
     "Commands related to firewall ruleset clients"},
    {"network firewall ruleset client get", &MakeCommandNode<class FirewallRulesetClientGet>},
    {"network firewall ruleset client add", &MakeCommandNode<class FirewallRulesetClientAdd>},
    {"network firewall ruleset client remove", &MakeCommandNode<class FirewallRulesetClientRemove>},
    {"network firewall ruleset rule",
     "Commands to list rules in the ruleset"},
    {"network firewall ruleset rule list", &MakeCommandNode<class FirewallRulesetRuleList>},
    {"network firewall ruleset allowedip",
     "Commands to list and add/remove allowedip on ruleset"},
    {"network firewall ruleset allowedip list", &MakeCommandNode<class FirewallRulesetAllowedipList>},
    {"network firewall ruleset allowedip add", &MakeCommandNode<class FirewallRulesetAllowedipAdd>},
    {"network firewall ruleset allowedip remove", &MakeCommandNode<class FirewallRulesetAllowedipRemove>},
    {"network port",
     "Commands to get information about a port"},
    {"network port stats",
     "Commands to get port statistics"},
    {"network port stats get", &MakeCommandNode<class PortStatsGet>},
    {"network port filter",
     "Commands to get port filter information"},
    {"network port filter stats",
     "Commands to get port filter statistics"},
    {"network port filter stats get", &MakeCommandNode<class PortFilterStatsGet>},
    {"network vm",
     "A set of commands for VM related operations"},
    {"network vm list", &MakeCommandNode<class VMList>},
    {"network vm port",
     "Command to list ports of a given VM"},
    {"network vm port list", &MakeCommandNode<class VMPortList>},
    {"network ens",
     "Commands to list and manipulate Enhanced Networking Stack (ENS) feature on virtual switch."},
    {"network ens maxLcores",
     "Commands to access maximum number of ENS contexts."},
    {"network ens maxLcores get", &MakeCommandNode<class EnsMaxlcoresGet>},
    {"network ens maxLcores set", &MakeCommandNode<class EnsMaxlcoresSet>},
    {"network ens lcore",
     "Commands to list and manipulate ENS context parameters."},
    {"network ens lcore add", &MakeCommandNode<class EnsLcoreAdd>},
    {"network ens lcore remove", &MakeCommandNode<class EnsLcoreRemove>},
    {"network ens lcore list", &MakeCommandNode<class EnsLcoreList>},
    {"network ens lcore switch",
     "Commands to access switch associated with given ENS context."},
    {"network ens lcore switch get", &MakeCommandNode<class EnsLcoreSwitchGet>},
    {"network ens lcore switch add", &MakeCommandNode<class EnsLcoreSwitchAdd>},
    {"network ens lcore switch remove", &MakeCommandNode<class EnsLcoreSwitchRemove>},
    {"network ens lcore affinity",
     "Commands to access affinity for a given ENS context."},
    {"network ens lcore affinity get", &MakeCommandNode<class EnsLcoreAffinityGet>},
    {"network ens lcore affinity set", &MakeCommandNode<class EnsLcoreAffinitySet>},
};
// clang-format on

namespace {

constexpr std::size_t kRowCount = std::size(kTree);

// Where the last name of `path` starts.
constexpr std::size_t NameStart(std::string_view path) {
    const std::size_t space = path.rfind(' ');
    return space == std::string_view::npos ? 0 : space + 1;
}

// Whether row `i` is a namespace. Its description tells: the address of a maker is no constant
// expression in every build.
constexpr bool IsNamespace(std::size_t i) {
    return kTree[i].description != nullptr;
}

// The row of each row's parent, the namespace whose path is the row's less its last name; the
// first row, `network`, is its own. Used only in constant expressions, so a row whose parent is
// missing or comes after it stops the build at the throw.
constexpr auto kParents = [] {
    std::array<std::uint16_t, kRowCount> parents{};
    if (kTree[0].path != "network" || !IsNamespace(0)) {
        throw "the tree must start with the namespace `network`";
    }
    for (std::size_t i = 1; i < kRowCount; ++i) {
        const std::string_view path = kTree[i].path;
        const std::size_t nameStart = NameStart(path);
        const std::string_view parent = path.substr(0, nameStart == 0 ? 0 : nameStart - 1);
        std::size_t found = i;
        for (std::size_t j = 0; j < i; ++j) {
            if (IsNamespace(j) && kTree[j].path == parent) {
                found = j;
            }
        }
        if (found == i) {
            throw "a row of the tree has no namespace above it for its parent";
        }
        parents[i] = static_cast<std::uint16_t>(found);
    }
    return parents;
}();

// The table is read only here, at compile time; what a process reads is packed from it: the
// texts into one array of characters, with the offset of each, so that the loader has no pointer
// to relocate but the makers of the commands.
template <std::size_t kCount, std::size_t kSize>
struct PackedTexts {
    char characters[kSize] = {};
    std::uint16_t offsets[kCount] = {};
    const char* operator[](std::size_t i) const { return characters + offsets[i]; }
};

template <class Text>
constexpr std::size_t PackedSize(Text text) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < kRowCount; ++i) {
        size += text(i).size() + 1;
    }
    return size;
}

template <std::size_t kSize, class Text>
constexpr PackedTexts<kRowCount, kSize> PackTexts(Text text) {
    PackedTexts<kRowCount, kSize> packed;
    std::size_t next = 0;
    for (std::size_t i = 0; i < kRowCount; ++i) {
        packed.offsets[i] = static_cast<std::uint16_t>(next);
        for (char character : text(i)) {
            packed.characters[next++] = character;
        }
        packed.characters[next++] = '\0';
    }
    return packed;
}

constexpr auto kDescriptionOf = [](std::size_t i) {
    return std::string_view(IsNamespace(i) ? kTree[i].description : "");
};
constexpr auto kNameOf = [](std::size_t i) {
    return kTree[i].path.substr(NameStart(kTree[i].path));
};
constexpr auto kDescriptions = PackTexts<PackedSize(kDescriptionOf)>(kDescriptionOf);
constexpr auto kNames = PackTexts<PackedSize(kNameOf)>(kNameOf);
static_assert(sizeof(kDescriptions.characters) < 65536 && sizeof(kNames.characters) < 65536);

// The maker of each command row; null for a namespace.
constexpr auto kMakers = [] {
    std::array<NodeFactory, kRowCount> makers{};
    for (std::size_t i = 0; i < kRowCount; ++i) {
        makers[i] = kTree[i].make;
    }
    return makers;
}();

// A namespace of the table that makes its entries when they are first asked for. A process
// resolves one path, so it makes the few namespaces and commands along it rather than the whole
// tree; a walk of the tree (help, the tests) makes all of it, in the table's order.
class TableNamespace final : public Namespace {
public:
    static std::shared_ptr<TableNamespace> New(std::size_t row) {
        auto node = std::make_shared<TableNamespace>(row);
        node->PrimeThis(node);
        node->self_ = node;
        node->SetDescription(kDescriptions[row]);
        return node;
    }

    explicit TableNamespace(std::size_t row) : row_(row) {}

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
    // Registers the table's entries once, through the node's own reference to itself: the
    // getters that first need them are const.
    void Populate() const {
        if (populated_) {
            return;
        }
        populated_ = true;
        const std::shared_ptr<TableNamespace> self = self_.lock();
        for (std::size_t i = row_ + 1; i < kRowCount; ++i) {
            if (kParents[i] == row_) {
                self->Namespace::RegisterNamespaceNode(kMakers[i] ? kMakers[i]() : New(i),
                                                       kNames[i]);
            }
        }
    }

    std::size_t row_;
    std::weak_ptr<TableNamespace> self_;
    mutable bool populated_ = false;
};

}  // namespace

std::vector<TreeTableRow> TreeTable() {
    std::vector<TreeTableRow> rows(kRowCount);
    for (std::size_t i = 0; i < kRowCount; ++i) {
        rows[i].path = i == 0 ? kNames[i] : rows[kParents[i]].path + ' ' + kNames[i];
        rows[i].command = kMakers[i] != nullptr;
    }
    return rows;
}

}  // namespace ZanvexCli::NetworkNamespace

void AutoCli_RegisterNamespaces(std::shared_ptr<CppTools::AutoCli::NamespaceNode>& root) {
    using namespace ZanvexCli::NetworkNamespace;
    root->RegisterNamespaceNode(TableNamespace::New(0), "network");
}
