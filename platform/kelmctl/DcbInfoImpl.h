// The host's Data Center Bridging state of one NIC.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostctl/Dcb.h"

namespace KelmCtl::Network {

class DcbInfoImpl {
public:
    struct State;

    // Throws HostCtlException when there is no such NIC or the NIC has no DCB.
    explicit DcbInfoImpl(const std::string& nicName);
    ~DcbInfoImpl();
    DcbInfoImpl(const DcbInfoImpl&) = delete;
    DcbInfoImpl& operator=(const DcbInfoImpl&) = delete;

    // 0 unknown, 1 CEN, 2 CEE, 3 IEEE.
    unsigned int GetMode() const;
    bool IsEnabled() const;
    HostCtl::Network::DcbCapabilities GetCapabilities() const;
    bool IsPfcEnabled() const;
    unsigned char GetPfcConfig() const;
    HostCtl::Network::DcbIeeeEtsConfig GetIeeeEtsConfig() const;
    HostCtl::Network::DcbIeeePfcConfig GetIeeePfcConfig() const;
    std::vector<HostCtl::Network::DcbAppInfo> GetAppInfo() const;

private:
    std::string nic_;
    std::unique_ptr<State> state_;
};

}  // namespace KelmCtl::Network
