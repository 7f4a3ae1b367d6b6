#include "commandhost/cli/Batch.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "commandhost/cli/CommandLine.h"

namespace CommandHost {

namespace {

constexpr std::string_view kBlanks = " \t";

bool IsSkipped(std::string_view line) {
    const size_t first = line.find_first_not_of(kBlanks);
    return first == std::string_view::npos || line[first] == '#';
}

bool NamesFormatter(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (word == "--formatter" || word.starts_with("--formatter=")) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<std::string> SplitWords(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (kBlanks.find(c) != std::string_view::npos) {
            if (inWord) {
                words.push_back(std::move(word));
                word.clear();
                inWord = false;
            }
            continue;
        }
        inWord = true;
        if (c == '\\') {
            if (++i == line.size()) {
                throw CommandLineError("The line ends in a backslash.");
            }
            word.push_back(line[i]);
        } else if (c == '\'') {
            const size_t end = line.find('\'', i + 1);
            if (end == std::string_view::npos) {
                throw CommandLineError("The line has a single quote that is not closed.");
            }
            word.append(line.substr(i + 1, end - i - 1));
            i = end;
        } else if (c == '"') {
            for (++i;; ++i) {
                if (i == line.size()) {
                    throw CommandLineError("The line has a double quote that is not closed.");
                }
                if (line[i] == '"') {
                    break;
                }
                if (line[i] == '\\' && i + 1 < line.size() &&
                    std::string_view("$`\"\\").find(line[i + 1]) != std::string_view::npos) {
                    ++i;
                }
                word.push_back(line[i]);
            }
        } else {
            word.push_back(c);
        }
    }
    if (inWord) {
        words.push_back(std::move(word));
    }
    return words;
}

int CommandHost::RunBatch(std::istream& lines, const BatchOptions& options, OutputChannel& out,
                          OutputChannel& err) {
    inBatch_ = true;
    int firstFailure = ExitOk;
    size_t firstFailingLine = 0;
    size_t failures = 0;
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        if (IsSkipped(line)) {
            continue;
        }
        int status;
        try {
            std::vector<std::string> words = SplitWords(line);
            if (!options.formatter.empty() && !NamesFormatter(words)) {
                words.insert(words.begin(), "--formatter=" + options.formatter);
            }
            status = Main(words, out, err);
        } catch (const CommandLineError& e) {
            err.Write(std::string(e.what()) + "\n");
            status = ExitRefused;
        }
        if (status == ExitOk) {
            continue;
        }
        if (failures++ == 0) {
            firstFailure = status;
            firstFailingLine = number;
        }
        if (!options.force) {
            err.Write("autocli: line " + std::to_string(number) +
                      " of the batch failed (exit status " + std::to_string(status) +
                      "); the lines after it were not run.\n");
            break;
        }
    }
    if (lines.bad()) {
        err.Write("autocli: the batch could not be read to its end.\n");
        if (failures++ == 0) {
            firstFailure = ExitRefused;
        }
    }
    if (options.force && failures > 0) {
        err.Write("autocli: " + std::to_string(failures) + (failures == 1 ? " line" : " lines") +
                  " of the batch failed; the first was line " + std::to_string(firstFailingLine) +
                  " (exit status " + std::to_string(firstFailure) + ").\n");
    }
    inBatch_ = false;
    return firstFailure;
}

int CommandHost::RunBatchFile(const std::string& path, const BatchOptions& options,
                              OutputChannel& out, OutputChannel& err) {
    // Standard input through its file rather than std::cin: the standard streams' set-up, which
    // <iostream> runs at every start, costs a plain command a fiftieth of its time.
    std::ifstream file(path == "-" ? "/dev/stdin" : path);
    if (!file) {
        err.Write("autocli: can't read the batch file " + path + ": " + std::strerror(errno) +
                  "\n");
        return ExitRefused;
    }
    return RunBatch(file, options, out, err);
}

}  // namespace CommandHost
