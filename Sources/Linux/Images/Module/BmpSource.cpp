#include "Linux/Images/Module/BmpSource.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <memory>

namespace tavel {
namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

using LoaderPointer = std::unique_ptr<GdkPixbufLoader, Unref>;

/// Copies the rows, which a pixbuf pads, into an image of its own.
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

} // namespace

VipsImagePointer decodeBmp(const Bytes& file, const ImageHeader& header) {
    const LoaderPointer loader(gdk_pixbuf_loader_new_with_type("bmp", nullptr));
    if (loader == nullptr)
        return nullptr;
    const bool isRead = gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(file.data()),
                                                file.size(), nullptr) != FALSE;
    // Always closed, as a loader that is let go open complains; it fails when rows are missing.
    const bool isComplete = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
    const GdkPixbuf* const pixels = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!isRead || !isComplete || pixels == nullptr || gdk_pixbuf_get_width(pixels) != header.width ||
        gdk_pixbuf_get_height(pixels) != header.height)
        return nullptr;
    return copyPixels(pixels);
}

} // namespace tavel
