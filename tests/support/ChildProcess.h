// A program running beside a test: its standard input and output on pipes the test holds, its
// standard error in a file. For what a test must do while another process is in the middle of
// something: hold the store's lock, be killed inside a write, be signalled during a batch.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/CommandTest.h"

namespace Testing {

class ChildProcess {
public:
    // Starts `arguments` (the program first, looked up on PATH when it has no slash) with the
    // test's environment. With `readerGone`, standard output is a pipe whose reader closed before
    // the start.
    explicit ChildProcess(const std::vector<std::string>& arguments, bool readerGone = false);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void Write(const std::string& text);
    // Ends standard input.
    void CloseInput();
    // Reads standard output into `out` until it holds `text`.
    void ReadUntil(const std::string& text);
    // Reads standard output into `out` until it ends.
    void ReadAll();
    void Signal(int signal);
    // Waits for the end; the exit status, or 128 + the signal that ended it.
    int Wait();
    std::string Errors() const;

    std::string out;

private:
    TemporaryDirectory errors_;
    std::string errorPath_;
    pid_t pid_ = 0;
    int in_ = -1;
    int out_ = -1;
};

// Runs SQL on the database at `path` with the sqlite3 program, as another program would, so that
// no second copy of SQLite is loaded beside the host library's. Returns what it printed, in the
// program's output `mode` ("-list", "-json", ...); fails the test when the program fails.
std::string RunSql(const std::string& path, const std::string& sql,
                   const std::string& mode = "-list");

}  // namespace Testing
