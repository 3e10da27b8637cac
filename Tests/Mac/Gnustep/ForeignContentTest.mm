#include "Mac/MacPasteboard.h"
#include "Platform/PasteboardTypes.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/TestProcess.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>

namespace tavel {
namespace {

constexpr std::string_view someType = "net.example.some";
constexpr std::size_t mebibyte = std::size_t{1024} * 1024;

class ForeignContent : public testing::Test {
protected:
    ~ForeignContent() override { [MacPasteboard::named(name_) releaseGlobally]; }

    std::vector<std::string> commandLine(const std::string& command,
                                         const std::vector<std::string>& arguments) const {
        std::vector<std::string> line{TAVEL_PASTEBOARD_PEER, command, name_};
        line.insert(line.end(), arguments.begin(), arguments.end());
        return line;
    }

    /// Lets another program run to its end; gives the first line that it prints, or nothing.
    std::string elsewhere(const std::string& command, const std::vector<std::string>& arguments) const {
        TestProcess program(commandLine(command, arguments));
        const auto line = program.nextLine();
        EXPECT_EQ(program.waitForExit(), 0);
        return line.value_or("");
    }

    static std::string textOf(const std::optional<Bytes>& bytes) {
        return bytes ? std::string(bytes->view()) : "nothing";
    }

    std::string name_ = "net.example.test.foreign";
    MacPasteboard pasteboard_{name_};
};

TEST_F(ForeignContent, whatAnotherProgramCopiedIsReadAfterItsEnd) {
    const std::int64_t before = pasteboard_.changeCount();
    elsewhere("copy", {"net.example.some", "some", "public.utf8-plain-text", "caf\xC3\xA9", "public.file-url",
                       "file:///nowhere/two%20words"});
    EXPECT_EQ(pasteboard_.changeCount(), before + 1);
    EXPECT_EQ(pasteboard_.types(),
              (std::vector<std::string>{"net.example.some", "public.utf8-plain-text", "NSStringPboardType",
                                        "public.file-url", "CorePasteboardFlavorType 0x6675726C",
                                        "NSFilenamesPboardType"}))
        << "with the system's own names for old programs";
    EXPECT_EQ(textOf(pasteboard_.data(someType, ample)), "some");
    EXPECT_EQ(textOf(pasteboard_.string(someType, ample)), "some");
    EXPECT_EQ(textOf(pasteboard_.string(pasteboardType::string, ample)), "caf\xC3\xA9");
    EXPECT_EQ(pasteboard_.files(everyFile).paths, std::vector<std::string>{"/nowhere/two words"});
}

TEST_F(ForeignContent, anotherProgramFindsWhatTheFirstItemsHave) {
    const std::vector<PasteboardItem> items{{{std::string(pasteboardType::string), Bytes::copyOf("first")}},
                                            {{std::string(pasteboardType::string), Bytes::copyOf("second")},
                                             {std::string(someType), Bytes::copyOf("some")}}};
    ASSERT_TRUE(pasteboard_.replaceWithItems(items));
    EXPECT_EQ(elsewhere("print", {"public.utf8-plain-text"}), "first");
    EXPECT_EQ(elsewhere("print", {"net.example.some"}), "some");
}

TEST_F(ForeignContent, ofFormattedTextTooTheFirstItemsAloneIsRead) {
    const std::vector<PasteboardItem> items{{{"public.rtf", Bytes::copyOf("{\\rtf1 first}")}},
                                            {{"public.rtf", Bytes::copyOf("{\\rtf1 second}")}}};
    ASSERT_TRUE(pasteboard_.replaceWithItems(items));
    NSString* const joined = [MacPasteboard::named(name_) stringForType:@"public.rtf"];
    EXPECT_TRUE([joined isEqualToString:@"{\\rtf1 first}\n{\\rtf1 second}"]) << "which the system joins";
    EXPECT_EQ(textOf(pasteboard_.string("public.rtf", ample)), "{\\rtf1 first}");
}

TEST_F(ForeignContent, aNewContentTakesThePlaceOfWhatAnotherProgramCopied) {
    elsewhere("copy", {"public.utf8-plain-text", "theirs", "net.example.some", "some"});
    const std::int64_t before = pasteboard_.changeCount();
    const PasteboardValue text{std::string(pasteboardType::string), PasteboardValue::Form::text,
                               Bytes::copyOf("ours")};
    EXPECT_EQ(pasteboard_.replaceWithValues({&text, 1}), before + 1);
    EXPECT_EQ(elsewhere("print", {"public.utf8-plain-text"}), "ours");
    EXPECT_EQ(elsewhere("print", {"net.example.some"}), "");
}

TEST_F(ForeignContent, theSystemItselfRefusesToWriteOnceAnotherProgramCopied) {
    NSPasteboard* const system = MacPasteboard::named(name_);
    [system clearContents];
    ASSERT_TRUE([system setString:@"ours" forType:@"public.utf8-plain-text"]);
    elsewhere("copy", {"public.utf8-plain-text", "theirs"});
    EXPECT_FALSE([system setString:@"late" forType:@"public.utf8-plain-text"]);
    EXPECT_FALSE([system setData:[NSData data] forType:@"net.example.some"]);
    EXPECT_FALSE([system writeObjects:[NSArray array]]);
    EXPECT_EQ(elsewhere("print", {"public.utf8-plain-text"}), "theirs");
}

TEST_F(ForeignContent, typesAreAddedToWhatAnotherProgramCopied) {
    elsewhere("copy", {"public.utf8-plain-text", "theirs", "net.example.some", "some"});
    const std::int64_t before = pasteboard_.changeCount();
    EXPECT_TRUE(
        pasteboard_.addTypes(std::vector{Representation{"net.example.marker", Bytes::copyOf("marker")}}));
    EXPECT_EQ(pasteboard_.changeCount(), before + 1);
    EXPECT_EQ(elsewhere("print", {"net.example.marker"}), "marker");
    EXPECT_EQ(elsewhere("print", {"public.utf8-plain-text"}), "theirs");
    EXPECT_EQ(elsewhere("print", {"net.example.some"}), "some");
}

TEST_F(ForeignContent, ofSeveralTypesThoseBehindTheFirstMayBeLeftOut) {
    elsewhere("copy", {"public.utf8-plain-text", "theirs"});
    EXPECT_TRUE(
        pasteboard_.addTypes(std::vector{Representation{"net.example.marker", Bytes::copyOf("marker")},
                                         Representation{"net.example.other", Bytes::copyOf("\xFF")}}));
    EXPECT_EQ(textOf(pasteboard_.data("net.example.marker", ample)), "marker");
    EXPECT_FALSE(pasteboard_.data("net.example.other", ample));
    EXPECT_FALSE(pasteboard_.addTypes(std::vector{Representation{"net.example.third", Bytes::copyOf("\xFF")},
                                                  Representation{"net.example.fourth", Bytes::copyOf("4")}}));
}

TEST_F(ForeignContent, whatAnotherProgramPromisedIsWaitedFor) {
    TestProcess program(commandLine("promise", {"public.utf8-plain-text", "made when asked for"}));
    ASSERT_EQ(program.nextLine(), "promised");
    EXPECT_TRUE(pasteboardType::isOffered(pasteboard_.types(), pasteboardType::string));
    EXPECT_EQ(textOf(pasteboard_.string(pasteboardType::string, ample)), "made when asked for");
    // The server writes to the owner of the content, and to one that is gone it may fail.
    EXPECT_TRUE(pasteboard_.replaceWithItems({}));
}

TEST_F(ForeignContent, largeDataGoToAndComeFromAnotherProgram) {
    const std::size_t size = 30 * mebibyte; // what a plain program of GNUstep's can copy is less than 32 MiB
    elsewhere("fill", {"net.example.some", std::to_string(size)});
    const auto theirs = pasteboard_.data(someType, ample);
    ASSERT_TRUE(theirs);
    std::string expected(size, '\0');
    std::iota(expected.begin(), expected.end(), '\0');
    EXPECT_TRUE(theirs->view() == expected);

    const PasteboardValue ours{std::string(someType), PasteboardValue::Form::data,
                               Bytes::adopt(std::string(4 * mebibyte, 'a'))};
    ASSERT_TRUE(pasteboard_.replaceWithValues({&ours, 1}));
    EXPECT_EQ(elsewhere("sum", {"net.example.some"}),
              std::to_string(4 * mebibyte) + " " + std::to_string(4 * mebibyte * 'a'));
}

TEST_F(ForeignContent, namesThatAreNoTextAreNamesOfTheirOwn) {
    NSString* const general = [[NSPasteboard generalPasteboard] name];
    std::set<std::string> names;
    for (const std::string& one :
         {std::string("\xFF"), std::string("\xFE"), std::string("\0", 1), std::string(),
          std::string("bytes:"), std::string("bytes:ff"), std::string("bytes:00")}) {
        NSString* const known = [MacPasteboard::named(one) name];
        EXPECT_FALSE([known isEqualToString:general]) << testing::PrintToString(one);
        EXPECT_TRUE(names.insert([known UTF8String]).second) << testing::PrintToString(one);
    }
    EXPECT_TRUE([[MacPasteboard::named("plain") name] isEqualToString:@"plain"]);
}

} // namespace
} // namespace tavel
