// The bash completion script: the tree as associative arrays, put into the template that
// walks them.
#include "commandhost/cli/Formatters.h"
#include "commandhost/generate/Generators.h"

namespace Generate {

namespace {

// The key of a node in the script's tables: the words that lead to it.
std::string Key(const std::string& path) {
    return path.empty() ? "autocli" : "autocli " + path;
}

// The words of a bash completion list: compgen splits it at blanks and expands it, so a value
// holding anything else than these characters could not be offered as it is.
bool IsPlainWord(std::string_view value) {
    return !value.empty() && value.find_first_not_of(
                                 "abcdefghijklmnopqrstuvwxyz"
                                 "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                 "0123456789._,:/+-") == std::string_view::npos;
}

std::string ValuesOf(const Parameter& parameter) {
    switch (parameter.kind) {
        case ValueKind::None:
            return "@flag";
        case ValueKind::Object:
            return "@object";
        case ValueKind::Text:
            return "@text";
        case ValueKind::Choice:
            break;
    }
    std::string words;
    for (const Choice& choice : parameter.choices) {
        if (!IsPlainWord(choice.value)) {
            return "@text";
        }
        words.append(words.empty() ? "" : " ").append(choice.value);
    }
    return words;
}

void AppendEntry(std::string& out, const std::string& key, const std::string& value) {
    out.append("    [").append(SingleQuoted(key)).append("]=").append(SingleQuoted(value));
    out.push_back('\n');
}

}  // namespace

std::string BashCompletion(const std::vector<Node>& tree, std::string_view templateText) {
    std::string children = "declare -gA _autocli_children=(\n";
    std::string options = "declare -gA _autocli_options=(\n";
    std::string values = "declare -gA _autocli_values=(\n";
    std::string longNames = "declare -gA _autocli_long=(\n";
    for (const Node& node : tree) {
        if (!node.isCommand) {
            std::string names;
            for (const std::string& child : node.children) {
                names.append(names.empty() ? "" : " ").append(child);
            }
            AppendEntry(children, Key(node.path), names);
            continue;
        }
        std::string longWords;
        std::string shortWords;
        for (const Parameter& parameter : node.parameters) {
            const std::string option = "--" + parameter.name;
            longWords.append(longWords.empty() ? "" : " ").append(option);
            AppendEntry(values, Key(node.path) + " " + option, ValuesOf(parameter));
            if (!parameter.shortName.empty()) {
                shortWords.append(" -").append(parameter.shortName);
                AppendEntry(longNames, Key(node.path) + " -" + parameter.shortName, option);
            }
        }
        AppendEntry(options, Key(node.path), longWords + shortWords);
    }
    std::string formatters;
    for (const std::string& name : CommandHost::FormatterNames()) {
        formatters.append(formatters.empty() ? "" : " ").append(name);
    }
    return FillTemplate(
        templateText,
        {{"GENERATED",
          "Generated from autocli's command tree by autocli-generate; made from "
          "commandhost/generate/autocli.bash.in."},
         {"DATA", children + ")\n" + options + ")\n" + values + ")\n" + longNames + ")"},
         {"FORMATTERS", SingleQuoted(formatters)}});
}

}  // namespace Generate
