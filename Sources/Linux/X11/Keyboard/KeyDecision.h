#pragma once

#include "Linux/X11/DecisionDeadline.h"
#include "Platform/KeyboardTap.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tavel {

/// The decision about one key, for which the user's keyboard waits: asked for by one thread, made by another,
/// and given up when it takes too long. Each member may be called by any thread.
class KeyDecision {
public:
    using Clock = DecisionDeadline::Clock;

    /// For how long it is waited for beyond the deadline if somebody is just deciding. Whoever decides keeps
    /// to the deadline, and needs a moment more to say so.
    static constexpr std::chrono::milliseconds grace{20};

    explicit KeyDecision(Clock::time_point deadline) : deadline_(deadline) {}

    Clock::time_point deadline() const { return deadline_; }

    /// Waits for the verdict, until the deadline or, once claimed, for the grace. To pass, if the decision
    /// was given up.
    KeyVerdict await();

    /// Whoever is going to decide says so. False if it is too late, and nobody is to decide any more.
    bool claim();

    /// The verdict of whoever claimed the decision. False if it has been given up: the key has passed.
    bool answer(KeyVerdict verdict);

    /// Ends the waiting at once. The key passes, unless it has been decided.
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
