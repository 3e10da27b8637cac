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

    std::int64_t pages_ = 0;
    MemoryReturn memory_{[this] { return pages_; }};
};

TEST_F(MemoryReturnTest, isDueOnceAfterLargeWork) {
    pages_ += MemoryReturn::smallestWork;
    EXPECT_FALSE(isDueAtNextLook()) << "the work may go on";
    EXPECT_TRUE(isDueAtNextLook());
    EXPECT_EQ(returnsWithin(100), 0) << "an idle agent does nothing";
    pages_ += MemoryReturn::smallestWork;
    EXPECT_EQ(returnsWithin(100), 1);
}

TEST_F(MemoryReturnTest, isNotDueAfterSmallWork) {
    pages_ += MemoryReturn::smallestWork - 1;
    EXPECT_EQ(returnsWithin(100), 0);
    ++pages_;
    EXPECT_EQ(returnsWithin(100), 1) << "small works add up";
}

TEST_F(MemoryReturnTest, isNotDueWhileWorkGoesOn) {
    for (int look = 0; look < 100; ++look) {
        pages_ += MemoryReturn::pagesWithoutWork + 1;
        EXPECT_FALSE(isDueAtNextLook());
    }
    pages_ += MemoryReturn::pagesWithoutWork;
    EXPECT_TRUE(isDueAtNextLook());
}

TEST_F(MemoryReturnTest, looksAtEveryTenthTickOnly) {
    int looks = 0;
    MemoryReturn memory([&] {
        ++looks;
        return 0;
    });
    for (int tick = 0; tick < 1000; ++tick)
        EXPECT_FALSE(memory.isDue());
    EXPECT_EQ(looks, 100);
}

} // namespace

} // namespace tavel
