#include "TavelClipboardAgent/main/PollSchedule.h"

#include "TavelClipboardAgent/main/Pace.h"

#include <new>
#include <utility>

namespace tavel {

void PollSchedule::noteNews() {
    if (waiting_ == Waiting::no)
        poll_();
    else
        isWanted_ = true;
}

void PollSchedule::retryLater() {
    isWanted_ = true;
    wait();
}

void PollSchedule::goOnWithoutTimer() {
    if (waiting_ == Waiting::withoutTimer)
        endWait();
}

void PollSchedule::wait() {
    if (waiting_ != Waiting::no)
        return;
    waiting_ = Waiting::withoutTimer;
    try {
        loop_.postAfter(pollInterval, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->endWait();
        });
        waiting_ = Waiting::withTimer;
    } catch (const std::bad_alloc&) {
        // The caller's own wait ends it.
    }
}

void PollSchedule::endWait() {
    waiting_ = Waiting::no;
    if (std::exchange(isWanted_, false))
        poll_();
}

} // namespace tavel
