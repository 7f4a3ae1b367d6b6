// The command tree as the generated completion scripts and manual pages describe it: every
// namespace and command in registration order, and each command's parameters with what their
// values may be.
#pragma once

#include <string>
#include <vector>

#include "cpptools/AutoCli.h"

namespace Generate {

// What a parameter's value may be, for completion.
enum class ValueKind {
    None,    // a flag: no value follows it
    Text,    // any text or number; nothing to offer
    Choice,  // one of `choices`: the values of an enumeration, or of a bool
    Object,  // the name of one of the host's objects, asked of autocli
};

struct Choice {
    std::string value;
    std::string description;  // may be empty
};

struct Parameter {
    std::string name;       // "nic-name"
    std::string shortName;  // "n", or empty
    std::string valueWord;  // "string", "int", "bool"; empty for a flag
    ValueKind kind = ValueKind::Text;
    std::vector<Choice> choices;
    std::string description;  // with %ENUM% and %FULLENUM% expanded
    bool required = false;
    bool repeatable = false;
};

struct Node {
    std::string path;  // "network nic down"; empty for the root
    std::string name;
    std::string description;
    bool isCommand = false;
    std::vector<std::string> children;  // names, in registration order
    std::vector<Parameter> parameters;  // of a command
    std::string output;                 // of a command: what it outputs, in a sentence
};

// The nodes of the tree under `root`, the root first, each namespace before its children.
std::vector<Node> WalkTree(CppTools::AutoCli::NamespaceNode& root);

// The first line of `text`, for a one-line description.
std::string FirstLine(const std::string& text);

// A boolean parameter's values as completion offers them.
extern const std::vector<Choice> kBoolChoices;

}  // namespace Generate
