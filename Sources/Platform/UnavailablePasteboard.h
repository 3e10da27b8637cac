#pragma once

#include "Platform/Pasteboard.h"

namespace tavel {

/// Stands for a pasteboard that cannot be opened: it is always empty, refuses every write, and never changes.
class UnavailablePasteboard final : public Pasteboard {
public:
    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override;
    std::vector<std::string> types() override;
    std::optional<std::string> availableType(std::span<const std::string_view> wanted) override;
    std::optional<Bytes> string(std::string_view type) override;
    std::optional<Bytes> data(std::string_view type) override;
    std::vector<std::string> filePaths() override;
    std::int64_t clearContents() override;
    bool setString(std::string_view text, std::string_view type) override;
    bool setData(const Bytes& data, std::string_view type) override;
    bool canHold(const Representation& representation) override;
    bool writeItems(std::span<const PasteboardItem> items) override;
    bool addTypes(std::span<const Representation> representations) override;
    bool update(const std::function<bool()>& steps) override;
};

} // namespace tavel
