#include "TavelClipboardAgent/main/PollSchedule.h"

#include "Tests/Unit/Doubles/ManualEventLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace tavel {
namespace {

using namespace std::chrono_literals;

class PollScheduleTest : public testing::Test {
protected:
    ManualEventLoop loop_;
    int polls_ = 0;
    std::shared_ptr<PollSchedule> schedule_ = std::make_shared<PollSchedule>(loop_, [this] { ++polls_; });
};

TEST_F(PollScheduleTest, pollsAtOnceUnlessAContentWasAnnouncedJustBefore) {
    schedule_->noteNews();
    schedule_->noteNews();
    EXPECT_EQ(polls_, 2);
    schedule_->noteAnnouncement();
    schedule_->noteNews();
    loop_.advance(99ms);
    EXPECT_EQ(polls_, 2);
    loop_.advance(1ms);
    EXPECT_EQ(polls_, 3);
    schedule_->noteNews();
    EXPECT_EQ(polls_, 4);
}

TEST_F(PollScheduleTest, doesNotPollAfterAPauseWithoutNews) {
    schedule_->noteAnnouncement();
    loop_.advance(1s);
    EXPECT_EQ(polls_, 0);
    EXPECT_EQ(loop_.pendingTimers(), 0U);
}

TEST_F(PollScheduleTest, retriesOnceHoweverOftenItIsAsked) {
    schedule_->noteAnnouncement();
    schedule_->retryLater();
    schedule_->retryLater();
    EXPECT_EQ(loop_.pendingTimers(), 1U);
    loop_.advance(1s);
    EXPECT_EQ(polls_, 1);
}

TEST_F(PollScheduleTest, leavesTheWaitToItsCallerWithoutTheMemoryForATimer) {
    loop_.refuseDelays(1);
    schedule_->noteAnnouncement();
    EXPECT_FALSE(schedule_->hasTimerIfNeeded());
    schedule_->noteNews();
    EXPECT_EQ(polls_, 0);
    schedule_->goOnWithoutTimer();
    EXPECT_EQ(polls_, 1);
    EXPECT_TRUE(schedule_->hasTimerIfNeeded());
}

TEST_F(PollScheduleTest, waitsForItsTimerIfItHasOne) {
    schedule_->retryLater();
    EXPECT_TRUE(schedule_->hasTimerIfNeeded());
    schedule_->goOnWithoutTimer();
    EXPECT_EQ(polls_, 0);
}

TEST_F(PollScheduleTest, doesNothingOnceItIsGone) {
    schedule_->retryLater();
    schedule_.reset();
    loop_.advance(1s);
    EXPECT_EQ(polls_, 0);
}

} // namespace
} // namespace tavel
