// Batch mode: many command lines run in one process, for agents and scripts that make hundreds
// of changes.
#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "commandhost/cli/CommandHost.h"

namespace CommandHost {

// Splits a line into words as a POSIX shell does, and nothing more: blanks separate words; a
// backslash keeps the next character; single quotes keep everything up to the next one; double
// quotes keep everything but a backslash before $ ` " or \. Nothing is expanded. Throws
// CommandLineError for an unterminated quote or a backslash that ends the line.
std::vector<std::string> SplitWords(std::string_view line);

// What `autocli --batch` was given besides the file.
struct BatchOptions {
    bool force = false;     // go on after a failing line
    std::string formatter;  // --formatter for every line that names none of its own
};

}  // namespace CommandHost
