#pragma once

#include <string_view>

namespace tavel {

inline constexpr int samplePictureWidth = 24;  // pixels
inline constexpr int samplePictureHeight = 16; // pixels

/// A PNG file with a blue, a white and a red stripe.
std::string_view samplePicture();

} // namespace tavel
