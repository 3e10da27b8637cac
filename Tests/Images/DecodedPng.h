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
    int depth = 0;                     // bits per sample, as in the file
    int colourType = 0;                // as in the file
    std::string profile;               // ICC; empty if there is none
    std::vector<std::uint16_t> pixels; // RGBA, whatever the file's colour type
};

/// nullopt if libpng reports an error.
std::optional<DecodedPng> decodePng(std::string_view file);

} // namespace tavel
