// The store: the default host on first use, refusing databases it can't use, migration, and
// several processes at once.
#include <csignal>

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <thread>

#include "HostSimTest.h"
#include "hostctl/HostCtlException.h"
#include "hostsim/core/Database.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/Store.h"
#include "hostsim/core/Subject.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PnicImpl.h"
#include "support/ChildProcess.h"

namespace HostSimTesting {
namespace {

using HostCtl::Lib::HostCtlException;
using ::testing::HasSubstr;
using Testing::RunSql;

const std::vector<std::string> kDefaultNics{"hwnic0", "hwnic1", "hwnic2", "hwnic3",
                                            "hwnic4", "hwnic5", "hwnic6", "hwnic7",
                                            "hwnic8", "hwnic9", "hwnic10"};

// One integer that `sql` gives from a database file, read from outside the host.
std::int64_t Integer(const std::string& path, const std::string& sql) {
    const std::string printed = RunSql(path, sql);
    return printed.empty() ? -1 : std::stoll(printed);
}

// The first column of every row `sql` gives, as text, read from outside the host.
std::vector<std::string> Texts(const std::string& path, const std::string& sql) {
    const auto rows = nlohmann::json::parse(RunSql(path, sql, "-json"), nullptr, false);
    std::vector<std::string> texts;
    for (const auto& row : rows.is_array() ? rows : nlohmann::json::array()) {
        texts.push_back(row.begin()->get<std::string>());
    }
    return texts;
}

// SQL with each run of blanks made one, none at the edges of parentheses, and no end mark.
std::string NormalSql(const std::string& sql) {
    std::string normal = std::regex_replace(sql, std::regex("\\s+"), " ");
    normal = std::regex_replace(normal, std::regex("\\( "), "(");
    normal = std::regex_replace(normal, std::regex(" \\)"), ")");
    return std::regex_replace(normal, std::regex("^ +|[ ;]+$"), "");
}

class StoreTest : public HostTest {
protected:
    // Expects the first host operation to fail with a message containing `words`, and the
    // database file to stay as it was.
    void ExpectRefused(const std::string& words) {
        std::string before = FileBytes(DatabaseFile());
        try {
            KelmCtl::Network::NetworkInfoImpl info;
            ADD_FAILURE() << "the store was opened";
        } catch (const HostCtlException& error) {
            EXPECT_THAT(error.what(), HasSubstr(words));
            EXPECT_THAT(error.what(), HasSubstr(DatabaseFile()));
        }
        EXPECT_EQ(FileBytes(DatabaseFile()), before);
    }
};

TEST_F(StoreTest, FirstUseMakesTheDefaultHostInWalMode) {
    EXPECT_FALSE(std::filesystem::exists(DatabaseFile()));
    EXPECT_EQ(AllNicNames(), kDefaultNics);
    EXPECT_TRUE(std::filesystem::exists(DatabaseFile()));
    auto result = Testing::RunHostsim({"export"}, Directory());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(RunSql(DatabaseFile(), "PRAGMA journal_mode"), "wal\n");
}

TEST_F(StoreTest, StateIsKeptBetweenConnectionsAndDirectoriesAreApart) {
    KelmCtl::Network::PnicImpl("hwnic0").SetLinkState(false);
    Testing::TemporaryDirectory other;
    HostSim::UseStateDirectory(other.Path());
    EXPECT_TRUE(KelmCtl::Network::PnicImpl("hwnic0").GetAdminStatus());
    HostSim::UseStateDirectory(Directory());
    EXPECT_FALSE(KelmCtl::Network::PnicImpl("hwnic0").GetAdminStatus());
    EXPECT_EQ(HostSim::StateDirectory(), Directory());
}

TEST_F(StoreTest, TheStateDirectoryComesFromTheEnvironment) {
    std::string xdg = Directory() + "/xdg";
    std::string home = Directory() + "/home";
    auto fromXdg = Testing::RunHostsim(
        {"export"}, "", {{"HOSTSIM_DIR", ""}, {"XDG_STATE_HOME", xdg}, {"HOME", home}});
    EXPECT_EQ(fromXdg.status, 0) << fromXdg.err;
    EXPECT_TRUE(std::filesystem::exists(xdg + "/hostsim/host.db"));
    EXPECT_FALSE(std::filesystem::exists(home));

    auto fromHome = Testing::RunHostsim({"export"}, "", {{"XDG_STATE_HOME", ""}, {"HOME", home}});
    EXPECT_EQ(fromHome.status, 0) << fromHome.err;
    EXPECT_EQ(fromHome.out, fromXdg.out);
    EXPECT_TRUE(std::filesystem::exists(home + "/.local/state/hostsim/host.db"));

    auto nowhere = Testing::RunHostsim({"export"}, "", {{"XDG_STATE_HOME", ""}, {"HOME", ""}});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_THAT(nowhere.err, HasSubstr("There is no host state directory"));
}

TEST_F(StoreTest, ProcessesRacingOnAFreshDirectoryMakeTheHostOnce) {
    constexpr int kProcesses = 12;
    auto statuses = RunInProcesses(kProcesses, [&](int i) {
        auto result = Testing::RunHostsim({"export"}, Directory());
        std::ofstream(Directory() + "/export" + std::to_string(i)) << result.out << result.err;
        return result.status;
    });
    std::string first = FileBytes(Directory() + "/export0");
    for (int i = 0; i < kProcesses; ++i) {
        EXPECT_EQ(statuses[i], 0) << FileBytes(Directory() + "/export" + std::to_string(i));
        EXPECT_EQ(FileBytes(Directory() + "/export" + std::to_string(i)), first);
    }
    EXPECT_EQ(AllNicNames(), kDefaultNics);
}

// A store this build can't use is refused, named, and left exactly as it is: nothing is
// written in it or beside it (SQLite would make -wal and -shm files to read one in WAL mode).
TEST_F(StoreTest, AStoreThatCantBeUsedIsRefusedAndNothingIsWrittenBesideIt) {
    struct Case {
        const char* name;
        std::function<void(const std::string& file)> make;
        const char* words;
    };
    auto truncate = [](std::size_t size) {
        return [size](const std::string& file) { std::filesystem::resize_file(file, size); };
    };
    const std::vector<Case> cases{
        {"no database",
         [](const std::string& file) { std::ofstream(file) << "not the bytes of a database\n"; },
         "can't be read"},
        {"another program's",
         [](const std::string& file) {
             std::filesystem::remove(file);
             RunSql(file, "CREATE TABLE inventory (item TEXT); INSERT INTO inventory VALUES ('x')");
         },
         "is not a host state database"},
        {"truncated to its first page", truncate(4096), "can't be read"},
        {"truncated in the middle", truncate(20000), "can't be read"},
        {"newer store version",
         [](const std::string& file) { RunSql(file, "PRAGMA user_version = 99"); },
         "was written by a newer host (schema version 99, this host knows up to 1)"},
        {"newer subject version",
         [](const std::string& file) { RunSql(file, "UPDATE subject_schema SET version = 50"); },
         "was written by a newer host (nics schema version 50)"},
        {"unknown subject",
         [](const std::string& file) {
             RunSql(file, "INSERT INTO subject_schema (subject, version) VALUES ('lacp', 2)");
         },
         "was written by a newer host (lacp schema version 2, a subject this host does not know)"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Testing::TemporaryDirectory state;
        HostSim::UseStateDirectory(state.Path());
        ASSERT_EQ(Testing::RunHostsim({"init"}, state.Path()).status, 0);
        const std::string file = state.Path() + "/host.db";
        test.make(file);
        for (const char* side : {"-wal", "-shm", "-lock"}) {
            std::filesystem::remove(file + side);
        }
        std::string before = FileBytes(file);
        try {
            AllNicNames();
            ADD_FAILURE() << "the store was opened";
        } catch (const HostCtlException& error) {
            EXPECT_THAT(error.what(), HasSubstr(test.words));
            EXPECT_THAT(error.what(), HasSubstr(file + " "));
            EXPECT_THAT(error.what(), HasSubstr("it is left as it is"));
        }
        auto exported = Testing::RunHostsim({"export"}, state.Path());
        EXPECT_EQ(exported.status, 1);
        EXPECT_THAT(exported.err, HasSubstr(test.words));
        EXPECT_EQ(FileBytes(file), before);
        for (const char* side : {"-wal", "-shm", "-journal", "-lock"}) {
            EXPECT_FALSE(std::filesystem::exists(file + side)) << side;
        }
    }
    HostSim::UseStateDirectory(Directory());
}

// A good store in a directory this process can't write is read from its file alone; a change
// is refused naming the directory. Root may write anywhere, so the check runs in a child that
// takes the identity of "nobody" when the tests run as root.
TEST_F(StoreTest, AStoreInAReadOnlyDirectoryCanBeReadButNotChanged) {
    std::filesystem::path store = std::filesystem::path(Directory()) / "readonly";
    std::filesystem::create_directory(store);
    ASSERT_EQ(Testing::RunHostsim({"init", "--scale=2"}, store.string()).status, 0);
    for (const char* side : {"-wal", "-shm", "-lock"}) {
        std::filesystem::remove(store.string() + "/host.db" + side);
    }
    std::filesystem::permissions(Directory(), std::filesystem::perms(0755));
    std::filesystem::permissions(store, std::filesystem::perms(0555));
    std::filesystem::permissions(store / "host.db", std::filesystem::perms(0644));
    auto statuses = RunInProcesses(1, [&](int) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
            return 77;
        }
        HostSim::UseStateDirectory(store.string());
        if (AllNicNames().size() != 22u ||
            HostSim::ExportHost(HostSim::Store())["nics"].size() != 22u) {
            return 1;
        }
        try {
            KelmCtl::Network::PnicImpl("hwnic0").SetLinkState(false);
            return 2;
        } catch (const HostCtlException& error) {
            return std::string(error.what()) == "The host can't be changed: its state directory " +
                                                    store.string() + " is read-only"
                       ? 0
                       : 3;
        }
    });
    std::filesystem::permissions(store, std::filesystem::perms(0755));
    if (statuses[0] == 77) {
        GTEST_SKIP() << "this process can't take another user's identity";
    }
    EXPECT_EQ(statuses[0], 0);
    EXPECT_FALSE(std::filesystem::exists(store / "host.db-wal"));
    EXPECT_FALSE(std::filesystem::exists(store / "host.db-shm"));
}

TEST_F(StoreTest, AStateDirectoryThatCantBeMadeIsReported) {
    std::ofstream(Directory() + "/file") << "x";
    HostSim::UseStateDirectory(Directory() + "/file/hostsim");
    try {
        AllNicNames();
        ADD_FAILURE() << "the store was opened";
    } catch (const HostCtlException& error) {
        EXPECT_THAT(error.what(), HasSubstr("Unable to create the host state directory"));
    }
}

// A database from before a subject existed: the subject's tables are made, and a host made
// from the default profile gets the subject's default data, one from another profile doesn't.
TEST_F(StoreTest, ASubjectNewToAnExistingHostIsAdded) {
    InitHost({"--scale=2"});
    RunSql(DatabaseFile(), "DROP TABLE nic; DELETE FROM subject_schema WHERE subject = 'nics'");
    auto names = AllNicNames();
    EXPECT_EQ(names.size(), 22u);
    EXPECT_EQ(names.back(), "hwnic21");

    InitHost({"--profile=" + WriteProfile({{"nics", {PciNic("hwnic0", PciMac(1))}}})});
    RunSql(DatabaseFile(), "DROP TABLE nic; DELETE FROM subject_schema WHERE subject = 'nics'");
    Reconnect();
    EXPECT_TRUE(AllNicNames().empty());
}

// Columns that nothing read were dropped by a schema step of their subject: a store of the
// version before it loses the column and keeps everything else.
TEST_F(StoreTest, ASchemaStepDropsAColumnNothingReads) {
    struct DroppedColumn {
        const char* subject;
        const char* table;
        const char* column;
    };
    const DroppedColumn dropped[] = {{"ipsec", "ipsec", "name"},
                                     {"routing", "routing_netstack", "neighbors"}};
    InitHost({});
    const HostSim::Json before = ExportHost();
    for (const DroppedColumn& column : dropped) {
        SCOPED_TRACE(column.column);
        const std::string versionSql = std::string("SELECT version FROM subject_schema") +
                                       " WHERE subject = '" + column.subject + "'";
        const std::string columnSql = std::string("SELECT count(*) FROM pragma_table_info('") +
                                      column.table + "') WHERE name = '" + column.column + "'";
        const std::int64_t latest = Integer(DatabaseFile(), versionSql);
        RunSql(DatabaseFile(),
               std::string("ALTER TABLE ") + column.table + " ADD COLUMN " + column.column +
                   " TEXT; UPDATE subject_schema SET version = " + std::to_string(latest - 1) +
                   " WHERE subject = '" + column.subject + "'");
        ASSERT_EQ(Integer(DatabaseFile(), columnSql), 1);
        Reconnect();
        EXPECT_EQ(ExportHost(), before);
        EXPECT_EQ(Integer(DatabaseFile(), columnSql), 0);
        EXPECT_EQ(Integer(DatabaseFile(), versionSql), latest);
    }
}

// The schema block of the README is the schema of a fresh store, statement by statement, with
// each subject's version.
// SQLite's math functions reach the math library, which the host library opens when one is
// first called instead of linking it: each kind of function gives the math library's answer.
TEST_F(StoreTest, SqlMathFunctionsGiveTheMathLibrarysAnswers) {
    HostSim::Database database(Directory() + "/math.db");
    auto row = database.Query(
        "SELECT sqrt(16.0), pow(2, 10), trunc(-2.5), mod(7, 3), round(atan2(1, 1) * 4, 6), "
        "round(exp(ln(5)), 6), round(sin(0) + cos(0) + tanh(0), 6)");
    ASSERT_TRUE(row.Step());
    const std::vector<std::string> expected{"4.0",      "1024.0", "-2.0", "1.0",
                                            "3.141593", "5.0",    "1.0"};
    for (std::size_t column = 0; column < expected.size(); ++column) {
        EXPECT_EQ(row.Text(static_cast<int>(column)), expected[column]) << column;
    }
}

TEST_F(StoreTest, TheReadmeShowsTheWholeSchema) {
    InitHost({});
    const std::string readme = FileBytes(HOSTSIM_README);
    const std::string fence = "```sql\n";
    const auto begin = readme.find(fence, readme.find("### The schema"));
    ASSERT_NE(begin, std::string::npos);
    const auto end = readme.find("```", begin + fence.size());
    ASSERT_NE(end, std::string::npos);
    std::istringstream block(readme.substr(begin + fence.size(), end - begin - fence.size()));
    const std::regex versionLine("-- (\\w+), version (\\d+)");
    std::vector<std::string> shown;
    std::vector<std::string> shownVersions;
    std::string statement;
    for (std::string line; std::getline(block, line);) {
        std::smatch version;
        if (std::regex_match(line, version, versionLine)) {
            shownVersions.push_back(version[1].str() + " " + version[2].str());
        } else if (!line.starts_with("--")) {
            statement += line + " ";
            if (line.ends_with(";")) {
                shown.push_back(NormalSql(statement));
                statement.clear();
            }
        }
    }
    std::vector<std::string> stored;
    for (const std::string& sql : Texts(DatabaseFile(),
                                        "SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL"
                                        " ORDER BY rowid")) {
        stored.push_back(NormalSql(sql));
    }
    EXPECT_EQ(shown, stored);
    std::vector<std::string> versions =
        Texts(DatabaseFile(), "SELECT subject || ' ' || version FROM subject_schema");
    std::sort(versions.begin(), versions.end());
    std::sort(shownVersions.begin(), shownVersions.end());
    EXPECT_EQ(shownVersions, versions);
    EXPECT_EQ(shownVersions.size(), HostSim::Subjects().size());
}

// A process killed inside a write leaves the last committed state, and no lock behind.
TEST_F(StoreTest, AWriterKilledMidWayLeavesTheLastCommittedState) {
    KelmCtl::Network::PnicImpl("hwnic0").SetLinkState(false);
    Testing::ChildProcess writer({"sqlite3", "-batch", DatabaseFile()});
    writer.Write(
        "BEGIN IMMEDIATE; UPDATE nic SET admin_up = 1; DELETE FROM nic;"
        " SELECT 'inside';\n");
    writer.ReadUntil("inside");
    writer.Signal(SIGKILL);
    EXPECT_EQ(writer.Wait(), 128 + SIGKILL);
    Reconnect();
    EXPECT_EQ(AllNicNames().size(), 11u);
    KelmCtl::Network::PnicImpl("hwnic1").SetLinkState(false);
    EXPECT_FALSE(KelmCtl::Network::PnicImpl("hwnic0").GetAdminStatus());
    EXPECT_FALSE(KelmCtl::Network::PnicImpl("hwnic1").GetAdminStatus());
}

TEST_F(StoreTest, ManyProcessesChangingLinkStateLoseNothing) {
    InitHost({"--scale=4"});
    auto names = AllNicNames();
    ASSERT_EQ(names.size(), 44u);
    constexpr int kProcesses = 6;
    // Each process brings its own share of the NICs down and toggles hwnic0 on the way.
    auto statuses = RunInProcesses(kProcesses, [&](int process) {
        for (std::size_t i = static_cast<std::size_t>(process); i < names.size(); i += kProcesses) {
            KelmCtl::Network::PnicImpl(names[i]).SetLinkState(false);
            KelmCtl::Network::PnicImpl("hwnic0").SetLinkState(i % 2 == 0);
        }
        return 0;
    });
    for (int status : statuses) {
        EXPECT_EQ(status, 0);
    }
    for (const std::string& name : names) {
        if (name != "hwnic0") {
            EXPECT_FALSE(KelmCtl::Network::PnicImpl(name).GetAdminStatus()) << name;
        }
    }
}

// Writers get the store in the order they asked for it: each of these waits behind a writer
// that holds it, and they start a while apart.
TEST_F(StoreTest, WritersGetTheStoreInTheOrderTheyCame) {
    AllNicNames();
    const std::string order = Directory() + "/order";
    int release[2];
    ASSERT_EQ(pipe(release), 0);
    constexpr int kWriters = 5;
    auto statuses = RunInProcesses(
        kWriters + 1,
        [&](int i) {
            if (i == 0) {
                HostSim::WriteTransaction holder(HostSim::Store());
                std::ofstream(order, std::ios::app) << "0";
                char byte = 0;
                close(release[1]);
                return read(release[0], &byte, 1) >= 0 ? 0 : 1;
            }
            close(release[0]);
            close(release[1]);
            // The store is opened first, so that only the change waits in turn; its place in the
            // order is written while it holds the store.
            HostSim::Database& store = HostSim::Store();
            std::this_thread::sleep_for(std::chrono::milliseconds(250 * i));
            HostSim::WriteTransaction change(store);
            std::ofstream(order, std::ios::app) << i;
            change.Commit();
            return 0;
        },
        [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(250 * (kWriters + 1)));
            close(release[1]);
        });
    close(release[0]);
    for (int status : statuses) {
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(FileBytes(order), "012345");
}

// A writer killed while it holds its turn holds up nobody.
TEST_F(StoreTest, AWriterKilledInItsTurnFreesTheQueue) {
    AllNicNames();
    auto statuses = RunInProcesses(1, [&](int) {
        HostSim::WriteTransaction transaction(HostSim::Store());
        raise(SIGKILL);
        return 0;
    });
    EXPECT_EQ(statuses[0], 128 + SIGKILL);
    KelmCtl::Network::PnicImpl("hwnic3").SetLinkState(false);
    EXPECT_FALSE(KelmCtl::Network::PnicImpl("hwnic3").GetAdminStatus());
}

}  // namespace
}  // namespace HostSimTesting
