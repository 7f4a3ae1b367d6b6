// The completion scripts of bash and zsh: the tree as the same associative arrays in both, keyed
// by the words that lead to a node, put into each shell's template that walks them. The shells
// differ only in how an array is written and whether a name carries its description.
#include "commandhost/cli/Formatters.h"
#include "commandhost/generate/Generators.h"

namespace Generate {

namespace {

// How one shell writes the tables.
struct Dialect {
    const char* declare;  // the command that makes a global associative array
    // One key and its value, as a line of the array's definition.
    std::string (*entry)(const std::string& key, const std::string& value);
    // A name offered with its description: what one item of a list holds.
    std::string (*item)(const std::string& name, const std::string& description);
    const char* separator;  // between the items of a list
    // The values of a parameter with choices when one of them can't be offered as it is.
    bool (*offerable)(std::string_view value);
    bool namesTable;  // a table of each namespace's children's bare names, beside the items
    const char* templateFile;
};

std::string Key(const std::string& path) {
    return path.empty() ? "autocli" : "autocli " + path;
}

void Append(std::string& list, const std::string& item, const char* separator) {
    list.append(list.empty() ? "" : separator).append(item);
}

// bash: compgen splits a list at blanks and expands it, so a value holding anything else than
// these characters could not be offered as it is.
bool IsPlainWord(std::string_view value) {
    return !value.empty() && value.find_first_not_of(
                                 "abcdefghijklmnopqrstuvwxyz"
                                 "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                 "0123456789._,:/+-") == std::string_view::npos;
}

constexpr size_t kLongestDescription = 72;

// A description for a zsh completion list: its first sentence on one line, not too long.
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

// "name:description" for zsh's _describe, with the colons of the name escaped.
std::string DescribedItem(const std::string& name, const std::string& description) {
    std::string item;
    for (char c : name) {
        if (c == ':' || c == '\\') {
            item.push_back('\\');
        }
        item.push_back(c);
    }
    const std::string brief = Brief(description);
    return brief.empty() ? item : item + ":" + brief;
}

constexpr Dialect kBash = {
    .declare = "declare -gA",
    .entry =
        [](const std::string& key, const std::string& value) {
            return "    [" + SingleQuoted(key) + "]=" + SingleQuoted(value) + "\n";
        },
    .item = [](const std::string& name, const std::string&) { return name; },
    .separator = " ",
    .offerable = IsPlainWord,
    .namesTable = false,
    .templateFile = "autocli.bash.in",
};

constexpr Dialect kZsh = {
    .declare = "typeset -gA",
    .entry =
        [](const std::string& key, const std::string& value) {
            return "    " + SingleQuoted(key) + " " + SingleQuoted(value) + "\n";
        },
    .item = DescribedItem,
    .separator = "\n",
    .offerable = [](std::string_view) { return true; },
    .namesTable = true,
    .templateFile = "autocli.zsh.in",
};

std::string ValuesOf(const Parameter& parameter, const Dialect& dialect) {
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
    std::string list;
    for (const Choice& choice : parameter.choices) {
        if (!dialect.offerable(choice.value)) {
            return "@text";
        }
        Append(list, dialect.item(choice.value, choice.description), dialect.separator);
    }
    return list;
}

const Node* Find(const std::vector<Node>& tree, const std::string& path) {
    for (const Node& node : tree) {
        if (node.path == path) {
            return &node;
        }
    }
    return nullptr;
}

std::string Completion(const std::vector<Node>& tree, std::string_view templateText,
                       const Dialect& dialect) {
    std::string names;
    std::string children;
    std::string options;
    std::string values;
    std::string longNames;
    for (const Node& node : tree) {
        if (!node.isCommand) {
            std::string words;
            std::string items;
            for (const std::string& child : node.children) {
                Append(words, child, " ");
                const Node* entry = Find(tree, node.path.empty() ? child : node.path + " " + child);
                Append(items, dialect.item(child, entry ? entry->description : std::string()),
                       dialect.separator);
            }
            names.append(dialect.entry(Key(node.path), words));
            children.append(dialect.entry(Key(node.path), items));
            continue;
        }
        // Long names first, then the short ones.
        std::string longItems;
        std::string shortItems;
        for (const Parameter& parameter : node.parameters) {
            const std::string option = "--" + parameter.name;
            Append(longItems, dialect.item(option, parameter.description), dialect.separator);
            values.append(
                dialect.entry(Key(node.path) + " " + option, ValuesOf(parameter, dialect)));
            if (!parameter.shortName.empty()) {
                const std::string shortOption = "-" + parameter.shortName;
                Append(shortItems, dialect.item(shortOption, parameter.description),
                       dialect.separator);
                longNames.append(dialect.entry(Key(node.path) + " " + shortOption, option));
            }
        }
        if (!shortItems.empty()) {
            Append(longItems, shortItems, dialect.separator);
        }
        options.append(dialect.entry(Key(node.path), longItems));
    }
    const auto table = [&dialect](const char* name, const std::string& entries) {
        return std::string(dialect.declare) + " " + name + "=(\n" + entries + ")";
    };
    std::string data;
    if (dialect.namesTable) {
        data = table("_autocli_names", names) + "\n";
    }
    data += table("_autocli_children", children) + "\n" + table("_autocli_options", options) +
            "\n" + table("_autocli_values", values) + "\n" + table("_autocli_long", longNames);
    std::string formatters;
    for (const CommandHost::Formatter& formatter : CommandHost::AllFormatters()) {
        Append(formatters,
               dialect.item(std::string(formatter.name), std::string(formatter.description)),
               dialect.separator);
    }
    return FillTemplate(
        templateText,
        {{"GENERATED", std::string("Generated from autocli's command tree by autocli-generate; "
                                   "made from commandhost/generate/") +
                           dialect.templateFile + "."},
         {"DATA", data},
         {"FORMATTERS", SingleQuoted(formatters)}});
}

}  // namespace

std::string BashCompletion(const std::vector<Node>& tree, std::string_view templateText) {
    return Completion(tree, templateText, kBash);
}

std::string ZshCompletion(const std::vector<Node>& tree, std::string_view templateText) {
    return Completion(tree, templateText, kZsh);
}

}  // namespace Generate
