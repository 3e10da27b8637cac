#include "Linux/HeadlessPlatform.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>

namespace tavel {

TEST(HeadlessPlatform, watchesTheParent) {
    HeadlessPlatform platform;
    bool isLost = false;
    ASSERT_TRUE(platform.watchParent(getpid(), [&] { isLost = true; })) << "no process is its own parent";
    platform.eventLoop().runOnce(std::chrono::seconds(30));
    EXPECT_TRUE(isLost);
}

} // namespace tavel
