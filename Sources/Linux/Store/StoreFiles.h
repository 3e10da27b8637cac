#pragma once

#include <cstddef>
#include <filesystem>

namespace tavel {

/// Held while a process opens a store, so that it meets no file that another one is in the middle of making.
/// It goes with the process, however that ends.
class StoreOpeningLock {
public:
    /// Waits for its turn. Throws Error.
    explicit StoreOpeningLock(const std::filesystem::path& directory);
    ~StoreOpeningLock();
    StoreOpeningLock(const StoreOpeningLock&) = delete;
    StoreOpeningLock& operator=(const StoreOpeningLock&) = delete;

private:
    int descriptor_;
};

/// Creates LMDB's lock file with space for all of it. LMDB only sets its length and maps it into memory; on a
/// full disk, touching the mapping would then kill the process (SIGBUS). Throws Error when there is no space.
/// Only before this process has opened the store: closing any descriptor of the file ends a process's locks
/// on it (POSIX fcntl).
void allocateLockFile(const std::filesystem::path& file, std::size_t bytes);

/// Removes a store file that is shorter than the two pages it begins with, which LMDB would refuse for ever.
/// Such a file holds nothing: the disk was full, or its maker was killed, before it was made.
void removeUnfinishedStoreFile(const std::filesystem::path& file);

} // namespace tavel
