#pragma once

#include "Linux/Images/OnDemandImageCodec.h"
#include "Support/Bytes.h"
#include "Tests/Images/DecodedPng.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The sides of the pictures that make-pictures makes.
inline constexpr std::int64_t pictureWidth = 203;
inline constexpr std::int64_t pictureHeight = 149;

/// A codec whose messages fail the test.
OnDemandImageCodec& codec();

/// A picture that make-pictures made. Throws if it is not there.
std::string readPicture(const std::string& name);

/// Its pixels, as ImageMagick decodes them: red, green, blue and alpha.
std::vector<std::uint16_t> readPixels(const std::string& name);

/// The picture as the codec and then libpng read it; nothing if either does not.
std::optional<DecodedPng> throughPng(std::string_view file);

/// How far apart two pictures are, in 16-bit steps. Colour does not count where both are transparent.
struct Distance {
    double mean = 0;
    int largest = 0;
};

/// The pictures must have the same number of samples.
Distance distance(const std::vector<std::uint16_t>& one, const std::vector<std::uint16_t>& other);

} // namespace tavel
