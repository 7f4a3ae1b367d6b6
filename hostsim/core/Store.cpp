#include "hostsim/core/Store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>

#include "hostctl/HostCtlException.h"
#include "hostsim/Control.h"
#include "hostsim/core/HostChoice.h"
#include "hostsim/core/Profile.h"
#include "hostsim/core/StateFiles.h"
#include "hostsim/core/Subject.h"
#include "hostsim/linux/LiveHost.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

namespace {

// Marks a database as the host's, in the header's application id ("KELM").
constexpr std::int64_t kApplicationId = 0x4B454C4D;

// The store's own tables; step i takes the store from user_version i to i + 1. The subjects'
// tables have versions of their own, in subject_schema.
constexpr const char* kStoreSteps[] = {
    "CREATE TABLE subject_schema (subject TEXT PRIMARY KEY, version INTEGER NOT NULL)"
    " WITHOUT ROWID;"
    "CREATE TABLE host_origin (id INTEGER PRIMARY KEY CHECK (id = 1), profile TEXT NOT NULL,"
    " scale INTEGER NOT NULL, document TEXT);",
};
constexpr std::int64_t kStoreVersion = std::size(kStoreSteps);

struct Connection {
    std::string directory;
    pid_t process = 0;
    std::unique_ptr<Database> database;

    // Closes the connection, unless it is a parent's handle inherited through fork: closing that
    // could touch the parent's locks and files, so the child lets it be.
    void Disconnect() {
        if (database && process != getpid()) {
            database->Abandon();
        }
        database.reset();
    }

    // At process exit a connection is closed only when it wrote, to checkpoint and empty the log.
    // One that only read is left for the exit to end: closing it would only free memory and take
    // locks, at a cost of a tenth of a short command.
    ~Connection() {
        if (database && !database->HasWritten()) {
            database->Abandon();
        }
        Disconnect();
    }
};

Connection& CurrentConnection() {
    static Connection connection;
    return connection;
}

std::string& ChosenDirectory() {
    static std::string directory;
    return directory;
}

struct StoreHeader {
    std::int64_t applicationId = 0;
    std::int64_t version = 0;
    std::int64_t objects = 0;

    bool IsFresh() const { return applicationId == 0 && version == 0 && objects == 0; }
    bool IsCurrent() const { return applicationId == kApplicationId && version == kStoreVersion; }
};

std::int64_t ReadNumber(Database& database, const char* sql) {
    auto query = database.Query(sql);
    query.Step();
    return query.Int(0);
}

// Reads the header inside the caller's transaction. A file SQLite can't read (not a database,
// damaged, no permission) fails here, before anything is written. The two pragmas read the
// file's header only; the schema is looked at when they leave a doubt whether the file is empty.
StoreHeader ReadHeaderIn(Database& database) {
    try {
        StoreHeader header;
        header.applicationId = ReadNumber(database, "PRAGMA application_id");
        header.version = ReadNumber(database, "PRAGMA user_version");
        if (header.applicationId == 0 && header.version == 0) {
            header.objects = ReadNumber(database, "SELECT count(*) FROM sqlite_schema");
        }
        return header;
    } catch (const HostCtlException&) {
        throw HostCtlException("The host state database " + database.Path() + " can't be read (" +
                               database.LastError() + "); it is left as it is");
    }
}

void CheckHeader(const Database& database, const StoreHeader& header) {
    if (header.IsFresh()) {
        return;
    }
    if (header.applicationId != kApplicationId) {
        throw HostCtlException("The file " + database.Path() +
                               " is not a host state database; it is left as it is");
    }
    if (header.version > kStoreVersion) {
        throw HostCtlException("The host state database " + database.Path() +
                               " was written by a newer host (schema version " +
                               std::to_string(header.version) + ", this host knows up to " +
                               std::to_string(kStoreVersion) + "); it is left as it is");
    }
}

std::map<std::string, std::int64_t> ReadSubjectVersions(Database& database) {
    std::map<std::string, std::int64_t> versions;
    enum Column { kSubject, kVersion };
    auto query = database.Query("SELECT subject, version FROM subject_schema");
    while (query.Step()) {
        versions[query.Text(kSubject)] = query.Int(kVersion);
    }
    return versions;
}

[[noreturn]] void RefuseNewerSubject(const Database& database, const std::string& subject,
                                     std::int64_t version, bool known) {
    throw HostCtlException(
        "The host state database " + database.Path() + " was written by a newer host (" + subject +
        " schema version " + std::to_string(version) +
        (known ? "" : ", a subject this host does not know") + "); it is left as it is");
}

// Whether every subject's tables are current. A subject of a version above what this build
// knows, or one it does not know at all, was made by a newer host: refused.
bool CheckSubjects(Database& database) {
    auto versions = ReadSubjectVersions(database);
    bool current = true;
    for (const Subject* subject : Subjects()) {
        auto found = versions.find(subject->name);
        auto latest = static_cast<std::int64_t>(subject->schemaSteps.size());
        if (found == versions.end()) {
            current = false;
            continue;
        }
        if (found->second > latest) {
            RefuseNewerSubject(database, found->first, found->second, true);
        }
        current = current && found->second == latest;
        versions.erase(found);
    }
    if (!versions.empty()) {
        RefuseNewerSubject(database, versions.begin()->first, versions.begin()->second, false);
    }
    return current;
}

// Reads the header, and whether every subject's tables are current, in one read transaction, so
// that another process making the host meanwhile is seen whole or not at all. Throws for a
// store this build can't use.
struct StoreState {
    StoreHeader header;
    bool current = false;
};

StoreState ReadState(Database& database) {
    database.Execute("BEGIN");
    try {
        StoreState state;
        state.header = ReadHeaderIn(database);
        CheckHeader(database, state.header);
        state.current = state.header.IsCurrent() && CheckSubjects(database);
        database.Execute("COMMIT");
        return state;
    } catch (const HostCtlException&) {
        database.Execute("ROLLBACK");
        throw;
    }
}

// Brings every subject's tables to its latest version. A subject new to a host that already
// exists gets its default data when the host was made from the default profile.
void MigrateSubjects(Database& database, bool hostExists) {
    auto versions = ReadSubjectVersions(database);
    for (const Subject* subject : Subjects()) {
        std::int64_t version = versions.count(subject->name) ? versions[subject->name] : 0;
        auto latest = static_cast<std::int64_t>(subject->schemaSteps.size());
        if (version > latest) {
            RefuseNewerSubject(database, subject->name, version, true);
        }
        for (std::int64_t step = version; step < latest; ++step) {
            database.Execute(subject->schemaSteps[static_cast<std::size_t>(step)]);
        }
        if (version == latest) {
            continue;
        }
        database.Query("INSERT OR REPLACE INTO subject_schema (subject, version) VALUES (?1, ?2)")
            .Bind(1, subject->name)
            .Bind(2, latest)
            .Run();
        if (version == 0 && hostExists) {
            FillNewSubject(database, *subject);
        }
    }
}

// Makes a fresh database into the default host, or migrates an older one, in one write
// transaction: processes racing on a fresh directory all wait for the lock, and only the
// first finds the schema version still 0.
void PrepareStore(Database& database) {
    auto [header, current] = ReadState(database);
    if (current) {
        return;
    }
    if (header.IsFresh()) {
        database.UseWriteAheadLog();
    }
    WriteTransaction transaction(database);
    header = ReadHeaderIn(database);
    CheckHeader(database, header);
    for (std::int64_t step = header.version; step < kStoreVersion; ++step) {
        database.Execute(kStoreSteps[step]);
    }
    MigrateSubjects(database, !header.IsFresh());
    if (header.IsFresh()) {
        FillHost(database, BuiltinProfile("default"), 1, "default");
        database.Execute(("PRAGMA application_id=" + std::to_string(kApplicationId)).c_str());
    }
    database.Execute(("PRAGMA user_version=" + std::to_string(kStoreVersion)).c_str());
    transaction.Commit();
}

bool FileExists(const std::string& path) {
    struct stat file {};
    return lstat(path.c_str(), &file) == 0;
}

// The store's files are never reached through a symbolic link: one planted there could make a
// change of the host write over a file of the link's choosing. SQLite and the write queue open
// them without following links; this names the link plainly.
void RefuseLinkedFiles(const std::string& path) {
    for (const char* suffix : {"", "-wal", "-shm", "-lock"}) {
        struct stat file {};
        const std::string name = path + suffix;
        if (lstat(name.c_str(), &file) == 0 && S_ISLNK(file.st_mode)) {
            throw HostCtlException("The host state file " + name +
                                   " is a symbolic link, which the host does not follow; it is "
                                   "left as it is");
        }
    }
}

// A store in a directory that can't be written, read from its file alone: nobody can write
// beside it, so the file is the whole store and stays as it is. It can be read, not changed.
std::unique_ptr<Database> ReadOnlyStore(std::unique_ptr<Database> probe, const StoreState& state,
                                        const std::string& directory) {
    const std::string log = probe->Path() + "-wal";
    struct stat file {};
    if (lstat(log.c_str(), &file) == 0 && file.st_size > 0) {
        throw HostCtlException("The host state database " + probe->Path() +
                               " has changes in its log that can't be read without its -shm file, "
                               "which the read-only directory " +
                               directory + " can't hold; it is left as it is");
    }
    if (state.header.IsFresh() || !state.current) {
        throw HostCtlException("The host state database " + probe->Path() +
                               " needs to be brought up to date, which its read-only directory " +
                               directory + " does not allow; it is left as it is");
    }
    return probe;
}

std::unique_ptr<Database> OpenStore(const std::string& directory) {
    if (directory.empty()) {
        throw HostCtlException(
            "There is no host state directory: set HOSTSIM_DIR, XDG_STATE_HOME or HOME");
    }
    // Mostly the folder is there already, which one stat tells.
    struct stat status {};
    if (stat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        MakePrivateDirectory(directory);
    }
    const std::string path = DatabasePath(directory);
    RefuseLinkedFiles(path);
    struct stat file {};
    const bool exists = stat(path.c_str(), &file) == 0;
    if (exists && file.st_size > 0 && (!FileExists(path + "-wal") || !FileExists(path + "-shm"))) {
        // SQLite would make the side files it lacks to read a store in WAL mode, even one it then
        // refuses: look at the file alone first. Stores this build made have both files, so this
        // is for a store copied, made elsewhere, or not ours.
        auto probe = std::make_unique<Database>(path, Database::Access::FileOnly);
        StoreState state = ReadState(*probe);
        if (!DirectoryIsWritable(directory)) {
            return ReadOnlyStore(std::move(probe), state, directory);
        }
    } else if (!exists && !DirectoryIsWritable(directory)) {
        throw HostCtlException("There is no host state database in " + directory +
                               ", and the directory is read-only, so none can be made there");
    }
    auto database = std::make_unique<Database>(path);
    PrepareStore(*database);
    return database;
}

}  // namespace

std::string DatabasePath(const std::string& directory) {
    return directory + "/host.db";
}

Database& Store() {
    // The live host keeps no state of the simulator's: an operation that only the simulated
    // host has fails here, in the one text for all of them.
    if (LiveHost() != nullptr) {
        throw HostCtlException(Live::kNotAvailable);
    }
    Connection& connection = CurrentConnection();
    std::string directory = StateDirectory();
    if (connection.database &&
        (connection.directory != directory || connection.process != getpid())) {
        connection.Disconnect();
    }
    if (!connection.database) {
        connection.database = OpenStore(directory);
        connection.directory = directory;
        connection.process = getpid();
    }
    return *connection.database;
}

void UseStateDirectory(const std::string& directory) {
    ChosenDirectory() = directory;
    Connection& connection = CurrentConnection();
    if (connection.directory != directory) {
        connection.Disconnect();
    }
}

std::string StateDirectory() {
    if (!ChosenDirectory().empty()) {
        return ChosenDirectory();
    }
    if (const char* directory = std::getenv("HOSTSIM_DIR"); directory && *directory) {
        return directory;
    }
    if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state) {
        return std::string(state) + "/hostsim";
    }
    if (const char* home = std::getenv("HOME"); home && *home) {
        return std::string(home) + "/.local/state/hostsim";
    }
    return {};
}

}  // namespace HostSim
