#pragma once

#include "Platform/ImageCodec.h"

#include <optional>

namespace tavel {

/// Whether the bytes are an image whose first picture has at most `maximumImagePixels`. Reads only headers,
/// and does not check the size in bytes. Any thread.
bool validImage(ImageCodec& codec, const Bytes& data);

/// The image's first picture as PNG; a PNG is returned unchanged. nullopt if the bytes are not a valid image
/// or cannot be converted. Any thread. Slow for a large picture.
std::optional<Bytes> pngImage(ImageCodec& codec, const Bytes& data);

} // namespace tavel
