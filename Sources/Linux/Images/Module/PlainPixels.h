#pragma once

#include "Linux/Images/Module/VipsRuntime.h"

#include <string>

namespace tavel {

/// Pixels as PNG and JPEG know them: grey or red, green and blue, each with or without alpha, of 8 or 16
/// bits.
struct PlainPixels {
    VipsImagePointer image; // one to four bands of VIPS_FORMAT_UCHAR or VIPS_FORMAT_USHORT
    std::string profile;    // the ICC profile that the values are meant by; empty for sRGB
};

/// Brings any decoded image into that form. What has it already stays as it is, with its profile; CMYK
/// becomes sRGB by the embedded profile; everything else that is not made of grey or RGB values becomes sRGB
/// of 16 bits. The image is null if that is not possible.
PlainPixels makePlain(VipsImagePointer image);

} // namespace tavel
