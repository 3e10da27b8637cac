#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tavel {
namespace {

// The repeats and the release of a swallowed key, and further shortcuts during an interception.

using namespace std::chrono_literals;

class FilePasteSwallowing : public FilePasteFixture {
protected:
    FilePasteSwallowing() { switchOn(); }
};

TEST_F(FilePasteSwallowing, takesRepeatsAndReleaseWithThePress) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    for (int time = 0; time < 20; ++time)
        EXPECT_EQ(repeat(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::pass);
}

TEST_F(FilePasteSwallowing, continuesWithOtherModifiersHeld) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    for (const std::uint64_t flags : {std::uint64_t{0}, command, command | 0x20000, std::uint64_t{0x10000}})
        EXPECT_EQ(type({KeyEventType::keyDown, 9, flags, 0, true}), KeyVerdict::swallow);
    platform.focus.frontmost = std::nullopt;
    pasteboard().changeFromOutside({});
    EXPECT_EQ(repeat(), KeyVerdict::swallow) << "wherever the focus and the content went";
    EXPECT_EQ(type({KeyEventType::keyUp, 9, 0, 0}), KeyVerdict::swallow);
}

TEST_F(FilePasteSwallowing, leavesOtherKeysAlone) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    for (const std::int64_t key : {0, 8, 10, 54, 55}) {
        EXPECT_EQ(press(key), KeyVerdict::pass) << key;
        EXPECT_EQ(release(key), KeyVerdict::pass) << key;
    }
    EXPECT_EQ(release(), KeyVerdict::swallow);
}

TEST_F(FilePasteSwallowing, queriesNothingForRepeats) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    platform.focus.onAsked = [] { ADD_FAILURE() << "It was asked for the focus"; };
    pasteboard().onCall([](const std::string& call) { ADD_FAILURE() << call; });
    EXPECT_EQ(repeat(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::swallow);
}

TEST_F(FilePasteSwallowing, endsWithTheReleaseEvenAfterSwitchingOff) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    switchOff();
    EXPECT_EQ(repeat(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_FALSE(typeShortcut());
    switchOn();
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwallowing, outlastsSwitchingOffAndOn) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    switchOff();
    wait(1s);
    switchOn();
    EXPECT_EQ(repeat(), KeyVerdict::swallow) << "a repeat, which begins nothing";
    wait(1s);
    EXPECT_TRUE(platform.panels.empty());
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_TRUE(typeShortcut());
    wait(120ms);
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteSwallowing, lastsUntilAReleaseThatComesAfterThePanelOpened) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    wait(120ms);
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(repeat(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_FALSE(typeShortcut()) << "busy";
}

TEST_F(FilePasteSwallowing, lastsUntilAReleaseThatComesAfterThePanelWasCancelled) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    wait(120ms);
    panel().actions.cancel();
    EXPECT_EQ(repeat(), KeyVerdict::swallow) << "a repeat, which begins nothing";
    wait(1s);
    EXPECT_EQ(platform.panels.size(), 1U);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwallowing, lastsUntilAReleaseThatComesAfterThePaste) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    wait(120ms);
    confirm("a");
    wait(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
    for (const KeyEvent& event : platform.tap.posted)
        EXPECT_EQ(type(event), KeyVerdict::pass);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwallowing, lastsUntilAReleaseThatComesAfterItWasAbandoned) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    platform.focus.frontmost = std::nullopt;
    wait(120ms);
    restoreFocus();
    EXPECT_EQ(repeat(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwallowing, endsWithANewPressIfTheReleaseWasMissed) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    wait(120ms);
    panel().actions.cancel();
    EXPECT_EQ(type({KeyEventType::keyDown, 9, 0, 0}), KeyVerdict::pass) << "a plain v";
    EXPECT_EQ(type({KeyEventType::keyUp, 9, 0, 0}), KeyVerdict::pass);
}

TEST_F(FilePasteSwallowing, endsWithANewShortcutThatBeginsAnotherInterception) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    switchOff();
    switchOn();
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(repeat(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::pass);
    wait(1s);
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwallowing, endsWithANewShortcutThatPassesWhileAnotherIsInProgress) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(press(), KeyVerdict::pass);
    EXPECT_EQ(release(), KeyVerdict::pass);
    wait(1s);
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwallowing, thatCameTooLateOpensNoPanel) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(timeOut(), KeyVerdict::pass);
    EXPECT_EQ(platform.tap.enabled, std::vector{true});
    EXPECT_EQ(release(), KeyVerdict::pass) << "it belongs to the press that passed";
    wait(1s);
    EXPECT_TRUE(platform.panels.empty());
    EXPECT_TRUE(nothingHappened());
}

TEST_F(FilePasteSwallowing, thatCameTooLateLetsTheRepeatsPassUntilTheRelease) {
    platform.tap.keysDown = {9, 55};
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(timeOut(), KeyVerdict::pass);
    wait(1h);
    EXPECT_EQ(repeat(), KeyVerdict::pass);
    EXPECT_EQ(press(), KeyVerdict::pass) << "not every platform tells a repeat of a key that passed";
    EXPECT_EQ(release(), KeyVerdict::pass);
    platform.tap.keysDown.clear();
    wait(80ms);
    EXPECT_TRUE(platform.panels.empty());
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwallowing, thatCameTooLateIsOverWhenTheFeatureIsSwitchedOffAndOn) {
    platform.tap.keysDown = {9, 55};
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(timeOut(), KeyVerdict::pass);
    switchOff();
    switchOn();
    platform.tap.keysDown.clear();
    EXPECT_TRUE(typeShortcut());
    wait(120ms);
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwallowing, thatCameTooLateLetsTheNextPressCount) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(timeOut(), KeyVerdict::pass);
    EXPECT_EQ(release(), KeyVerdict::pass);
    EXPECT_TRUE(typeShortcut());
    wait(120ms);
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwallowing, wasInTimeIfAnotherKeyTimesOut) {
    EXPECT_TRUE(typeShortcut());
    EXPECT_EQ(timeOut(), KeyVerdict::pass);
    wait(120ms);
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(timeOut(), KeyVerdict::pass);
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteSwallowing, wasInTimeIfTheUserDisablesTheTap) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(type({KeyEventType::tapDisabledByUserInput}), KeyVerdict::pass);
    wait(120ms);
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteSwallowing, ofARepeatDoesNotDelayThePanel) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    wait(100ms);
    EXPECT_EQ(repeat(), KeyVerdict::swallow);
    EXPECT_EQ(release(), KeyVerdict::swallow);
    wait(20ms);
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwallowing, leavesASecondShortcutAloneUntilThePanelOpens) {
    EXPECT_TRUE(typeShortcut());
    EXPECT_FALSE(typeShortcut());
    wait(119ms);
    EXPECT_FALSE(typeShortcut());
    wait(1ms);
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwallowing, leavesASecondShortcutAloneWhileTheKeysAreHeld) {
    platform.tap.keysDown = {55};
    EXPECT_TRUE(typeShortcut());
    wait(1s);
    EXPECT_FALSE(typeShortcut());
    platform.tap.keysDown.clear();
    wait(80ms);
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwallowing, leavesASecondShortcutAloneWhileThePanelIsOpen) {
    openPanel();
    EXPECT_FALSE(typeShortcut());
    wait(10s);
    EXPECT_FALSE(typeShortcut());
    panel().entered = "a/b";
    panel().actions.confirm();
    EXPECT_FALSE(typeShortcut());
    panel().actions.cancel();
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwallowing, leavesASecondShortcutAloneUntilThePaste) {
    openPanel();
    confirm("a");
    EXPECT_FALSE(typeShortcut());
    wait(149ms);
    EXPECT_FALSE(typeShortcut());
    wait(1ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
    EXPECT_TRUE(typeShortcut());
    wait(120ms);
    EXPECT_EQ(platform.panels.size(), 2U);
}

TEST_F(FilePasteSwallowing, queriesNothingForASecondShortcut) {
    EXPECT_TRUE(typeShortcut());
    platform.focus.onAsked = [] { ADD_FAILURE() << "It was asked for the focus"; };
    pasteboard().onCall([](const std::string& call) { ADD_FAILURE() << call; });
    EXPECT_FALSE(typeShortcut());
}

} // namespace
} // namespace tavel
