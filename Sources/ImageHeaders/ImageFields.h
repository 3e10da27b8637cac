#pragma once

#include "ImageHeaders/ImageHeader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tavel {

enum class ByteOrder { bigEndian, littleEndian };

/// Reads numbers from an untrusted file, which may be cut short or describe a layout that it does not have.
class ImageFields {
public:
    ImageFields(std::string_view file, ByteOrder order) : file_(file), order_(order) {}

    /// The unsigned number in the 1 to 8 bytes at `offset`; nullopt if the file does not hold all of them.
    std::optional<std::uint64_t> number(std::uint64_t offset, std::size_t octets) const {
        if (offset > file_.size() || octets > file_.size() - offset)
            return std::nullopt;
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < octets; ++i) {
            const std::size_t place = order_ == ByteOrder::bigEndian ? i : octets - 1 - i;
            value = value << 8 | static_cast<unsigned char>(file_[static_cast<std::size_t>(offset) + place]);
        }
        return value;
    }

    /// The same, with 0 in place of nullopt.
    std::uint64_t numberOrZero(std::uint64_t offset, std::size_t octets) const {
        return number(offset, octets).value_or(0);
    }

private:
    std::string_view file_;
    ByteOrder order_;
};

/// A header with those sides in pixels. nullopt if a side is 0 or larger than any format allows.
inline std::optional<ImageHeader> makeImageHeader(std::string_view typeIdentifier, std::uint64_t width,
                                                  std::uint64_t height) {
    constexpr std::uint64_t longestSide = UINT32_MAX;
    if (width == 0 || height == 0 || width > longestSide || height > longestSide)
        return std::nullopt;
    return ImageHeader{typeIdentifier, static_cast<std::int64_t>(width), static_cast<std::int64_t>(height)};
}

/// Readers of the formats that need more than a few fields. nullopt for a file of any other format.
std::optional<ImageHeader> readJpegHeader(std::string_view file);
std::optional<ImageHeader> readPngHeader(std::string_view file);
std::optional<ImageHeader> readTiffHeader(std::string_view file);

} // namespace tavel
