#include "TavelClipboardAgent/main/MemoryReturn.h"

#include <algorithm>

namespace tavel {

bool MemoryReturn::isDue() {
    if (++ticks_ < ticksPerLook)
        return false;
    ticks_ = 0;
    return look();
}

bool MemoryReturn::look() {
    const MemoryUse now = use_();
    isWorking_ = now.pagesProvided - std::exchange(pagesAtLastLook_, now.pagesProvided) > pagesWithoutWork;
    leastFree_ = std::min(leastFree_, now.bytesFree);
    const bool hasWorked = now.pagesProvided - pagesAtLastReturn_ >= smallestWork;
    const bool hasFreed = now.bytesFree - leastFree_ >= smallestFreed;
    if (isWorking_ || !(hasWorked || hasFreed))
        return false;
    pagesAtLastReturn_ = now.pagesProvided;
    leastFree_ = now.bytesFree;
    return true;
}

} // namespace tavel
