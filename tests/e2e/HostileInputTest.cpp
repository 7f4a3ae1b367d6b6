// Hostile conditions around the real binaries: a reader that went away, signals during a batch,
// a state folder others could write or plant links in, an audit log that can't be written, and
// files that are folders, endless or too large.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "support/ChildProcess.h"
#include "support/CommandTest.h"

namespace {

using ::testing::HasSubstr;
using Testing::RunAutocli;
using Testing::RunHostsim;
using Testing::RunProgram;

// autocli or hostsim started beside the test on the state folder given.
class Process : public Testing::ChildProcess {
public:
    Process(const std::vector<std::string>& arguments, const std::string& state,
            bool readerGone = false)
        : ChildProcess((UseState(state), arguments), readerGone) {}

private:
    static int UseState(const std::string& state) {
        setenv("HOSTSIM_DIR", state.c_str(), 1);
        setenv("AUTOCLI_PLUGIN_DIR", PLUGIN_DIRECTORY, 1);
        return 0;
    }
};

std::string AdminStatus(const std::string& state, const std::string& nic) {
    auto result = RunAutocli({"--formatter=json", "network", "nic", "list"}, state);
    for (const auto& row : nlohmann::json::parse(result.out)) {
        if (row["Name"] == nic) {
            return row["Admin Status"];
        }
    }
    return "";
}

const struct {
    int number;
    const char* name;
} kStopSignals[] = {{SIGINT, "SIGINT"}, {SIGTERM, "SIGTERM"}, {SIGHUP, "SIGHUP"}};

TEST(HostileInputEndToEnd, AReaderThatWentAwayIsReportedWithStatusFour) {
    Testing::TemporaryDirectory state;
    const struct {
        std::vector<std::string> arguments;
        const char* message;
    } cases[] = {
        {{AUTOCLI_BINARY, "network", "nic", "list"},
         "Unable to write to standard output: Broken pipe\n"},
        {{AUTOCLI_BINARY, "--formatter=json", "network", "vswitch", "standard", "list"},
         "Unable to write to standard output: Broken pipe\n"},
        {{AUTOCLI_BINARY, "network", "--help"},
         "Unable to write to standard output: Broken pipe\n"},
        {{HOSTSIM_BINARY, "export"}, "hostsim: unable to write to standard output: Broken pipe\n"},
        {{HOSTSIM_BINARY, "--help"}, "hostsim: unable to write to standard output: Broken pipe\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.back());
        Process program(c.arguments, state.Path(), true);
        EXPECT_EQ(program.Wait(), 4);
        EXPECT_EQ(program.Errors(), c.message);
    }
}

TEST(HostileInputEndToEnd, ABatchStopsOnASignalWhileItWaitsForALine) {
    for (const auto& stop : kStopSignals) {
        SCOPED_TRACE(stop.name);
        Testing::TemporaryDirectory state;
        Process batch({AUTOCLI_BINARY, "--batch", "-"}, state.Path());
        batch.Write("network nic down -n hwnic1\nnetwork nic list --formatter=csv\n");
        batch.ReadUntil("hwnic8");
        batch.Signal(stop.number);
        EXPECT_EQ(batch.Wait(), 128 + stop.number);
        EXPECT_EQ(batch.Errors(), std::string("autocli: stopped by ") + stop.name +
                                      " after line 2; the lines after it were not run.\n");
        EXPECT_EQ(AdminStatus(state.Path(), "hwnic1"), "Down");
    }
}

// The ticket counter of the store's write queue: it moves when a writer queues.
std::int64_t LastTicket(const std::string& state) {
    std::int64_t ticket = 0;
    const int file = open((state + "/host.db-lock").c_str(), O_RDONLY);
    if (file >= 0) {
        static_cast<void>(pread(file, &ticket, sizeof ticket, 0));
        close(file);
    }
    return ticket;
}

TEST(HostileInputEndToEnd, ABatchLetsTheLineInFlightFinishThenStops) {
    for (const auto& stop : kStopSignals) {
        SCOPED_TRACE(stop.name);
        Testing::TemporaryDirectory state;
        ASSERT_EQ(RunAutocli({"network", "nic", "up", "-n", "hwnic1"}, state.Path()).status, 0);
        const std::int64_t ticket = LastTicket(state.Path());
        // Another writer holds the store, so the batch's first change waits in flight.
        Testing::ChildProcess other({"sqlite3", "-batch", state.Path() + "/host.db"});
        other.Write("BEGIN IMMEDIATE;\nSELECT 'held';\n");
        other.ReadUntil("held");
        Process batch({AUTOCLI_BINARY, "--batch", "-"}, state.Path());
        batch.Write("network nic down -n hwnic1\nnetwork nic down -n hwnic2\n");
        for (int wait = 0; wait < 1000 && LastTicket(state.Path()) == ticket; ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_NE(LastTicket(state.Path()), ticket);
        batch.Signal(stop.number);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        other.Write("COMMIT;\n");
        other.CloseInput();
        EXPECT_EQ(other.Wait(), 0) << other.Errors();
        EXPECT_EQ(batch.Wait(), 128 + stop.number);
        EXPECT_EQ(batch.Errors(), std::string("autocli: stopped by ") + stop.name +
                                      " after line 1; the lines after it were not run.\n");
        EXPECT_EQ(AdminStatus(state.Path(), "hwnic1"), "Down");
        EXPECT_EQ(AdminStatus(state.Path(), "hwnic2"), "Up");
    }
}

mode_t Mode(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST(HostileInputEndToEnd, TheStateFolderIsMadePrivateWhateverTheUmask) {
    Testing::TemporaryDirectory top;
    const std::string state = top.Path() + "/xdg/hostsim";
    auto result = RunProgram(
        "/bin/sh", {"-c", "umask 000; exec " AUTOCLI_BINARY " network nic down -n hwnic1"}, state,
        {{"AUTOCLI_PLUGIN_DIR", PLUGIN_DIRECTORY}});
    EXPECT_EQ(result.status, 0) << result.err;
    for (const std::string& folder : {top.Path() + "/xdg", state}) {
        EXPECT_EQ(Mode(folder), 0700u) << folder;
    }
    for (const char* file : {"/host.db-lock", "/audit.log"}) {
        if (std::filesystem::exists(state + file)) {
            EXPECT_EQ(Mode(state + file), 0600u) << file;
        }
    }
}

TEST(HostileInputEndToEnd, AFolderOthersCanWriteIsRefusedForChanges) {
    for (mode_t mode : {0770, 0707, 01777}) {
        SCOPED_TRACE(mode);
        Testing::TemporaryDirectory state;
        ASSERT_EQ(RunAutocli({"network", "nic", "list"}, state.Path()).status, 0);
        chmod(state.Path().c_str(), mode);
        auto change = RunAutocli({"network", "nic", "down", "-n", "hwnic1"}, state.Path());
        EXPECT_EQ(change.status, 1);
        EXPECT_EQ(change.err, "The host can't be changed: its state directory " + state.Path() +
                                  " can be written by other users (make it private: chmod 700 " +
                                  state.Path() + ")\n");
        EXPECT_EQ(RunAutocli({"network", "nic", "list"}, state.Path()).status, 0);
        chmod(state.Path().c_str(), 0700);
        EXPECT_EQ(AdminStatus(state.Path(), "hwnic1"), "Up");
    }
}

TEST(HostileInputEndToEnd, NoFileOfTheStateIsOpenedThroughALink) {
    for (const char* file : {"host.db-lock", "audit.log", "host.db-wal", "host.db"}) {
        SCOPED_TRACE(file);
        Testing::TemporaryDirectory state;
        Testing::TemporaryDirectory elsewhere;
        ASSERT_EQ(RunAutocli({"network", "nic", "up", "-n", "hwnic1"}, state.Path()).status, 0);
        const std::string target = elsewhere.Path() + "/target";
        std::ofstream(target) << "the link's target\n";
        const std::string link = state.Path() + "/" + file;
        std::filesystem::remove(link);
        std::filesystem::create_symlink(target, link);
        auto change =
            RunAutocli({"network", "firewall", "set", "--enabled", "false"}, state.Path());
        EXPECT_THAT(change.err, HasSubstr(link));
        std::ifstream read(target);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(read), {}), "the link's target\n");
        EXPECT_TRUE(std::filesystem::is_symlink(link));
    }
}

TEST(HostileInputEndToEnd, AnAuditRecordThatCantBeWrittenLeavesTheChangeAndSaysSo) {
    Testing::TemporaryDirectory state;
    ASSERT_EQ(RunAutocli({"network", "nic", "list"}, state.Path()).status, 0);
    std::filesystem::create_directory(state.Path() + "/audit.log");
    auto change = RunAutocli({"network", "firewall", "set", "--enabled", "false"}, state.Path());
    EXPECT_EQ(change.status, 0);
    EXPECT_EQ(change.err,
              "autocli: the audit record of network.fw.disable could not be written "
              "to " +
                  state.Path() + "/audit.log: Is a directory\n");
    auto get = RunAutocli({"--formatter=json", "network", "firewall", "get"}, state.Path());
    EXPECT_EQ(nlohmann::json::parse(get.out)["Enabled"], false);
}

TEST(HostileInputEndToEnd, HostileFilesAreRefusedWithAMessage) {
    Testing::TemporaryDirectory state;
    Testing::TemporaryDirectory files;
    const std::string folder = files.Path();
    const std::string deep = files.Path() + "/deep.json";
    std::ofstream(deep) << std::string(20000, '[') << std::string(20000, ']');
    const std::string huge = files.Path() + "/huge";
    std::ofstream(huge).close();
    std::filesystem::resize_file(huge, (1LL << 30) + 1);
    const std::string longLine = files.Path() + "/long";
    std::ofstream(longLine) << "network nic list\n" << std::string((1 << 20) + 1, 'a') << "\n";
    const std::string marked = files.Path() + "/marked";
    std::ofstream(marked) << "\xEF\xBB\xBFnetwork nic down -n hwnic1\n";
    const struct {
        const char* program;
        std::vector<std::string> arguments;
        int status;
        std::string err;
    } cases[] = {
        {HOSTSIM_BINARY,
         {"import", folder},
         1,
         "hostsim: The profile " + folder + " is a folder, not a file\n"},
        {HOSTSIM_BINARY,
         {"init", "--profile=" + folder},
         1,
         "hostsim: The profile " + folder + " is a folder, not a file\n"},
        {HOSTSIM_BINARY,
         {"import", deep},
         1,
         "hostsim: The profile " + deep +
             " nests its values more than 16 deep, deeper than any section of a profile\n"},
        {HOSTSIM_BINARY,
         {"import", huge},
         1,
         "hostsim: The profile " + huge +
             " holds more than 268435456 bytes, the most a profile may hold\n"},
        {HOSTSIM_BINARY,
         {"import", "/dev/zero"},
         1,
         "hostsim: The profile /dev/zero holds more than 268435456 bytes, the most a profile "
         "may hold\n"},
        {AUTOCLI_BINARY,
         {"--batch", folder},
         2,
         "autocli: the batch file " + folder + " is a folder, not a file\n"},
        {AUTOCLI_BINARY,
         {"--batch", huge},
         2,
         "autocli: the batch file " + huge +
             " holds 1073741825 bytes, more than the 1073741824 a batch may hold\n"},
        {AUTOCLI_BINARY,
         {"--batch", longLine, "--formatter=json"},
         2,
         "autocli: line 2 of the batch is longer than 1048576 bytes; it was not run.\n"
         "autocli: line 2 of the batch failed (exit status 2); the lines after it were not "
         "run.\n"},
        {AUTOCLI_BINARY,
         {"--batch", "/dev/zero"},
         2,
         "autocli: line 1 of the batch is longer than 1048576 bytes; it was not run.\n"
         "autocli: line 1 of the batch failed (exit status 2); the lines after it were not "
         "run.\n"},
        {AUTOCLI_BINARY, {"--batch", marked}, 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.back());
        auto result = RunProgram(c.program, c.arguments, state.Path(),
                                 {{"AUTOCLI_PLUGIN_DIR", PLUGIN_DIRECTORY}});
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.err, c.err);
    }
    EXPECT_EQ(AdminStatus(state.Path(), "hwnic1"), "Down");
}

}  // namespace
