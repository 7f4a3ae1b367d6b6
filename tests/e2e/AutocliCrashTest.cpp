// autocli killed with SIGKILL in the middle of a burst of changes: the store stays whole, the
// host answers, and every change that was acknowledged is there, in order, with at most the one
// in flight besides.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>
#include <sstream>

#include "support/ChildProcess.h"
#include "support/CommandTest.h"

namespace {

using Testing::RunAutocli;

class AutocliCrash : public ::testing::Test {
protected:
    // Runs `autocli --formatter=json --batch FILE`, which prints "true" after each change it has
    // committed, reads `acknowledged` of those lines, kills it, and returns how many it had
    // printed in all.
    int KillAfter(const std::string& batch, int acknowledged) {
        int out[2];
        EXPECT_EQ(pipe(out), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(out[1], STDOUT_FILENO);
            close(out[0]);
            close(out[1]);
            setenv("HOSTSIM_DIR", state_.Path().c_str(), 1);
            execl(AUTOCLI_BINARY, AUTOCLI_BINARY, "--formatter=json", "--batch", batch.c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        close(out[1]);
        int lines = 0;
        char c;
        while (read(out[0], &c, 1) == 1) {
            if (c == '\n' && ++lines == acknowledged) {
                kill(child, SIGKILL);
            }
        }
        close(out[0]);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the batch ended before it was killed";
        return lines;
    }

    std::string IntegrityCheck() {
        return Testing::RunSql(state_.Path() + "/host.db", "PRAGMA integrity_check");
    }

    // How many port groups named prefix0, prefix1, ... there are, checking they have no gap.
    int PortGroupsCalled(const std::string& prefix) {
        auto result =
            RunAutocli({"--formatter=csv", "network", "vswitch", "standard", "portgroup", "list"},
                       state_.Path());
        EXPECT_EQ(result.status, 0) << result.err;
        std::set<int> numbers;
        std::istringstream rows(result.out);
        for (std::string row; std::getline(rows, row);) {
            if (row.starts_with(prefix)) {
                numbers.insert(std::stoi(row.substr(prefix.size())));
            }
        }
        const int count = static_cast<int>(numbers.size());
        EXPECT_TRUE(numbers.empty() || *numbers.rbegin() == count - 1) << "a change is missing";
        return count;
    }

    Testing::TemporaryDirectory state_;
};

TEST_F(AutocliCrash, AKilledWriterLeavesAWholeStoreWithEveryAcknowledgedChange) {
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::string prefix = "Crash" + std::to_string(round) + "x";
        const std::string batch = state_.Path() + "/batch";
        {
            std::ofstream lines(batch);
            for (int i = 0; i < 200; ++i) {
                lines << "network vswitch standard portgroup add -p " << prefix << i
                      << " -v lanswitch0\n";
            }
        }
        const int acknowledged = KillAfter(batch, 3 + round * 5);
        EXPECT_EQ(IntegrityCheck(), "ok\n");
        const int present = PortGroupsCalled(prefix);
        EXPECT_GE(present, acknowledged);
        EXPECT_LE(present, acknowledged + 1);
    }
}

}  // namespace
