// A netstack instance of the host, or the settings of one to be added.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/NetstackInstance.h"

namespace KelmCtl::Network {

struct NetstackRecord;

class NetstackInstanceImpl : public HostCtl::Network::NetstackInstance {
public:
    // The settings of a new instance, not yet on the host: `workers` is the number of kernel
    // worlds that serve it.
    NetstackInstanceImpl(const std::string& key, unsigned maxConnections,
                         const std::string& congestionControlAlgorithm, bool ipv6Enabled,
                         unsigned workers, const std::string& ecnStatus);
    // An instance of the host, read from it.
    explicit NetstackInstanceImpl(std::unique_ptr<NetstackRecord> record);
    ~NetstackInstanceImpl() override;

    // The congestion control algorithms the host offers.
    static std::vector<std::string> GetCongestionControlAlgorithmList();

    std::string GetKey() const override;
    std::string GetInstanceName() const override;
    int GetState() const override;
    unsigned GetMaxConnections() const override;
    unsigned GetCurrentMaxConnections() const override;
    std::string GetCongestionControlAlgorithm() const override;
    bool GetIpv6Enabled() const override;
    bool GetCurrentIpv6Enabled() const override;
    std::string GetEcnStatus() const override;
    unsigned GetWorkers() const;

    void SetInstanceName(const std::string& name, bool persist) override;
    void Enable() override;
    void Disable() override;
    void SetMaxConnections(const unsigned& maxConnections, bool persist) override;
    void SetCongestionControlAlgorithm(const std::string& name, bool persist) override;
    void SetEcnStatus(const std::string& status) override;

private:
    std::unique_ptr<NetstackRecord> record_;
    // Whether the record stands for an instance of the host, which setters change.
    bool onHost_;
};

}  // namespace KelmCtl::Network
