#include "Linux/Images/Program/PixelRows.h"

#include <mutex>
#include <new>

namespace tavel {
namespace {

/// Held during every call of a consumer, on any thread. All conversions share it: they seldom run at the same
/// time.
std::mutex consuming;

struct Progress {
    const RowConsumer& consumer;
    std::size_t rows = 0;
    bool hasEnded = false;
    bool isOutOfMemory = false;
};

/// No exception may reach libvips.
int consumeArea(VipsRegion* region, VipsRect* area, void* context) {
    const std::lock_guard lock(consuming);
    auto& progress = *static_cast<Progress*>(context);
    try {
        for (int y = area->top; y < area->top + area->height && !progress.hasEnded; ++y) {
            progress.hasEnded = !progress.consumer(VIPS_REGION_ADDR(region, area->left, y));
            ++progress.rows;
        }
    } catch (const std::bad_alloc&) {
        progress.hasEnded = true;
        progress.isOutOfMemory = true;
    }
    return progress.hasEnded ? -1 : 0;
}

} // namespace

RowLayout rowLayout(const VipsImage* image) {
    return {static_cast<std::size_t>(vips_image_get_width(image)),
            static_cast<std::size_t>(vips_image_get_height(image)),
            static_cast<std::size_t>(vips_image_get_bands(image)),
            vips_format_sizeof(vips_image_get_format(image))};
}

bool forEachRow(VipsImage* image, const RowConsumer& consumer) {
    Progress progress{consumer};
    // Locking before and after orders this thread's writes and reads with those of libvips' threads.
    { const std::lock_guard handOver(consuming); }
    const bool isEvaluated = vips_sink_disc(image, consumeArea, &progress) == 0;
    const std::lock_guard lock(consuming);
    if (progress.isOutOfMemory)
        throw std::bad_alloc();
    return isEvaluated && progress.rows == static_cast<std::size_t>(vips_image_get_height(image));
}

} // namespace tavel
