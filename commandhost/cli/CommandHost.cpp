// Resolving a command line to a command, and running it: parse, check, execute.
#include "commandhost/cli/CommandHost.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <typeinfo>

#include "commandhost/cli/CommandLine.h"
#include "commandhost/cli/Suggestions.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

using CppTools::AutoCli::CommandSpec;
using CppTools::AutoCli::NamespaceNode;
using CppTools::CallSpec::InputSpec;
using CppTools::CallSpec::Output;
using CppTools::MetaObj::MetaBool;

namespace {

std::string Demangle(const char* name) {
    int status = 0;
    char* demangled = abi::__cxa_demangle(name, nullptr, nullptr, &status);
    std::string text = status == 0 && demangled != nullptr ? demangled : name;
    std::free(demangled);
    return text;
}

// The name and message of the exception being handled.
std::string DescribeCurrentException() {
    try {
        throw;
    } catch (const std::exception& e) {
        return Demangle(typeid(e).name()) + ": " + e.what();
    } catch (...) {
        const std::type_info* type = abi::__cxa_current_exception_type();
        return (type != nullptr ? Demangle(type->name()) : std::string("unknown")) +
               " (not derived from std::exception)";
    }
}

// "choose one of: a, b." for the children of `node`, or why there are none.
std::string Choices(const NamespaceNode& node) {
    const auto names = node.GetNamespaceNodeNames();
    if (names.empty()) {
        return node.GetName().empty()
                   ? "no plug-in registered any (check --plugin-dir or AUTOCLI_PLUGIN_DIR)."
                   : "it holds nothing.";
    }
    std::string text = "choose one of: ";
    for (size_t i = 0; i < names.size(); ++i) {
        text.append(i == 0 ? "" : ", ").append(names[i]);
    }
    return text + ".";
}

std::string NotACommand(const NamespaceNode& node) {
    std::string path = node.GetPathString(' ');
    if (path.empty()) {
        return "No command given; " + Choices(node);
    }
    return "'" + path + "' is a namespace, not a command; " + Choices(node);
}

std::shared_ptr<CommandSpec> AsCommand(const std::shared_ptr<NamespaceNode>& node) {
    if (!node || node->GetType() != CppTools::AutoCli::NodeTypeCommand) {
        return nullptr;
    }
    return std::dynamic_pointer_cast<CommandSpec>(node);
}

ExitStatus StatusOf(const Output& output) {
    if (output.HasError()) {
        return ExitCommandError;
    }
    const auto& root = output.GetRootObject();
    if (root && root->GetType() == CppTools::MetaObj::MetaTypeBool &&
        !static_cast<const MetaBool&>(*root).GetValue()) {
        return ExitCommandError;
    }
    return ExitOk;
}

}  // namespace

CommandHost::CommandHost() : root_(CppTools::AutoCli::Namespace::New()) {}

void CommandHost::Register(RegisterFunction entry) {
    entry(root_);
}

CommandHost::Resolution CommandHost::Resolve(const std::vector<std::string>& words) const {
    Resolution resolution{root_, 0};
    while (resolution.next < words.size() && !words[resolution.next].starts_with('-') &&
           resolution.node->GetType() != CppTools::AutoCli::NodeTypeCommand) {
        const std::string& word = words[resolution.next];
        auto child = resolution.node->GetNamespaceNode(word);
        if (!child) {
            std::string path = resolution.node->GetPathString(' ');
            std::string message = path.empty() ? "Unknown namespace " + QuoteValue(word)
                                               : "Unknown command or namespace " +
                                                     QuoteValue(word) + " in '" + path + "'";
            std::string suggestion = DidYouMean(word, resolution.node->GetNamespaceNodeNames());
            message.append(suggestion.empty() ? "; " + Choices(*resolution.node)
                                              : "." + suggestion);
            throw CommandLineError(message);
        }
        resolution.node = std::move(child);
        ++resolution.next;
    }
    return resolution;
}

void CommandHost::Execute(const std::shared_ptr<CommandSpec>& command,
                          std::span<const std::string> parameterWords, RunResult& result) const {
    result.command = command;
    const std::string path = command->GetPathString(' ');
    std::shared_ptr<CppTools::CallSpec::Input> input;
    try {
        auto spec = command->GetInputSpec();
        if (!spec) {
            spec = InputSpec::New();
        }
        input = ParseParameters(spec, parameterWords, path);
        CheckConstraints(*input, path);
    } catch (const CommandLineError& e) {
        result.status = ExitRefused;
        result.hostMessages.emplace_back(e.what());
        return;
    } catch (...) {
        result.status = ExitException;
        result.hostMessages.push_back("Unexpected exception while reading the parameters of '" +
                                      path + "': " + DescribeCurrentException());
        return;
    }
    auto* dispatcher = command->GetDispatcher();
    if (dispatcher == nullptr) {
        result.status = ExitException;
        result.hostMessages.push_back("'" + path + "' cannot be run: it has no dispatcher.");
        return;
    }
    result.output = Output::New();
    try {
        dispatcher->Execute(input, result.output);
    } catch (...) {
        result.status = ExitException;
        result.hostMessages.push_back("Unexpected exception in '" + path +
                                      "': " + DescribeCurrentException());
        return;
    }
    result.status = StatusOf(*result.output);
}

RunResult CommandHost::Run(const std::vector<std::string>& words) {
    RunResult result;
    try {
        Resolution resolution = Resolve(words);
        auto command = AsCommand(resolution.node);
        if (!command) {
            throw CommandLineError(NotACommand(*resolution.node));
        }
        Execute(command, std::span(words).subspan(resolution.next), result);
    } catch (const CommandLineError& e) {
        result.status = ExitRefused;
        result.hostMessages.emplace_back(e.what());
    }
    return result;
}

}  // namespace CommandHost
