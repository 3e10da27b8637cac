#pragma once

#include "Mac/CFRef.h"
#include "Platform/EventLoop.h"

#include <memory>
#include <vector>

namespace tavel {

/// The application's events, with the main run loop and the main dispatch queue inside every wait for one:
/// what is posted, and the ticks, run during the wait. `runInBackground` uses the global queue of the quality
/// of service "utility".
class MacEventLoop final : public EventLoop {
public:
    MacEventLoop() = default;
    ~MacEventLoop() override;
    MacEventLoop(const MacEventLoop&) = delete;
    MacEventLoop& operator=(const MacEventLoop&) = delete;

    void runOnce(std::chrono::milliseconds longestWait) override;
    void post(Function function) override;
    void postAfter(std::chrono::milliseconds delay, Function function) override;
    void repeat(std::chrono::milliseconds interval, Function function) override;
    void runInBackground(Function job) override;
    void stopWaiting() override;

private:
    struct Tick {
        CFRef<CFRunLoopTimerRef> timer;
        std::unique_ptr<Function> function; // at one address, which the timer knows
    };

    std::vector<Tick> ticks_;
};

} // namespace tavel
