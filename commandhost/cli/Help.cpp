#include "commandhost/cli/Help.h"

#include <algorithm>

#include "commandhost/cli/CommandLine.h"
#include "commandhost/cli/Formatters.h"
#include "commandhost/cli/Text.h"

namespace CommandHost {

using CppTools::AutoCli::CommandSpec;
using CppTools::AutoCli::NamespaceNode;
using CppTools::CallSpec::ParameterSpec;
namespace CallSpec = CppTools::CallSpec;

namespace {

constexpr size_t kDescriptionIndent = 6;
// Lines of a %FULLENUM% list start with this, and wrap under their description.
constexpr std::string_view kChoiceMark = "  ";
constexpr size_t kNarrowestColumn = 24;

struct Entry {
    std::string name;
    std::string description;
};

// `text` wrapped to `width`, each line after `indent` blanks; the lines of a value list are
// set in by two more, and their continuations by four.
void AppendWrapped(std::string_view text, size_t indent, size_t width, std::string& out) {
    const size_t room = width > indent + kNarrowestColumn ? width - indent : kNarrowestColumn;
    for (;;) {
        size_t lineEnd = text.find('\n');
        std::string_view line = text.substr(0, lineEnd);
        const bool isChoice = line.starts_with(kChoiceMark);
        if (isChoice) {
            line.remove_prefix(kChoiceMark.size());
        }
        const size_t hanging = isChoice ? 2 * kChoiceMark.size() : 0;
        const auto pieces = WrapText(line, room - hanging);
        for (size_t i = 0; i < pieces.size(); ++i) {
            size_t blanks = pieces[i].empty() ? 0 : indent + (i == 0 ? hanging / 2 : hanging);
            out.append(blanks, ' ').append(pieces[i]).push_back('\n');
        }
        if (lineEnd == std::string_view::npos) {
            break;
        }
        text.remove_prefix(lineEnd + 1);
    }
}

// Names in a column, descriptions wrapped beside them.
void AppendEntries(std::string_view title, const std::vector<Entry>& entries, size_t width,
                   std::string& out) {
    if (entries.empty()) {
        return;
    }
    out.append(title).append(":\n");
    size_t nameWidth = 0;
    for (const Entry& entry : entries) {
        nameWidth = std::max(nameWidth, DisplayWidth(entry.name));
    }
    const size_t column = 2 + nameWidth + 2;
    const bool beside = width >= column + kNarrowestColumn;
    for (const Entry& entry : entries) {
        out.append("  ").append(entry.name);
        if (beside) {
            auto lines = WrapText(entry.description, width - column);
            for (size_t i = 0; i < lines.size(); ++i) {
                size_t pad = i == 0 ? column - 2 - DisplayWidth(entry.name) : column;
                out.append(lines[i].empty() ? 0 : pad, ' ').append(lines[i]).push_back('\n');
            }
        } else {
            out.push_back('\n');
            AppendWrapped(entry.description, kDescriptionIndent, width, out);
        }
    }
}

// Words joined after `lead`, wrapped under the first word that follows it.
void AppendUsage(std::string_view lead, const std::vector<std::string>& words, size_t width,
                 std::string& out) {
    size_t lineStart = out.size();
    out.append(lead);
    size_t column = DisplayWidth(lead);
    const size_t continuation = std::string_view("Usage: ").size();
    for (const std::string& word : words) {
        size_t wordWidth = DisplayWidth(word);
        if (column + 1 + wordWidth > width && out.size() > lineStart + lead.size()) {
            out.push_back('\n');
            lineStart = out.size();
            out.append(continuation, ' ');
            column = continuation;
        } else {
            out.push_back(' ');
            ++column;
        }
        out.append(word);
        column += wordWidth;
    }
    out.push_back('\n');
}

const char* ValueWord(CallSpec::ParameterType type) {
    switch (type) {
        case CallSpec::ParameterTypeInt:
            return "<int>";
        case CallSpec::ParameterTypeBool:
            return "<bool>";
        case CallSpec::ParameterTypeFlag:
            return "";
        default:
            return "<string>";
    }
}

std::string UsageWord(const ParameterSpec& parameter) {
    std::string word = OptionName(parameter);
    if (parameter.GetType() != CallSpec::ParameterTypeFlag) {
        word.append("=").append(ValueWord(parameter.GetType()));
    }
    if (parameter.IsRequired()) {
        return word;
    }
    word = "[" + word + "]";
    if (parameter.GetType() == CallSpec::ParameterTypeStringList) {
        word.append("...");
    }
    return word;
}

std::string Synopsis(const ParameterSpec& parameter) {
    std::string text = parameter.GetShortName().empty() ? std::string("    ")
                                                        : "-" + parameter.GetShortName() + ", ";
    text.append(OptionName(parameter));
    if (parameter.GetType() != CallSpec::ParameterTypeFlag) {
        text.append("=").append(ValueWord(parameter.GetType()));
    }
    return text;
}

std::string Qualities(const ParameterSpec& parameter) {
    std::string text = parameter.IsRequired() ? "required" : "optional";
    if (parameter.GetType() == CallSpec::ParameterTypeFlag) {
        text.append(", a flag without value");
    } else if (parameter.GetType() == CallSpec::ParameterTypeStringList) {
        text.append(", repeatable");
    }
    return text;
}

std::string FieldNames(const CppTools::MetaObj::MetaStruct& structure) {
    std::string text;
    for (const auto& field : structure.GetFields()) {
        text.append(text.empty() ? "" : ", ").append(field.Name());
    }
    return text;
}

void Replace(std::string& text, std::string_view placeholder, const std::string& replacement) {
    for (size_t at = text.find(placeholder); at != std::string::npos;
         at = text.find(placeholder, at + replacement.size())) {
        text.replace(at, placeholder.size(), replacement);
    }
}

std::string ChoiceLines(const CallSpec::ParameterConstraint& constraint) {
    std::string lines;
    auto add = [&lines](std::string_view value, std::string_view description) {
        lines.append("\n").append(kChoiceMark).append(value);
        if (!description.empty()) {
            lines.append(": ").append(description);
        }
    };
    switch (constraint.GetType()) {
        case CallSpec::ConstraintStringEnum:
            for (const auto& choice : constraint.GetStringEnum()) {
                add(choice.value, choice.description);
            }
            break;
        case CallSpec::ConstraintIntEnum:
            for (long value : constraint.GetIntEnum()) {
                add(std::to_string(value), {});
            }
            break;
        default:
            add(AllowedValues(constraint), {});
    }
    return lines;
}

// Puts the value lines in place of each %FULLENUM%, on lines of their own.
void ExpandFullEnum(std::string& text, const std::string& lines) {
    constexpr std::string_view kPlaceholder = "%FULLENUM%";
    for (size_t at = text.find(kPlaceholder); at != std::string::npos;
         at = text.find(kPlaceholder, at)) {
        size_t before = text.find_last_not_of(' ', at == 0 ? 0 : at - 1);
        size_t start = before == std::string::npos || at == 0 ? 0 : before + 1;
        size_t end = text.find_first_not_of(' ', at + kPlaceholder.size());
        std::string replacement = lines;
        if (end != std::string::npos) {
            replacement.push_back('\n');
        } else {
            end = text.size();
        }
        text.replace(start, end - start, replacement);
        at = start + replacement.size();
    }
}

}  // namespace

std::string OutputSummary(CommandSpec& command) {
    auto spec = command.GetOutputSpec();
    const MetaValue* root = spec ? spec->GetRootObject().get() : nullptr;
    if (root == nullptr) {
        return "none declared.";
    }
    switch (root->GetType()) {
        case CppTools::MetaObj::MetaTypeBool:
            return "nothing when the command succeeds; the exit status tells.";
        case CppTools::MetaObj::MetaTypeInt:
            return "an integer.";
        case CppTools::MetaObj::MetaTypeString:
            return "a string.";
        case CppTools::MetaObj::MetaTypeStruct: {
            const auto& structure = static_cast<const MetaStruct&>(*root);
            return "a \"" + structure.GetName() + "\" with the fields " + FieldNames(structure) +
                   ".";
        }
        case CppTools::MetaObj::MetaTypeList: {
            const MetaStruct* shape = ShapeOf(static_cast<const MetaList&>(*root));
            if (shape == nullptr) {
                return "a list of strings.";
            }
            return "a list of \"" + shape->GetName() + "\", each with the fields " +
                   FieldNames(*shape) + ".";
        }
    }
    return {};
}

std::string ExpandDescription(const ParameterSpec& parameter) {
    std::string text = parameter.GetDescription();
    const auto& constraint = parameter.GetConstraint();
    Replace(text, "%ENUM%", constraint ? AllowedValues(*constraint) : std::string());
    ExpandFullEnum(text, constraint ? ChoiceLines(*constraint) : std::string());
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

std::string NamespaceHelp(const NamespaceNode& node, size_t width) {
    std::string out;
    const std::string path = node.GetPathString(' ');
    std::vector<Entry> namespaces;
    std::vector<Entry> commands;
    for (const auto& child : node.GetNamespaceNodes()) {
        auto& entries =
            child->GetType() == CppTools::AutoCli::NodeTypeCommand ? commands : namespaces;
        entries.push_back({child->GetName(), child->GetDescription()});
    }
    if (path.empty()) {
        out.append("Usage: autocli [options] <namespace> ... <command> [parameters]\n\n");
        AppendEntries("Options",
                      {{"--host=sim|linux",
                        "Act on the simulated host (sim, the default, its state in HOSTSIM_DIR) "
                        "or on this machine's kernel (linux), in the network namespace autocli "
                        "runs in; AUTOCLI_HOST chooses when this is not given."},
                       {"--formatter=NAME",
                        "Print the result with the formatter NAME instead of the command's "
                        "default."},
                       {"--plugin-dir=DIR",
                        "Load the plug-ins (lib*.so) from DIR instead of AUTOCLI_PLUGIN_DIR or "
                        "the plug-in directory of the installation."},
                       {"--help", "Show help for the namespace or command named."},
                       {"--version", "Show the version of autocli."}},
                      width, out);
        out.push_back('\n');
        std::vector<Entry> formatters;
        for (const Formatter& formatter : AllFormatters()) {
            formatters.push_back({std::string(formatter.name), std::string(formatter.description)});
        }
        AppendEntries("Formatters", formatters, width, out);
        out.push_back('\n');
    } else {
        std::string target = namespaces.empty() ? "<command>" : "<namespace|command>";
        out.append("Usage: autocli [options] ")
            .append(path)
            .append(" ")
            .append(target)
            .append(" [parameters]\n\n");
        AppendWrapped(node.GetDescription(), 0, width, out);
        out.push_back('\n');
    }
    AppendEntries("Available Namespaces", namespaces, width, out);
    if (!namespaces.empty() && !commands.empty()) {
        out.push_back('\n');
    }
    AppendEntries("Available Commands", commands, width, out);
    out.append("\nRun 'autocli ")
        .append(path)
        .append(path.empty() ? "" : " ")
        .append("<name> --help' for help on one of them.\n");
    return out;
}

std::string CommandHelp(CommandSpec& command, size_t width) {
    std::string out;
    auto spec = command.GetInputSpec();
    std::vector<std::shared_ptr<ParameterSpec>> parameters;
    if (spec) {
        parameters = spec->GetParameters();
    }
    std::vector<std::string> words;
    words.push_back(command.GetPathString(' '));
    for (const auto& parameter : parameters) {
        words.push_back(UsageWord(*parameter));
    }
    AppendUsage("Usage: autocli [options]", words, width, out);
    out.push_back('\n');
    AppendWrapped(command.GetDescription(), 0, width, out);
    out.push_back('\n');
    if (parameters.empty()) {
        out.append("This command takes no parameters.\n");
    } else {
        out.append("Parameters:\n");
        size_t synopsisWidth = 0;
        for (const auto& parameter : parameters) {
            synopsisWidth = std::max(synopsisWidth, DisplayWidth(Synopsis(*parameter)));
        }
        bool anyBool = false;
        for (const auto& parameter : parameters) {
            std::string synopsis = Synopsis(*parameter);
            out.append("  ")
                .append(synopsis)
                .append(synopsisWidth + 3 - DisplayWidth(synopsis), ' ')
                .append(Qualities(*parameter))
                .push_back('\n');
            AppendWrapped(ExpandDescription(*parameter), kDescriptionIndent, width, out);
            anyBool = anyBool || parameter->GetType() == CallSpec::ParameterTypeBool;
        }
        if (anyBool) {
            out.append("\nA <bool> is true/false, yes/no or 1/0, in any case.\n");
        }
    }
    out.push_back('\n');
    AppendWrapped("Output: " + OutputSummary(command), 0, width, out);
    if (!command.GetDefaultOutputFormatter().empty()) {
        out.append("Default formatter: ")
            .append(command.GetDefaultOutputFormatter())
            .append("; --formatter chooses another.\n");
    }
    return out;
}

}  // namespace CommandHost
