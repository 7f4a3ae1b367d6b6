// The host's implementation of the network model root.
#pragma once

#include "hostctl/NetworkInfo.h"

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
};

}  // namespace KelmCtl::Network
