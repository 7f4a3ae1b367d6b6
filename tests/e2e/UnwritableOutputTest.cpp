// Output that can't be written, from the real binaries: a full disk is reported on stderr with
// status 4, never taken for success.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/CommandTest.h"

namespace {

// Runs `command` (a program and its arguments) with stdout on /dev/full, a device where every
// write fails with "No space left on device".
Testing::ProcessResult RunIntoFullDevice(const std::string& command, const std::string& state) {
    return Testing::RunProgram("/bin/sh", {"-c", "exec " + command + " >/dev/full"}, state,
                               {{"AUTOCLI_PLUGIN_DIR", PLUGIN_DIRECTORY}});
}

TEST(UnwritableOutput, IsReportedWithStatusFour) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no /dev/full on this machine";
    }
    Testing::TemporaryDirectory state;
    const std::string autocli = AUTOCLI_BINARY;
    const std::string hostsim = HOSTSIM_BINARY;
    const std::vector<std::pair<std::string, std::string>> cases{
        {autocli + " network nic list",
         "Unable to write to standard output: No space left on device\n"},
        {autocli + " --formatter=json network nic get -n hwnic0",
         "Unable to write to standard output: No space left on device\n"},
        {autocli + " network nic --help",
         "Unable to write to standard output: No space left on device\n"},
        {autocli + " --version", "Unable to write to standard output: No space left on device\n"},
        {hostsim + " export",
         "hostsim: unable to write to standard output: No space left on device\n"},
        {hostsim + " --help",
         "hostsim: unable to write to standard output: No space left on device\n"},
    };
    for (const auto& [command, message] : cases) {
        auto result = RunIntoFullDevice(command, state.Path());
        EXPECT_EQ(result.status, 4) << command;
        EXPECT_EQ(result.err, message) << command;
    }
    // A change that printed nothing has nothing to lose.
    auto down = RunIntoFullDevice(autocli + " network nic down -n hwnic1", state.Path());
    EXPECT_EQ(down.status, 0) << down.err;
}

}  // namespace
