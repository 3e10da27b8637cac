#pragma once

#include "Support/Bytes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// One type of an item with its data.
struct Representation {
    std::string type;
    Bytes data;
};

/// One thing on a pasteboard (a file, a piece of text) in its several types.
using PasteboardItem = std::vector<Representation>;

/// A pasteboard that programs share, in AppKit's vocabulary. Its content is a list of items; the change count
/// numbers the contents. Main thread only.
///
/// The change count never goes back. It moves by one when anybody clears the pasteboard or adds types to its
/// content; writing after one's own clear does not move it. It can be read at any time and is up to date.
///
/// A pasteboard that cannot be reached holds nothing and refuses every write; no operation throws.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    virtual std::int64_t changeCount() = 0;

    /// The change count as far as news of it has come in by itself. Costs no request to another process, and
    /// lags behind `changeCount` by no more than the event loop does: for polling.
    virtual std::int64_t noticedChangeCount() = 0;

    /// The types of all items, each once, in the order in which they first occur.
    virtual std::vector<std::string> types() = 0;

    /// The first of `wanted`, in that order, that some item has.
    virtual std::optional<std::string> availableType(std::span<const std::string_view> wanted) = 0;

    /// The text under `type`, in UTF-8 without a terminator. Of public.utf8-plain-text the texts of all items
    /// that have it, joined by line feeds; of any other type the first item's. Nothing if no item has the
    /// type, or if what it has is no text. Another program may have to deliver the data: this can block until
    /// it did or the platform's time limit passed.
    virtual std::optional<Bytes> string(std::string_view type) = 0;

    /// The data under `type` of the first item that has it. Can block like `string`.
    virtual std::optional<Bytes> data(std::string_view type) = 0;

    /// The paths that the items' file URLs name, in item order. An item without a file URL, or whose URL
    /// names no local path in UTF-8, is left out.
    virtual std::vector<std::string> filePaths() = 0;

    /// Removes the content, takes the pasteboard over and gives the new change count (the old one if the
    /// pasteboard cannot be changed).
    virtual std::int64_t clearContents() = 0;

    /// Puts data under `type` on the first item, which comes into being with it; data that is there is
    /// replaced. False unless this object cleared the pasteboard and nobody else has since, and when the
    /// platform refuses the type or the data. After a failure the content is what it was before.
    virtual bool setString(std::string_view text, std::string_view type) = 0;
    virtual bool setData(const Bytes& data, std::string_view type) = 0;

    /// Whether an item may hold this representation at all. Tells before anything is cleared that writing it
    /// would fail, as far as the platform can tell.
    virtual bool canHold(const Representation& representation) = 0;

    /// Adds items behind those that are there, all or none. Fails like `setData`.
    virtual bool writeItems(std::span<const PasteboardItem> items) = 0;

    /// Adds types to the first item of the current content, whoever wrote it; everything else stays. This
    /// makes a new content: the change count moves. False if the first of them was not added: there is no
    /// item, or the platform refused. A platform may then still fail to add others, without saying.
    virtual bool addTypes(std::span<const Representation> representations) = 0;

    /// Runs `steps`, which calls this object's operations, as one change: where the platform can, other
    /// programs see the content from before or the one from after, nothing in between. True if the steps
    /// returned true and what they wrote is there. Otherwise what they wrote is lost in part or whole; their
    /// clearing holds where the platform can still clear at all. Not nested.
    virtual bool update(const std::function<bool()>& steps) = 0;
};

} // namespace tavel
