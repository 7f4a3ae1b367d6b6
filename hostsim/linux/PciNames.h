// Vendor and device names of a PCI device, from the PCI database through libpci.
#pragma once

#include <string>

namespace HostSim::Linux {

struct PciDeviceNames {
    std::string vendor;
    std::string device;
};

// The names of the device at `address` ("0000:02:00.0"), by the identifiers sysfs gives for
// it; "Unknown" for what the database doesn't name.
PciDeviceNames PciNames(const std::string& address);

}  // namespace HostSim::Linux
