// The command host: holds the command tree, parses and checks a command line against the
// command's declared input, runs it, and formats the result. `autocli` is a thin main over it;
// tests drive the same path in-process.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cpptools/AutoCli.h"
#include "cpptools/CallSpec.h"

namespace CommandHost {

struct BatchOptions;

using RegisterFunction = void (*)(std::shared_ptr<CppTools::AutoCli::NamespaceNode>&);

// Exit statuses of a run.
enum ExitStatus {
    ExitOk = 0,
    ExitCommandError = 1,  // the command reported an error, or its Bool root is false
    ExitRefused = 2,       // the host refused the command line
    ExitException = 3,     // an exception left the command, or a plug-in could not be loaded
    ExitOutputFailed = 4,  // the output could not be written (whatever the command did stands)
};

// Where Main writes its output and its messages: each as one text, in one call.
class OutputChannel {
public:
    virtual ~OutputChannel() = default;
    // Writes `text` whole. Returns an empty string, or why it could not be written whole ("No
    // space left on device").
    virtual std::string Write(std::string_view text) = 0;
};

struct RunResult {
    ExitStatus status = ExitOk;
    // The command that was resolved, null when the path named none.
    std::shared_ptr<CppTools::AutoCli::CommandSpec> command;
    // What the command left; null when it did not run.
    std::shared_ptr<CppTools::CallSpec::Output> output;
    // The host's own messages: a refusal of the command line, or an escaped exception.
    std::vector<std::string> hostMessages;
};

// The program's own options, read from the words ahead of the command path.
struct GlobalOptions {
    std::string formatter;        // --formatter=NAME; empty: the command's default
    std::string pluginDirectory;  // --plugin-dir=DIR; empty: not given
    std::string host;             // --host=sim|linux; empty: AUTOCLI_HOST, else sim
    bool help = false;            // --help
    bool version = false;         // --version
    std::string batch;            // --batch FILE: run its lines; "-" for standard input
    bool force = false;           // --force: a batch goes on after a failing line
    size_t next = 0;              // index of the first word after the options
    std::string error;            // a refusal of the options; empty when they are well formed
};
GlobalOptions ReadGlobalOptions(const std::vector<std::string>& arguments);

// The plug-in directory: `option` when given, else AUTOCLI_PLUGIN_DIR, else plugins/ beside the
// folder of libcpptools.so, where the build and an installation put them.
std::string PluginDirectory(const std::string& option);

class CommandHost {
public:
    CommandHost();

    // Calls a plug-in's entry with the root.
    void Register(RegisterFunction entry);
    // Loads every lib*.so of `directory`, in name order, and registers it. Throws
    // std::runtime_error naming the library when one cannot be loaded.
    void LoadPlugins(const std::string& directory);

    const std::shared_ptr<CppTools::AutoCli::NamespaceNode>& GetRoot() const { return root_; }

    // Resolves, parses, checks and executes a command line given as the words after the
    // program's own options, "network nic up -n hwnic0". Help is not handled here.
    RunResult Run(const std::vector<std::string>& words);

    // The whole of autocli after plug-in loading: global options (--formatter, --help), help
    // for namespaces and commands, running, formatting, and writing to `out` and `err`.
    // Returns the exit status.
    int Main(const std::vector<std::string>& arguments, OutputChannel& out, OutputChannel& err);

    // The completion entry (see Completion.h): `words` are a command's path and one of its
    // parameters; writes the names of the host's objects that the parameter may name, one to a
    // line, and nothing for a parameter that names none. Returns the exit status.
    int Complete(std::span<const std::string> words, OutputChannel& out, OutputChannel& err);

    // Runs each command line read from `descriptor` through Main, one line a command, skipping
    // blank lines and lines that start with '#'; a leading UTF-8 byte order mark is skipped and
    // a line over kMaximumBatchLineBytes fails. Stops at the first line that fails, naming it,
    // unless `options.force`; returns the exit status of the first failure, else ExitOk. A stop
    // signal (see StopBatchOnSignals) ends it after the line in flight with 128 + its number.
    int RunBatch(int descriptor, const BatchOptions& options, OutputChannel& out,
                 OutputChannel& err);
    // The same for the lines of a file, or of standard input for "-". A folder, or a file over
    // kMaximumBatchFileBytes, is refused.
    int RunBatchFile(const std::string& path, const BatchOptions& options, OutputChannel& out,
                     OutputChannel& err);

    // The width that help text and wrapped tables fit in; 80 unless set.
    void SetTerminalWidth(size_t width) { terminalWidth_ = width; }

    // For a process that ends with its command and never takes the host apart: Main keeps each
    // command's result until the next one, so that the rows of a long listing go with the
    // process instead of being freed one by one after they were written.
    void KeepResultsUntilExit() { keepResults_ = true; }

private:
    struct Resolution {
        std::shared_ptr<CppTools::AutoCli::NamespaceNode> node;
        size_t next = 0;  // index of the first word after the path
    };
    // Follows the leading words that name namespaces and then a command. Throws
    // CommandLineError for a word that names nothing.
    Resolution Resolve(const std::vector<std::string>& words) const;
    // Parses, checks and executes a resolved command with the words of its parameters.
    void Execute(const std::shared_ptr<CppTools::AutoCli::CommandSpec>& command,
                 std::span<const std::string> parameterWords, RunResult& result) const;

    std::shared_ptr<CppTools::AutoCli::NamespaceNode> root_;
    size_t terminalWidth_ = 80;
    bool inBatch_ = false;
    bool keepResults_ = false;
    RunResult keptResult_;
};

}  // namespace CommandHost
