#pragma once

#include "Linux/Store/BoardKey.h"
#include "Linux/Store/ContentFile.h"
#include "Support/PrivateDirectory.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>

namespace tavel {

/// The files with the contents of all pasteboards, one for each pasteboard and change count. A content that
/// was replaced is removed with its file, so that nothing of it stays; whoever has it open reads on.
///
/// Only the holder of the store's write transaction may call what writes or removes, but for `removeOlder`.
class ContentFiles {
public:
    /// The directory must outlive this object.
    explicit ContentFiles(const PrivateDirectory& directory) : directory_(directory) {}

    /// nullopt if there is no such content, or if its file is damaged.
    std::optional<ContentFile> open(const BoardKey& key, std::int64_t count) const;

    /// Writes the content durably. On false, nothing is left of it.
    bool write(const BoardKey& key, std::int64_t count, std::span<const PasteboardItem> items) const;

    void remove(const BoardKey& key, std::int64_t count) const;

    /// Removes the contents of that pasteboard from before that count. Anybody may call this at any time.
    void removeOlder(const BoardKey& key, std::int64_t count) const;

    /// Brings order to what earlier processes left: of each pasteboard only the latest content stays, and an
    /// empty one takes the place of a damaged one. Gives the change counts.
    std::map<BoardKey, std::int64_t> tidy() const;

private:
    const PrivateDirectory& directory_;
};

} // namespace tavel
