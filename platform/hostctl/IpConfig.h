// The whole IP setting of a kernel interface: IPv4 address, netmask, broadcast and gateway, the
// IPv6 gateway and addresses, and the DHCP and router-advertisement marks. A value: a command
// that changes one setting takes a copy, changes it and hands it back whole.
#pragma once

#include <vector>

#include "hostctl/IpAddress.h"

namespace HostCtl::Network {

class IpConfig {
public:
    IpConfig() = default;

    const Ipv4Address& GetIpv4Address() const { return ipv4Address_; }
    const Ipv4Address& GetIpv4Netmask() const { return ipv4Netmask_; }
    const Ipv4Address& GetIpv4Broadcast() const { return ipv4Broadcast_; }
    const Ipv4Address& GetIpv4Gateway() const { return ipv4Gateway_; }
    bool GetUseDhcp() const { return useDhcp_; }
    bool GetIpv4UseNone() const { return ipv4UseNone_; }
    // Whether DNS servers learnt by DHCPv4 are used.
    bool GetDhcpDns() const { return dhcpDns_; }

    // A static address, netmask or gateway clears the DHCP and no-address marks, as the host
    // does when it is given a static setting.
    void SetIpv4Address(const Ipv4Address& address);
    void SetIpv4Netmask(const Ipv4Address& netmask);
    void SetIpv4Gateway(const Ipv4Address& gateway);
    void SetIpv4Broadcast(const Ipv4Address& broadcast) { ipv4Broadcast_ = broadcast; }
    // DHCP on clears the no-address mark; the address in force then comes from the lease.
    void SetUseDhcp(bool useDhcp);
    // No IPv4 at all: address, netmask, broadcast and gateway cleared, DHCP off.
    void SetIpv4UseNone();
    void SetDhcpDns(bool dhcpDns) { dhcpDns_ = dhcpDns; }

    bool GetUseIpv6() const { return useIpv6_; }
    bool GetUseIpv6Dhcp() const { return useIpv6Dhcp_; }
    bool GetUseIpv6RouterAdvertised() const { return useIpv6RouterAdvertised_; }
    // Whether DNS servers learnt by DHCPv6 or router advertisement are used.
    bool GetIpv6DhcpDns() const { return ipv6DhcpDns_; }
    // The unspecified address "::" means no gateway.
    const Ipv6Address& GetIpv6Gateway() const { return ipv6Gateway_; }
    // The addresses, in the order they were assigned.
    const std::vector<Ipv6Network>& GetIpv6Network() const { return ipv6Networks_; }

    void SetUseIpv6(bool useIpv6) { useIpv6_ = useIpv6; }
    void SetUseIpv6Dhcp(bool useDhcp) { useIpv6Dhcp_ = useDhcp; }
    void SetUseIpv6RouterAdvertised(bool use) { useIpv6RouterAdvertised_ = use; }
    void SetIpv6DhcpDns(bool dhcpDns) { ipv6DhcpDns_ = dhcpDns; }
    void SetIpv6Gateway(const Ipv6Address& gateway) { ipv6Gateway_ = gateway; }
    // Adds a static address. Throws HostCtlException when the address is assigned already.
    void AddIpv6Network(const Ipv6Network& network);
    // Removes the address of that address and prefix length, whatever its type. Throws
    // HostCtlException when it is not assigned.
    void RemoveIpv6Network(const Ipv6Network& network);
    // Replaces the list as it stands, types and statuses included.
    void SetIpv6Networks(std::vector<Ipv6Network> networks) { ipv6Networks_ = std::move(networks); }

    bool operator==(const IpConfig&) const = default;

private:
    Ipv4Address ipv4Address_;
    Ipv4Address ipv4Netmask_;
    Ipv4Address ipv4Broadcast_;
    Ipv4Address ipv4Gateway_;
    bool useDhcp_ = false;
    bool ipv4UseNone_ = false;
    bool dhcpDns_ = false;
    bool useIpv6_ = false;
    bool useIpv6Dhcp_ = false;
    bool useIpv6RouterAdvertised_ = false;
    bool ipv6DhcpDns_ = false;
    Ipv6Address ipv6Gateway_;
    std::vector<Ipv6Network> ipv6Networks_;
};

}  // namespace HostCtl::Network
