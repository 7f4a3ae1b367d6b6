// Every command of the registered tree has a line in one family's fault sweep table.
#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <set>

#include "cpptools/AutoCli.h"
#include "firewall/FirewallSweepCases.h"
#include "frame/Registration.h"
#include "ip/IpSweepCases.h"
#include "nic/NicSweepCases.h"
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

TEST(FaultSweepCoverage, EveryCommandIsSwept) {
    std::shared_ptr<NamespaceNode> root = CppTools::AutoCli::Namespace::New();
    AutoCli_RegisterNamespaces(root);
    std::set<std::string> unswept;
    CollectCommands(root, unswept);
    EXPECT_EQ(unswept.size(), 152u);

    const std::vector<const std::vector<Testing::SweepCase>*> tables{
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
    for (const auto* table : tables) {
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

}  // namespace
