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

/// Removes a store file that is shorter than its two header pages, which LMDB would refuse for ever. Such a
/// file holds no data: the disk was full, or the process that created it was killed, before it was complete.
void removeUnfinishedStoreFile(const std::filesystem::path& file);

} // namespace tavel
