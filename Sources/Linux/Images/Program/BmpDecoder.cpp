#include "Linux/Images/Program/BmpDecoder.h"

#include "ImageHeaders/ImageFields.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdint>
#include <memory>

namespace tavel {
namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

using LoaderPointer = std::unique_ptr<GdkPixbufLoader, Unref>;

LoaderPointer makeLoader() {
    return LoaderPointer(gdk_pixbuf_loader_new_with_type("bmp", nullptr));
}

/// Copies the pixels without the padding between a pixbuf's rows.
VipsImagePointer copyPixels(const GdkPixbuf* pixels) {
    const int width = gdk_pixbuf_get_width(pixels);
    const int height = gdk_pixbuf_get_height(pixels);
    const int bands = gdk_pixbuf_get_n_channels(pixels);
    VipsImagePointer image(vips_image_new_memory());
    vips_image_init_fields(image.get(), width, height, bands, VIPS_FORMAT_UCHAR, VIPS_CODING_NONE,
                           VIPS_INTERPRETATION_sRGB, 1.0, 1.0);
    const guint8* row = gdk_pixbuf_read_pixels(pixels);
    for (int y = 0; y < height; ++y, row += gdk_pixbuf_get_rowstride(pixels)) {
        if (vips_image_write_line(image.get(), y, const_cast<VipsPel*>(row)) != 0)
            return nullptr;
    }
    return image;
}

enum class Compression : std::uint64_t { none = 0, runs8 = 1, runs4 = 2, masks = 3 };

/// Whether run-length encoded pixels reach their end marker.
bool reachesEnd(const ImageFields& fields, std::uint64_t offset, bool hasHalfBytes) {
    for (;;) {
        const auto count = fields.number(offset, 1);
        const auto code = fields.number(offset + 1, 1);
        if (!count || !code)
            return false;
        offset += 2;
        if (*count != 0)
            continue; // a run of pixels
        if (*code == 1)
            return true;
        if (*code == 2)
            offset += 2; // an offset to the right and up
        else if (*code != 0) {
            const std::uint64_t size = hasHalfBytes ? (*code + 1) / 2 : *code;
            offset += size + (size & 1); // literal pixels, padded to an even size
        }
    }
}

/// Whether the file holds all of its pixels and no more colours than can be used. GDK-PixBuf checks neither:
/// it leaves missing rows uninitialised and allocates as many colours as the header announces.
bool canBeDecoded(const Bytes& file, const ImageHeader& header) {
    constexpr std::uint64_t coreHeader = 12;
    const ImageFields fields(file.view(), ByteOrder::littleEndian);
    const bool isCore = fields.number(14, 4) == coreHeader;
    const std::uint64_t depth = fields.numberOrZero(isCore ? 24 : 28, 2);
    const auto compression = isCore ? Compression::none : Compression{fields.numberOrZero(30, 4)};
    const std::uint64_t pixels = fields.numberOrZero(10, 4);
    constexpr std::uint64_t maxColours = 256;
    if (depth == 0 || depth > 32 || (!isCore && fields.numberOrZero(46, 4) > maxColours))
        return false;
    if (compression == Compression::none || compression == Compression::masks) {
        const std::uint64_t rowSize = (static_cast<std::uint64_t>(header.width) * depth + 31) / 32 * 4;
        const auto rows = static_cast<std::uint64_t>(header.height);
        return pixels <= file.size() && rowSize <= (file.size() - pixels) / rows;
    }
    if (compression == Compression::runs8 || compression == Compression::runs4)
        return reachesEnd(fields, pixels, compression == Compression::runs4);
    return false;
}

} // namespace

bool loadBmpLoader() {
    const LoaderPointer loader = makeLoader();
    if (loader == nullptr)
        return false;
    gdk_pixbuf_loader_close(loader.get(), nullptr); // fails: it has read no picture
    return true;
}

VipsImagePointer decodeBmp(const Bytes& file, const ImageHeader& header) {
    if (!canBeDecoded(file, header))
        return nullptr;
    const LoaderPointer loader = makeLoader();
    if (loader == nullptr)
        return nullptr;
    const bool isRead = gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(file.data()),
                                                file.size(), nullptr) != FALSE;
    // Closed in any case, because GDK-PixBuf warns about loaders that are freed open. Fails if rows are
    // missing.
    const bool isClosed = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
    const GdkPixbuf* const pixels = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!isRead || !isClosed || pixels == nullptr || gdk_pixbuf_get_width(pixels) != header.width ||
        gdk_pixbuf_get_height(pixels) != header.height)
        return nullptr;
    return copyPixels(pixels);
}

} // namespace tavel
