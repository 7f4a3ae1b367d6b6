// Every command of the registered tree has a line in one family's fault sweep table, and every
// command that makes the network model has a line in kModelFailures.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <list>
#include <set>

#include "cpptools/AutoCli.h"
#include "firewall/FirewallSweepCases.h"
#include "frame/Registration.h"
#include "ip/IpSweepCases.h"
#include "nic/NicSweepCases.h"
#include "support/ModelFailures.h"
#include "vswitch/VswitchSweepCases.h"

namespace {

using CppTools::AutoCli::NamespaceNode;
using CppTools::AutoCli::NodeTypeCommand;

void CollectCommands(const std::shared_ptr<NamespaceNode>& node, std::set<std::string>& paths) {
    if (node->GetType() == NodeTypeCommand) {
        paths.insert(node->GetPathString(' '));
    }
    for (const auto& child : node->GetNamespaceNodes()) {
        CollectCommands(child, paths);
    }
}

const std::vector<const std::vector<Testing::SweepCase>*> kTables{
    &FirewallSweeps::kState,
    &FirewallSweeps::kRulesets,
    &FirewallSweeps::kClientsAndAllowedAddresses,
    &IpSweeps::kInterfaceLifecycle,
    &IpSweeps::kInterfaceSettings,
    &IpSweeps::kNetstacks,
    &IpSweeps::kRoutes,
    &IpSweeps::kNeighborsConnectionsAndMulticast,
    &IpSweeps::kNameServices,
    &IpSweeps::kIpsec,
    &NicSweeps::kLinkAndInfo,
    &NicSweeps::kSetAndStatistics,
    &NicSweeps::kCoalescing,
    &NicSweeps::kOffloadSoftwareRingsAndPause,
    &NicSweeps::kSriov,
    &NicSweeps::kNetqueue,
    &NicSweeps::kCapabilitiesDcbAndDiagnostics,
    &NicSweeps::kAttachment,
    &VswitchSweeps::kSwitchLifecycle,
    &VswitchSweeps::kSwitchPolicies,
    &VswitchSweeps::kPortGroups,
    &VswitchSweeps::kDistributedSwitchesAndLacp,
    &VswitchSweeps::kEnsContexts,
    &VswitchSweeps::kPortsAndVms,
};

TEST(FaultSweepCoverage, EveryCommandIsSwept) {
    const auto root = Testing::RegisteredTree();
    std::set<std::string> unswept;
    CollectCommands(root, unswept);
    ASSERT_FALSE(unswept.empty()) << "the registered tree holds no command";

    for (const auto* table : kTables) {
        for (const auto& sweep : *table) {
            std::list<std::string> words{"network"};
            words.insert(words.end(), sweep.words.begin(), sweep.words.end());
            auto node = root->ResolveNode(words);
            ASSERT_TRUE(node && node->GetType() == NodeTypeCommand)
                << "no command for " << ::testing::PrintToString(sweep.words);
            unswept.erase(node->GetPathString(' '));
        }
    }
    for (const auto& path : unswept) {
        ADD_FAILURE() << "no fault sweep line for " << path;
    }
}

class ModelFailureCoverage : public Testing::CommandTest {};

// Runs each sweep line once on a fresh host and collects the commands that make the network
// model on the way: kModelFailures has a line for each of them and for no other command.
TEST_F(ModelFailureCoverage, EveryCommandThatMakesTheModelHasOneLine) {
    std::set<std::string> making;
    for (const auto* table : kTables) {
        for (const auto& sweep : *table) {
            Testing::TemporaryDirectory fresh;
            HostSim::UseStateDirectory(fresh.Path());
            for (const auto& line : sweep.rules.setup) {
                ASSERT_EQ(Run(line).status, CommandHost::ExitOk);
            }
            HostSim::StartTrace();
            auto result = Run(sweep.words);
            const auto calls = HostSim::StopTrace();
            ASSERT_TRUE(result.command) << ::testing::PrintToString(sweep.words);
            if (std::any_of(calls.begin(), calls.end(), [](const HostSim::OperationCall& call) {
                    return Testing::MakesModel(call.operation);
                })) {
                making.insert(result.command->GetPathString(' '));
            }
        }
    }
    HostSim::UseStateDirectory(StateDirectory());
    std::set<std::string> lined;
    for (const auto& line : Testing::kModelFailures) {
        EXPECT_TRUE(lined.insert(line.command).second) << "two lines for " << line.command;
    }
    EXPECT_EQ(lined, making);
}

}  // namespace
