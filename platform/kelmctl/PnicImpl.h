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

    // Link settings, counters, coalescing, offload, software simulation, rings and pause.
    void SetPnicInfo(const HostCtl::Network::PnicInfo& info) override;
    void SetSpeedDuplex(unsigned speed, int duplex) override;
    void GetCoalesceParams(HostCtl::Network::PnicCoalesceParams& params) const override;
    void SetCoalesceParams(const HostCtl::Network::PnicCoalesceParams& params) override;
    void GetOffloadParams(HostCtl::Network::PnicOffloadParams& params) const override;
    void SetOffloadParams(const HostCtl::Network::PnicOffloadParams& params) override;
    void GetSoftwareSimulation(HostCtl::Network::PnicSoftwareSimulation& settings) const override;
    void SetSoftwareSimulation(const HostCtl::Network::PnicSoftwareSimulation& settings) override;
    void GetRingParams(HostCtl::Network::PnicRingParams& preset,
                       HostCtl::Network::PnicRingParams& current) const override;
    void SetRingParams(const HostCtl::Network::PnicRingParams& params) override;
    void SetPauseParams(const HostCtl::Network::PnicPauseParams& params) override;
    // The NIC's counters; throws HostCtlException when the host can't read them.
    void GetPnicStats(HostCtl::Network::PnicStats& stats) const;
    // Device features: netqueues, hardware capabilities, diagnostics, uplink attachment.
    void GetNetqueueParams(HostCtl::Network::PnicNetqueueParams& params) const override;
    void SetNetqueueParams(const HostCtl::Network::PnicNetqueueParams& params) override;
    void GetHwCapabilities(HostCtl::Network::PnicHwCapabilities& capabilities) const override;
    // The display name of capability bit `bit` of PnicHwCapabilities.
    static const char* GetHwCapName(unsigned char bit);
    void DumpRegisters(std::vector<std::uint32_t>& registers) const override;
    void GetEeprom(std::vector<unsigned char>& data, std::uint32_t length,
                   std::uint32_t offset) const override;
    void SetEeprom(std::uint32_t magic, std::uint32_t offset, std::uint32_t value) override;
    void SetEepromFromFile(std::uint32_t magic, const std::string& file) override;
    void RestartNegotiation() override;
    void RunSelfTest(HostCtl::Network::PnicSelfTestResult& result, bool online) override;
    void AddAttachment(const std::string& branch, std::uint16_t vlanId) override;
    void RemoveAttachment(const std::string& branch) override;
    std::vector<HostCtl::Network::PnicAttachment> GetAttachments() const override;
    // Ports of switches.
    // The NIC's port on the switch it serves as an uplink; throws when it serves none.
    std::unique_ptr<HostCtl::Network::Port> GetPort() const;

private:
    std::unique_ptr<Record> record_;
};

}  // namespace KelmCtl::Network
