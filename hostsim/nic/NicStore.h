// The NIC subject's records and the queries that read and change them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostctl/Pnic.h"
#include "hostsim/core/Columns.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"
#include "hostsim/nic/NicRecord.h"

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

// Every NIC in the profile's order, in one query. Each record is allocated once, so that a
// long listing moves pointers as it grows, not records.
std::vector<std::unique_ptr<Record>> LoadAll(Database& database);
std::optional<Record> Load(Database& database, const std::string& name);
void Insert(Database& database, const Record& record);
// Sets a NIC's administrative state in one write transaction; false when there is no such NIC.
bool SetAdminState(Database& database, const std::string& name, bool up);
// Writes a NIC's speed, duplex, link information and pause parameters, inside the caller's
// write transaction.
void UpdateLinkSettings(Database& database, const Record& record);
// The id of the DPU behind a NIC; empty when there is none or no such NIC.
std::string DpuId(Database& database, const std::string& name);

// The nested records and their JSON form in the profile and the store.
HostCtl::Network::PnicInfo LinkInfoFromJson(const Json& json);
Json LinkInfoToJson(const HostCtl::Network::PnicInfo& info);
HostCtl::Network::PnicPauseParams PauseFromJson(const Json& json);
Json PauseToJson(const HostCtl::Network::PnicPauseParams& pause);

// The NICs of the built-in default host.
extern const char* const kDefaultSection;

}  // namespace HostSim::Nic
