#include "Mac/ImageProperties.h"

#include <cmath>

namespace tavel {

namespace {

/// Whole numbers are exact up to here, which is far beyond any picture.
constexpr double mostPixels = 9007199254740992;

std::optional<std::int64_t> wholePixels(std::optional<double> number) {
    if (!number || !(std::abs(*number) <= mostPixels)) // no number at all is not, either
        return std::nullopt;
    return static_cast<std::int64_t>(*number);
}

} // namespace

std::optional<ImageSize> sizeFrom(const ImageProperties& properties) {
    const auto width = wholePixels(properties.pixelWidth);
    const auto height = wholePixels(properties.pixelHeight);
    if (!width || !height)
        return std::nullopt;
    return ImageSize{*width, *height};
}

bool hasAlphaFrom(const ImageProperties& properties) {
    return properties.hasAlpha.value_or(false);
}

} // namespace tavel
