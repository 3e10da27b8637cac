#pragma once

#include "Linux/Images/Program/ImageOutput.h"
#include "Linux/Images/Program/PlainPixels.h"

namespace tavel {

/// Encodes the image as JPEG on a white background, with its profile and no other metadata. `quality` ranges
/// from 0 to 1. False if a side is longer than a JPEG's may be, a part of the image cannot be decoded, or the
/// file does not fit into the output. Throws std::bad_alloc.
bool encodeAsJpeg(const PlainPixels& pixels, double quality, ImageOutput& output);

} // namespace tavel
