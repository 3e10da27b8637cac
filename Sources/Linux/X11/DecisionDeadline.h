#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace tavel {

/// The deadline for a key decision; the keyboard is frozen until then. While a decision is pending, no wait
/// for another program may last longer. Main thread.
class DecisionDeadline {
public:
    using Clock = std::chrono::steady_clock;

    /// A decision is pending while this object exists. Not nested.
    class Scope {
    public:
        Scope(DecisionDeadline& deadline, Clock::time_point end) : deadline_(deadline) {
            deadline_.end_ = end;
        }
        ~Scope() { deadline_.end_.reset(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        DecisionDeadline& deadline_;
    };

    bool isDeciding() const { return end_.has_value(); }

    /// The earlier of `time` and the deadline of the pending decision. `time` itself if none is pending.
    Clock::time_point limit(Clock::time_point time) const { return end_ ? std::min(time, *end_) : time; }

private:
    std::optional<Clock::time_point> end_;
};

} // namespace tavel
