// Help text: the program's options, a namespace's children, a command's parameters and output.
#pragma once

#include <string>

#include "cpptools/AutoCli.h"
#include "cpptools/CallSpec.h"

namespace CommandHost {

// Help for a namespace, the root included: its description and children, fitted to `width`.
std::string NamespaceHelp(const CppTools::AutoCli::NamespaceNode& node, size_t width);

// Help for a command: description, usage line, parameters and output, fitted to `width`.
std::string CommandHelp(CppTools::AutoCli::CommandSpec& command, size_t width);

// What a command outputs, in a sentence: "a list of \"Nic\", each with the fields Name, ...".
std::string OutputSummary(CppTools::AutoCli::CommandSpec& command);

// A parameter description with "%ENUM%" replaced by the allowed values and "%FULLENUM%" by one
// line "  value: description" per value.
std::string ExpandDescription(const CppTools::CallSpec::ParameterSpec& parameter);

}  // namespace CommandHost
