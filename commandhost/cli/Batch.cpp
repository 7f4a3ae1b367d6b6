#include "commandhost/cli/Batch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "commandhost/cli/CommandLine.h"

namespace CommandHost {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr size_t kReadBytes = 64 * 1024;

// The signals that stop a batch, held and read from here; -1 until StopBatchOnSignals.
int stopSignals = -1;

const char* SignalName(int signal) {
    switch (signal) {
        case SIGINT:
            return "SIGINT";
        case SIGTERM:
            return "SIGTERM";
        default:
            return "SIGHUP";
    }
}

// A stop signal that has come, else 0; never waits.
int TakeStopSignal() {
    signalfd_siginfo info{};
    if (stopSignals < 0 ||
        read(stopSignals, &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
        return 0;
    }
    return static_cast<int>(info.ssi_signo);
}

// The lines of a file descriptor, each at most kMaximumBatchLineBytes: of a longer line no more
// than that is ever held. While it waits for input a stop signal ends the reading.
class LineReader {
public:
    enum class Status { Line, TooLong, End, Failed, Stopped };

    explicit LineReader(int descriptor) : descriptor_(descriptor) {}

    Status Next(std::string& line) {
        for (;;) {
            const size_t newline = buffer_.find('\n', scanned_);
            const size_t end = newline == std::string::npos ? buffer_.size() : newline;
            if (!skipping_ && end - start_ > kMaximumBatchLineBytes) {
                skipping_ = true;
                Drop(newline);
                return Status::TooLong;
            }
            if (newline != std::string::npos) {
                const bool skipped = skipping_;
                if (!skipped) {
                    line.assign(buffer_, start_, newline - start_);
                }
                Drop(newline);
                if (!skipped) {
                    return Status::Line;
                }
                continue;
            }
            scanned_ = buffer_.size();
            if (atEnd_) {
                if (skipping_ || start_ == buffer_.size()) {
                    return Status::End;
                }
                line.assign(buffer_, start_);
                start_ = scanned_ = buffer_.size();
                return Status::Line;
            }
            buffer_.erase(0, skipping_ ? buffer_.size() : start_);
            start_ = 0;
            scanned_ = buffer_.size();
            if (const Status status = Fill(); status != Status::Line) {
                return status;
            }
        }
    }

    int Error() const { return error_; }
    int Signal() const { return signal_; }

private:
    // Drops what is read up to the line feed at `newline`, or all when there is none; a line
    // being skipped ends at its line feed.
    void Drop(size_t newline) {
        if (newline == std::string::npos) {
            buffer_.clear();
            start_ = scanned_ = 0;
            return;
        }
        skipping_ = false;
        start_ = scanned_ = newline + 1;
    }

    // Reads what is there, waiting for it: Line when something was read or the end reached.
    Status Fill() {
        pollfd ready[2] = {{descriptor_, POLLIN, 0}, {stopSignals, POLLIN, 0}};
        for (;;) {
            if (poll(ready, stopSignals < 0 ? 1 : 2, -1) < 0 && errno != EINTR) {
                error_ = errno;
                return Status::Failed;
            }
            if ((signal_ = TakeStopSignal()) != 0) {
                return Status::Stopped;
            }
            if (ready[0].revents == 0) {
                continue;
            }
            const size_t had = buffer_.size();
            buffer_.resize(had + kReadBytes);
            const ssize_t count = read(descriptor_, buffer_.data() + had, kReadBytes);
            buffer_.resize(had + static_cast<size_t>(std::max<ssize_t>(count, 0)));
            if (count > 0) {
                return Status::Line;
            }
            if (count == 0) {
                atEnd_ = true;
                return Status::Line;
            }
            if (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK) {
                error_ = errno;
                return Status::Failed;
            }
        }
    }

    int descriptor_;
    std::string buffer_;
    size_t start_ = 0;    // where the line being read starts
    size_t scanned_ = 0;  // how far the buffer is known to hold no line feed
    bool skipping_ = false;
    bool atEnd_ = false;
    int error_ = 0;
    int signal_ = 0;
};

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

void StopBatchOnSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    if (stopSignals < 0 && sigprocmask(SIG_BLOCK, &signals, nullptr) == 0) {
        stopSignals = signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
    }
}

int CommandHost::RunBatch(int descriptor, const BatchOptions& options, OutputChannel& out,
                          OutputChannel& err) {
    inBatch_ = true;
    int firstFailure = ExitOk;
    size_t firstFailingLine = 0;
    size_t failures = 0;
    int stopSignal = 0;
    size_t number = 0;
    LineReader reader(descriptor);
    std::string line;
    for (;;) {
        const LineReader::Status read = reader.Next(line);
        if (read == LineReader::Status::End) {
            break;
        }
        if (read == LineReader::Status::Stopped) {
            stopSignal = reader.Signal();
            break;
        }
        if (read == LineReader::Status::Failed) {
            err.Write("autocli: the batch could not be read to its end: " +
                      std::string(std::strerror(reader.Error())) + ".\n");
            if (failures++ == 0) {
                firstFailure = ExitRefused;
                firstFailingLine = number + 1;
            }
            break;
        }
        ++number;
        if (number == 1 && line.starts_with(kByteOrderMark)) {
            line.erase(0, kByteOrderMark.size());
        }
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        int status = ExitOk;
        if (read == LineReader::Status::TooLong) {
            err.Write("autocli: line " + std::to_string(number) + " of the batch is longer than " +
                      std::to_string(kMaximumBatchLineBytes) + " bytes; it was not run.\n");
            status = ExitRefused;
        } else if (!IsSkipped(line)) {
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
        }
        if ((stopSignal = TakeStopSignal()) != 0) {
            break;
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
    inBatch_ = false;
    if (stopSignal != 0) {
        err.Write(number == 0 ? "autocli: stopped by " + std::string(SignalName(stopSignal)) +
                                    " before the first line; no line of the batch was run.\n"
                              : "autocli: stopped by " + std::string(SignalName(stopSignal)) +
                                    " after line " + std::to_string(number) +
                                    "; the lines after it were not run.\n");
        return 128 + stopSignal;
    }
    if (options.force && failures > 0) {
        err.Write("autocli: " + std::to_string(failures) + (failures == 1 ? " line" : " lines") +
                  " of the batch failed; the first was line " + std::to_string(firstFailingLine) +
                  " (exit status " + std::to_string(firstFailure) + ").\n");
    }
    return firstFailure;
}

int CommandHost::RunBatchFile(const std::string& path, const BatchOptions& options,
                              OutputChannel& out, OutputChannel& err) {
    const bool standardInput = path == "-";
    const int descriptor =
        standardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) {
        err.Write("autocli: can't read the batch file " + path + ": " + std::strerror(errno) +
                  "\n");
        return ExitRefused;
    }
    struct stat file {};
    std::string refusal;
    if (fstat(descriptor, &file) != 0) {
        refusal = "can't read the batch file " + path + ": " + std::strerror(errno);
    } else if (S_ISDIR(file.st_mode)) {
        refusal = "the batch file " + path + " is a folder, not a file";
    } else if (S_ISREG(file.st_mode) && file.st_size > kMaximumBatchFileBytes) {
        refusal = "the batch file " + path + " holds " + std::to_string(file.st_size) +
                  " bytes, more than the " + std::to_string(kMaximumBatchFileBytes) +
                  " a batch may hold";
    }
    int status = ExitRefused;
    if (refusal.empty()) {
        status = RunBatch(descriptor, options, out, err);
    } else {
        err.Write("autocli: " + refusal + "\n");
    }
    if (!standardInput) {
        close(descriptor);
    }
    return status;
}

}  // namespace CommandHost
