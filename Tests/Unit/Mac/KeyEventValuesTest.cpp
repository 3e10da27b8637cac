#include "Mac/KeyEventValues.h"

#include <gtest/gtest.h>

namespace tavel {
namespace {

TEST(KeyEventValues, knowTheTypesThatATapOfKeysGets) {
    EXPECT_EQ(keyEventTypeFrom(10), KeyEventType::keyDown);
    EXPECT_EQ(keyEventTypeFrom(11), KeyEventType::keyUp);
    EXPECT_EQ(keyEventTypeFrom(0xFFFFFFFE), KeyEventType::tapDisabledByTimeout);
    EXPECT_EQ(keyEventTypeFrom(0xFFFFFFFF), KeyEventType::tapDisabledByUserInput);
}

TEST(KeyEventValues, knowNoOtherType) {
    for (const std::uint32_t type : {0U, 1U, 9U, 12U, 22U, 0x7FFFFFFFU, 0xFFFFFFFDU})
        EXPECT_EQ(keyEventTypeFrom(type), std::nullopt) << type;
}

TEST(KeyEventValues, onlyPressesAndReleasesCanBePosted) {
    EXPECT_EQ(pressesKey(KeyEventType::keyDown), true);
    EXPECT_EQ(pressesKey(KeyEventType::keyUp), false);
    EXPECT_EQ(pressesKey(KeyEventType::tapDisabledByTimeout), std::nullopt);
    EXPECT_EQ(pressesKey(KeyEventType::tapDisabledByUserInput), std::nullopt);
}

TEST(KeyEventValues, takeTheKeyCodesThatTheSystemCanName) {
    EXPECT_EQ(virtualKeyFrom(keyCode::v), 9);
    EXPECT_EQ(virtualKeyFrom(0), 0);
    EXPECT_EQ(virtualKeyFrom(0xFFFF), 0xFFFF);
    EXPECT_EQ(virtualKeyFrom(0x10000), std::nullopt);
    EXPECT_EQ(virtualKeyFrom(-1), std::nullopt);
    EXPECT_EQ(virtualKeyFrom(0x1'0000'0009), std::nullopt) << "it is not cut to what fits";
}

} // namespace
} // namespace tavel
