#pragma once

#include <cstddef>
#include <filesystem>

namespace tavel {

/// Held while a process opens a store, so that it meets no file that another process is still creating. The
/// system releases it when the process ends, however it ends.
class StoreOpeningLock {
public:
    /// Waits until no other process holds it. Throws Error.
    explicit StoreOpeningLock(const std::filesystem::path& directory);
    ~StoreOpeningLock();
    StoreOpeningLock(const StoreOpeningLock&) = delete;
    StoreOpeningLock& operator=(const StoreOpeningLock&) = delete;

private:
    int descriptor_;
};

/// Creates LMDB's lock file and allocates all of its space. LMDB only sets its length and maps it; on a full
/// disk, touching the mapping would then kill the process (SIGBUS). Throws Error when there is no space. To
/// be called before this process opens the store: closing any descriptor of a file releases the process's
/// locks on it (POSIX fcntl).
void allocateLockFile(const std::filesystem::path& file, std::size_t bytes);

/// A process's use of a store: a lock (flock) on a file, held while this object lives. The system releases it
/// when the process ends, however it ends.
class StoreUse {
public:
    /// To be called while the opening lock is held. Throws Error.
    explicit StoreUse(const std::filesystem::path& file);
    ~StoreUse();
    StoreUse(const StoreUse&) = delete;
    StoreUse& operator=(const StoreUse&) = delete;

    /// Whether no other process uses the store.
    bool isAlone() const { return isAlone_; }

    /// Lets others use it as well. To be called before the opening lock is released.
    void share() const;

private:
    int descriptor_;
    bool isAlone_;
};

} // namespace tavel
