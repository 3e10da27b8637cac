#include "Mac/MacEventLoop.h"

#include "TavelClipboardAgent/main/Pace.h"
#include "Tests/Base/TestedEventLoop.h"
#include "Tests/Mac/Double/DoubledMac.h"
#include "Tests/Mac/Double/MainQueue.h"

#include <atomic>
#include <memory>
#include <new>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace tavel {

using namespace doubles;
using namespace std::chrono_literals;

std::unique_ptr<EventLoop> makeTestedEventLoop() {
    resetApplication();
    finishGlobalWork(); // left by earlier loops
    return std::make_unique<MacEventLoop>();
}

namespace {

class DoubledEventLoop : public DoubledMac {
protected:
    ManualClock clock_;
    std::unique_ptr<EventLoop> loop_ = makeTestedEventLoop();
};

/// Whether the pass lasted for its longest wait.
bool waitsInVain(EventLoop& loop, std::chrono::milliseconds longestWait) {
    const Time start = now();
    loop.runOnce(longestWait);
    return now() - start == longestWait;
}

} // namespace

TEST_F(DoubledEventLoop, ticksAtTheIntervalWithATenthOfToleranceAndFirstAfterOne) {
    std::vector<Time> ticks;
    const Time start = now();
    loop_->repeat(100ms, [&] { ticks.push_back(now() - start); });
    loop_->runOnce(350ms);
    EXPECT_EQ(ticks, (std::vector<Time>{110ms, 210ms, 310ms}));
}

/// At the agent's own pace. Passes that begin between two ticks end between two others.
TEST_F(DoubledEventLoop, wakesTheProcessOnceATickAndOnceAPass) {
    int ticks = 0;
    loop_->repeat(pollInterval, [&] { ++ticks; });
    loop_->runOnce(30ms);
    const long before = wakeUpsFromSleep();
    int passes = 0;
    while (ticks < 30) {
        loop_->runOnce(longestWait);
        ++passes;
    }
    EXPECT_EQ(passes, 3);
    EXPECT_EQ(wakeUpsFromSleep() - before, ticks + passes);
}

TEST_F(DoubledEventLoop, reportsThatThereIsNoMemoryForATimer) {
    refusesTimers = true;
    EXPECT_THROW(loop_->repeat(100ms, [] {}), std::bad_alloc);
    refusesTimers = false;
    int ticks = 0;
    loop_->repeat(100ms, [&] { ++ticks; });
    loop_->runOnce(150ms);
    EXPECT_EQ(ticks, 1);
}

TEST_F(DoubledEventLoop, doesNotTickWhileAMenuIsOpen) {
    int ticks = 0;
    loop_->repeat(100ms, [&] { ++ticks; });
    EXPECT_FALSE(runMainLoop(eventTrackingMode, 350ms));
    EXPECT_EQ(ticks, 0);
    loop_->runOnce(0ms);
    EXPECT_EQ(ticks, 1) << "one late tick";
}

TEST_F(DoubledEventLoop, runsPostedFunctionsWhileAMenuIsOpen) {
    int runs = 0;
    loop_->post([&] { ++runs; });
    EXPECT_FALSE(runMainLoop(eventTrackingMode, 0ms));
    EXPECT_EQ(runs, 1);
}

TEST_F(DoubledEventLoop, stopsTheRunLoopAndWakesTheApplication) {
    loop_->postAfter(100ms, [&] { loop_->stopWaiting(); });
    EXPECT_TRUE(runMainLoop(eventTrackingMode, 1s));
    EXPECT_EQ(waitingEvents(), 1);
    EXPECT_FALSE(waitsInVain(*loop_, 1s));
    EXPECT_EQ(waitingEvents(), 0);
    EXPECT_TRUE(waitsInVain(*loop_, 1s));
}

TEST_F(DoubledEventLoop, runsPostedFunctionsDuringTheWaitWithoutEndingIt) {
    std::vector<Time> runs;
    const Time start = now();
    loop_->post([&] { runs.push_back(now() - start); });
    loop_->postAfter(20ms, [&] {
        runs.push_back(now() - start);
        loop_->post([&] { runs.push_back(now() - start); });
    });
    EXPECT_TRUE(waitsInVain(*loop_, 1s));
    EXPECT_EQ(runs, (std::vector<Time>{0ms, 20ms, 20ms}));
}

TEST_F(DoubledEventLoop, runsEverythingInAPoolOfItsOwn) {
    std::vector<int> pools;
    std::vector<int> depths;
    const auto look = [&] {
        pools.push_back(currentPool());
        depths.push_back(openPools());
    };
    loop_->post(look);
    loop_->post(look);
    loop_->postAfter(10ms, look);
    loop_->repeat(20ms, look);
    loop_->runOnce(50ms);
    EXPECT_EQ(depths, std::vector<int>(5, 1));
    EXPECT_EQ(std::set<int>(pools.begin(), pools.end()).size(), 5U);
    EXPECT_EQ(openPools(), 0);
}

TEST_F(DoubledEventLoop, runsAJobInAPoolOnTheUtilityQueue) {
    std::atomic<int> depth = 0;
    std::atomic<bool> isElsewhere = false;
    loop_->runInBackground([&, here = std::this_thread::get_id()] {
        depth = openPools();
        isElsewhere = std::this_thread::get_id() != here;
    });
    constexpr std::intptr_t utility = 0x11;
    EXPECT_EQ(finishGlobalWork(), std::vector<std::intptr_t>{utility});
    EXPECT_EQ(depth, 1);
    EXPECT_TRUE(isElsewhere);
}

TEST_F(DoubledEventLoop, doesNotTickAfterItsDestruction) {
    const auto held = std::make_shared<int>(0);
    loop_->repeat(100ms, [held] { ++*held; });
    loop_->repeat(70ms, [held] { ++*held; });
    loop_->runOnce(150ms);
    EXPECT_EQ(*held, 3);
    loop_.reset();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(runMainLoop(kCFRunLoopDefaultMode, 1s));
    EXPECT_EQ(*held, 3);
}

TEST_F(DoubledEventLoop, runsPostedFunctionsAfterItsDestruction) {
    int runs = 0;
    loop_->post([&] { ++runs; });
    loop_->postAfter(10ms, [&] { ++runs; });
    loop_.reset();
    EXPECT_FALSE(runMainLoop(kCFRunLoopDefaultMode, 1s));
    EXPECT_EQ(runs, 2);
}

TEST_F(DoubledEventLoop, runsDueFunctionsInTheNextPass) {
    int runs = 0;
    loop_->postAfter(0ms, [&] { ++runs; });
    loop_->postAfter(-1s, [&] { ++runs; });
    EXPECT_EQ(runs, 0);
    loop_->runOnce(0ms);
    EXPECT_EQ(runs, 2);
}

} // namespace tavel
