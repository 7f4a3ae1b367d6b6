// The plug-in's one exported entry: builds the `network` tree and attaches it to the root.
#pragma once

#include <memory>

#include "cpptools/AutoCli.h"

extern "C" __attribute__((visibility("default"))) void AutoCli_RegisterNamespaces(
    std::shared_ptr<CppTools::AutoCli::NamespaceNode>& root);
