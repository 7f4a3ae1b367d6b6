// A physical NIC of the host, and the records it exchanges.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hostctl/MacAddress.h"
#include "hostctl/PnicSettings.h"
#include "hostctl/PnicDevice.h"

namespace HostCtl::Network {

// Which NICs a listing returns: the uplinks of switches, or every NIC as such.
enum PnicGetType {
    PnicGetUplinks = 0,
    PnicGetAll = 1,
};

enum WakeOnMode : std::uint32_t {
    WakeOnPhy = 0,
    WakeOnUnicast = 1,
    WakeOnMulticast = 2,
    WakeOnBroadcast = 3,
    WakeOnArp = 4,
    WakeOnMagic = 5,
    WakeOnMagicSecure = 6,
    WakeOnUnsupported = 7,
    WakeOnDisabled = 8,
};

struct PnicLinkMode {
    std::uint32_t speed = 0;   // Mbps
    std::uint32_t duplex = 0;  // 0 auto, 1 full, 2 half
    std::uint32_t media = 0;   // index into the link-mode words
};

struct PnicInfo {
    std::vector<std::uint32_t> supportedPorts;
    std::vector<PnicLinkMode> supportedLinkModes;
    std::uint8_t supportsAutoNegotiation = 0;
    std::vector<PnicLinkMode> advertisedLinkModes;
    std::uint8_t advertisedAutoNegotiation = 0;
    std::uint8_t advertisedLinkModesChanged = 0;
    std::uint8_t portChanged = 0;
    std::uint8_t phyAddressChanged = 0;
    std::uint8_t virtualAddressChanged = 0;
    std::uint8_t transceiverChanged = 0;
    std::uint8_t autoNegotiationChanged = 0;
    std::uint32_t speed = 0;
    std::uint32_t duplex = 0;
    std::uint32_t port = 0;
    std::uint32_t phyAddress = 0;
    std::uint32_t transceiver = 0;  // 0 internal, 1 external
    std::uint8_t autoNegotiation = 0;
    std::uint8_t wakeOnChanged = 0;
    std::uint8_t supportsWakeOn = 0;
    std::vector<WakeOnMode> supportedWakeOn;
    std::vector<WakeOnMode> wakeOn;
    std::uint8_t messageLevelChanged = 0;
    std::uint8_t supportsMessageLevel = 0;
    std::uint32_t messageLevel = 0;
    std::string virtualAddress;
    std::string linkStatus;
};

struct PnicPauseParams {
    std::uint8_t supported = 0;
    std::uint8_t autoNegotiation = 0;
    std::uint8_t rxPause = 0;
    std::uint8_t txPause = 0;
    std::uint32_t rxResolution = 0;  // 0 none available, 1 resolved on, other resolved off
    std::uint32_t txResolution = 0;
};

struct PnicDriverInfo {
    std::string driver;
    std::string version;
    std::string firmwareVersion;
    std::string busInfo;
};

class PciDevice {
public:
    virtual ~PciDevice() = default;
    virtual std::string GetVendorName() const = 0;
    virtual std::string GetDeviceName() const = 0;
    // The bus address, "0000:02:00.0".
    virtual std::string GetAddress() const = 0;
};

class Pnic {
public:
    virtual ~Pnic() = default;

    virtual std::string GetName() const = 0;
    // Null for a pseudo NIC, which has a device descriptor instead.
    virtual std::unique_ptr<PciDevice> GetPciDevice() const = 0;
    virtual int GetDuplex() const = 0;  // 1 full, otherwise half
    virtual bool IsLinkUp() const = 0;
    virtual bool GetLinkStatus() const = 0;
    virtual bool GetAdminStatus() const = 0;
    virtual std::uint32_t GetSpeed() const = 0;  // Mbps
    virtual std::string GetDriverName() const = 0;
    virtual MacAddress GetMacAddress() const = 0;
    virtual void SetLinkState(bool up) = 0;
    virtual std::uint32_t GetMtu() const = 0;
    // Fields separated by ':': kind, vendor, device.
    virtual std::string GetDeviceDescriptor() const = 0;
    virtual void GetPnicInfo(PnicInfo& info) const = 0;
    virtual void GetPauseParams(PnicPauseParams& params) const = 0;
    virtual void GetPnicDriverInfo(PnicDriverInfo& info) const = 0;

    // Link settings, coalescing, offload, software simulation, rings and pause.
    // Applies the fields of `info` whose flags are set.
    virtual void SetPnicInfo(const PnicInfo& info) = 0;
    // Speed in Mbps; duplex 1 full, 2 half; 0 and 0 ask for auto negotiation.
    virtual void SetSpeedDuplex(unsigned speed, int duplex) = 0;
    virtual void GetCoalesceParams(PnicCoalesceParams& params) const = 0;
    virtual void SetCoalesceParams(const PnicCoalesceParams& params) = 0;
    virtual void GetOffloadParams(PnicOffloadParams& params) const = 0;
    virtual void SetOffloadParams(const PnicOffloadParams& params) = 0;
    virtual void GetSoftwareSimulation(PnicSoftwareSimulation& settings) const = 0;
    virtual void SetSoftwareSimulation(const PnicSoftwareSimulation& settings) = 0;
    // The preset maximums into `preset`, the sizes in use into `current`.
    virtual void GetRingParams(PnicRingParams& preset, PnicRingParams& current) const = 0;
    virtual void SetRingParams(const PnicRingParams& params) = 0;
    virtual void SetPauseParams(const PnicPauseParams& params) = 0;
    // Device features: netqueues, hardware capabilities, diagnostics, uplink attachment.
    // Each throws HostCtlException when the NIC lacks the feature or refuses the change.
    virtual void GetNetqueueParams(PnicNetqueueParams& params) const = 0;
    virtual void SetNetqueueParams(const PnicNetqueueParams& params) = 0;
    virtual void GetHwCapabilities(PnicHwCapabilities& capabilities) const = 0;
    virtual void DumpRegisters(std::vector<std::uint32_t>& registers) const = 0;
    // The bytes from `offset`, `length` of them (0: to the end), cut at the EEPROM's end.
    virtual void GetEeprom(std::vector<unsigned char>& data, std::uint32_t length,
                           std::uint32_t offset) const = 0;
    // Writes one double word, least significant byte first.
    virtual void SetEeprom(std::uint32_t magic, std::uint32_t offset, std::uint32_t value) = 0;
    // The host reads the image from the file and writes it from offset 0.
    virtual void SetEepromFromFile(std::uint32_t magic, const std::string& file) = 0;
    virtual void RestartNegotiation() = 0;
    virtual void RunSelfTest(PnicSelfTestResult& result, bool online) = 0;
    // On a trunk.
    virtual void AddAttachment(const std::string& branch, std::uint16_t vlanId) = 0;
    virtual void RemoveAttachment(const std::string& branch) = 0;
    virtual std::vector<PnicAttachment> GetAttachments() const = 0;
};

}  // namespace HostCtl::Network
