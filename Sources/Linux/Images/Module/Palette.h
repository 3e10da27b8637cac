#pragma once

#include "Linux/Images/Module/PixelRows.h"
#include "Linux/Images/Module/PngFile.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tavel {

struct IndexedPixels {
    PngHeader header;
    std::vector<std::uint8_t> filtered;
};

/// Says pixels of 8 bits a sample in fewer bits: up to 256 colours as indices into a palette, greys as they
/// are if 1, 2 or 4 bits say them exactly. Nothing if that is not possible. `header` is that of the image as
/// it is.
std::optional<IndexedPixels> indexPixels(const RowLayout& layout, std::span<const std::uint8_t> pixels,
                                         const PngHeader& header);

} // namespace tavel
