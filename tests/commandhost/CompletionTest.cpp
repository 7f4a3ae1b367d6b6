// The completion entry, `autocli __complete PATH PARAMETER`: the names of the host's objects for
// the parameters that name them, in-process on the plug-in's tree and through the binary.
#include <algorithm>
#include <set>

#include "commandhost/cli/Completion.h"
#include "hostsim/Control.h"
#include "support/CommandTest.h"

namespace CommandHostTesting {
namespace {

using CppTools::AutoCli::CommandSpec;
using CppTools::AutoCli::NamespaceNode;

struct Answer {
    int status = -1;
    std::vector<std::string> names;
    std::string err;
};

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        const size_t end = text.find('\n', start);
        lines.push_back(text.substr(start, end - start));
        start = end == std::string::npos ? text.size() : end + 1;
    }
    return lines;
}

class CompletionTest : public Testing::CommandTest {
protected:
    // Runs autocli's Main on the plug-in's tree with "__complete" and `words`.
    Answer Complete(const std::vector<std::string>& words) {
        struct StringChannel : CommandHost::OutputChannel {
            std::string Write(std::string_view written) override {
                text.append(written);
                return {};
            }
            std::string text;
        };
        StringChannel out;
        StringChannel err;
        std::vector<std::string> arguments{std::string(CommandHost::kCompleteWord)};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const int status = Testing::PluginHost().Main(arguments, out, err);
        return {status, Lines(out.text), err.text};
    }

    // The names the list command of `source` shows, read from its rows.
    std::vector<std::string> Listed(const CommandHost::ObjectSource& source) {
        std::vector<std::string> words;
        for (size_t start = 0; start < source.listCommand.size();) {
            const size_t end =
                std::min(source.listCommand.find(' ', start), source.listCommand.size());
            words.emplace_back(source.listCommand.substr(start, end - start));
            start = end + 1;
        }
        auto result = Testing::PluginHost().Run(words);
        EXPECT_EQ(result.status, CommandHost::ExitOk) << source.listCommand;
        std::vector<std::string> names;
        const auto& root = result.output ? result.output->GetRootObject() : nullptr;
        if (!root) {
            return names;
        }
        for (const auto& row :
             Testing::Rows(std::static_pointer_cast<CppTools::MetaObj::MetaList>(root))) {
            names.push_back(Testing::Str(row, std::string(source.nameField)));
        }
        return names;
    }
};

// A command's declared parameters; none when it declares no input.
std::vector<std::shared_ptr<CppTools::CallSpec::ParameterSpec>> Parameters(CommandSpec& command) {
    const auto spec = command.GetInputSpec();
    return spec ? spec->GetParameters()
                : std::vector<std::shared_ptr<CppTools::CallSpec::ParameterSpec>>();
}

// Every command of the tree, depth first.
void Commands(const std::shared_ptr<NamespaceNode>& node,
              std::vector<std::shared_ptr<CommandSpec>>& commands) {
    if (auto command = std::dynamic_pointer_cast<CommandSpec>(node)) {
        commands.push_back(command);
    }
    for (const auto& child : node->GetNamespaceNodes()) {
        Commands(child, commands);
    }
}

// Over the whole tree: each parameter that names objects completes, by its long and its short
// name, to the names its list command shows; the creating commands complete nothing; every
// entry of the table serves some command.
TEST_F(CompletionTest, EveryObjectParameterOfTheTreeCompletesToTheListedNames) {
    std::vector<std::shared_ptr<CommandSpec>> commands;
    Commands(Testing::PluginHost().GetRoot(), commands);
    std::set<std::string_view> used;
    size_t completed = 0;
    for (const auto& command : commands) {
        const std::string path = command->GetPathString(' ');
        std::vector<std::string> words;
        for (const auto& word : command->GetPath()) {
            words.push_back(word);
        }
        for (const auto& parameter : Parameters(*command)) {
            const auto* source = CommandHost::FindObjectSource(path, parameter->GetName());
            std::vector<std::string> options{"--" + parameter->GetName()};
            if (!parameter->GetShortName().empty()) {
                options.push_back("-" + parameter->GetShortName());
            }
            const auto expected = source ? Listed(*source) : std::vector<std::string>();
            for (const auto& option : options) {
                std::vector<std::string> line = words;
                line.push_back(option);
                const Answer answer = Complete(line);
                EXPECT_EQ(answer.status, CommandHost::ExitOk) << path << " " << option;
                EXPECT_EQ(answer.names, expected) << path << " " << option;
                EXPECT_EQ(answer.err, "") << path << " " << option;
            }
            if (source != nullptr) {
                EXPECT_FALSE(expected.empty()) << path << " " << parameter->GetName();
                used.insert(source->parameter);
                ++completed;
            }
        }
    }
    EXPECT_EQ(used.size(), CommandHost::ObjectSources().size());
    EXPECT_GE(completed, used.size());
    for (const auto& source : CommandHost::ObjectSources()) {
        EXPECT_TRUE(used.count(source.parameter)) << source.parameter << " serves no command";
    }
}

TEST_F(CompletionTest, TheCreatingCommandCompletesOnlyItsOtherObjects) {
    const auto made = Complete({"network", "vswitch", "standard", "portgroup", "add", "-p"});
    EXPECT_EQ(made.status, CommandHost::ExitOk);
    EXPECT_TRUE(made.names.empty());
    const auto switches = Complete({"network", "vswitch", "standard", "portgroup", "add", "-v"});
    EXPECT_EQ(switches.names, (std::vector<std::string>{"lanswitch0", "storageswitch1"}));
}

TEST_F(CompletionTest, NamesFollowTheHostsChanges) {
    ASSERT_EQ(
        Run({"vswitch", "standard", "portgroup", "add", "-p", "Lab Network", "-v", "lanswitch0"})
            .status,
        CommandHost::ExitOk);
    const auto answer =
        Complete({"network", "vswitch", "standard", "portgroup", "remove", "--portgroup-name"});
    EXPECT_EQ(answer.status, CommandHost::ExitOk);
    EXPECT_NE(std::find(answer.names.begin(), answer.names.end(), "Lab Network"),
              answer.names.end());
}

TEST_F(CompletionTest, AHostFailureGivesNoNamesAndItsMessage) {
    HostSim::InjectFault("NetworkInfo::GetPnics", "", "driver reset");
    const auto answer = Complete({"network", "nic", "down", "-n"});
    EXPECT_EQ(answer.status, CommandHost::ExitCommandError);
    EXPECT_TRUE(answer.names.empty());
    EXPECT_EQ(answer.err, "Unable to list NICs.  Error was driver reset\n");
}

TEST_F(CompletionTest, ALineThatNamesNoCommandsParameterIsRefused) {
    struct Case {
        std::vector<std::string> words;
        std::string err;
    };
    const std::vector<Case> cases = {
        {{}, "autocli __complete: give the command's path and the parameter to complete.\n"},
        {{"network", "nic"}, "autocli __complete: 'nic' does not follow the path of a command.\n"},
        {{"network", "nic", "down", "extra", "-n"},
         "autocli __complete: '-n' does not follow the path of a command.\n"},
        {{"network", "nix", "-n"},
         "Unknown command or namespace 'nix' in 'network'. Did you mean 'nic'?\n"},
    };
    for (const Case& line : cases) {
        const auto answer = Complete(line.words);
        EXPECT_EQ(answer.status, CommandHost::ExitRefused) << line.err;
        EXPECT_TRUE(answer.names.empty()) << line.err;
        EXPECT_EQ(answer.err, line.err);
    }
}

TEST_F(CompletionTest, AnUnknownParameterCompletesNothing) {
    const auto answer = Complete({"network", "nic", "down", "--nic-nme"});
    EXPECT_EQ(answer.status, CommandHost::ExitOk);
    EXPECT_TRUE(answer.names.empty());
    EXPECT_EQ(answer.err, "");
}

TEST(AutocliCompletionTest, TheBinaryAnswersWithTheNamesAfterItsOptions) {
    Testing::TemporaryDirectory state;
    auto result = Testing::RunAutocli(
        {"--plugin-dir=" PLUGIN_DIRECTORY, "__complete", "network", "ip", "netstack", "get", "-N"},
        state.Path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "defaultTcpipStack\nglidex\n");
    EXPECT_EQ(result.err, "");
}

}  // namespace
}  // namespace CommandHostTesting
