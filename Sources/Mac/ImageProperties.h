#pragma once

#include "Platform/ImageCodec.h"

#include <optional>

namespace tavel {

/// What the properties of an image say, as far as they say it.
struct ImageProperties {
    std::optional<double> pixelWidth;
    std::optional<double> pixelHeight;
    std::optional<bool> hasAlpha;
};

/// The size in whole pixels. Nothing unless both numbers are there and are numbers of pixels.
std::optional<ImageSize> sizeFrom(const ImageProperties& properties);

/// Formats that cannot have an alpha channel do not mention it.
bool hasAlphaFrom(const ImageProperties& properties);

} // namespace tavel
