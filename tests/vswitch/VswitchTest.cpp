#include "VswitchTest.h"

#include "cpptools/MetaObj.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"

namespace VswitchTesting {

using CppTools::MetaObj::MetaBool;
using CppTools::MetaObj::MetaStruct;

CommandHost::RunResult VswitchTest::Standard(const Words& words) {
    Words line{"vswitch", "standard"};
    line.insert(line.end(), words.begin(), words.end());
    return Run(line);
}

void VswitchTest::Change(const Words& words) {
    EXPECT_EQ(ChangeReporting(words), Words{}) << ::testing::PrintToString(words);
}

Words VswitchTest::ChangeReporting(const Words& words) {
    auto result = Standard(words);
    if (!result.output) {
        ADD_FAILURE() << "not run: " << ::testing::PrintToString(result.hostMessages);
        return {};
    }
    auto root = std::dynamic_pointer_cast<MetaBool>(result.output->GetRootObject());
    EXPECT_TRUE(root && root->GetValue()) << ::testing::PrintToString(words);
    return result.output->GetErrorMessages();
}

std::string VswitchTest::Refused(const Words& words) {
    Words line{"vswitch", "standard"};
    line.insert(line.end(), words.begin(), words.end());
    return RunError(line);
}

void VswitchTest::RefusedByHost(const Words& words) {
    auto result = Standard(words);
    EXPECT_EQ(result.status, CommandHost::ExitRefused) << ::testing::PrintToString(words);
    EXPECT_EQ(result.output, nullptr);
}

std::shared_ptr<MetaStruct> VswitchTest::SwitchFailover(const std::string& name) {
    return RunStruct({"vswitch", "standard", "policy", "failover", "get", "-v", name});
}

std::shared_ptr<MetaStruct> VswitchTest::SwitchShaping(const std::string& name) {
    return RunStruct({"vswitch", "standard", "policy", "shaping", "get", "-v", name});
}

std::shared_ptr<MetaStruct> VswitchTest::SwitchSecurity(const std::string& name) {
    return RunStruct({"vswitch", "standard", "policy", "security", "get", "-v", name});
}

std::shared_ptr<MetaStruct> VswitchTest::PortGroupFailover(const std::string& name) {
    return RunStruct({"vswitch", "standard", "portgroup", "policy", "failover", "get", "-p", name});
}

std::shared_ptr<MetaStruct> VswitchTest::PortGroupShaping(const std::string& name) {
    return RunStruct({"vswitch", "standard", "portgroup", "policy", "shaping", "get", "-p", name});
}

std::shared_ptr<MetaStruct> VswitchTest::PortGroupSecurity(const std::string& name) {
    return RunStruct({"vswitch", "standard", "portgroup", "policy", "security", "get", "-p", name});
}

std::shared_ptr<MetaStruct> VswitchTest::SwitchRow(const std::string& name) {
    return Testing::RowWhere(RunList({"vswitch", "standard", "list"}), "Name", name);
}

HostSim::Json VswitchTest::ExportedHost() {
    return HostSim::ExportHost(HostSim::Store());
}

void VswitchTest::ImportHost(const HostSim::Json& profile) {
    HostSim::ImportProfile(profile.dump());
}

Adapters AdaptersOf(const std::shared_ptr<MetaStruct>& failover) {
    if (!failover) {
        return {};
    }
    return {Testing::Strings(failover, "Active Adapters"),
            Testing::Strings(failover, "Standby Adapters"),
            Testing::Strings(failover, "Unused Adapters")};
}

void PrintTo(const Adapters& adapters, std::ostream* out) {
    *out << "active " << ::testing::PrintToString(adapters.active) << ", standby "
         << ::testing::PrintToString(adapters.standby) << ", unused "
         << ::testing::PrintToString(adapters.unused);
}

}  // namespace VswitchTesting
