#pragma once

#include "Linux/Images/Module/VipsRuntime.h"
#include "Platform/ImageCodec.h"
#include "Support/Bytes.h"

#include <optional>

namespace tavel {

/// A safety limit of the codec, whatever its caller allows: a picture of more pixels is not decoded.
inline constexpr std::uint64_t mostPixels = 32'000'000;

/// Where the pixels of one image come from. They are decoded when they are asked for, once, from the top
/// down.
struct ImageSource {
    Bytes file; // stays until the image is gone
    VipsImagePointer image;
};

/// Opens the first image of a file. Nothing if its format is not one of ours, its header is broken, it has
/// too many pixels, or reading it could take absurdly long. Needs startVips.
std::optional<ImageSource> openImage(const Bytes& file);

/// The size of a HEIF or AVIF file's first image, from its headers. Needs startVips.
std::optional<ImageSize> measureHeif(const Bytes& file);

} // namespace tavel
