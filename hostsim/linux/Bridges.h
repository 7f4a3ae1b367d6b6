// The live host's standard switches: the bridges of the process's network namespace, read and
// changed through rtnetlink.
#pragma once

#include <memory>

#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Netlink.h"

namespace HostSim::Linux {

class Bridges final : public Live::BridgeDriver {
public:
    std::vector<Live::BridgeRecord> LoadAll() override;
    std::optional<Live::BridgeRecord> Load(const std::string& name) override;
    void Add(const std::string& name) override;
    void Remove(const std::string& name) override;
    void SetMtu(const std::string& name, std::uint32_t mtu) override;
    void AddPort(const std::string& bridge, const std::string& link) override;
    void RemovePort(const std::string& bridge, const std::string& link) override;

private:
    // Opened on first use and kept for the process.
    NetlinkSocket& Route();

    std::unique_ptr<NetlinkSocket> route_;
};

}  // namespace HostSim::Linux
