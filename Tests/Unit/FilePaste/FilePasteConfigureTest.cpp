#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <vector>

namespace tavel {
namespace {

// Switching the feature on and off.

using namespace std::chrono_literals;

class FilePasteSwitch : public FilePasteFixture {
protected:
    /// All timers have run, without any effect.
    void expectNothingMore() {
        const std::size_t panels = platform.panels.size();
        wait(10s);
        EXPECT_EQ(platform.panels.size(), panels);
        EXPECT_FALSE(isPanelOpen());
        EXPECT_TRUE(nothingHappened());
    }

    /// The feature pastes a file after it is switched on again.
    void expectThatItWorksAgain() {
        switchOn();
        pasteAs("a");
        EXPECT_EQ(files().size(), 1U);
        EXPECT_EQ(platform.tap.posted.size(), 4U);
    }
};

TEST_F(FilePasteSwitch, tapsNothingUntilItIsSwitchedOn) {
    EXPECT_EQ(platform.tap.creations, 0);
    EXPECT_FALSE(platform.tap.handler);
    EXPECT_TRUE(platform.focus.followed.empty());
}

TEST_F(FilePasteSwitch, touchesNothingWhenItIsSwitchedOffFirst) {
    switchOff();
    switchOff();
    EXPECT_EQ(platform.tap.creations, 0);
    EXPECT_EQ(platform.tap.enabled, std::vector<bool>());
    EXPECT_EQ(platform.focus.followed, std::vector<bool>());
}

TEST_F(FilePasteSwitch, makesOneTapAndThenEnablesAndDisablesIt) {
    switchOn();
    EXPECT_EQ(platform.tap.enabled, std::vector<bool>()) << "it is made enabled";
    for (const bool on : {true, false, false, true})
        paste->configure(on);
    EXPECT_EQ(platform.tap.creations, 1);
    EXPECT_EQ(platform.tap.enabled, (std::vector{true, false, false, true}));
    EXPECT_EQ(platform.focus.followed, (std::vector{true, true, false, false, true}));
}

TEST_F(FilePasteSwitch, namesTheMissingPermissions) {
    platform.tap.allowed = false;
    try {
        switchOn();
        FAIL() << "It has to be refused";
    } catch (const Error& error) {
        EXPECT_EQ(error.domain(), "Tavel");
        EXPECT_EQ(error.code(), 1);
        EXPECT_EQ(error.description(), "Renommage : autorise Tavel Bridge dans Accessibilité et Surveillance "
                                       "de l’entrée, puis réactive l’option.");
    }
}

TEST_F(FilePasteSwitch, isRefusedWhereNoPanelCanBeShown) {
    platform.showsWindows = false;
    EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
    EXPECT_EQ(platform.tap.creations, 0);
    platform.showsWindows = true;
    expectThatItWorksAgain();
    platform.showsWindows = false;
    EXPECT_FALSE(typeShortcut()) << "the panel has gone since";
    EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
    platform.showsWindows = true;
    EXPECT_FALSE(typeShortcut()) << "the feature is off";
    switchOn();
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwitch, staysOffWhenTheTapIsRefused) {
    platform.tap.allowed = false;
    EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
    EXPECT_EQ(platform.focus.followed, std::vector<bool>()) << "the focus is of no use then";
    EXPECT_EQ(platform.tap.enabled, std::vector<bool>());
    switchOff();
    EXPECT_EQ(platform.tap.enabled, std::vector<bool>());
    EXPECT_EQ(platform.focus.followed, std::vector<bool>());
}

TEST_F(FilePasteSwitch, canBeTriedAgainAfterARefusal) {
    platform.tap.allowed = false;
    EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
    EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
    platform.tap.allowed = true;
    switchOn();
    EXPECT_EQ(platform.tap.creations, 3);
    EXPECT_EQ(platform.focus.followed, std::vector{true});
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteSwitch, pastesNothingThatWasConfirmedBeforeARefusal) {
    platform.tap.allowed = false;
    EXPECT_EQ(errorOf([this] { switchOn(); }), "Tavel 1");
    paste->complete(fileManager, pasteboard().changeCount(), Bytes::copyOf("a"), "a.txt");
    EXPECT_TRUE(nothingHappened());
}

TEST_F(FilePasteSwitch, takesTheFirstShortcutAfterSwitchingOn) {
    switchOn();
    EXPECT_TRUE(typeShortcut());
    switchOff();
    EXPECT_FALSE(typeShortcut());
}

TEST_F(FilePasteSwitch, endsAnInterceptionThatWaits) {
    switchOn();
    EXPECT_TRUE(typeShortcut());
    wait(119ms);
    switchOff();
    expectNothingMore();
    expectThatItWorksAgain();
}

TEST_F(FilePasteSwitch, endsAnInterceptionThatWaitsForTheKeys) {
    switchOn();
    platform.tap.keysDown = {9, 55};
    EXPECT_TRUE(typeShortcut());
    wait(1s);
    switchOff();
    platform.tap.keysDown.clear();
    expectNothingMore();
    expectThatItWorksAgain();
}

TEST_F(FilePasteSwitch, closesThePanel) {
    switchOn();
    openPanel();
    const NamePanelActions actions = panel().actions;
    panel().entered = "a";
    switchOff();
    EXPECT_FALSE(panel().shown);
    EXPECT_TRUE(panel().destroyed);
    actions.confirm(); // a click that was already queued
    actions.cancel();
    expectNothingMore();
    expectThatItWorksAgain();
}

TEST_F(FilePasteSwitch, leavesThePanelAloneWhenItIsSwitchedOnOnceMore) {
    switchOn();
    openPanel();
    switchOn();
    EXPECT_TRUE(isPanelOpen());
    EXPECT_FALSE(typeShortcut()) << "busy";
    confirm("a");
    wait(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
}

TEST_F(FilePasteSwitch, endsAnInterceptionThatIsAboutToPaste) {
    switchOn();
    openPanel();
    confirm("a");
    wait(149ms);
    switchOff();
    expectNothingMore();
    expectThatItWorksAgain();
}

TEST_F(FilePasteSwitch, endsAWaitingInterceptionEvenIfSwitchedOnAgainAtOnce) {
    switchOn();
    EXPECT_TRUE(typeShortcut());
    wait(50ms);
    switchOff();
    switchOn();
    expectNothingMore();
    EXPECT_TRUE(typeShortcut());
    wait(50ms);
    switchOff();
    switchOn();
    openPanel();
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteSwitch, endsAPendingPasteEvenIfSwitchedOnAgainAtOnce) {
    switchOn();
    openPanel();
    confirm("a");
    wait(50ms);
    switchOff();
    switchOn();
    EXPECT_TRUE(typeShortcut());
    wait(105ms); // past the time of the first one's paste
    EXPECT_TRUE(nothingHappened());
    EXPECT_FALSE(typeShortcut()) << "busy with the second one";
}

TEST_F(FilePasteSwitch, keepsThePastedFile) {
    switchOn();
    pasteAs("a");
    switchOff();
    EXPECT_EQ(files().size(), 1U);
    EXPECT_EQ(pasteboard().content("com.brennic.generated-file"), "1");
}

} // namespace
} // namespace tavel
