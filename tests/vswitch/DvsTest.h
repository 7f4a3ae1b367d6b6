// The fixture of the distributed switch, ENS, port and VM tests: the default host as a profile
// to change and load, and short ways to read single roots and nested lists.
#pragma once

#include "cpptools/MetaObj.h"
#include "hostsim/core/Json.h"
#include "support/CommandTest.h"

namespace DvsTesting {

using Words = std::vector<std::string>;
using Row = std::shared_ptr<CppTools::MetaObj::MetaStruct>;

class DvsTest : public Testing::CommandTest {
protected:
    // The current host as a profile, and the host replaced by one.
    static HostSim::Json Host();
    static void Load(const HostSim::Json& profile);
    // distswitch0 in a profile.
    static HostSim::Json& DistSwitch(HostSim::Json& profile);
    // The first NIC of the running LAG lag1 of distswitch0.
    static HostSim::Json& LagNic(HostSim::Json& profile, std::size_t index = 0);
    // Takes every port of a switch out of a profile, and the ENS contexts off it.
    static void DropPortsOf(HostSim::Json& profile, const std::string& switchName);

    // The root of a run that must leave no message.
    bool RunBool(const Words& words);
    long RunInt(const Words& words);
    std::string RunString(const Words& words);
    // The rows of a run, or the one message of a run that leaves no root.
    std::vector<Row> RowsOf(const Words& words) { return Testing::Rows(RunList(words)); }
};

// A field of a row that holds a list of structs.
std::vector<Row> RowsIn(const Row& row, const std::string& field);

}  // namespace DvsTesting
