#pragma once

#include "Platform/ImageCodec.h"

#include <optional>

namespace tavel {

/// Whether the bytes are an image whose first picture has at most `maximumImagePixels`. Tells from the
/// headers; their byte size is not looked at. Any thread.
bool validImage(ImageCodec& codec, const Bytes& data);

/// The image's first picture as PNG: the bytes themselves if that is what they are. Nothing if they are no
/// valid image, or one that cannot be converted. Any thread; takes long for a large picture.
std::optional<Bytes> pngImage(ImageCodec& codec, const Bytes& data);

} // namespace tavel
