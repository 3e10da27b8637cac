#pragma once

#include <vips/vips.h>

#include <memory>

namespace tavel {

struct VipsUnref {
    void operator()(VipsImage* image) const { g_object_unref(image); }
};
using VipsImagePointer = std::unique_ptr<VipsImage, VipsUnref>;

/// Calls a vips operation that gives its image through a pointer: `call` takes a VipsImage** and returns 0
/// for success. Null if it failed.
template <typename Call>
VipsImagePointer vipsImage(Call call) {
    VipsImage* image = nullptr;
    const bool isDone = call(&image) == 0;
    VipsImagePointer result(image);
    return isDone ? std::move(result) : nullptr;
}

/// Starts libvips with the first call: no cache, two threads, none of its readers for formats that are
/// programs, and none of its plugins. False if it cannot be started. Any thread.
bool startVips();

/// Loads the plugin that reads HEIF and AVIF, with the first call. False if it is not there. Needs startVips.
bool loadHeifPlugin();

/// Lives as long as one conversion, and afterwards gives back what libvips keeps for this thread and what the
/// heap holds on to: an idle process is not to keep the memory of its largest image.
class VipsConversion {
public:
    VipsConversion() = default;
    ~VipsConversion();
    VipsConversion(const VipsConversion&) = delete;
    VipsConversion& operator=(const VipsConversion&) = delete;
};

/// Stops the evaluation of an image that takes longer than a conversion may.
void setDeadline(VipsImage* image);

} // namespace tavel
