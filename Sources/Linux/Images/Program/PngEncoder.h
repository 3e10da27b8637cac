#pragma once

#include "Linux/Images/Program/ImageOutput.h"
#include "Linux/Images/Program/PlainPixels.h"

namespace tavel {

/// Encodes the image as PNG, preferring speed to size, while it is decoded: threads of its own help with a
/// large one. With `mayHaveFewColours`, an image of few colours becomes an indexed one; up to one byte for
/// each pixel is in memory until that is known. False if a part of the image cannot be decoded, or if the
/// file does not fit. Throws std::bad_alloc.
bool encodeAsPng(const PlainPixels& pixels, bool mayHaveFewColours, ImageOutput& output);

} // namespace tavel
