#pragma once

#include "Linux/Images/Module/PlainPixels.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// Encodes as JPEG, on white where the image is transparent, with its profile and no other metadata.
/// `quality` goes from 0 to 1. Nothing if a part of the image cannot be decoded. Throws std::bad_alloc.
std::optional<Bytes> encodeAsJpeg(const PlainPixels& pixels, double quality);

} // namespace tavel
