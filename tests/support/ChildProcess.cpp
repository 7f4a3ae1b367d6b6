#include "support/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

extern char** environ;

namespace Testing {

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, bool readerGone) {
    int input[2];
    int output[2];
    EXPECT_EQ(pipe2(input, O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(output, O_CLOEXEC), 0);
    if (readerGone) {
        close(output[0]);
        output[0] = -1;
    }
    errorPath_ = errors_.Path() + "/stderr";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errorPath_.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    EXPECT_EQ(posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ), 0)
        << arguments.front();
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    in_ = input[1];
    out_ = output[0];
}

ChildProcess::~ChildProcess() {
    CloseInput();
    close(out_);
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

void ChildProcess::Write(const std::string& text) {
    ASSERT_EQ(write(in_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void ChildProcess::CloseInput() {
    if (in_ >= 0) {
        close(in_);
        in_ = -1;
    }
}

void ChildProcess::ReadUntil(const std::string& text) {
    char buffer[4096];
    while (out.find(text) == std::string::npos) {
        const ssize_t count = read(out_, buffer, sizeof buffer);
        ASSERT_GT(count, 0) << "the output ended before " << text << "; errors: " << Errors();
        out.append(buffer, static_cast<std::size_t>(count));
    }
}

void ChildProcess::ReadAll() {
    char buffer[4096];
    for (ssize_t count; (count = read(out_, buffer, sizeof buffer)) > 0;) {
        out.append(buffer, static_cast<std::size_t>(count));
    }
}

void ChildProcess::Signal(int signal) {
    kill(pid_, signal);
}

int ChildProcess::Wait() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ChildProcess::Errors() const {
    std::ifstream file(errorPath_);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string RunSql(const std::string& path, const std::string& sql, const std::string& mode) {
    ChildProcess sqlite({"sqlite3", "-batch", "-bail", mode, path});
    sqlite.Write(sql + ";\n");
    sqlite.CloseInput();
    sqlite.ReadAll();
    const int status = sqlite.Wait();
    EXPECT_EQ(status, 0) << sql << ": " << sqlite.Errors();
    return sqlite.out;
}

}  // namespace Testing
