#include "ImageHeaders/ImageFields.h"

namespace tavel {
namespace {

/// The layout of a directory in classic TIFF (TIFF 6.0, section 2) or in BigTIFF, which has wider fields.
struct Layout {
    std::size_t countOctets;
    std::size_t entryOctets;
    std::size_t valueOffset; // of the value within an entry
};

constexpr Layout classicLayout{2, 12, 8};
constexpr Layout bigLayout{8, 20, 12};

struct Directory {
    ImageFields fields;
    Layout layout;
    std::uint64_t offset;
};

/// Locates the first directory by the header's last field.
std::optional<Directory> openDirectory(std::string_view file) {
    const bool isLittleEndian = file.starts_with("II");
    if (!isLittleEndian && !file.starts_with("MM"))
        return std::nullopt;
    const ImageFields fields(file, isLittleEndian ? ByteOrder::littleEndian : ByteOrder::bigEndian);
    const auto version = fields.number(2, 2);
    if (version == 42) {
        if (const auto offset = fields.number(4, 4))
            return Directory{fields, classicLayout, *offset};
    } else if (version == 43 && fields.number(4, 4) == (isLittleEndian ? 8 : 0x80000)) {
        // Bytes 4 to 7 were the offset size, 8, and a constant 0.
        if (const auto offset = fields.number(8, 8))
            return Directory{fields, bigLayout, *offset};
    }
    return std::nullopt;
}

/// The value of a SHORT, LONG or (in BigTIFF) LONG8 entry with one value, which the entry itself holds.
std::optional<std::uint64_t> readValue(const Directory& directory, std::uint64_t entry) {
    constexpr std::uint64_t typeShort = 3;
    constexpr std::uint64_t typeLong = 4;
    constexpr std::uint64_t typeLong8 = 16;
    const std::size_t countOctets = directory.layout.valueOffset - 4;
    if (directory.fields.number(entry + 4, countOctets) != 1)
        return std::nullopt;
    const auto type = directory.fields.number(entry + 2, 2);
    const std::uint64_t value = entry + directory.layout.valueOffset;
    if (type == typeShort)
        return directory.fields.number(value, 2);
    if (type == typeLong)
        return directory.fields.number(value, 4);
    if (type == typeLong8 && directory.layout.valueOffset == bigLayout.valueOffset)
        return directory.fields.number(value, 8);
    return std::nullopt;
}

} // namespace

std::optional<ImageHeader> readTiffHeader(std::string_view file) {
    constexpr std::uint64_t tagWidth = 256;
    constexpr std::uint64_t tagLength = 257;
    constexpr std::uint64_t mostEntries = 65'535; // the largest classic count
    const auto directory = openDirectory(file);
    if (!directory || directory->offset > file.size())
        return std::nullopt;
    const auto count = directory->fields.number(directory->offset, directory->layout.countOctets);
    if (!count || *count > mostEntries)
        return std::nullopt;
    std::optional<std::uint64_t> width;
    std::optional<std::uint64_t> length;
    std::uint64_t entry = directory->offset + directory->layout.countOctets;
    for (std::uint64_t i = 0; i < *count && (!width || !length);
         ++i, entry += directory->layout.entryOctets) {
        if (!directory->fields.number(entry + directory->layout.entryOctets - 1, 1))
            return std::nullopt;
        const std::uint64_t tag = directory->fields.numberOrZero(entry, 2);
        // As in libtiff, the first entry with a tag counts.
        if (tag == tagWidth && !width)
            width = readValue(*directory, entry);
        if (tag == tagLength && !length)
            length = readValue(*directory, entry);
    }
    if (!width || !length)
        return std::nullopt;
    return makeImageHeader("public.tiff", *width, *length);
}

} // namespace tavel
