#include "Linux/Store/ContentFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace tavel {

namespace {

constexpr std::array<char, 8> magic{'t', 'a', 'v', 'e', 'l', '-', '2', '\0'};

struct Header {
    std::array<char, 8> magic;
    std::uint64_t fileBytes;
    std::uint64_t tableBytes;
};

struct EntryHeader {
    std::uint32_t item;
    std::uint32_t typeBytes;
    std::uint64_t dataBytes;
};

template <typename Value>
void append(std::string& bytes, const Value& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

bool readAt(int descriptor, std::uint64_t offset, char* target, std::size_t size) {
    while (size > 0) {
        const ssize_t count = pread(descriptor, target, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        target += count;
        size -= static_cast<std::size_t>(count);
        offset += static_cast<std::uint64_t>(count);
    }
    return true;
}

} // namespace

std::optional<std::string> contentFileHead(std::span<const PasteboardItem> items) {
    std::string table;
    std::uint64_t dataBytes = 0;
    std::uint32_t item = 0;
    for (const PasteboardItem& representations : items) {
        for (const Representation& one : representations) {
            if (one.type.size() > maximumTableBytes)
                return std::nullopt;
            append(table, EntryHeader{item, static_cast<std::uint32_t>(one.type.size()), one.data.size()});
            table += one.type;
            if (table.size() > maximumTableBytes)
                return std::nullopt;
            dataBytes += one.data.size();
        }
        ++item;
    }
    std::string head;
    head.reserve(sizeof(Header) + table.size());
    append(head, Header{magic, sizeof(Header) + table.size() + dataBytes, table.size()});
    return head + table;
}

std::optional<std::vector<ContentFile::Entry>> parseContentTable(std::string_view table,
                                                                 std::uint64_t fileBytes) {
    std::vector<ContentFile::Entry> entries;
    std::uint64_t offset = sizeof(Header) + table.size();
    while (!table.empty()) {
        EntryHeader header{};
        if (table.size() < sizeof header)
            return std::nullopt;
        std::memcpy(&header, table.data(), sizeof header);
        table.remove_prefix(sizeof header);
        const bool isInOrder = entries.empty() || entries.back().item <= header.item;
        if (!isInOrder || header.typeBytes > table.size() || offset > fileBytes ||
            header.dataBytes > fileBytes - offset)
            return std::nullopt;
        entries.push_back(
            {header.item, std::string(table.substr(0, header.typeBytes)), offset, header.dataBytes});
        table.remove_prefix(header.typeBytes);
        offset += header.dataBytes;
    }
    return offset == fileBytes ? std::optional(std::move(entries)) : std::nullopt;
}

std::optional<ContentFile> ContentFile::read(int descriptor) {
    ContentFile file(descriptor);
    struct stat status {};
    Header header{};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        !readAt(descriptor, 0, reinterpret_cast<char*>(&header), sizeof header) || header.magic != magic ||
        header.fileBytes != static_cast<std::uint64_t>(status.st_size) ||
        header.tableBytes > maximumTableBytes || header.tableBytes > header.fileBytes - sizeof header)
        return std::nullopt;
    std::string table(header.tableBytes, '\0');
    if (!readAt(descriptor, sizeof header, table.data(), table.size()))
        return std::nullopt;
    auto entries = parseContentTable(table, header.fileBytes);
    if (!entries)
        return std::nullopt;
    file.entries_ = std::move(*entries);
    return file;
}

ContentFile::ContentFile(ContentFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), entries_(std::move(other.entries_)) {}

ContentFile& ContentFile::operator=(ContentFile&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(entries_, other.entries_);
    return *this;
}

ContentFile::~ContentFile() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

std::optional<Bytes> ContentFile::data(const Entry& entry, std::size_t limit) const {
    const std::size_t size = entry.size <= limit ? entry.size : limit + 1;
    const std::shared_ptr<char[]> buffer(new (std::nothrow) char[size]);
    if (buffer == nullptr || !readAt(descriptor_, entry.offset, buffer.get(), size))
        return std::nullopt;
    return Bytes(buffer, buffer.get(), size);
}

} // namespace tavel
