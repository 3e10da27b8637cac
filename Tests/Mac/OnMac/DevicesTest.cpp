#include "Mac/MacFocusProbe.h"
#include "Mac/MacKeyboardTap.h"
#include "Mac/SystemServices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace tavel {

TEST(SystemServices, theTemporaryDirectoryIsTheUsersOwn) {
    std::FILE* const command = popen("getconf DARWIN_USER_TEMP_DIR", "r");
    ASSERT_NE(command, nullptr);
    std::array<char, 1024> line{};
    ASSERT_NE(std::fgets(line.data(), line.size(), command), nullptr);
    EXPECT_EQ(pclose(command), 0);
    const std::string_view told(line.data());
    EXPECT_TRUE(std::filesystem::equivalent(userTemporaryDirectory(), told.substr(0, told.find('\n'))));
}

TEST(SystemServices, theTimestampHasItsForm) {
    const std::string timestamp = localTimestamp();
    EXPECT_GE(timestamp.size(), std::string("2026-01-01-000000").size()); // digits may be of several bytes
    EXPECT_EQ(std::ranges::count(timestamp, '-'), 3) << timestamp;
}

TEST(SystemServices, theLogDoesNotReachStandardError) {
    testing::internal::CaptureStderr();
    writeToSystemLog("A test of the log");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MacFocusProbe, hasNoRoleForAMissingProcess) {
    MacFocusProbe probe;
    EXPECT_FALSE(probe.focusedRole(-1));
    probe.activate(-1);
}

/// The machine's settings decide which branch runs. Either way the tap leaves nothing behind.
TEST(MacKeyboardTap, isCreatedOnlyWithThePermission) {
    MacFocusProbe probe;
    MacKeyboardTap tap;
    const bool created = tap.create([](const KeyEvent&) { return KeyVerdict::pass; });
    if (created)
        EXPECT_TRUE(probe.isTrusted());
    EXPECT_EQ(tap.isPermitted(), created);
    tap.setEnabled(false);
    EXPECT_FALSE(tap.isKeyDown(0x10000));
    tap.remove();
}

} // namespace tavel
