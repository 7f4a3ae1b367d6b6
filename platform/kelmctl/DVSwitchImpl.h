// The host's implementation of a distributed switch, read when it is made.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/DVSwitch.h"
#include "kelmctl/PortsetImpl.h"

namespace KelmCtl::Network {

struct DVSwitchRecord;

class DVSwitchImpl final : public HostCtl::Network::DVSwitch, public PortsetImpl {
public:
    explicit DVSwitchImpl(std::unique_ptr<DVSwitchRecord> record);
    ~DVSwitchImpl() override;

    std::string GetName() const override;
    std::string GetClass() const override;
    std::uint32_t GetNumPorts() const override;
    std::uint32_t GetNumUsedPorts() const override;
    std::uint32_t GetNumConfiguredPorts() const override;
    std::vector<std::string> GetUplinks(bool activeOnly) const override;

    std::string GetDvsName() const override;
    std::string GetDvsId() const override;
    std::map<std::string, HostCtl::Network::DVPortParam> GetUplinkPorts() const override;
    void GetDVPortIds(std::vector<std::string>& uplinkPorts, std::vector<std::string>& ports,
                      bool uplinksOnly) const override;
    std::unique_ptr<HostCtl::Network::DVPort> GetDVPortById(const std::string& id) const override;
    void GetLagConfigs(std::vector<HostCtl::Network::LagConfig>& list) const override;
    void GetLacpStatus(std::vector<HostCtl::Network::LagStatus>& list) const override;
    bool IsLacpStateOnDpu() const override;
    void SetLacpTimeout(int lagId, bool timeout, const std::string& nicName) override;

    // "down", "listen", "advertise" or "both".
    std::string GetCdpStatusString() const;
    std::uint32_t GetMTU() const;
    // Seconds; -1 when beacon probing is off.
    int GetBeaconTimeout() const;
    bool IsZanvexBranded() const;
    // Every port of the switch, in port order.
    std::vector<std::unique_ptr<HostCtl::Network::DVPort>> GetDVPorts() const;

private:
    std::unique_ptr<DVSwitchRecord> record_;
};

}  // namespace KelmCtl::Network
