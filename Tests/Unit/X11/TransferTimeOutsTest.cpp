#include "Linux/Selections/TransferTimeOuts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>

namespace tavel {
namespace {

using namespace std::chrono_literals;

const InactivityDeadline::Clock::time_point start{1h};

TEST(InactivityDeadline, isTheTimeOutAfterTheLastStep) {
    InactivityDeadline deadline(5s, start);
    EXPECT_EQ(deadline.end(), start + 5s);
    deadline.restart(start + 2s);
    EXPECT_EQ(deadline.end(), start + 7s);
}

TransferTimeOuts timeOutsOf(std::chrono::milliseconds ownerInactivity, std::size_t slowestOwner) {
    TransferTimeOuts timeOuts;
    timeOuts.ownerInactivity = ownerInactivity;
    timeOuts.slowestOwner = slowestOwner;
    return timeOuts;
}

TEST(OwnerDeadline, isTheTimeOutAfterTheLastStepOfAFastOwner) {
    OwnerDeadline deadline(timeOutsOf(2s, 100), start);
    EXPECT_EQ(deadline.end(), start + 2s);
    deadline.received(1'000'000, start + 1s);
    EXPECT_EQ(deadline.end(), start + 3s);
}

TEST(OwnerDeadline, givesTheTimeThatTheBytesDeserveAtTheLowestSpeed) {
    OwnerDeadline deadline(timeOutsOf(2s, 100), start);
    deadline.received(50, start + 1s);
    EXPECT_EQ(deadline.end(), start + 2500ms);
    deadline.received(25, start + 2s);
    EXPECT_EQ(deadline.end(), start + 2750ms);
    deadline.received(0, start + 2s);
    EXPECT_EQ(deadline.end(), start + 2750ms);
}

} // namespace
} // namespace tavel
