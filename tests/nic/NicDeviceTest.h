// The fixture of the NIC device tests: short ways to read the listings the device commands
// show, and to change the default host for a case.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "hostsim/core/Json.h"
#include "support/CommandTest.h"

namespace NicDeviceTesting {

using Words = std::vector<std::string>;

class NicDeviceTest : public Testing::CommandTest {
protected:
    // Runs a change that must succeed with a true root and no message.
    void Change(const Words& words);
    // The value of `field` of each row of a listing, by the row's `key` field, in row order.
    std::vector<std::pair<std::string, std::string>> Column(const Words& words,
                                                            const std::string& key,
                                                            const std::string& field);
    // The MAC address `nic list` shows for the NIC `name`.
    std::string MacOf(const std::string& name);
    // The whole host as a profile, and the host replaced by one.
    HostSim::Json ExportedHost();
    void ImportHost(const HostSim::Json& profile);
    // The default host with the device features of one NIC replaced by `device` (its "nic"
    // member names it); a NIC that had none gets them.
    void UseDevice(const HostSim::Json& device);
};

}  // namespace NicDeviceTesting
