// The store: the default host on first use, refusing databases it can't use, migration, and
// several processes at once.
#include <sqlite3.h>
#include <csignal>

#include <filesystem>
#include <fstream>

#include "HostSimTest.h"
#include "hostctl/HostCtlException.h"
#include "kelmctl/NetworkInfoImpl.h"
#include "kelmctl/PnicImpl.h"

namespace HostSimTesting {
namespace {

using HostCtl::Lib::HostCtlException;
using ::testing::HasSubstr;

const std::vector<std::string> kDefaultNics{"hwnic0", "hwnic1", "hwnic2", "hwnic3",
                                            "hwnic4", "hwnic5", "hwnic6", "hwnic7",
                                            "hwnic8", "hwnic9", "hwnic10"};

// Runs SQL on a database file from outside the host, as another program would.
void Sql(const std::string& path, const std::string& sql) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &error), SQLITE_OK)
        << (error ? error : "");
    sqlite3_free(error);
    sqlite3_close(database);
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
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(DatabaseFile().c_str(), &database), SQLITE_OK);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, "PRAGMA journal_mode", -1, &statement, nullptr);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)), "wal");
    sqlite3_finalize(statement);
    sqlite3_close(database);
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

TEST_F(StoreTest, ADatabaseThatIsNoDatabaseIsRefusedAndLeftAlone) {
    std::ofstream(DatabaseFile()) << "these are not the bytes of a database, not at all\n";
    ExpectRefused("can't be read");
}

TEST_F(StoreTest, AnotherProgramsDatabaseIsRefusedAndLeftAlone) {
    Sql(DatabaseFile(), "CREATE TABLE inventory (item TEXT); INSERT INTO inventory VALUES ('x')");
    ExpectRefused("is not a host state database");
}

TEST_F(StoreTest, ADatabaseOfANewerHostIsRefusedAndLeftAlone) {
    AllNicNames();
    Sql(DatabaseFile(), "PRAGMA user_version = 99");
    Reconnect();
    ExpectRefused("newer host");

    Sql(DatabaseFile(), "PRAGMA user_version = 1; UPDATE subject_schema SET version = 50");
    ExpectRefused("newer host");
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
    Sql(DatabaseFile(), "DROP TABLE nic; DELETE FROM subject_schema WHERE subject = 'nics'");
    auto names = AllNicNames();
    EXPECT_EQ(names.size(), 22u);
    EXPECT_EQ(names.back(), "hwnic21");

    InitHost({"--profile=" + WriteProfile({{"nics", {PciNic("hwnic0", "00:50:56:00:00:01")}}})});
    Sql(DatabaseFile(), "DROP TABLE nic; DELETE FROM subject_schema WHERE subject = 'nics'");
    Reconnect();
    EXPECT_TRUE(AllNicNames().empty());
}

// A process killed inside a write leaves the last committed state, and no lock behind.
TEST_F(StoreTest, AWriterKilledMidWayLeavesTheLastCommittedState) {
    KelmCtl::Network::PnicImpl("hwnic0").SetLinkState(false);
    auto statuses = RunInProcesses(1, [&](int) {
        sqlite3* database = nullptr;
        sqlite3_open(DatabaseFile().c_str(), &database);
        sqlite3_exec(database, "BEGIN IMMEDIATE; UPDATE nic SET admin_up = 1; DELETE FROM nic",
                     nullptr, nullptr, nullptr);
        raise(SIGKILL);
        return 0;
    });
    EXPECT_EQ(statuses[0], 128 + SIGKILL);
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

}  // namespace
}  // namespace HostSimTesting
