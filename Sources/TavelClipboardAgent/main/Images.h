#pragma once

#include "Platform/ImageCodec.h"
#include "Support/Bytes.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The types under which a content that offers these types may hold its plain picture: PNG, then TIFF. The
/// picture is the first of them that is delivered.
std::vector<std::string_view> offeredPlainPictures(std::span<const std::string> types);

/// Whether the bytes are an image whose first picture has at most `maximumImagePixels`. Reads only headers,
/// and does not check the size in bytes. Any thread.
bool validImage(ImageCodec& codec, const Bytes& data);

/// The image's first picture as PNG; a PNG is returned unchanged. nullopt if the bytes are not a valid image
/// or cannot be converted. Any thread. Slow for a large picture.
std::optional<Bytes> pngImage(ImageCodec& codec, const Bytes& data);

} // namespace tavel
