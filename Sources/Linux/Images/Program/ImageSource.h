#pragma once

#include "Linux/Images/Program/VipsRuntime.h"
#include "Platform/ImageCodec.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// The codec's own limit, whatever its caller allows: images with more pixels are not decoded.
inline constexpr std::uint64_t maxPixels = 32'000'000;

/// An image whose pixels are decoded while it is evaluated: once, from the top down.
struct ImageSource {
    Bytes file; // must outlive the image
    VipsImagePointer image;
};

/// Opens the first image of a file. nullopt if the format is unknown, the header is malformed, the image has
/// too many pixels, or decoding it could take absurdly long. Call startVips first.
std::optional<ImageSource> openImage(const Bytes& file);

/// The size of a HEIF or AVIF file's first image, from its headers. nullopt if the file is neither, or is
/// malformed. Call startVips first.
std::optional<ImageSize> measureHeif(const Bytes& file);

} // namespace tavel
