#include "hostsim/linux/PciNames.h"

#include <dlfcn.h>

extern "C" {
#include <pci/pci.h>
}

#include <fstream>

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

// libpci and the database behind it, loaded when the first name is looked up: a namespace of
// virtual links never needs them, and the library brings two more with it.
class PciDatabase {
public:
    PciDatabase() {
        library_ = dlopen("libpci.so.3", RTLD_NOW | RTLD_LOCAL);
        if (library_ == nullptr) {
            return;
        }
        auto alloc = reinterpret_cast<pci_access* (*)()>(dlsym(library_, "pci_alloc"));
        auto init = reinterpret_cast<void (*)(pci_access*)>(dlsym(library_, "pci_init"));
        lookup_ = reinterpret_cast<LookupName>(dlsym(library_, "pci_lookup_name"));
        cleanup_ = reinterpret_cast<void (*)(pci_access*)>(dlsym(library_, "pci_cleanup"));
        if (alloc == nullptr || init == nullptr || lookup_ == nullptr || cleanup_ == nullptr) {
            return;
        }
        access_ = alloc();
        init(access_);
    }
    ~PciDatabase() {
        if (access_ != nullptr) {
            cleanup_(access_);
        }
    }
    PciDatabase(const PciDatabase&) = delete;
    PciDatabase& operator=(const PciDatabase&) = delete;

    // The name the database gives, or "Unknown".
    template <class... Identifiers>
    std::string Name(int flags, Identifiers... identifiers) {
        char name[256];
        const char* found =
            access_ != nullptr
                ? lookup_(access_, name, sizeof name, flags | PCI_LOOKUP_NO_NUMBERS, identifiers...)
                : nullptr;
        return found != nullptr ? found : kUnknown;
    }

private:
    using LookupName = char* (*)(pci_access*, char*, int, int, ...);
    void* library_ = nullptr;
    pci_access* access_ = nullptr;
    LookupName lookup_ = nullptr;
    void (*cleanup_)(pci_access*) = nullptr;
};

}  // namespace

PciDeviceNames PciNames(const std::string& address) {
    const std::string folder = "/sys/bus/pci/devices/" + address + "/";
    const int vendor = ReadIdentifier(folder + "vendor");
    const int device = ReadIdentifier(folder + "device");
    if (vendor < 0 || device < 0) {
        return {kUnknown, kUnknown};
    }
    static PciDatabase database;
    return {database.Name(PCI_LOOKUP_VENDOR, vendor),
            database.Name(PCI_LOOKUP_DEVICE, vendor, device)};
}

}  // namespace HostSim::Linux
