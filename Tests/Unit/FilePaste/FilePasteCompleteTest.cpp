#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

// The last step: the feature publishes the file on the pasteboard and types the shortcut.

using namespace std::chrono_literals;

class FilePasteCompletion : public FilePasteFixture {
protected:
    FilePasteCompletion() { switchOn(); }

    /// Runs the interception up to the last step.
    void nameIt() {
        openPanel();
        confirm("a");
    }

    /// Runs `action` at the query number `times` for the focus, counted from now.
    void whenFocusIsAsked(int times, std::function<void()> action) {
        platform.focus.onAsked = [times, action = std::move(action)]() mutable {
            if (--times == 0)
                action();
        };
    }

    /// Moves the change count at its read number `reads`, counted from now.
    void moveCountAfterReads(int reads) {
        const std::int64_t moved = pasteboard().changeCount() + 1;
        pasteboard().onCountRead([this, reads, moved]() mutable {
            if (--reads == 0)
                pasteboard().setChangeCount(moved);
        });
    }

    void expectNothing(std::string_view why) {
        EXPECT_TRUE(nothingHappened()) << why;
        EXPECT_FALSE(pasteboard().content("public.file-url")) << why;
        restoreFocus();
        EXPECT_TRUE(typeShortcut()) << "busy after " << why;
        startOver();
    }
};

TEST_F(FilePasteCompletion, typesTheShortcutInFourEvents) {
    nameIt();
    wait(150ms);
    const std::vector<KeyEvent>& posted = platform.tap.posted;
    ASSERT_EQ(posted.size(), 4U);
    const std::vector<KeyEvent> expected{
        {KeyEventType::keyDown, 55, 0x100000, 0x54415650},
        {KeyEventType::keyDown, 9, 0x100000, 0x54415650},
        {KeyEventType::keyUp, 9, 0x100000, 0x54415650},
        {KeyEventType::keyUp, 55, 0, 0x54415650},
    };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(posted[i].type, expected[i].type) << i;
        EXPECT_EQ(posted[i].keyCode, expected[i].keyCode) << i;
        EXPECT_EQ(posted[i].flags, expected[i].flags) << i;
        EXPECT_EQ(posted[i].userData, expected[i].userData) << i;
    }
}

TEST_F(FilePasteCompletion, letsItsOwnKeysThrough) {
    pasteAs("a");
    for (const KeyEvent& event : platform.tap.posted)
        EXPECT_EQ(type(event), KeyVerdict::pass);
    wait(10s);
    EXPECT_EQ(platform.panels.size(), 1U);
}

TEST_F(FilePasteCompletion, typesOnlyAfterTheFileIsOnThePasteboard) {
    nameIt();
    whenFocusIsAsked(2, [this] {
        EXPECT_EQ(files().size(), 1U);
        EXPECT_EQ(pasteboard().content("com.brennic.generated-file"), "1");
        EXPECT_EQ(changes.size(), 1U);
        EXPECT_TRUE(platform.tap.posted.empty());
    });
    wait(150ms);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
}

TEST_F(FilePasteCompletion, isAbandonedQuietlyWhenTheFocusMovedBefore) {
    for (const Change& change : focusMoves()) {
        nameIt();
        change.make();
        wait(150ms);
        expectNothing(change.name);
    }
}

TEST_F(FilePasteCompletion, isAbandonedQuietlyWhenTheContentChangedBefore) {
    nameIt();
    copy("public.utf8-plain-text", "other");
    wait(150ms);
    expectNothing("another content");
}

TEST_F(FilePasteCompletion, isAbandonedQuietlyWhenItIsSwitchedOff) {
    nameIt();
    switchOff();
    wait(150ms);
    EXPECT_TRUE(nothingHappened());
    switchOn();
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteCompletion, isAbandonedQuietlyWhenTheCountMovesBetweenItsReads) {
    for (const int reads : {1, 2}) {
        nameIt();
        moveCountAfterReads(reads);
        wait(150ms);
        pasteboard().onCountRead(nullptr);
        expectNothing(reads == 1 ? "a change before writing" : "a change before publishing");
    }
}

TEST_F(FilePasteCompletion, leavesTheFileToTheUserWhenTheFocusMovesMeanwhile) {
    for (const Change& change : focusMoves()) {
        copy("public.utf8-plain-text", "Bonjour");
        changes.clear();
        nameIt();
        whenFocusIsAsked(2, change.make);
        wait(150ms);
        platform.focus.onAsked = nullptr;
        EXPECT_TRUE(platform.tap.posted.empty()) << change.name;
        EXPECT_TRUE(platform.logged.empty()) << change.name;
        EXPECT_EQ(pasteboard().content("com.brennic.generated-file"), "1") << change.name;
        EXPECT_TRUE(pasteboard().content("public.file-url")) << change.name;
        EXPECT_EQ(changes, std::vector{pasteboard().changeCount()}) << change.name;
        EXPECT_FALSE(files().empty()) << change.name;
        restoreFocus();
        EXPECT_TRUE(typeShortcut()) << "busy after " << change.name;
        startOver();
    }
}

TEST_F(FilePasteCompletion, isReadyForTheNextShortcut) {
    pasteAs("a");
    pasteAs("b");
    EXPECT_EQ(platform.tap.posted.size(), 8U);
    EXPECT_EQ(files().size(), 2U);
    EXPECT_EQ(changes.size(), 2U);
}

TEST_F(FilePasteCompletion, logsThatThePasteboardRefused) {
    pasteboard().refuse(ScriptedPasteboard::Operation::addTypes);
    nameIt();
    wait(150ms);
    EXPECT_TRUE(loggedFailure("Tavel:2"));
    EXPECT_TRUE(platform.tap.posted.empty());
    EXPECT_TRUE(changes.empty());
    EXPECT_EQ(directoryCount(), 0U);
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteCompletion, logsThatTheFileCannotBeWritten) {
    std::ofstream(root) << "a file in the directory's place";
    nameIt();
    wait(150ms);
    EXPECT_TRUE(loggedFailure("NSCocoaErrorDomain:512"));
    EXPECT_TRUE(platform.tap.posted.empty());
    EXPECT_TRUE(changes.empty());
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteCompletion, logsThatTheNameIsInvalid) {
    paste->complete(fileManager, pasteboard().changeCount(), Bytes::copyOf("a"), "CON.txt");
    EXPECT_TRUE(loggedFailure("Tavel:5"));
    EXPECT_TRUE(platform.tap.posted.empty());
}

TEST_F(FilePasteCompletion, pastesOnlyIntoTheFileManagerOfTheShortcut) {
    paste->complete(fileManager + 1, pasteboard().changeCount(), Bytes::copyOf("a"), "a.txt");
    EXPECT_TRUE(nothingHappened());
    paste->complete(fileManager, pasteboard().changeCount(), Bytes::copyOf("a"), "a.txt");
    EXPECT_EQ(platform.tap.posted.size(), 4U);
}

TEST_F(FilePasteCompletion, endsTheInterceptionEvenWithoutPasting) {
    EXPECT_TRUE(typeShortcut());
    EXPECT_FALSE(typeShortcut());
    paste->complete(fileManager + 1, pasteboard().changeCount(), Bytes::copyOf("a"), "a.txt");
    EXPECT_TRUE(typeShortcut());
}

} // namespace
} // namespace tavel
