#pragma once

#include "Linux/Images/Program/PixelRows.h"
#include "Linux/Images/Program/PngFile.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tavel {

struct IndexedPixels {
    PngHeader header;
    std::vector<std::uint8_t> filtered; // as writePng takes it
};

/// Represents pixels of 8 bits per sample in fewer bits: up to 256 colours as indices into a palette, greys
/// in 1, 2 or 4 bits if those are exact. nullopt if neither is possible. `header` describes the pixels as
/// given, and the result's header the new form.
std::optional<IndexedPixels> indexPixels(const RowLayout& layout, std::span<const std::uint8_t> pixels,
                                         const PngHeader& header);

} // namespace tavel
