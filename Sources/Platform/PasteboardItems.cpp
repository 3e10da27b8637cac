#include "Platform/PasteboardItems.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"

#include <algorithm>
#include <unordered_set>

namespace tavel::pasteboardItems {

namespace {

const Bytes* find(const PasteboardItem& item, std::string_view type) {
    const auto found = std::ranges::find(item, type, &Representation::type);
    return found != item.end() ? &found->data : nullptr;
}

/// The items' data under the type, in item order.
std::vector<Bytes> all(const Items& items, std::string_view type) {
    std::vector<Bytes> found;
    for (const PasteboardItem& item : items) {
        if (const Bytes* const data = find(item, type))
            found.push_back(*data);
    }
    return found;
}

} // namespace

std::vector<std::string> types(const Items& items) {
    std::vector<std::string> types;
    std::unordered_set<std::string_view> seen;
    for (const PasteboardItem& item : items) {
        for (const Representation& representation : item) {
            if (seen.insert(representation.type).second)
                types.push_back(representation.type);
        }
    }
    return types;
}

std::optional<Bytes> string(const Items& items, std::string_view type) {
    if (type != pasteboardType::string) {
        auto text = data(items, type);
        return text && isUtf8(text->view()) ? text : std::nullopt;
    }
    std::vector<Bytes> texts = all(items, type);
    std::erase_if(texts, [](const Bytes& text) { return !isUtf8(text.view()); });
    if (texts.empty())
        return std::nullopt;
    if (texts.size() == 1)
        return texts.front();
    std::string joined(texts.front().view());
    for (const Bytes& text : std::span(texts).subspan(1))
        joined.append("\n").append(text.view());
    return Bytes::adopt(std::move(joined));
}

std::optional<Bytes> data(const Items& items, std::string_view type) {
    for (const PasteboardItem& item : items) {
        if (const Bytes* const data = find(item, type))
            return *data;
    }
    return std::nullopt;
}

std::vector<std::string> fileUrls(const Items& items) {
    std::vector<std::string> urls;
    for (const Bytes& url : all(items, pasteboardType::fileUrl))
        urls.emplace_back(url.view());
    return urls;
}

std::optional<Items> fromValues(std::span<const PasteboardValue> values) {
    Items items;
    for (const PasteboardValue& value : values) {
        if (value.form == PasteboardValue::Form::text && !isUtf8(value.bytes.view()))
            return std::nullopt;
        putOnFirstItem(items, value.type, value.bytes);
    }
    return items;
}

void putOnFirstItem(Items& items, std::string_view type, const Bytes& data) {
    if (items.empty())
        items.emplace_back();
    const auto there = std::ranges::find(items.front(), type, &Representation::type);
    if (there != items.front().end())
        there->data = data;
    else
        items.front().push_back({std::string(type), data});
}

} // namespace tavel::pasteboardItems
