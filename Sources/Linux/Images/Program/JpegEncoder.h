#pragma once

#include "Linux/Images/Program/PlainPixels.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// Encodes the image as JPEG on a white background, with its profile and no other metadata. `quality` ranges
/// from 0 to 1. nullopt if a side is longer than a JPEG's may be, or if a part of the image cannot be decoded
/// in time. Throws std::bad_alloc.
std::optional<Bytes> encodeAsJpeg(const PlainPixels& pixels, double quality);

} // namespace tavel
