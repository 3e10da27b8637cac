#pragma once

#include "Linux/Images/Program/VipsRuntime.h"

#include <string>

namespace tavel {

/// Pixels as PNG and JPEG store them: grey or RGB, with or without alpha, of 8 or 16 bits per sample.
struct PlainPixels {
    VipsImagePointer image; // one to four bands of VIPS_FORMAT_UCHAR or VIPS_FORMAT_USHORT
    std::string profile;    // the ICC profile of the values; empty for sRGB
};

/// Converts any image to that form. An image that has it already stays unchanged and keeps its profile. CMYK
/// becomes sRGB by the embedded profile. Any other colour space becomes sRGB of 16 bits. The result's image
/// is null if the conversion is impossible.
PlainPixels makePlain(VipsImagePointer image);

} // namespace tavel
