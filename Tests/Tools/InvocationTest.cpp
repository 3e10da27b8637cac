#include "Pasteboard/Invocation.h"

#include "Pasteboard/TypeNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

PasteboardInvocation invocationFrom(const std::vector<std::string>& arguments) {
    return std::get<PasteboardInvocation>(parsePasteboardArguments(arguments));
}

template <typename Task>
Task taskFrom(const std::vector<std::string>& arguments) {
    return std::get<Task>(invocationFrom(arguments).task);
}

std::string mistakeIn(const std::vector<std::string>& arguments) {
    const auto parsed = parsePasteboardArguments(arguments);
    const auto* const usage = std::get_if<PasteboardUsage>(&parsed);
    if (usage == nullptr)
        return "no mistake";
    EXPECT_EQ(usage->status, 2);
    return usage->text;
}

TEST(PasteboardInvocation, CopiesTextFromStandardInputByDefault) {
    const auto copy = taskFrom<task::Copy>({"copy"});
    EXPECT_EQ(copy.file, "-");
    EXPECT_EQ(copy.type, "public.utf8-plain-text");
}

TEST(PasteboardInvocation, TakesFileAndType) {
    const auto copy = taskFrom<task::Copy>({"copy", "--type", "png", "[photo]"});
    EXPECT_EQ(copy.file, "[photo]");
    EXPECT_EQ(copy.type, "public.png");
    EXPECT_EQ(taskFrom<task::Copy>({"copy", "--type", "com.example.own"}).type, "com.example.own");
}

TEST(PasteboardInvocation, TakesTheTypeFromTheFilesName) {
    EXPECT_EQ(taskFrom<task::Copy>({"copy", "photo.JPG"}).type, "public.jpeg");
    EXPECT_EQ(taskFrom<task::Copy>({"copy", "[photo].png"}).type, "public.png");
    EXPECT_EQ(taskFrom<task::Copy>({"copy", "--type", "text", "photo.jpg"}).type, "public.utf8-plain-text");
    EXPECT_EQ(taskFrom<task::Copy>({"copy", "photo.jpg", "--type", "com.example.own"}).type,
              "com.example.own");
}

TEST(PasteboardInvocation, PastesByForceOnRequest) {
    EXPECT_FALSE(taskFrom<task::Paste>({"paste"}).forced);
    EXPECT_TRUE(taskFrom<task::Paste>({"paste", "--force", "--type", "png"}).forced);
    EXPECT_THAT(mistakeIn({"copy", "--force"}), HasSubstr("--force"));
}

TEST(PasteboardInvocation, TakesPathsOfAnyLook) {
    EXPECT_THAT(
        taskFrom<task::CopyFiles>({"copy-files", "copy", "[a,b]", "clear", "[", "x=y", "a b", ""}).paths,
        ElementsAre("copy", "[a,b]", "clear", "[", "x=y", "a b", ""));
    EXPECT_THAT(taskFrom<task::CopyFiles>({"copy-files", "--", "-a", "--help"}).paths,
                ElementsAre("-a", "--help"));
}

TEST(PasteboardInvocation, TakesSeveralTypes) {
    const auto set = taskFrom<task::Set>({"set", "text=a=b", "com.example.own=[c]", "html=-"});
    ASSERT_EQ(set.sources.size(), 3U);
    EXPECT_EQ(set.sources[0].type, "public.utf8-plain-text");
    EXPECT_EQ(set.sources[0].file, "a=b");
    EXPECT_EQ(set.sources[1].type, "com.example.own");
    EXPECT_EQ(set.sources[1].file, "[c]");
    EXPECT_EQ(set.sources[2].type, "public.html");
    EXPECT_EQ(set.sources[2].file, "-");
}

TEST(PasteboardInvocation, TakesThePasteboardBeforeAndBehindTheCommand) {
    EXPECT_EQ(invocationFrom({"count"}).pasteboard, std::nullopt);
    EXPECT_EQ(invocationFrom({"--pasteboard", "x", "count"}).pasteboard, "x");
    EXPECT_EQ(invocationFrom({"count", "--pasteboard", "[x]"}).pasteboard, "[x]");
    EXPECT_EQ(invocationFrom({"--pasteboard=-x", "count"}).pasteboard, "-x");
}

TEST(PasteboardInvocation, KnowsEveryCommand) {
    EXPECT_EQ(taskFrom<task::Paste>({"paste", "--type", "file-url"}).type, "public.file-url");
    EXPECT_TRUE(std::holds_alternative<task::PasteFiles>(invocationFrom({"paste-files"}).task));
    EXPECT_TRUE(std::holds_alternative<task::Types>(invocationFrom({"types"}).task));
    EXPECT_TRUE(std::holds_alternative<task::Count>(invocationFrom({"count"}).task));
    EXPECT_TRUE(std::holds_alternative<task::Clear>(invocationFrom({"clear"}).task));
}

TEST(PasteboardInvocation, ExplainsMistakes) {
    EXPECT_THAT(mistakeIn({}), HasSubstr("a command is required"));
    EXPECT_THAT(mistakeIn({"bogus"}), HasSubstr("bogus"));
    EXPECT_THAT(mistakeIn({"copy-files"}), HasSubstr("PATH is required"));
    EXPECT_THAT(mistakeIn({"set"}), HasSubstr("TYPE=FILE is required"));
    EXPECT_THAT(mistakeIn({"set", "text"}), HasSubstr("'text' is not of the form TYPE=FILE"));
    EXPECT_THAT(mistakeIn({"set", "=a"}), HasSubstr("not of the form"));
    EXPECT_THAT(mistakeIn({"set", "text="}), HasSubstr("not of the form"));
    EXPECT_THAT(mistakeIn({"set", "text=a", "public.utf8-plain-text=b"}), HasSubstr("given twice"));
    EXPECT_THAT(mistakeIn({"set", "text=-", "html=-"}), HasSubstr("standard input"));
    EXPECT_THAT(mistakeIn({"copy", "a.png", "--type", ""}), HasSubstr("--type needs a name"));
    EXPECT_THAT(mistakeIn({"paste", "--type", ""}), HasSubstr("--type needs a name"));
    EXPECT_THAT(mistakeIn({"copy", "a", "b"}), HasSubstr("b"));
    EXPECT_THAT(mistakeIn({"types", "[x]"}), HasSubstr("not expected: [x]"));
}

TEST(PasteboardInvocation, HelpsOnRequest) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--help"}, {"-h"}}) {
        const auto parsed = parsePasteboardArguments(arguments);
        EXPECT_EQ(std::get<PasteboardUsage>(parsed).status, 0);
        EXPECT_THAT(std::get<PasteboardUsage>(parsed).text, HasSubstr("webp      org.webmproject.webp"));
    }
}

TEST(TypeNames, StandForIdentifiers) {
    EXPECT_EQ(typeIdentifier("text"), "public.utf8-plain-text");
    EXPECT_EQ(typeIdentifier("html"), "public.html");
    EXPECT_EQ(typeIdentifier("rtf"), "public.rtf");
    EXPECT_EQ(typeIdentifier("png"), "public.png");
    EXPECT_EQ(typeIdentifier("tiff"), "public.tiff");
    EXPECT_EQ(typeIdentifier("jpeg"), "public.jpeg");
    EXPECT_EQ(typeIdentifier("gif"), "com.compuserve.gif");
    EXPECT_EQ(typeIdentifier("pdf"), "com.adobe.pdf");
    EXPECT_EQ(typeIdentifier("svg"), "public.svg-image");
    EXPECT_EQ(typeIdentifier("webp"), "org.webmproject.webp");
    EXPECT_EQ(typeIdentifier("file-url"), "public.file-url");
    EXPECT_EQ(typeIdentifier("Text"), "Text");
    EXPECT_EQ(typeIdentifier(""), "");
}

TEST(TypeNames, AreFoundByTheEndOfAFilesName) {
    EXPECT_EQ(typeIdentifierForFile("a.png"), "public.png");
    EXPECT_EQ(typeIdentifierForFile("a.jpg"), "public.jpeg");
    EXPECT_EQ(typeIdentifierForFile("a.jpeg"), "public.jpeg");
    EXPECT_EQ(typeIdentifierForFile("a.gif"), "com.compuserve.gif");
    EXPECT_EQ(typeIdentifierForFile("a.tif"), "public.tiff");
    EXPECT_EQ(typeIdentifierForFile("a.tiff"), "public.tiff");
    EXPECT_EQ(typeIdentifierForFile("a.webp"), "org.webmproject.webp");
    EXPECT_EQ(typeIdentifierForFile("a.svg"), "public.svg-image");
    EXPECT_EQ(typeIdentifierForFile("a.pdf"), "com.adobe.pdf");
    EXPECT_EQ(typeIdentifierForFile("a.rtf"), "public.rtf");
    EXPECT_EQ(typeIdentifierForFile("a.html"), "public.html");
    EXPECT_EQ(typeIdentifierForFile("a.htm"), "public.html");
    EXPECT_EQ(typeIdentifierForFile("/x.y/A.b.WebP"), "org.webmproject.webp");
    EXPECT_EQ(typeIdentifierForFile("a.TIF"), "public.tiff");
}

TEST(TypeNames, AreTextForOtherFiles) {
    for (const char* const name :
         {"-", "", "a", "png", ".png", "a.txt", "a.png ", "a.pngx", "a.png/b", "a.file-url"})
        EXPECT_EQ(typeIdentifierForFile(name), "public.utf8-plain-text") << name;
}

} // namespace

} // namespace tavel
