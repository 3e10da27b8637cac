#include "Linux/X11/Selections/TransferTimeOuts.h"

#include <gtest/gtest.h>

#include <chrono>

namespace tavel {
namespace {

using namespace std::chrono_literals;

const InactivityDeadline::Clock::time_point start{1h};

TEST(InactivityDeadline, isTheTimeOutAfterTheLastStep) {
    InactivityDeadline deadline(5s, start);
    EXPECT_EQ(deadline.end(), start + 5s);
    deadline.restart(start + 2s);
    EXPECT_EQ(deadline.end(), start + 7s);
    EXPECT_FALSE(deadline.hasPassed(start + 7s - 1ns));
    EXPECT_TRUE(deadline.hasPassed(start + 7s));
}

TEST(InactivityDeadline, neverMovesPastTheLatestTime) {
    InactivityDeadline deadline(5s, start, start + 8s);
    EXPECT_EQ(deadline.end(), start + 5s);
    deadline.restart(start + 4s);
    EXPECT_EQ(deadline.end(), start + 8s);
    EXPECT_EQ(InactivityDeadline(5s, start, start + 3s).end(), start + 3s);
}

} // namespace
} // namespace tavel
