#include "hostsim/core/Database.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "hostctl/HostCtlException.h"
#include "hostsim/core/StateFiles.h"

namespace HostSim {

using HostCtl::Lib::HostCtlException;

namespace {
// How long a writer waits for another process's write lock before giving up.
constexpr int kBusyTimeoutMs = 30000;
constexpr const char* kAccessFailed = "Unable to access the host state database";

// The write queue's lock file: bytes 0-7 hold the last ticket given, and byte 0 is locked while
// a ticket is taken; the writer with ticket t holds byte kFirstSlot + t.
constexpr off_t kFirstSlot = 64;

// An SQLite URI that reads `path` alone as an unchanging file.
std::string FileOnlyUri(const std::string& path) {
    std::string uri = "file:";
    for (char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            constexpr char kHex[] = "0123456789ABCDEF";
            uri.push_back('%');
            uri.push_back(kHex[static_cast<unsigned char>(c) >> 4]);
            uri.push_back(kHex[static_cast<unsigned char>(c) & 0xf]);
        } else {
            uri.push_back(c);
        }
    }
    return uri + "?immutable=1";
}

// Sets (F_WRLCK) or clears (F_UNLCK) an open file description's lock of one byte; waits for a
// lock another holds when `wait` is set.
bool LockByte(int file, short type, off_t byte, bool wait) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    for (;;) {
        if (fcntl(file, wait ? F_OFD_SETLKW : F_OFD_SETLK, &lock) == 0) {
            return true;
        }
        if (errno != EINTR) {
            return false;
        }
    }
}

std::string ParentDirectory(const std::string& path) {
    std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}
}  // namespace

Statement::Statement(Database& database, sqlite3_stmt* statement)
    : database_(database), statement_(statement) {}

Statement::~Statement() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

Statement& Statement::Bind(int index, std::int64_t value) {
    database_.Check(sqlite3_bind_int64(statement_, index, value), kAccessFailed);
    return *this;
}

Statement& Statement::Bind(int index, std::string_view value) {
    database_.Check(sqlite3_bind_text(statement_, index, value.data(),
                                      static_cast<int>(value.size()), SQLITE_TRANSIENT),
                    kAccessFailed);
    return *this;
}

Statement& Statement::BindNull(int index) {
    database_.Check(sqlite3_bind_null(statement_, index), kAccessFailed);
    return *this;
}

Statement& Statement::BindOptional(int index, std::string_view value) {
    return value.empty() ? BindNull(index) : Bind(index, value);
}

bool Statement::Step() {
    int status = sqlite3_step(statement_);
    if (status == SQLITE_ROW) {
        return true;
    }
    if (status != SQLITE_DONE) {
        database_.Fail(kAccessFailed);
    }
    return false;
}

void Statement::Run() {
    while (Step()) {
    }
}

std::int64_t Statement::Int(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::string Statement::Text(int column) const {
    const auto* text = sqlite3_column_text(statement_, column);
    if (text == nullptr) {
        return {};
    }
    return std::string(reinterpret_cast<const char*>(text),
                       static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

Database::Database(const std::string& path, Access access) : path_(path) {
    // Set once, before SQLite's initialisation, which the first open does; the SQLite linked in
    // here is this library's own. A command reads a handful of pages: the page cache allocates
    // them as they are read, rather than make and touch room for twenty up front. And no
    // allocation counts for statistics nobody reads, each under a global lock.
    static const bool configured = [] {
        sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
        sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
        return true;
    }();
    static_cast<void>(configured);
    int status = access == Access::ReadWrite
                     ? sqlite3_open_v2(path.c_str(), &connection_,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE |
                                           SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW,
                                       nullptr)
                     : sqlite3_open_v2(FileOnlyUri(path).c_str(), &connection_,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_URI |
                                           SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW,
                                       nullptr);
    if (status != SQLITE_OK) {
        std::string reason =
            connection_ != nullptr ? sqlite3_errmsg(connection_) : sqlite3_errstr(status);
        sqlite3_close(connection_);
        connection_ = nullptr;
        throw HostCtlException("Unable to open the host state database " + path + ": " + reason);
    }
    sqlite3_busy_timeout(connection_, kBusyTimeoutMs);
    // Keep the WAL file when the last connection closes: each command is a process of its own,
    // and making and removing the file on every run costs more than the rest of the run.
    int persist = 1;
    sqlite3_file_control(connection_, "main", SQLITE_FCNTL_PERSIST_WAL, &persist);
    // ...but empty it when the connection closes: a WAL left with frames is read back and
    // checkpointed again by every later process, read-only ones included.
    sqlite3_exec(connection_, "PRAGMA journal_size_limit=0", nullptr, nullptr, nullptr);
    // A commit is atomic and, once in the log, outlives the process that made it (a kill
    // included); the log reaches the disk when the process that wrote closes the store, whose
    // checkpoint syncs it. So a command is durable when it ends, and a batch of changes pays
    // for one sync instead of one each.
    sqlite3_exec(connection_, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
}

Database::~Database() {
    if (connection_ == nullptr) {
        return;
    }
    for (auto& [sql, statement] : statements_) {
        sqlite3_finalize(statement);
    }
    sqlite3_close(connection_);
    if (queueFile_ >= 0) {
        close(queueFile_);
    }
}

void Database::Abandon() noexcept {
    if (connection_ == nullptr) {
        return;
    }
    // Kept where a leak checker sees it: the handle is left open on purpose.
    static auto* const abandoned = new std::vector<sqlite3*>();
    try {
        abandoned->push_back(connection_);
    } catch (const std::bad_alloc&) {
    }
    connection_ = nullptr;
}

Statement Database::Query(const char* sql) {
    auto found = statements_.find(sql);
    if (found == statements_.end()) {
        sqlite3_stmt* statement = nullptr;
        int status = sqlite3_prepare_v3(connection_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement,
                                        nullptr);
        if (status != SQLITE_OK) {
            sqlite3_finalize(statement);
            Fail(kAccessFailed);
        }
        found = statements_.emplace(sql, statement).first;
    }
    return Statement(*this, found->second);
}

void Database::Execute(const char* sql) {
    Check(sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr),
          "Unable to change the host state database");
}

std::int64_t Database::Changes() const {
    return sqlite3_changes64(connection_);
}

void Database::UseWriteAheadLog() {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kBusyTimeoutMs);
    for (;;) {
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v2(connection_, "PRAGMA journal_mode=WAL", -1, &statement, nullptr),
              kAccessFailed);
        int status = sqlite3_step(statement);
        bool done =
            status == SQLITE_ROW &&
            sqlite3_stricmp(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)),
                            "wal") == 0;
        sqlite3_finalize(statement);
        if (done) {
            return;
        }
        if ((status != SQLITE_BUSY && status != SQLITE_ROW) ||
            std::chrono::steady_clock::now() > deadline) {
            Fail("Unable to put in WAL mode the host state database");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void Database::Rollback() noexcept {
    // A failed statement may already have ended the transaction.
    if (sqlite3_get_autocommit(connection_) == 0) {
        sqlite3_exec(connection_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

std::string Database::LastError() const {
    return sqlite3_errmsg(connection_);
}

void Database::Fail(const std::string& what) const {
    throw HostCtlException(what + " " + path_ + ": " + LastError());
}

void Database::Check(int status, const char* what) const {
    if (status != SQLITE_OK) {
        Fail(what);
    }
}

bool DirectoryIsWritable(const std::string& directory) {
    return faccessat(AT_FDCWD, directory.c_str(), W_OK, AT_EACCESS) == 0;
}

void Database::CheckWritable() const {
    std::string directory = ParentDirectory(path_);
    if (sqlite3_db_readonly(connection_, "main") != 1) {
        CheckDirectoryIsPrivate(directory);
        return;
    }
    if (!DirectoryIsWritable(directory)) {
        throw HostCtlException("The host can't be changed: its state directory " + directory +
                               " is read-only");
    }
    throw HostCtlException("The host can't be changed: its state database " + path_ +
                           " is read-only");
}

void Database::EnterWriteQueue() {
    const std::string queuePath = path_ + "-lock";
    if (queueFile_ < 0) {
        queueFile_ = OpenStateFile(queuePath, O_RDWR | O_CREAT);
        if (queueFile_ < 0) {
            throw HostCtlException("Unable to open the host's write queue " + queuePath + ": " +
                                   std::strerror(errno));
        }
    }
    // Take the next ticket, and hold this writer's byte before the next writer can take one.
    std::int64_t last = 0;
    bool queued = LockByte(queueFile_, F_WRLCK, 0, true);
    if (queued) {
        if (pread(queueFile_, &last, sizeof last, 0) != static_cast<ssize_t>(sizeof last)) {
            last = 0;
        }
        ticket_ = last + 1;
        queued = pwrite(queueFile_, &ticket_, sizeof ticket_, 0) ==
                     static_cast<ssize_t>(sizeof ticket_) &&
                 LockByte(queueFile_, F_WRLCK, kFirstSlot + ticket_, false);
        LockByte(queueFile_, F_UNLCK, 0, false);
    }
    // Then wait for the writer ahead to finish, or end.
    if (!queued || !LockByte(queueFile_, F_WRLCK, kFirstSlot + ticket_ - 1, true)) {
        int error = errno;
        LeaveWriteQueue();
        throw HostCtlException("Unable to queue for the host's write lock " + queuePath + ": " +
                               std::strerror(error));
    }
    LockByte(queueFile_, F_UNLCK, kFirstSlot + ticket_ - 1, false);
}

void Database::LeaveWriteQueue() noexcept {
    if (ticket_ != 0) {
        LockByte(queueFile_, F_UNLCK, kFirstSlot + ticket_, false);
        ticket_ = 0;
    }
}

WriteTransaction::WriteTransaction(Database& database) : database_(database) {
    database_.CheckWritable();
    database_.EnterWriteQueue();
    try {
        database_.Execute("BEGIN IMMEDIATE");
    } catch (...) {
        database_.LeaveWriteQueue();
        throw;
    }
}

WriteTransaction::~WriteTransaction() {
    if (open_) {
        database_.Rollback();
        database_.LeaveWriteQueue();
    }
}

void WriteTransaction::Commit() {
    database_.Execute("COMMIT");
    open_ = false;
    database_.written_ = true;
    database_.LeaveWriteQueue();
}

}  // namespace HostSim
