// The whole of autocli once its plug-ins are loaded: the program's options, help, running the
// command, formatting its result, and printing it in one piece.
#include <algorithm>
#include <cstdlib>

#include "commandhost/cli/Batch.h"
#include "commandhost/cli/CommandHost.h"
#include "commandhost/cli/CommandLine.h"
#include "commandhost/cli/Completion.h"
#include "commandhost/cli/Formatters.h"
#include "commandhost/cli/Help.h"
#include "commandhost/cli/Suggestions.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

namespace {

constexpr std::string_view kFormatterOption = "--formatter";
constexpr std::string_view kPluginDirectoryOption = "--plugin-dir";
constexpr std::string_view kHelpOption = "--help";
constexpr std::string_view kVersionOption = "--version";
constexpr std::string_view kBatchOption = "--batch";
constexpr std::string_view kForceOption = "--force";
constexpr std::string_view kHostOption = "--host";
// The hosts a process can act on: the simulated host, and the Linux kernel it runs on.
constexpr const char* kHosts[] = {"sim", "linux"};

// Reads the value of `option` from "--option=value" or "--option value"; false when `word` is
// not that option. `value` holds what an earlier occurrence gave, and a second one is refused.
bool ReadValueOption(const std::vector<std::string>& arguments, size_t& index,
                     std::string_view option, std::string& value, std::string& error) {
    std::string_view word = arguments[index];
    if (!word.starts_with(option)) {
        return false;
    }
    word.remove_prefix(option.size());
    if (!word.empty() && !word.starts_with('=')) {
        return false;
    }
    std::string given;
    if (word.starts_with('=')) {
        given = word.substr(1);
    } else if (index + 1 < arguments.size()) {
        given = arguments[++index];
    }
    if (given.empty()) {
        error = "The option '" + std::string(option) + "' needs a value, as in " +
                std::string(option) + "=VALUE.";
    } else if (!value.empty()) {
        error = "The option '" + std::string(option) + "' was given more than once (" +
                QuoteValue(value) + ", then " + QuoteValue(given) + "); it takes a single value.";
    }
    value = std::move(given);
    return true;
}

// Writes `text`; an empty string, or why it could not be written.
std::string Write(OutputChannel& channel, const std::string& text) {
    return text.empty() ? std::string() : channel.Write(text);
}

int Refuse(OutputChannel& err, const std::string& message) {
    Write(err, message + "\n");
    return ExitRefused;
}

// Writes what goes to stdout and then the messages. Output that can't be written whole is
// reported on stderr, after the messages, and gives its own status: a script must not take a
// truncated or missing result for the command's answer.
int Finish(OutputChannel& out, OutputChannel& err, const std::string& text,
           const std::string& messages, int status, std::string failure = {}) {
    if (failure.empty()) {
        failure = Write(out, text);
    }
    Write(err, messages);
    if (failure.empty()) {
        return status;
    }
    Write(err, "Unable to write to standard output: " + failure + "\n");
    return ExitOutputFailed;
}

// Passes --host to the host library, which reads AUTOCLI_HOST at its first call, for this
// process and every line of a batch. Why the host named, by the option or the variable, is
// refused; empty when it is known.
std::string ChooseHost(const std::string& option) {
    const char* variable = std::getenv("AUTOCLI_HOST");
    const std::string host = !option.empty() ? option : variable != nullptr ? variable : "";
    if (host.empty()) {
        return {};
    }
    if (std::find(std::begin(kHosts), std::end(kHosts), host) == std::end(kHosts)) {
        return "Unknown host " + QuoteValue(host) + (option.empty() ? " in AUTOCLI_HOST." : ".") +
               DidYouMean(host, {kHosts[0], kHosts[1]}) + " Hosts: sim, linux.";
    }
    setenv("AUTOCLI_HOST", host.c_str(), 1);
    return {};
}

}  // namespace

GlobalOptions ReadGlobalOptions(const std::vector<std::string>& arguments) {
    GlobalOptions options;
    size_t& index = options.next;
    for (; index < arguments.size() && options.error.empty(); ++index) {
        const std::string& word = arguments[index];
        if (!word.starts_with('-')) {
            break;
        }
        if (word == kHelpOption) {
            options.help = true;
        } else if (word == kVersionOption) {
            options.version = true;
        } else if (word == kForceOption) {
            options.force = true;
        } else if (!ReadValueOption(arguments, index, kFormatterOption, options.formatter,
                                    options.error) &&
                   !ReadValueOption(arguments, index, kPluginDirectoryOption,
                                    options.pluginDirectory, options.error) &&
                   !ReadValueOption(arguments, index, kBatchOption, options.batch, options.error) &&
                   !ReadValueOption(arguments, index, kHostOption, options.host, options.error)) {
            std::string name = word.substr(0, word.find('='));
            options.error =
                "Unknown option " + QuoteValue(name) + "." +
                DidYouMean(name, {std::string(kFormatterOption),
                                  std::string(kPluginDirectoryOption), std::string(kHelpOption),
                                  std::string(kVersionOption), std::string(kBatchOption),
                                  std::string(kForceOption), std::string(kHostOption)}) +
                " Usage: autocli [--host=sim|linux] [--formatter=NAME] [--plugin-dir=DIR] "
                "[--help] [--version] network <path...> [parameters], or autocli "
                "[--host=sim|linux] [--formatter=NAME] --batch FILE [--force]";
        }
    }
    return options;
}

int CommandHost::Main(const std::vector<std::string>& arguments, OutputChannel& out,
                      OutputChannel& err) {
    const GlobalOptions options = ReadGlobalOptions(arguments);
    if (!options.error.empty()) {
        return Refuse(err, options.error);
    }
    if (inBatch_ && (!options.batch.empty() || options.force || !options.pluginDirectory.empty() ||
                     options.version || !options.host.empty())) {
        return Refuse(err,
                      "The options --batch, --force, --host, --plugin-dir and --version can't be "
                      "given on a line of a batch.");
    }
    if (const std::string refusal = ChooseHost(options.host); !refusal.empty()) {
        return Refuse(err, refusal);
    }
    if (!options.batch.empty()) {
        if (options.next < arguments.size() || options.help) {
            return Refuse(err,
                          "With --batch the command lines come from the file, one to a "
                          "line; nothing else follows it but --force or --formatter.");
        }
        return RunBatchFile(options.batch, {options.force, options.formatter}, out, err);
    }
    if (options.force) {
        return Refuse(err, "The option '--force' goes with '--batch'.");
    }
    if (options.version) {
        return Finish(out, err, "autocli " AUTOCLI_VERSION "\n", {}, ExitOk);
    }
    if (options.next < arguments.size() && arguments[options.next] == kCompleteWord) {
        return Complete(std::span(arguments).subspan(options.next + 1), out, err);
    }
    // --help and --formatter may also follow the path: "network nic list --formatter=json".
    bool help = options.help;
    std::string formatter = options.formatter;
    std::string error;
    std::vector<std::string> words;
    for (size_t i = options.next; i < arguments.size(); ++i) {
        if (arguments[i] == kHelpOption) {
            help = true;
        } else if (!ReadValueOption(arguments, i, kFormatterOption, formatter, error)) {
            words.push_back(arguments[i]);
        }
    }
    if (!error.empty()) {
        return Refuse(err, error);
    }
    if (!formatter.empty() && FindFormatter(formatter) == nullptr) {
        std::string names;
        for (const std::string& name : FormatterNames()) {
            names.append(names.empty() ? "" : ", ").append(name);
        }
        return Refuse(err, "Unknown formatter " + QuoteValue(formatter) + "." +
                               DidYouMean(formatter, FormatterNames()) + " Formatters: " + names +
                               ".");
    }
    Resolution resolution;
    try {
        resolution = Resolve(words);
    } catch (const CommandLineError& e) {
        return Refuse(err, e.what());
    }
    const bool isCommand = resolution.node->GetType() == CppTools::AutoCli::NodeTypeCommand;
    if (help || (!isCommand && resolution.next == words.size())) {
        auto command = std::dynamic_pointer_cast<CppTools::AutoCli::CommandSpec>(resolution.node);
        return Finish(out, err,
                      isCommand && command ? CommandHelp(*command, terminalWidth_)
                                           : NamespaceHelp(*resolution.node, terminalWidth_),
                      {}, ExitOk);
    }

    RunResult result = Run(words);
    std::string text;
    // A long result goes out in parts as it is formatted; after a part fails, nothing more is
    // written, and the failure is reported as for a text written whole.
    std::string failure;
    const Spill spill = [&out, &failure](std::string& part) {
        if (failure.empty()) {
            failure = Write(out, part);
        }
        part.clear();
    };
    const auto& root = result.output ? result.output->GetRootObject() : nullptr;
    if (root && result.status != ExitException) {
        OutputLayout layout(result.command->GetDefaultOutputParameters());
        text = FormatResult(
            formatter.empty() ? result.command->GetDefaultOutputFormatter() : formatter, *root,
            {layout, terminalWidth_, &spill});
    }
    std::string messages;
    if (result.output) {
        for (const std::string& message : result.output->GetErrorMessages()) {
            messages.append(message).push_back('\n');
        }
    }
    for (const std::string& message : result.hostMessages) {
        messages.append(message).push_back('\n');
    }
    const int status = Finish(out, err, text, messages, result.status, failure);
    if (keepResults_) {
        keptResult_ = std::move(result);
    }
    return status;
}

}  // namespace CommandHost
