#include "TavelClipboardAgent/main/MemoryLooks.h"

#include "TavelClipboardAgent/main/Pace.h"

#include <new>

namespace tavel {

void MemoryLooks::afterPass() {
    // A pass that served nothing but the timer is no work. If it served more, the look sees that.
    if (std::exchange(isDue_, false))
        look();
    else
        schedule();
}

void MemoryLooks::look() {
    const bool wasBusy = isBusy_(); // asked first: what is freed meanwhile is seen now or at the next look
    if (memory_.look())
        giveBack_();
    if (wasBusy || memory_.isWorking())
        schedule();
}

void MemoryLooks::schedule() {
    if (isScheduled_)
        return;
    try {
        loop_.postAfter(MemoryReturn::ticksPerLook * pollInterval, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->isScheduled_ = false;
                self->isDue_ = true;
            }
        });
        isScheduled_ = true;
    } catch (const std::bad_alloc&) {
        // The next pass tries again.
    }
}

} // namespace tavel
