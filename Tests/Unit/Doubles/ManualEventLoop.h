#pragma once

#include "Platform/EventLoop.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace tavel {

/// An event loop without a clock or threads of its own: the test moves the clock, and runs posted functions
/// and background jobs on its own thread.
class ManualEventLoop final : public EventLoop {
public:
    /// One pass: first the test's plan for it, then posted functions. Without either, the clock moves by
    /// `longestWait`, or to the timer that ends the wait; every timer ends an unlimited wait. Throws when
    /// nothing will end the wait: in an unlimited one, and after very many such passes in a row.
    void runOnce(std::chrono::milliseconds longestWait) override;

    void post(Function function) override;
    void postAfter(std::chrono::milliseconds delay, Function function) override;
    void repeat(std::chrono::milliseconds interval, Function function) override;
    void runInBackground(Function job) override;
    void stopWaiting() override;

    // For tests:

    /// Runs the functions posted so far; functions that they post stay for the next call.
    void runPosted();

    /// Moves the clock and runs the timers that fall due, the earliest first.
    void advance(std::chrono::milliseconds time);

    /// Runs the background jobs that are waiting, and removes them.
    void runBackgroundJobs();

    /// The next so many background jobs get no thread.
    void refuseJobs(std::size_t jobs) { refusedJobs_ = jobs; }

    /// The next so many delayed functions get no memory.
    void refuseDelays(std::size_t delays) { refusedDelays_ = delays; }

    std::size_t heldBackgroundJobs() const { return backgroundJobs_.size(); }

    /// Plans a step for one of the next passes of `runOnce`, in the order of planning.
    void planPass(Function pass) { plannedPasses_.push_back(std::move(pass)); }

    /// The function runs when an unlimited wait has nothing to wait for.
    void onRest(Function function) { whenAtRest_ = std::move(function); }

    std::size_t passes() const { return passes_; }

    bool wasToldToStopWaiting() const { return toldToStopWaiting_; }

    /// Forgets that the loop was told to stop waiting, like a loop that misses it.
    void loseWakeUp() { isToldToStopWaiting(); }

    /// How far the clock has moved.
    std::chrono::milliseconds now() const { return now_; }

    std::size_t pendingTimers() const { return timers_.size(); }

private:
    struct Timer {
        std::chrono::milliseconds due;
        std::optional<std::chrono::milliseconds> interval;
        Function function;
    };

    void attach(std::chrono::milliseconds delay, std::optional<std::chrono::milliseconds> interval,
                Function function);
    void run(const Function& function);
    bool isToldToStopWaiting();
    void runTimersUntil(std::chrono::milliseconds end, const std::function<bool()>& isEnded);

    std::chrono::milliseconds now_{0};
    std::vector<Timer> timers_;
    std::vector<Function> backgroundJobs_;
    std::size_t refusedJobs_ = 0;
    std::size_t refusedDelays_ = 0;
    std::deque<Function> plannedPasses_;
    Function whenAtRest_;
    std::size_t passes_ = 0;
    std::size_t idlePasses_ = 0;
    bool running_ = false;

    mutable std::mutex mutex_; // guards what any thread may use
    std::vector<Function> posted_;
    bool toldToStopWaiting_ = false;
};

} // namespace tavel
