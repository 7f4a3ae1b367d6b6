// Times whole processes against each other. The machine's speed drifts by a fifth within
// minutes, so the commands take turns run by run rather than each running a long series of its
// own: the drift then weighs on all of them alike, and their ratios hold still.
//
// Usage: bench_processes RUNS LABEL=COMMAND...
//   COMMAND is split at blanks; leading NAME=VALUE words set the environment of that command.
//   Prints each command's median wall time, its ratio to the first command's, and the 10th and
//   90th percentiles; stdout and stderr of the commands go to /dev/null.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

struct Command {
    std::string label;
    std::vector<std::string> words;        // the program and its arguments
    std::vector<std::string> environment;  // this process's, with the command's settings over it
    std::vector<double> milliseconds;
};

Command ParseCommand(const std::string& text) {
    Command command;
    const size_t equals = text.find('=');
    command.label = text.substr(0, equals);
    std::istringstream words(text.substr(equals + 1));
    for (std::string word; words >> word;) {
        command.words.push_back(word);
    }
    for (char** variable = environ; *variable != nullptr; ++variable) {
        command.environment.emplace_back(*variable);
    }
    while (!command.words.empty() && command.words.front().find('=') != std::string::npos &&
           command.words.front().front() != '/') {
        const std::string& setting = command.words.front();
        const std::string name = setting.substr(0, setting.find('=') + 1);
        std::erase_if(command.environment,
                      [&](const std::string& variable) { return variable.starts_with(name); });
        command.environment.push_back(setting);
        command.words.erase(command.words.begin());
    }
    return command;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& text : strings) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Runs the command once and returns its wall time in milliseconds.
double RunOnce(Command& command, const posix_spawn_file_actions_t& quiet) {
    std::vector<char*> arguments = Pointers(command.words);
    std::vector<char*> environment = Pointers(command.environment);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    if (posix_spawn(&child, arguments[0], &quiet, nullptr, arguments.data(), environment.data()) !=
        0) {
        std::perror(arguments[0]);
        std::exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const auto end = std::chrono::steady_clock::now();
    return std::chrono::duration<double, std::milli>(end - start).count();
}

double Percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(fraction * static_cast<double>(values.size() - 1))];
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: bench_processes RUNS LABEL=COMMAND...\n");
        return 2;
    }
    const int runs = std::atoi(argv[1]);
    const int warmup = std::max(runs / 20, 5);
    std::vector<Command> commands;
    for (int i = 2; i < argc; ++i) {
        commands.push_back(ParseCommand(argv[i]));
    }
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
    for (int run = -warmup; run < runs; ++run) {
        for (Command& command : commands) {
            const double time = RunOnce(command, quiet);
            if (run >= 0) {
                command.milliseconds.push_back(time);
            }
        }
    }
    const double floor = Percentile(commands.front().milliseconds, 0.5);
    std::printf("%-28s %10s %8s %18s\n", "command", "median", "ratio", "10th-90th pct");
    for (const Command& command : commands) {
        const double median = Percentile(command.milliseconds, 0.5);
        std::printf("%-28s %7.3f ms %7.2fx %8.3f-%.3f ms\n", command.label.c_str(), median,
                    median / floor, Percentile(command.milliseconds, 0.1),
                    Percentile(command.milliseconds, 0.9));
    }
}
