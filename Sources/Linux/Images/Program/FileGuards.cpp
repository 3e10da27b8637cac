#include "Linux/Images/Program/FileGuards.h"

#include "ImageHeaders/ImageFields.h"
#include "Linux/Images/Program/ImageSource.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace tavel {
namespace {

constexpr std::uint64_t maxJpegScans = 100;
constexpr std::uint64_t maxWebpFrames = 10'000;
constexpr std::uint64_t maxTiffSamples = 16; // more than any camera or program writes

/// The offset after a series of GIF sub-blocks. Each starts with its length; an empty one ends the series.
std::optional<std::uint64_t> skipSubBlocks(const ImageFields& fields, std::uint64_t offset) {
    for (;;) {
        const auto length = fields.number(offset, 1);
        if (!length)
            return std::nullopt;
        offset += 1 + *length;
        if (*length == 0)
            return offset;
    }
}

/// The size in bytes of the colour table that the flags of a GIF's screen or frame describe.
std::uint64_t colourTableSize(std::uint64_t flags) {
    return (flags & 0x80) == 0 ? 0 : std::uint64_t{3} << ((flags & 7) + 1);
}

/// The GIF with a screen of exactly the size of its only frame, whose descriptor starts at that offset.
Bytes onScreenOfItsSize(std::string_view gif, std::size_t frame) {
    constexpr std::size_t screenSize = 6; // the offset of the width and height, of 2 bytes each
    constexpr std::size_t placeSize = 4;  // left and top, before the frame's width and height
    std::string alone(gif);
    alone.replace(screenSize, 4, gif.substr(frame + 1 + placeSize, 4));
    alone.replace(frame + 1, placeSize, placeSize, '\0');
    return Bytes::adopt(std::move(alone));
}

/// The offset of the next marker, from `offset` on, that is not part of a JPEG's entropy-coded data.
std::optional<std::uint64_t> findMarker(std::string_view file, std::uint64_t offset) {
    while (offset + 1 < file.size()) {
        const void* const found = std::memchr(file.data() + offset, 0xFF, file.size() - 1 - offset);
        if (found == nullptr)
            return std::nullopt;
        offset = static_cast<std::uint64_t>(static_cast<const char*>(found) - file.data());
        const auto next = static_cast<unsigned char>(file[offset + 1]);
        const bool isData = next == 0 || next == 0xFF || (next >= 0xD0 && next <= 0xD7);
        if (!isData)
            return offset;
        offset += next == 0xFF ? 1 : 2;
    }
    return std::nullopt;
}

struct TiffDirectory {
    ImageFields fields;
    bool isBig; // BigTIFF, with wider fields
    std::uint64_t firstEntry;
    std::uint64_t count;

    std::uint64_t entrySize() const { return isBig ? 20 : 12; }
    std::uint64_t nextOffset() const { return firstEntry + count * entrySize(); }
    std::size_t nextSize() const { return isBig ? 8 : 4; }
};

/// The first directory. The file must have passed readImageHeader, which checks its offset and count.
TiffDirectory firstDirectory(std::string_view file) {
    const ImageFields fields(file, file.starts_with("II") ? ByteOrder::littleEndian : ByteOrder::bigEndian);
    const bool isBig = fields.number(2, 2) == 43;
    const std::uint64_t offset = isBig ? fields.numberOrZero(8, 8) : fields.numberOrZero(4, 4);
    const std::size_t countSize = isBig ? 8 : 2;
    return {fields, isBig, offset + countSize, fields.numberOrZero(offset, countSize)};
}

/// The largest value among the entries with that tag, each read as a single number; the default if there is
/// none.
std::uint64_t largestValue(const TiffDirectory& directory, std::uint64_t tag, std::uint64_t defaultValue) {
    std::optional<std::uint64_t> largest;
    for (std::uint64_t i = 0; i < directory.count; ++i) {
        const std::uint64_t entry = directory.firstEntry + i * directory.entrySize();
        if (directory.fields.number(entry, 2) != tag)
            continue;
        const std::uint64_t type = directory.fields.numberOrZero(entry + 2, 2);
        const std::size_t size = type == 3 ? 2 : type == 16 ? 8 : 4;
        const std::uint64_t value = directory.fields.numberOrZero(entry + (directory.isBig ? 12 : 8), size);
        largest = std::max(largest.value_or(0), value);
    }
    return largest.value_or(defaultValue);
}

} // namespace

std::optional<GifFrame> firstFrameOfGif(const Bytes& file) {
    constexpr std::uint64_t screenEnd = 13;
    constexpr std::uint64_t frameDescriptorSize = 10;
    const ImageFields fields(file.view(), ByteOrder::littleEndian);
    std::uint64_t offset = screenEnd + colourTableSize(fields.numberOrZero(10, 1));
    for (;;) {
        const auto kind = fields.number(offset, 1);
        std::optional<std::uint64_t> end;
        if (kind == 0x21) { // extension introducer; a label follows
            end = skipSubBlocks(fields, offset + 2);
        } else if (kind == 0x2C) {
            const std::uint64_t colours = colourTableSize(fields.numberOrZero(offset + 9, 1));
            end = skipSubBlocks(fields, offset + frameDescriptorSize + colours + 1); // 1: the code size
            const auto side = [&](std::uint64_t place) {
                return static_cast<int>(fields.numberOrZero(offset + place, 2));
            };
            if (end)
                return GifFrame{onScreenOfItsSize(file.view().substr(0, static_cast<std::size_t>(*end)),
                                                  static_cast<std::size_t>(offset)),
                                side(1), side(3), side(5), side(7)};
        }
        if (!end)
            return std::nullopt;
        offset = *end;
    }
}

std::optional<Bytes> jpegWithFewScans(const Bytes& file) {
    const ImageFields fields(file.view(), ByteOrder::bigEndian);
    std::uint64_t scans = 0;
    std::uint64_t offset = 2;
    while (const auto marker = findMarker(file.view(), offset)) {
        const std::uint64_t kind = fields.numberOrZero(*marker + 1, 1);
        if (kind == 0xD9) // EOI
            break;
        if (kind == 0xDA && ++scans > maxJpegScans)
            return std::nullopt;
        const bool hasLength = kind != 0x01 && kind != 0xD8;
        offset = *marker + 2 + (hasLength ? fields.numberOrZero(*marker + 2, 2) : 0);
    }
    return file;
}

std::optional<Bytes> firstDirectoryOfTiff(const Bytes& file) {
    constexpr std::uint64_t tagSamples = 277;
    constexpr std::uint64_t tagTileWidth = 322;
    constexpr std::uint64_t tagTileLength = 323;
    const TiffDirectory directory = firstDirectory(file.view());
    const std::uint64_t tileWidth = std::max<std::uint64_t>(largestValue(directory, tagTileWidth, 1), 1);
    const std::uint64_t tileLength = largestValue(directory, tagTileLength, 1);
    if (largestValue(directory, tagSamples, 1) > maxTiffSamples || tileLength > maxPixels / tileWidth)
        return std::nullopt;
    const auto next = directory.fields.number(directory.nextOffset(), directory.nextSize());
    if (!next || *next == 0)
        return file; // the only directory, or the offset is cut off
    std::string alone(file.view());
    alone.replace(static_cast<std::size_t>(directory.nextOffset()), directory.nextSize(),
                  directory.nextSize(), '\0');
    return Bytes::adopt(std::move(alone));
}

std::optional<Bytes> webpWithFewFrames(const Bytes& file) {
    const ImageFields fields(file.view(), ByteOrder::littleEndian);
    std::uint64_t frames = 0;
    std::uint64_t offset = 12;
    while (const auto length = fields.number(offset + 4, 4)) {
        if (file.view().substr(static_cast<std::size_t>(offset), 4) == "ANMF" && ++frames > maxWebpFrames)
            return std::nullopt;
        offset += 8 + *length + (*length & 1); // chunks are padded to an even size
    }
    return file;
}

} // namespace tavel
