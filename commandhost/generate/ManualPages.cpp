// The manual pages, in man(7) markup: autocli(1) from its template, and a page for each top
// namespace with every namespace and command under it.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <stdexcept>

#include "commandhost/cli/Formatters.h"
#include "commandhost/generate/Generators.h"

namespace Generate {

namespace {

// `text` as roff input text: a backslash is written \e, a hyphen \- (so that an option can be
// copied from the page), and a character beyond ASCII by its code point.
std::string Escape(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte == '\\') {
            out.append("\\e");
        } else if (byte == '-') {
            out.append("\\-");
        } else if (byte < 0x80) {
            out.push_back(static_cast<char>(byte));
        } else {
            const int length = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : byte >= 0xc0 ? 2 : 1;
            unsigned long point = length == 1 ? 0xfffd : byte & (0x7f >> length);
            for (int k = 1; k < length && i + 1 < text.size(); ++k) {
                point = (point << 6) | (static_cast<unsigned char>(text[++i]) & 0x3f);
            }
            char code[16];
            std::snprintf(code, sizeof code, "\\[u%04lX]", point);
            out.append(code);
        }
    }
    return out;
}

// A line of roff text, already escaped, broken at blanks into lines of at most 80 bytes where
// its words allow; a line that would start with a control character is kept as text.
void AppendTextLine(std::string_view line, std::string& out) {
    constexpr size_t kLongestLine = 80;
    while (!line.empty()) {
        size_t end = line.size();
        if (end > kLongestLine) {
            end = line.rfind(' ', kLongestLine);
            if (end == std::string_view::npos || end == 0) {
                end = std::min(line.find(' '), line.size());
            }
        }
        if (line.front() == '.' || line.front() == '\'') {
            out.append("\\&");
        }
        out.append(line.substr(0, end)).push_back('\n');
        line.remove_prefix(end);
        while (!line.empty() && line.front() == ' ') {
            line.remove_prefix(1);
        }
    }
}

// Running text: each line escaped, with no blank line (which roff would take for a break).
// A line that starts with blanks is a value's line of a parameter description, "  value: what
// it means", and goes on a line of its own.
void AppendText(std::string_view text, std::string& out) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        while (!line.empty() && line.back() == ' ') {
            line.remove_suffix(1);
        }
        const size_t start = line.find_first_not_of(' ');
        if (start == std::string_view::npos) {
            continue;
        }
        if (start == 0) {
            AppendTextLine(Escape(line), out);
            continue;
        }
        line.remove_prefix(start);
        const size_t colon = line.find(": ");
        std::string value = "\\fB" + Escape(line.substr(0, colon)) + "\\fR";
        if (colon != std::string_view::npos) {
            value.append(Escape(line.substr(colon)));
        }
        out.append(".br\n");
        AppendTextLine(value, out);
    }
}

std::string Bold(std::string_view text) {
    return "\\fB" + Escape(text) + "\\fR";
}

std::string Italic(std::string_view text) {
    return "\\fI" + Escape(text) + "\\fR";
}

// A word of markup that is never hyphenated: a name, a path or an option.
std::string Unbroken(const std::string& word) {
    return "\\%" + word;
}

// "\fB--nic-name\fR=\fIstring\fR"
std::string OptionWithValue(const Parameter& parameter) {
    std::string text = Bold("--" + parameter.name);
    if (!parameter.valueWord.empty()) {
        text.append("=").append(Italic(parameter.valueWord));
    }
    return text;
}

std::string Header(const std::string& title, int section, const Release& release) {
    return ".\\\" Generated from autocli's command tree by autocli-generate.\n.TH " +
           Escape(title) + " " + std::to_string(section) + " " + release.date + " \"autocli " +
           release.version + "\" \"autocli manual\"\n";
}

void AppendCommand(const Node& command, std::string& out) {
    out.append(".SS \"").append(Escape(command.path)).append("\"\n");
    AppendText(command.description, out);
    std::string synopsis = Unbroken(Bold(command.path));
    for (const Parameter& parameter : command.parameters) {
        std::string word = OptionWithValue(parameter);
        if (!parameter.required) {
            word = "[" + word + "]" + (parameter.repeatable ? "..." : "");
        }
        synopsis.append(" ").append(Unbroken(word));
    }
    out.append(".SY autocli\n");
    AppendTextLine(synopsis, out);
    out.append(".YS\n");
    for (const Parameter& parameter : command.parameters) {
        out.append(".TP\n");
        if (!parameter.shortName.empty()) {
            out.append(Unbroken(Bold("-" + parameter.shortName))).append(", ");
        }
        out.append(Unbroken(OptionWithValue(parameter))).push_back('\n');
        std::string qualities = parameter.required ? "Required" : "Optional";
        if (parameter.kind == ValueKind::None) {
            qualities.append(", a flag");
        } else if (parameter.repeatable) {
            qualities.append(", may be repeated");
        }
        out.append(qualities).append(".\n");
        AppendText(parameter.description, out);
    }
    out.append(".PP\n");
    AppendText("Output: " + command.output, out);
}

}  // namespace

std::string ProgramManual(const std::vector<Node>& tree, std::string_view templateText,
                          const Release& release) {
    std::string namespaces;
    std::string seeAlso;
    for (const std::string& name : tree.front().children) {
        const Node* top = nullptr;
        for (const Node& node : tree) {
            if (node.path == name) {
                top = &node;
            }
        }
        namespaces.append(".TP\n").append(Bold(name)).push_back('\n');
        if (top != nullptr) {
            AppendText(FirstLine(top->description), namespaces);
        }
        namespaces.append("Its commands: ")
            .append(Unbroken(Bold("autocli-" + name)))
            .append("(7).\n");
        seeAlso.append(".BR autocli\\-").append(Escape(name)).append(" (7),\n");
    }
    if (namespaces.empty()) {
        throw std::runtime_error("no plug-in registered a namespace");
    }
    std::string formatters;
    for (const CommandHost::Formatter& formatter : CommandHost::AllFormatters()) {
        formatters.append(".TP\n").append(Bold(formatter.name)).push_back('\n');
        AppendText(formatter.description, formatters);
    }
    seeAlso.append(".BR bash (1),\n.BR zsh (1)");
    return FillTemplate(templateText, {{"GENERATED",
                                        "Generated from autocli's command tree by "
                                        "autocli-generate; made from "
                                        "commandhost/generate/autocli.1.in."},
                                       {"DATE", release.date},
                                       {"VERSION", release.version},
                                       {"NAMESPACES", namespaces},
                                       {"FORMATTERS", formatters},
                                       {"SEE_ALSO", seeAlso}});
}

std::string NamespaceManual(const std::vector<Node>& tree, const std::string& name,
                            const Release& release) {
    const Node* top = nullptr;
    for (const Node& node : tree) {
        if (node.path == name && !node.isCommand) {
            top = &node;
        }
    }
    if (top == nullptr) {
        throw std::runtime_error("no plug-in registered the namespace '" + name + "'");
    }
    const std::string prefix = name + " ";
    std::string title = "AUTOCLI-" + name;
    std::transform(title.begin(), title.end(), title.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::string out = Header(title, 7, release);
    out.append(".SH NAME\nautocli\\-").append(Escape(name));
    out.append(" \\- the commands of the ").append(Escape(name)).append(" namespace of autocli\n");
    out.append(".SH DESCRIPTION\n");
    AppendText(top->description, out);
    out.append(".PP\nA command is run as\n.B autocli\n.RI [ options ]\n")
        .append(Bold(name))
        .append(" \\fI...\\fR \\fIcommand\\fR [\\fIparameters\\fR];\nsee\n")
        .append(".BR autocli (1)\n")
        .append("for the options, the formatters and the exit statuses.\n");
    out.append(".SH NAMESPACES\n");
    for (const Node& node : tree) {
        if (!node.isCommand && node.path.starts_with(prefix)) {
            out.append(".TP\n").append(Bold(node.path)).push_back('\n');
            AppendText(node.description, out);
        }
    }
    out.append(".SH COMMANDS\n");
    for (const Node& node : tree) {
        if (node.isCommand && node.path.starts_with(prefix)) {
            AppendCommand(node, out);
        }
    }
    out.append(".SH SEE ALSO\n.BR autocli (1)\n");
    return out;
}

}  // namespace Generate
