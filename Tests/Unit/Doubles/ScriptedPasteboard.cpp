#include "Tests/Unit/Doubles/ScriptedPasteboard.h"

#include "Platform/PasteboardItems.h"
#include "Platform/PasteboardTypes.h"
#include "Support/FileUrl.h"
#include "Support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

const Representation* find(const PasteboardItem& item, std::string_view type) {
    const auto found = std::ranges::find(item, type, &Representation::type);
    return found == item.end() ? nullptr : &*found;
}

const Representation* find(const std::vector<PasteboardItem>& items, std::string_view type) {
    for (const PasteboardItem& item : items) {
        if (const Representation* const found = find(item, type))
            return found;
    }
    return nullptr;
}

std::string call(std::string_view operation, std::string_view type) {
    return std::string(operation) + " " + std::string(type);
}

} // namespace

std::int64_t ScriptedPasteboard::changeCount() {
    const std::int64_t count = changeCount_;
    if (countObserver_)
        countObserver_();
    return count;
}

std::vector<std::string> ScriptedPasteboard::types() {
    record("types");
    std::vector<std::string> types = currentTypes();
    seenTypes_ = {types.begin(), types.end()};
    return types;
}

std::vector<std::string> ScriptedPasteboard::currentTypes() const {
    std::vector<std::string> types;
    for (const PasteboardItem& item : items_) {
        for (const Representation& representation : item) {
            if (std::ranges::find(types, representation.type) == types.end())
                types.push_back(representation.type);
        }
    }
    return types;
}

std::optional<Bytes> ScriptedPasteboard::string(std::string_view type, std::size_t limit) {
    record(call("string", type));
    limits_.insert_or_assign(std::string(type), limit);
    if (!isReadable(type))
        return std::nullopt;
    std::optional<std::string> text;
    for (const PasteboardItem& item : items_) {
        const Representation* const found = find(item, type);
        if (found == nullptr)
            continue;
        text = text ? *text + "\n" : std::string();
        *text += found->data.view();
        if (type != pasteboardType::string)
            break;
    }
    if (!text || !isUtf8(*text))
        return std::nullopt;
    return Bytes::adopt(std::move(*text)).slice(0, limit + 1);
}

std::optional<Bytes> ScriptedPasteboard::data(std::string_view type, std::size_t limit) {
    record(call("data", type));
    limits_.insert_or_assign(std::string(type), limit);
    if (!isReadable(type))
        return std::nullopt;
    const Representation* const found = find(items_, type);
    return found == nullptr ? std::nullopt : std::optional(found->data.slice(0, limit + 1));
}

FileList ScriptedPasteboard::files(const FileListLimit& limit) {
    record("files");
    if (readAccess_ == ReadAccess::denied)
        return {};
    if (isOffered(pasteboardType::fileUrl) && !hasCome(pasteboardType::fileUrl))
        return {};
    FileListBuilder files(limit);
    for (const PasteboardItem& item : items_) {
        if (const Representation* const url = find(item, pasteboardType::fileUrl))
            files.addUrl(url->data.view());
    }
    return files.take();
}

bool ScriptedPasteboard::isReadable(std::string_view type) const {
    EXPECT_TRUE(seenTypes_.contains(type)) << "nobody has seen that " << type << " is offered";
    return readAccess_ != ReadAccess::denied && !withheld_.contains(type) && hasCome(type);
}

bool ScriptedPasteboard::hasCome(std::string_view type) const {
    const bool has = !holdsValues_ || !isForeign_ || come_.contains(type);
    EXPECT_TRUE(has) << "nobody has gathered " << type;
    return has;
}

bool ScriptedPasteboard::isOffered(std::string_view type) const {
    return find(items_, type) != nullptr;
}

bool ScriptedPasteboard::canHold(const Representation& representation) {
    record(call("canHold", representation.type));
    return !isRefused(Operation::canHold, representation.type);
}

std::optional<std::int64_t> ScriptedPasteboard::replaceWithValues(std::span<const PasteboardValue> values) {
    std::string call = "replaceWithValues";
    for (const PasteboardValue& value : values)
        call += (value.form == PasteboardValue::Form::text ? " text:" : " data:") + value.type;
    record(std::move(call));
    return replace(Operation::replaceWithValues, pasteboardItems::fromValues(values).value());
}

std::optional<std::int64_t> ScriptedPasteboard::replaceWithItems(std::span<const PasteboardItem> items) {
    record("replaceWithItems");
    return replace(Operation::replaceWithItems, {items.begin(), items.end()});
}

/// A refusal leaves the pasteboard cleared.
std::optional<std::int64_t> ScriptedPasteboard::replace(Operation operation,
                                                        std::vector<PasteboardItem> items) {
    ++changeCount_;
    items_.clear();
    if (isRefused(operation, anyType) ||
        std::ranges::any_of(items, [&](const PasteboardItem& item) { return isRefused(operation, item); }))
        return std::nullopt;
    items_ = std::move(items);
    return written();
}

/// The change count of a write.
std::int64_t ScriptedPasteboard::written() {
    const std::int64_t count = changeCount_;
    noticed_ = count;
    isForeign_ = false;
    if (writeObserver_)
        writeObserver_();
    return count;
}

std::optional<std::int64_t> ScriptedPasteboard::addTypes(std::span<const Representation> representations) {
    record("addTypes");
    const bool isTheirs = holdsValues_ && isForeign_ && !isTakenOver_;
    if (items_.empty() || isTheirs || isRefused(Operation::addTypes, representations))
        return std::nullopt;
    ++changeCount_;
    for (const Representation& added : representations)
        pasteboardItems::putOnFirstItem(items_, added.type, added.data);
    return written();
}

void ScriptedPasteboard::changeFromOutside(std::vector<PasteboardItem> items) {
    items_ = std::move(items);
    ++changeCount_;
    isForeign_ = true;
    isTakenOver_ = false;
    come_.clear();
    if (!holdsNews_)
        bringWatchedValues();
}

void ScriptedPasteboard::copyFromOutside(std::string_view text) {
    changeFromOutside({{{std::string(pasteboardType::string), Bytes::copyOf(text)}}});
}

void ScriptedPasteboard::copyFilesFromOutside(std::span<const std::string> paths) {
    std::vector<PasteboardItem> items;
    items.reserve(paths.size());
    for (const std::string& path : paths)
        items.push_back({{std::string(pasteboardType::fileUrl), Bytes::adopt(fileUrlFromPath(path))}});
    changeFromOutside(std::move(items));
}

/// A gathering that the test ends, unless its destruction does.
class ScriptedPasteboard::HeldGathering final : public Gathering {
public:
    HeldGathering(ScriptedPasteboard& board, std::vector<std::string> types, Gathered gathered)
        : wanted(std::move(types)), count(board.noticedChangeCount()), done(std::move(gathered)),
          board_(board) {
        board_.gatherings_.push_back(this);
    }
    ~HeldGathering() override { std::erase(board_.gatherings_, this); }
    HeldGathering(const HeldGathering&) = delete;
    HeldGathering& operator=(const HeldGathering&) = delete;

    std::vector<std::string> wanted;
    bool takesOver = false;
    std::int64_t count;
    Gathered done;

private:
    ScriptedPasteboard& board_;
};

bool ScriptedPasteboard::watch(const std::vector<WantedValue>& values, const std::function<void()>& noticed) {
    EXPECT_TRUE(watched_.empty()) << "it is watched already";
    watched_ = values;
    onNoticed_ = noticed;
    return tellsNews_;
}

std::unique_ptr<Gathering> ScriptedPasteboard::gather(const std::vector<WantedValue>& wanted,
                                                      const Gathered& done) {
    std::vector<std::string> types;
    for (const WantedValue& value : wanted) {
        gatheredLimits_.insert_or_assign(value.type, value.limit);
        if (isOffered(value.type) && !come_.contains(value.type))
            types.push_back(value.type);
    }
    if (holdsValues_ && isForeign_ && !types.empty())
        return std::make_unique<HeldGathering>(*this, std::move(types), done);
    done(true);
    return nullptr;
}

std::unique_ptr<Gathering> ScriptedPasteboard::gatherForAddTypes(const std::vector<std::string>& required,
                                                                 const Gathered& done) {
    required_ = required;
    if (!holdsValues_ || !isForeign_) {
        done(true);
        return nullptr;
    }
    auto held = std::make_unique<HeldGathering>(*this, currentTypes(), done);
    held->takesOver = true;
    return held;
}

void ScriptedPasteboard::deliver() {
    ASSERT_FALSE(gatherings_.empty()) << "nobody gathers anything";
    HeldGathering& held = *gatherings_.front();
    gatherings_.erase(gatherings_.begin());
    const Gathered done = std::exchange(held.done, nullptr);
    const bool isCurrent = held.count == changeCount_;
    if (isCurrent) {
        come_.insert(held.wanted.begin(), held.wanted.end());
        const auto isMissing = [this](const std::string& type) {
            return isOffered(type) && withheld_.contains(type);
        };
        isTakenOver_ = held.takesOver && std::ranges::none_of(required_, isMissing);
    }
    done(isCurrent); // the gathering may go
}

std::vector<std::string> ScriptedPasteboard::awaited() const {
    std::vector<std::string> types;
    for (const HeldGathering* const held : gatherings_)
        types.insert(types.end(), held->wanted.begin(), held->wanted.end());
    return types;
}

std::size_t ScriptedPasteboard::gatheredLimitOf(std::string_view type) const {
    const auto found = gatheredLimits_.find(type);
    return found == gatheredLimits_.end() ? 0 : found->second;
}

void ScriptedPasteboard::holdNews(std::int64_t noticed) {
    holdsNews_ = true;
    noticed_ = noticed;
}

void ScriptedPasteboard::bringWatchedValues() {
    for (const WantedValue& value : watched_)
        come_.insert(value.type);
}

void ScriptedPasteboard::notice() {
    noticed_ = changeCount_;
    bringWatchedValues();
    if (tellsNews_ && onNoticed_)
        onNoticed_();
}

void ScriptedPasteboard::refuse(Operation operation, std::string_view type) {
    refusals_.emplace(operation, type);
}

void ScriptedPasteboard::refuseNothing() {
    refusals_.clear();
}

std::optional<std::string> ScriptedPasteboard::content(std::string_view type) const {
    const Representation* const found = items_.empty() ? nullptr : find(items_.front(), type);
    return found == nullptr ? std::nullopt : std::optional<std::string>(found->data.view());
}

std::size_t ScriptedPasteboard::limitOf(std::string_view type) const {
    const auto found = limits_.find(type);
    return found == limits_.end() ? 0 : found->second;
}

void ScriptedPasteboard::record(std::string call) {
    if (observer_)
        observer_(call);
    calls_.push_back(std::move(call));
}

bool ScriptedPasteboard::isRefused(Operation operation, std::string_view type) const {
    return refusals_.contains({operation, std::string(anyType)}) ||
           refusals_.contains({operation, std::string(type)});
}

bool ScriptedPasteboard::isRefused(Operation operation,
                                   std::span<const Representation> representations) const {
    return isRefused(operation, anyType) ||
           std::ranges::any_of(representations, [&](const Representation& representation) {
               return isRefused(operation, representation.type);
           });
}

} // namespace tavel
