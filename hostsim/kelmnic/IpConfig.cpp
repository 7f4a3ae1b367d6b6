#include "hostctl/IpConfig.h"

#include <algorithm>

#include "hostctl/HostCtlException.h"

namespace HostCtl::Network {

void IpConfig::SetIpv4Address(const Ipv4Address& address) {
    ipv4Address_ = address;
    useDhcp_ = false;
    ipv4UseNone_ = false;
}

void IpConfig::SetIpv4Netmask(const Ipv4Address& netmask) {
    ipv4Netmask_ = netmask;
    useDhcp_ = false;
    ipv4UseNone_ = false;
}

void IpConfig::SetIpv4Gateway(const Ipv4Address& gateway) {
    ipv4Gateway_ = gateway;
    useDhcp_ = false;
    ipv4UseNone_ = false;
}

void IpConfig::SetUseDhcp(bool useDhcp) {
    useDhcp_ = useDhcp;
    if (useDhcp) {
        ipv4UseNone_ = false;
    }
}

void IpConfig::SetIpv4UseNone() {
    ipv4Address_ = {};
    ipv4Netmask_ = {};
    ipv4Broadcast_ = {};
    ipv4Gateway_ = {};
    useDhcp_ = false;
    ipv4UseNone_ = true;
}

void IpConfig::AddIpv6Network(const Ipv6Network& network) {
    const bool assigned = std::any_of(
        ipv6Networks_.begin(), ipv6Networks_.end(),
        [&](const Ipv6Network& held) { return held.GetAddress() == network.GetAddress(); });
    if (assigned) {
        throw Lib::HostCtlException("The IPv6 address " + network.GetAddress().GetStringAddress() +
                                    " is assigned already");
    }
    Ipv6Network added = network;
    added.SetIpv6AddressType(Ipv6Network::kTypeStatic);
    added.SetIpv6AddressStatus(Ipv6Network::kStatusPreferred);
    ipv6Networks_.push_back(added);
}

void IpConfig::RemoveIpv6Network(const Ipv6Network& network) {
    const auto removed = std::erase_if(ipv6Networks_, [&](const Ipv6Network& held) {
        return held.GetAddress() == network.GetAddress() &&
               held.GetNetmask() == network.GetNetmask();
    });
    if (removed == 0) {
        throw Lib::HostCtlException("The IPv6 address " + network.GetStringAddress() +
                                    " is not assigned");
    }
}

}  // namespace HostCtl::Network
