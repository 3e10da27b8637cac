#pragma once

#include "Linux/Images/ProcessImageCodec.h"
#include "Support/Bytes.h"
#include "Tests/Images/DecodedPng.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The sides of the pictures of make-pictures.
inline constexpr std::int64_t pictureWidth = 203;
inline constexpr std::int64_t pictureHeight = 149;

/// A shared codec. Each message that it logs fails the test.
ProcessImageCodec& codec();

/// The file of a picture of make-pictures. Throws std::runtime_error if it is missing.
std::string readPicture(const std::string& name);

/// The pixels of that picture, RGBA, as ImageMagick decodes them.
std::vector<std::uint16_t> readPixels(const std::string& name);

/// Encodes the picture as PNG with the codec, and decodes that with libpng. nullopt if either fails.
std::optional<DecodedPng> throughPng(std::string_view file);

/// The difference of two pictures in 16-bit steps. Pixels that are transparent in both do not count.
struct Distance {
    double mean = 0;
    int largest = 0;
};

/// Throws std::runtime_error unless both have the same number of samples.
Distance distance(const std::vector<std::uint16_t>& one, const std::vector<std::uint16_t>& other);

/// Whether this process has mapped a library whose path contains `name`.
bool isMapped(const std::string& name);

} // namespace tavel
