#include "Linux/Store/StorePasteboard.h"

#include "Platform/PasteboardItems.h"
#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

/// Each attempt fails only if another process has replaced the content in that moment.
constexpr int readingAttempts = 100;

bool isAcceptable(std::span<const Representation> representations) {
    return std::ranges::all_of(representations,
                               [](const auto& one) { return pasteboardType::isReadableName(one.type); });
}

/// The text under the entry, or its first `limit` + 1 bytes. nullopt if it is no text.
std::optional<Bytes> textIn(const ContentFile& content, const ContentFile::Entry& entry, std::size_t limit) {
    auto text = content.data(entry, limit);
    if (!text)
        return std::nullopt;
    const std::string_view bytes = text->view();
    return isUtf8(entry.size > limit ? withoutPartialCharacter(bytes) : bytes) ? text : std::nullopt;
}

/// nullopt if the file cannot be read, is too large, or there is no memory for it.
std::optional<std::vector<PasteboardItem>> itemsOf(const ContentFile& content) {
    std::vector<PasteboardItem> items;
    std::uint32_t number = 0; // of the last item
    std::uint64_t room = Pasteboard::mostBytesTakenOver;
    for (const ContentFile::Entry& entry : content.entries()) {
        if (entry.size > room)
            return std::nullopt;
        room -= entry.size;
        auto data = content.data(entry, entry.size);
        if (!data)
            return std::nullopt;
        if (items.empty() || entry.item != number)
            items.emplace_back();
        number = entry.item;
        items.back().push_back({entry.type, std::move(*data)});
    }
    return items;
}

} // namespace

StorePasteboard::StorePasteboard(std::shared_ptr<const PasteboardStore> store,
                                 const std::optional<std::string>& name)
    : store_(std::move(store)), key_(name) {}

/// nullopt if there is none, or it cannot be read.
std::optional<ContentFile> StorePasteboard::content() {
    for (int attempt = 0; attempt < readingAttempts; ++attempt) {
        const std::int64_t count = changeCount();
        if (auto file = store_->contents().open(key_, count))
            return file;
        if (changeCount() == count)
            break;
    }
    return std::nullopt;
}

std::int64_t StorePasteboard::changeCount() {
    owner_.assertCurrent();
    const bool current = countSnapshot_ != nullptr
                             ? countSnapshot_->renew()
                             : (countSnapshot_ = LmdbSnapshot::take(store_->changeCounts())) != nullptr;
    if (!current) {
        // All reader slots are taken. A write transaction needs none, and the count must not go back.
        const auto transaction = LmdbWrite::begin(store_->changeCounts());
        return transaction != nullptr ? transaction->changeCount(key_) : 0;
    }
    const std::int64_t count = countSnapshot_->changeCount(key_);
    countSnapshot_->release();
    return count;
}

/// Every value is always there, so none needs to be named.
bool StorePasteboard::watch(const std::vector<WantedValue>&, const std::function<void()>& noticed) {
    owner_.assertCurrent();
    const bool isWatched = commits_.start(store_->changeCounts(), [this, noticed] {
        const std::int64_t count = changeCount();
        if (std::exchange(watchedCount_, count) != count) // the commit can be another pasteboard's
            noticed();
    });
    watchedCount_ = changeCount();
    return isWatched;
}

std::vector<std::string> StorePasteboard::types() {
    std::vector<std::string> types;
    const auto current = content();
    if (!current)
        return types;
    std::unordered_set<std::string_view> seen;
    for (const ContentFile::Entry& entry : current->entries()) {
        if (types.size() == pasteboardType::mostTypes)
            break;
        if (pasteboardType::isReadableName(entry.type) && seen.insert(entry.type).second)
            types.push_back(entry.type);
    }
    return types;
}

std::optional<Bytes> StorePasteboard::string(std::string_view type, std::size_t limit) {
    const auto current = content();
    if (!current)
        return std::nullopt;
    std::optional<Bytes> only; // the text, as long as there is but one
    std::string joined;
    for (const ContentFile::Entry& entry : current->entries()) {
        if (entry.type != type)
            continue;
        auto text = textIn(*current, entry, limit);
        if (type != pasteboardType::string)
            return text;
        if (!text)
            continue;
        if (joined.empty() && !only) {
            only = std::move(text);
            continue;
        }
        if (only)
            joined = std::exchange(only, std::nullopt)->view();
        joined += '\n';
        joined += text->view();
        if (joined.size() > limit)
            break;
    }
    if (only || joined.empty())
        return only;
    joined.resize(std::min(joined.size(), limit + 1));
    return Bytes::adopt(std::move(joined));
}

std::optional<Bytes> StorePasteboard::data(std::string_view type, std::size_t limit) {
    const auto current = content();
    if (!current)
        return std::nullopt;
    const auto found = std::ranges::find(current->entries(), type, &ContentFile::Entry::type);
    return found == current->entries().end() ? std::nullopt : current->data(*found, limit);
}

FileList StorePasteboard::files(const FileListLimit& limit) {
    FileListBuilder files(limit);
    const auto current = content();
    if (!current)
        return files.take();
    for (const ContentFile::Entry& entry : current->entries()) {
        if (entry.type != pasteboardType::fileUrl)
            continue;
        const auto url = current->data(entry, largestUrlBytes({1, limit.pathBytes}));
        if (url && !files.addUrl(url->view()))
            break;
    }
    return files.take();
}

bool StorePasteboard::canHold(const Representation& representation) {
    return isAcceptable({&representation, 1});
}

std::optional<std::int64_t> StorePasteboard::replaceWithValues(std::span<const PasteboardValue> values) {
    if (const auto items = pasteboardItems::fromValues(values))
        return replaceWithItems(*items);
    clear();
    return std::nullopt;
}

std::optional<std::int64_t> StorePasteboard::replaceWithItems(std::span<const PasteboardItem> items) {
    const auto count = std::ranges::all_of(items, isAcceptable) ? replace(items) : std::nullopt;
    if (!count)
        clear(); // which needs almost no space, where the content may have found too little
    return count;
}

std::optional<std::int64_t> StorePasteboard::replace(std::span<const PasteboardItem> items) {
    owner_.assertCurrent();
    auto transaction = LmdbWrite::begin(store_->changeCounts());
    return transaction != nullptr ? commit(std::move(transaction), items) : std::nullopt;
}

/// Makes these items the content, and ends the transaction. Gives the change count that it made.
std::optional<std::int64_t> StorePasteboard::commit(std::unique_ptr<LmdbWrite> transaction,
                                                    std::span<const PasteboardItem> items) {
    const ContentFiles& contents = store_->contents();
    const std::int64_t count = transaction->changeCount(key_) + 1;
    if (!contents.write(key_, count, items))
        return std::nullopt;
    if (!transaction->setChangeCount(key_, count) || !transaction->commit()) {
        transaction.reset();
        discard(count);
        return std::nullopt;
    }
    contents.removeOlder(key_, count);
    return count;
}

/// Removes the content of that count, unless another process has made one by now.
void StorePasteboard::discard(std::int64_t count) {
    const auto transaction = LmdbWrite::begin(store_->changeCounts());
    if (transaction != nullptr && transaction->changeCount(key_) < count)
        store_->contents().remove(key_, count);
}

void StorePasteboard::clear() {
    replace({});
}

std::optional<std::int64_t> StorePasteboard::addTypes(std::span<const Representation> representations) {
    owner_.assertCurrent();
    if (representations.empty() || !isAcceptable(representations))
        return std::nullopt;
    auto transaction = LmdbWrite::begin(store_->changeCounts());
    if (transaction == nullptr)
        return std::nullopt;
    const auto current = store_->contents().open(key_, transaction->changeCount(key_));
    auto items = current ? itemsOf(*current) : std::nullopt;
    if (!items || items->empty())
        return std::nullopt;
    for (const Representation& one : representations)
        pasteboardItems::putOnFirstItem(*items, one.type, one.data);
    return commit(std::move(transaction), *items);
}

} // namespace tavel
