#include "Linux/Store/StorePasteboard.h"

#include "Platform/PasteboardItems.h"
#include "Platform/PasteboardTypes.h"
#include "Support/ScopeExit.h"
#include "Support/Text.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tavel {

namespace {

/// Payloads up to this size are copied: cheaper than holding a snapshot for them.
constexpr std::size_t copiedBytes = std::size_t{64} * 1024;

bool isAcceptable(std::span<const Representation> representations) {
    return std::ranges::all_of(representations,
                               [](const auto& one) { return pasteboardType::isReadableName(one.type); });
}

/// The texts joined by line feeds, but no more than `limit` + 1 bytes.
Bytes joined(std::span<const std::string_view> texts, std::size_t limit) {
    std::string joined;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0)
            joined += '\n';
        joined.append(texts[i].substr(0, limit + 1 - joined.size()));
        if (joined.size() > limit)
            break;
    }
    return Bytes::adopt(std::move(joined));
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

    /// The first `limit` + 1 bytes at most.
    Bytes share(std::string_view data, std::size_t limit) const {
        data = data.substr(0, limit + 1);
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
    const ScopeExit release([this] { countSnapshot_->release(); });
    return contentOf(countSnapshot_->transaction()).changeCount();
}

std::vector<std::string> StorePasteboard::types() {
    std::vector<std::string> types;
    const View current = view();
    if (!current.content)
        return types;
    std::unordered_set<std::string_view> seen;
    current.content->forEach([&](const StoredContent::Entry& entry) {
        if (pasteboardType::isReadableName(entry.type) && seen.insert(entry.type).second)
            types.emplace_back(entry.type);
        return types.size() < pasteboardType::mostTypes;
    });
    return types;
}

std::optional<Bytes> StorePasteboard::string(std::string_view type, std::size_t limit) {
    const View current = view();
    if (!current.content)
        return std::nullopt;
    const bool joinsItems = type == pasteboardType::string;
    std::vector<std::string_view> texts;
    std::size_t bytes = 0;
    current.content->forEach([&](const StoredContent::Entry& entry) {
        if (entry.type != type)
            return true;
        if (isUtf8(entry.data)) {
            texts.push_back(entry.data);
            bytes += entry.data.size() + 1;
        }
        return joinsItems && bytes <= limit + 1;
    });
    if (texts.empty())
        return std::nullopt;
    return texts.size() == 1 ? current.share(texts.front(), limit) : joined(texts, limit);
}

std::optional<Bytes> StorePasteboard::data(std::string_view type, std::size_t limit) {
    std::optional<Bytes> found;
    const View current = view();
    if (!current.content)
        return found;
    current.content->forEach([&](const StoredContent::Entry& entry) {
        if (entry.type == type)
            found = current.share(entry.data, limit);
        return !found;
    });
    return found;
}

FileList StorePasteboard::files(const FileListLimit& limit) {
    FileListBuilder files(limit);
    const View current = view();
    if (!current.content)
        return files.take();
    current.content->forEach([&](const StoredContent::Entry& entry) {
        return entry.type != pasteboardType::fileUrl || files.addUrl(entry.data);
    });
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

std::optional<std::int64_t> StorePasteboard::addTypes(std::span<const Representation> representations) {
    if (representations.empty() || !isAcceptable(representations))
        return std::nullopt;
    std::optional<std::int64_t> count;
    const bool written = write([&](StoredContent& content) {
        if (content.itemCount() == 0)
            return true;
        count = content.changeCount() + 1;
        return content.setChangeCount(*count) && std::ranges::all_of(representations, [&](const auto& one) {
                   return content.putOnFirstItem(one.type, one.data.view());
               });
    });
    return written ? count : std::nullopt;
}

} // namespace tavel
