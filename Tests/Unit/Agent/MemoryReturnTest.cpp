#include "TavelClipboardAgent/main/MemoryReturn.h"

#include <gtest/gtest.h>

namespace tavel {

namespace {

class MemoryReturnTest : public testing::Test {
protected:
    /// One tick after the other until the next look. Whether it was then time.
    bool isDueAtNextLook() {
        for (int tick = 1; tick < MemoryReturn::ticksPerLook; ++tick)
            EXPECT_FALSE(memory_.isDue()) << "between two looks";
        return memory_.isDue();
    }

    int returnsWithin(int looks) {
        int returns = 0;
        for (int look = 0; look < looks; ++look)
            returns += isDueAtNextLook() ? 1 : 0;
        return returns;
    }

    MemoryUse use_;
    MemoryReturn memory_{[this] { return use_; }};
};

TEST_F(MemoryReturnTest, isDueOnceAfterLargeWork) {
    use_.pagesProvided += MemoryReturn::smallestWork;
    EXPECT_FALSE(isDueAtNextLook()) << "the work may go on";
    EXPECT_TRUE(isDueAtNextLook());
    EXPECT_EQ(returnsWithin(100), 0) << "an idle agent does nothing";
    use_.pagesProvided += MemoryReturn::smallestWork;
    EXPECT_EQ(returnsWithin(100), 1);
}

TEST_F(MemoryReturnTest, isNotDueAfterSmallWork) {
    use_.pagesProvided += MemoryReturn::smallestWork - 1;
    EXPECT_EQ(returnsWithin(100), 0);
    ++use_.pagesProvided;
    EXPECT_EQ(returnsWithin(100), 1) << "small works add up";
}

TEST_F(MemoryReturnTest, isNotDueWhileWorkGoesOn) {
    for (int look = 0; look < 100; ++look) {
        use_.pagesProvided += MemoryReturn::pagesWithoutWork + 1;
        EXPECT_FALSE(isDueAtNextLook());
    }
    use_.pagesProvided += MemoryReturn::pagesWithoutWork;
    EXPECT_TRUE(isDueAtNextLook());
}

TEST_F(MemoryReturnTest, isDueOnceAfterMuchWasFreed) {
    use_.bytesFree = 1'000'000;
    EXPECT_EQ(returnsWithin(100), 0) << "it was free from the beginning";
    use_.bytesFree += MemoryReturn::smallestFreed;
    EXPECT_EQ(returnsWithin(100), 1);
    use_.bytesFree -= MemoryReturn::smallestFreed; // the heap's end went back
    EXPECT_EQ(returnsWithin(100), 0);
    use_.bytesFree += MemoryReturn::smallestFreed;
    EXPECT_EQ(returnsWithin(100), 1);
}

TEST_F(MemoryReturnTest, isNotDueAfterLittleWasFreed) {
    EXPECT_EQ(returnsWithin(1), 0);
    use_.bytesFree += MemoryReturn::smallestFreed - 1;
    EXPECT_EQ(returnsWithin(100), 0);
    ++use_.bytesFree;
    EXPECT_EQ(returnsWithin(100), 1);
}

TEST_F(MemoryReturnTest, looksAtEveryTenthTickOnly) {
    int looks = 0;
    MemoryReturn memory([&] {
        ++looks;
        return MemoryUse();
    });
    for (int tick = 0; tick < 1000; ++tick)
        EXPECT_FALSE(memory.isDue());
    EXPECT_EQ(looks, 100);
}

} // namespace

} // namespace tavel
