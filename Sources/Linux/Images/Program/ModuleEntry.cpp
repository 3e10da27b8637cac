#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/ImageModule.h"
#include "Linux/Images/Program/ImageSource.h"
#include "Linux/Images/Program/JpegEncoder.h"
#include "Linux/Images/Program/PngEncoder.h"

#include <sys/mman.h>

#include <memory>
#include <new>

namespace tavel {
namespace {

std::optional<ImageSize> measure(const Bytes& file) {
    if (!startVips())
        return std::nullopt;
    const VipsConversion conversion;
    return measureHeif(file);
}

/// Opens the first image and calls `use` with its pixels.
template <typename Use>
auto withPixels(const Bytes& file, Use use) -> decltype(use(PlainPixels())) {
    if (!startVips())
        return std::nullopt;
    const VipsConversion conversion; // destroyed after all images
    try {
        auto source = openImage(file);
        if (!source)
            return std::nullopt;
        const PlainPixels pixels = makePlain(std::move(source->image));
        if (pixels.image == nullptr)
            return std::nullopt;
        return use(pixels);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

/// JPEG and HEIF files are photographs as a rule, and a search for few colours would be in vain.
bool mayHaveFewColours(const Bytes& file) {
    const auto header = readImageHeader(file.view());
    return header && header->typeIdentifier != "public.jpeg";
}

std::optional<bool> hasAlpha(const Bytes& file) {
    return withPixels(file, [](const PlainPixels& pixels) -> std::optional<bool> {
        return vips_image_get_bands(pixels.image.get()) % 2 == 0; // grey or RGB with one more band
    });
}

/// The largest file: 32 megapixels of four samples of 16 bits, which cannot be compressed.
constexpr std::size_t outputRoom = std::size_t{260} * 1024 * 1024;

std::optional<Bytes> encodePng(const Bytes& file) {
    return withPixels(file, [&](const PlainPixels& pixels) -> std::optional<Bytes> {
        // Addresses that become memory as the file is written.
        void* const room = mmap(nullptr, outputRoom, PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (room == MAP_FAILED)
            return std::nullopt;
        const std::shared_ptr<void> owner(room, [](void* mapped) { munmap(mapped, outputRoom); });
        ImageOutput output({static_cast<char*>(room), outputRoom});
        if (!encodeAsPng(pixels, mayHaveFewColours(file), output))
            return std::nullopt;
        return Bytes(owner, output.written().data(), output.written().size());
    });
}

std::optional<Bytes> encodeJpeg(const Bytes& file, double quality) {
    return withPixels(file, [&](const PlainPixels& pixels) { return encodeAsJpeg(pixels, quality); });
}

constexpr ImageModule imageModule{measure, hasAlpha, encodePng, encodeJpeg};

} // namespace
} // namespace tavel

extern "C" __attribute__((visibility("default"))) const tavel::ImageModule* tavelImageModule() {
    return &tavel::imageModule;
}
