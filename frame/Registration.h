// The plug-in's one exported entry, which builds the `network` tree and attaches it to the root,
// and the makers of the tree's commands.
#pragma once

#include <memory>

#include "cpptools/AutoCli.h"

extern "C" __attribute__((visibility("default"))) void AutoCli_RegisterNamespaces(
    std::shared_ptr<CppTools::AutoCli::NamespaceNode>& root);

namespace ZanvexCli::NetworkNamespace {

// A new command of class `CommandClass`, ready for the tree. NETWORK_COMMAND (frame/Declaration.h)
// defines it for each command class, beside the class, which no other file needs to see.
template <class CommandClass>
std::shared_ptr<CppTools::AutoCli::NamespaceNode> MakeCommandNode();

}  // namespace ZanvexCli::NetworkNamespace
