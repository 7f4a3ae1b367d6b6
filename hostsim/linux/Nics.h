// The NICs of the live host: links of the process's network namespace, read and changed through
// rtnetlink, ethtool's netlink family and its ioctl, and sysfs for the bus devices behind them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostsim/linux/Ethtool.h"
#include "hostsim/linux/LiveHost.h"
#include "hostsim/linux/Netlink.h"

namespace HostSim::Linux {

class Nics final : public Live::NicDriver {
public:
    // Links (Nics.cpp).
    std::vector<std::unique_ptr<NicRecord>> LoadAll() override;
    std::vector<std::unique_ptr<NicRecord>> LoadUplinks() override;
    std::optional<NicRecord> Load(const std::string& name) override;
    void SetAdminState(const std::string& name, bool up) override;
    void GetStats(const std::string& name, HostCtl::Network::PnicStats& stats) override;

    // Link and driver settings through ethtool's netlink family (NicSettings.cpp).
    void GetLinkInfo(const std::string& name, HostCtl::Network::PnicInfo& info) override;
    void SetLinkInfo(const std::string& name, const HostCtl::Network::PnicInfo& change) override;
    void SetSpeedDuplex(const std::string& name, unsigned speed, int duplex) override;
    void GetPause(const std::string& name, HostCtl::Network::PnicPauseParams& params) override;
    void SetPause(const std::string& name,
                  const HostCtl::Network::PnicPauseParams& params) override;
    void GetCoalesce(const std::string& name,
                     HostCtl::Network::PnicCoalesceParams& params) override;
    void SetCoalesce(const std::string& name,
                     const HostCtl::Network::PnicCoalesceParams& params) override;
    void GetOffload(const std::string& name, HostCtl::Network::PnicOffloadParams& params) override;
    void SetOffload(const std::string& name,
                    const HostCtl::Network::PnicOffloadParams& params) override;
    void GetRings(const std::string& name, HostCtl::Network::PnicRingParams& preset,
                  HostCtl::Network::PnicRingParams& current) override;
    void SetRings(const std::string& name, const HostCtl::Network::PnicRingParams& params) override;
    void GetQueues(const std::string& name, HostCtl::Network::PnicNetqueueParams& params) override;
    void SetQueues(const std::string& name,
                   const HostCtl::Network::PnicNetqueueParams& params) override;

    // Diagnostics through the ethtool ioctl (NicDiagnostics.cpp).
    void GetDriverInfo(const std::string& name, HostCtl::Network::PnicDriverInfo& info) override;
    void DumpRegisters(const std::string& name, std::vector<std::uint32_t>& words) override;
    void GetEeprom(const std::string& name, std::vector<unsigned char>& data, std::uint32_t length,
                   std::uint32_t offset) override;
    void SetEeprom(const std::string& name, std::uint32_t magic, std::uint32_t offset,
                   const std::vector<unsigned char>& bytes) override;
    void RestartNegotiation(const std::string& name) override;
    void RunSelfTest(const std::string& name, HostCtl::Network::PnicSelfTestResult& result,
                     bool online) override;

    // SR-IOV through sysfs and the link table's virtual function records (Sriov.cpp).
    std::vector<std::unique_ptr<NicRecord>> LoadSriovNics() override;
    std::vector<HostCtl::Network::SriovNicVFInfo> GetVirtualFunctions(
        const std::string& name) override;
    void GetVirtualFunctionStats(const std::string& name, int vfId,
                                 HostCtl::Network::SriovNicVFStats& stats) override;

private:
    // The records with the speed and duplex of those whose link is up.
    std::vector<std::unique_ptr<NicRecord>> WithLinkModes(
        std::vector<std::unique_ptr<NicRecord>> records);

    // The sockets, opened on first use and kept for the process.
    NetlinkSocket& Route();
    Ethtool& EthtoolFamily();

    std::unique_ptr<NetlinkSocket> route_;
    std::unique_ptr<Ethtool> ethtool_;
};

}  // namespace HostSim::Linux
