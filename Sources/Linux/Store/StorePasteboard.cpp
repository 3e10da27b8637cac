#include "Linux/Store/StorePasteboard.h"

#include "Platform/PasteboardItems.h"
#include "Platform/PasteboardTypes.h"
#include "Support/FileUrl.h"
#include "Support/Text.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

/// Payloads up to this size are copied: cheaper than holding a snapshot for them.
constexpr std::size_t copiedBytes = std::size_t{64} * 1024;

/// A type needs a name, or nobody could ask for it.
bool isAcceptable(std::span<const Representation> representations) {
    return std::ranges::none_of(representations, [](const auto& one) { return one.type.empty(); });
}

bool putItem(StoredContent& content, std::uint32_t item, const PasteboardItem& representations) {
    std::uint32_t position = 0;
    return std::ranges::all_of(representations, [&](const Representation& one) {
        return content.put(item, position++, one.type, one.data.view());
    });
}

} // namespace

/// What an operation reads. Empty if LMDB refuses a snapshot.
struct StorePasteboard::View {
    std::shared_ptr<LmdbSnapshot> snapshot;
    std::optional<StoredContent> content;

    Bytes share(std::string_view data) const {
        if (data.size() <= copiedBytes)
            return Bytes::copyOf(data);
        return {snapshot, data.data(), data.size()};
    }
};

StorePasteboard::StorePasteboard(std::shared_ptr<const LmdbEnvironment> environment,
                                 const std::optional<std::string>& name)
    : environment_(std::move(environment)), key_(name) {}

StoredContent StorePasteboard::contentOf(MDB_txn* transaction) const {
    return {transaction, environment_->database(), key_};
}

StorePasteboard::View StorePasteboard::view() {
    owner_.assertCurrent();
    auto snapshot = LmdbSnapshot::take(environment_);
    if (snapshot == nullptr)
        return {};
    StoredContent content = contentOf(snapshot->transaction());
    return {std::move(snapshot), content};
}

std::int64_t StorePasteboard::changeCount() {
    owner_.assertCurrent();
    const bool current = countSnapshot_ != nullptr
                             ? countSnapshot_->renew()
                             : (countSnapshot_ = LmdbSnapshot::take(environment_)) != nullptr;
    if (!current) {
        // All reader slots are taken. A write transaction needs none, and the count must not go back.
        const auto transaction = LmdbWrite::begin(*environment_);
        return transaction != nullptr ? contentOf(transaction->transaction()).changeCount() : 0;
    }
    const std::int64_t count = contentOf(countSnapshot_->transaction()).changeCount();
    countSnapshot_->release();
    return count;
}

std::vector<std::string> StorePasteboard::types() {
    std::vector<std::string> types;
    const View current = view();
    if (!current.content)
        return types;
    std::unordered_set<std::string_view> seen;
    current.content->forEach([&](const StoredContent::Entry& entry) {
        if (seen.insert(entry.type).second)
            types.emplace_back(entry.type);
        return true;
    });
    return types;
}

std::optional<Bytes> StorePasteboard::string(std::string_view type) {
    if (type != pasteboardType::string) {
        auto text = data(type);
        return text && isUtf8(text->view()) ? text : std::nullopt;
    }
    const View current = view();
    if (!current.content)
        return std::nullopt;
    std::vector<std::string_view> texts;
    current.content->forEach([&](const StoredContent::Entry& entry) {
        if (entry.type == type && isUtf8(entry.data))
            texts.push_back(entry.data);
        return true;
    });
    if (texts.empty())
        return std::nullopt;
    if (texts.size() == 1)
        return current.share(texts.front());
    std::string joined(texts.front());
    for (const std::string_view text : std::span(texts).subspan(1))
        joined.append("\n").append(text);
    return Bytes::adopt(std::move(joined));
}

std::optional<Bytes> StorePasteboard::data(std::string_view type) {
    std::optional<Bytes> found;
    const View current = view();
    if (!current.content)
        return found;
    current.content->forEach([&](const StoredContent::Entry& entry) {
        if (entry.type == type)
            found = current.share(entry.data);
        return !found;
    });
    return found;
}

std::vector<std::string> StorePasteboard::filePaths() {
    std::vector<std::string> paths;
    const View current = view();
    if (!current.content)
        return paths;
    current.content->forEach([&](const StoredContent::Entry& entry) {
        if (entry.type == pasteboardType::fileUrl) {
            if (auto path = pathFromFileUrl(entry.data))
                paths.push_back(std::move(*path));
        }
        return true;
    });
    return paths;
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
    std::int64_t count = 0;
    const bool replaced = write([&](StoredContent& content) {
        count = content.changeCount() + 1;
        std::uint32_t item = 0;
        return content.removeAll() && content.setChangeCount(count) &&
               std::ranges::all_of(items, [&](const auto& one) { return putItem(content, item++, one); });
    });
    return replaced ? std::optional(count) : std::nullopt;
}

void StorePasteboard::clear() {
    replace({});
}

/// Makes one change in a transaction of its own.
bool StorePasteboard::write(const std::function<bool(StoredContent&)>& change) {
    owner_.assertCurrent();
    const auto transaction = LmdbWrite::begin(*environment_);
    if (transaction == nullptr)
        return false;
    StoredContent content = contentOf(transaction->transaction());
    return change(content) && transaction->commit();
}

bool StorePasteboard::addTypes(std::span<const Representation> representations) {
    if (representations.empty() || !isAcceptable(representations))
        return false;
    bool hasItem = false;
    const bool written = write([&](StoredContent& content) {
        hasItem = content.itemCount() > 0;
        if (!hasItem)
            return true;
        return content.setChangeCount(content.changeCount() + 1) &&
               std::ranges::all_of(representations, [&](const auto& one) {
                   return content.putOnFirstItem(one.type, one.data.view());
               });
    });
    return hasItem && written;
}

} // namespace tavel
