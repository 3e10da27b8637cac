#include "TavelClipboardAgent/main/MemoryLooks.h"

#include "Tests/Unit/Doubles/ManualEventLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace tavel {
namespace {

using namespace std::chrono_literals;

class MemoryLooksTest : public testing::Test {
protected:
    /// A pass of the loop serves something.
    void work() { looks_->afterPass(); }

    /// The next timer ends a pass of the loop, which serves nothing else.
    void look() {
        EXPECT_EQ(loop_.pendingTimers(), 1U) << "nobody is going to look";
        loop_.advance(1s);
        looks_->afterPass();
    }

    bool isAtRest() const { return loop_.pendingTimers() == 0; }

    MemoryUse use_;
    bool isBusy_ = false;
    int returns_ = 0;
    ManualEventLoop loop_;
    std::shared_ptr<MemoryLooks> looks_ = std::make_shared<MemoryLooks>(
        loop_, MemoryReturn([this] { return use_; }), [this] { return isBusy_; }, [this] { ++returns_; });
};

TEST_F(MemoryLooksTest, endWhenTheMemoryOfLargeWorkWasReturned) {
    use_.pagesProvided += MemoryReturn::smallestWork;
    work();
    look();
    EXPECT_EQ(returns_, 0) << "the work may go on";
    EXPECT_FALSE(isAtRest());
    look();
    EXPECT_EQ(returns_, 1);
    EXPECT_TRUE(isAtRest());
}

TEST_F(MemoryLooksTest, endAtOnceAfterWorkThatTookNoMemory) {
    work();
    look();
    EXPECT_EQ(returns_, 0);
    EXPECT_TRUE(isAtRest());
}

TEST_F(MemoryLooksTest, comeASecondAfterTheFirstWork) {
    work();
    loop_.advance(999ms);
    work();
    EXPECT_EQ(loop_.pendingTimers(), 1U);
    loop_.advance(1ms);
    EXPECT_TRUE(isAtRest());
}

TEST_F(MemoryLooksTest, seeTheWorkOfTheirOwnPass) {
    work();
    loop_.advance(1s);
    use_.pagesProvided += MemoryReturn::smallestWork; // served after the timer, in the same pass
    looks_->afterPass();
    EXPECT_FALSE(isAtRest());
}

TEST_F(MemoryLooksTest, goOnWhileMemoryMayBeFreedWithoutAPass) {
    isBusy_ = true;
    work();
    for (int second = 0; second < 100; ++second)
        look();
    EXPECT_EQ(returns_, 0);
    use_.bytesFree += MemoryReturn::smallestFreed;
    isBusy_ = false;
    look();
    EXPECT_EQ(returns_, 1);
    EXPECT_TRUE(isAtRest());
}

TEST_F(MemoryLooksTest, areMissedNoLongerThanThereIsNoMemoryForATimer) {
    loop_.refuseDelays(1);
    work();
    EXPECT_TRUE(isAtRest());
    work();
    EXPECT_FALSE(isAtRest());
}

TEST_F(MemoryLooksTest, endWithTheirOwner) {
    work();
    looks_.reset();
    loop_.advance(1s);
    EXPECT_TRUE(isAtRest());
}

} // namespace
} // namespace tavel
