#include "Linux/Images/Program/Conversion.h"

#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/Program/ImageSource.h"
#include "Linux/Images/Program/JpegEncoder.h"
#include "Linux/Images/Program/PngEncoder.h"

#include <new>

namespace tavel {
namespace {

/// Opens the first image and returns what `use` makes of its pixels; nothing (false) if there are none.
template <typename Use>
auto withPixels(const Bytes& file, Use use) -> decltype(use(PlainPixels())) {
    try {
        auto source = openImage(file);
        if (!source)
            return {};
        const PlainPixels pixels = makePlain(std::move(source->image));
        if (pixels.image == nullptr)
            return {};
        return use(pixels);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

/// JPEG and HEIF files are photographs as a rule, and a search for few colours would be in vain.
bool mayHaveFewColours(const Bytes& file) {
    const auto header = readImageHeader(file.view());
    return header && header->typeIdentifier != "public.jpeg";
}

} // namespace

std::optional<ImageSize> measureImage(const Bytes& file) {
    return measureHeif(file);
}

std::optional<bool> imageHasAlpha(const Bytes& file) {
    return withPixels(file, [](const PlainPixels& pixels) -> std::optional<bool> {
        return vips_image_get_bands(pixels.image.get()) % 2 == 0; // grey or RGB with one more band
    });
}

bool convertToPng(const Bytes& file, ImageOutput& output) {
    return withPixels(file, [&](const PlainPixels& pixels) {
        return encodeAsPng(pixels, mayHaveFewColours(file), output);
    });
}

bool convertToJpeg(const Bytes& file, double quality, ImageOutput& output) {
    return withPixels(file, [&](const PlainPixels& pixels) { return encodeAsJpeg(pixels, quality, output); });
}

} // namespace tavel
