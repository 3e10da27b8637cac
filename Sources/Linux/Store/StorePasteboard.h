#pragma once

#include "Linux/Store/CommitWatch.h"
#include "Linux/Store/PasteboardStore.h"
#include "Platform/Pasteboard.h"
#include "Support/OwnerThread.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// A pasteboard in the embedded store. All objects of one name, in any process of the user, are the same
/// pasteboard. Contents outlive the processes. Reads never block; a write waits for another process's write
/// to end.
class StorePasteboard final : public Pasteboard {
public:
    StorePasteboard(std::shared_ptr<const PasteboardStore> store, const std::optional<std::string>& name);

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override { return changeCount(); }
    bool watch(const std::vector<WantedValue>& values, const std::function<void()>& noticed) override;
    std::vector<std::string> types() override;
    std::optional<Bytes> string(std::string_view type, std::size_t limit) override;
    std::optional<Bytes> data(std::string_view type, std::size_t limit) override;
    FileList files(const FileListLimit& limit) override;
    bool canHold(const Representation& representation) override;
    std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) override;
    std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) override;
    std::optional<std::int64_t> addTypes(std::span<const Representation> representations) override;

private:
    std::optional<ContentFile> content();
    std::optional<std::int64_t> replace(std::span<const PasteboardItem> items);
    std::optional<std::int64_t> commit(std::unique_ptr<LmdbWrite> transaction,
                                       std::span<const PasteboardItem> items);
    void discard(std::int64_t count);
    void clear();

    [[no_unique_address]] OwnerThread owner_;
    std::shared_ptr<const PasteboardStore> store_;
    BoardKey key_;
    std::unique_ptr<LmdbSnapshot> countSnapshot_; // idle between readings
    CommitWatch commits_;
    std::int64_t watchedCount_ = 0; // the change count at the last look, while commits are watched
};

} // namespace tavel
