#include "Linux/Images/Module/HostileFiles.h"

#include "ImageHeaders/ImageFields.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace tavel {
namespace {

constexpr std::uint64_t fewScans = 100;
constexpr std::uint64_t fewFrames = 10'000;

/// The place behind a run of GIF's sub-blocks, each of which starts with its length; an empty one ends it.
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

/// The size of the colour table that the flags of a GIF's screen or frame announce.
std::uint64_t colourTableSize(std::uint64_t flags) {
    return (flags & 0x80) == 0 ? 0 : std::uint64_t{3} << ((flags & 7) + 1);
}

/// The place of the next marker that is not part of a JPEG's entropy-coded data, from `offset` on.
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

} // namespace

std::optional<GifFrame> firstFrameOfGif(const Bytes& file) {
    constexpr std::uint64_t screenEnd = 13;
    constexpr std::uint64_t frameDescriptorSize = 10;
    const ImageFields fields(file.view(), ByteOrder::littleEndian);
    std::uint64_t offset = screenEnd + colourTableSize(fields.numberOrZero(10, 1));
    for (;;) {
        const auto kind = fields.number(offset, 1);
        std::optional<std::uint64_t> end;
        if (kind == 0x21) { // an extension and its label
            end = skipSubBlocks(fields, offset + 2);
        } else if (kind == 0x2C) {
            const std::uint64_t colours = colourTableSize(fields.numberOrZero(offset + 9, 1));
            end = skipSubBlocks(fields, offset + frameDescriptorSize + colours + 1); // behind the code size
            const auto side = [&](std::uint64_t place) {
                return static_cast<int>(fields.numberOrZero(offset + place, 2));
            };
            if (end)
                return GifFrame{file.slice(0, static_cast<std::size_t>(*end)), side(1), side(3), side(5),
                                side(7)};
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
        if (kind == 0xD9) // the end of the image
            break;
        if (kind == 0xDA && ++scans > fewScans)
            return std::nullopt;
        const bool hasLength = kind != 0x01 && kind != 0xD8;
        offset = *marker + 2 + (hasLength ? fields.numberOrZero(*marker + 2, 2) : 0);
    }
    return file;
}

std::optional<Bytes> webpWithFewFrames(const Bytes& file) {
    const ImageFields fields(file.view(), ByteOrder::littleEndian);
    std::uint64_t frames = 0;
    std::uint64_t offset = 12;
    while (const auto length = fields.number(offset + 4, 4)) {
        if (file.view().substr(static_cast<std::size_t>(offset), 4) == "ANMF" && ++frames > fewFrames)
            return std::nullopt;
        offset += 8 + *length + (*length & 1); // chunks begin at even places
    }
    return file;
}

} // namespace tavel
