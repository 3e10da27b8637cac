#include "Support/OwnerThread.h"

#include <gtest/gtest.h>

#include <thread>

namespace tavel {
namespace {

TEST(OwnerThread, acceptsTheThreadThatMadeIt) {
    const OwnerThread owner;
    owner.assertCurrent();
    std::thread([] {
        const OwnerThread ofThisThread;
        ofThisThread.assertCurrent();
    }).join();
}

#ifndef NDEBUG
TEST(OwnerThreadDeathTest, endsTheProcessOnAnotherThread) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const OwnerThread owner;
    EXPECT_DEATH(std::thread([&] { owner.assertCurrent(); }).join(), "used on another thread");
}
#else
TEST(OwnerThread, acceptsEveryThreadInAReleaseBuild) {
    const OwnerThread owner;
    std::thread([&] { owner.assertCurrent(); }).join();
}
#endif

} // namespace
} // namespace tavel
