#include "PlatformMac/LocalDate.h"
#include "PlatformMac/MacFocusProbe.h"
#include "PlatformMac/MacKeyboardTap.h"
#include "PlatformMac/SystemLog.h"
#include "PlatformMac/UserDirectories.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace tavel {

TEST(UserDirectories, theTemporaryOneIsTheUsersOwn) {
    std::FILE* const command = popen("getconf DARWIN_USER_TEMP_DIR", "r");
    ASSERT_NE(command, nullptr);
    std::array<char, 1024> line{};
    ASSERT_NE(std::fgets(line.data(), line.size(), command), nullptr);
    EXPECT_EQ(pclose(command), 0);
    const std::string_view told(line.data());
    EXPECT_TRUE(std::filesystem::equivalent(userTemporaryDirectory(), told.substr(0, told.find('\n'))));
}

TEST(LocalDate, hasTheFormOfATimestamp) {
    EXPECT_GE(localTimestamp().size(), std::string("2026-01-01-000000").size());
}

TEST(SystemLog, saysNothingOnStandardError) {
    testing::internal::CaptureStderr();
    writeToSystemLog("A test of the log");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MacFocusProbe, hasNoRoleForAProcessThatIsNotThere) {
    MacFocusProbe probe;
    EXPECT_FALSE(probe.focusedRole(-1));
    probe.activate(-1);
}

/// With the user's permission it is made, without it is refused; both end without a trace.
TEST(MacKeyboardTap, isMadeIfAndOnlyIfTheUserPermitsIt) {
    MacFocusProbe probe;
    MacKeyboardTap tap;
    const bool created = tap.create([](const KeyEvent&) { return KeyVerdict::pass; });
    if (created)
        EXPECT_TRUE(probe.isTrusted());
    tap.setEnabled(false);
    EXPECT_FALSE(tap.isKeyDown(0x10000));
}

} // namespace tavel
