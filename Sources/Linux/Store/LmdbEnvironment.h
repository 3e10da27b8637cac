#pragma once

#include "Linux/Store/BoardKey.h"

#include <lmdb.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace tavel {

/// The LMDB environment with the change counts of a user's pasteboards, shared by all of the user's
/// processes. It stays consistent when a process dies at any moment. It is not made for damaged files, and so
/// never outlives the processes that use it (PasteboardStore). A process must not open one file's environment
/// twice (lmdb.h, "Caveats"). One thread at a time may use a transaction. Only one write transaction exists
/// at a time on a machine; a second one waits for the first to end.
///
/// Each commit sets the file's times once readers can see it, so that other processes can wait for it
/// (CommitWatch).
///
/// A record's key is a pasteboard's (BoardKey), its value 8 bytes in this machine's order.
class LmdbEnvironment {
public:
    /// Opens or creates that file. Throws Error.
    explicit LmdbEnvironment(const std::filesystem::path& file);
    ~LmdbEnvironment();
    LmdbEnvironment(const LmdbEnvironment&) = delete;
    LmdbEnvironment& operator=(const LmdbEnvironment&) = delete;

    MDB_env* handle() const { return environment_; }
    MDB_dbi database() const { return database_; }

    /// Of the file. Valid as long as this object.
    const char* path() const;

    /// Sets the file's times to the present.
    void touch() const;

private:
    void open(const std::filesystem::path& file);

    MDB_env* environment_ = nullptr;
    MDB_dbi database_ = 0;
};

/// A consistent view of the environment. It does not block writers, but they cannot reuse the space it sees.
/// The environment must outlive it.
class LmdbSnapshot {
public:
    /// Null if LMDB refuses (too many readers at once).
    static std::unique_ptr<LmdbSnapshot> take(const LmdbEnvironment& environment);
    ~LmdbSnapshot();
    LmdbSnapshot(const LmdbSnapshot&) = delete;
    LmdbSnapshot& operator=(const LmdbSnapshot&) = delete;

    /// 0 before the first write.
    std::int64_t changeCount(const BoardKey& board) const;

    /// Gives the view up until `renew` takes the current one. An idle snapshot keeps no space from being
    /// reused, and its renewal needs no system call.
    void release();
    bool renew();

private:
    explicit LmdbSnapshot(const LmdbEnvironment& environment) : environment_(environment) {}

    const LmdbEnvironment& environment_;
    MDB_txn* transaction_ = nullptr;
};

/// A write transaction; rolled back unless committed. The environment must outlive it.
class LmdbWrite {
public:
    /// Waits for other processes' write transactions. Null if LMDB refuses.
    static std::unique_ptr<LmdbWrite> begin(const LmdbEnvironment& environment);
    ~LmdbWrite();
    LmdbWrite(const LmdbWrite&) = delete;
    LmdbWrite& operator=(const LmdbWrite&) = delete;

    std::int64_t changeCount(const BoardKey& board) const;

    /// False when LMDB fails; the transaction must then be rolled back.
    bool setChangeCount(const BoardKey& board, std::int64_t count);

    /// False if there is no space for it. It is then rolled back.
    bool commit();

private:
    explicit LmdbWrite(const LmdbEnvironment& environment) : environment_(environment) {}

    const LmdbEnvironment& environment_;
    MDB_txn* transaction_ = nullptr;
};

} // namespace tavel
