#pragma once

#include "Platform/Pasteboard.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A pasteboard in memory. It keeps the interface's promises; a test can make it refuse what a platform may
/// refuse, change it as another program would, and see the calls in their order. The test fails if data is
/// requested of a type that was not among the types when these were asked for last.
class ScriptedPasteboard final : public Pasteboard {
public:
    enum class Operation { canHold, replaceWithValues, replaceWithItems, addTypes };

    /// In a refusal: every type.
    static constexpr std::string_view anyType{};

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override { return changeCount(); }
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
    std::vector<std::string> calls_;
    std::map<std::string, std::size_t, std::less<>> limits_;
    std::function<void(const std::string& call)> observer_;
    std::function<void()> countObserver_;
    std::function<void()> writeObserver_;
};

} // namespace tavel
