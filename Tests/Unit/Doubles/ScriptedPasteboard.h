#pragma once

#include "Platform/Pasteboard.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A pasteboard in memory. It keeps the interface's promises; a test can make it refuse what a platform may
/// refuse, be the other program that changes it, and see in which order it was used.
class ScriptedPasteboard final : public Pasteboard {
public:
    enum class Operation { setString, setData, canHold, writeItems, addTypes, update };

    /// Stands for every type where a refusal names one.
    static constexpr std::string_view anyType{};

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override { return changeCount(); }
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

    // What follows is the test's. Content and counts that a test looks at or sets leave no trace in the
    // calls.

    /// Another program clears the pasteboard and writes these items.
    void changeFromOutside(std::vector<PasteboardItem> items);
    void copyFromOutside(std::string_view text);
    void copyFilesFromOutside(std::span<const std::string> paths);

    /// From now on the operation fails for that type; an operation on items, if one of them has it.
    void refuse(Operation operation, std::string_view type = anyType);
    void refuseNothing();

    /// From now on the type is offered, but its data is not delivered.
    void withhold(std::string_view type) { withheld_.emplace(type); }

    /// Runs before each operation but `changeCount`, with the call as it is then recorded.
    void onCall(std::function<void(const std::string& call)> observer) { observer_ = std::move(observer); }

    /// Runs after each reading of the change count.
    void onCountRead(std::function<void()> observer) { countObserver_ = std::move(observer); }

    /// Every call but those of `changeCount`, oldest first: the operation's name and, where there is one, the
    /// type. What an update does stands between "update" and "end of update".
    const std::vector<std::string>& calls() const { return calls_; }

    void forgetCalls() { calls_.clear(); }

    const std::vector<PasteboardItem>& items() const { return items_; }

    /// What the first item has under the type, as it is.
    std::optional<std::string> content(std::string_view type) const;

    void setChangeCount(std::int64_t changeCount) { changeCount_ = changeCount; }

private:
    void record(std::string call);
    bool isRefused(Operation operation, std::string_view type) const;
    bool isRefused(Operation operation, std::span<const Representation> representations) const;
    bool put(const Bytes& data, std::string_view type);

    std::vector<PasteboardItem> items_;
    std::int64_t changeCount_ = 41;
    bool owned_ = false; // cleared through this object, and by nobody else since
    bool clearedInUpdate_ = false;
    std::set<std::pair<Operation, std::string>> refusals_;
    std::set<std::string, std::less<>> withheld_;
    std::vector<std::string> calls_;
    std::function<void(const std::string& call)> observer_;
    std::function<void()> countObserver_;
};

} // namespace tavel
