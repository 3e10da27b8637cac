#include "Linux/X11/Selections/X11Pasteboard.h"

#include "Linux/Contents/SelectionText.h"
#include "Linux/Contents/TargetNames.h"
#include "Linux/Contents/UriList.h"
#include "Platform/PasteboardTypes.h"
#include "Support/FileUrl.h"
#include "Support/Text.h"

#include <glib.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

bool canHoldAll(std::span<const Representation> representations) {
    return std::ranges::all_of(representations,
                               [](const auto& one) { return targetName::canBeType(one.type); });
}

/// The value as data of the type; nullopt if it is malformed for that type.
std::optional<Bytes> dataFrom(const SelectionValue& value, std::string_view type) {
    if (type == pasteboardType::string)
        return plainTextOf(value);
    return type == "public.html" ? htmlOf(value) : value.bytes;
}

} // namespace

X11Pasteboard::X11Pasteboard(std::shared_ptr<X11Selections> selections,
                             const std::optional<std::string>& name)
    : selections_(std::move(selections)), selection_(selections_->selection(name)) {}

std::int64_t X11Pasteboard::changeCount() {
    selections_->synchronize();
    return noticedChangeCount();
}

std::int64_t X11Pasteboard::noticedChangeCount() {
    owner_.assertCurrent();
    return selection_.changeCount;
}

/// What this process owns of the selection; null if another program has to be asked. Brings the news of who
/// owns the selection up to date.
std::shared_ptr<const X11Pasteboard::Items> X11Pasteboard::ownContent() {
    owner_.assertCurrent();
    selections_->synchronize();
    // Once the server is gone, nobody can ask for what this process owned.
    return selections_->connection().isLost() ? std::make_shared<const Items>() : selection_.owned;
}

std::vector<std::string> X11Pasteboard::types() {
    if (const auto own = ownContent())
        return pasteboardItems::types(*own);
    std::vector<std::string> types;
    std::unordered_set<std::string> seen;
    for (const std::string& target : selections_->targets(selection_)) {
        auto type = targetName::typeOf(target);
        if (type && seen.insert(*type).second)
            types.push_back(std::move(*type));
    }
    return types;
}

std::optional<Bytes> X11Pasteboard::string(std::string_view type) {
    if (const auto own = ownContent())
        return pasteboardItems::string(*own, type);
    auto text = otherProgramsData(type);
    return text && isUtf8(text->view()) ? text : std::nullopt;
}

std::optional<Bytes> X11Pasteboard::data(std::string_view type) {
    const auto own = ownContent();
    return own != nullptr ? pasteboardItems::data(*own, type) : otherProgramsData(type);
}

std::vector<std::string> X11Pasteboard::filePaths() {
    const auto own = ownContent();
    std::vector<std::string> paths;
    for (const std::string& url :
         own != nullptr ? pasteboardItems::fileUrls(*own) : otherProgramsFileUrls()) {
        if (auto path = pathFromFileUrl(url))
            paths.push_back(std::move(*path));
    }
    return paths;
}

std::optional<Bytes> X11Pasteboard::otherProgramsData(std::string_view type) {
    if (type == pasteboardType::fileUrl) {
        const std::vector<std::string> urls = otherProgramsFileUrls();
        return urls.empty() ? std::nullopt : std::optional(Bytes::copyOf(urls.front()));
    }
    for (const std::string& target : targetName::giving(type, selections_->targets(selection_))) {
        const auto value = selections_->read(selection_, target);
        if (auto data = value ? dataFrom(*value, type) : std::nullopt)
            return data;
    }
    return std::nullopt;
}

std::vector<std::string> X11Pasteboard::otherProgramsFileUrls() {
    for (const std::string& target :
         targetName::giving(pasteboardType::fileUrl, selections_->targets(selection_))) {
        const auto value = selections_->read(selection_, target);
        if (!value || value->format != 8)
            continue;
        const std::string_view text = value->bytes.view();
        std::vector<std::string> uris =
            target == targetName::uriList ? urisInList(text) : urisInCopiedFiles(text);
        std::ranges::transform(uris, uris.begin(),
                               [](const std::string& uri) { return withoutOwnHost(uri, g_get_host_name()); });
        return uris;
    }
    return {};
}

bool X11Pasteboard::canHold(const Representation& representation) {
    return canHoldAll({&representation, 1});
}

std::optional<std::int64_t> X11Pasteboard::replaceWithValues(std::span<const PasteboardValue> values) {
    return replace(pasteboardItems::fromValues(values));
}

std::optional<std::int64_t> X11Pasteboard::replaceWithItems(std::span<const PasteboardItem> items) {
    return replace(Items(items.begin(), items.end()));
}

/// Takes the selection over with these items; without any that can be held, to clear it.
std::optional<std::int64_t> X11Pasteboard::replace(std::optional<Items> items) {
    owner_.assertCurrent();
    const bool isHeld = items && std::ranges::all_of(*items, canHoldAll);
    const bool isOwner = selections_->own(selection_, isHeld ? *std::move(items) : Items());
    return isHeld && isOwner ? std::optional(selection_.changeCount) : std::nullopt;
}

bool X11Pasteboard::addTypes(std::span<const Representation> representations) {
    if (representations.empty() || !canHoldAll(representations))
        return false;
    const auto own = ownContent();
    auto items = own != nullptr ? std::optional(*own) : otherProgramsItems();
    if (!items || items->empty())
        return false;
    for (const Representation& one : representations)
        pasteboardItems::putOnFirstItem(*items, one.type, one.data);
    return selections_->own(selection_, std::move(*items));
}

/// Everything that the other program delivers of its content. nullopt if the content was replaced
/// meanwhile.
std::optional<X11Pasteboard::Items> X11Pasteboard::otherProgramsItems() {
    const std::int64_t countBefore = selection_.changeCount;
    Items items;
    for (const std::string& type : types()) {
        if (type == pasteboardType::fileUrl)
            continue;
        if (const auto data = otherProgramsData(type))
            pasteboardItems::putOnFirstItem(items, type, *data);
    }
    bool isFirst = true;
    for (const std::string& url : otherProgramsFileUrls()) {
        if (std::exchange(isFirst, false))
            pasteboardItems::putOnFirstItem(items, pasteboardType::fileUrl, Bytes::copyOf(url));
        else
            items.push_back({{std::string(pasteboardType::fileUrl), Bytes::copyOf(url)}});
    }
    return selection_.changeCount == countBefore ? std::optional(std::move(items)) : std::nullopt;
}

} // namespace tavel
