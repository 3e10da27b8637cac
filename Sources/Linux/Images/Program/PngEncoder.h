#pragma once

#include "Linux/Images/Program/PlainPixels.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// Encodes the image as PNG, preferring speed to size. With `mayHaveFewColours`, an image of few colours
/// becomes an indexed one; looking for that holds all pixels in memory twice. nullopt if a part of the image
/// cannot be decoded in time. Throws std::bad_alloc.
std::optional<Bytes> encodeAsPng(const PlainPixels& pixels, bool mayHaveFewColours);

} // namespace tavel
