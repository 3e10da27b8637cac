#pragma once

#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/Program/VipsRuntime.h"
#include "Support/Bytes.h"

namespace tavel {

/// Loads GDK-PixBuf's loader, which reads files of its own. False if it is missing.
bool loadBmpLoader();

/// Decodes a BMP file with that header at once. Null if the file is malformed or incomplete. GDK-PixBuf does
/// it: libvips has no reader for this format, but depends on that library.
VipsImagePointer decodeBmp(const Bytes& file, const ImageHeader& header);

} // namespace tavel
