// The firewall as a whole: get, set, load, refresh and unload, and the records they leave.
#include <algorithm>

#include "AuditLog.h"

namespace {

using FirewallTesting::Failure;
using FirewallTesting::Record;
using FirewallTesting::Success;
using Testing::Bool;
using Testing::Str;

constexpr char kNotLoadedByHost[] = "The firewall module ostrelfw is not loaded";

class FirewallState : public FirewallTesting::AuditedCommandTest {
protected:
    // Loaded, Enabled and DefaultAction as `firewall get` shows them.
    std::tuple<bool, bool, std::string> Firewall() {
        auto firewall = RunStruct({"firewall", "get"});
        return {Bool(firewall, "Loaded"), Bool(firewall, "Enabled"),
                Str(firewall, "DefaultAction")};
    }

    std::vector<std::string> TracedOperations(const std::vector<std::string>& words) {
        HostSim::StartTrace();
        Run(words);
        std::vector<std::string> operations;
        for (const auto& call : HostSim::StopTrace()) {
            operations.push_back(call.operation);
        }
        return operations;
    }

    static bool Contains(const std::vector<std::string>& operations, const std::string& name) {
        return std::find(operations.begin(), operations.end(), name) != operations.end();
    }
};

TEST_F(FirewallState, GetShowsTheFieldsInOrderForTheDefaultHost) {
    auto firewall = RunStruct({"firewall", "get"});
    ASSERT_TRUE(firewall);
    EXPECT_EQ(Testing::FieldNames(firewall),
              (std::vector<std::string>{"Loaded", "Enabled", "DefaultAction"}));
    EXPECT_EQ(Firewall(), std::make_tuple(true, true, std::string("DROP")));
}

TEST_F(FirewallState, GetPrefixesAFailureOfTheHost) {
    HostSim::InjectFault("ModuleImpl::Refresh", "ostrelfw", "module table busy");
    EXPECT_EQ(RunError({"firewall", "get"}), "Unable to get firewall status: module table busy");
}

TEST_F(FirewallState, SetChangesWhatDiffersAndAuditsEachChangeInOrder) {
    RunOk({"firewall", "set", "--enabled=false", "--default-action=true"});
    EXPECT_EQ(Firewall(), std::make_tuple(true, false, std::string("PASS")));
    EXPECT_EQ(Records(), (std::vector<Record>{Success("network.fw.disable", "firewall"),
                                              Success("network.fw.defaultpolicy", "firewall")}));

    // The same values again change nothing and leave no record, and still answer true.
    const auto operations =
        TracedOperations({"firewall", "set", "--enabled=false", "--default-action=true"});
    EXPECT_FALSE(Contains(operations, "SystemInfo::SetFirewallEnabled"));
    EXPECT_FALSE(Contains(operations, "SystemInfo::SetFirewallDefaultAction"));
    auto root = std::dynamic_pointer_cast<CppTools::MetaObj::MetaBool>(
        RunOk({"firewall", "set", "-e", "false"}));
    ASSERT_TRUE(root);
    EXPECT_TRUE(root->GetValue());
    EXPECT_EQ(Records().size(), 2u);

    RunOk({"firewall", "set", "-e", "true", "-d", "false"});
    EXPECT_EQ(Firewall(), std::make_tuple(true, true, std::string("DROP")));
    EXPECT_EQ(Records().size(), 4u);
    EXPECT_EQ(Records()[2], Success("network.fw.enable", "firewall"));
    EXPECT_EQ(Records()[3], Success("network.fw.defaultpolicy", "firewall"));
}

TEST_F(FirewallState, SetNeedsAParameterBeforeTheModuleIsAsked) {
    HostSim::InjectFault("ModuleImpl::Refresh", "", "module table busy");
    EXPECT_EQ(RunError({"firewall", "set"}), "Need parameter --enabled or --default-action");
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallState, UnloadedModuleReadsUnloadedDisabledPassAndRefusesSet) {
    RunOk({"firewall", "unload"});
    // The firewall state is not asked while the module is out.
    HostSim::InjectFault("SystemInfo::IsFirewallEnabled", "", "must not be asked");
    HostSim::InjectFault("SystemInfo::GetFirewallDefaultAction", "", "must not be asked");
    EXPECT_EQ(Firewall(), std::make_tuple(false, false, std::string("PASS")));
    for (const char* parameter : {"--enabled=true", "--enabled=false", "--default-action=true"}) {
        EXPECT_EQ(RunError({"firewall", "set", parameter}), "Firewall module is not loaded");
    }
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallState, UnloadDestroysTheFiltersFirstAndIsQuietWhenUnloaded) {
    const auto first = TracedOperations({"firewall", "unload"});
    const auto filters =
        std::find(first.begin(), first.end(), "SystemInfo::DestroyFirewallFilters");
    const auto unload = std::find(first.begin(), first.end(), "ModuleImpl::Unload");
    ASSERT_NE(filters, first.end());
    ASSERT_NE(unload, first.end());
    EXPECT_LT(filters, unload);

    const auto second = TracedOperations({"firewall", "unload"});
    EXPECT_FALSE(Contains(second, "SystemInfo::DestroyFirewallFilters"));
    EXPECT_FALSE(Contains(second, "ModuleImpl::Unload"));
    RunOk({"firewall", "unload"});
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallState, LoadBringsTheModuleBackWithTheStateItHad) {
    RunOk({"firewall", "set", "--default-action=true"});
    RunOk({"firewall", "unload"});
    RunOk({"firewall", "load"});
    EXPECT_EQ(Firewall(), std::make_tuple(true, true, std::string("PASS")));
    // Loading a loaded module is no error, and a loaded firewall with its filters back can
    // be unloaded again.
    RunOk({"firewall", "load"});
    RunOk({"firewall", "unload"});
    EXPECT_EQ(std::get<0>(Firewall()), false);
}

TEST_F(FirewallState, LoadFailingInTheRulesetsLeavesTheModuleLoaded) {
    RunOk({"firewall", "unload"});
    HostSim::InjectFault("SystemInfo::LoadFirewallRulesets", "",
                         "ruleset configuration unreadable");
    EXPECT_EQ(RunError({"firewall", "load"}), "ruleset configuration unreadable");
    HostSim::ClearFaults();
    EXPECT_TRUE(std::get<0>(Firewall()));
    EXPECT_TRUE(Records().empty());
}

TEST_F(FirewallState, RefreshIsAuditedWhetherItSucceedsOrNot) {
    RunOk({"firewall", "refresh"});
    RunOk({"firewall", "unload"});
    // No loaded test of its own: the host refuses, and the refusal is audited.
    EXPECT_EQ(RunError({"firewall", "refresh"}), kNotLoadedByHost);
    EXPECT_EQ(Records(),
              (std::vector<Record>{Success("network.fw.refresh", "firewall"),
                                   Failure("network.fw.refresh", "firewall", kNotLoadedByHost)}));
}

TEST_F(FirewallState, FailedEnableStepEndsSetWithItsRecord) {
    HostSim::InjectFault("SystemInfo::SetFirewallEnabled", "", "permission denied");
    EXPECT_EQ(RunError({"firewall", "set", "-e", "false", "-d", "true"}), "permission denied");
    HostSim::ClearFaults();
    EXPECT_EQ(
        Records(),
        (std::vector<Record>{Failure("network.fw.disable", "firewall", "permission denied")}));
    EXPECT_EQ(Firewall(), std::make_tuple(true, true, std::string("DROP")));
}

TEST_F(FirewallState, FailedDefaultActionStepKeepsTheEnableChange) {
    HostSim::InjectFault("SystemInfo::SetFirewallDefaultAction", "", "policy locked");
    EXPECT_EQ(RunError({"firewall", "set", "-e", "false", "-d", "true"}), "policy locked");
    HostSim::ClearFaults();
    EXPECT_EQ(Records(), (std::vector<Record>{
                             Success("network.fw.disable", "firewall"),
                             Failure("network.fw.defaultpolicy", "firewall", "policy locked")}));
    EXPECT_EQ(Firewall(), std::make_tuple(true, false, std::string("DROP")));
}

TEST_F(FirewallState, FailedReadInSetIsReportedWithoutRecord) {
    HostSim::InjectFault("SystemInfo::GetFirewallDefaultAction", "", "state unreadable");
    EXPECT_EQ(RunError({"firewall", "set", "-e", "false"}), "state unreadable");
    EXPECT_TRUE(Records().empty());
}

}  // namespace
