#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

// The interception from the shortcut to the open panel.

using namespace std::chrono_literals;

class FilePasteBeginning : public FilePasteFixture {
protected:
    FilePasteBeginning() { switchOn(); }

    std::vector<Change> reasonsToAbandon() {
        auto reasons = focusMoves();
        reasons.push_back({"another content", [this] { copy("public.utf8-plain-text", "other"); }});
        return reasons;
    }

    /// The interception has ended without an effect, and the next shortcut is taken.
    void expectAbandoned(std::string_view why) {
        wait(10s);
        EXPECT_TRUE(platform.panels.empty()) << why;
        EXPECT_TRUE(nothingHappened()) << why;
        restoreFocus();
        EXPECT_TRUE(typeShortcut()) << why;
        startOver();
    }
};

TEST_F(FilePasteBeginning, opensThePanelAfterTheKeyHandlerReturned) {
    EXPECT_TRUE(typeShortcut());
    pasteboard().forgetCalls();
    wait(119ms);
    EXPECT_TRUE(platform.panels.empty());
    EXPECT_TRUE(pasteboard().calls().empty());
    wait(1ms);
    EXPECT_TRUE(isPanelOpen());
    EXPECT_TRUE(nothingHappened());
}

TEST_F(FilePasteBeginning, waitsForEveryKeyOfTheShortcut) {
    for (const std::set<std::int64_t>& held :
         {std::set<std::int64_t>{9}, {54}, {55}, {9, 55}, {54, 55}, {9, 54, 55}}) {
        const std::size_t panels = platform.panels.size();
        platform.tap.keysDown = held;
        EXPECT_TRUE(typeShortcut());
        wait(10s);
        EXPECT_EQ(platform.panels.size(), panels);
        platform.tap.keysDown.clear();
        wait(80ms);
        EXPECT_EQ(platform.panels.size(), panels + 1);
        startOver();
    }
}

TEST_F(FilePasteBeginning, checksEvery80MillisecondsWhetherTheKeysAreUp) {
    platform.tap.keysDown = {9};
    EXPECT_TRUE(typeShortcut());
    wait(121ms); // checked at 120 ms; the next check is at 200 ms
    platform.tap.keysDown.clear();
    wait(78ms);
    EXPECT_TRUE(platform.panels.empty());
    wait(1ms);
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteBeginning, waitsForTheKeysWithoutATimeOut) {
    platform.tap.keysDown = {9, 55};
    EXPECT_EQ(press(), KeyVerdict::swallow);
    wait(std::chrono::hours(1));
    EXPECT_TRUE(platform.panels.empty());
    EXPECT_EQ(repeat(), KeyVerdict::swallow);
    platform.tap.keysDown = {55};
    EXPECT_EQ(release(), KeyVerdict::swallow);
    wait(1s);
    EXPECT_TRUE(platform.panels.empty());
    platform.tap.keysDown.clear();
    wait(80ms);
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteBeginning, doesNotWaitForOtherKeys) {
    platform.tap.keysDown = {0, 8, 10, 36, 53, 56, 59};
    openPanel();
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteBeginning, isAbandonedQuietlyWhenSomethingChanged) {
    for (const Change& change : reasonsToAbandon()) {
        EXPECT_TRUE(typeShortcut());
        change.make();
        expectAbandoned(change.name);
    }
}

TEST_F(FilePasteBeginning, isAbandonedQuietlyWhenSomethingChangesWhileTheKeysAreHeld) {
    for (const Change& change : reasonsToAbandon()) {
        platform.tap.keysDown = {55};
        EXPECT_TRUE(typeShortcut());
        wait(1s);
        change.make();
        wait(80ms);
        platform.tap.keysDown.clear();
        expectAbandoned(change.name);
    }
}

TEST_F(FilePasteBeginning, endsAtTheFirstCheckThatFindsAChange) {
    platform.tap.keysDown = {55};
    EXPECT_TRUE(typeShortcut());
    wait(121ms);
    platform.focus.role = "AXTextField";
    wait(79ms);
    restoreFocus();
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteBeginning, doesNotReadTheContentWhileTheKeysAreHeld) {
    platform.tap.keysDown = {55};
    EXPECT_TRUE(typeShortcut());
    pasteboard().forgetCalls();
    wait(10s);
    EXPECT_TRUE(pasteboard().calls().empty());
}

TEST_F(FilePasteBeginning, isGivenUpWhenNothingCanBecomeAFile) {
    copy("public.png", "no picture");
    EXPECT_TRUE(typeShortcut());
    wait(120ms);
    EXPECT_TRUE(platform.panels.empty());
    EXPECT_TRUE(loggedFailure("Tavel:4"));
    EXPECT_TRUE(typeShortcut()) << "the next one is taken";
}

TEST_F(FilePasteBeginning, isGivenUpWhenThePictureCannotBeEncoded) {
    copy("public.png", scriptedPicture("png", 1, 1));
    platform.codec.unknownTypes = {"public.jpeg"};
    EXPECT_TRUE(typeShortcut());
    wait(120ms);
    EXPECT_TRUE(platform.panels.empty());
    EXPECT_TRUE(loggedFailure("Tavel:3"));
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteBeginning, isGivenUpWhenNoWindowCanBeShown) {
    EXPECT_TRUE(typeShortcut());
    platform.showsWindows = false;
    wait(120ms);
    EXPECT_TRUE(loggedFailure("Tavel:6"));
    platform.showsWindows = true;
    openPanel();
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(platform.logged.size(), 1U);
}

TEST_F(FilePasteBeginning, asksForTheNameOfATextInFrench) {
    copy("public.utf8-plain-text", "Liste de courses\nPain");
    openPanel();
    EXPECT_EQ(panel().texts.title, "Nommer avant de coller");
    EXPECT_EQ(panel().texts.extensionLabel, "Extension conservée : .txt");
    EXPECT_EQ(panel().texts.stem, "Liste de courses");
    EXPECT_EQ(panel().texts.cancelTitle, "Annuler");
    EXPECT_EQ(panel().texts.confirmTitle, "Coller");
    EXPECT_EQ(panel().hint, "");
}

TEST_F(FilePasteBeginning, proposesANameByTheKindOfContent) {
    struct Case {
        std::string_view type;
        std::string content;
        std::string_view label;
        std::string_view stem;
    };
    for (const Case& one : {
             Case{"com.adobe.pdf", "%PDF-1", "Extension conservée : .pdf", "Document-2025-03-07-142501"},
             Case{"com.compuserve.gif", "", "Extension conservée : .gif", "Image-2025-03-07-142501"},
             Case{"public.png", scriptedPicture("png", 1, 1), "Extension conservée : .jpg",
                  "Image-2025-03-07-142501"},
             Case{"public.utf8-plain-text", "", "Extension conservée : .txt", "Texte-2025-03-07-142501"},
         }) {
        copy(one.type, one.content);
        openPanel();
        EXPECT_EQ(panel().texts.extensionLabel, one.label);
        EXPECT_EQ(panel().texts.stem, one.stem);
        startOver();
    }
}

TEST_F(FilePasteBeginning, showsThePanelBesideThePointer) {
    const ScreenRectangle screen{0, 0, 1280, 800};
    platform.surroundings = {{100, 500}, {{screen, screen}}, {410, 198}};
    openPanel();
    ASSERT_TRUE(panel().origin);
    EXPECT_EQ(panel().origin->x, 112);
    EXPECT_EQ(panel().origin->y, 290);
    EXPECT_TRUE(panel().shown);
}

TEST_F(FilePasteBeginning, leavesThePlacementToTheSystemWhenThePointerIsOnNoScreen) {
    platform.surroundings = {{-1, 0}, {{{0, 0, 1280, 800}, {0, 0, 1280, 800}}}, {410, 198}};
    openPanel();
    EXPECT_FALSE(panel().origin);
    EXPECT_TRUE(panel().shown);
}

} // namespace
} // namespace tavel
