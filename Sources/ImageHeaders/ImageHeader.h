#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavel {

/// The format of an image file and the size of its first image, by the file's header.
struct ImageHeader {
    std::string_view typeIdentifier; // a UTI such as public.png, in static storage
    std::int64_t width = 0;          // pixels, at least 1
    std::int64_t height = 0;         // pixels, at least 1
};

/// Recognises PNG, JPEG, GIF, TIFF, WebP and BMP files by their content and reads the header. Decodes no
/// pixels, and the time does not depend on the size that the header claims. nullopt for any other file, and
/// for a header that is cut short or malformed. Any thread.
std::optional<ImageHeader> readImageHeader(std::string_view file);

} // namespace tavel
