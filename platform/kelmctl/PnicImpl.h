// The host's implementation of one physical NIC. It holds a copy of the NIC's record, which
// Refresh renews; setters change the host and the copy alike.
#pragma once

#include <memory>
#include <string>

#include "hostctl/Pnic.h"
#include "hostctl/Port.h"

namespace KelmCtl::Network {

class PnicImpl : public HostCtl::Network::Pnic {
public:
    struct Record;

    // Throws HostCtlException when there is no such NIC.
    explicit PnicImpl(const std::string& name);
    explicit PnicImpl(std::unique_ptr<Record> record);
    ~PnicImpl() override;

    static bool IsValidPnic(const std::string& name);
    // Reads the NIC's record from the host again.
    void Refresh();

    std::string GetName() const override;
    std::unique_ptr<HostCtl::Network::PciDevice> GetPciDevice() const override;
    int GetDuplex() const override;
    bool IsLinkUp() const override;
    bool GetLinkStatus() const override;
    bool GetAdminStatus() const override;
    std::uint32_t GetSpeed() const override;
    std::string GetDriverName() const override;
    HostCtl::Network::MacAddress GetMacAddress() const override;
    void SetLinkState(bool up) override;
    std::uint32_t GetMtu() const override;
    std::string GetDeviceDescriptor() const override;
    void GetPnicInfo(HostCtl::Network::PnicInfo& info) const override;
    void GetPauseParams(HostCtl::Network::PnicPauseParams& params) const override;
    void GetPnicDriverInfo(HostCtl::Network::PnicDriverInfo& info) const override;

    // Ports of switches.
    // The NIC's port on the switch it serves as an uplink; throws when it serves none.
    std::unique_ptr<HostCtl::Network::Port> GetPort() const;

private:
    std::unique_ptr<Record> record_;
};

}  // namespace KelmCtl::Network
