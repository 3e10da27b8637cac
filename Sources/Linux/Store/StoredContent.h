#pragma once

#include "Platform/Pasteboard.h"

#include <lmdb.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// Where one pasteboard's records stand among those of all pasteboards.
class BoardKey {
public:
    /// The general pasteboard without a name, otherwise the named one. Names of any length and content.
    explicit BoardKey(const std::optional<std::string>& name);

    /// Keys sort in the order of items, and of types within an item.
    std::string changeCount() const { return prefix_ + 'c'; }
    std::string representations() const { return prefix_ + 'r'; }
    std::string representation(std::uint32_t item, std::uint32_t position) const;
    std::string behindRepresentations() const { return prefix_ + 's'; }

private:
    std::string prefix_;
};

/// One pasteboard's records, seen through a transaction, which must outlive this view. Layout:
///
///     prefix 'c'                  the change count: 8 bytes, in this machine's order
///     prefix 'r' item position    a representation: 4 bytes for the length of its type, the type, the data
///
/// The prefix is the SHA-256 of the pasteboard's name; item and position are big-endian, 4 bytes each.
/// The writing operations give false when LMDB fails, after which the transaction can only be undone.
class StoredContent {
public:
    struct Entry {
        std::uint32_t item;
        std::uint32_t position;
        std::string_view type; // valid until the transaction writes or ends, as is the data
        std::string_view data;
    };

    StoredContent(MDB_txn* transaction, MDB_dbi database, const BoardKey& key)
        : transaction_(transaction), database_(database), key_(key) {}

    /// 0 for a pasteboard that nobody has written to.
    std::int64_t changeCount() const;

    /// Visits the representations in order for as long as `visit` returns true.
    void forEach(const std::function<bool(const Entry&)>& visit) const;

    /// The number of the item behind the last one.
    std::uint32_t itemCount() const;

    bool setChangeCount(std::int64_t count);
    bool removeAll();
    bool put(std::uint32_t item, std::uint32_t position, std::string_view type, std::string_view data);

    /// Puts data under `type` on the first item, in the place of what is there under that type.
    bool putOnFirstItem(std::string_view type, std::string_view data);

private:
    MDB_txn* transaction_;
    MDB_dbi database_;
    const BoardKey& key_;
};

} // namespace tavel
