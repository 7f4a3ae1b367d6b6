// The NIC subject: the nic table, the "nics" section of a profile, and its default data.
#include <set>

#include "hostctl/HostCtlException.h"
#include "hostctl/MacAddress.h"
#include "hostsim/core/JsonMember.h"
#include "hostsim/core/Subject.h"
#include "hostsim/nic/NicStore.h"

namespace HostSim {

namespace {

using HostCtl::Lib::HostCtlException;
using Nic::Record;

constexpr const char* kSchemaSteps[] = {
    "CREATE TABLE nic ("
    " position INTEGER PRIMARY KEY,"
    " name TEXT NOT NULL UNIQUE,"
    " pci_address TEXT, pci_vendor TEXT, pci_device TEXT,"
    " descriptor TEXT, descriptor_error TEXT,"
    " driver TEXT NOT NULL,"
    " admin_up INTEGER NOT NULL, cable_connected INTEGER NOT NULL,"
    " speed INTEGER NOT NULL, duplex INTEGER NOT NULL,"
    " mac TEXT NOT NULL, mtu INTEGER NOT NULL,"
    " dpu_id TEXT,"
    " link_info TEXT NOT NULL, pause TEXT NOT NULL,"
    " driver_version TEXT NOT NULL, firmware_version TEXT NOT NULL, bus_info TEXT NOT NULL)",
};

constexpr const char* kTables[] = {"nic"};

// The duplex of a NIC's link, as a profile gives it.
constexpr std::uint32_t kFullDuplex = 1;
constexpr std::uint32_t kHalfDuplex = 2;

Record RecordFromJson(const Json& nic) {
    Record record;
    ColumnsFromJson(Nic::kColumns, nic, record);
    if (!ObjectMember(nic, "driverInfo").contains("busInfo")) {
        record.busInfo = record.pciAddress;
    }
    if (!HostCtl::Network::MacAddress::IsValid(record.mac)) {
        throw HostCtlException("NIC " + record.name + " has an invalid MAC address \"" +
                               record.mac + "\"");
    }
    if (record.duplex != kFullDuplex && record.duplex != kHalfDuplex) {
        throw HostCtlException("NIC " + record.name + " has duplex " +
                               std::to_string(record.duplex) + ", which is 1 (full) or 2 (half)");
    }
    return record;
}

Json RecordToJson(const Record& record) {
    Json nic = Json::object();
    ColumnsToJson(Nic::kColumns, record, nic);
    return nic;
}

// The copy `copy` of a NIC: its own name, MAC address and PCI slot.
Record ScaledRecord(Record record, const Scale& scale, unsigned copy) {
    if (record.busInfo == record.pciAddress) {
        record.busInfo = Scale::PciAddress(record.busInfo, copy);
    }
    record.name = scale.Name(record.name, copy);
    record.mac = Scale::MacAddress(record.mac, copy);
    record.pciAddress = Scale::PciAddress(record.pciAddress, copy);
    return record;
}

void ImportNics(Database& database, const Json& section, const Scale& scale) {
    std::vector<Record> records;
    for (const auto& nic : section) {
        records.push_back(RecordFromJson(nic));
    }
    std::set<std::string> names;
    std::set<std::string> macs;
    for (unsigned copy = 0; copy < scale.Copies(); ++copy) {
        for (const Record& record : records) {
            Record scaled = ScaledRecord(record, scale, copy);
            if (!names.insert(scaled.name).second) {
                throw HostCtlException("The profile has more than one NIC named " + scaled.name);
            }
            if (!macs.insert(HostCtl::Network::MacAddress(scaled.mac).GetStringAddress()).second) {
                throw HostCtlException("The profile gives the MAC address " + scaled.mac +
                                       " to more than one NIC");
            }
            Nic::Insert(database, scaled);
        }
    }
}

Json ExportNics(Database& database) {
    return JsonArrayOf(Nic::LoadAll(database),
                       [](const auto& record) { return RecordToJson(*record); });
}

}  // namespace

extern const Subject nicSubject;
const Subject nicSubject = {
    .name = "nics",
    .schemaSteps = kSchemaSteps,
    .tables = kTables,
    .defaultSection = Nic::kDefaultSection,
    .importSection = ImportNics,
    .exportSection = ExportNics,
};

}  // namespace HostSim
