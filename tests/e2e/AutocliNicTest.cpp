// The real autocli binary on the NIC commands: stdout, stderr and exit status.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <future>

#include "support/CommandTest.h"

namespace {

using json = nlohmann::ordered_json;
using Testing::ProcessResult;
using Testing::RunAutocli;

class AutocliNic : public ::testing::Test {
protected:
    ProcessResult Autocli(const std::vector<std::string>& arguments,
                          const std::map<std::string, std::string>& environment = {}) {
        return RunAutocli(arguments, state_.Path(), environment);
    }

    json NicListJson() {
        auto result = Autocli({"--formatter=json", "network", "nic", "list"});
        EXPECT_EQ(result.status, 0) << result.err;
        return json::parse(result.out);
    }

    static std::vector<std::string> Lines(const std::string& text) {
        std::vector<std::string> lines;
        std::size_t start = 0;
        while (start < text.size()) {
            auto end = text.find('\n', start);
            if (end == std::string::npos) {
                end = text.size();
            }
            lines.push_back(text.substr(start, end - start));
            start = end + 1;
        }
        return lines;
    }

    Testing::TemporaryDirectory state_;
};

// autocli carries the C++ runtime the plug-in uses: with every symbol bound at load, a missing
// one would refuse to load the plug-in.
TEST_F(AutocliNic, ThePlugInFindsEverySymbolItNeeds) {
    auto result = Autocli({"network", "nic", "list"}, {{"LD_BIND_NOW", "1"}});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

// The build names each library by its place beside the executable, with no search path: a copy of
// bin/ and plugins/ elsewhere runs on its own libraries and plug-in, not on the build's.
TEST_F(AutocliNic, ACopyOfTheBuildRunsOnItsOwnLibrariesAndPlugIn) {
    namespace fs = std::filesystem;
    Testing::TemporaryDirectory copy;
    const fs::path built = fs::path(AUTOCLI_BINARY).parent_path();
    const fs::path bin = fs::path(copy.Path()) / "bin";
    const fs::path plugins = fs::path(copy.Path()) / "plugins";
    fs::create_directories(bin);
    fs::create_directories(plugins);
    for (const char* name : {"autocli", "libcpptools.so", "libkelmctl.so"}) {
        fs::copy_file(built / name, bin / name);
    }
    fs::copy_file(fs::path(PLUGIN_DIRECTORY) / "libnetwork.so", plugins / "libnetwork.so");

    auto result =
        Testing::RunProgram((bin / "autocli").string(), {"network", "nic", "list"}, state_.Path(),
                            {{"AUTOCLI_PLUGIN_DIR", ""}, {"LD_DEBUG", "libs"}});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("hwnic0"), std::string::npos);
    // The loader reports each library it starts, by the path it opened.
    for (const char* name : {"libcpptools.so", "libkelmctl.so", "libnetwork.so"}) {
        const std::string init = "calling init: ";
        bool found = false;
        for (auto at = result.err.find(init); at != std::string::npos;
             at = result.err.find(init, at + 1)) {
            const std::string path =
                result.err.substr(at + init.size(), result.err.find('\n', at) - at - init.size());
            if (path.ends_with(std::string("/") + name)) {
                EXPECT_TRUE(path.starts_with(copy.Path())) << path;
                found = true;
            }
        }
        EXPECT_TRUE(found) << name << " was not started:\n" << result.err;
    }
}

TEST_F(AutocliNic, ListShowsTheDefaultColumnsInATable) {
    auto result = Autocli({"network", "nic", "list"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    auto lines = Lines(result.out);
    ASSERT_GE(lines.size(), 3u);
    const std::string& header = lines[0];
    std::size_t position = 0;
    for (const char* column : {"Name", "PCI Device", "Driver", "Admin Status", "Link Status",
                               "Speed", "Duplex", "MAC Address", "MTU", "Description"}) {
        auto found = header.find(column, position);
        ASSERT_NE(found, std::string::npos) << column << " in " << header;
        position = found;
    }
    EXPECT_EQ(header.find("DPU Id"), std::string::npos);
    EXPECT_NE(result.out.find("hwnic0"), std::string::npos);
}

TEST_F(AutocliNic, JsonGivesAllTwelveFieldsInDeclaredOrder) {
    auto nics = NicListJson();
    ASSERT_TRUE(nics.is_array());
    ASSERT_FALSE(nics.empty());
    const std::vector<std::string> expected{"Name",         "PCI Device",  "Driver",      "Link",
                                            "Admin Status", "Link Status", "Speed",       "Duplex",
                                            "MAC Address",  "MTU",         "Description", "DPU Id"};
    for (const auto& nic : nics) {
        std::vector<std::string> keys;
        for (auto it = nic.begin(); it != nic.end(); ++it) {
            keys.push_back(it.key());
        }
        EXPECT_EQ(keys, expected);
        EXPECT_TRUE(nic["Speed"].is_number_integer());
        EXPECT_TRUE(nic["MTU"].is_number_integer());
    }
}

TEST_F(AutocliNic, DownAndUpShowInLaterProcesses) {
    auto down = Autocli({"network", "nic", "down", "-n", "hwnic1"});
    EXPECT_EQ(down.status, 0) << down.err;
    EXPECT_EQ(down.out, "");
    EXPECT_EQ(down.err, "");
    auto find = [](const json& nics, const std::string& name) {
        for (const auto& nic : nics) {
            if (nic["Name"] == name) {
                return nic;
            }
        }
        return json();
    };
    EXPECT_EQ(find(NicListJson(), "hwnic1")["Admin Status"], "Down");

    auto up = Autocli({"network", "nic", "up", "--nic-name=hwnic1"});
    EXPECT_EQ(up.status, 0) << up.err;
    EXPECT_EQ(find(NicListJson(), "hwnic1")["Admin Status"], "Up");
}

TEST_F(AutocliNic, UnknownNicIsAnErrorOnStderr) {
    auto result = Autocli({"network", "nic", "up", "-n", "nosuch"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "There is no pnic with name nosuch\n");
}

TEST_F(AutocliNic, InjectedFaultFailsTheListingWithItsMessage) {
    auto result = Autocli({"network", "nic", "list"},
                          {{"HOSTSIM_FAULTS", "NetworkInfo::GetPnics=driver reset"}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Unable to list NICs.  Error was driver reset\n");

    auto named = Autocli({"network", "nic", "down", "-n", "hwnic1"},
                         {{"HOSTSIM_FAULTS", "Pnic::SetLinkState@hwnic1=Device busy"}});
    EXPECT_EQ(named.status, 1);
    EXPECT_EQ(named.err, "Device busy\n");
    auto other = Autocli({"network", "nic", "down", "-n", "hwnic0"},
                         {{"HOSTSIM_FAULTS", "Pnic::SetLinkState@hwnic1=Device busy"}});
    EXPECT_EQ(other.status, 0) << other.err;
}

TEST_F(AutocliNic, HelpDescribesNamespacesAndCommands) {
    auto network = Autocli({"network", "--help"});
    EXPECT_EQ(network.status, 0);
    EXPECT_NE(network.out.find("nic"), std::string::npos);
    EXPECT_NE(network.out.find("Operations having to do with the configuration of Network"),
              std::string::npos);
    auto nic = Autocli({"network", "nic", "--help"});
    EXPECT_EQ(nic.status, 0);
    EXPECT_NE(nic.out.find("Bring up the specified network device."), std::string::npos);
    auto get = Autocli({"network", "nic", "get", "--help"});
    EXPECT_EQ(get.status, 0);
    EXPECT_NE(get.out.find("Get the generic configuration of a network device"), std::string::npos);
    EXPECT_NE(get.out.find("--nic-name"), std::string::npos);
    EXPECT_NE(get.out.find("-n"), std::string::npos);
}

TEST_F(AutocliNic, BadCommandLinesAreRefusedWithOneLine) {
    const std::vector<std::vector<std::string>> refused{
        {"network", "nic", "up"},                        // required parameter missing
        {"network", "nic", "up", "-n"},                  // value missing
        {"network", "nic", "up", "-n", "a", "-n", "b"},  // given twice
        {"network", "nic", "up", "--nic-nme=hwnic0"},    // misspelt parameter
        {"network", "nic", "lst"},                       // misspelt command
        {"network", "nic", "list", "--bogus"},           // unknown parameter
    };
    for (const auto& line : refused) {
        auto result = Autocli(line);
        std::string joined;
        for (const auto& word : line) {
            joined += word + " ";
        }
        SCOPED_TRACE(joined);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        ASSERT_FALSE(result.err.empty());
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    }
    auto misspelt = Autocli({"network", "nic", "up", "--nic-nme=hwnic0"});
    EXPECT_NE(misspelt.err.find("nic-name"), std::string::npos) << misspelt.err;
    auto command = Autocli({"network", "nic", "lst"});
    EXPECT_NE(command.err.find("list"), std::string::npos) << command.err;
}

TEST_F(AutocliNic, ConcurrentProcessesLoseNoChange) {
    auto nics = NicListJson();
    std::vector<std::string> names;
    for (const auto& nic : nics) {
        names.push_back(nic["Name"]);
    }
    ASSERT_GE(names.size(), 4u);
    for (const char* verb : {"down", "up"}) {
        std::vector<std::future<ProcessResult>> runs;
        for (int round = 0; round < 2; ++round) {
            for (const auto& name : names) {
                runs.push_back(std::async(std::launch::async, [this, verb, name] {
                    return Autocli({"network", "nic", verb, "-n", name});
                }));
            }
        }
        for (auto& run : runs) {
            auto result = run.get();
            EXPECT_EQ(result.status, 0) << result.err;
        }
        const std::string expected = std::string(verb) == "down" ? "Down" : "Up";
        for (const auto& nic : NicListJson()) {
            EXPECT_EQ(nic["Admin Status"], expected) << nic["Name"];
        }
    }
}

}  // namespace

namespace {

class AutocliStateFile : public AutocliNic {
protected:
    std::string DatabasePath() const { return state_.Path() + "/host.db"; }

    void WriteDatabase(const std::string& bytes) {
        FILE* file = fopen(DatabasePath().c_str(), "wb");
        ASSERT_NE(file, nullptr);
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
    }

    std::string ReadDatabase() const {
        std::string bytes;
        FILE* file = fopen(DatabasePath().c_str(), "rb");
        if (file != nullptr) {
            char buffer[4096];
            std::size_t count;
            while ((count = fread(buffer, 1, sizeof(buffer), file)) > 0) {
                bytes.append(buffer, count);
            }
            fclose(file);
        }
        return bytes;
    }

    // Both a command that guards its host calls and one that does not fail cleanly, name the
    // file, and leave it as it was.
    void ExpectRefusedAndUntouched(const std::string& why) {
        const std::string before = ReadDatabase();
        auto up = Autocli({"network", "nic", "up", "-n", "hwnic0"});
        EXPECT_EQ(up.status, 1);
        EXPECT_NE(up.err.find(DatabasePath()), std::string::npos) << up.err;
        EXPECT_NE(up.err.find(why), std::string::npos) << up.err;
        auto list = Autocli({"network", "nic", "list"});
        EXPECT_EQ(list.status, 3);
        EXPECT_EQ(list.out, "");
        EXPECT_NE(list.err.find(DatabasePath()), std::string::npos) << list.err;
        EXPECT_EQ(ReadDatabase(), before);
    }
};

// A change is checkpointed when its process ends, so the log is empty for the next one; a
// process that only read leaves the files as they were.
TEST_F(AutocliStateFile, ProcessesLeaveAnEmptyLogAndReadsChangeNothing) {
    const std::string log = DatabasePath() + "-wal";
    ASSERT_EQ(Autocli({"network", "nic", "down", "-n", "hwnic1"}).status, 0);
    ASSERT_TRUE(std::filesystem::exists(log));
    EXPECT_EQ(std::filesystem::file_size(log), 0u);
    const std::string before = ReadDatabase();
    for (int run = 0; run < 3; ++run) {
        ASSERT_EQ(Autocli({"network", "nic", "list"}).status, 0);
    }
    EXPECT_EQ(std::filesystem::file_size(log), 0u);
    EXPECT_EQ(ReadDatabase(), before);
    auto list = NicListJson();
    auto down = std::find_if(list.begin(), list.end(),
                             [](const json& row) { return row["Name"] == "hwnic1"; });
    ASSERT_NE(down, list.end());
    EXPECT_EQ((*down)["Admin Status"], "Down");
}

TEST_F(AutocliStateFile, CorruptDatabaseIsAClearErrorAndIsKept) {
    WriteDatabase(std::string(4096, '\x5a'));
    ExpectRefusedAndUntouched("not a database");
}

TEST_F(AutocliStateFile, ForeignSqliteDatabaseIsAClearErrorAndIsKept) {
    auto made = Autocli({"network", "nic", "list"});
    ASSERT_EQ(made.status, 0);
    // Another program's database in the same place: same format, none of our tables.
    std::filesystem::remove(DatabasePath());
    std::filesystem::remove(DatabasePath() + "-wal");
    std::filesystem::remove(DatabasePath() + "-shm");
    const std::string command = "sqlite3 '" + DatabasePath() +
                                "' 'CREATE TABLE recipes (name TEXT); PRAGMA user_version = 7;'";
    if (std::system(command.c_str()) != 0) {
        GTEST_SKIP() << "the sqlite3 shell is not installed";
    }
    auto up = Autocli({"network", "nic", "up", "-n", "hwnic0"});
    EXPECT_EQ(up.status, 1);
    EXPECT_NE(up.err.find(DatabasePath()), std::string::npos) << up.err;
    EXPECT_NE(ReadDatabase().find("recipes"), std::string::npos);
}

}  // namespace
