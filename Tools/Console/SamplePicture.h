#pragma once

#include <string_view>

namespace tavel {

inline constexpr int samplePictureWidth = 24;  // pixels
inline constexpr int samplePictureHeight = 16; // pixels

/// A PNG file: three stripes in blue, white and red.
std::string_view samplePicture();

} // namespace tavel
