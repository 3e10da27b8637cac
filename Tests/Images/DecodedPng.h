#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A PNG file as libpng decodes it.
struct DecodedPng {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int depth = 0;                     // bits of a sample, as in the file
    int colourType = 0;                // as in the file
    std::string profile;               // ICC; empty if there is none
    std::vector<std::uint16_t> pixels; // red, green, blue and alpha, whatever the file's type
};

/// Nothing if libpng finds any fault.
std::optional<DecodedPng> decodePng(std::string_view file);

} // namespace tavel
