#pragma once

#include "Linux/Store/LmdbEnvironment.h"
#include "Linux/Store/StoredContent.h"
#include "Platform/Pasteboard.h"
#include "Support/OwnerThread.h"

#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// A pasteboard in the embedded store. All objects of one name, in any process of the user, are the same
/// pasteboard. Contents outlive the processes. Reads never block; a write waits for another process's write
/// to end. Large payloads are not copied when they are read: they share the store's mapping.
class StorePasteboard final : public Pasteboard {
public:
    StorePasteboard(std::shared_ptr<const LmdbEnvironment> environment,
                    const std::optional<std::string>& name);

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override { return changeCount(); }
    std::vector<std::string> types() override;
    std::optional<Bytes> string(std::string_view type, std::size_t limit) override;
    std::optional<Bytes> data(std::string_view type, std::size_t limit) override;
    FileList files(const FileListLimit& limit) override;
    bool canHold(const Representation& representation) override;
    std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) override;
    std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) override;
    std::optional<std::int64_t> addTypes(std::span<const Representation> representations) override;

private:
    struct View;

    View view();
    StoredContent contentOf(MDB_txn* transaction) const;
    bool write(const std::function<bool(StoredContent&)>& change);
    std::optional<std::int64_t> replace(std::span<const PasteboardItem> items);
    void clear();

    [[no_unique_address]] OwnerThread owner_;
    std::shared_ptr<const LmdbEnvironment> environment_;
    BoardKey key_;
    std::shared_ptr<LmdbSnapshot> countSnapshot_; // idle between readings
};

} // namespace tavel
