#include "Linux/Images/Module/PixelRows.h"

#include <mutex>

namespace tavel {
namespace {

/// Held around everything a taker does, on whichever thread. One for all conversions: they seldom run at the
/// same time, and a mutex that is as old as the process needs no hand-over itself.
std::mutex taking;

struct Progress {
    const RowTaker& taker;
    std::size_t rows = 0;
};

int takeArea(VipsRegion* region, VipsRect* area, void* context) {
    const std::lock_guard lock(taking);
    auto& progress = *static_cast<Progress*>(context);
    for (int y = area->top; y < area->top + area->height; ++y)
        progress.taker(progress.rows++, VIPS_REGION_ADDR(region, area->left, y));
    return 0;
}

} // namespace

RowLayout rowLayout(const VipsImage* image) {
    return {static_cast<std::size_t>(vips_image_get_width(image)),
            static_cast<std::size_t>(vips_image_get_height(image)),
            static_cast<std::size_t>(vips_image_get_bands(image)),
            vips_format_sizeof(vips_image_get_format(image))};
}

bool takeRows(VipsImage* image, const RowTaker& taker) {
    setDeadline(image);
    Progress progress{taker};
    { const std::lock_guard handOver(taking); }
    const bool isEvaluated = vips_sink_disc(image, takeArea, &progress) == 0;
    const std::lock_guard lock(taking);
    return isEvaluated && progress.rows == static_cast<std::size_t>(vips_image_get_height(image));
}

} // namespace tavel
