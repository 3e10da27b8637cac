#pragma once

#include "Mac/Retained.h"
#include "Platform/Pasteboard.h"
#include "Support/OwnerThread.h"

#import <AppKit/AppKit.h>

#include <functional>

namespace tavel {

/// A pasteboard of the pasteboard server. Contents outlive the process. The server has no transactions: a
/// program that polls can see the pasteboard between the clearing and the writing, or between two values.
class MacPasteboard final : public Pasteboard {
public:
    /// The general pasteboard without a name.
    explicit MacPasteboard(const std::optional<std::string>& name);

    /// The system's object for the pasteboard of that name, autoreleased; the general one without a name.
    /// Raises an exception, or returns nil, if the server cannot be reached.
    static NSPasteboard* _Nullable named(const std::optional<std::string>& name);

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override;
    std::vector<std::string> types() override;
    ReadAccess readAccess() override;
    std::optional<Bytes> string(std::string_view type, std::size_t limit) override;
    std::optional<Bytes> data(std::string_view type, std::size_t limit) override;
    FileList files(const FileListLimit& limit) override;
    bool canHold(const Representation& representation) override;
    std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) override;
    std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) override;
    std::optional<std::int64_t> addTypes(std::span<const Representation> representations) override;

private:
    std::optional<std::int64_t> countFromServer();
    bool isDenied() { return readAccess() == ReadAccess::denied; }
    std::optional<Bytes> wholeData(std::string_view type);
    std::optional<std::int64_t> replace(const std::function<bool(NSPasteboard* _Nonnull)>& write);

    [[no_unique_address]] OwnerThread owner_;
    Retained<NSPasteboard> pasteboard_;
    const bool isGeneral_;
    std::int64_t lastCount_ = 0; // the server's last answer, for when it gives none
};

} // namespace tavel
