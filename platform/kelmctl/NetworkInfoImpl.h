// The host's implementation of the network model root.
#pragma once

#include "hostctl/NetworkInfo.h"
#include "hostctl/Sriov.h"
#include "hostctl/Routing.h"

namespace KelmCtl::Network {

class NetworkInfoImpl : public HostCtl::Network::NetworkInfo {
public:
    NetworkInfoImpl();
    ~NetworkInfoImpl() override;
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> GetPnics(
        HostCtl::Network::PnicGetType type) override;
    std::unique_ptr<HostCtl::Network::Pnic> GetPnicByName(const std::string& name,
                                                          bool refresh) override;
    // The port groups of the switches of that type, switch by switch in the order they were
    // made.
    std::vector<std::unique_ptr<HostCtl::Network::PortGroup>> GetAllPortGroups(
        HostCtl::Network::PortsetGetType type);

    // SR-IOV: the NICs with SR-IOV enabled and their virtual functions.
    std::vector<std::unique_ptr<HostCtl::Network::Pnic>> GetSriovNics();
    // Null when `name` is no NIC with SR-IOV enabled.
    std::unique_ptr<HostCtl::Network::Pnic> GetSriovNicByName(const std::string& name);
    std::vector<HostCtl::Network::SriovNicVFInfo> GetSriovNicVFInfo(const std::string& name);
    void GetSriovNicVFStats(HostCtl::Network::SriovNicVFStats* stats, const std::string& name,
                            int vfId);
    // ENS contexts.
    std::uint32_t GetEnsMaxLcores() override;
    bool SetEnsMaxLcores(std::uint32_t count) override;
    std::vector<std::uint64_t> GetEnsLcores() override;
    bool CreateEnsLcore(std::uint64_t id) override;
    bool DestroyEnsLcore(std::uint64_t id) override;
    std::string GetEnsLcoreSwitch(std::uint64_t id) override;
    std::int32_t GetEnsLcoreAffinity(std::uint64_t id) override;
    bool SetEnsLcoreSwitch(const std::string& switchName, std::uint64_t id) override;
    bool SetEnsLcoreAffinity(std::int32_t affinity, std::uint64_t id) override;

    // Kelm interfaces and netstack instances.
    std::unique_ptr<HostCtl::Network::KelmNicInfo> GetKelmNicInfo() override;
    std::vector<std::unique_ptr<HostCtl::Network::NetstackInstance>> ListNetstackInstances()
        override;
    std::unique_ptr<HostCtl::Network::NetstackInstance> LookupNetstackInstanceByKey(
        const std::string& key) override;
    void AddNetstackInstance(const HostCtl::Network::NetstackInstance& instance,
                             bool configOnly) override;
    void RemoveNetstackInstance(const std::string& key, bool keepConfig) override;
    int GetNetstackState(const std::string& key) override;
    std::vector<std::string> GetPredefinedNetstackKeys() override;
    void RefreshNetDumper() override;

    // IP services: the host-wide switches of IPv6 and of the network dumper, and the sockets
    // of a netstack instance, appended to `connections`.
    bool IsKelmIpv6Enabled();
    void SetKelmIpv6Enabled(bool enabled);
    bool GetNetDumperEnabled();
    void GetCurrentTcpKelmConnections(std::vector<HostCtl::Network::TcpIpConnection>& connections,
                                      const std::string& netstack);
    void GetCurrentUdpKelmConnections(std::vector<HostCtl::Network::TcpIpConnection>& connections,
                                      const std::string& netstack);
    void GetCurrentIpKelmConnections(std::vector<HostCtl::Network::TcpIpConnection>& connections,
                                     const std::string& netstack);
};

}  // namespace KelmCtl::Network
