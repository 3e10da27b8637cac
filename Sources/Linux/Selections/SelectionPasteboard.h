#pragma once

#include "Linux/Selections/DisplaySelections.h"
#include "Platform/Pasteboard.h"
#include "Support/OwnerThread.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// A selection of a display server as a pasteboard. This process keeps what it writes, and serves requestors.
/// What another program owns comes in the background of the event loop, within the limits of
/// TransferTimeOuts.
///
/// A display server has no change count: this one counts new contents, from 0, since the process began to
/// watch the selection; another process's count may differ. Nor has it items: all types of another program's
/// content are one item's, except the file URLs.
class SelectionPasteboard final : public Pasteboard {
public:
    /// The name is as `DisplaySelections::selection` wants it.
    SelectionPasteboard(std::shared_ptr<DisplaySelections> selections,
                        const std::optional<std::string>& name);

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override;
    bool watch(const std::vector<WantedValue>& values, const std::function<void()>& noticed) override;
    std::unique_ptr<Gathering> gather(const std::vector<WantedValue>& wanted, const Gathered& done) override;
    std::unique_ptr<Gathering> gatherForAddTypes(const std::vector<std::string>& required,
                                                 const Gathered& done) override;
    std::vector<std::string> types() override;
    std::optional<Bytes> string(std::string_view type, std::size_t limit) override;
    std::optional<Bytes> data(std::string_view type, std::size_t limit) override;
    FileList files(const FileListLimit& limit) override;
    bool canHold(const Representation& representation) override;
    std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) override;
    std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) override;
    std::optional<std::int64_t> addTypes(std::span<const Representation> representations) override;

private:
    using Items = pasteboardItems::Items;

    std::shared_ptr<const OwnedContent> ownContent();
    std::optional<std::int64_t> replace(std::optional<Items> items);
    std::optional<OwnedContent> otherProgramsContent();
    bool takeOverFiles(Items& items) const;
    std::optional<Bytes> otherProgramsData(std::string_view type, std::size_t limit) const;
    std::optional<Bytes> otherProgramsFileUrl(std::size_t limit) const;

    [[no_unique_address]] OwnerThread owner_;
    std::shared_ptr<DisplaySelections> selections_; // keeps the selection
    Selection& selection_;
};

} // namespace tavel
