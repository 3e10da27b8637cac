#pragma once

#include "PlatformImages/Module/PixelRows.h"
#include "PlatformImages/Module/PngFile.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tavel {

struct IndexedPixels {
    PngHeader header;
    std::vector<std::uint8_t> filtered;
};

/// Replaces pixels of 8 bits a sample by indices into a palette, if they have few enough colours for that to
/// be smaller: 256, or 16 of grey. `header` is that of the image as it is.
std::optional<IndexedPixels> indexPixels(const RowLayout& layout, std::span<const std::uint8_t> pixels,
                                         const PngHeader& header);

} // namespace tavel
