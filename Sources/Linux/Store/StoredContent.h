#pragma once

#include "Platform/Pasteboard.h"

#include <lmdb.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// The keys of one pasteboard's records among those of all pasteboards.
class BoardKey {
public:
    /// The general pasteboard without a name, otherwise the named one. A name may be any bytes.
    explicit BoardKey(const std::optional<std::string>& name);

    /// Keys sort in the order of items, and of types within an item.
    std::string changeCount() const { return prefix_ + 'c'; }
    std::string representations() const { return prefix_ + 'r'; }
    std::string representation(std::uint32_t item, std::uint32_t position) const;
    std::string behindRepresentations() const { return prefix_ + 's'; }

private:
    std::string prefix_;
};

/// One pasteboard's records in a transaction, which must outlive this object. Layout:
///
///     prefix 'c'                  the change count: 8 bytes, in this machine's order
///     prefix 'r' item position    a representation: 4 bytes for the length of its type, the type, the data
///
/// The prefix is the SHA-256 of the pasteboard's name; item and position are big-endian, 4 bytes each.
/// The writing operations return false when LMDB fails; the transaction must then be rolled back.
class StoredContent {
public:
    struct Entry {
        std::uint32_t item;
        std::uint32_t position;
        std::string_view type; // this and the data are valid until the transaction writes or ends
        std::string_view data;
    };

    StoredContent(MDB_txn* transaction, MDB_dbi database, const BoardKey& key)
        : transaction_(transaction), database_(database), key_(key) {}

    /// 0 before the first write.
    std::int64_t changeCount() const;

    /// Visits the representations in order for as long as `visit` returns true.
    void forEach(const std::function<bool(const Entry&)>& visit) const;

    /// One more than the number of the last item.
    std::uint32_t itemCount() const;

    bool setChangeCount(std::int64_t count);
    bool removeAll();
    bool put(std::uint32_t item, std::uint32_t position, std::string_view type, std::string_view data);

    /// Puts data under `type` on the first item, replacing that type's data.
    bool putOnFirstItem(std::string_view type, std::string_view data);

private:
    MDB_txn* transaction_;
    MDB_dbi database_;
    const BoardKey& key_;
};

} // namespace tavel
