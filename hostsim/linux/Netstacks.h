// Netstacks as network namespaces: the process's own, and those bound to /run/netns/NAME as ip
// netns binds them, so that each tool sees what the other made.
#pragma once

#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Rtnetlink.h"

namespace HostSim::Linux {

class Netstacks final : public Live::NetstackDriver {
public:
    std::vector<KelmCtl::Network::NetstackRecord> LoadAll() override;
    std::optional<KelmCtl::Network::NetstackRecord> Load(const std::string& key) override;
    void Add(const std::string& key) override;
    void Remove(const std::string& key) override;
    void SetCongestionControl(const std::string& key, const std::string& name) override;
    void SetEcn(const std::string& key, const std::string& status) override;
    std::vector<std::string> CongestionControlAlgorithms() override;

private:
    // Throws when the namespace holds a link other than loopback, or a route that no address
    // made.
    void RequireUnused(const std::string& key);

    RouteSockets sockets_;
};

}  // namespace HostSim::Linux
