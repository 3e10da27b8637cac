#include "TavelClipboardAgent/Formats/ClipboardFormats.h"
#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavel {
namespace {

// Contents that come from their owners, value by value.

using namespace std::chrono_literals;

class FilePasteGathering : public FilePasteFixture {
protected:
    using Types = std::vector<std::string>;

    FilePasteGathering() {
        pasteboard().holdValues();
        switchOn();
        copy("public.utf8-plain-text", "Bonjour");
    }

    /// Types the shortcut. The search for the file's content then waits for a value.
    void beginGathering() {
        EXPECT_TRUE(typeShortcut());
        wait(120ms);
        EXPECT_EQ(awaited().size(), 1U);
        EXPECT_TRUE(platform.panels.empty());
    }

    /// Goes on until the file's name is chosen, and what the publication takes over is awaited.
    void beginTakingOver() {
        beginGathering();
        pasteboard().deliver();
        confirm("a");
        wait(150ms);
        EXPECT_FALSE(awaited().empty());
        EXPECT_TRUE(nothingHappened());
    }

    Types awaited() { return pasteboard().awaited(); }

    /// The interception has ended without an effect, and the next shortcut is taken.
    void expectAbandoned() {
        EXPECT_EQ(awaited(), Types());
        wait(10s);
        EXPECT_FALSE(isPanelOpen());
        EXPECT_TRUE(nothingHappened());
        restoreFocus();
        EXPECT_TRUE(typeShortcut());
    }
};

TEST_F(FilePasteGathering, leavesTheKeyAloneWhileTheContentIsNotKnown) {
    pasteboard().holdNews();
    copy("public.utf8-plain-text", "other");
    pasteboard().forgetCalls();
    EXPECT_FALSE(typeShortcut());
    EXPECT_TRUE(pasteboard().calls().empty());
    pasteboard().notice();
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteGathering, knowsAGeneratedFileByItsMarkWithoutGatheringIt) {
    pasteboard().watch({FilePaste::generatedFileMark()}, {});
    copy({representation("public.file-url", "file:///a"), representation("com.brennic.generated-file", "1"),
          representation("public.utf8-plain-text", "a")});
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteGathering, triesOneRepresentationAfterTheOther) {
    copy({representation("public.utf8-plain-text", "a"),
          representation("public.png", scriptedPicture("png", 1, 1)),
          representation("public.jpeg", "no jpeg"), representation("com.adobe.pdf", "no pdf")});
    beginGathering();
    for (const std::string type : {"com.adobe.pdf", "public.jpeg", "public.png"}) {
        EXPECT_EQ(awaited(), Types{type});
        EXPECT_EQ(pasteboard().gatheredLimitOf(type), 134'217'728U) << type;
        EXPECT_TRUE(platform.panels.empty());
        pasteboard().deliver();
    }
    EXPECT_TRUE(isPanelOpen());
    EXPECT_EQ(panel().texts.extensionLabel, "Extension conservée : .jpg");
    EXPECT_EQ(awaited(), Types()) << "the text is not needed";
}

TEST_F(FilePasteGathering, triesTheTiffIfThePngIsNotDelivered) {
    copy({representation("public.png", "x"), representation("public.tiff", scriptedPicture("tiff", 1, 1))});
    pasteboard().withhold("public.png");
    beginGathering();
    pasteboard().deliver();
    EXPECT_EQ(awaited(), Types{"public.tiff"});
    pasteboard().deliver();
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteGathering, leavesTheTiffAloneIfThePngIsBroken) {
    copy({representation("public.png", "x"), representation("public.tiff", scriptedPicture("tiff", 1, 1)),
          representation("public.utf8-plain-text", "a")});
    beginGathering();
    pasteboard().deliver();
    EXPECT_EQ(awaited(), Types{"public.utf8-plain-text"});
}

TEST_F(FilePasteGathering, logsThatNothingCanBecomeAFile) {
    copy("com.adobe.pdf", "no pdf");
    beginGathering();
    pasteboard().deliver();
    EXPECT_TRUE(loggedFailure("Tavel:4"));
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteGathering, givesUpAContentThatIsReplaced) {
    bool hasGivenUp = false;
    const auto search =
        FileDataSearch::start(pasteboard(), platform.codec, [&](const FileDataSearch::Outcome& outcome) {
            hasGivenUp = std::holds_alternative<FileDataSearch::GivenUp>(outcome);
        });
    copy("public.utf8-plain-text", "other");
    pasteboard().deliver();
    EXPECT_TRUE(hasGivenUp);
}

TEST_F(FilePasteGathering, isAbandonedQuietlyWhenTheContentIsReplaced) {
    beginGathering();
    copy("public.utf8-plain-text", "other");
    pasteboard().deliver();
    expectAbandoned();
}

TEST_F(FilePasteGathering, isAbandonedQuietlyWhenTheFocusMoves) {
    beginGathering();
    platform.focus.role = "AXTextField";
    pasteboard().deliver();
    expectAbandoned();
}

TEST_F(FilePasteGathering, endsWithTheFeature) {
    beginGathering();
    switchOff();
    EXPECT_EQ(awaited(), Types());
    switchOn();
    expectAbandoned();
}

TEST_F(FilePasteGathering, waitsForTheKeysIfTheyAreHeldAgain) {
    beginGathering();
    platform.tap.keysDown = {9, 55};
    pasteboard().deliver();
    wait(10s);
    EXPECT_TRUE(platform.panels.empty());
    platform.tap.keysDown.clear();
    wait(80ms);
    EXPECT_TRUE(isPanelOpen());
}

TEST_F(FilePasteGathering, takesTheContentOverBeforeItAddsTheFile) {
    beginTakingOver();
    Types required = pasteboard().required();
    Types expected{"public.file-url"};
    for (const ClipboardFormat& format : clipboardFormats)
        expected.emplace_back(format.type);
    std::ranges::sort(required);
    std::ranges::sort(expected);
    EXPECT_EQ(required, expected);
    EXPECT_FALSE(typeShortcut()) << "the interception goes on";
    pasteboard().deliver();
    EXPECT_EQ(files().size(), 1U);
    EXPECT_EQ(changes.size(), 1U);
    EXPECT_EQ(platform.tap.posted.size(), 4U);
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteGathering, publishesNothingIfSomethingThatItNeedsDoesNotCome) {
    copy({representation("public.utf8-plain-text", "a"), representation("public.html", "<p>")});
    pasteboard().withhold("public.html");
    beginTakingOver();
    pasteboard().deliver();
    EXPECT_TRUE(loggedFailure("Tavel:2"));
    EXPECT_EQ(directoryCount(), 0U);
    EXPECT_TRUE(platform.tap.posted.empty());
    EXPECT_TRUE(typeShortcut());
}

TEST_F(FilePasteGathering, publishesNothingIfTheContentIsReplaced) {
    beginTakingOver();
    copy("public.utf8-plain-text", "other");
    pasteboard().deliver();
    expectAbandoned();
}

TEST_F(FilePasteGathering, publishesNothingIfTheFocusMoves) {
    beginTakingOver();
    platform.focus.role = "AXTextField";
    pasteboard().deliver();
    expectAbandoned();
}

TEST_F(FilePasteGathering, publishesNothingOnceItIsSwitchedOff) {
    beginTakingOver();
    switchOff();
    EXPECT_EQ(awaited(), Types());
    switchOn();
    expectAbandoned();
}

} // namespace
} // namespace tavel
