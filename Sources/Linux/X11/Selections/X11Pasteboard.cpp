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

/// The most bytes of one value that this process takes over from another program to add types to its content.
/// A larger value is left behind, and so is one past the limit for all together.
constexpr std::size_t largestTakenOver = std::size_t{128} << 20;

/// Comments before the first URL of a list.
constexpr std::size_t commentBytes = 4096;

std::size_t largestValue(std::string_view type, std::size_t limit) {
    if (type == pasteboardType::string)
        return largestPlainTextValue(limit);
    return type == pasteboardType::html ? largestHtmlValue(limit) : limit;
}

/// The value as data of the type; nullopt if it is malformed for that type.
std::optional<Bytes> dataFrom(const SelectionValue& value, std::string_view type) {
    if (type == pasteboardType::string)
        return plainTextOf(value);
    return type == pasteboardType::html ? htmlOf(value) : value.bytes;
}

void visitUris(const SelectionValue& list, const UriVisitor& visit) {
    if (list.target == targetName::uriList)
        visitUrisInList(list.bytes.view(), visit);
    else
        visitUrisInCopiedFiles(list.bytes.view(), visit);
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
std::shared_ptr<const OwnedContent> X11Pasteboard::ownContent() {
    owner_.assertCurrent();
    selections_->synchronize();
    // Once the server is gone, nobody can ask for what this process owned.
    return selections_->connection().isLost() ? std::make_shared<const OwnedContent>() : selection_.owned;
}

std::vector<std::string> X11Pasteboard::types() {
    if (const auto own = ownContent()) {
        std::vector<std::string> types = pasteboardItems::types(own->items);
        types.resize(std::min(types.size(), pasteboardType::mostTypes));
        return types;
    }
    std::vector<std::string> types;
    std::unordered_set<std::string> seen;
    for (const std::string& target : selections_->targets(selection_)) {
        if (types.size() == pasteboardType::mostTypes)
            break;
        auto type = targetName::typeOf(target);
        if (type && seen.insert(*type).second)
            types.push_back(std::move(*type));
    }
    return types;
}

std::optional<Bytes> X11Pasteboard::string(std::string_view type, std::size_t limit) {
    const auto own = ownContent();
    const auto text =
        own != nullptr ? pasteboardItems::string(own->items, type) : otherProgramsData(type, limit);
    const bool isText =
        text && isUtf8(text->size() > limit ? withoutPartialCharacter(text->view()) : text->view());
    return isText ? std::optional(text->slice(0, limit + 1)) : std::nullopt;
}

std::optional<Bytes> X11Pasteboard::data(std::string_view type, std::size_t limit) {
    const auto own = ownContent();
    const auto data =
        own != nullptr ? pasteboardItems::data(own->items, type) : otherProgramsData(type, limit);
    return data ? std::optional(data->slice(0, limit + 1)) : std::nullopt;
}

FileList X11Pasteboard::files(const FileListLimit& limit) {
    FileListBuilder files(limit);
    if (const auto own = ownContent()) {
        for (const std::string& url : pasteboardItems::fileUrls(own->items))
            files.addUrl(url);
    } else if (auto list = otherProgramsUriList(largestUrlBytes(limit))) {
        // Whole names of a URI that was cut still show whether it names a file.
        if (list->isCut)
            list->bytes = list->bytes.slice(0, list->bytes.view().rfind('/') + 1);
        visitUris(*list,
                  [&](std::string_view uri) { return files.addUrl(withoutOwnHost(uri, g_get_host_name())); });
        if (list->isCut)
            files.noteLostRest();
    }
    return files.take();
}

/// May return more than the limit. `source` gets the value of which the data is made.
std::optional<Bytes> X11Pasteboard::otherProgramsData(std::string_view type, std::size_t limit,
                                                      SelectionValue* source) {
    if (type == pasteboardType::fileUrl)
        return otherProgramsFileUrl(limit);
    for (const std::string& target : targetName::giving(type, selections_->targets(selection_))) {
        const auto value = selections_->read(selection_, target, largestValue(type, limit));
        auto data = value ? dataFrom(*value, type) : std::nullopt;
        if (data && source != nullptr)
            *source = *value;
        if (data)
            return data;
    }
    return std::nullopt;
}

/// The first URL of the list.
std::optional<Bytes> X11Pasteboard::otherProgramsFileUrl(std::size_t limit) {
    const auto list = otherProgramsUriList(limit + commentBytes);
    if (!list)
        return std::nullopt;
    std::string_view first;
    visitUris(*list, [&](std::string_view uri) {
        first = uri;
        return false;
    });
    const bool isCut = list->isCut && first.end() == list->bytes.view().end();
    if (first.empty() || (isCut && first.size() <= limit))
        return std::nullopt;
    return Bytes::adopt(withoutOwnHost(first, g_get_host_name()));
}

std::optional<SelectionValue> X11Pasteboard::otherProgramsUriList(std::size_t limit) {
    for (const std::string& target :
         targetName::giving(pasteboardType::fileUrl, selections_->targets(selection_))) {
        auto value = selections_->read(selection_, target, limit);
        if (value && value->format == 8)
            return value;
    }
    return std::nullopt;
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
    const auto changeCount = selections_->own(selection_, {isHeld ? *std::move(items) : Items(), {}});
    return isHeld ? changeCount : std::nullopt;
}

std::optional<std::int64_t> X11Pasteboard::addTypes(std::span<const Representation> representations) {
    if (representations.empty() || !canHoldAll(representations))
        return std::nullopt;
    const auto own = ownContent();
    auto content = own != nullptr ? std::optional(*own) : otherProgramsContent();
    if (!content || content->items.empty())
        return std::nullopt;
    for (const Representation& one : representations) {
        pasteboardItems::putOnFirstItem(content->items, one.type, one.data);
        std::erase_if(content->forms,
                      [&](const auto& form) { return targetName::typeOf(form.first) == one.type; });
    }
    return selections_->own(selection_, std::move(*content));
}

/// Everything that the other program delivers of its content, within the limits. nullopt if the content was
/// replaced meanwhile, or has more files than the limit.
std::optional<OwnedContent> X11Pasteboard::otherProgramsContent() {
    const std::int64_t countBefore = selection_.changeCount;
    OwnedContent content;
    Items& items = content.items;
    std::size_t room = mostBytesTakenOver;
    for (const std::string& type : types()) {
        if (type != pasteboardType::fileUrl)
            takeOver(content, type, room);
    }
    const auto list = otherProgramsUriList(largestUrlBytes(mostFilesOfAContent));
    if (list && list->isCut)
        return std::nullopt;
    std::size_t files = 0;
    if (list)
        visitUris(*list, [&](std::string_view uri) {
            const Bytes url = Bytes::adopt(withoutOwnHost(uri, g_get_host_name()));
            if (files++ == 0)
                pasteboardItems::putOnFirstItem(items, pasteboardType::fileUrl, url);
            else
                items.push_back({{std::string(pasteboardType::fileUrl), url}});
            return files <= mostFilesOfAContent.files;
        });
    const bool isWhole = files <= mostFilesOfAContent.files && selection_.changeCount == countBefore;
    return isWhole ? std::optional(std::move(content)) : std::nullopt;
}

/// Adds the other program's data of that type to the first item, if there is room for it. Values that are
/// passed on as they are keep their form; text and HTML are in the form that this process gives them.
void X11Pasteboard::takeOver(OwnedContent& content, const std::string& type, std::size_t& room) {
    const std::size_t limit = std::min(largestTakenOver, room);
    SelectionValue source;
    const auto data = otherProgramsData(type, limit, &source);
    if (!data || data->size() > limit)
        return;
    room -= data->size();
    pasteboardItems::putOnFirstItem(content.items, type, *data);
    if (type != pasteboardType::string && type != pasteboardType::html && !source.type.empty())
        content.forms[source.target] = {source.type, source.format};
}

} // namespace tavel
