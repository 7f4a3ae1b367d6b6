// The host's implementation of a port of a distributed switch. Made for a port that need not
// exist: IsValid tells, and the other reads throw HostCtlException when it doesn't.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/DVSwitch.h"

namespace KelmCtl::Network {

struct DVPortRecord;

class DVPortImpl final : public HostCtl::Network::DVPort {
public:
    explicit DVPortImpl(const HostCtl::Network::DVPortParam& param);
    // `switchKey`: the identity of the switch, as PortsetImpl::GetSwitchKey gives it.
    DVPortImpl(const std::string& dvPortId, const std::string& switchKey);
    ~DVPortImpl() override;

    std::string GetPortsetName() const override;
    // Whether the switch has the port.
    bool IsValid() const override;
    std::string GetName() const override;
    std::string GetDVPortgroupId() const override;
    HostCtl::Network::DVPortLacpConfig GetLacpConfig() const override;

    std::string GetPortId() const;
    // Whether the port is in use; fills `clients` with what uses it.
    bool IsInUse(std::vector<std::string>& clients) const;
    std::uint32_t GetConnectionId() const;
    void SetConnectionId(std::uint32_t connectionId);
    HostCtl::Network::DVPortParam GetDVPortParam() const override;

    // As a connection point of Kelm interfaces.
    int GetType() const override;

    // Made from a record already read, by the listings of a switch's ports.
    explicit DVPortImpl(std::unique_ptr<DVPortRecord> record);

private:
    // The record; throws when the port doesn't exist.
    const DVPortRecord& Record() const;

    HostCtl::Network::DVPortParam param_;
    std::unique_ptr<DVPortRecord> record_;
};

}  // namespace KelmCtl::Network
