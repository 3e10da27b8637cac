#pragma once

#include "Linux/X11/DecisionDeadline.h"
#include "Platform/KeyboardTap.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tavel {

/// The decision about one key press, during which the keyboard is frozen. One thread asks for it, another one
/// makes it, and it is given up after its deadline. Any thread may call any member.
class KeyDecision {
public:
    using Clock = DecisionDeadline::Clock;

    /// How long `await` waits beyond the deadline for a claimed decision. The deciding thread stops at the
    /// deadline and needs a moment to answer.
    static constexpr std::chrono::milliseconds grace{20};

    explicit KeyDecision(Clock::time_point deadline) : deadline_(deadline) {}

    Clock::time_point deadline() const { return deadline_; }

    /// Waits for the verdict until the deadline, or until the end of the grace period if the decision is
    /// claimed. Then gives it up: the key passes.
    KeyVerdict await();

    /// Announces that the caller decides. False if the deadline has passed or the decision is given up; the
    /// caller then must not decide.
    bool claim();

    /// Sets the verdict of a claimed decision. False if it has been given up: the key has passed.
    bool answer(KeyVerdict verdict);

    /// Ends the wait at once. The key passes unless the verdict is already set.
    void giveUp();

private:
    enum class State { open, claimed, answered, givenUp };

    bool isOver() const { return state_ == State::answered || state_ == State::givenUp; }

    const Clock::time_point deadline_;
    std::mutex mutex_;
    std::condition_variable changed_;
    State state_ = State::open;
    KeyVerdict verdict_ = KeyVerdict::pass;
};

} // namespace tavel
