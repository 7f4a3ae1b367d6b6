// A subject of the simulated host: one part of its state (NICs, switches, firewall...), with
// its tables, its section of the profile JSON and its host operations. A subject lives in a
// folder of its own, hostsim/<subject>/, and is listed once in core/Registry.cpp.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "hostsim/core/Database.h"
#include "hostsim/core/Json.h"

namespace HostSim {

// Multiplies the inventory of a profile: copy 0 is the profile itself, copy k its k-th
// repetition. Names that end in a number are renumbered per prefix: the stride of a prefix is
// one more than the highest number any "name" in the whole profile carries with it, so that
// "hwnic0" of copy 2 in a profile whose NICs go up to hwnic8 is "hwnic18", and a reference to
// "hwnic0" from another subject's section is renamed alike.
class Scale {
public:
    Scale(const Json& profile, unsigned copies);

    unsigned Copies() const { return copies_; }
    // The name of copy `copy`; a name whose prefix has no stride is kept.
    std::string Name(const std::string& name, unsigned copy) const;
    // Copy k adds k * 256 to the device part (the last three bytes) of a MAC address, so that
    // copies of addresses that differ in their last byte stay apart up to 65536 copies.
    static std::string MacAddress(const std::string& address, unsigned copy);
    // Copy k moves a PCI address "0000:02:00.0" to the domain k.
    static std::string PciAddress(const std::string& address, unsigned copy);

private:
    void CollectNames(const Json& value);

    unsigned copies_;
    std::map<std::string, unsigned long, std::less<>> strides_;
};

struct Subject {
    // Its key: its section of the profile and its row in the table of schema versions.
    const char* name;
    // SQL scripts that make and migrate its tables; step i takes it from version i to i + 1.
    // Steps are only ever appended; a shipped step is never changed.
    std::span<const char* const> schemaSteps;
    // Its tables, emptied in this order when a profile replaces the host.
    std::span<const char* const> tables;
    // Its section of the built-in default host, JSON text.
    const char* defaultSection;
    // Fills its (empty) tables from its section of a profile, scaled, inside the caller's write
    // transaction. Throws HostCtlException naming what it can't take.
    void (*importSection)(Database& database, const Json& section, const Scale& scale);
    // Its section of the current host, in the form importSection takes.
    Json (*exportSection)(Database& database);
};

// Every subject, in the order their sections are imported: a subject may refer to names of
// those before it.
std::span<const Subject* const> Subjects();

}  // namespace HostSim
