#include "Linux/X11/Keyboard/KeyModifiers.h"

#include "Platform/KeyboardTap.h"

#include <gmock/gmock.h>
#include <xcb/xproto.h>

namespace tavel {

namespace {

using testing::ElementsAre;

TEST(KeyModifiers, areFlagsOfTheHomePlatform) {
    EXPECT_EQ(keyFlagsOf(0), 0);
    EXPECT_EQ(keyFlagsOf(XCB_MOD_MASK_SHIFT), keyFlag::shift);
    EXPECT_EQ(keyFlagsOf(XCB_MOD_MASK_CONTROL), keyFlag::command);
    EXPECT_EQ(keyFlagsOf(XCB_MOD_MASK_1), keyFlag::option);
    EXPECT_EQ(keyFlagsOf(XCB_MOD_MASK_4), keyFlag::control);
    EXPECT_EQ(keyFlagsOf(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT), keyFlag::command | keyFlag::shift);
}

TEST(KeyModifiers, ofLocksButtonsAndGroupsAreNoFlags) {
    EXPECT_EQ(keyFlagsOf(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2 | XCB_MOD_MASK_3 | XCB_MOD_MASK_5), 0);
    EXPECT_EQ(keyFlagsOf(0xff00), 0);
}

TEST(KeyModifiers, areFoundInTheServersMapping) {
    const std::vector<std::uint8_t> mapping{50, 62, 66, 0, 37, 105, 64, 0, 77, 0, 0, 0, 133, 0, 92, 0};
    const std::vector<std::uint8_t> numLock{77};
    const std::vector<std::uint8_t> rightShift{62};
    const std::vector<std::uint8_t> both{77, 92};
    const std::vector<std::uint8_t> other{99};
    EXPECT_EQ(modifiersOf(numLock, mapping), XCB_MOD_MASK_2);
    EXPECT_EQ(modifiersOf(rightShift, mapping), XCB_MOD_MASK_SHIFT);
    EXPECT_EQ(modifiersOf(both, mapping), XCB_MOD_MASK_2 | XCB_MOD_MASK_5);
    EXPECT_EQ(modifiersOf(other, mapping), 0);
    EXPECT_EQ(modifiersOf({}, mapping), 0);
    EXPECT_EQ(modifiersOf(numLock, {}), 0);
}

TEST(KeyModifiers, haveKeysButThoseOfLocksHaveNone) {
    const std::vector<std::uint8_t> mapping{50, 62, 66, 0, 37, 105, 64, 77, 77, 0, 0, 0, 133, 66, 92, 0};
    const KeySet keys = modifierKeys(mapping, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
    for (const std::size_t key : {50U, 62U, 37U, 105U, 64U, 133U, 92U})
        EXPECT_TRUE(keys[key]) << key;
    EXPECT_EQ(keys.count(), 7);
    EXPECT_TRUE(modifierKeys({}, 0).none());
}

TEST(KeyModifiers, ofAGrabComeWithAndWithoutEachLock) {
    EXPECT_THAT(controlWithLocks(XCB_MOD_MASK_2),
                ElementsAre(XCB_MOD_MASK_CONTROL, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_LOCK,
                            XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_2,
                            XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2));
}

TEST(KeyModifiers, ofAGrabAreNamedOnceWhereNumLockIsNone) {
    const auto variants = ElementsAre(XCB_MOD_MASK_CONTROL, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_LOCK);
    EXPECT_THAT(controlWithLocks(0), variants);
    EXPECT_THAT(controlWithLocks(XCB_MOD_MASK_LOCK), variants);
}

} // namespace

} // namespace tavel
