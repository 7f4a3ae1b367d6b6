// The files made from the command tree at build time: completion scripts for bash and zsh, and
// the manual pages. Each function gives the whole text of its file.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "commandhost/generate/CommandTree.h"

namespace Generate {

// What every generated file is stamped with, and its manual pages' header.
struct Release {
    std::string version;  // "1.0.0"
    std::string date;     // "2024-05-01"
};

// `text` with each "@KEY@" of `values` replaced by its value. Throws std::runtime_error for a
// key the text lacks, or a "@WORD@" left that no value names.
std::string FillTemplate(std::string_view text,
                         const std::vector<std::pair<std::string, std::string>>& values);

// A shell word that stands for `text` as it is: 'text', with each ' written '\''.
std::string SingleQuoted(std::string_view text);

// The completion scripts: the template with the tree's data put in.
std::string BashCompletion(const std::vector<Node>& tree, std::string_view templateText);
std::string ZshCompletion(const std::vector<Node>& tree, std::string_view templateText);

// autocli(1): the template's text with the formatters and the top namespaces put in.
std::string ProgramManual(const std::vector<Node>& tree, std::string_view templateText,
                          const Release& release);
// autocli-NAME(7): every namespace and command under the top namespace NAME.
std::string NamespaceManual(const std::vector<Node>& tree, const std::string& name,
                            const Release& release);

}  // namespace Generate
