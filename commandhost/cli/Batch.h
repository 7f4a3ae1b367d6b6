// Batch mode: many command lines run in one process, for agents and scripts that make hundreds
// of changes.
#pragma once

#include <cstddef>
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

// The most bytes a line of a batch may hold, its line feed not counted: a longer line is refused,
// and the reader never holds more than this of it.
inline constexpr std::size_t kMaximumBatchLineBytes = std::size_t{1} << 20;
// The largest batch file taken whole; a pipe is read as it comes, line by line.
inline constexpr long long kMaximumBatchFileBytes = 1LL << 30;

// From now on SIGINT, SIGTERM and SIGHUP stop a batch between two lines instead of ending the
// process: they are held while a line runs, and the batch stops once its outcome is reported,
// or while it waits for the next line. For autocli in batch mode; the process keeps them
// held until it ends.
void StopBatchOnSignals();

// What `autocli --batch` was given besides the file.
struct BatchOptions {
    bool force = false;     // go on after a failing line
    std::string formatter;  // --formatter for every line that names none of its own
};

}  // namespace CommandHost
