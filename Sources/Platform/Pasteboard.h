#pragma once

#include "Platform/FileList.h"
#include "Support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// One type of an item with its data.
struct Representation {
    /// A uniform type identifier: letters, digits, hyphens and dots, with at least one dot. A platform may
    /// take two names for the same type if only the case of their letters differs, and may rename or refuse a
    /// type that is no such identifier.
    std::string type;
    Bytes data;
};

/// One thing on a pasteboard (a file, a piece of text) in its several types.
using PasteboardItem = std::vector<Representation>;

/// A representation that is written by itself: as data, or as text in UTF-8 without a terminator, from which
/// a platform may derive older text types.
struct PasteboardValue {
    enum class Form { text, data };

    std::string type;
    Form form = Form::data;
    Bytes bytes;
};

/// What the system does when this process reads data that another program put on a pasteboard. Change counts
/// and types are never restricted.
enum class ReadAccess {
    free,   // hands them over
    asks,   // may ask the user first; the reader waits for the answer
    denied, // the user has refused it for good: there is nothing to read, and nobody waits
};

/// A value that a reader wants of a content, and the most bytes of it that are of use.
struct WantedValue {
    std::string type;
    std::size_t limit;
};

/// Other programs' values on their way to this process. Its destruction gives up what has not come, and what
/// was to run then does not run.
class Gathering {
public:
    virtual ~Gathering() = default;
};

/// A pasteboard that programs share, in AppKit's vocabulary. Its content is a list of items; the change count
/// numbers the contents. Main thread only.
///
/// The change count never goes back. It moves by one when anybody replaces the content or adds types to it.
///
/// A pasteboard that cannot be reached holds nothing and refuses every write; no operation throws.
///
/// Another program decides how large its content is. So whoever reads states a limit in bytes. Of a longer
/// value the result is the first `limit` + 1 bytes, which show that it is too long and are good for nothing
/// else: they may end within a character. A platform that receives a value in parts keeps no more than that.
///
/// Whoever reads data asks for the types first, and then for those that are offered: a request for any other
/// could make the system ask the user.
///
/// Where programs keep their contents themselves, a content has to come from its owner, who may take its time
/// or never answer. The reading operations do not wait for it: they give what has come. `gather` fetches
/// values; the types come by themselves, and so do small values that `watch` names.
class Pasteboard {
public:
    /// Runs when a gathering has ended. `isCurrent` is false if the content was replaced meanwhile; no value
    /// of it can be read then.
    using Gathered = std::function<void(bool isCurrent)>;

    /// The most bytes of another program's content that a platform takes over to add types to it: 256 MiB.
    static constexpr std::size_t mostBytesTakenOver = std::size_t{256} << 20;

    virtual ~Pasteboard() = default;

    /// The change count, up to date.
    virtual std::int64_t changeCount() = 0;

    /// The change count of the latest content whose types, and values that `watch` names, are there or were
    /// given up. Costs no request to another process: for polling. Where a content has to come from its
    /// owner, this lags behind `changeCount`; elsewhere, by no more than the event loop does.
    virtual std::int64_t noticedChangeCount() = 0;

    /// From now on, `noticed` runs in the event loop after `noticedChangeCount` has moved, and these values
    /// come with the types of each content. False if the platform has no news of changes: then the change
    /// count has to be polled, and nothing has to come. To be called until it returns, and then no more.
    /// Where a content has to come from its owner, this call is what makes it come at all: without it, the
    /// noticed change count stays.
    virtual bool watch(const std::vector<WantedValue>&, const std::function<void()>&) { return false; }

    /// Fetches these values of the content with the noticed change count, one after the other, and runs
    /// `done` once, in which they can be read. At once and during this call, if nobody has to be asked for
    /// them; the result is null then. Types that are not offered are passed over, and so is what the owner
    /// does not deliver: one that stays silent, or goes on too slowly, is asked for nothing more.
    virtual std::unique_ptr<Gathering> gather(const std::vector<WantedValue>&, const Gathered& done) {
        done(true);
        return nullptr;
    }

    /// Like `gather`, for everything that `addTypes` has to take over from the content's owner. `addTypes`
    /// called in `done` fails if one of these types, the required ones, is offered and did not come. All
    /// others together, which only their own program can know, get a second.
    virtual std::unique_ptr<Gathering> gatherForAddTypes(const std::vector<std::string>&,
                                                         const Gathered& done) {
        done(true);
        return nullptr;
    }

    /// The types of all items of the content with the noticed change count, each once, in the order in which
    /// they first occur. A platform may list names of its own beside them, such as older names of the same
    /// types. At most `pasteboardType::mostTypes`; a type whose name exceeds
    /// `pasteboardType::longestNameBytes` is left out.
    virtual std::vector<std::string> types() = 0;

    /// What a reading operation would meet now. Cheap enough for a key that waits for it.
    virtual ReadAccess readAccess() { return ReadAccess::free; }

    /// The text under `type`, in UTF-8 without a terminator. Of public.utf8-plain-text the texts of all items
    /// that have it, joined by line feeds; of any other type the first item's. nullopt if no item has the
    /// type, if its data is no text, or if it has not come.
    virtual std::optional<Bytes> string(std::string_view type, std::size_t limit) = 0;

    /// The data under `type` of the first item that has it. nullopt if no item has it, or it has not come.
    virtual std::optional<Bytes> data(std::string_view type, std::size_t limit) = 0;

    /// The files that the items' file URLs name, in item order. An item without a file URL, or whose URL
    /// names no local path in UTF-8, is left out. They are gathered as `pasteboardType::fileUrl`. May be
    /// called without a look at the types.
    virtual FileList files(const FileListLimit& limit) = 0;

    /// Whether an item may hold this representation at all. Tells before anything is replaced that writing it
    /// would fail, as far as the platform can tell.
    virtual bool canHold(const Representation& representation) = 0;

    /// Replaces the content with one item that has these values, which are written one after the other; of
    /// two values of one type the item keeps the second. Without values the pasteboard is cleared. Gives the
    /// change count of the new content: that of this write, also if another program has written since.
    ///
    /// The replacement is one change: where the platform can, other programs see the content from before or
    /// the one from after. nullopt if the platform refuses a value or the write fails. The pasteboard is then
    /// cleared, where the platform can still clear it, but for values before the refused one.
    virtual std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) = 0;

    /// Replaces the content with these items, as `replaceWithValues` does. After a failure none of them is
    /// there.
    virtual std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) = 0;

    /// Adds types to the first item of the current content, whoever wrote it; everything else stays. This
    /// makes a new content, whose change count is returned as by `replaceWithValues`. nullopt if the first of
    /// them was not added: there is no item, the platform refused, or the content is another program's and
    /// was not gathered for this. A platform may then still fail to add others, without saying.
    virtual std::optional<std::int64_t> addTypes(std::span<const Representation> representations) = 0;
};

} // namespace tavel
