#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

// The focus and the content with which the feature takes the shortcut.

class FilePasteTarget : public FilePasteFixture {
protected:
    FilePasteTarget() { switchOn(); }

    bool isTaken() {
        const bool taken = typeShortcut();
        startOver();
        return taken;
    }

    bool isTakenFor(PasteboardItem item) {
        copy(std::move(item));
        return isTaken();
    }
};

TEST_F(FilePasteTarget, isTheFileManagerInFront) {
    EXPECT_TRUE(isTaken());
    for (const std::string_view other :
         {"", "com.apple.finder.helper", "com.apple.finde", "com.apple", "com.apple.Finder",
          "COM.APPLE.FINDER", " com.apple.finder", "com.apple.finder ", "com.apple.TextEdit"}) {
        platform.focus.frontmost = RunningApplication{fileManager, std::string(other)};
        EXPECT_FALSE(isTaken()) << other;
    }
    EXPECT_EQ(platform.focus.askedForRole.size(), 1U) << "other programs are not asked for their focus";
    platform.focus.frontmost = std::nullopt;
    EXPECT_FALSE(isTaken());
}

TEST_F(FilePasteTarget, isSeenByATrustedProcessOnly) {
    platform.focus.trusted = false;
    EXPECT_FALSE(isTaken());
    EXPECT_TRUE(platform.focus.askedForRole.empty());
}

TEST_F(FilePasteTarget, isAViewOfFiles) {
    for (const std::string_view role : {"AXList", "AXOutline", "AXTable", "AXRow", "AXCell", "AXScrollArea",
                                        "AXLayoutArea", "AXImage", "AXGroup"}) {
        platform.focus.role = role;
        EXPECT_TRUE(isTaken()) << role;
    }
}

TEST_F(FilePasteTarget, isNoOtherElement) {
    for (const std::string_view role : {"AXTextField", "AXTextArea", "AXButton", "axlist", "AXLIST", "", "AX",
                                        "List", "AXListItem", "AXLis", " AXList", "AXWindow", "AXBrowser"}) {
        platform.focus.role = role;
        EXPECT_FALSE(isTaken()) << role;
    }
    platform.focus.role = std::nullopt;
    EXPECT_FALSE(isTaken());
}

TEST_F(FilePasteTarget, isCheckedBeforeThePasteboard) {
    platform.focus.role = "AXTextField";
    pasteboard().forgetCalls();
    EXPECT_FALSE(isTaken());
    EXPECT_TRUE(pasteboard().calls().empty());
}

TEST_F(FilePasteTarget, getsPicturesDocumentsAndText) {
    for (const std::string_view type :
         {"com.adobe.pdf", "public.png", "public.tiff", "public.jpeg", "com.compuserve.gif",
          "public.svg-image", "org.webmproject.webp", "public.utf8-plain-text"})
        EXPECT_TRUE(isTakenFor({representation(type, "")})) << type;
}

TEST_F(FilePasteTarget, getsNothingElse) {
    for (const std::string_view type :
         {"public.html", "public.rtf", "public.plain-text", "public.utf16-plain-text", "public.image",
          "com.microsoft.bmp", "Public.png", "public.png2", "", "com.brennic.generated-file"})
        EXPECT_FALSE(isTakenFor({representation(type, "1")})) << type;
    EXPECT_TRUE(isTakenFor({representation("public.html", "<b>"), representation("public.png", "")}));
}

TEST_F(FilePasteTarget, getsNothingFromAnEmptyPasteboard) {
    pasteboard().changeFromOutside({});
    EXPECT_FALSE(isTaken());
}

TEST_F(FilePasteTarget, pastesACopiedFileWithoutTheAgent) {
    const Representation file = representation("public.file-url", "file:///a/b.txt");
    const Representation text = representation("public.utf8-plain-text", "b.txt");
    EXPECT_FALSE(isTakenFor({file}));
    EXPECT_FALSE(isTakenFor({file, text}));
    for (const std::string_view mark : {"", "0", "11", "1 ", " 1", "1\n", "true"})
        EXPECT_FALSE(isTakenFor({file, text, representation("com.brennic.generated-file", mark)})) << mark;
    for (const std::string_view mark : {"com.brennic.generated", "com.brennic.generated-files"})
        EXPECT_FALSE(isTakenFor({file, text, representation(mark, "1")})) << mark;
}

TEST_F(FilePasteTarget, getsAnotherFileFromTheContentBesideAGeneratedOne) {
    const Representation file = representation("public.file-url", "file:///a/b.txt");
    const Representation mark = representation("com.brennic.generated-file", "1");
    EXPECT_TRUE(isTakenFor({representation("public.utf8-plain-text", "text"), file, mark}));
    EXPECT_FALSE(isTakenFor({file, mark})) << "with nothing beside it";
    EXPECT_FALSE(isTakenFor({file, mark, representation("public.html", "<b>")}));
}

TEST_F(FilePasteTarget, isLeftAloneWhenNothingMayBeRead) {
    pasteboard().setReadAccess(ReadAccess::denied);
    EXPECT_FALSE(isTaken());
    pasteboard().setReadAccess(ReadAccess::asks);
    EXPECT_TRUE(isTaken());
}

/// The user's answer could take long, and the key waits.
TEST_F(FilePasteTarget, isDecidedWithoutAQuestionToTheUser) {
    const Representation mark = representation("com.brennic.generated-file", "1");
    pasteboard().setReadAccess(ReadAccess::asks);
    pasteboard().forgetCalls();
    EXPECT_FALSE(isTakenFor({representation("public.utf8-plain-text", "text"),
                             representation("public.file-url", "file:///a/b.txt"), mark}));
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>{"types"}) << "it may be another agent's";

    copy("public.utf8-plain-text", "text");
    pasteAs("a");
    pasteboard().forgetCalls();
    EXPECT_TRUE(isTaken());
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>{"types"}) << "the agent knows its own file";
}

TEST_F(FilePasteTarget, isLeftAloneWhenTheMarkCannotBeRead) {
    pasteboard().withhold("com.brennic.generated-file");
    EXPECT_FALSE(isTakenFor({representation("public.utf8-plain-text", "text"),
                             representation("public.file-url", "file:///a/b.txt"),
                             representation("com.brennic.generated-file", "1")}));
}

TEST_F(FilePasteTarget, isLeftAloneWhenALaterItemIsACopiedFile) {
    pasteboard().changeFromOutside({{representation("public.utf8-plain-text", "text")},
                                    {representation("public.file-url", "file:///a/b.txt")}});
    EXPECT_FALSE(isTaken());
}

TEST_F(FilePasteTarget, isDecidedWithoutReadingTheContent) {
    copy("public.png", "picture");
    pasteboard().forgetCalls();
    EXPECT_TRUE(isTaken());
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>{"types"});
}

} // namespace
} // namespace tavel
