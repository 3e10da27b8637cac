#include "Linux/Images/Program/ImageSource.h"

#include "ImageHeaders/ImageHeader.h"
#include "Linux/Images/HeifBrand.h"
#include "Linux/Images/Program/BmpDecoder.h"
#include "Linux/Images/Program/FileGuards.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavel {
namespace {

using Loader = int (*)(void* data, size_t size, VipsImage** image, ...);
using Guard = std::optional<Bytes> (*)(const Bytes& file);

struct Format {
    std::string_view typeIdentifier;
    Loader loader;
    Guard guard; // may be null
};

constexpr std::array formats{
    Format{"public.png", vips_pngload_buffer, nullptr},
    Format{"public.jpeg", vips_jpegload_buffer, jpegWithFewScans},
    Format{"public.tiff", vips_tiffload_buffer, firstDirectoryOfTiff},
    Format{"org.webmproject.webp", vips_webpload_buffer, webpWithFewFrames},
};

bool isSmallEnough(std::uint64_t width, std::uint64_t height) {
    return width >= 1 && height >= 1 && width <= maxPixels / height;
}

bool isSmallEnough(VipsImage* image) {
    const int width = vips_image_get_width(image);
    const int height = vips_image_get_height(image);
    return width >= 1 && height >= 1 &&
           isSmallEnough(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
}

/// Reads the header only; evaluating the image reads the rest. So the file must outlive the image.
VipsImagePointer load(Loader loader, const Bytes& file) {
    return vipsImage([&](VipsImage** image) {
        // libvips does not write through this pointer.
        return loader(const_cast<char*>(file.data()), file.size(), image, "access", VIPS_ACCESS_SEQUENTIAL,
                      "fail_on", VIPS_FAIL_ON_ERROR, nullptr);
    });
}

/// Places the image on a larger, transparent one.
VipsImagePointer onTransparent(const VipsImagePointer& image, int left, int top, int width, int height) {
    const VipsImagePointer withAlpha = vipsImage([&](VipsImage** out) {
        return vips_image_hasalpha(image.get()) != 0 ? vips_copy(image.get(), out, nullptr)
                                                     : vips_addalpha(image.get(), out, nullptr);
    });
    if (withAlpha == nullptr)
        return nullptr;
    return vipsImage(
        [&](VipsImage** out) { return vips_embed(withAlpha.get(), out, left, top, width, height, nullptr); });
}

/// Opens the first frame of a GIF on the GIF's screen, transparent where the frame does not reach. The
/// decoder sees the frame only: libnsgif corrects screen sizes that it finds implausible.
std::optional<ImageSource> openGif(const Bytes& file, const ImageHeader& header) {
    const auto frame = firstFrameOfGif(file);
    if (!frame)
        return std::nullopt;
    ImageSource source{frame->file, load(vips_gifload_buffer, frame->file)};
    if (source.image == nullptr || vips_image_get_width(source.image.get()) != frame->width ||
        vips_image_get_height(source.image.get()) != frame->height || !isSmallEnough(source.image.get()))
        return std::nullopt;
    const auto width = static_cast<int>(header.width);
    const auto height = static_cast<int>(header.height);
    const int visibleWidth = std::min(frame->width, width - frame->left);
    const int visibleHeight = std::min(frame->height, height - frame->top);
    if (visibleWidth <= 0 || visibleHeight <= 0)
        return std::nullopt;
    source.image = vipsImage([&](VipsImage** out) {
        return vips_crop(source.image.get(), out, 0, 0, visibleWidth, visibleHeight, nullptr);
    });
    if (source.image != nullptr && (visibleWidth < width || visibleHeight < height))
        source.image = onTransparent(source.image, frame->left, frame->top, width, height);
    return source.image == nullptr ? std::nullopt : std::optional(std::move(source));
}

std::optional<ImageSource> openKnown(const Bytes& file, const ImageHeader& header) {
    if (!isSmallEnough(static_cast<std::uint64_t>(header.width), static_cast<std::uint64_t>(header.height)))
        return std::nullopt;
    if (header.typeIdentifier == "com.microsoft.bmp") {
        ImageSource source{file, decodeBmp(file, header)};
        return source.image == nullptr ? std::nullopt : std::optional(std::move(source));
    }
    if (header.typeIdentifier == "com.compuserve.gif")
        return openGif(file, header);
    for (const Format& format : formats) {
        if (format.typeIdentifier != header.typeIdentifier)
            continue;
        const auto guarded = format.guard == nullptr ? std::optional(file) : format.guard(file);
        if (!guarded)
            return std::nullopt;
        ImageSource source{*guarded, load(format.loader, *guarded)};
        if (source.image == nullptr || !isSmallEnough(source.image.get()))
            return std::nullopt;
        // Refuses a file in which the library and our own reader see different pictures.
        if (vips_image_get_width(source.image.get()) != header.width ||
            vips_image_get_height(source.image.get()) != header.height)
            return std::nullopt;
        return source;
    }
    return std::nullopt;
}

std::optional<ImageSource> openHeif(const Bytes& file) {
    if (!heifTypeIdentifier(file.view()) || !loadHeifPlugin())
        return std::nullopt;
    ImageSource source{file, load(vips_heifload_buffer, file)};
    if (source.image == nullptr || !isSmallEnough(source.image.get()))
        return std::nullopt;
    return source;
}

} // namespace

std::optional<ImageSource> openImage(const Bytes& file) {
    if (const auto header = readImageHeader(file.view()))
        return openKnown(file, *header);
    return openHeif(file);
}

std::optional<ImageSize> measureHeif(const Bytes& file) {
    if (!heifTypeIdentifier(file.view()) || !loadHeifPlugin())
        return std::nullopt;
    const VipsImagePointer image = load(vips_heifload_buffer, file);
    if (image == nullptr)
        return std::nullopt;
    return ImageSize{vips_image_get_width(image.get()), vips_image_get_height(image.get())};
}

} // namespace tavel
