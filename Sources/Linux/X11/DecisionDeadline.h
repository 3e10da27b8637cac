#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace tavel {

/// Until when it has to be decided about a key, on which the user's keyboard waits. While such a decision is
/// being made, whatever waits for another program waits no longer than that. Main thread.
class DecisionDeadline {
public:
    using Clock = std::chrono::steady_clock;

    /// As long as it exists, a decision is being made. Not nested.
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

    /// The earlier of `wish` and the end of the decision that is being made, if one is.
    Clock::time_point limit(Clock::time_point wish) const { return end_ ? std::min(wish, *end_) : wish; }

private:
    std::optional<Clock::time_point> end_;
};

} // namespace tavel
