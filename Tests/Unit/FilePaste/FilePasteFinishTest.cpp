#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

// The effect of the user's answer in the panel.

using namespace std::chrono_literals;

class FilePasteAnswer : public FilePasteFixture {
protected:
    FilePasteAnswer() { switchOn(); }

    /// The interception has ended without an effect, and the next shortcut is taken.
    void expectEnded() {
        EXPECT_TRUE(panel().destroyed);
        wait(10s);
        EXPECT_TRUE(nothingHappened());
        EXPECT_TRUE(typeShortcut());
    }
};

TEST_F(FilePasteAnswer, closesThePanel) {
    for (const bool confirmed : {true, false}) {
        openPanel();
        EXPECT_TRUE(panel().shown);
        EXPECT_FALSE(panel().destroyed);
        if (confirmed)
            confirm("a");
        else
            panel().actions.cancel();
        EXPECT_FALSE(panel().shown) << confirmed;
        EXPECT_TRUE(panel().destroyed) << confirmed;
        startOver();
    }
}

TEST_F(FilePasteAnswer, isCarriedOutAfter150Milliseconds) {
    openPanel();
    confirm("a");
    wait(149ms);
    EXPECT_TRUE(nothingHappened());
    wait(1ms);
    EXPECT_EQ(files().size(), 1U);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
    EXPECT_TRUE(platform.logged.empty());
    wait(10s);
    EXPECT_EQ(platform.tap.posted.size(), 4U) << "once";
}

TEST_F(FilePasteAnswer, namesTheFile) {
    pasteAs("  Été 2025 ");
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(files().front().filename(), "Été 2025.txt");
}

TEST_F(FilePasteAnswer, bringsTheFileManagerBackToTheFront) {
    openPanel();
    platform.focus.frontmost = RunningApplication{getpid(), ""};
    confirm("a");
    EXPECT_EQ(platform.focus.activated, std::vector{fileManager});
    restoreFocus();
    wait(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
}

TEST_F(FilePasteAnswer, activatesNothingUnlessTheAgentIsInFront) {
    for (const auto& front :
         {std::optional(RunningApplication{fileManager, "com.apple.finder"}),
          std::optional(RunningApplication{getpid() + 1, ""}), std::optional<RunningApplication>()}) {
        openPanel();
        platform.focus.frontmost = front;
        confirm("a");
        EXPECT_TRUE(platform.focus.activated.empty());
        startOver();
    }
}

TEST_F(FilePasteAnswer, activatesNothingWhenCancelled) {
    openPanel();
    platform.focus.frontmost = RunningApplication{getpid(), ""};
    panel().actions.cancel();
    EXPECT_TRUE(platform.focus.activated.empty());
    restoreFocus();
    expectEnded();
}

TEST_F(FilePasteAnswer, pastesNothingWhenCancelled) {
    openPanel();
    panel().entered = "a";
    panel().actions.cancel();
    expectEnded();
}

TEST_F(FilePasteAnswer, pastesNothingWhenTheContentChanged) {
    openPanel();
    platform.focus.frontmost = RunningApplication{getpid(), ""};
    copy("public.utf8-plain-text", "other");
    confirm("a");
    EXPECT_TRUE(platform.focus.activated.empty());
    restoreFocus();
    expectEnded();
}

TEST_F(FilePasteAnswer, hasNoTimeOut) {
    openPanel();
    wait(std::chrono::hours(24));
    EXPECT_TRUE(isPanelOpen());
    confirm("a");
    wait(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
}

TEST_F(FilePasteAnswer, isAwaitedWhileTheFocusMoves) {
    openPanel();
    platform.focus.frontmost = std::nullopt;
    wait(1s);
    EXPECT_TRUE(isPanelOpen());
    restoreFocus();
    confirm("a");
    wait(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
}

TEST_F(FilePasteAnswer, isAskedForAgainWhenTheNameIsInvalid) {
    openPanel();
    confirm("CON");
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(panel().hint, "Nom invalide ou réservé. L’extension est conservée.");
    wait(10s);
    EXPECT_TRUE(nothingHappened());
    confirm("console");
    wait(150ms);
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(files().front().filename(), "console.txt");
}

TEST_F(FilePasteAnswer, pastesTheContentFromWhenThePanelOpened) {
    // A platform may hand out other data under the same change count.
    openPanel();
    const std::int64_t count = pasteboard().changeCount();
    copy("public.utf8-plain-text", "other");
    pasteboard().setChangeCount(count);
    confirm("a");
    wait(150ms);
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(std::filesystem::file_size(files().front()), std::string_view("Bonjour").size());
}

/// The worker can destroy the object at any time.
class FilePasteGone : public FilePasteAnswer {
protected:
    void expectNothing() {
        const std::size_t panels = platform.panels.size();
        wait(10s);
        EXPECT_EQ(platform.panels.size(), panels);
        EXPECT_TRUE(nothingHappened());
        EXPECT_EQ(press(), KeyVerdict::pass);
        EXPECT_EQ(release(), KeyVerdict::pass);
        EXPECT_EQ(type({KeyEventType::tapDisabledByTimeout, 0, 0, 0}), KeyVerdict::pass);
        EXPECT_TRUE(platform.tap.enabled.empty());
    }
};

TEST_F(FilePasteGone, letsEveryKeyThrough) {
    paste.reset();
    expectNothing();
}

TEST_F(FilePasteGone, letsTheRepeatsOfASwallowedKeyThrough) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    paste.reset();
    expectNothing();
}

TEST_F(FilePasteGone, opensNoPanel) {
    EXPECT_TRUE(typeShortcut());
    paste.reset();
    expectNothing();
}

TEST_F(FilePasteGone, opensNoPanelWhenTheKeysAreReleased) {
    platform.tap.keysDown = {55};
    EXPECT_TRUE(typeShortcut());
    wait(1s);
    paste.reset();
    platform.tap.keysDown.clear();
    expectNothing();
}

TEST_F(FilePasteGone, closesItsPanel) {
    openPanel();
    panel().entered = "a";
    const NamePanelActions actions = panel().actions;
    paste.reset();
    EXPECT_TRUE(panel().destroyed);
    actions.confirm();
    actions.cancel();
    expectNothing();
}

TEST_F(FilePasteGone, pastesNothing) {
    openPanel();
    confirm("a");
    const std::weak_ptr<FilePaste> gone = paste;
    paste.reset();
    EXPECT_TRUE(gone.expired());
    expectNothing();
}

TEST_F(FilePasteGone, isNotKeptAliveByThePanelsActions) {
    const std::weak_ptr<FilePaste> gone = paste;
    openPanel();
    const NamePanelActions actions = panel().actions;
    paste.reset();
    EXPECT_TRUE(gone.expired());
}

} // namespace
} // namespace tavel
