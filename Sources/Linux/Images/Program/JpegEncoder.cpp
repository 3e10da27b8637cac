#include "Linux/Images/Program/JpegEncoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace tavel {
namespace {

/// The limit of libjpeg (JPEG_MAX_DIMENSION).
constexpr int longestSide = 65'500;

VipsImagePointer onWhite(const VipsImagePointer& image) {
    if (vips_image_get_bands(image.get()) % 2 != 0) // grey or RGB without alpha
        return vipsImage([&](VipsImage** out) { return vips_copy(image.get(), out, nullptr); });
    const double white = vips_image_get_format(image.get()) == VIPS_FORMAT_USHORT ? 65'535 : 255;
    std::array values{white};
    VipsArrayDouble* const colour = vips_array_double_new(values.data(), 1);
    VipsImagePointer flat = vipsImage([&](VipsImage** out) {
        return vips_flatten(image.get(), out, "background", colour, "max_alpha", white, nullptr);
    });
    vips_area_unref(VIPS_AREA(colour));
    return flat;
}

/// Keeps the upper 8 of 16 bits.
VipsImagePointer inEightBits(VipsImagePointer image) {
    if (vips_image_get_format(image.get()) != VIPS_FORMAT_USHORT)
        return image;
    return vipsImage([&](VipsImage** out) {
        return vips_cast(image.get(), out, VIPS_FORMAT_UCHAR, "shift", TRUE, nullptr);
    });
}

/// The APP2 segments that carry a profile (ICC.1, annex B.4). Each holds its number, from 1, and their count.
std::string profileSegments(std::string_view profile) {
    constexpr std::size_t largestPiece = 65'519;
    constexpr std::size_t mostPieces = 255;
    const std::size_t pieces = (profile.size() + largestPiece - 1) / largestPiece;
    std::string text;
    if (pieces > mostPieces)
        return text; // 16 MiB or more does not fit; readers then assume sRGB
    for (std::size_t i = 0; i < pieces; ++i) {
        const std::string_view piece = profile.substr(i * largestPiece, largestPiece);
        const std::size_t length = 2 + 14 + piece.size();
        text += {'\xFF', '\xE2', static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)};
        text += std::string_view("ICC_PROFILE\0", 12);
        text += {static_cast<char>(i + 1), static_cast<char>(pieces)};
        text += piece;
    }
    return text;
}

/// Appends the file with the segments after its first one: the JFIF segment must stay first.
bool appendWithSegments(std::string_view jpeg, const std::string& segments, ImageOutput& output) {
    constexpr std::size_t firstSegment = 2;
    const auto octet = [jpeg](std::size_t i) {
        return static_cast<std::size_t>(static_cast<unsigned char>(jpeg[i]));
    };
    const std::size_t place = firstSegment + 2 + (octet(firstSegment + 2) << 8 | octet(firstSegment + 3));
    return output.append(jpeg.substr(0, place)) && output.append(segments) &&
           output.append(jpeg.substr(place));
}

} // namespace

bool encodeAsJpeg(const PlainPixels& pixels, double quality, ImageOutput& output) {
    VipsImagePointer image = onWhite(pixels.image);
    if (image != nullptr)
        image = inEightBits(std::move(image));
    if (image == nullptr ||
        std::max(vips_image_get_width(image.get()), vips_image_get_height(image.get())) > longestSide)
        return false;
    const int percent = static_cast<int>(std::lround(std::clamp(quality, 0.01, 1.0) * 100));
    void* data = nullptr;
    size_t size = 0;
    // "strip" removes all metadata. The profile is among it and is inserted again.
    if (vips_jpegsave_buffer(image.get(), &data, &size, "Q", percent, "strip", TRUE, nullptr) != 0)
        return false;
    const std::unique_ptr<void, decltype(&g_free)> owned(data, g_free);
    return appendWithSegments({static_cast<const char*>(data), size}, profileSegments(pixels.profile),
                              output);
}

} // namespace tavel
