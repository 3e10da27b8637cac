#pragma once

#include <vips/vips.h>

#include <memory>

namespace tavel {

struct VipsUnref {
    void operator()(VipsImage* image) const { g_object_unref(image); }
};
using VipsImagePointer = std::unique_ptr<VipsImage, VipsUnref>;

/// Calls a libvips operation with an output image: `call` takes a VipsImage** and returns 0 on success. Null
/// on failure.
template <typename Call>
VipsImagePointer vipsImage(Call call) {
    VipsImage* image = nullptr;
    const bool isDone = call(&image) == 0;
    VipsImagePointer result(image);
    return isDone ? std::move(result) : nullptr;
}

/// The first call starts libvips, without cache, plugins, code generated at run time or loaders that libvips
/// marks as untrusted, and with two threads. From then on no library that reports through GLib writes to
/// standard error. False if libvips cannot be started. Any thread.
bool startVips();

/// The first call loads the libvips plugin for HEIF and AVIF, and the plugins of its own library. False if it
/// is missing. Call startVips first. Any thread.
bool loadHeifPlugin();

} // namespace tavel
