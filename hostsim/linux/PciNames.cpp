#include "hostsim/linux/PciNames.h"

extern "C" {
#include <pci/pci.h>
}

#include <fstream>
#include <memory>

namespace HostSim::Linux {

namespace {

constexpr const char kUnknown[] = "Unknown";

// An identifier file of sysfs ("0x8086"); -1 when it can't be read.
int ReadIdentifier(const std::string& path) {
    std::ifstream file(path);
    unsigned value = 0;
    if (!(file >> std::hex >> value) || value > 0xffff) {
        return -1;
    }
    return static_cast<int>(value);
}

struct PciAccessDeleter {
    void operator()(pci_access* access) const { pci_cleanup(access); }
};

// The database is read once, when the first name is looked up.
pci_access* Database() {
    static const std::unique_ptr<pci_access, PciAccessDeleter> access = [] {
        pci_access* made = pci_alloc();
        pci_init(made);
        return std::unique_ptr<pci_access, PciAccessDeleter>(made);
    }();
    return access.get();
}

}  // namespace

PciDeviceNames PciNames(const std::string& address) {
    const std::string folder = "/sys/bus/pci/devices/" + address + "/";
    const int vendor = ReadIdentifier(folder + "vendor");
    const int device = ReadIdentifier(folder + "device");
    if (vendor < 0 || device < 0) {
        return {kUnknown, kUnknown};
    }
    char vendorName[256];
    char deviceName[256];
    const char* foundVendor = pci_lookup_name(Database(), vendorName, sizeof vendorName,
                                              PCI_LOOKUP_VENDOR | PCI_LOOKUP_NO_NUMBERS, vendor);
    const char* foundDevice =
        pci_lookup_name(Database(), deviceName, sizeof deviceName,
                        PCI_LOOKUP_DEVICE | PCI_LOOKUP_NO_NUMBERS, vendor, device);
    return {foundVendor != nullptr ? foundVendor : kUnknown,
            foundDevice != nullptr ? foundDevice : kUnknown};
}

}  // namespace HostSim::Linux
