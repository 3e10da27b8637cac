#include "PlatformImages/ImageModule.h"
#include "PlatformImages/Module/ImageSource.h"
#include "PlatformImages/Module/JpegEncoder.h"
#include "PlatformImages/Module/PngEncoder.h"
#include "Support/ImageHeader.h"

#include <new>

namespace tavel {
namespace {

std::optional<ImageSize> measure(const Bytes& file) {
    if (!startVips())
        return std::nullopt;
    const VipsConversion conversion;
    return measureHeif(file);
}

/// Decodes the first image and hands it to `encode`.
template <typename Encode>
std::optional<Bytes> convert(const Bytes& file, Encode encode) {
    if (!startVips())
        return std::nullopt;
    const VipsConversion conversion; // outlives all images
    try {
        auto source = openImage(file);
        if (!source)
            return std::nullopt;
        const PlainPixels pixels = makePlain(std::move(source->image));
        return pixels.image == nullptr ? std::nullopt : encode(pixels);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

/// JPEG and HEIF are for photographs, which are left out of the search for few colours.
bool mayHaveFewColours(const Bytes& file) {
    const auto header = readImageHeader(file.view());
    return header && header->typeIdentifier != "public.jpeg";
}

std::optional<Bytes> encodePng(const Bytes& file) {
    return convert(file,
                   [&](const PlainPixels& pixels) { return encodeAsPng(pixels, mayHaveFewColours(file)); });
}

std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) {
    return convert(file, [&](const PlainPixels& pixels) { return encodeAsJpeg(pixels, quality); });
}

constexpr ImageModule imageModule{measure, encodePng, encodeJpeg};

} // namespace
} // namespace tavel

extern "C" __attribute__((visibility("default"))) const tavel::ImageModule* tavelImageModule() {
    return &tavel::imageModule;
}
