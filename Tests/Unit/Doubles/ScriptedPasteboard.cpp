#include "Tests/Unit/Doubles/ScriptedPasteboard.h"

#include "Platform/PasteboardItems.h"
#include "Platform/PasteboardTypes.h"
#include "Support/FileUrl.h"
#include "Support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>

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
    std::vector<std::string> types;
    for (const PasteboardItem& item : items_) {
        for (const Representation& representation : item) {
            if (std::ranges::find(types, representation.type) == types.end())
                types.push_back(representation.type);
        }
    }
    seenTypes_ = {types.begin(), types.end()};
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
    FileListBuilder files(limit);
    for (const PasteboardItem& item : items_) {
        if (const Representation* const url = find(item, pasteboardType::fileUrl))
            files.addUrl(url->data.view());
    }
    return files.take();
}

bool ScriptedPasteboard::isReadable(std::string_view type) const {
    EXPECT_TRUE(seenTypes_.contains(type)) << "nobody has seen that " << type << " is offered";
    return readAccess_ != ReadAccess::denied && !withheld_.contains(type);
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
    if (writeObserver_)
        writeObserver_();
    return count;
}

std::optional<std::int64_t> ScriptedPasteboard::addTypes(std::span<const Representation> representations) {
    record("addTypes");
    if (items_.empty() || isRefused(Operation::addTypes, representations))
        return std::nullopt;
    ++changeCount_;
    for (const Representation& added : representations)
        pasteboardItems::putOnFirstItem(items_, added.type, added.data);
    return written();
}

void ScriptedPasteboard::changeFromOutside(std::vector<PasteboardItem> items) {
    items_ = std::move(items);
    ++changeCount_;
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
