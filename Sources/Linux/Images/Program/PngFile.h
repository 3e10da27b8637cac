#pragma once

#include "Support/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tavel {

enum class PngColour : std::uint8_t { grey = 0, rgb = 2, palette = 3, greyAlpha = 4, rgba = 6 };

/// What a PNG file holds before its pixels.
struct PngHeader {
    std::size_t width = 0;
    std::size_t height = 0;
    unsigned depth = 8; // bits per sample or index
    PngColour colour = PngColour::rgb;
    std::string_view profile; // ICC; none if empty
    std::string palette;      // three bytes per colour
    std::string alphas;       // one byte for each of the palette's first colours
};

/// The size of all rows, each with the byte of its filter type, before compression.
std::size_t filteredSize(const PngHeader& header);

/// Writes a PNG file (PNG, third edition). `filtered` holds filteredSize(header) bytes: each row after its
/// filter type. Throws std::bad_alloc.
Bytes writePng(const PngHeader& header, std::span<const std::uint8_t> filtered);

} // namespace tavel
