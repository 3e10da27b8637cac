#pragma once

#include "Platform/ImageCodec.h"

#include <optional>

namespace tavel {

/// Properties of an image, as ImageIO reports them; nullopt if one is missing or of the wrong type.
struct ImageProperties {
    std::optional<double> pixelWidth;
    std::optional<double> pixelHeight;
    std::optional<bool> hasAlpha;
};

/// The size in whole pixels; fractions are cut off. nullopt unless both numbers are there and at most 2^53.
std::optional<ImageSize> sizeFrom(const ImageProperties& properties);

/// False if the property is missing: formats without an alpha channel do not report it.
bool hasAlphaFrom(const ImageProperties& properties);

} // namespace tavel
