#include "Linux/Images/Program/PlainPixels.h"

#include <array>
#include <utility>

namespace tavel {
namespace {

constexpr double maxChannel = 65'535; // the largest 16-bit value

std::string_view embeddedProfile(VipsImage* image) {
    const void* data = nullptr;
    size_t size = 0;
    if (vips_image_get_typeof(image, VIPS_META_ICC_NAME) == 0 ||
        vips_image_get_blob(image, VIPS_META_ICC_NAME, &data, &size) != 0)
        return {};
    return {static_cast<const char*>(data), size};
}

/// Whether the profile is for that colour space, a four-letter signature (ICC.1, table 19).
bool isProfileFor(std::string_view profile, std::string_view kind) {
    constexpr std::size_t headerSize = 128;
    constexpr std::size_t kindStart = 16;
    return profile.size() > headerSize && profile.substr(kindStart, 4) == kind;
}

VipsImagePointer bands(const VipsImagePointer& image, int first, int count) {
    return vipsImage(
        [&](VipsImage** out) { return vips_extract_band(image.get(), out, first, "n", count, nullptr); });
}

/// Multiplies the values and clips them to the format's range.
VipsImagePointer scaled(const VipsImagePointer& image, double factor, VipsBandFormat format) {
    const VipsImagePointer product =
        vipsImage([&](VipsImage** out) { return vips_linear1(image.get(), out, factor, 0.0, nullptr); });
    if (product == nullptr)
        return nullptr;
    return vipsImage([&](VipsImage** out) { return vips_cast(product.get(), out, format, nullptr); });
}

VipsImagePointer toSpace(const VipsImagePointer& image, VipsInterpretation from, VipsInterpretation to) {
    return vipsImage([&](VipsImage** out) {
        return vips_colourspace(image.get(), out, to, "source_space", from, nullptr);
    });
}

VipsImagePointer joined(VipsImagePointer colours, VipsImagePointer alpha) {
    if (colours == nullptr || alpha == nullptr)
        return nullptr;
    return vipsImage(
        [&](VipsImage** out) { return vips_bandjoin2(colours.get(), alpha.get(), out, nullptr); });
}

bool isReal(VipsImage* image) {
    return vips_band_format_isfloat(vips_image_get_format(image)) != 0;
}

bool isGreySpace(VipsInterpretation space) {
    return space == VIPS_INTERPRETATION_B_W || space == VIPS_INTERPRETATION_GREY16;
}

/// Whether the bands are grey or RGB values, or of unknown meaning.
bool isDirect(VipsInterpretation space) {
    return isGreySpace(space) || space == VIPS_INTERPRETATION_sRGB || space == VIPS_INTERPRETATION_RGB ||
           space == VIPS_INTERPRETATION_RGB16 || space == VIPS_INTERPRETATION_scRGB ||
           space == VIPS_INTERPRETATION_MULTIBAND;
}

/// Converts CMYK by the embedded profile, else by the one of libvips.
VipsImagePointer fromCmyk(const VipsImagePointer& image) {
    const int depth = vips_image_get_format(image.get()) == VIPS_FORMAT_UCHAR ? 8 : 16;
    return vipsImage([&](VipsImage** out) {
        return vips_icc_transform(image.get(), out, "srgb", "embedded", TRUE, "input_profile", "cmyk",
                                  "depth", depth, nullptr);
    });
}

/// Converts CIELAB and related spaces: three bands, perhaps with alpha.
VipsImagePointer fromColourimetry(const VipsImagePointer& image, VipsInterpretation space) {
    return toSpace(image, space, VIPS_INTERPRETATION_RGB16);
}

/// Converts real numbers, which range from 0 to 1. Without a profile they count as linear sRGB.
VipsImagePointer fromReal(const VipsImagePointer& image, bool hasProfile) {
    const int all = vips_image_get_bands(image.get());
    const int colours = all < 3 ? 1 : 3;
    VipsImagePointer result = bands(image, 0, colours);
    if (result != nullptr && hasProfile) {
        result = scaled(result, maxChannel, VIPS_FORMAT_USHORT);
    } else if (result != nullptr) {
        if (colours == 1)
            result = vipsImage([&](VipsImage** out) {
                return vips_bandjoin(std::array{result.get(), result.get(), result.get()}.data(), out, 3,
                                     nullptr);
            });
        if (result != nullptr)
            result = toSpace(result, VIPS_INTERPRETATION_scRGB,
                             colours == 1 ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_RGB16);
    }
    if (all == colours)
        return result;
    const VipsImagePointer alpha = bands(image, colours, 1);
    if (alpha == nullptr)
        return nullptr;
    return joined(std::move(result), scaled(alpha, maxChannel, VIPS_FORMAT_USHORT));
}

/// Converts integers of other widths: the upper 8 or 16 bits of their positive range.
VipsImagePointer fromWhole(VipsImagePointer image) {
    switch (vips_image_get_format(image.get())) {
    case VIPS_FORMAT_UCHAR:
    case VIPS_FORMAT_USHORT:
        return image;
    case VIPS_FORMAT_CHAR:
        return scaled(image, 2, VIPS_FORMAT_UCHAR);
    case VIPS_FORMAT_SHORT:
        return scaled(image, 2, VIPS_FORMAT_USHORT);
    case VIPS_FORMAT_UINT:
        return scaled(image, 1.0 / 65'536, VIPS_FORMAT_USHORT);
    case VIPS_FORMAT_INT:
        return scaled(image, 1.0 / 32'768, VIPS_FORMAT_USHORT);
    default:
        return nullptr;
    }
}

/// Keeps grey or RGB and one band of alpha.
VipsImagePointer withoutSpareBands(VipsImagePointer image, VipsInterpretation space) {
    const int all = vips_image_get_bands(image.get());
    const bool isGrey = isGreySpace(space) || all < 3;
    const int wanted = isGrey ? (all == 2 ? 2 : 1) : (all == 3 ? 3 : 4);
    return all == wanted ? std::move(image) : bands(image, 0, wanted);
}

} // namespace

PlainPixels makePlain(VipsImagePointer image) {
    if (vips_band_format_iscomplex(vips_image_get_format(image.get())) != 0)
        return {};
    const VipsInterpretation space = vips_image_guess_interpretation(image.get());
    if (!isDirect(space)) {
        image = space == VIPS_INTERPRETATION_CMYK ? fromCmyk(image) : fromColourimetry(image, space);
        if (image == nullptr)
            return {};
        const VipsInterpretation result = vips_image_get_interpretation(image.get());
        return {withoutSpareBands(std::move(image), result), {}};
    }
    image = withoutSpareBands(std::move(image), space);
    if (image == nullptr)
        return {};
    const std::string_view kind = vips_image_get_bands(image.get()) < 3 ? "GRAY" : "RGB ";
    const bool hasProfile = isProfileFor(embeddedProfile(image.get()), kind);
    image = isReal(image.get()) ? fromReal(image, hasProfile) : fromWhole(std::move(image));
    if (image == nullptr)
        return {};
    // A copy: decoding replaces the metadata.
    std::string profile(hasProfile ? embeddedProfile(image.get()) : std::string_view());
    return {std::move(image), std::move(profile)};
}

} // namespace tavel
