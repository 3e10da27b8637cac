#include "Mac/SystemServices.h"
#include "Tests/Base/TestedEventLoop.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavel {

using namespace std::chrono_literals;

/// App Nap slows the timers of a process without windows after some time, to one tick in several seconds.
TEST(SystemServices, timersKeepTheirPaceForAMinute) {
    const auto loop = makeTestedEventLoop();
    keepPaceInBackground();
    auto last = Clock::now();
    Clock::duration longest{};
    loop->repeat(100ms, [&] {
        const auto now = Clock::now();
        longest = std::max(longest, now - last);
        last = now;
    });
    const auto end = Clock::now() + 60s;
    while (Clock::now() < end)
        loop->runOnce(100ms);
    EXPECT_LT(longest, 2s);
}

} // namespace tavel
