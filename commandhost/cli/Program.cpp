// The whole of autocli once its plug-ins are loaded: the program's options, help, running the
// command, formatting its result, and printing it in one piece.
#include "commandhost/cli/Batch.h"
#include "commandhost/cli/CommandHost.h"
#include "commandhost/cli/CommandLine.h"
#include "commandhost/cli/Formatters.h"
#include "commandhost/cli/Help.h"
#include "commandhost/cli/Suggestions.h"

namespace CommandHost {

namespace {

constexpr std::string_view kFormatterOption = "--formatter";
constexpr std::string_view kPluginDirectoryOption = "--plugin-dir";
constexpr std::string_view kHelpOption = "--help";
constexpr std::string_view kVersionOption = "--version";
constexpr std::string_view kBatchOption = "--batch";
constexpr std::string_view kForceOption = "--force";

// Reads the value of `option` from "--option=value" or "--option value"; false when `word` is
// not that option.
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
    value.clear();
    if (word.starts_with('=')) {
        value = word.substr(1);
    } else if (index + 1 < arguments.size()) {
        value = arguments[++index];
    }
    if (value.empty()) {
        error = "The option '" + std::string(option) + "' needs a value, as in " +
                std::string(option) + "=VALUE.";
    }
    return true;
}

void Write(OutputChannel& channel, const std::string& text) {
    if (!text.empty()) {
        channel.Write(text);
    }
}

int Refuse(OutputChannel& err, const std::string& message) {
    Write(err, message + "\n");
    return ExitRefused;
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
                   !ReadValueOption(arguments, index, kBatchOption, options.batch, options.error)) {
            std::string name = word.substr(0, word.find('='));
            options.error =
                "Unknown option '" + word + "'." +
                DidYouMean(name,
                           {std::string(kFormatterOption), std::string(kPluginDirectoryOption),
                            std::string(kHelpOption), std::string(kVersionOption),
                            std::string(kBatchOption), std::string(kForceOption)}) +
                " Usage: autocli [--formatter=NAME] [--plugin-dir=DIR] [--help] [--version] "
                "network <path...> [parameters], or autocli [--formatter=NAME] --batch FILE "
                "[--force]";
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
                     options.version)) {
        return Refuse(err,
                      "The options --batch, --force, --plugin-dir and --version can't be "
                      "given on a line of a batch.");
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
        Write(out, "autocli " AUTOCLI_VERSION "\n");
        return ExitOk;
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
        return Refuse(err, "Unknown formatter '" + formatter + "'." +
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
        Write(out, isCommand && command ? CommandHelp(*command, terminalWidth_)
                                        : NamespaceHelp(*resolution.node, terminalWidth_));
        return ExitOk;
    }

    RunResult result = Run(words);
    std::string text;
    const auto& root = result.output ? result.output->GetRootObject() : nullptr;
    if (root && result.status != ExitException) {
        OutputLayout layout(result.command->GetDefaultOutputParameters());
        text = FormatResult(
            formatter.empty() ? result.command->GetDefaultOutputFormatter() : formatter, *root,
            {layout, terminalWidth_});
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
    Write(out, text);
    Write(err, messages);
    return result.status;
}

}  // namespace CommandHost
