#pragma once

#include "Linux/Images/Program/ImageOutput.h"
#include "Platform/ImageCodec.h"

namespace tavel {

/// The part of an ImageCodec that needs a decoder. Call startVips, and for the formats that need it
/// `prepare`, first. No function throws.

/// For HEIF and AVIF files only.
std::optional<ImageSize> measureImage(const Bytes& file);

std::optional<bool> imageHasAlpha(const Bytes& file);

/// False if the first image in the file cannot be decoded, or its encoding does not fit. What is in the
/// output is then of no use.
bool convertToPng(const Bytes& file, ImageOutput& output);

/// `quality` goes from 0 to 1.
bool convertToJpeg(const Bytes& file, double quality, ImageOutput& output);

} // namespace tavel
