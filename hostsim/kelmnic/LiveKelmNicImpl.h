// A Kelm interface of the live Linux host: a link of a netstack's namespace. Its record is read
// when it is made; its IP configuration is read with those of every interface of its netstack
// when the first of them is asked, and changing it changes the kernel's addresses and routes.
#pragma once

#include <map>
#include <memory>
#include <optional>

#include "hostctl/KelmNic.h"
#include "hostsim/linux/LiveHost.h"

namespace KelmCtl::Network {

// The IP settings of a netstack's interfaces, read once for all of them.
class LiveIpSettings {
public:
    explicit LiveIpSettings(std::string netstack) : netstack_(std::move(netstack)) {}
    // Throws HostCtlException when the interface has gone.
    const HostSim::Live::InterfaceIp& Of(const std::string& name);
    // Reads them again at the next question, after a change.
    void Forget() { settings_.reset(); }

private:
    std::string netstack_;
    std::optional<std::map<std::string, HostSim::Live::InterfaceIp>> settings_;
};

class LiveKelmNic : public HostCtl::Network::KelmNic {
public:
    LiveKelmNic(HostSim::Live::InterfaceRecord record, std::shared_ptr<LiveIpSettings> settings);

    std::string GetInterfaceName() const override;
    std::string GetNetstackInstanceKey() const override;
    HostCtl::Network::MacAddress GetMacAddress() const override;
    std::uint32_t GetMtu() const override;
    std::uint32_t GetTsoMss() const override;
    std::uint32_t GetNumRxQueue() const override;
    bool IsEnabled() const override;
    void Enable() override;
    void Disable() override;
    void SetMtu(unsigned mtu) override;
    std::unique_ptr<HostCtl::Network::ConnectionPoint> GetConnectionPoint() const override;
    std::unique_ptr<HostCtl::Network::KelmNicPort> GetPort() const override;
    HostCtl::Network::IpConfig GetIpConfig() const override;
    HostCtl::Network::IpConfig GetConfiguredIpConfig() const override;
    void SetIpConfig(HostCtl::Network::IpConfig config) override;
    void Remove() override;
    void AddTag(HostCtl::Network::KelmNicTagType tag, bool exclusive) override;
    void RemoveTag(HostCtl::Network::KelmNicTagType tag) override;
    void GetTags(std::vector<HostCtl::Network::KelmNicTagType>& tags) const override;
    bool IsNetDumperInterface() const override;
    bool IsIpv6ReadyPrimary() const override;
    bool IsIpv6ReadySecondary() const override;

private:
    HostSim::Live::InterfaceRecord record_;
    std::shared_ptr<LiveIpSettings> settings_;
};

// The interfaces of a netstack on the live host, sharing one read of their IP settings.
std::vector<std::unique_ptr<HostCtl::Network::KelmNic>> LiveKelmNics(
    std::vector<HostSim::Live::InterfaceRecord> records, const std::string& netstack);

}  // namespace KelmCtl::Network
