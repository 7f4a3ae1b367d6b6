// The zsh completion script: the tree as associative arrays with a description for each name,
// put into the template that walks them.
#include "commandhost/cli/Formatters.h"
#include "commandhost/generate/Generators.h"

namespace Generate {

namespace {

// The key of a node in the script's tables: the words that lead to it.
std::string Key(const std::string& path) {
    return path.empty() ? "autocli" : "autocli " + path;
}

constexpr size_t kLongestDescription = 72;

// A description for a completion list: its first sentence on one line, not too long.
std::string Brief(const std::string& text) {
    std::string line = FirstLine(text);
    if (const size_t end = line.find(". "); end != std::string::npos) {
        line.erase(end);
    }
    while (!line.empty() && (line.back() == '.' || line.back() == ' ' || line.back() == ':')) {
        line.pop_back();
    }
    if (line.size() > kLongestDescription) {
        line = line.substr(0, line.rfind(' ', kLongestDescription - 3)) + "...";
    }
    return line;
}

// "name:description" for _describe, with the colons of the name escaped.
std::string Described(const std::string& name, const std::string& description) {
    std::string entry;
    for (char c : name) {
        if (c == ':' || c == '\\') {
            entry.push_back('\\');
        }
        entry.push_back(c);
    }
    const std::string brief = Brief(description);
    return brief.empty() ? entry : entry + ":" + brief;
}

void AppendLine(std::string& lines, const std::string& line) {
    lines.append(lines.empty() ? "" : "\n").append(line);
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
    std::string lines;
    for (const Choice& choice : parameter.choices) {
        AppendLine(lines, Described(choice.value, choice.description));
    }
    return lines;
}

void AppendEntry(std::string& out, const std::string& key, const std::string& value) {
    out.append("    ").append(SingleQuoted(key)).append(" ").append(SingleQuoted(value));
    out.push_back('\n');
}

}  // namespace

std::string ZshCompletion(const std::vector<Node>& tree, std::string_view templateText) {
    std::string names = "typeset -gA _autocli_names=(\n";
    std::string children = "typeset -gA _autocli_children=(\n";
    std::string options = "typeset -gA _autocli_options=(\n";
    std::string values = "typeset -gA _autocli_values=(\n";
    std::string longNames = "typeset -gA _autocli_long=(\n";
    const auto find = [&tree](const std::string& path) -> const Node* {
        for (const Node& node : tree) {
            if (node.path == path) {
                return &node;
            }
        }
        return nullptr;
    };
    for (const Node& node : tree) {
        if (!node.isCommand) {
            std::string words;
            std::string lines;
            for (const std::string& child : node.children) {
                words.append(words.empty() ? "" : " ").append(child);
                const Node* entry = find(node.path.empty() ? child : node.path + " " + child);
                AppendLine(lines, Described(child, entry ? entry->description : std::string()));
            }
            AppendEntry(names, Key(node.path), words);
            AppendEntry(children, Key(node.path), lines);
            continue;
        }
        std::string lines;
        for (const Parameter& parameter : node.parameters) {
            const std::string option = "--" + parameter.name;
            AppendLine(lines, Described(option, parameter.description));
            AppendEntry(values, Key(node.path) + " " + option, ValuesOf(parameter));
            if (!parameter.shortName.empty()) {
                const std::string shortOption = "-" + parameter.shortName;
                AppendLine(lines, Described(shortOption, parameter.description));
                AppendEntry(longNames, Key(node.path) + " " + shortOption, option);
            }
        }
        AppendEntry(options, Key(node.path), lines);
    }
    std::string formatters;
    for (const CommandHost::Formatter& formatter : CommandHost::AllFormatters()) {
        AppendLine(formatters,
                   Described(std::string(formatter.name), std::string(formatter.description)));
    }
    return FillTemplate(templateText,
                        {{"GENERATED",
                          "Generated from autocli's command tree by autocli-generate; made from "
                          "commandhost/generate/autocli.zsh.in."},
                         {"DATA", names + ")\n" + children + ")\n" + options + ")\n" + values +
                                      ")\n" + longNames + ")"},
                         {"FORMATTERS", SingleQuoted(formatters)}});
}

}  // namespace Generate
