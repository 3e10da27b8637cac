#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavel {

/// What the header of an image file says of its first image.
struct ImageHeader {
    std::string_view typeIdentifier; // such as public.png; lives for ever
    std::int64_t width = 0;          // pixels, at least 1
    std::int64_t height = 0;         // pixels, at least 1
};

/// Reads the header of a PNG, JPEG, GIF, TIFF, WebP or BMP file, which is told by its content. No pixel is
/// decoded, and the time does not depend on the size that the file claims to have. Nothing if it is none of
/// these, or if its header is cut short or contradicts its format.
std::optional<ImageHeader> readImageHeader(std::string_view file);

} // namespace tavel
