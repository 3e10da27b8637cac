#include "Linux/X11/Focus/AccessibleRoles.h"

#include <gtest/gtest.h>

namespace tavel {

namespace {

TEST(AccessibleRoles, ofViewsOfFilesHaveTheHomePlatformsNames) {
    EXPECT_EQ(roleName(30), "AXLayoutArea");
    EXPECT_EQ(roleName(31), "AXList");
    EXPECT_EQ(roleName(49), "AXScrollArea");
    EXPECT_EQ(roleName(55), "AXTable");
    EXPECT_EQ(roleName(65), "AXOutline");
    EXPECT_EQ(roleName(66), "AXOutline");
    for (const std::uint32_t group : {6U, 39U, 99U})
        EXPECT_EQ(roleName(group), "AXGroup") << group;
}

TEST(AccessibleRoles, ofFilesInThemToo) {
    EXPECT_EQ(roleName(26), "AXImage");
    EXPECT_EQ(roleName(56), "AXCell");
    for (const std::uint32_t row : {32U, 90U, 91U})
        EXPECT_EQ(roleName(row), "AXRow") << row;
    for (const std::uint32_t item : {26U, 32U, 56U, 90U, 91U})
        EXPECT_TRUE(isItemRole(item)) << item;
}

TEST(AccessibleRoles, ofPlacesToTypeAreTexts) {
    for (const std::uint32_t field : {40U, 61U, 79U})
        EXPECT_EQ(roleName(field), "AXTextField") << field;
    EXPECT_EQ(roleName(60), "AXTextArea");
    for (const std::uint32_t text : {40U, 60U, 61U, 79U}) {
        EXPECT_TRUE(isTextRole(text)) << text;
        EXPECT_FALSE(isItemRole(text)) << text;
    }
}

TEST(AccessibleRoles, ofAllElseAreUnknown) {
    // An invalid role, a frame, a push button, a page tab list, and numbers that are no roles.
    for (const std::uint32_t other : {0U, 23U, 43U, 38U, 1000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(roleName(other), "AXUnknown") << other;
        EXPECT_FALSE(isItemRole(other)) << other;
        EXPECT_FALSE(isTextRole(other)) << other;
    }
}

TEST(AccessibleRoles, ofViewsAreNeitherItemsNorTexts) {
    for (const std::uint32_t view : {6U, 30U, 31U, 39U, 49U, 55U, 65U, 66U, 99U}) {
        EXPECT_FALSE(isItemRole(view)) << view;
        EXPECT_FALSE(isTextRole(view)) << view;
    }
}

} // namespace

} // namespace tavel
