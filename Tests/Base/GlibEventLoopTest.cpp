#include "Linux/Base/GlibEventLoop.h"

#include "Tests/Base/TestedEventLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace tavel {

namespace {

using namespace std::chrono_literals;

/// Lets another thread wait until the loop is in its own wait.
class WaitObserver {
public:
    WaitObserver() : before_(g_main_context_get_poll_func(g_main_context_default())) {
        current_ = this;
        g_main_context_set_poll_func(g_main_context_default(), poll);
    }

    ~WaitObserver() { g_main_context_set_poll_func(g_main_context_default(), before_); }
    WaitObserver(const WaitObserver&) = delete;
    WaitObserver& operator=(const WaitObserver&) = delete;

    /// Returns when the loop waits or is about to.
    void awaitWait() const { waiting_.wait(false); }

    /// The time-outs of all waits so far, in milliseconds; -1 for none.
    const std::vector<gint>& timeouts() const { return timeouts_; }

    /// Ends awaitWait even if the loop did not wait.
    void release() {
        waiting_ = true;
        waiting_.notify_all();
    }

private:
    static gint poll(GPollFD* descriptors, guint count, gint timeout) {
        current_->timeouts_.push_back(timeout);
        if (timeout != 0)
            current_->release();
        return current_->before_(descriptors, count, timeout);
    }

    inline static WaitObserver* current_ = nullptr;
    GPollFunc before_;
    std::vector<gint> timeouts_;
    std::atomic<bool> waiting_ = false;
};

} // namespace

std::unique_ptr<EventLoop> makeTestedEventLoop() {
    return std::make_unique<GlibEventLoop>();
}

TEST(GlibEventLoop, runsWhatIsPostedDuringAPassInALaterPass) {
    GlibEventLoop loop;
    std::vector<std::string> ran;
    loop.post([&] {
        loop.post([&] { ran.emplace_back("posted meanwhile"); });
        ran.emplace_back("first");
    });
    loop.post([&] { ran.emplace_back("second"); });
    loop.runOnce(forEver);
    EXPECT_EQ(ran, (std::vector<std::string>{"first", "second"}));
    loop.runOnce(forEver);
    EXPECT_EQ(ran, (std::vector<std::string>{"first", "second", "posted meanwhile"}));
}

TEST(GlibEventLoop, runsWhatATimerPostsInALaterPass) {
    GlibEventLoop loop;
    bool timerRan = false;
    bool postedRan = false;
    loop.postAfter(0ms, [&] {
        timerRan = true;
        loop.post([&] { postedRan = true; });
    });
    loop.post([] {}); // so that the queue and the timer are ready in the same pass
    runUntil(loop, [&] { return timerRan; });
    EXPECT_FALSE(postedRan);
    loop.runOnce(forEver);
    EXPECT_TRUE(postedRan);
}

TEST(GlibEventLoop, aPostFromAnotherThreadEndsTheWaitAtOnce) {
    GlibEventLoop loop;
    WaitObserver observer;
    bool ran = false;
    std::thread poster([&] {
        observer.awaitWait();
        loop.post([&] { ran = true; });
    });
    const auto start = Clock::now();
    loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, testTimeout);
    EXPECT_TRUE(ran) << "in the pass that was waiting";
    observer.release();
    poster.join();
}

TEST(GlibEventLoop, anUnlimitedPassSleepsOnceUntilSomethingIsPosted) {
    GlibEventLoop loop;
    loop.runOnce(0ms);
    WaitObserver observer;
    bool ran = false;
    std::thread poster([&] {
        observer.awaitWait();
        loop.post([&] { ran = true; });
    });
    loop.runOnce(EventLoop::unlimited);
    EXPECT_TRUE(ran);
    EXPECT_EQ(observer.timeouts(), std::vector<gint>{-1});
    observer.release();
    poster.join();
}

TEST(GlibEventLoop, stopWaitingTwiceBeforeAPassEndsThatPassOnly) {
    GlibEventLoop loop;
    loop.stopWaiting();
    loop.stopWaiting();
    auto start = Clock::now();
    loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, testTimeout);
    start = Clock::now();
    loop.runOnce(80ms);
    EXPECT_GE(Clock::now() - start, 80ms) << "the next pass waits again";
}

TEST(GlibEventLoop, stopWaitingEndsTheWaitThatIsUnderWay) {
    GlibEventLoop loop;
    WaitObserver observer;
    std::thread stopper([&] {
        observer.awaitWait();
        loop.stopWaiting();
    });
    const auto start = Clock::now();
    loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, testTimeout);
    observer.release();
    stopper.join();
}

TEST(GlibEventLoop, aDelayedFunctionEndsTheWait) {
    GlibEventLoop loop;
    bool ran = false;
    loop.postAfter(20ms, [&] { ran = true; });
    const auto start = Clock::now();
    while (!ran && Clock::now() - start < forEver)
        loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, testTimeout);
}

TEST(GlibEventLoop, takesItsTimersAndPostsWithItWhenItEnds) {
    int runs = 0;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> observed = held;
    {
        GlibEventLoop loop;
        loop.repeat(0ms, [&runs, held] { ++runs; });
        loop.postAfter(0ms, [&runs, held] { ++runs; });
        loop.post([&runs, held] { ++runs; });
        held.reset();
    }
    EXPECT_TRUE(observed.expired()) << "what its functions hold is let go";
    GlibEventLoop next;
    bool ran = false;
    next.post([&] { ran = true; });
    for (int pass = 0; pass < 3; ++pass)
        next.runOnce(5ms);
    EXPECT_TRUE(ran);
    EXPECT_EQ(runs, 0);
}

} // namespace tavel
