#include "ImageHeaders/ImageHeader.h"

#include "ImageHeaders/ImageFields.h"

namespace tavel {
namespace {

std::optional<ImageHeader> readGifHeader(std::string_view file) {
    if (!file.starts_with("GIF87a") && !file.starts_with("GIF89a"))
        return std::nullopt;
    // The size of the logical screen, on which all frames are painted. Byte 12 ends its descriptor.
    const ImageFields fields(file, ByteOrder::littleEndian);
    if (!fields.number(12, 1))
        return std::nullopt;
    return makeImageHeader("com.compuserve.gif", fields.numberOrZero(6, 2), fields.numberOrZero(8, 2));
}

/// Lossy images start with the frame header of a key frame (RFC 6386, section 9.1).
std::optional<ImageHeader> readLossyWebp(std::string_view chunk) {
    const ImageFields fields(chunk, ByteOrder::littleEndian);
    const bool isKeyFrame = (fields.number(0, 1).value_or(1) & 1) == 0;
    if (!isKeyFrame || fields.number(3, 3) != 0x2A019D)
        return std::nullopt;
    // The upper two bits are a scale for display.
    return makeImageHeader("org.webmproject.webp", fields.numberOrZero(6, 2) & 0x3FFF,
                           fields.numberOrZero(8, 2) & 0x3FFF);
}

/// Lossless images store each side less one in 14 bits, and a version, which must be 0.
std::optional<ImageHeader> readLosslessWebp(std::string_view chunk) {
    const ImageFields fields(chunk, ByteOrder::littleEndian);
    const auto packed = fields.number(1, 4);
    if (!packed || fields.number(0, 1) != 0x2F || *packed >> 29 != 0)
        return std::nullopt;
    return makeImageHeader("org.webmproject.webp", (*packed & 0x3FFF) + 1, (*packed >> 14 & 0x3FFF) + 1);
}

/// The extended format stores each side of the canvas less one in 24 bits.
std::optional<ImageHeader> readExtendedWebp(std::string_view chunk) {
    const ImageFields fields(chunk, ByteOrder::littleEndian);
    const auto width = fields.number(4, 3);
    const auto height = fields.number(7, 3);
    if (!width || !height)
        return std::nullopt;
    return makeImageHeader("org.webmproject.webp", *width + 1, *height + 1);
}

std::optional<ImageHeader> readWebpHeader(std::string_view file) {
    constexpr std::size_t chunkStart = 20;
    if (file.size() <= chunkStart || !file.starts_with("RIFF") || file.substr(8, 4) != "WEBP")
        return std::nullopt;
    const std::string_view kind = file.substr(12, 4);
    const std::string_view chunk = file.substr(chunkStart);
    if (kind == "VP8 ")
        return readLossyWebp(chunk);
    if (kind == "VP8L")
        return readLosslessWebp(chunk);
    if (kind == "VP8X")
        return readExtendedWebp(chunk);
    return std::nullopt;
}

std::optional<ImageHeader> readBmpHeader(std::string_view file) {
    constexpr std::string_view type = "com.microsoft.bmp";
    constexpr std::uint64_t coreHeader = 12;  // the oldest, with 16-bit sides
    constexpr std::uint64_t infoHeader = 40;  // the start of all later ones
    constexpr std::uint64_t longHeader = 124; // the longest, version 5
    const ImageFields fields(file, ByteOrder::littleEndian);
    const auto headerSize = fields.number(14, 4);
    if (!file.starts_with("BM") || !headerSize)
        return std::nullopt;
    if (*headerSize == coreHeader) {
        if (!fields.number(25, 1) || fields.numberOrZero(22, 2) != 1)
            return std::nullopt;
        return makeImageHeader(type, fields.numberOrZero(18, 2), fields.numberOrZero(20, 2));
    }
    const bool isComplete = fields.number(14 + infoHeader - 1, 1).has_value();
    if (*headerSize < infoHeader || *headerSize > longHeader || !isComplete ||
        fields.numberOrZero(26, 2) != 1)
        return std::nullopt;
    const auto signedSide = [&](std::uint64_t offset) {
        return static_cast<std::int64_t>(static_cast<std::int32_t>(fields.numberOrZero(offset, 4)));
    };
    const std::int64_t width = signedSide(18);
    const std::int64_t height = signedSide(22);
    if (width <= 0)
        return std::nullopt;
    // A negative height means that the rows run from the top down.
    const std::int64_t rows = height < 0 ? -height : height;
    return makeImageHeader(type, static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(rows));
}

} // namespace

std::optional<ImageHeader> readImageHeader(std::string_view file) {
    for (const auto reader :
         {readPngHeader, readJpegHeader, readGifHeader, readTiffHeader, readWebpHeader, readBmpHeader}) {
        if (const auto header = reader(file))
            return header;
    }
    return std::nullopt;
}

} // namespace tavel
