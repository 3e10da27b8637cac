#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace tavel {
namespace {

// The user takes the permission to tap the keyboard away, and gives it back. The double fails the test when a
// tap is enabled without permission, which would stall the keyboard.

using namespace std::chrono_literals;

class FilePastePermission : public FilePasteFixture {
protected:
    FilePastePermission() {
        platform.tap.losesPermission = true;
        switchOn();
    }

    void revoke() { platform.tap.allowed = false; }
    void giveBack() { platform.tap.allowed = true; }

    void notice(KeyEventType type = KeyEventType::tapDisabledByTimeout) {
        EXPECT_EQ(this->type({type}), KeyVerdict::pass);
        platform.loop.runPosted();
    }

    /// The feature is off, and keeps nothing back.
    void expectOff(const std::string& when = "") {
        const std::size_t posted = platform.tap.posted.size();
        EXPECT_FALSE(platform.tap.exists) << when;
        EXPECT_FALSE(platform.focus.followed.back()) << when;
        EXPECT_FALSE(isPanelOpen()) << when;
        EXPECT_EQ(repeat(), KeyVerdict::pass) << when;
        EXPECT_EQ(release(), KeyVerdict::pass) << when;
        EXPECT_FALSE(typeShortcut()) << when;
        wait(10s);
        EXPECT_EQ(platform.tap.posted.size(), posted) << when;
        EXPECT_FALSE(isPanelOpen()) << when;
        EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1") << when;
    }

    /// With the permission back, the feature can be switched on, and works.
    void expectThatItWorksAgain(const std::string& when = "") {
        giveBack();
        EXPECT_FALSE(typeShortcut()) << "not by itself " << when;
        switchOn();
        EXPECT_TRUE(platform.focus.followed.back()) << when;
        const std::size_t posted = platform.tap.posted.size();
        pasteAs("a");
        EXPECT_EQ(platform.tap.posted.size(), posted + 4) << when;
    }

    /// Waits until the permission has been checked; the next check comes a second later.
    void awaitCheck() {
        for (int time = 0; time < 1000; ++time) {
            if (checksWithin(1ms) > 0)
                return;
        }
        ADD_FAILURE() << "no check within a second";
    }

    int checksWithin(std::chrono::milliseconds time) {
        const int before = platform.tap.permissionChecks;
        wait(time);
        return platform.tap.permissionChecks - before;
    }
};

TEST_F(FilePastePermission, isCheckedOnceASecondWhileTheFeatureIsOn) {
    EXPECT_EQ(checksWithin(999ms), 0);
    EXPECT_EQ(checksWithin(1ms), 1);
    EXPECT_EQ(checksWithin(60s), 60);
    switchOn();
    switchOn();
    static_cast<void>(checksWithin(1s));
    EXPECT_EQ(checksWithin(10s), 10) << "however often it is switched on";
}

TEST_F(FilePastePermission, isNotCheckedWhileTheFeatureIsOff) {
    switchOff();
    EXPECT_EQ(checksWithin(1h), 0);
    switchOn();
    switchOff();
    switchOn();
    static_cast<void>(checksWithin(1s));
    EXPECT_EQ(checksWithin(10s), 10) << "once a second again";
    paste.reset();
    EXPECT_EQ(checksWithin(1h), 0);
}

TEST_F(FilePastePermission, isNotCheckedInTimeWhereItCannotBeLost) {
    TestPlatform other;
    const auto feature = std::make_shared<FilePaste>(
        other, other.pasteboard, std::make_shared<ExportDirectory>(root), [](std::int64_t) {});
    feature->configure(true);
    other.loop.advance(1h);
    EXPECT_EQ(other.tap.permissionChecks, 0);
}

TEST_F(FilePastePermission, thatIsLostWhileIdleSwitchesTheFeatureOff) {
    revoke();
    wait(1s);
    expectOff();
    EXPECT_EQ(checksWithin(1h), 0);
    expectThatItWorksAgain();
    EXPECT_EQ(checksWithin(10s), 10);
}

TEST_F(FilePastePermission, isCheckedBeforeADisabledTapIsEnabled) {
    for (const KeyEventType type :
         {KeyEventType::tapDisabledByTimeout, KeyEventType::tapDisabledByUserInput}) {
        notice(type);
        EXPECT_TRUE(platform.tap.exists);
        EXPECT_TRUE(platform.tap.enabled.back());
        revoke();
        notice(type);
        expectOff();
        expectThatItWorksAgain();
    }
}

/// The check comes 50 ms after the step is reached, before the next one.
TEST_F(FilePastePermission, thatIsLostEndsEveryStepOfAnInterception) {
    struct Step {
        std::string name;
        std::chrono::milliseconds duration;
        std::function<void()> reach;
    };
    const std::vector<Step> steps{
        {"swallowed", 0ms, [this] { EXPECT_EQ(press(), KeyVerdict::swallow); }},
        {"waiting for the keys", 300ms,
         [this] {
             platform.tap.keysDown = {9, 55};
             EXPECT_TRUE(typeShortcut());
             wait(300ms);
             platform.tap.keysDown.clear();
         }},
        {"panel open", 120ms, [this] { openPanel(); }},
        {"panel open, V still held", 120ms,
         [this] {
             EXPECT_EQ(press(), KeyVerdict::swallow);
             wait(120ms);
             EXPECT_TRUE(isPanelOpen());
         }},
        {"named", 120ms,
         [this] {
             openPanel();
             confirm("a");
         }},
        {"passed late", 0ms,
         [this] {
             platform.tap.keysDown = {9, 55};
             EXPECT_EQ(press(), KeyVerdict::swallow);
             notice();
         }},
    };
    const std::vector<Step> ways{
        {"the check", 0ms, [this] { wait(50ms); }},
        {"the notice", 0ms, [this] { notice(); }},
        {"the notice, then the check", 0ms,
         [this] {
             notice();
             wait(50ms);
         }},
        {"the check, then the notice", 0ms,
         [this] {
             wait(50ms);
             notice();
         }},
        {"switching on", 0ms, [this] { EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1"); }},
        {"switching off and on", 0ms,
         [this] {
             switchOff();
             EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
         }},
    };
    for (const Step& step : steps) {
        for (const Step& way : ways) {
            const std::string when = step.name + ", " + way.name;
            awaitCheck();
            wait(950ms - step.duration);
            step.reach();
            revoke();
            way.reach();
            platform.tap.keysDown.clear();
            expectOff(when);
            expectThatItWorksAgain(when);
        }
    }
}

TEST_F(FilePastePermission, thatIsLostBeforeALateVerdictIsKnownOpensNoPanel) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    revoke();
    notice();
    EXPECT_EQ(release(), KeyVerdict::pass);
    wait(1s);
    EXPECT_TRUE(platform.panels.empty());
}

TEST_F(FilePastePermission, thatIsLostLeavesNoPressThatALaterNoticeCouldBeAbout) {
    awaitCheck();
    wait(950ms);
    platform.tap.keysDown = {9, 55};
    EXPECT_EQ(press(), KeyVerdict::swallow);
    revoke();
    wait(50ms);
    giveBack();
    switchOn();
    notice();
    EXPECT_TRUE(typeShortcut()) << "nothing is waited for";
}

TEST_F(FilePastePermission, thatComesBackBeforeItIsMissedChangesNothing) {
    openPanel();
    revoke();
    wait(0ms);
    giveBack();
    notice();
    wait(10s);
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(platform.tap.creations, 1);
    confirm("a");
    wait(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
}

/// The notice's handler cannot remove the tap itself.
TEST_F(FilePastePermission, thatComesBackBeforeTheTapIsRemovedKeepsTheTap) {
    revoke();
    EXPECT_EQ(timeOut(), KeyVerdict::pass);
    EXPECT_TRUE(platform.tap.exists);
    EXPECT_FALSE(platform.tap.enabled.back());
    giveBack();
    switchOn();
    platform.loop.runPosted();
    EXPECT_TRUE(platform.tap.exists);
    EXPECT_TRUE(platform.tap.enabled.back());
    EXPECT_EQ(platform.tap.creations, 1);
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePastePermission, thatIsLostWhileTheFeatureIsOffIsMissedWhenItIsSwitchedOn) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    switchOff();
    revoke();
    notice();
    wait(10s);
    EXPECT_TRUE(platform.tap.exists) << "disabled";
    EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
    expectOff();
    expectThatItWorksAgain();
}

TEST_F(FilePastePermission, thatIsLostAndGivenBackWhileTheFeatureIsOffKeepsTheTap) {
    switchOff();
    revoke();
    wait(10s);
    giveBack();
    switchOn();
    EXPECT_EQ(platform.tap.creations, 1);
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePastePermission, thatCannotBeCheckedAgainEndsTheFeature) {
    platform.loop.refuseDelays(1);
    wait(1s);
    EXPECT_FALSE(platform.tap.exists);
    EXPECT_FALSE(platform.focus.followed.back());
    platform.loop.refuseDelays(1);
    EXPECT_THROW(switchOn(), std::bad_alloc);
    EXPECT_FALSE(platform.tap.exists);
    expectThatItWorksAgain();
}

TEST_F(FilePastePermission, thatWasNeverGivenIsNotChecked) {
    TestPlatform other;
    other.tap.losesPermission = true;
    other.tap.allowed = false;
    const auto feature = std::make_shared<FilePaste>(
        other, other.pasteboard, std::make_shared<ExportDirectory>(root), [](std::int64_t) {});
    EXPECT_EQ(errorOf([&] { feature->configure(true); }), "Tavel 1");
    other.loop.advance(1h);
    EXPECT_EQ(other.tap.permissionChecks, 0);
    other.tap.allowed = true;
    feature->configure(true);
    EXPECT_EQ(other.tap.creations, 2);
    EXPECT_TRUE(other.tap.exists);
}

} // namespace
} // namespace tavel
