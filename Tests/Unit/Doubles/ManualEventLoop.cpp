#include "Tests/Unit/Doubles/ManualEventLoop.h"

#include "Support/ScopeExit.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

/// Far more passes than any test needs, and still quick.
constexpr std::size_t mostIdlePasses = 1000;

} // namespace

void ManualEventLoop::runOnce(std::chrono::milliseconds longestWait) {
    ++passes_;
    const bool planned = !plannedPasses_.empty();
    if (planned) {
        const Function pass = std::move(plannedPasses_.front());
        plannedPasses_.pop_front();
        pass();
    }
    bool waits = false;
    {
        const std::lock_guard lock(mutex_);
        waits = !planned && posted_.empty() && !std::exchange(toldToStopWaiting_, false);
    }
    idlePasses_ = waits ? idlePasses_ + 1 : 0;
    if (idlePasses_ > mostIdlePasses)
        throw std::logic_error("The event loop waits for something that the test never does");
    runPosted();
    if (!waits)
        return;
    if (longestWait != unlimited)
        runTimersUntil(now_ + longestWait, [this] { return isToldToStopWaiting(); });
    else if (!timers_.empty())
        runTimersUntil(std::ranges::min(timers_, {}, &Timer::due).due, [] { return false; });
    else if (whenAtRest_)
        whenAtRest_();
    else
        throw std::logic_error("The event loop waits for an event that the test never makes");
}

void ManualEventLoop::post(Function function) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(function));
}

void ManualEventLoop::postAfter(std::chrono::milliseconds delay, Function function) {
    if (refusedDelays_ > 0) {
        --refusedDelays_;
        throw std::bad_alloc();
    }
    attach(delay, std::nullopt, std::move(function));
}

void ManualEventLoop::repeat(std::chrono::milliseconds interval, Function function) {
    attach(interval, interval, std::move(function));
}

void ManualEventLoop::runInBackground(Function job) {
    if (refusedJobs_ > 0) {
        --refusedJobs_;
        throw std::system_error(EAGAIN, std::generic_category(), "no thread");
    }
    backgroundJobs_.push_back(std::move(job));
}

void ManualEventLoop::stopWaiting() {
    const std::lock_guard lock(mutex_);
    toldToStopWaiting_ = true;
}

void ManualEventLoop::runPosted() {
    std::vector<Function> ready;
    {
        const std::lock_guard lock(mutex_);
        ready.swap(posted_);
    }
    for (Function& function : ready)
        run(std::exchange(function, nullptr));
}

void ManualEventLoop::advance(std::chrono::milliseconds time) {
    runTimersUntil(now_ + time, [] { return false; });
}

/// Takes note of it once.
bool ManualEventLoop::isToldToStopWaiting() {
    const std::lock_guard lock(mutex_);
    return std::exchange(toldToStopWaiting_, false);
}

void ManualEventLoop::runTimersUntil(std::chrono::milliseconds end, const std::function<bool()>& isEnded) {
    while (!isEnded()) {
        const auto next = std::ranges::min_element(timers_, {}, &Timer::due); // the oldest of several
        if (next == timers_.end() || next->due > end) {
            now_ = end;
            return;
        }
        now_ = next->due;
        const Function function = next->function; // the timers may move while it runs
        if (next->interval)
            next->due += *next->interval;
        else
            timers_.erase(next);
        run(function);
    }
}

void ManualEventLoop::runBackgroundJobs() {
    for (Function& job : std::exchange(backgroundJobs_, {}))
        std::exchange(job, nullptr)();
}

void ManualEventLoop::attach(std::chrono::milliseconds delay,
                             std::optional<std::chrono::milliseconds> interval, Function function) {
    timers_.push_back({now_ + delay, interval, std::move(function)});
}

void ManualEventLoop::run(const Function& function) {
    if (running_)
        throw std::logic_error("A function of the event loop runs inside another one");
    running_ = true;
    const ScopeExit end([this] { running_ = false; });
    function();
}

} // namespace tavel
