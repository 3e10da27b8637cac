#pragma once

#include <lmdb.h>

#include <filesystem>
#include <memory>

namespace tavel {

/// The LMDB environment that holds a user's pasteboards, shared by all of the user's processes. It stays
/// consistent when a process dies at any moment, and commits are durable. A process must not open one
/// directory's environment twice (lmdb.h, "Caveats"). One thread at a time may use a transaction. Only one
/// write transaction exists at a time on a machine; a second one waits for the first to end.
class LmdbEnvironment {
public:
    /// Opens or creates the environment in that directory. Throws Error.
    explicit LmdbEnvironment(const std::filesystem::path& directory);
    ~LmdbEnvironment();
    LmdbEnvironment(const LmdbEnvironment&) = delete;
    LmdbEnvironment& operator=(const LmdbEnvironment&) = delete;

    MDB_env* handle() const { return environment_; }
    MDB_dbi database() const { return database_; }

    /// Truncates the file behind the stored data. After a failed write LMDB leaves the file as long as the
    /// write made it, which on a full disk is all the space there was.
    void releaseUnusedTail() const;

private:
    void open(const std::filesystem::path& directory);

    MDB_env* environment_ = nullptr;
    MDB_dbi database_ = 0;
};

/// A consistent view of the environment. It does not block writers, but they cannot reuse the space it sees.
class LmdbSnapshot {
public:
    /// Null if LMDB refuses (too many readers at once).
    static std::shared_ptr<LmdbSnapshot> take(std::shared_ptr<const LmdbEnvironment> environment);
    ~LmdbSnapshot();
    LmdbSnapshot(const LmdbSnapshot&) = delete;
    LmdbSnapshot& operator=(const LmdbSnapshot&) = delete;

    MDB_txn* transaction() const { return transaction_; }

    /// Gives the view up until `renew` takes the current one. An idle snapshot keeps no space from being
    /// reused, and its renewal needs no system call.
    void release();
    bool renew();

private:
    explicit LmdbSnapshot(std::shared_ptr<const LmdbEnvironment> environment);

    std::shared_ptr<const LmdbEnvironment> environment_;
    MDB_txn* transaction_ = nullptr;
};

/// A write transaction; rolled back unless committed.
class LmdbWrite {
public:
    /// Waits for other processes' write transactions. Null if LMDB refuses.
    static std::unique_ptr<LmdbWrite> begin(const LmdbEnvironment& environment);
    ~LmdbWrite();
    LmdbWrite(const LmdbWrite&) = delete;
    LmdbWrite& operator=(const LmdbWrite&) = delete;

    MDB_txn* transaction() const { return transaction_; }

    /// False if it could not be made durable (no space). It is then rolled back and takes no space.
    bool commit();

private:
    explicit LmdbWrite(const LmdbEnvironment& environment) : environment_(environment) {}

    const LmdbEnvironment& environment_;
    MDB_txn* transaction_ = nullptr;
};

} // namespace tavel
