#include "Linux/Store/PasteboardStore.h"

#include "Support/Error.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>

namespace tavel {

namespace {

// The number is the layout's. A program with another layout uses other files.
constexpr const char* indexName = "pasteboards-2.mdb";
constexpr const char* indexLockName = "pasteboards-2.mdb-lock"; // the name that LMDB gives it
constexpr const char* useName = "pasteboards-2.use";

/// Enough for LMDB's reader slots and its own record before them; a slot has the size of a processor's cache
/// line, at most 128 bytes.
constexpr std::size_t indexLockBytes = std::size_t{128} * 1024;

} // namespace

PasteboardStore::PasteboardStore(const std::filesystem::path& directory)
    : directory_(PrivateDirectory::open(directory)) {
    const std::filesystem::path index = directory / indexName;
    const StoreOpeningLock lock(directory);
    use_.emplace(directory / useName);
    if (use_->isAlone())
        openAnew(index);
    else
        changeCounts_.emplace(index);
    use_->share();
}

void PasteboardStore::openAnew(const std::filesystem::path& index) {
    unlinkat(directory_.descriptor(), indexName, 0);
    unlinkat(directory_.descriptor(), indexLockName, 0);
    allocateLockFile(index.parent_path() / indexLockName, indexLockBytes);
    changeCounts_.emplace(index);
    const auto transaction = LmdbWrite::begin(*changeCounts_);
    bool isDone = transaction != nullptr;
    for (const auto& [key, count] : contents_.tidy())
        isDone = isDone && transaction->setChangeCount(key, count);
    if (!isDone || !transaction->commit())
        throw Error("Pasteboard", 1, "The pasteboard store cannot be opened: " + index.string());
}

} // namespace tavel
