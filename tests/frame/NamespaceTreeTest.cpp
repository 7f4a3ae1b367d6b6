// The registered `network` tree: its shape, descriptions and the commands' declarations.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "cpptools/AutoCli.h"
#include "frame/NamespaceTree.h"
#include "frame/Registration.h"
#include "support/CommandTest.h"

namespace {

using CppTools::AutoCli::CommandSpec;
using CppTools::AutoCli::Namespace;
using CppTools::AutoCli::NamespaceNode;
using CppTools::AutoCli::NodeTypeCommand;
using CppTools::AutoCli::NodeTypeNamespace;

using Testing::RegisteredTree;
using Testing::WalkTree;

TEST(NamespaceTree, RootGetsExactlyNetworkWithItsNineChildrenInOrder) {
    auto root = RegisteredTree();
    EXPECT_EQ(root->GetNamespaceNodeNames(), std::vector<std::string>{"network"});
    auto network = root->GetNamespaceNode("network");
    ASSERT_TRUE(network);
    EXPECT_EQ(network->GetNamespaceNodeNames(),
              (std::vector<std::string>{"ip", "multicast", "nic", "sriovnic", "vswitch", "firewall",
                                        "port", "vm", "ens"}));
    EXPECT_EQ(network->GetParent(), root);
}

// A walk of the registered tree meets the table's rows, namespaces and commands, in the table's
// order, every one described and only namespaces with entries.
TEST(NamespaceTree, WalkMeetsEveryRowOfTheTableInItsOrder) {
    auto network = RegisteredTree()->GetNamespaceNode("network");
    std::vector<ZanvexCli::NetworkNamespace::TreeTableRow> walked;
    WalkTree(network, [&walked](const std::shared_ptr<NamespaceNode>& node) {
        SCOPED_TRACE(node->GetPathString(' '));
        EXPECT_FALSE(node->GetDescription().empty());
        const bool command = node->GetType() == NodeTypeCommand;
        EXPECT_EQ(node->GetNamespaceNodes().empty(), command);
        walked.push_back({node->GetPathString(' '), command});
    });
    const auto table = ZanvexCli::NetworkNamespace::TreeTable();
    ASSERT_EQ(walked.size(), table.size());
    std::set<std::string> commandPaths;
    for (std::size_t i = 0; i < table.size(); ++i) {
        EXPECT_EQ(walked[i].path, table[i].path);
        EXPECT_EQ(walked[i].command, table[i].command) << table[i].path;
        if (table[i].command) {
            commandPaths.insert(table[i].path);
        }
    }
    for (const char* path :
         {"network nic list", "network nic up", "network nic get", "network nic down"}) {
        EXPECT_TRUE(commandPaths.count(path)) << path;
    }
}

TEST(NamespaceTree, NicEntriesKeepTheirRegistrationOrderAroundSubNamespaces) {
    auto nic = RegisteredTree()->GetNamespaceNode("network")->GetNamespaceNode("nic");
    ASSERT_TRUE(nic);
    auto names = nic->GetNamespaceNodeNames();
    ASSERT_GE(names.size(), 6u);
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 6),
              (std::vector<std::string>{"list", "up", "get", "set", "down", "stats"}));
    EXPECT_EQ(names.back(), "attachment");
}

TEST(NamespaceTree, NodesKnowThemselvesAndTheirPaths) {
    auto root = RegisteredTree();
    std::list<std::string> path{"network", "nic", "list", "extra"};
    auto node = root->ResolveNode(path);
    ASSERT_TRUE(node);
    EXPECT_EQ(path, std::list<std::string>{"extra"});
    EXPECT_EQ(node->GetPathString(' '), "network nic list");
    EXPECT_EQ(node->GetThis(), node);
    auto ipv4 = root->GetNamespaceNode("network")
                    ->GetNamespaceNode("ip")
                    ->GetNamespaceNode("interface")
                    ->GetNamespaceNode("ipv4");
    ASSERT_TRUE(ipv4);
    EXPECT_TRUE(ipv4->HasNamespaceNode("address"));
    EXPECT_EQ(ipv4->GetDescription(), "Commands to get and set IPv4 settings for kelmnic.");
}

TEST(NamespaceTree, EveryCommandDeclaresItsSpecsAndDefaultOutput) {
    auto network = RegisteredTree()->GetNamespaceNode("network");
    WalkTree(network, [](const std::shared_ptr<NamespaceNode>& node) {
        auto command = std::dynamic_pointer_cast<CommandSpec>(node);
        if (!command) {
            return;
        }
        SCOPED_TRACE(node->GetPathString(' '));
        auto input = command->GetInputSpec();
        ASSERT_TRUE(input);
        for (const auto& parameter : input->GetParameters()) {
            EXPECT_FALSE(parameter->GetDescription().empty()) << parameter->GetName();
        }
        auto output = command->GetOutputSpec();
        ASSERT_TRUE(output);
        ASSERT_TRUE(output->GetRootObject());
        const bool boolRoot = output->GetRootObject()->GetType() == CppTools::MetaObj::MetaTypeBool;
        // A command with nothing to return names no formatter.
        if (boolRoot) {
            EXPECT_TRUE(command->GetDefaultOutputFormatter().empty());
        }
    });
}

}  // namespace
