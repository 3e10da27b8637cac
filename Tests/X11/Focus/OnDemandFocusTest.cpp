#include "Linux/Base/Modules.h"
#include "Linux/X11/Focus/OnDemandFocusProbe.h"
#include "Tests/X11/Focus/FocusDesktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace tavel {
namespace {

class OnDemandFocus : public testing::Test {
protected:
    OnDemandFocusProbe probeOf(const std::filesystem::path& module) {
        return {desktop.windowManager(), desktop.deadline(),
                [this](const std::string& message) { logged.push_back(message); }, module};
    }

    FocusDesktop desktop;
    std::vector<std::string> logged;
};

TEST_F(OnDemandFocus, knowsNothingBeforeItFollows) {
    desktop.setActiveWindow(desktop.createWindow(getpid(), "Thunar"));
    OnDemandFocusProbe probe = probeOf(modulePath("tavel-focus"));
    probe.follow(false);
    probe.activate(getpid());
    EXPECT_FALSE(probe.frontmostApplication());
    EXPECT_FALSE(probe.isTrusted());
    EXPECT_FALSE(probe.focusedRole(getpid()));
}

TEST_F(OnDemandFocus, isTheModulesFromThenOn) {
    desktop.setActiveWindow(desktop.createWindow(getpid(), "Thunar"));
    OnDemandFocusProbe probe = probeOf(modulePath("tavel-focus"));
    probe.follow(true);
    const auto frontmost = probe.frontmostApplication();
    ASSERT_TRUE(frontmost);
    EXPECT_EQ(frontmost->processIdentifier, getpid());
    EXPECT_EQ(frontmost->bundleIdentifier, "com.apple.finder");
    EXPECT_TRUE(logged.empty());
    probe.follow(false);
    EXPECT_FALSE(probe.isTrusted());
    EXPECT_TRUE(probe.frontmostApplication());
}

TEST_F(OnDemandFocus, saysThatThereIsNoModule) {
    OnDemandFocusProbe probe = probeOf("/nowhere/tavel-focus.so");
    probe.follow(true);
    EXPECT_FALSE(probe.isTrusted());
    EXPECT_FALSE(probe.frontmostApplication());
    ASSERT_EQ(logged.size(), 1U);
    EXPECT_NE(logged.front().find("/nowhere/tavel-focus.so"), std::string::npos) << logged.front();
}

} // namespace
} // namespace tavel
