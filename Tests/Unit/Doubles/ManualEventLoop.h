#pragma once

#include "Platform/EventLoop.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace tavel {

/// An event loop in which nothing happens by itself: the test moves the clock, runs what was posted, and runs
/// the background jobs, all on its own thread.
class ManualEventLoop final : public EventLoop {
public:
    /// One pass: first what the test planned for it, then what is posted. With neither, the pass waits: the
    /// clock moves by `longestWait`. Throws after very many such passes in a row, as nothing will come.
    void runOnce(std::chrono::milliseconds longestWait) override;

    void post(Function function) override;
    void postAfter(std::chrono::milliseconds delay, Function function) override;
    void repeat(std::chrono::milliseconds interval, Function function) override;
    void runInBackground(Function job) override;
    void stopWaiting() override;

    // What follows is the test's.

    /// Runs what is posted by now; what that posts in turn stays for the next time.
    void runPosted();

    /// Moves the clock, and runs each timer at its time, the earliest first.
    void advance(std::chrono::milliseconds time);

    /// Runs the jobs that are held, and lets go of them.
    void runBackgroundJobs();

    std::size_t heldBackgroundJobs() const { return backgroundJobs_.size(); }

    /// What the test does in one of the next passes of `runOnce`, in the order of planning.
    void planPass(Function pass) { plannedPasses_.push_back(std::move(pass)); }

    std::size_t passes() const { return passes_; }

    bool wasToldToStopWaiting() const { return toldToStopWaiting_; }

private:
    struct Timer {
        std::chrono::milliseconds due;
        std::optional<std::chrono::milliseconds> interval;
        Function function;
    };

    void attach(std::chrono::milliseconds delay, std::optional<std::chrono::milliseconds> interval,
                Function function);
    void run(const Function& function);

    std::chrono::milliseconds now_{0};
    std::vector<Timer> timers_;
    std::vector<Function> backgroundJobs_;
    std::deque<Function> plannedPasses_;
    std::size_t passes_ = 0;
    std::size_t idlePasses_ = 0;
    bool running_ = false;

    mutable std::mutex mutex_; // of what any thread may use
    std::vector<Function> posted_;
    bool toldToStopWaiting_ = false;
};

} // namespace tavel
