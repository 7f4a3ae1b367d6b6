// The interfaces of the live host: every link of a netstack's namespace but loopback, with the
// addresses and default routes the kernel holds for each, read and changed through rtnetlink.
#pragma once

#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Rtnetlink.h"

namespace HostSim::Linux {

class Interfaces final : public Live::InterfaceDriver {
public:
    std::vector<Live::InterfaceRecord> LoadAll(const std::string& netstack) override;
    std::optional<Live::InterfaceRecord> Load(const std::string& netstack,
                                              const std::string& name) override;
    void SetUp(const std::string& netstack, const std::string& name, bool up) override;
    void SetMtu(const std::string& netstack, const std::string& name, unsigned mtu) override;
    std::map<std::string, Live::InterfaceIp> LoadIp(const std::string& netstack) override;
    void SetIp(const std::string& netstack, const std::string& name,
               const Live::InterfaceIp& wanted) override;

private:
    RouteSockets sockets_;
};

}  // namespace HostSim::Linux
