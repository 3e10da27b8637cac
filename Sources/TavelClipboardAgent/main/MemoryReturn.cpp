#include "TavelClipboardAgent/main/MemoryReturn.h"

namespace tavel {

bool MemoryReturn::isDue() {
    if (++ticks_ < ticksPerLook)
        return false;
    ticks_ = 0;
    const std::int64_t pages = pages_();
    const bool isWorking = pages - std::exchange(atLastLook_, pages) > pagesWithoutWork;
    if (isWorking || pages - atLastReturn_ < smallestWork)
        return false;
    atLastReturn_ = pages;
    return true;
}

} // namespace tavel
