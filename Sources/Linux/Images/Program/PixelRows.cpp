#include "Linux/Images/Program/PixelRows.h"

#include <mutex>

namespace tavel {
namespace {

/// Held during every call of a consumer, on any thread. All conversions share it: they seldom run at the same
/// time.
std::mutex consuming;

struct Progress {
    const RowConsumer& consumer;
    std::size_t rows = 0;
};

int consumeArea(VipsRegion* region, VipsRect* area, void* context) {
    const std::lock_guard lock(consuming);
    auto& progress = *static_cast<Progress*>(context);
    for (int y = area->top; y < area->top + area->height; ++y)
        progress.consumer(progress.rows++, VIPS_REGION_ADDR(region, area->left, y));
    return 0;
}

} // namespace

RowLayout rowLayout(const VipsImage* image) {
    return {static_cast<std::size_t>(vips_image_get_width(image)),
            static_cast<std::size_t>(vips_image_get_height(image)),
            static_cast<std::size_t>(vips_image_get_bands(image)),
            vips_format_sizeof(vips_image_get_format(image))};
}

bool forEachRow(VipsImage* image, const RowConsumer& consumer) {
    setDeadline(image);
    Progress progress{consumer};
    // Locking before and after orders this thread's writes and reads with those of libvips' threads.
    { const std::lock_guard handOver(consuming); }
    const bool isEvaluated = vips_sink_disc(image, consumeArea, &progress) == 0;
    const std::lock_guard lock(consuming);
    return isEvaluated && progress.rows == static_cast<std::size_t>(vips_image_get_height(image));
}

} // namespace tavel
