#include "Tests/Protocol/OtherApplication.h"

#include "Linux/Store/StoreDirectory.h"
#include "Tests/Support/ReadingLimits.h"

#include <stdexcept>

namespace tavel {

namespace {

std::filesystem::path prepared(const std::filesystem::path& store) {
    preparePasteboardStoreDirectory(store);
    return store;
}

} // namespace

Representation representation(std::string_view type, std::string_view data) {
    return {std::string(type), Bytes::copyOf(data)};
}

PasteboardItem textItem(std::string_view text) {
    return {representation("public.utf8-plain-text", text)};
}

PasteboardItem urlItem(std::string_view url) {
    return {representation("public.file-url", url)};
}

OtherApplication::OtherApplication(const std::filesystem::path& store)
    : store_(std::make_shared<const PasteboardStore>(prepared(store))) {}

std::int64_t OtherApplication::copy(const std::vector<PasteboardItem>& items, const PasteboardName& name) {
    StorePasteboard pasteboard(store_, name);
    const auto count = pasteboard.replaceWithItems(items);
    if (!count)
        throw std::runtime_error("The copy failed.");
    return *count;
}

std::int64_t OtherApplication::copyText(std::string_view text, const PasteboardName& name) {
    return copy({textItem(text)}, name);
}

std::int64_t OtherApplication::addType(std::string_view type, std::string_view data,
                                       const PasteboardName& name) {
    StorePasteboard pasteboard(store_, name);
    const Representation added = representation(type, data);
    if (!pasteboard.addTypes({&added, 1}))
        throw std::runtime_error("The type was not added.");
    return pasteboard.changeCount();
}

std::int64_t OtherApplication::changeCount(const PasteboardName& name) const {
    return StorePasteboard(store_, name).changeCount();
}

std::vector<std::vector<TypeAndData>> OtherApplication::content(const PasteboardName& name) const {
    // The pasteboard's interface cannot tell which item a type belongs to.
    std::vector<std::vector<TypeAndData>> items;
    const auto current = store_->contents().open(BoardKey(name), changeCount(name));
    if (!current)
        return items;
    for (const ContentFile::Entry& entry : current->entries()) {
        items.resize(entry.item + std::size_t{1});
        items.back().emplace_back(entry.type, current->data(entry, ample).value().view());
    }
    return items;
}

std::optional<std::string> OtherApplication::text(const PasteboardName& name) const {
    const auto text = StorePasteboard(store_, name).string("public.utf8-plain-text", ample);
    return text ? std::optional<std::string>(text->view()) : std::nullopt;
}

} // namespace tavel
