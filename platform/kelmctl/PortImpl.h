// The host's implementation of a port, read when it is made.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/IpAddress.h"
#include "hostctl/MacAddress.h"
#include "hostctl/Port.h"

namespace KelmCtl::Network {

struct PortRecord;

class PortImpl final : public HostCtl::Network::Port {
public:
    // Port types.
    static constexpr int kTypeVirtualNic = 1;
    static constexpr int kTypeKelmNic = 2;
    // An uplink sees traffic from the wire's side: its transmit is the switch's receive.
    static constexpr int kTypeUplink = 4;

    explicit PortImpl(std::unique_ptr<PortRecord> record);
    ~PortImpl() override;

    std::uint32_t GetPortId() const override;

    std::uint32_t GetId() const;
    int GetType() const;
    // The world that owns the port; 0 for none.
    std::uint32_t GetWorldLeader() const;
    HostCtl::Network::PortByteStats GetPortStats() const;
    void GetPacketStats(HostCtl::Network::PacketStats& stats) const;
    // In the order the host keeps them.
    std::vector<std::unique_ptr<HostCtl::Network::FilterStats>> GetFilterStats() const;
    // Empty on a distributed switch.
    std::string GetPortGroupName() const;
    // Empty on a standard switch.
    std::string GetDVPortID() const;
    std::vector<HostCtl::Network::MacAddress> GetMacAddresses() const;
    HostCtl::Network::Ipv4Address GetPortClientIpv4Address() const;
    // The uplink NIC that carries the port's traffic.
    std::string GetSchedTeamUplink() const;

private:
    std::unique_ptr<PortRecord> record_;
};

}  // namespace KelmCtl::Network
