#pragma once

#include "Linux/Images/Program/ImageOutput.h"

#include <cstddef>
#include <cstdint>
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

/// Writes what precedes the IDAT chunks of a PNG file (PNG, third edition). False if it does not fit. Throws
/// std::bad_alloc.
bool writePngStart(const PngHeader& header, ImageOutput& output);

/// Writes what follows them. False if it does not fit.
bool writePngEnd(ImageOutput& output);

} // namespace tavel
