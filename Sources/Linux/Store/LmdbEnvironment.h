#pragma once

#include <lmdb.h>

#include <filesystem>
#include <memory>

namespace tavel {

/// The LMDB environment that holds a user's pasteboards, shared by all of the user's processes. LMDB keeps it
/// whole when a process dies at any moment, and its commits are durable. A process must not open one
/// directory's environment twice (lmdb.h, "Caveats"). Transactions belong to one thread at a time, and only
/// one write transaction exists at a time on a machine: a second one waits for the first to end.
class LmdbEnvironment {
public:
    /// Opens or creates the environment in that directory. Throws Error.
    explicit LmdbEnvironment(const std::filesystem::path& directory);
    ~LmdbEnvironment();
    LmdbEnvironment(const LmdbEnvironment&) = delete;
    LmdbEnvironment& operator=(const LmdbEnvironment&) = delete;

    MDB_env* handle() const { return environment_; }
    MDB_dbi database() const { return database_; }

    /// Gives the space back that a failed write took behind what is stored: LMDB leaves the file as long as
    /// the write made it, and on a full disk that is all the space there was.
    void releaseUnusedTail() const;

private:
    void open(const std::filesystem::path& directory);

    MDB_env* environment_ = nullptr;
    MDB_dbi database_ = 0;
};

/// A consistent view of the environment, which costs writers nothing but the reuse of the space it sees.
class LmdbSnapshot {
public:
    /// Nothing if LMDB refuses (too many readers at once).
    static std::shared_ptr<LmdbSnapshot> take(std::shared_ptr<const LmdbEnvironment> environment);
    ~LmdbSnapshot();
    LmdbSnapshot(const LmdbSnapshot&) = delete;
    LmdbSnapshot& operator=(const LmdbSnapshot&) = delete;

    MDB_txn* transaction() const { return transaction_; }

    /// Lets the view go, for `renew` to take the current one: an idle snapshot that holds nothing back, and
    /// whose renewal needs no system call.
    void release();
    bool renew();

private:
    LmdbSnapshot(std::shared_ptr<const LmdbEnvironment> environment, MDB_txn* transaction);

    std::shared_ptr<const LmdbEnvironment> environment_;
    MDB_txn* transaction_;
};

/// A write transaction; undone unless committed.
class LmdbWrite {
public:
    /// Waits for other processes' write transactions. Nothing if LMDB refuses.
    static std::unique_ptr<LmdbWrite> begin(const LmdbEnvironment& environment);
    ~LmdbWrite();
    LmdbWrite(const LmdbWrite&) = delete;
    LmdbWrite& operator=(const LmdbWrite&) = delete;

    MDB_txn* transaction() const { return transaction_; }

    /// False if it could not be made durable (no space); nothing of it is then there, nor takes up space.
    bool commit();

private:
    LmdbWrite(const LmdbEnvironment& environment, MDB_txn* transaction)
        : environment_(environment), transaction_(transaction) {}

    const LmdbEnvironment& environment_;
    MDB_txn* transaction_;
};

} // namespace tavel
