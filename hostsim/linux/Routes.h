// The routes of a netstack: the unicast routes of its namespace's main table, read and changed
// through rtnetlink.
#pragma once

#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Rtnetlink.h"

namespace HostSim::Linux {

class Routes final : public Live::RouteDriver {
public:
    std::vector<Live::RouteRecord> LoadAll(const std::string& netstack, int family) override;
    std::optional<Live::RouteRecord> LoadDefault(const std::string& netstack, int family) override;
    void Add(const std::string& netstack, int family, const Live::RouteRecord& route) override;
    void Remove(const std::string& netstack, int family, const Live::RouteRecord& route) override;
    void SetDefaultGateway(const std::string& netstack, int family, const std::string& gateway,
                           bool fromDhcp) override;

private:
    RouteSockets sockets_;
};

}  // namespace HostSim::Linux
