#pragma once

#include "PlatformImages/Module/VipsRuntime.h"
#include "Support/Bytes.h"
#include "Support/ImageHeader.h"

namespace tavel {

/// Decodes a BMP file of that header, whole. Null if it is broken or cut short. libvips has no reader of its
/// own for this format; GDK-PixBuf, which it depends on, has one.
VipsImagePointer decodeBmp(const Bytes& file, const ImageHeader& header);

} // namespace tavel
