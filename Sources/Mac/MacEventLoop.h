#pragma once

#include "Mac/CFRef.h"
#include "Platform/EventLoop.h"

#include <memory>
#include <vector>

namespace tavel {

/// Waits for the application's events. The main run loop and the main dispatch queue are served during the
/// wait, so ticks and posted functions run then. `runInBackground` uses the global queue with the quality of
/// service "utility".
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
        std::unique_ptr<Function> function; // the timer holds its address
    };

    std::vector<Tick> ticks_;
};

} // namespace tavel
