#include "support/CommandTest.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "frame/Registration.h"
#include "support/ModelFailures.h"

extern char** environ;

namespace Testing {

using CppTools::MetaObj::MetaBool;
using CppTools::MetaObj::MetaInt;
using CppTools::MetaObj::MetaList;
using CppTools::MetaObj::MetaString;
using CppTools::MetaObj::MetaStruct;
using CppTools::MetaObj::MetaValue;

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "autocli-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary directory");
    }
    path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

CommandHost::CommandHost& PluginHost() {
    static CommandHost::CommandHost* host = [] {
        auto* made = new CommandHost::CommandHost();
        made->Register(&AutoCli_RegisterNamespaces);
        return made;
    }();
    return *host;
}

void CommandTest::SetUp() {
    state_ = std::make_unique<TemporaryDirectory>();
    HostSim::UseStateDirectory(state_->Path());
    HostSim::ClearFaults();
}

void CommandTest::TearDown() {
    HostSim::ClearFaults();
}

CommandHost::RunResult CommandTest::Run(const std::vector<std::string>& words) {
    std::vector<std::string> line{"network"};
    line.insert(line.end(), words.begin(), words.end());
    return PluginHost().Run(line);
}

namespace {

std::string Describe(const CommandHost::RunResult& result) {
    std::string text = "status " + std::to_string(result.status);
    for (const auto& message : result.hostMessages) {
        text += "\nhost: " + message;
    }
    if (result.output) {
        for (const auto& message : result.output->GetErrorMessages()) {
            text += "\nerror: " + message;
        }
    }
    return text;
}

template <class T>
std::shared_ptr<T> As(const std::shared_ptr<MetaValue>& value, const char* what) {
    auto typed = std::dynamic_pointer_cast<T>(value);
    if (!typed) {
        ADD_FAILURE() << "expected " << what;
    }
    return typed;
}

// A run whose network model could not be made ends as the command's line of kModelFailures
// says, with that one message and no root.
void ExpectModelFailure(const CommandHost::RunResult& result) {
    const std::string path = result.command ? result.command->GetPathString(' ') : std::string();
    const ModelFailure* expected = FindModelFailure(path);
    if (expected == nullptr) {
        ADD_FAILURE() << "no line in kModelFailures for '" << path << "', which ended "
                      << Describe(result);
        return;
    }
    EXPECT_EQ(result.status, expected->status) << Describe(result);
    const bool escaped = expected->status == CommandHost::ExitException;
    const std::vector<std::string> one{expected->message};
    EXPECT_EQ(result.hostMessages, escaped ? one : std::vector<std::string>{});
    EXPECT_EQ(result.output->GetErrorMessages(), escaped ? std::vector<std::string>{} : one);
    EXPECT_EQ(result.output->GetRootObject(), nullptr);
}

}  // namespace

std::shared_ptr<MetaValue> CommandTest::RunOk(const std::vector<std::string>& words) {
    auto result = Run(words);
    EXPECT_EQ(result.status, CommandHost::ExitOk) << Describe(result);
    if (!result.output) {
        ADD_FAILURE() << "the command did not run: " << Describe(result);
        return nullptr;
    }
    EXPECT_FALSE(result.output->HasError()) << Describe(result);
    return result.output->GetRootObject();
}

std::shared_ptr<MetaList> CommandTest::RunList(const std::vector<std::string>& words) {
    return As<MetaList>(RunOk(words), "a list root");
}

std::shared_ptr<MetaStruct> CommandTest::RunStruct(const std::vector<std::string>& words) {
    return As<MetaStruct>(RunOk(words), "a struct root");
}

std::string CommandTest::RunError(const std::vector<std::string>& words) {
    auto result = Run(words);
    if (!result.output) {
        ADD_FAILURE() << "the command did not run: " << Describe(result);
        return {};
    }
    EXPECT_EQ(result.status, CommandHost::ExitCommandError) << Describe(result);
    EXPECT_EQ(result.output->GetRootObject(), nullptr) << "a root beside the error";
    const auto& errors = result.output->GetErrorMessages();
    EXPECT_EQ(errors.size(), 1u) << Describe(result);
    return errors.empty() ? std::string() : errors.front();
}

std::string Str(const std::shared_ptr<MetaStruct>& row, const std::string& field) {
    auto value = As<MetaString>(FieldOf(row, field), "a string field");
    return value ? value->GetValue() : std::string();
}

// The value shares the row's ownership, as the row holds it.
std::shared_ptr<MetaValue> FieldOf(const std::shared_ptr<MetaStruct>& row,
                                   const std::string& field) {
    if (!row) {
        ADD_FAILURE() << "no struct to read " << field << " from";
        return nullptr;
    }
    const MetaValue* value = row->GetField(field);
    if (value == nullptr) {
        ADD_FAILURE() << "struct " << row->GetName() << " has no field " << field;
        return nullptr;
    }
    return std::shared_ptr<MetaValue>(row, const_cast<MetaValue*>(value));
}

long Int(const std::shared_ptr<MetaStruct>& row, const std::string& field) {
    auto value = As<MetaInt>(FieldOf(row, field), "an int field");
    return value ? value->GetValue() : 0;
}

bool Bool(const std::shared_ptr<MetaStruct>& row, const std::string& field) {
    auto value = As<MetaBool>(FieldOf(row, field), "a bool field");
    return value ? value->GetValue() : false;
}

std::vector<std::string> Strings(const std::shared_ptr<MetaStruct>& row, const std::string& field) {
    std::vector<std::string> strings;
    if (auto list = As<MetaList>(FieldOf(row, field), "a list field")) {
        for (const auto& element : list->GetElements()) {
            if (auto text = As<MetaString>(element, "a string element")) {
                strings.push_back(text->GetValue());
            }
        }
    }
    return strings;
}

std::shared_ptr<MetaStruct> Nested(const std::shared_ptr<MetaStruct>& row,
                                   const std::string& field) {
    return As<MetaStruct>(FieldOf(row, field), "a struct field");
}

std::vector<std::shared_ptr<MetaStruct>> Rows(const std::shared_ptr<MetaList>& list) {
    std::vector<std::shared_ptr<MetaStruct>> rows;
    if (!list) {
        ADD_FAILURE() << "no list";
        return rows;
    }
    for (const auto& element : list->GetElements()) {
        rows.push_back(As<MetaStruct>(element, "a struct element"));
    }
    return rows;
}

std::vector<std::string> FieldNames(const std::shared_ptr<MetaStruct>& row) {
    std::vector<std::string> names;
    for (const auto& field : row->GetFields()) {
        names.push_back(field.Name());
    }
    return names;
}

std::shared_ptr<CppTools::AutoCli::NamespaceNode> RegisteredTree() {
    std::shared_ptr<CppTools::AutoCli::NamespaceNode> root = CppTools::AutoCli::Namespace::New();
    AutoCli_RegisterNamespaces(root);
    return root;
}

void WalkTree(
    const std::shared_ptr<CppTools::AutoCli::NamespaceNode>& node,
    const std::function<void(const std::shared_ptr<CppTools::AutoCli::NamespaceNode>&)>& visit) {
    visit(node);
    for (const auto& child : node->GetNamespaceNodes()) {
        WalkTree(child, visit);
    }
}

std::vector<std::string> DeclaredFieldNames(const std::vector<std::string>& words) {
    const auto root = RegisteredTree();
    std::list<std::string> path{"network"};
    path.insert(path.end(), words.begin(), words.end());
    auto command =
        std::dynamic_pointer_cast<CppTools::AutoCli::CommandSpec>(root->ResolveNode(path));
    if (!command || !path.empty()) {
        ADD_FAILURE() << "no command " << ::testing::PrintToString(words);
        return {};
    }
    auto result = command->GetOutputSpec()->GetRootObject();
    if (auto list = std::dynamic_pointer_cast<MetaList>(result)) {
        return FieldNames(list->GetPrototype());
    }
    return FieldNames(As<MetaStruct>(result, "a struct result"));
}

std::shared_ptr<MetaStruct> RowWhere(const std::shared_ptr<MetaList>& list,
                                     const std::string& field, const std::string& value) {
    for (const auto& row : Rows(list)) {
        if (row && Str(row, field) == value) {
            return row;
        }
    }
    ADD_FAILURE() << "no row with " << field << " = " << value;
    return nullptr;
}

namespace {

std::string ReadAll(int fd) {
    std::string text;
    std::array<char, 65536> buffer;
    ssize_t count;
    while ((count = read(fd, buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
}

}  // namespace

// Standard error goes through a file so that the two pipes cannot block each other.
ProcessResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& stateDirectory,
                         const std::map<std::string, std::string>& environment) {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        std::string text = *entry;
        auto equals = text.find('=');
        if (equals != std::string::npos) {
            variables[text.substr(0, equals)] = text.substr(equals + 1);
        }
    }
    variables["HOSTSIM_DIR"] = stateDirectory;
    for (const auto& [name, value] : environment) {
        variables[name] = value;
    }
    std::vector<std::string> envText;
    for (const auto& [name, value] : variables) {
        envText.push_back(name + "=" + value);
    }
    std::vector<char*> envp;
    for (auto& text : envText) {
        envp.push_back(text.data());
    }
    envp.push_back(nullptr);
    std::vector<std::string> argText{program};
    argText.insert(argText.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& text : argText) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);

    int outPipe[2];
    if (pipe(outPipe) != 0) {
        throw std::runtime_error("pipe failed");
    }
    TemporaryDirectory errDirectory;
    const std::string errPath = errDirectory.Path() + "/stderr";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, outPipe[0]);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t pid = 0;
    int spawned = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    ProcessResult result;
    if (spawned != 0) {
        close(outPipe[0]);
        throw std::runtime_error("cannot start " + program);
    }
    result.out = ReadAll(outPipe[0]);
    close(outPipe[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    int errFd = open(errPath.c_str(), O_RDONLY);
    if (errFd >= 0) {
        result.err = ReadAll(errFd);
        close(errFd);
    }
    return result;
}

ProcessResult RunAutocli(const std::vector<std::string>& arguments,
                         const std::string& stateDirectory,
                         const std::map<std::string, std::string>& environment) {
    auto withPlugins = environment;
    withPlugins.emplace("AUTOCLI_PLUGIN_DIR", PLUGIN_DIRECTORY);
    return RunProgram(AUTOCLI_BINARY, arguments, stateDirectory, withPlugins);
}

ProcessResult RunHostsim(const std::vector<std::string>& arguments,
                         const std::string& stateDirectory,
                         const std::map<std::string, std::string>& environment) {
    return RunProgram(HOSTSIM_BINARY, arguments, stateDirectory, environment);
}

}  // namespace Testing

namespace Testing {

std::vector<HostSim::OperationCall> CommandTest::ExpectEveryFaultFails(
    const std::vector<std::string>& words, const SweepRules& rules) {
    std::vector<HostSim::OperationCall> operations;
    auto prepare = [this, &rules](const TemporaryDirectory& fresh) {
        HostSim::UseStateDirectory(fresh.Path());
        for (const auto& line : rules.setup) {
            EXPECT_EQ(Run(line).status, CommandHost::ExitOk) << ::testing::PrintToString(line);
        }
    };
    {
        TemporaryDirectory fresh;
        prepare(fresh);
        HostSim::StartTrace();
        auto result = Run(words);
        operations = HostSim::StopTrace();
        EXPECT_EQ(result.status, CommandHost::ExitOk) << Describe(result);
    }
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.operation + "@" + operation.object);
        TemporaryDirectory fresh;
        prepare(fresh);
        HostSim::InjectFault(operation.operation, operation.object, kInjectedFault);
        auto result = Run(words);
        HostSim::ClearFaults();
        if (!result.output) {
            ADD_FAILURE() << "the command did not run: " << Describe(result);
            continue;
        }
        auto listed = [&operation](const std::vector<std::string>& operations) {
            return std::find(operations.begin(), operations.end(), operation.operation) !=
                   operations.end();
        };
        if (MakesModel(operation.operation)) {
            ExpectModelFailure(result);
            continue;
        }
        if (listed(rules.handledOperations)) {
            EXPECT_EQ(result.status, CommandHost::ExitOk) << Describe(result);
            continue;
        }
        if (rules.everyFailureEscapes || listed(rules.escapingOperations)) {
            EXPECT_EQ(result.status, CommandHost::ExitException) << Describe(result);
            EXPECT_EQ(result.output->GetRootObject(), nullptr);
            continue;
        }
        EXPECT_EQ(result.status, CommandHost::ExitCommandError) << Describe(result);
        EXPECT_FALSE(result.output->GetErrorMessages().empty());
        if (!rules.rootMayStay) {
            EXPECT_EQ(result.output->GetRootObject(), nullptr);
        }
    }
    HostSim::UseStateDirectory(StateDirectory());
    return operations;
}

void CommandTest::SweepTable(const std::vector<SweepCase>& cases) {
    for (const auto& sweep : cases) {
        SCOPED_TRACE(::testing::PrintToString(sweep.words));
        std::vector<std::string> swept;
        for (const auto& call : ExpectEveryFaultFails(sweep.words, sweep.rules)) {
            swept.push_back(call.operation);
        }
        for (const auto& operation : sweep.expected) {
            EXPECT_NE(std::find(swept.begin(), swept.end(), operation), swept.end()) << operation;
        }
    }
}

}  // namespace Testing
