#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace tavel {

/// How long this process waits for the other programs that take part in a transfer.
struct TransferTimeOuts {
    using Duration = std::chrono::steady_clock::duration;

    Duration ownerInactivity = std::chrono::seconds(2);      // an owner sends nothing more
    Duration privateTypes = std::chrono::seconds(1);         // all types together that only their owner knows
    Duration requestorInactivity = std::chrono::seconds(10); // a requestor takes nothing more
    Duration clipboardManager = std::chrono::seconds(1);     // the clipboard manager takes a content over

    Duration lastAnswers = std::chrono::milliseconds(50); // at the end of this process

    /// An owner that sends fewer bytes in a second, in the mean since its first `ownerInactivity`, is given
    /// up. A text of the largest size may take four minutes, as over a poor line.
    std::size_t slowestOwner = std::size_t{16} * 1024;
};

/// The deadline of an inactivity time-out: each step of a transfer starts the time-out again.
class InactivityDeadline {
public:
    using Clock = std::chrono::steady_clock;

    InactivityDeadline(Clock::duration timeOut, Clock::time_point now) : timeOut_(timeOut) { restart(now); }

    void restart(Clock::time_point now) { end_ = now + timeOut_; }

    Clock::time_point end() const { return end_; }

private:
    Clock::duration timeOut_;
    Clock::time_point end_;
};

/// The deadline of an owner that sends a value: it has to send something in each time-out, and as a whole no
/// less than the slowest owner.
class OwnerDeadline {
public:
    using Clock = InactivityDeadline::Clock;

    OwnerDeadline(const TransferTimeOuts& timeOuts, Clock::time_point now)
        : slowestOwner_(timeOuts.slowestOwner), slowestEnd_(now + timeOuts.ownerInactivity),
          inactivity_(timeOuts.ownerInactivity, now) {}

    void received(std::size_t bytes, Clock::time_point now) {
        inactivity_.restart(now);
        const std::chrono::duration<double> deserved(static_cast<double>(bytes) /
                                                     static_cast<double>(slowestOwner_));
        slowestEnd_ += std::chrono::duration_cast<Clock::duration>(deserved);
    }

    Clock::time_point end() const { return std::min(inactivity_.end(), slowestEnd_); }

private:
    std::size_t slowestOwner_; // bytes a second
    Clock::time_point slowestEnd_;
    InactivityDeadline inactivity_;
};

} // namespace tavel
