#pragma once

#include <chrono>
#include <exception>
#include <functional>

namespace tavel {

/// The main thread's event loop. Functions run on the thread that calls `runOnce`, one after the other, and
/// never inside another function of the loop. One that throws std::exception is abandoned, as memory may run
/// out anywhere; the others go on. An operation that takes a function throws std::bad_alloc if there is no
/// memory for it; it has no other effect then.
class EventLoop {
public:
    using Function = std::function<void()>;

    virtual ~EventLoop() = default;

    /// For a wait that only an event ends.
    static constexpr std::chrono::milliseconds unlimited = std::chrono::milliseconds::max();

    /// One pass: waits until something is ready, until `stopWaiting`, or for `longestWait`, whichever is
    /// first, and runs what is ready. A platform with events of its own waits for those; functions then run
    /// during the wait without ending it. Main thread.
    virtual void runOnce(std::chrono::milliseconds longestWait) = 0;

    /// Runs `function` in the next pass, or during the current wait, in the order of posting. Any thread.
    virtual void post(Function function) = 0;

    /// Runs `function` once, `delay` from now. Main thread.
    virtual void postAfter(std::chrono::milliseconds delay, Function function) = 0;

    /// Runs `function` every `interval`, for as long as the loop exists. Missed ticks are skipped. A platform
    /// may run each tick late, by a tenth of the interval at most. Main thread.
    virtual void repeat(std::chrono::milliseconds interval, Function function) = 0;

    /// Runs `job`, which must not throw, on a background thread. The process may end while it runs. Throws
    /// std::system_error if the system has no further thread. Main thread.
    virtual void runInBackground(Function job) = 0;

    /// Ends the wait of the current or the next pass. Any thread.
    virtual void stopWaiting() = 0;
};

/// Runs the function and abandons it if it throws. For loops of a C library, which no exception may reach.
inline void runOrAbandon(const EventLoop::Function& function) {
    try {
        function();
    } catch (const std::exception&) {
        // Nothing to do: what the function had not done yet stays undone.
    }
}

} // namespace tavel
