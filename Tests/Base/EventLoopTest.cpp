#include "Tests/Base/TestedEventLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

/// The promises of every event loop.
namespace tavel {

using namespace std::chrono_literals;

TEST(EventLoop, runsWhatIsPostedInTheOrderOfPosting) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    std::vector<int> ran;
    std::vector<int> expected;
    for (int number = 0; number < 1000; ++number) {
        loop.post([&ran, number] { ran.push_back(number); });
        expected.push_back(number);
    }
    EXPECT_TRUE(ran.empty()) << "posting runs nothing";
    runUntil(loop, [&] { return ran.size() == expected.size(); });
    EXPECT_EQ(ran, expected);
}

TEST(EventLoop, runsAPostedFunctionOnce) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    int runs = 0;
    loop.post([&] { ++runs; });
    for (int pass = 0; pass < 3; ++pass)
        loop.runOnce(0ms);
    EXPECT_EQ(runs, 1);
}

TEST(EventLoop, neverRunsAFunctionInsideAnother) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
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
        loop.runOnce(10ms); // functions still in the queue refer to this test's variables
}

TEST(EventLoop, letsAFunctionGoBeforeTheNextOneRuns) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> observed = held;
    std::optional<bool> wasGone;
    loop.post([held = std::move(held)] {});
    loop.post([&] { wasGone = observed.expired(); });
    runUntil(loop, [&] { return wasGone.has_value(); });
    EXPECT_EQ(wasGone, true);
}

TEST(EventLoop, runsEveryPostOfManyThreadsInEachThreadsOrder) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
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

TEST(EventLoop, anIdlePassLastsAsLongAsItMayAndNoLonger) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    loop.runOnce(0ms); // consumes the wake-up that the loop's creation caused
    for (const auto longestWait : {0ms, 1ms, 80ms}) {
        const auto start = Clock::now();
        loop.runOnce(longestWait);
        EXPECT_GE(Clock::now() - start, longestWait);
        EXPECT_LT(Clock::now() - start, testTimeout);
    }
}

TEST(EventLoop, runsADelayedFunctionOnceAndNotBeforeItsTime) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    std::vector<Clock::duration> runs;
    const auto start = Clock::now();
    loop.postAfter(50ms, [&] { runs.push_back(Clock::now() - start); });
    runUntil(loop, [&] { return !runs.empty(); });
    EXPECT_GE(runs.front(), 50ms);
    while (Clock::now() - start < 250ms)
        loop.runOnce(50ms);
    EXPECT_EQ(runs.size(), 1U);
}

TEST(EventLoop, runsDelayedFunctionsInTheOrderOfTheirTimes) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    std::vector<int> ran;
    loop.postAfter(60ms, [&] { ran.push_back(3); });
    loop.postAfter(20ms, [&] { ran.push_back(1); });
    loop.postAfter(40ms, [&] { ran.push_back(2); });
    runUntil(loop, [&] { return ran.size() == 3; });
    EXPECT_EQ(ran, (std::vector{1, 2, 3}));
}

TEST(EventLoop, repeatsAtTheInterval) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    constexpr auto interval = 20ms;
    int ticks = 0;
    const auto start = Clock::now();
    loop.repeat(interval, [&] { ++ticks; });
    runUntil(loop, [&] { return ticks >= 5; });
    EXPECT_GE(Clock::now() - start, ticks * interval);
}

TEST(EventLoop, doesNotMakeUpForTicksThatComeLate) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    constexpr auto interval = 20ms;
    constexpr int passes = 8;
    int ticks = 0;
    loop.repeat(interval, [&] { ++ticks; });
    runUntil(loop, [&] { return ticks > 0; });
    std::this_thread::sleep_for(passes * interval); // the thread misses that many ticks

    const int ticksBefore = ticks;
    const auto start = Clock::now();
    for (int pass = 0; pass < passes; ++pass)
        loop.runOnce(0ms);
    // One late tick, and those that became due during the passes: none unless the machine is very busy.
    const auto due = (Clock::now() - start) / interval + 1;
    EXPECT_GE(ticks, ticksBefore + 1);
    EXPECT_LE(ticks, ticksBefore + 1 + due);
}

TEST(EventLoop, runsABackgroundJobOnAnotherThread) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    // Shared with the job, which may still run after the test has given up.
    const auto ranOn = std::make_shared<std::promise<std::thread::id>>();
    auto result = ranOn->get_future();
    loop.runInBackground([ranOn] { ranOn->set_value(std::this_thread::get_id()); });
    ASSERT_EQ(result.wait_for(testTimeout), std::future_status::ready) << "without any pass of the loop";
    EXPECT_NE(result.get(), std::this_thread::get_id());
}

TEST(EventLoop, aBackgroundJobCanReportToTheLoop) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    std::thread::id reportedOn;
    const auto finished = std::make_shared<std::promise<void>>();
    auto isFinished = finished->get_future();
    loop.runInBackground([&loop, &reportedOn, finished] {
        loop.post([&reportedOn] { reportedOn = std::this_thread::get_id(); });
        finished->set_value();
    });
    runUntil(loop, [&] { return reportedOn != std::thread::id(); });
    EXPECT_EQ(reportedOn, std::this_thread::get_id());
    isFinished.wait(); // the job uses the loop until then
}

TEST(EventLoop, stopWaitingBeforeAPassEndsThatPassOnly) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    loop.runOnce(0ms);
    loop.stopWaiting();
    auto start = Clock::now();
    loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, testTimeout);
    start = Clock::now();
    loop.runOnce(80ms);
    EXPECT_GE(Clock::now() - start, 80ms) << "the next pass waits again";
}

TEST(EventLoop, stopWaitingFromAnotherThreadEndsTheWait) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    std::thread stopper([&] { loop.stopWaiting(); });
    const auto start = Clock::now();
    loop.runOnce(forEver);
    EXPECT_LT(Clock::now() - start, testTimeout);
    stopper.join();
}

TEST(EventLoop, runsWhatIsPostedWhileItWaits) {
    const auto owned = makeTestedEventLoop();
    EventLoop& loop = *owned;
    std::promise<void> ran;
    auto hasRun = ran.get_future();
    std::thread poster([&] {
        loop.post([&] { ran.set_value(); });
        // The function has to run without stopWaiting, which only ends the pass.
        EXPECT_EQ(hasRun.wait_for(testTimeout), std::future_status::ready);
        loop.stopWaiting();
    });
    loop.runOnce(forEver);
    poster.join();
    runUntil(loop, [&] { return hasRun.wait_for(0s) == std::future_status::ready; });
}

} // namespace tavel
