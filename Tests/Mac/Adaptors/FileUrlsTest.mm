#include "Mac/FileUrls.h"

#include "Mac/Strings.h"
#include "Tests/Support/TestDirectory.h"

#include <gtest/gtest.h>

namespace tavel {
namespace {

std::optional<std::string> pathOf(const std::string& url) {
    NSString* const string = stringFromUtf8(url);
    NSURL* const known = string == nil ? nil : [NSURL URLWithString:string];
    return known == nil ? std::nullopt : pathOfFileUrl(known);
}

/// Names are compared composed: the system decomposes accents in file URLs, and its file systems take both
/// forms for the same name.
std::string composed(const std::string& text) {
    return utf8FromString([stringFromUtf8(text) precomposedStringWithCanonicalMapping]).value_or("");
}

TEST(FileUrls, charactersWithAMeaningAreEscaped) {
    EXPECT_EQ(fileUrlOfPath("/nowhere/plain.txt"), "file:///nowhere/plain.txt");
    EXPECT_EQ(fileUrlOfPath("/nowhere/two words#1?100%"), "file:///nowhere/two%20words%231%3F100%25");
}

TEST(FileUrls, everyPathComesBack) {
    for (const std::string& name :
         {"plain", "two words", "#1", "100%", "%41", "a?b", "a;b", "a&b=c", "[x]{y}|z", "\"quoted\"",
          "back\\slash", "^`<>", "caf\xC3\xA9", "\xF0\x9F\x8D\x8C", "~", "a:b"}) {
        const std::string path = "/nowhere/" + name;
        const auto url = fileUrlOfPath(path);
        ASSERT_TRUE(url) << name;
        EXPECT_EQ(composed(pathOf(*url).value_or("")), path) << *url;
    }
}

TEST(FileUrls, bothFormsOfAnAccentNameTheSameFile) {
    for (const std::string& path : {"/nowhere/\u00E9t\u00E9", "/nowhere/e\u0301te\u0301"}) {
        const auto url = fileUrlOfPath(path);
        ASSERT_TRUE(url) << path;
        EXPECT_EQ(composed(pathOf(*url).value_or("")), "/nowhere/\u00E9t\u00E9") << *url;
    }
    EXPECT_EQ(pathOf("file:///nowhere/%C3%A9"), "/nowhere/\u00E9") << "a URL of others stays as it is";
    EXPECT_EQ(pathOf("file:///nowhere/e%CC%81"), "/nowhere/e\u0301");
}

TEST(FileUrls, theUrlOfADirectoryEndsInASlashAndItsPathDoesNot) {
    const TestDirectory directory;
    const auto url = fileUrlOfPath(directory.path());
    EXPECT_EQ(url, "file://" + directory.path().string() + "/");
    EXPECT_EQ(pathOf(*url), directory.path().string());
    EXPECT_EQ(fileUrlOfPath(directory.createFile("file")), "file://" + (directory.path() / "file").string());
    EXPECT_EQ(pathOf("file:///"), "/");
}

TEST(FileUrls, aFileThatVanishedStillHasAPath) {
    std::string path;
    std::optional<std::string> url;
    {
        const TestDirectory directory;
        path = directory.createFile("short lived");
        url = fileUrlOfPath(path);
    }
    EXPECT_EQ(pathOf(url.value()), path);
}

TEST(FileUrls, aPathThatIsNoUtf8HasNoUrl) {
    EXPECT_EQ(fileUrlOfPath("/nowhere/caf\xE9"), std::nullopt);
}

TEST(FileUrls, thisMachineMayBeNamed) {
    EXPECT_EQ(pathOf("file://localhost/nowhere/file"), "/nowhere/file");
}

TEST(FileUrls, otherUrlsHaveNoPath) {
    for (const std::string& url :
         {"https://example.net/file", "file://elsewhere.example.net/file", "/no/url", "file:///not-utf8-%FF",
          "file:///cut-at-%00-here", "mailto:somebody@example.net"})
        EXPECT_EQ(pathOf(url), std::nullopt) << url;
    EXPECT_EQ(pathOfFileUrl(nil), std::nullopt);
}

} // namespace
} // namespace tavel
