#pragma once

#include <algorithm>
#include <chrono>

namespace tavel {

/// How long this process waits for the other programs that take part in a transfer.
struct TransferTimeOuts {
    using Duration = std::chrono::steady_clock::duration;

    Duration ownerInactivity = std::chrono::seconds(2);      // an owner sends nothing more
    Duration wholeContent = std::chrono::seconds(20);        // all reads of one owner's content together
    Duration requestorInactivity = std::chrono::seconds(10); // a requestor takes nothing more
    Duration clipboardManager = std::chrono::seconds(1);     // the clipboard manager takes a content over
};

/// The deadline of an inactivity time-out: each step of a transfer starts the time-out again, but nothing
/// moves the deadline past `latest`.
class InactivityDeadline {
public:
    using Clock = std::chrono::steady_clock;

    InactivityDeadline(Clock::duration timeOut, Clock::time_point now,
                       Clock::time_point latest = Clock::time_point::max())
        : timeOut_(timeOut), latest_(latest) {
        restart(now);
    }

    void restart(Clock::time_point now) { end_ = std::min(now + timeOut_, latest_); }

    Clock::time_point end() const { return end_; }
    bool hasPassed(Clock::time_point now) const { return now >= end_; }

private:
    Clock::duration timeOut_;
    Clock::time_point latest_;
    Clock::time_point end_;
};

} // namespace tavel
