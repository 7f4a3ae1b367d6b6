// Many autocli processes changing three families of the host at once lose nothing: port groups,
// routes and hosts entries, each process a batch of its own.
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "support/CommandTest.h"

namespace {

constexpr int kProcesses = 32;
constexpr int kChanges = 50;

// The change number `change` of process `process`, in one of three families by process.
std::string Change(int process, int change) {
    const std::string tag = std::to_string(process) + "x" + std::to_string(change);
    switch (process % 3) {
        case 0:
            return "network vswitch standard portgroup add -p Load" + tag + " -v lanswitch0";
        case 1:
            return "network ip route ipv4 add -n 198.18." + std::to_string(process) + "." +
                   std::to_string(change) + "/32 -g 192.0.2.1";
        default:
            return "network ip hosts add -I 2001:db8:ff::" + std::to_string(process) + ":" +
                   std::to_string(change) + " -H load" + tag + ".example.com";
    }
}

// The rows of a csv listing whose first column starts with `prefix`.
int RowsStartingWith(const std::string& state, const std::vector<std::string>& words,
                     const std::string& prefix) {
    std::vector<std::string> arguments{"--formatter=csv", "network"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    auto result = Testing::RunAutocli(arguments, state);
    EXPECT_EQ(result.status, 0) << result.err;
    std::istringstream rows(result.out);
    int count = 0;
    for (std::string row; std::getline(rows, row);) {
        count += row.starts_with(prefix) ? 1 : 0;
    }
    return count;
}

TEST(AutocliConcurrency, ThirtyTwoWritersOverThreeFamiliesLoseNothing) {
    Testing::TemporaryDirectory state;
    // The first use makes the default host; the writers then all change one existing store.
    ASSERT_EQ(Testing::RunAutocli({"network", "nic", "list"}, state.Path()).status, 0);
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        const std::string batch = state.Path() + "/batch" + std::to_string(process);
        {
            std::ofstream lines(batch);
            for (int change = 0; change < kChanges; ++change) {
                lines << Change(process, change) << "\n";
            }
        }
        const pid_t child = fork();
        if (child == 0) {
            setenv("HOSTSIM_DIR", state.Path().c_str(), 1);
            execl(AUTOCLI_BINARY, AUTOCLI_BINARY, "--batch", batch.c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
    }
    const int perFamily = kChanges * (kProcesses / 3);
    EXPECT_EQ(RowsStartingWith(state.Path(), {"vswitch", "standard", "portgroup", "list"}, "Load"),
              perFamily + kChanges);
    EXPECT_EQ(RowsStartingWith(state.Path(), {"ip", "route", "ipv4", "list"}, "198.18."),
              perFamily + kChanges);
    EXPECT_EQ(RowsStartingWith(state.Path(), {"ip", "hosts", "list"}, "2001:db8:ff::"), perFamily);
}

}  // namespace
