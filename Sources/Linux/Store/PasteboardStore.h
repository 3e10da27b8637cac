#pragma once

#include "Linux/Store/ContentFiles.h"
#include "Linux/Store/LmdbEnvironment.h"
#include "Linux/Store/StoreFiles.h"
#include "Support/PrivateDirectory.h"

#include <filesystem>
#include <optional>

namespace tavel {

/// The pasteboards of a user, in a directory that all of the user's processes share: the change counts in
/// LMDB, and a file for each content. Each process holds a lock while it has the store open.
///
/// LMDB trusts its file, and a damaged one would end the process. So whoever opens the store while nobody
/// else uses it makes LMDB's file anew, from the names of the contents' files, each of which is checked. A
/// process must not open one directory's store twice.
class PasteboardStore {
public:
    /// Throws Error.
    explicit PasteboardStore(const std::filesystem::path& directory);

    const LmdbEnvironment& changeCounts() const { return *changeCounts_; }
    const ContentFiles& contents() const { return contents_; }

private:
    void openAnew(const std::filesystem::path& index);

    PrivateDirectory directory_;
    ContentFiles contents_{directory_};
    std::optional<StoreUse> use_;
    std::optional<LmdbEnvironment> changeCounts_;
};

} // namespace tavel
