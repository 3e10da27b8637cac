#pragma once

#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/Module/VipsRuntime.h"
#include "Support/Bytes.h"

namespace tavel {

/// Decodes a BMP file of that header, whole. Null if it is broken or cut short. libvips has no reader of its
/// own for this format; GDK-PixBuf, which it depends on, has one.
VipsImagePointer decodeBmp(const Bytes& file, const ImageHeader& header);

} // namespace tavel
