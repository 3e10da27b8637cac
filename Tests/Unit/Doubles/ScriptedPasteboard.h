#pragma once

#include "Platform/Pasteboard.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A pasteboard in memory. It keeps the interface's promises; a test can make it refuse what a platform may
/// refuse, change it as another program would, and see the calls in their order. The test fails if data is
/// requested of a type that was not among the types when these were asked for last. At first it holds every
/// content itself and tells nothing by itself.
class ScriptedPasteboard final : public Pasteboard {
public:
    enum class Operation { canHold, replaceWithValues, replaceWithItems, addTypes };

    /// In a refusal: every type.
    static constexpr std::string_view anyType{};

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override { return holdsNews_ ? noticed_ : changeCount_; }
    bool watch(const std::vector<WantedValue>& values, const std::function<void()>& noticed) override;
    std::unique_ptr<Gathering> gather(const std::vector<WantedValue>& wanted, const Gathered& done) override;
    std::unique_ptr<Gathering> gatherForAddTypes(const std::vector<std::string>& required,
                                                 const Gathered& done) override;
    std::vector<std::string> types() override;
    ReadAccess readAccess() override { return readAccess_; }
    std::optional<Bytes> string(std::string_view type, std::size_t limit) override;
    std::optional<Bytes> data(std::string_view type, std::size_t limit) override;
    FileList files(const FileListLimit& limit) override;
    bool canHold(const Representation& representation) override;
    std::optional<std::int64_t> replaceWithValues(std::span<const PasteboardValue> values) override;
    std::optional<std::int64_t> replaceWithItems(std::span<const PasteboardItem> items) override;
    std::optional<std::int64_t> addTypes(std::span<const Representation> representations) override;

    // For tests; none of it is recorded in `calls`.

    /// Another program clears the pasteboard and writes these items.
    void changeFromOutside(std::vector<PasteboardItem> items);
    void copyFromOutside(std::string_view text);
    void copyFilesFromOutside(std::span<const std::string> paths);

    /// From now on the operation fails for content that has that type.
    void refuse(Operation operation, std::string_view type = anyType);
    void refuseNothing();

    /// From now on the type is offered, but its data is not delivered.
    void withhold(std::string_view type) { withheld_.emplace(type); }

    /// From now on the user has chosen this. Denied, nothing can be read.
    void setReadAccess(ReadAccess access) { readAccess_ = access; }

    /// From now on, contents come from their owners: a gathering ends when the test delivers its values. The
    /// test fails if a value is read that was neither gathered nor named by `watch`.
    void holdValues() { holdsValues_ = true; }

    /// Ends the oldest gathering: its values are there, or the content was replaced meanwhile.
    void deliver();

    /// The types that are being gathered, the oldest gathering's first.
    std::vector<std::string> awaited() const;

    /// The limit with which the type was gathered last; 0 if it never was.
    std::size_t gatheredLimitOf(std::string_view type) const;

    /// The types without which the last content cannot be taken over.
    const std::vector<std::string>& required() const { return required_; }

    /// From now on `watch` is served: `notice` tells.
    void tellNews() { tellsNews_ = true; }

    /// The values that `watch` named.
    const std::vector<WantedValue>& watched() const { return watched_; }

    /// From now on, another program's content is noticed when the test says so. `noticed` is the count until
    /// then.
    void holdNews(std::int64_t noticed);
    void holdNews() { holdNews(changeCount_); }

    /// The types of the current content, and the small values, are there.
    void notice();

    /// The observer runs before each operation but `changeCount` and `readAccess`, with the call as `calls`
    /// records it.
    void onCall(std::function<void(const std::string& call)> observer) { observer_ = std::move(observer); }

    /// The observer runs after each reading of the change count.
    void onCountRead(std::function<void()> observer) { countObserver_ = std::move(observer); }

    /// The observer runs after each write that succeeds, before the writer has its result.
    void onWritten(std::function<void()> observer) { writeObserver_ = std::move(observer); }

    /// Every call but those of `changeCount` and `readAccess`, oldest first: the operation's name and, where
    /// there is one, the type. The values of `replaceWithValues` follow in their order, each with its form
    /// and type.
    const std::vector<std::string>& calls() const { return calls_; }

    void forgetCalls() { calls_.clear(); }

    /// The limit with which the type was read last; 0 if it never was.
    std::size_t limitOf(std::string_view type) const;

    const std::vector<PasteboardItem>& items() const { return items_; }

    /// The first item's data under the type, unchecked.
    std::optional<std::string> content(std::string_view type) const;

    void setChangeCount(std::int64_t changeCount) { changeCount_ = changeCount; }

private:
    class HeldGathering;

    std::vector<std::string> currentTypes() const;
    bool hasCome(std::string_view type) const;
    void bringWatchedValues();
    bool isOffered(std::string_view type) const;
    void record(std::string call);
    bool isReadable(std::string_view type) const;
    bool isRefused(Operation operation, std::string_view type) const;
    bool isRefused(Operation operation, std::span<const Representation> representations) const;
    std::int64_t written();
    std::optional<std::int64_t> replace(Operation operation, std::vector<PasteboardItem> items);

    std::vector<PasteboardItem> items_;
    std::int64_t changeCount_ = 41;
    std::set<std::pair<Operation, std::string>> refusals_;
    std::set<std::string, std::less<>> withheld_;
    std::set<std::string, std::less<>> seenTypes_; // the last answer
    ReadAccess readAccess_ = ReadAccess::free;

    bool holdsValues_ = false;
    bool isForeign_ = false;                  // the current content is another program's
    std::set<std::string, std::less<>> come_; // of the current content
    std::vector<HeldGathering*> gatherings_;  // oldest first
    std::map<std::string, std::size_t, std::less<>> gatheredLimits_;
    std::vector<std::string> required_;
    bool isTakenOver_ = false; // the current content was gathered for `addTypes`

    bool tellsNews_ = false;
    bool holdsNews_ = false;
    std::int64_t noticed_ = 0; // while news is held
    std::vector<WantedValue> watched_;
    std::function<void()> onNoticed_;

    std::vector<std::string> calls_;
    std::map<std::string, std::size_t, std::less<>> limits_;
    std::function<void(const std::string& call)> observer_;
    std::function<void()> countObserver_;
    std::function<void()> writeObserver_;
};

} // namespace tavel
