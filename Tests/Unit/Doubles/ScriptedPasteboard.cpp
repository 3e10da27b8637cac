#include "Tests/Unit/Doubles/ScriptedPasteboard.h"

#include "Platform/PasteboardItems.h"
#include "Platform/PasteboardTypes.h"
#include "Support/FileUrl.h"
#include "Support/Text.h"

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
    return types;
}

std::optional<Bytes> ScriptedPasteboard::string(std::string_view type) {
    record(call("string", type));
    if (withheld_.contains(type))
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
    return Bytes::adopt(std::move(*text));
}

std::optional<Bytes> ScriptedPasteboard::data(std::string_view type) {
    record(call("data", type));
    if (withheld_.contains(type))
        return std::nullopt;
    const Representation* const found = find(items_, type);
    return found == nullptr ? std::nullopt : std::optional(found->data);
}

std::vector<std::string> ScriptedPasteboard::filePaths() {
    record("filePaths");
    std::vector<std::string> paths;
    for (const PasteboardItem& item : items_) {
        const Representation* const url = find(item, pasteboardType::fileUrl);
        auto path = url == nullptr ? std::nullopt : pathFromFileUrl(url->data.view());
        if (path)
            paths.push_back(std::move(*path));
    }
    return paths;
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
    return changeCount_;
}

bool ScriptedPasteboard::addTypes(std::span<const Representation> representations) {
    record("addTypes");
    if (items_.empty() || isRefused(Operation::addTypes, representations))
        return false;
    ++changeCount_;
    for (const Representation& added : representations)
        pasteboardItems::putOnFirstItem(items_, added.type, added.data);
    return true;
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
