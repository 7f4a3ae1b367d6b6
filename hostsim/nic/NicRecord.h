// What the host knows of one NIC: the record a PnicImpl holds, as the simulated host stores it
// and the live host reads it from the kernel, and its column table in the store.
#pragma once

#include <cstdint>
#include <string>

#include "hostsim/core/ColumnTable.h"
#include "kelmctl/PnicImpl.h"

namespace KelmCtl::Network {

// One NIC. On the simulated host it is a row of the nic table, whose nested detail stays JSON
// text until it is asked for; the live host leaves that detail empty and asks the kernel for it
// when it is wanted.
struct PnicImpl::Record {
    std::string name;
    std::string pciAddress;  // empty for a pseudo NIC
    std::string pciVendor;
    std::string pciDevice;
    std::string descriptor;       // a pseudo NIC's "kind:vendor:device"
    std::string descriptorError;  // when set, reading the descriptor fails with it
    std::string driver;
    bool adminUp = false;
    bool cableConnected = false;  // the link comes up when the NIC is up and this is set
    std::uint32_t speed = 0;
    std::uint32_t duplex = 0;
    std::string mac;
    std::uint32_t mtu = 0;
    std::string dpuId;     // empty when no DPU backs the NIC
    std::string linkInfo;  // JSON of PnicInfo without the link status
    std::string pause;     // JSON of PnicPauseParams
    std::string driverVersion;
    std::string firmwareVersion;
    std::string busInfo;

    bool LinkUp() const { return adminUp && cableConnected; }
};

}  // namespace KelmCtl::Network

namespace HostSim {

using NicRecord = KelmCtl::Network::PnicImpl::Record;

}  // namespace HostSim

namespace HostSim::Nic {

using Record = NicRecord;

// The link record and the pause parameters, JSON text in the store, objects in a profile.
extern const ColumnDocument kLinkInfoDocument;
extern const ColumnDocument kPauseDocument;

// Table nic, after its position. A pseudo NIC has no "pci" object; a NIC without "driverInfo"
// has its PCI address as bus info.
inline constexpr Column<Record> kColumns[] = {
    {.sql = "name", .member = &Record::name, .json = "name", .required = true},
    {.sql = "pci_address",
     .member = &Record::pciAddress,
     .json = "address",
     .in = "pci",
     .required = true,
     .nullWhenEmpty = true,
     .omitWhenEmpty = true},
    {.sql = "pci_vendor",
     .member = &Record::pciVendor,
     .json = "vendor",
     .in = "pci",
     .required = true,
     .nullWhenEmpty = true},
    {.sql = "pci_device",
     .member = &Record::pciDevice,
     .json = "device",
     .in = "pci",
     .required = true,
     .nullWhenEmpty = true},
    {.sql = "descriptor",
     .member = &Record::descriptor,
     .json = "descriptor",
     .nullWhenEmpty = true,
     .omitWhenEmpty = true},
    {.sql = "descriptor_error",
     .member = &Record::descriptorError,
     .json = "descriptorError",
     .nullWhenEmpty = true,
     .omitWhenEmpty = true},
    {.sql = "driver", .member = &Record::driver, .json = "driver", .required = true},
    {.sql = "admin_up", .member = &Record::adminUp, .json = "adminUp", .fallback = true},
    {.sql = "cable_connected",
     .member = &Record::cableConnected,
     .json = "cableConnected",
     .fallback = true},
    {.sql = "speed", .member = &Record::speed, .json = "speed", .required = true},
    {.sql = "duplex", .member = &Record::duplex, .json = "duplex", .fallback = 1},
    {.sql = "mac", .member = &Record::mac, .json = "mac", .required = true},
    {.sql = "mtu", .member = &Record::mtu, .json = "mtu", .fallback = 1500},
    {.sql = "dpu_id",
     .member = &Record::dpuId,
     .json = "dpuId",
     .nullWhenEmpty = true,
     .omitWhenEmpty = true},
    {.sql = "link_info",
     .member = &Record::linkInfo,
     .json = "linkInfo",
     .document = &kLinkInfoDocument},
    {.sql = "pause", .member = &Record::pause, .json = "pause", .document = &kPauseDocument},
    {.sql = "driver_version",
     .member = &Record::driverVersion,
     .json = "version",
     .in = "driverInfo"},
    {.sql = "firmware_version",
     .member = &Record::firmwareVersion,
     .json = "firmwareVersion",
     .in = "driverInfo"},
    {.sql = "bus_info", .member = &Record::busInfo, .json = "busInfo", .in = "driverInfo"},
};

}  // namespace HostSim::Nic
