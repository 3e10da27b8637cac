#include "ImageHeaders/ImageFields.h"

#include <algorithm>
#include <array>

namespace tavel {
namespace {

constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
constexpr std::size_t headerLength = 13;

/// The CRC of PNG (ISO 3309). Bit by bit is fast enough for one short chunk.
std::uint32_t checksum(std::string_view content) {
    std::uint32_t remainder = 0xFFFFFFFF;
    for (const char c : content) {
        remainder ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1) != 0 ? remainder >> 1 ^ 0xEDB88320 : remainder >> 1;
    }
    return ~remainder;
}

/// Whether the colour type allows the depth (PNG, third edition, table 9).
bool isLegal(std::uint64_t colourType, std::uint64_t depth) {
    const auto isOneOf = [depth](auto... depths) { return ((depth == depths) || ...); };
    switch (colourType) {
    case 0:
        return isOneOf(1U, 2U, 4U, 8U, 16U);
    case 3:
        return isOneOf(1U, 2U, 4U, 8U);
    case 2:
    case 4:
    case 6:
        return isOneOf(8U, 16U);
    default:
        return false;
    }
}

} // namespace

std::optional<ImageHeader> readPngHeader(std::string_view file) {
    constexpr std::size_t nameStart = 12;
    constexpr std::size_t dataStart = 16;
    const ImageFields fields(file, ByteOrder::bigEndian);
    const auto storedChecksum = fields.number(dataStart + headerLength, 4);
    if (!file.starts_with(signature) || !storedChecksum)
        return std::nullopt;
    const std::string_view chunk = file.substr(nameStart, 4 + headerLength);
    if (fields.number(8, 4) != headerLength || !chunk.starts_with("IHDR") ||
        checksum(chunk) != *storedChecksum)
        return std::nullopt;
    const bool isKnown = fields.numberOrZero(26, 1) == 0 && fields.numberOrZero(27, 1) == 0 &&
                         fields.numberOrZero(28, 1) <= 1; // compression, filter, interlacing
    if (!isKnown || !isLegal(fields.numberOrZero(25, 1), fields.numberOrZero(24, 1)))
        return std::nullopt;
    const std::uint64_t width = fields.numberOrZero(dataStart, 4);
    const std::uint64_t height = fields.numberOrZero(dataStart + 4, 4);
    constexpr std::uint64_t longestSide = 0x7FFFFFFF;
    if (std::max(width, height) > longestSide)
        return std::nullopt;
    return makeImageHeader("public.png", width, height);
}

} // namespace tavel
