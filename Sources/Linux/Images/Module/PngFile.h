#pragma once

#include "Support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

enum class PngColour : std::uint8_t { grey = 0, rgb = 2, palette = 3, greyAlpha = 4, rgba = 6 };

/// What stands in a PNG file before its pixels.
struct PngHeader {
    std::size_t width = 0;
    std::size_t height = 0;
    unsigned depth = 8; // bits of a sample, or of an index
    PngColour colour = PngColour::rgb;
    std::string_view profile; // ICC; none if empty
    std::string palette;      // three bytes a colour
    std::string alphas;       // of the palette's first colours, one byte each
};

/// The bytes that a row's filter, the row and every row alike take before they are compressed.
std::size_t filteredSize(const PngHeader& header);

/// Writes a PNG file (PNG, third edition): `filtered` holds the rows, each behind the number of its filter.
/// Throws std::bad_alloc.
Bytes writePng(const PngHeader& header, std::span<const std::uint8_t> filtered);

} // namespace tavel
