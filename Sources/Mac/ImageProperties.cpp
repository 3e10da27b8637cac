#include "Mac/ImageProperties.h"

#include <cmath>

namespace tavel {

namespace {

/// Up to here (2^53), a double holds whole numbers exactly. No picture is as large.
constexpr double mostPixels = 9007199254740992;

std::optional<std::int64_t> wholePixels(std::optional<double> number) {
    if (!number || !(std::abs(*number) <= mostPixels)) // NaN fails it, too
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
