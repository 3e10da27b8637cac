#include "Linux/Contents/OwnedTargets.h"

#include "Linux/Contents/SelectionText.h"
#include "Linux/Contents/TargetNames.h"
#include "Linux/Contents/UriList.h"
#include "Platform/PasteboardTypes.h"

#include <algorithm>
#include <unordered_set>

namespace tavel {

namespace {

/// The texts of all items. A single text is passed on unchecked; its reader decides whether it is UTF-8.
std::optional<Bytes> textOf(const pasteboardItems::Items& items) {
    const auto hasText = [](const PasteboardItem& item) {
        return std::ranges::find(item, pasteboardType::string, &Representation::type) != item.end();
    };
    auto text = std::ranges::count_if(items, hasText) > 1
                    ? pasteboardItems::string(items, pasteboardType::string)
                    : std::nullopt;
    return text ? text : pasteboardItems::data(items, pasteboardType::string);
}

std::optional<TargetValue> textForTarget(const Bytes& text, const std::string& target) {
    if (target == targetName::latin1String) {
        auto latin1 = latin1Of(text);
        return latin1 ? std::optional(TargetValue{target, std::move(*latin1)}) : std::nullopt;
    }
    // The owner chooses the encoding of TEXT and states it in the type.
    return TargetValue{target == targetName::anyText ? std::string(targetName::utf8String) : target, text};
}

TargetValue filesForTarget(const std::vector<std::string>& urls, const std::string& target) {
    return {target, Bytes::adopt(target == targetName::uriList ? uriListOf(urls) : copiedFilesOf(urls))};
}

/// text/html is UTF-8 without a byte-order mark on X11; Chromium takes the mark for the page's first
/// character. Readers need no mark and no declaration to take it for UTF-8.
TargetValue htmlForTarget(const Bytes& html, const std::string& target) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const std::size_t start = html.view().starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    return {target, html.slice(start, html.size())};
}

} // namespace

std::vector<std::string> contentTargets(const pasteboardItems::Items& items) {
    std::vector<std::string> targets;
    std::unordered_set<std::string> seen;
    for (const std::string& type : pasteboardItems::types(items)) {
        for (std::string& target : targetName::offeredFor(type)) {
            if (seen.insert(target).second)
                targets.push_back(std::move(target));
        }
    }
    return targets;
}

std::optional<TargetValue> valueForTarget(const pasteboardItems::Items& items, const std::string& target) {
    const auto type = targetName::typeOf(target);
    if (!type)
        return std::nullopt;
    const auto data = *type == pasteboardType::string ? textOf(items) : pasteboardItems::data(items, *type);
    const std::vector<std::string> offered = targetName::offeredFor(*type);
    if (!data || std::ranges::find(offered, target) == offered.end())
        return std::nullopt;
    if (*type == pasteboardType::string)
        return textForTarget(*data, target);
    if (*type == pasteboardType::fileUrl)
        return filesForTarget(pasteboardItems::fileUrls(items), target);
    if (*type == pasteboardType::html)
        return htmlForTarget(*data, target);
    return TargetValue{target, *data};
}

} // namespace tavel
