// A Kelm interface of the host, read when it is made; each change goes to the host and to the
// copy held.
#pragma once

#include <memory>

#include "hostctl/DVSwitch.h"
#include "hostctl/KelmNic.h"
#include "hostsim/kelmnic/KelmNicStore.h"

namespace KelmCtl::Network {

class KelmNicImpl : public HostCtl::Network::KelmNic {
public:
    explicit KelmNicImpl(KelmNicRecord record);

    // Reads the interface again; throws when it is gone.
    void Refresh();

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
    KelmNicRecord record_;
};

// The connection point of an interface as the host holds it.
class KelmNicConnectionPoint : public HostCtl::Network::ConnectionPoint {
public:
    explicit KelmNicConnectionPoint(const KelmNicRecord& record);
    std::string GetPortsetName() const override;
    // An interface's connection point is one the host has.
    bool IsValid() const override;
    int GetType() const override;
    std::string GetPortGroupName() const override;
    HostCtl::Network::DVPortParam GetDVPortParam() const override;
    const HostCtl::Network::OpaqueNetworkParam& GetOpaqueNetworkParam() const override;

private:
    std::string interface_;
    int type_;
    std::string portset_;
    std::string portGroup_;
    std::string dvsId_;
    std::string dvPort_;
    std::uint32_t connectionId_;
    HostCtl::Network::OpaqueNetworkParam opaque_;
};

}  // namespace KelmCtl::Network

namespace HostSim::Ip {

// Removes an interface inside the caller's write transaction, and takes it off its port group.
void RemoveKelmNicRow(Database& database, const KelmCtl::Network::KelmNicRecord& record);

}  // namespace HostSim::Ip
