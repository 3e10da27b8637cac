#pragma once

#include "Platform/Pasteboard.h"

namespace tavel {

/// Replaces a pasteboard that cannot be opened: it is always empty, refuses every write, and never changes.
class UnavailablePasteboard final : public Pasteboard {
public:
    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override;
    bool watch(const std::vector<WantedValue>&, const std::function<void()>&) override { return true; }
    std::vector<std::string> types() override;
    std::optional<Bytes> string(std::string_view type, std::size_t limit) override;
    std::optional<Bytes> data(std::string_view type, std::size_t limit) override;
    FileList files(const FileListLimit& limit) override;
    bool canHold(const Representation& representation) override;
    std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) override;
    std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) override;
    std::optional<std::int64_t> addTypes(std::span<const Representation> representations) override;
};

} // namespace tavel
