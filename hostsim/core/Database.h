// A thin layer over one SQLite connection: prepared statements kept for the life of the
// connection, typed reads and binds, and write transactions that take the write lock up front.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace HostSim {

class Database;

// A prepared statement, reset and cleared of its bindings when the object goes, so a cached
// statement can be used again.
class Statement {
public:
    Statement(Database& database, sqlite3_stmt* statement);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Parameters count from 1, as in SQL.
    Statement& Bind(int index, std::int64_t value);
    Statement& Bind(int index, std::string_view value);
    Statement& Bind(int index, const char* value) { return Bind(index, std::string_view(value)); }
    Statement& BindNull(int index);
    // Binds text, or NULL when the text is empty.
    Statement& BindOptional(int index, std::string_view value);

    // Advances to the next row; false when there is none.
    bool Step();
    // Runs a statement that returns no rows.
    void Run();

    std::int64_t Int(int column) const;
    bool Bool(int column) const { return Int(column) != 0; }
    // The text of a column; NULL reads as the empty string.
    std::string Text(int column) const;
    bool IsNull(int column) const;

private:
    Database& database_;
    sqlite3_stmt* statement_;
};

class Database {
public:
    enum class Access {
        // Reads and writes; the file is made when missing.
        ReadWrite,
        // Reads the file alone, taken to be unchanging: no lock is taken and nothing is made
        // beside it (no -wal, -shm or -journal), which SQLite would do even to read a file in
        // WAL mode. For a look at a file before it is trusted, and for a store in a directory
        // nobody can write.
        FileOnly,
    };

    // Opens the database file.
    explicit Database(const std::string& path, Access access = Access::ReadWrite);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    const std::string& Path() const { return path_; }

    // A statement of `sql`, a literal, prepared once per connection and kept by its address.
    Statement Query(const char* sql);
    // Runs one or more statements that return no rows.
    void Execute(const char* sql);
    std::int64_t Changes() const;
    // Puts the database in WAL mode. The switch needs the file to itself and SQLite doesn't wait
    // for it, so it is tried again while other connections come and go, up to the busy timeout.
    void UseWriteAheadLog();
    // Ends an open transaction without its changes; nothing when none is open.
    void Rollback() noexcept;

    // SQLite's own words for the last failure.
    std::string LastError() const;
    // Throws HostCtlException with `what` and SQLite's own words.
    [[noreturn]] void Fail(const std::string& what) const;
    void Check(int status, const char* what) const;

    // Leaves the connection open for the process's exit to end; the object no longer closes it.
    // For a child process after fork the handle belongs to the parent, whose locks must not be
    // touched.
    void Abandon() noexcept;

    // Whether a write transaction of this connection has committed.
    bool HasWritten() const { return written_; }

private:
    friend class WriteTransaction;

    // Throws HostCtlException naming what keeps the host from being changed, when the
    // connection can only read.
    void CheckWritable() const;
    // Writers queue for the store in the order they come, on a lock file beside it, before
    // they take SQLite's write lock: SQLite lets waiting writers poll with growing sleeps, so
    // one could wait many times as long as the writers ahead of it, or give up. Each writer
    // takes a ticket and holds a lock on a byte of its own while it is queued or writing, and
    // waits for the byte of the writer just ahead; the kernel frees a writer's byte when it
    // ends, even killed, so the queue moves on.
    void EnterWriteQueue();
    void LeaveWriteQueue() noexcept;

    std::string path_;
    sqlite3* connection_ = nullptr;
    bool written_ = false;
    std::map<const char*, sqlite3_stmt*> statements_;
    int queueFile_ = -1;
    std::int64_t ticket_ = 0;
};

// Whether this process may make files in `directory`: false on a read-only file system too.
bool DirectoryIsWritable(const std::string& directory);

// One change of the host: BEGIN IMMEDIATE takes the write lock before anything is read, so a
// read followed by a write never has to wait out another writer's lock mid-way. Writers queue
// for it in turn (see Database::EnterWriteQueue). Rolled back unless Commit is called. Throws
// HostCtlException naming the read-only directory or file when the host can only be read.
class WriteTransaction {
public:
    explicit WriteTransaction(Database& database);
    ~WriteTransaction();
    WriteTransaction(const WriteTransaction&) = delete;
    WriteTransaction& operator=(const WriteTransaction&) = delete;
    void Commit();

private:
    Database& database_;
    bool open_ = true;
};

}  // namespace HostSim
