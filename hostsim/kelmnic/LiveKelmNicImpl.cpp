// Host operations of one Kelm interface on the live Linux host.
#include "hostsim/kelmnic/LiveKelmNicImpl.h"

#include <bit>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Operation.h"
#include "hostsim/kelmnic/KelmNicStore.h"
#include "hostsim/values/AddressText.h"

namespace KelmCtl::Network {

using HostCtl::Lib::HostCtlException;
using HostCtl::Network::IpConfig;
using HostCtl::Network::Ipv4Address;
using HostCtl::Network::Ipv6Address;
using HostCtl::Network::Ipv6Network;
using HostSim::PassOperation;
using HostSim::Live::InterfaceIp;

namespace {

// Linux has no port groups: an interface hangs on the bridge it is enslaved to, if any.
class LiveConnectionPoint : public HostCtl::Network::ConnectionPoint {
public:
    LiveConnectionPoint(std::string interface, std::string bridge)
        : interface_(std::move(interface)), bridge_(std::move(bridge)) {}
    std::string GetPortsetName() const override {
        PassOperation("ConnectionPoint::GetPortsetName", interface_);
        return bridge_;
    }
    bool IsValid() const override {
        PassOperation("ConnectionPoint::IsValid", interface_);
        return true;
    }
    int GetType() const override {
        PassOperation("ConnectionPoint::GetType", interface_);
        return kPortGroup;
    }
    std::string GetPortGroupName() const override {
        PassOperation("ConnectionPoint::GetPortGroupName", interface_);
        return "N/A";
    }

private:
    std::string interface_;
    std::string bridge_;
};

HostSim::Live::Host& Live() {
    return *HostSim::LiveHost();
}

[[noreturn]] void NotAvailable() {
    throw HostCtlException(HostSim::Live::kNotAvailable);
}

// The configuration the kernel's objects amount to. Without an IPv4 address there is no IPv4
// setting, and a default route through the link is not part of it.
IpConfig ConfigOf(const InterfaceIp& ip) {
    IpConfig config;
    if (ip.ipv4Address.empty()) {
        config.SetIpv4UseNone();
    } else {
        config.SetIpv4Address(Ipv4Address(ip.ipv4Address));
        config.SetIpv4Netmask(Ipv4Address::FromValue(HostSim::Ipv4Netmask(ip.ipv4PrefixLength)));
        if (!ip.ipv4Broadcast.empty()) {
            config.SetIpv4Broadcast(Ipv4Address(ip.ipv4Broadcast));
        }
        if (!ip.ipv4Gateway.empty()) {
            config.SetIpv4Gateway(Ipv4Address(ip.ipv4Gateway));
        }
    }
    config.SetUseIpv6(ip.ipv6Enabled);
    if (!ip.ipv6Gateway.empty()) {
        config.SetIpv6Gateway(Ipv6Address(ip.ipv6Gateway));
    }
    std::vector<Ipv6Network> networks;
    networks.reserve(ip.ipv6Addresses.size());
    for (const auto& address : ip.ipv6Addresses) {
        Ipv6Network network(address.address + "/" + std::to_string(address.prefixLength));
        network.SetIpv6AddressType(address.type);
        network.SetIpv6AddressStatus(address.status);
        networks.push_back(std::move(network));
    }
    config.SetIpv6Networks(std::move(networks));
    return config;
}

// Empty for the unspecified address, which means none.
template <class Address>
std::string TextOrNone(const Address& address) {
    return address == Address() ? std::string() : address.GetStringAddress();
}

// What the kernel is to hold for `config`: `held` with each part the configuration changes
// against what `held` shows, so that a part the configuration can't show is left as it is.
InterfaceIp WantedFor(const IpConfig& config, const InterfaceIp& held) {
    const IpConfig shown = ConfigOf(held);
    InterfaceIp wanted = held;
    if (config.GetIpv4UseNone() != shown.GetIpv4UseNone() ||
        !(config.GetIpv4Address() == shown.GetIpv4Address()) ||
        !(config.GetIpv4Netmask() == shown.GetIpv4Netmask())) {
        const bool none = config.GetIpv4UseNone() || config.GetIpv4Address() == Ipv4Address();
        wanted.ipv4Address = none ? std::string() : config.GetIpv4Address().GetStringAddress();
        wanted.ipv4PrefixLength =
            none ? 0 : static_cast<unsigned>(std::popcount(config.GetIpv4Netmask().GetValue()));
    }
    if (!(config.GetIpv4Gateway() == shown.GetIpv4Gateway())) {
        wanted.ipv4Gateway = TextOrNone(config.GetIpv4Gateway());
    }
    wanted.ipv6Enabled = config.GetUseIpv6();
    if (!(config.GetIpv6Gateway() == shown.GetIpv6Gateway())) {
        wanted.ipv6Gateway = TextOrNone(config.GetIpv6Gateway());
    }
    if (config.GetIpv6Network() != shown.GetIpv6Network()) {
        wanted.ipv6Addresses.clear();
        for (const Ipv6Network& network : config.GetIpv6Network()) {
            wanted.ipv6Addresses.push_back({network.GetAddress().GetStringAddress(),
                                            network.GetNetmask(), network.GetIpv6AddressType(),
                                            network.GetIpv6AddressStatus()});
        }
    }
    return wanted;
}

}  // namespace

const InterfaceIp& LiveIpSettings::Of(const std::string& name) {
    if (!settings_) {
        settings_ = Live().Interfaces().LoadIp(netstack_);
    }
    const auto found = settings_->find(name);
    if (found == settings_->end()) {
        throw HostCtlException("There is no interface " + name + " in netstack " + netstack_);
    }
    return found->second;
}

LiveKelmNic::LiveKelmNic(HostSim::Live::InterfaceRecord record,
                         std::shared_ptr<LiveIpSettings> settings)
    : record_(std::move(record)), settings_(std::move(settings)) {}

std::string LiveKelmNic::GetInterfaceName() const {
    PassOperation("KelmNic::GetInterfaceName", record_.name);
    return record_.name;
}

std::string LiveKelmNic::GetNetstackInstanceKey() const {
    PassOperation("KelmNic::GetNetstackInstanceKey", record_.name);
    return record_.netstack;
}

HostCtl::Network::MacAddress LiveKelmNic::GetMacAddress() const {
    PassOperation("KelmNic::GetMacAddress", record_.name);
    return HostCtl::Network::MacAddress(record_.mac);
}

std::uint32_t LiveKelmNic::GetMtu() const {
    PassOperation("KelmNic::GetMtu", record_.name);
    return record_.mtu;
}

std::uint32_t LiveKelmNic::GetTsoMss() const {
    PassOperation("KelmNic::GetTsoMss", record_.name);
    return record_.tsoMss;
}

std::uint32_t LiveKelmNic::GetNumRxQueue() const {
    PassOperation("KelmNic::GetNumRxQueue", record_.name);
    return record_.rxQueues;
}

bool LiveKelmNic::IsEnabled() const {
    PassOperation("KelmNic::IsEnabled", record_.name);
    return record_.up;
}

void LiveKelmNic::Enable() {
    PassOperation("KelmNic::Enable", record_.name);
    Live().Interfaces().SetUp(record_.netstack, record_.name, true);
    record_.up = true;
}

void LiveKelmNic::Disable() {
    PassOperation("KelmNic::Disable", record_.name);
    Live().Interfaces().SetUp(record_.netstack, record_.name, false);
    record_.up = false;
}

// The link's own limits apply, and the kernel says when a value is beyond them.
void LiveKelmNic::SetMtu(unsigned mtu) {
    PassOperation("KelmNic::SetMtu", record_.name);
    Live().Interfaces().SetMtu(record_.netstack, record_.name, mtu);
    record_.mtu = mtu;
}

std::unique_ptr<HostCtl::Network::ConnectionPoint> LiveKelmNic::GetConnectionPoint() const {
    PassOperation("KelmNic::GetConnectionPoint", record_.name);
    return std::make_unique<LiveConnectionPoint>(record_.name, record_.master);
}

// A link is no switch port.
std::unique_ptr<HostCtl::Network::KelmNicPort> LiveKelmNic::GetPort() const {
    PassOperation("KelmNic::GetPort", record_.name);
    return nullptr;
}

IpConfig LiveKelmNic::GetIpConfig() const {
    PassOperation("KelmNic::GetIpConfig", record_.name);
    return ConfigOf(settings_->Of(record_.name));
}

// The kernel keeps no configuration apart from what is in force.
IpConfig LiveKelmNic::GetConfiguredIpConfig() const {
    PassOperation("KelmNic::GetConfiguredIpConfig", record_.name);
    return ConfigOf(settings_->Of(record_.name));
}

// DHCP, router advertisement and the DNS servers they bring are a client program's, which no
// kernel object holds.
void LiveKelmNic::SetIpConfig(IpConfig config) {
    PassOperation("KelmNic::SetIpConfig", record_.name);
    HostSim::Ip::CheckIpConfig(config, record_.name);
    if (config.GetUseDhcp() || config.GetDhcpDns() || config.GetUseIpv6Dhcp() ||
        config.GetUseIpv6RouterAdvertised() || config.GetIpv6DhcpDns()) {
        NotAvailable();
    }
    const InterfaceIp wanted = WantedFor(config, settings_->Of(record_.name));
    settings_->Forget();
    Live().Interfaces().SetIp(record_.netstack, record_.name, wanted);
}

void LiveKelmNic::Remove() {
    PassOperation("KelmNic::Remove", record_.name);
    NotAvailable();
}

void LiveKelmNic::AddTag(HostCtl::Network::KelmNicTagType, bool) {
    PassOperation("KelmNic::AddTag", record_.name);
    NotAvailable();
}

void LiveKelmNic::RemoveTag(HostCtl::Network::KelmNicTagType) {
    PassOperation("KelmNic::RemoveTag", record_.name);
    NotAvailable();
}

void LiveKelmNic::GetTags(std::vector<HostCtl::Network::KelmNicTagType>&) const {
    PassOperation("KelmNic::GetTags", record_.name);
    NotAvailable();
}

// Linux has no network dumper.
bool LiveKelmNic::IsNetDumperInterface() const {
    PassOperation("KelmNic::IsNetDumperInterface", record_.name);
    return false;
}

bool LiveKelmNic::IsIpv6ReadyPrimary() const {
    PassOperation("KelmNic::IsIpv6ReadyPrimary", record_.name);
    return false;
}

bool LiveKelmNic::IsIpv6ReadySecondary() const {
    PassOperation("KelmNic::IsIpv6ReadySecondary", record_.name);
    return false;
}

std::vector<std::unique_ptr<HostCtl::Network::KelmNic>> LiveKelmNics(
    std::vector<HostSim::Live::InterfaceRecord> records, const std::string& netstack) {
    auto settings = std::make_shared<LiveIpSettings>(netstack);
    std::vector<std::unique_ptr<HostCtl::Network::KelmNic>> nics;
    nics.reserve(records.size());
    for (auto& record : records) {
        nics.push_back(std::make_unique<LiveKelmNic>(std::move(record), settings));
    }
    return nics;
}

}  // namespace KelmCtl::Network
