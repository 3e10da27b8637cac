#include "TavelClipboardAgent/FilePaste/FileNamePanel.h"
#include "Tests/Unit/Doubles/TestPlatform.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <memory>

namespace tavel {
namespace {

using namespace std::chrono_literals;

constexpr std::int32_t fileManager = 500;
constexpr std::int32_t otherProgram = 600;

/// A panel over the file manager, on a system that has not given it the keyboard.
class PanelKeyboard : public testing::Test {
protected:
    PanelKeyboard() {
        bringToFront(fileManager);
        panel = FileNamePanel::make(platform, "a", "png");
        window().hasKeyboard = false;
    }

    void bringToFront(std::int32_t process) { platform.focus.frontmost = RunningApplication{process, ""}; }

    PanelWindow& window() { return *platform.panels.back(); }

    /// Whether nothing is planned any more, for now and ever.
    bool isAtRest() const { return platform.loop.pendingTimers() == 0; }

    TestPlatform platform;
    std::shared_ptr<FileNamePanel> panel;
};

TEST_F(PanelKeyboard, isNotWaitedForWhereShowingSuffices) {
    window().hasKeyboard = true;
    panel->show();
    EXPECT_TRUE(isAtRest());
}

TEST_F(PanelKeyboard, isNotDemandedIfItComesSoon) {
    panel->show();
    platform.loop.advance(99ms);
    window().hasKeyboard = true;
    platform.loop.advance(1ms);
    EXPECT_EQ(window().keyboardDemands, 0);
    EXPECT_TRUE(isAtRest());
}

TEST_F(PanelKeyboard, isDemandedOnceIfThatHelps) {
    panel->show();
    window().onKeyboardDemanded = [this] { window().hasKeyboard = true; };
    platform.loop.advance(99ms);
    EXPECT_EQ(window().keyboardDemands, 0);
    platform.loop.advance(10s);
    EXPECT_EQ(window().keyboardDemands, 1);
    EXPECT_TRUE(isAtRest());
}

TEST_F(PanelKeyboard, isDemandedAgainIfOnceDoesNotHelp) {
    panel->show();
    platform.loop.advance(250ms);
    EXPECT_EQ(window().keyboardDemands, 2);
    window().hasKeyboard = true;
    platform.loop.advance(10s);
    EXPECT_EQ(window().keyboardDemands, 2);
    EXPECT_TRUE(isAtRest());
}

TEST_F(PanelKeyboard, isGivenUpInTheEndAndThePanelStays) {
    panel->show();
    platform.loop.advance(10s);
    EXPECT_EQ(window().keyboardDemands, 5);
    EXPECT_TRUE(isAtRest());
    EXPECT_TRUE(window().shown);
}

TEST_F(PanelKeyboard, isNeverDemandedOnceThePanelHasHadIt) {
    panel->show();
    window().onKeyboardDemanded = [this] { window().hasKeyboard = true; };
    platform.loop.advance(200ms);
    window().hasKeyboard = false; // the user has gone back to the file manager
    platform.loop.advance(10s);
    EXPECT_EQ(window().keyboardDemands, 1);
}

TEST_F(PanelKeyboard, isNotTakenFromAProgramThatTheUserHasGoneTo) {
    panel->show();
    bringToFront(otherProgram);
    platform.loop.advance(100ms);
    bringToFront(fileManager);
    platform.loop.advance(10s);
    EXPECT_EQ(window().keyboardDemands, 0);
}

TEST_F(PanelKeyboard, isDemandedAlsoIfThisProgramIsInFrontWithoutIt) {
    panel->show();
    bringToFront(getpid());
    platform.loop.advance(100ms);
    EXPECT_EQ(window().keyboardDemands, 1);
}

TEST_F(PanelKeyboard, isNotDemandedForAHiddenPanel) {
    panel->show();
    panel->hide();
    platform.loop.advance(10s);
    EXPECT_EQ(window().keyboardDemands, 0);
}

TEST_F(PanelKeyboard, isNotDemandedForAPanelThatIsGone) {
    panel->show();
    panel.reset();
    EXPECT_TRUE(window().destroyed);
    platform.loop.advance(10s);
    EXPECT_EQ(window().keyboardDemands, 0);
}

} // namespace
} // namespace tavel
