#pragma once

#include "Platform/Pasteboard.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A file with the whole content of one pasteboard, open for reading. It is checked when it is opened, as
/// anything may have damaged it since it was written, and read without being mapped, so that it cannot kill
/// the process. Layout, with numbers in this machine's order:
///
///     8 bytes   "tavel-2" and a zero byte
///     8 bytes   the length of the file
///     8 bytes   the length of the table, at most `maximumTableBytes`
///     table     for each representation: 4 bytes for its item, 4 for the length of its type, 8 for that of
///               its data; the type
///     data      of all representations, in the table's order
class ContentFile {
public:
    struct Entry {
        std::uint32_t item; // never less than that of the entry before
        std::string type;
        std::uint64_t offset; // of the data in the file
        std::uint64_t size;
    };

    /// Takes the descriptor, and closes it. nullopt if the file is not whole.
    static std::optional<ContentFile> read(int descriptor);

    ~ContentFile();
    ContentFile(ContentFile&& other) noexcept;
    ContentFile& operator=(ContentFile&& other) noexcept;
    ContentFile(const ContentFile&) = delete;
    ContentFile& operator=(const ContentFile&) = delete;

    const std::vector<Entry>& entries() const { return entries_; }

    /// The first `limit` + 1 bytes of the data at most. nullopt if it cannot be read, or there is no memory
    /// for it.
    std::optional<Bytes> data(const Entry& entry, std::size_t limit) const;

private:
    explicit ContentFile(int descriptor) : descriptor_(descriptor) {}

    int descriptor_; // -1 after a move
    std::vector<Entry> entries_;
};

/// Room for a hundred thousand items.
inline constexpr std::uint64_t maximumTableBytes = std::uint64_t{16} << 20;

/// The first bytes of a content file, which the data follow. nullopt if the table is too large.
std::optional<std::string> contentFileHead(std::span<const PasteboardItem> items);

/// The entries of a table in a file of that length, whose data begin behind the table; nullopt if they make
/// no sense.
std::optional<std::vector<ContentFile::Entry>> parseContentTable(std::string_view table,
                                                                 std::uint64_t fileBytes);

} // namespace tavel
