#include "Linux/Store/StoredContent.h"

#include <glib.h>

#include <array>
#include <cstring>
#include <memory>

namespace tavel {

namespace {

constexpr std::size_t indexBytes = 4;

struct CursorCloser {
    void operator()(MDB_cursor* cursor) const { mdb_cursor_close(cursor); }
};

using Cursor = std::unique_ptr<MDB_cursor, CursorCloser>;

Cursor openCursor(MDB_txn* transaction, MDB_dbi database) {
    MDB_cursor* cursor = nullptr;
    mdb_cursor_open(transaction, database, &cursor);
    return Cursor(cursor);
}

/// LMDB only reads through this pointer, although it is not const.
MDB_val valueOf(std::string_view bytes) {
    return {bytes.size(), const_cast<char*>(bytes.data())};
}

std::string_view viewOf(const MDB_val& value) {
    return {static_cast<const char*>(value.mv_data), value.mv_size};
}

void appendIndex(std::string& key, std::uint32_t index) {
    for (int shift = 24; shift >= 0; shift -= 8)
        key += static_cast<char>(index >> shift);
}

std::uint32_t indexAt(std::string_view bytes) {
    std::uint32_t index = 0;
    for (const char c : bytes.substr(0, indexBytes))
        index = index << 8 | static_cast<unsigned char>(c);
    return index;
}

std::string boardPrefix(const std::optional<std::string>& name) {
    // The first character distinguishes the general pasteboard from the one named "".
    const std::string identity = name ? "n" + *name : "g";
    std::array<guint8, 32> digest{};
    gsize length = digest.size();
    GChecksum* const checksum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(checksum, reinterpret_cast<const guchar*>(identity.data()),
                      static_cast<gssize>(identity.size()));
    g_checksum_get_digest(checksum, digest.data(), &length);
    g_checksum_free(checksum);
    return {digest.begin(), digest.end()};
}

/// The entry of a key below `prefix` and its value; nullopt if they are not of our layout.
std::optional<StoredContent::Entry> entryOf(std::string_view key, std::string_view prefix,
                                            std::string_view value) {
    if (key.size() != prefix.size() + 2 * indexBytes || value.size() < sizeof(std::uint32_t))
        return std::nullopt;
    std::uint32_t typeLength = 0;
    std::memcpy(&typeLength, value.data(), sizeof typeLength);
    value.remove_prefix(sizeof typeLength);
    if (typeLength > value.size())
        return std::nullopt;
    key.remove_prefix(prefix.size());
    return StoredContent::Entry{indexAt(key), indexAt(key.substr(indexBytes)), value.substr(0, typeLength),
                                value.substr(typeLength)};
}

} // namespace

BoardKey::BoardKey(const std::optional<std::string>& name) : prefix_(boardPrefix(name)) {}

std::string BoardKey::representation(std::uint32_t item, std::uint32_t position) const {
    std::string key = representations();
    appendIndex(key, item);
    appendIndex(key, position);
    return key;
}

std::int64_t StoredContent::changeCount() const {
    const std::string keyBytes = key_.changeCount();
    MDB_val key = valueOf(keyBytes);
    MDB_val value{};
    std::int64_t count = 0;
    if (mdb_get(transaction_, database_, &key, &value) == MDB_SUCCESS && value.mv_size == sizeof count)
        std::memcpy(&count, value.mv_data, sizeof count);
    return count;
}

void StoredContent::forEach(const std::function<bool(const Entry&)>& visit) const {
    const std::string prefix = key_.representations();
    const Cursor cursor = openCursor(transaction_, database_);
    if (cursor == nullptr)
        return;
    MDB_val key = valueOf(prefix);
    MDB_val value{};
    for (int status = mdb_cursor_get(cursor.get(), &key, &value, MDB_SET_RANGE);
         status == MDB_SUCCESS && viewOf(key).starts_with(prefix);
         status = mdb_cursor_get(cursor.get(), &key, &value, MDB_NEXT)) {
        const auto entry = entryOf(viewOf(key), prefix, viewOf(value));
        if (entry && !visit(*entry))
            return;
    }
}

std::uint32_t StoredContent::itemCount() const {
    const std::string prefix = key_.representations();
    const std::string behind = key_.behindRepresentations();
    const Cursor cursor = openCursor(transaction_, database_);
    if (cursor == nullptr)
        return 0;
    MDB_val key = valueOf(behind);
    MDB_val value{};
    const bool followed = mdb_cursor_get(cursor.get(), &key, &value, MDB_SET_RANGE) == MDB_SUCCESS;
    if (mdb_cursor_get(cursor.get(), &key, &value, followed ? MDB_PREV : MDB_LAST) != MDB_SUCCESS)
        return 0;
    const auto entry =
        viewOf(key).starts_with(prefix) ? entryOf(viewOf(key), prefix, viewOf(value)) : std::nullopt;
    return entry ? entry->item + 1 : 0;
}

bool StoredContent::setChangeCount(std::int64_t count) {
    const std::string keyBytes = key_.changeCount();
    MDB_val key = valueOf(keyBytes);
    MDB_val value{sizeof count, &count};
    return mdb_put(transaction_, database_, &key, &value, 0) == MDB_SUCCESS;
}

bool StoredContent::removeAll() {
    const std::string prefix = key_.representations();
    const Cursor cursor = openCursor(transaction_, database_);
    if (cursor == nullptr)
        return false;
    MDB_val key = valueOf(prefix);
    MDB_val value{};
    int status = mdb_cursor_get(cursor.get(), &key, &value, MDB_SET_RANGE);
    while (status == MDB_SUCCESS && viewOf(key).starts_with(prefix)) {
        if (mdb_cursor_del(cursor.get(), 0) != MDB_SUCCESS)
            return false;
        // After a deletion LMDB's cursor is before the record that followed.
        status = mdb_cursor_get(cursor.get(), &key, &value, MDB_NEXT);
    }
    return status == MDB_SUCCESS || status == MDB_NOTFOUND;
}

bool StoredContent::put(std::uint32_t item, std::uint32_t position, std::string_view type,
                        std::string_view data) {
    const std::string keyBytes = key_.representation(item, position);
    const auto typeLength = static_cast<std::uint32_t>(type.size());
    MDB_val key = valueOf(keyBytes);
    MDB_val value{sizeof typeLength + type.size() + data.size(), nullptr};
    // MDB_RESERVE: the payload is copied once, from its buffer to the page.
    if (mdb_put(transaction_, database_, &key, &value, MDB_RESERVE) != MDB_SUCCESS)
        return false;
    char* out = static_cast<char*>(value.mv_data);
    std::memcpy(out, &typeLength, sizeof typeLength);
    out += sizeof typeLength;
    std::memcpy(out, type.data(), type.size());
    out += type.size();
    if (!data.empty())
        std::memcpy(out, data.data(), data.size());
    return true;
}

bool StoredContent::putOnFirstItem(std::string_view type, std::string_view data) {
    std::uint32_t position = 0;
    forEach([&](const Entry& entry) {
        if (entry.item != 0 || entry.type == type)
            return false;
        position = entry.position + 1;
        return true;
    });
    return put(0, position, type, data);
}

} // namespace tavel
