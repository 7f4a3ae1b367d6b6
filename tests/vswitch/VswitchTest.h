// The fixture of the switching tests: the default host's switches, and short ways to run the
// commands of `network vswitch standard` and read what they show.
#pragma once

#include "hostsim/core/Json.h"
#include "support/CommandTest.h"

namespace VswitchTesting {

using Words = std::vector<std::string>;

class VswitchTest : public Testing::CommandTest {
  protected:
    // Runs `network vswitch standard <words...>`.
    CommandHost::RunResult Standard(const Words& words);
    // Runs a change that must succeed: no message and a true root.
    void Change(const Words& words);
    // Runs a policy change whose helper may report: gives the messages, and checks that the
    // root is true all the same.
    Words ChangeReporting(const Words& words);
    // Runs a command that must fail with one message and no root; gives the message.
    std::string Refused(const Words& words);
    // Runs a command that the command host must refuse before it runs.
    void RefusedByHost(const Words& words);

    std::shared_ptr<CppTools::MetaObj::MetaStruct> SwitchFailover(const std::string& name);
    std::shared_ptr<CppTools::MetaObj::MetaStruct> SwitchShaping(const std::string& name);
    std::shared_ptr<CppTools::MetaObj::MetaStruct> SwitchSecurity(const std::string& name);
    std::shared_ptr<CppTools::MetaObj::MetaStruct> PortGroupFailover(const std::string& name);
    std::shared_ptr<CppTools::MetaObj::MetaStruct> PortGroupShaping(const std::string& name);
    std::shared_ptr<CppTools::MetaObj::MetaStruct> PortGroupSecurity(const std::string& name);
    // The row of `vswitch standard list` for one switch.
    std::shared_ptr<CppTools::MetaObj::MetaStruct> SwitchRow(const std::string& name);

    // The whole host as a profile, and the host replaced by one.
    HostSim::Json ExportedHost();
    void ImportHost(const HostSim::Json& profile);
};

// The active, standby and unused adapters of a rendered failover policy.
struct Adapters {
    Words active;
    Words standby;
    Words unused;
    bool operator==(const Adapters&) const = default;
};
Adapters AdaptersOf(const std::shared_ptr<CppTools::MetaObj::MetaStruct>& failover);
void PrintTo(const Adapters& adapters, std::ostream* out);

}  // namespace VswitchTesting
