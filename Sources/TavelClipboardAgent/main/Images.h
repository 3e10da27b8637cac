#pragma once

#include "Platform/ImageCodec.h"
#include "Platform/Pasteboard.h"

#include <optional>
#include <span>
#include <string>

namespace tavel {

/// The picture of a content with these types: its PNG, or else its TIFF. Of a larger one than
/// `maximumImageBytes`, the beginning. nullopt if neither is offered and delivered. Main thread; can block
/// like Pasteboard::data.
std::optional<Bytes> plainPicture(Pasteboard& pasteboard, std::span<const std::string> types);

/// Whether the bytes are an image whose first picture has at most `maximumImagePixels`. Reads only headers,
/// and does not check the size in bytes. Any thread.
bool validImage(ImageCodec& codec, const Bytes& data);

/// The image's first picture as PNG; a PNG is returned unchanged. nullopt if the bytes are not a valid image
/// or cannot be converted. Any thread. Slow for a large picture.
std::optional<Bytes> pngImage(ImageCodec& codec, const Bytes& data);

} // namespace tavel
