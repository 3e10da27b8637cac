#include "PlatformHeadless/GlibEventLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>

namespace tavel {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Longer than any pass may take here, and shorter than a test may run.
constexpr auto forEver = 60s;

/// No machine is so busy that something due at once takes longer.
constexpr auto patience = 30s;

/// Tells another thread that the loop has begun to wait.
class WaitObserver {
public:
    WaitObserver() : before_(g_main_context_get_poll_func(g_main_context_default())) {
        current_ = this;
        g_main_context_set_poll_func(g_main_context_default(), poll);
    }

    ~WaitObserver() { g_main_context_set_poll_func(g_main_context_default(), before_); }
    WaitObserver(const WaitObserver&) = delete;
    WaitObserver& operator=(const WaitObserver&) = delete;

    /// Returns when the loop waits, or is one instruction away from it.
    void awaitWait() const { waiting_.wait(false); }

    /// Lets go whoever still waits for a wait that did not come.
    void release() {
        waiting_ = true;
        waiting_.notify_all();
    }

private:
    static gint poll(GPollFD* descriptors, guint count, gint timeout) {
        if (timeout != 0)
            current_->release();
        return current_->before_(descriptors, count, timeout);
    }

    inline static WaitObserver* current_ = nullptr;
    GPollFunc before_;
    std::atomic<bool> waiting_ = false;
};

/// Runs passes until the condition holds. Throws if that takes too long.
template <typename Condition>
void runUntil(GlibEventLoop& loop, Condition condition) {
    const auto end = Clock::now() + patience;
    while (!condition()) {
        if (Clock::now() > end)
            throw std::runtime_error("What was waited for did not happen.");
        loop.runOnce(10ms);
    }
}

} // namespace

TEST(GlibEventLoop, runsWhatIsPostedInTheOrderOfPosting) {
    GlibEventLoop loop;
    std::vector<int> ran;
    std::vector<int> expected;
    for (int number = 0; number < 1000; ++number) {
        loop.post([&ran, number] { ran.push_back(number); });
        expected.push_back(number);
    }
    EXPECT_TRUE(ran.empty()) << "posting runs nothing";
    loop.runOnce(forEver);
    EXPECT_EQ(ran, expected);
}

TEST(GlibEventLoop, runsAPostedFunctionOnce) {
    GlibEventLoop loop;
    int runs = 0;
    loop.post([&] { ++runs; });
    for (int pass = 0; pass < 3; ++pass)
        loop.runOnce(0ms);
    EXPECT_EQ(runs, 1);
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
    loop.post([] {}); // so that the posted functions and the timer are ready in one pass
    runUntil(loop, [&] { return timerRan; });
    EXPECT_FALSE(postedRan);
    loop.runOnce(forEver);
    EXPECT_TRUE(postedRan);
}

TEST(GlibEventLoop, neverRunsAFunctionInsideAnother) {
    GlibEventLoop loop;
    int depth = 0;
    int deepest = 0;
    int runs = 0;
    const auto function = [&](const auto& self) -> void {
        deepest = std::max(deepest, ++depth);
        if (++runs < 100) {
            loop.post([&self] { self(self); });
            loop.postAfter(0ms, [&self] { self(self); });
            loop.stopWaiting();
        }
        --depth;
    };
    loop.post([&] { function(function); });
    runUntil(loop, [&] { return runs >= 100; });
    EXPECT_EQ(deepest, 1);
    for (int pass = 0; pass < 10; ++pass)
        loop.runOnce(10ms); // what is still posted refers to this test's variables
}

TEST(GlibEventLoop, letsAFunctionGoBeforeTheNextOneRuns) {
    GlibEventLoop loop;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> observed = held;
    bool wasGone = false;
    loop.post([held = std::move(held)] {});
    loop.post([&] { wasGone = observed.expired(); });
    loop.runOnce(forEver);
    EXPECT_TRUE(wasGone);
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
    EXPECT_LT(Clock::now() - start, patience);
    EXPECT_TRUE(ran) << "in the pass that was waiting";
    observer.release();
    poster.join();
}

TEST(GlibEventLoop, runsEveryPostOfManyThreadsInEachThreadsOrder) {
    GlibEventLoop loop;
    constexpr int threadCount = 4;
    constexpr int postsPerThread = 1000;
    std::vector<std::vector<int>> ran(threadCount);
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (std::vector<int>& ofThread : ran) {
        threads.emplace_back([&loop, &ofThread] {
            for (int number = 0; number < postsPerThread; ++number)
                loop.post([&ofThread, number] { ofThread.push_back(number); });
        });
    }
    runUntil(loop, [&] {
        return std::ranges::all_of(ran, [](const auto& one) { return one.size() == postsPerThread; });
    });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<int>& ofThread : ran)
        EXPECT_TRUE(std::ranges::is_sorted(ofThread));
}

TEST(GlibEventLoop, anIdlePassLastsAsLongAsItMayAndNoLonger) {
    GlibEventLoop loop;
    loop.runOnce(0ms); // takes up the wake-up by which the loop announced itself
    for (const auto longestWait : {0ms, 1ms, 80ms}) {
        const auto start = Clock::now();
        loop.runOnce(longestWait);
        EXPECT_GE(Clock::now() - start, longestWait);
        EXPECT_LT(Clock::now() - start, patience);
    }
}

TEST(GlibEventLoop, stopWaitingBeforeAPassEndsThatPassOnly) {
    GlibEventLoop loop;
    loop.stopWaiting();
    loop.stopWaiting();
    auto start = Clock::now();
    loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, patience);
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
    EXPECT_LT(Clock::now() - start, patience);
    observer.release();
    stopper.join();
}

TEST(GlibEventLoop, runsADelayedFunctionOnceAndNotBeforeItsTime) {
    GlibEventLoop loop;
    std::vector<Clock::duration> runs;
    const auto start = Clock::now();
    loop.postAfter(50ms, [&] { runs.push_back(Clock::now() - start); });
    runUntil(loop, [&] { return !runs.empty(); });
    EXPECT_GE(runs.front(), 50ms);
    while (Clock::now() - start < 250ms)
        loop.runOnce(50ms);
    EXPECT_EQ(runs.size(), 1U);
}

TEST(GlibEventLoop, aDelayedFunctionEndsTheWait) {
    GlibEventLoop loop;
    bool ran = false;
    loop.postAfter(20ms, [&] { ran = true; });
    const auto start = Clock::now();
    while (!ran && Clock::now() - start < forEver)
        loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, patience);
}

TEST(GlibEventLoop, runsDelayedFunctionsInTheOrderOfTheirTimes) {
    GlibEventLoop loop;
    std::vector<int> ran;
    loop.postAfter(60ms, [&] { ran.push_back(3); });
    loop.postAfter(20ms, [&] { ran.push_back(1); });
    loop.postAfter(40ms, [&] { ran.push_back(2); });
    runUntil(loop, [&] { return ran.size() == 3; });
    EXPECT_EQ(ran, (std::vector{1, 2, 3}));
}

TEST(GlibEventLoop, repeatsAtTheInterval) {
    GlibEventLoop loop;
    constexpr auto interval = 20ms;
    int ticks = 0;
    const auto start = Clock::now();
    loop.repeat(interval, [&] { ++ticks; });
    runUntil(loop, [&] { return ticks >= 5; });
    EXPECT_GE(Clock::now() - start, ticks * interval);
}

TEST(GlibEventLoop, doesNotMakeUpForTicksThatComeLate) {
    GlibEventLoop loop;
    constexpr auto interval = 20ms;
    constexpr int passes = 8;
    int ticks = 0;
    loop.repeat(interval, [&] { ++ticks; });
    runUntil(loop, [&] { return ticks > 0; });
    std::this_thread::sleep_for(passes * interval); // the thread was busy for as many ticks

    const int ticksBefore = ticks;
    const auto start = Clock::now();
    for (int pass = 0; pass < passes; ++pass)
        loop.runOnce(0ms);
    // One late tick, and those that were due while the passes ran: none, unless the machine is very busy.
    const auto due = (Clock::now() - start) / interval + 1;
    EXPECT_GE(ticks, ticksBefore + 1);
    EXPECT_LE(ticks, ticksBefore + 1 + due);
}

TEST(GlibEventLoop, runsABackgroundJobOnAnotherThread) {
    GlibEventLoop loop;
    // Shared with the job, which may outlast the test's wait for it.
    const auto ranOn = std::make_shared<std::promise<std::thread::id>>();
    auto result = ranOn->get_future();
    loop.runInBackground([ranOn] { ranOn->set_value(std::this_thread::get_id()); });
    ASSERT_EQ(result.wait_for(patience), std::future_status::ready) << "without any pass of the loop";
    EXPECT_NE(result.get(), std::this_thread::get_id());
}

TEST(GlibEventLoop, aBackgroundJobCanReportToTheLoop) {
    GlibEventLoop loop;
    std::thread::id reportedOn;
    const auto finished = std::make_shared<std::promise<void>>();
    auto isFinished = finished->get_future();
    loop.runInBackground([&loop, &reportedOn, finished] {
        loop.post([&reportedOn] { reportedOn = std::this_thread::get_id(); });
        finished->set_value();
    });
    runUntil(loop, [&] { return reportedOn != std::thread::id(); });
    EXPECT_EQ(reportedOn, std::this_thread::get_id());
    isFinished.wait(); // the loop must outlive the job's use of it
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
