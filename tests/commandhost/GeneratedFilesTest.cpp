// The completion scripts and manual pages that the build generates: every namespace, command
// and parameter of the plug-in's tree is in each of them, so that none can drift from the tree.
#include <filesystem>
#include <fstream>
#include <sstream>

#include "commandhost/cli/Completion.h"
#include "commandhost/cli/Formatters.h"
#include "support/CommandTest.h"

namespace CommandHostTesting {
namespace {

using CppTools::AutoCli::CommandSpec;
using CppTools::AutoCli::NamespaceNode;
namespace CallSpec = CppTools::CallSpec;

// A file the build generated, under share/ beside the bin/ that holds autocli.
std::string Generated(const std::string& path) {
    const auto file =
        std::filesystem::path(AUTOCLI_BINARY).parent_path().parent_path() / "share" / path;
    std::ifstream stream(file);
    EXPECT_TRUE(stream) << file << " was not generated";
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

// A text as roff shows it: hyphens as \-.
std::string Roff(std::string text) {
    for (size_t at = text.find('-'); at != std::string::npos; at = text.find('-', at + 2)) {
        text.insert(at, "\\");
    }
    return text;
}

// A command's declared parameters; none when it declares no input.
std::vector<std::shared_ptr<CppTools::CallSpec::ParameterSpec>> Parameters(CommandSpec& command) {
    const auto spec = command.GetInputSpec();
    return spec ? spec->GetParameters()
                : std::vector<std::shared_ptr<CppTools::CallSpec::ParameterSpec>>();
}

struct Tree {
    std::vector<std::shared_ptr<NamespaceNode>> namespaces;
    std::vector<std::shared_ptr<CommandSpec>> commands;
};

void Walk(const std::shared_ptr<NamespaceNode>& node, Tree& tree) {
    if (auto command = std::dynamic_pointer_cast<CommandSpec>(node)) {
        tree.commands.push_back(command);
    } else {
        tree.namespaces.push_back(node);
    }
    for (const auto& child : node->GetNamespaceNodes()) {
        Walk(child, tree);
    }
}

class GeneratedFilesTest : public ::testing::Test {
protected:
    GeneratedFilesTest() { Walk(Testing::PluginHost().GetRoot(), tree_); }

    // The script's key for a node: the words that lead to it.
    static std::string Key(const NamespaceNode& node) {
        const std::string path = node.GetPathString(' ');
        return path.empty() ? "autocli" : "autocli " + path;
    }

    // What the bash script offers after a parameter.
    static std::string BashValues(const std::string& path, const CallSpec::ParameterSpec& spec) {
        if (spec.GetType() == CallSpec::ParameterTypeFlag) {
            return "@flag";
        }
        if (spec.GetType() == CallSpec::ParameterTypeBool) {
            return "true false";
        }
        if (CommandHost::FindObjectSource(path, spec.GetName()) != nullptr) {
            return "@object";
        }
        std::string values;
        const auto& constraint = spec.GetConstraint();
        if (constraint && constraint->GetType() == CallSpec::ConstraintStringEnum) {
            for (const auto& choice : constraint->GetStringEnum()) {
                values.append(values.empty() ? "" : " ").append(choice.value);
            }
        } else if (constraint && constraint->GetType() == CallSpec::ConstraintIntEnum) {
            for (long value : constraint->GetIntEnum()) {
                values.append(values.empty() ? "" : " ").append(std::to_string(value));
            }
        }
        return values.empty() ? "@text" : values;
    }

    Tree tree_;
};

TEST_F(GeneratedFilesTest, TheBashScriptHoldsEveryNodeParameterAndValue) {
    const std::string script = Generated("bash-completion/completions/autocli");
    for (const auto& node : tree_.namespaces) {
        std::string children;
        for (const auto& name : node->GetNamespaceNodeNames()) {
            children.append(children.empty() ? "" : " ").append(name);
        }
        EXPECT_NE(script.find("['" + Key(*node) + "']='" + children + "'\n"), std::string::npos)
            << Key(*node);
    }
    size_t objectParameters = 0;
    for (const auto& command : tree_.commands) {
        std::string longNames;
        std::string shortNames;
        for (const auto& parameter : Parameters(*command)) {
            const std::string option = "--" + parameter->GetName();
            longNames.append(longNames.empty() ? "" : " ").append(option);
            const std::string values = BashValues(command->GetPathString(' '), *parameter);
            objectParameters += values == "@object";
            EXPECT_NE(script.find("['" + Key(*command) + " " + option + "']='" + values + "'\n"),
                      std::string::npos)
                << Key(*command) << " " << option;
            if (!parameter->GetShortName().empty()) {
                shortNames.append(" -").append(parameter->GetShortName());
                EXPECT_NE(script.find("['" + Key(*command) + " -" + parameter->GetShortName() +
                                      "']='" + option + "'\n"),
                          std::string::npos)
                    << Key(*command) << " -" << parameter->GetShortName();
            }
        }
        EXPECT_NE(script.find("['" + Key(*command) + "']='" + longNames + shortNames + "'\n"),
                  std::string::npos)
            << Key(*command);
    }
    EXPECT_GE(objectParameters, CommandHost::ObjectSources().size());
}

TEST_F(GeneratedFilesTest, TheZshScriptHoldsEveryNodeAndParameter) {
    const std::string script = Generated("zsh/vendor-completions/_autocli");
    EXPECT_EQ(script.rfind("#compdef autocli\n", 0), 0u);
    for (const auto& node : tree_.namespaces) {
        std::string children;
        for (const auto& name : node->GetNamespaceNodeNames()) {
            children.append(children.empty() ? "" : " ").append(name);
        }
        EXPECT_NE(script.find("    '" + Key(*node) + "' '" + children + "'\n"), std::string::npos)
            << Key(*node);
    }
    for (const auto& command : tree_.commands) {
        EXPECT_NE(script.find("    '" + Key(*command) + "' '"), std::string::npos) << Key(*command);
        for (const auto& parameter : Parameters(*command)) {
            EXPECT_NE(script.find("'" + Key(*command) + " --" + parameter->GetName() + "' '"),
                      std::string::npos)
                << Key(*command) << " --" << parameter->GetName();
        }
    }
}

// The page of the network namespace: a section for each command, in the tree's order, with
// each of its parameters; and autocli(1) names every formatter and that page.
TEST_F(GeneratedFilesTest, TheManualPagesDescribeEveryCommandAndFormatter) {
    const std::string page = Generated("man/man7/autocli-network.7");
    size_t previous = 0;
    for (const auto& command : tree_.commands) {
        const size_t at = page.find(".SS \"" + Roff(command->GetPathString(' ')) + "\"\n");
        ASSERT_NE(at, std::string::npos) << command->GetPathString(' ');
        EXPECT_GT(at, previous) << command->GetPathString(' ') << " is out of the tree's order";
        previous = at;
        const size_t end = std::min(page.find(".SS ", at + 1), page.size());
        const std::string section = page.substr(at, end - at);
        for (const auto& parameter : Parameters(*command)) {
            EXPECT_NE(section.find("\\fB" + Roff("--" + parameter->GetName()) + "\\fR"),
                      std::string::npos)
                << command->GetPathString(' ') << " --" << parameter->GetName();
        }
    }
    size_t sections = 0;
    for (size_t at = page.find("\n.SS "); at != std::string::npos;
         at = page.find("\n.SS ", at + 1)) {
        ++sections;
    }
    EXPECT_EQ(sections, tree_.commands.size());

    const std::string program = Generated("man/man1/autocli.1");
    for (const auto& name : CommandHost::FormatterNames()) {
        EXPECT_NE(program.find(".TP\n\\fB" + name + "\\fR\n"), std::string::npos) << name;
    }
    EXPECT_NE(program.find(".BR autocli\\-network (7)"), std::string::npos);
    EXPECT_NE(program.find(".BI \\-\\-host= host"), std::string::npos);
}

}  // namespace
}  // namespace CommandHostTesting
