#include "Linux/Selections/SelectionPasteboard.h"

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

void visitUris(const SelectionValue& list, const UriVisitor& visit) {
    if (list.target == targetName::uriList)
        visitUrisInList(list.bytes.view(), visit);
    else
        visitUrisInCopiedFiles(list.bytes.view(), visit);
}

} // namespace

SelectionPasteboard::SelectionPasteboard(std::shared_ptr<DisplaySelections> selections,
                                         const std::optional<std::string>& name)
    : selections_(std::move(selections)), selection_(selections_->selection(name)) {}

std::int64_t SelectionPasteboard::changeCount() {
    owner_.assertCurrent();
    selection_.synchronize();
    return selection_.changeCount;
}

std::int64_t SelectionPasteboard::noticedChangeCount() {
    owner_.assertCurrent();
    return selection_.foreign.changeCount();
}

bool SelectionPasteboard::watch(const std::vector<WantedValue>& values,
                                const std::function<void()>& noticed) {
    owner_.assertCurrent();
    selection_.foreign.watch(values);
    selection_.lastNoticed = noticedChangeCount();
    selection_.noticed = noticed;
    return true;
}

std::unique_ptr<Gathering> SelectionPasteboard::gather(const std::vector<WantedValue>& wanted,
                                                       const Gathered& done) {
    owner_.assertCurrent();
    return selection_.foreign.gather(wanted, done);
}

std::unique_ptr<Gathering> SelectionPasteboard::gatherForAddTypes(const std::vector<std::string>& required,
                                                                  const Gathered& done) {
    owner_.assertCurrent();
    return selection_.foreign.gatherForAddTypes(required, done);
}

/// What this process owns of the selection; null if it is another program's.
std::shared_ptr<const OwnedContent> SelectionPasteboard::ownContent() {
    owner_.assertCurrent();
    // Once the server is gone, nobody can ask for what this process owned.
    return selection_.isLost() ? std::make_shared<const OwnedContent>() : selection_.owned;
}

std::vector<std::string> SelectionPasteboard::types() {
    if (const auto own = ownContent()) {
        std::vector<std::string> types = pasteboardItems::types(own->items);
        types.resize(std::min(types.size(), pasteboardType::mostTypes));
        return types;
    }
    std::vector<std::string> types;
    std::unordered_set<std::string> seen;
    for (const std::string& target : selection_.foreign.targets()) {
        if (types.size() == pasteboardType::mostTypes)
            break;
        auto type = targetName::typeOf(target);
        if (type && seen.insert(*type).second)
            types.push_back(std::move(*type));
    }
    return types;
}

std::optional<Bytes> SelectionPasteboard::string(std::string_view type, std::size_t limit) {
    const auto own = ownContent();
    const auto text =
        own != nullptr ? pasteboardItems::string(own->items, type) : otherProgramsData(type, limit);
    const bool isText =
        text && isUtf8(text->size() > limit ? withoutPartialCharacter(text->view()) : text->view());
    return isText ? std::optional(text->slice(0, limit + 1)) : std::nullopt;
}

std::optional<Bytes> SelectionPasteboard::data(std::string_view type, std::size_t limit) {
    const auto own = ownContent();
    const auto data =
        own != nullptr ? pasteboardItems::data(own->items, type) : otherProgramsData(type, limit);
    return data ? std::optional(data->slice(0, limit + 1)) : std::nullopt;
}

FileList SelectionPasteboard::files(const FileListLimit& limit) {
    FileListBuilder files(limit);
    if (const auto own = ownContent()) {
        for (const std::string& url : pasteboardItems::fileUrls(own->items))
            files.addUrl(url);
    } else if (const GatheredValue* const value = selection_.foreign.value(pasteboardType::fileUrl)) {
        SelectionValue list = value->source;
        // Whole names of a URI that was cut still show whether it names a file.
        if (list.isCut)
            list.bytes = list.bytes.slice(0, list.bytes.view().rfind('/') + 1);
        visitUris(list,
                  [&](std::string_view uri) { return files.addUrl(withoutOwnHost(uri, g_get_host_name())); });
        if (list.isCut)
            files.noteLostRest();
    }
    return files.take();
}

/// May return more than the limit.
std::optional<Bytes> SelectionPasteboard::otherProgramsData(std::string_view type, std::size_t limit) const {
    if (type == pasteboardType::fileUrl)
        return otherProgramsFileUrl(limit);
    const GatheredValue* const value = selection_.foreign.value(type);
    return value != nullptr ? std::optional(value->data) : std::nullopt;
}

/// The first URL of the list.
std::optional<Bytes> SelectionPasteboard::otherProgramsFileUrl(std::size_t limit) const {
    const GatheredValue* const value = selection_.foreign.value(pasteboardType::fileUrl);
    if (value == nullptr)
        return std::nullopt;
    std::string_view first;
    visitUris(value->source, [&](std::string_view uri) {
        first = uri;
        return false;
    });
    const bool isCut = value->source.isCut && first.end() == value->data.view().end();
    if (first.empty() || (isCut && first.size() <= limit))
        return std::nullopt;
    return Bytes::adopt(withoutOwnHost(first, g_get_host_name()));
}

bool SelectionPasteboard::canHold(const Representation& representation) {
    return canHoldAll({&representation, 1});
}

std::optional<std::int64_t> SelectionPasteboard::replaceWithValues(std::span<const PasteboardValue> values) {
    return replace(pasteboardItems::fromValues(values));
}

std::optional<std::int64_t> SelectionPasteboard::replaceWithItems(std::span<const PasteboardItem> items) {
    return replace(Items(items.begin(), items.end()));
}

/// Takes the selection over with these items; without any that can be held, to clear it.
std::optional<std::int64_t> SelectionPasteboard::replace(std::optional<Items> items) {
    owner_.assertCurrent();
    const bool isHeld = items && std::ranges::all_of(*items, canHoldAll);
    const auto changeCount = selection_.own({isHeld ? *std::move(items) : Items(), {}});
    return isHeld ? changeCount : std::nullopt;
}

std::optional<std::int64_t> SelectionPasteboard::addTypes(std::span<const Representation> representations) {
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
    return selection_.own(std::move(*content));
}

/// Everything that was gathered of the other program's content. nullopt if something of it is missing that
/// must not be lost, or if it has more files than the limit.
std::optional<OwnedContent> SelectionPasteboard::otherProgramsContent() {
    if (!selection_.foreign.canAddTypes())
        return std::nullopt;
    OwnedContent content;
    for (const std::string& type : types()) {
        const GatheredValue* const value = selection_.foreign.value(type);
        if (value == nullptr || value->source.isCut || type == pasteboardType::fileUrl)
            continue;
        pasteboardItems::putOnFirstItem(content.items, type, value->data);
        // Values that are passed on as they are keep their form. Text and HTML are in the form that this
        // process gives them.
        const SelectionValue& source = value->source;
        if (type != pasteboardType::string && type != pasteboardType::html && !source.type.empty())
            content.forms[source.target] = {source.type, source.format};
    }
    return takeOverFiles(content.items) ? std::optional(std::move(content)) : std::nullopt;
}

/// False if there are more files than the limit.
bool SelectionPasteboard::takeOverFiles(Items& items) const {
    const GatheredValue* const list = selection_.foreign.value(pasteboardType::fileUrl);
    if (list == nullptr)
        return true;
    if (list->source.isCut)
        return false;
    std::size_t files = 0;
    visitUris(list->source, [&](std::string_view uri) {
        const Bytes url = Bytes::adopt(withoutOwnHost(uri, g_get_host_name()));
        if (files++ == 0)
            pasteboardItems::putOnFirstItem(items, pasteboardType::fileUrl, url);
        else
            items.push_back({{std::string(pasteboardType::fileUrl), url}});
        return files <= mostFilesOfAContent.files;
    });
    return files <= mostFilesOfAContent.files;
}

} // namespace tavel
