#include "Linux/Contents/UriList.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

using Uris = std::vector<std::string>;

Uris urisInList(std::string_view list) {
    Uris uris;
    visitUrisInList(list, [&](std::string_view uri) { return uris.emplace_back(uri), true; });
    return uris;
}

Uris urisInCopiedFiles(std::string_view text) {
    Uris uris;
    visitUrisInCopiedFiles(text, [&](std::string_view uri) { return uris.emplace_back(uri), true; });
    return uris;
}

const Uris two{"file:///a", "file:///b%20c"};

TEST(UriList, endsEachLineInCarriageReturnAndLineFeed) {
    EXPECT_EQ(uriListOf(two), "file:///a\r\nfile:///b%20c\r\n");
    EXPECT_EQ(uriListOf(Uris{"file:///a"}), "file:///a\r\n");
    EXPECT_EQ(uriListOf(Uris{}), "");
}

TEST(UriList, givesBackWhatWasWritten) {
    const Uris many{"file:///a",          "file:///a",        "file:///%C3%A9/", "file:///copy",
                    "https://host/?q=#f", "file:///x%23y%0A", "file://host/a/b", "mailto:a@b"};
    EXPECT_EQ(urisInList(uriListOf(many)), many);
    EXPECT_EQ(urisInList(uriListOf(Uris{})), Uris{});
}

TEST(UriList, takesEveryLineEnding) {
    for (const std::string_view list :
         {"file:///a\r\nfile:///b%20c\r\n", "file:///a\nfile:///b%20c\n", "file:///a\rfile:///b%20c\r",
          "file:///a\n\rfile:///b%20c\n\r", "file:///a\nfile:///b%20c\r\n"})
        EXPECT_EQ(urisInList(list), two) << list;
}

TEST(UriList, needsNoEndingOfTheLastLine) {
    EXPECT_EQ(urisInList("file:///a\r\nfile:///b%20c"), two);
    EXPECT_EQ(urisInList("file:///a\nfile:///b%20c"), two);
    EXPECT_EQ(urisInList("file:///a\rfile:///b%20c"), two);
    EXPECT_EQ(urisInList("file:///a\r\nfile:///b%20c\r"), two);
    EXPECT_EQ(urisInList("file:///a"), Uris{"file:///a"});
}

TEST(UriList, leavesCommentsOut) {
    EXPECT_EQ(urisInList("#first\r\nfile:///a\r\n# file:///c\r\n#\r\nfile:///b%20c\r\n#last"), two);
    EXPECT_EQ(urisInList("# nothing else"), Uris{});
}

TEST(UriList, keepsAFragment) {
    EXPECT_EQ(urisInList("file:///a#b\r\n"), Uris{"file:///a#b"});
}

TEST(UriList, leavesEmptyLinesOut) {
    EXPECT_EQ(urisInList("\r\n\r\nfile:///a\r\n\r\n\r\nfile:///b%20c\r\n\r\n"), two);
    EXPECT_EQ(urisInList("\n \n\t\nfile:///a\n  \t\nfile:///b%20c\n \n"), two);
}

TEST(UriList, leavesBlanksAroundAUriOut) {
    EXPECT_EQ(urisInList(" file:///a \r\n\tfile:///b%20c\t\r\n"), two);
}

TEST(UriList, keepsBlanksInsideAUri) {
    EXPECT_EQ(urisInList("file:///a b\tc\r\n"), Uris{"file:///a b\tc"});
}

TEST(UriList, mayEndInZeroBytes) {
    for (const std::string_view list : {std::string_view("file:///a\r\nfile:///b%20c\r\n\0", 26),
                                        std::string_view("file:///a\r\nfile:///b%20c\r\n\0\0\0", 28),
                                        std::string_view("file:///a\r\nfile:///b%20c\0", 25),
                                        std::string_view("file:///a\nfile:///b%20c\0\n", 25)})
        EXPECT_EQ(urisInList(list), two) << list;
    EXPECT_EQ(urisInList(std::string_view("\0", 1)), Uris{});
}

TEST(UriList, isEmptyWithoutAUri) {
    for (const std::string_view list : {"", "\r\n", "\n", "\r", " ", "\t\n \r\n"})
        EXPECT_EQ(urisInList(list), Uris{}) << list;
    EXPECT_EQ(urisInList({}), Uris{});
}

TEST(UriList, holdsMoreThanFiles) {
    EXPECT_EQ(urisInList("https://example.org/\r\nnot a URI\r\n"),
              (Uris{"https://example.org/", "not a URI"}));
}

TEST(CopiedFiles, beginWithCopyAndEndInNoLineFeed) {
    EXPECT_EQ(copiedFilesOf(two), "copy\nfile:///a\nfile:///b%20c");
    EXPECT_EQ(copiedFilesOf(Uris{"file:///a"}), "copy\nfile:///a");
}

TEST(CopiedFiles, giveBackWhatWasWritten) {
    const Uris many{"file:///copy", "file:///cut", "file:///%C3%A9/", "file:///a", "file:///a"};
    EXPECT_EQ(urisInCopiedFiles(copiedFilesOf(many)), many);
    EXPECT_EQ(urisInCopiedFiles(copiedFilesOf(Uris{})), Uris{});
}

TEST(CopiedFiles, areReadUnderEveryHeading) {
    for (const std::string heading : {"copy\n", "cut\n", "x-special/nautilus-clipboard\ncopy\n",
                                      "x-special/nautilus-clipboard\ncut\n", ""}) {
        EXPECT_EQ(urisInCopiedFiles(heading + "file:///a\nfile:///b%20c"), two) << heading;
        EXPECT_EQ(urisInCopiedFiles(heading + "file:///a\nfile:///b%20c\n"), two) << heading;
    }
}

TEST(CopiedFiles, takeEveryLineEnding) {
    EXPECT_EQ(urisInCopiedFiles("copy\r\nfile:///a\r\nfile:///b%20c\r\n"), two);
    EXPECT_EQ(urisInCopiedFiles("cut\rfile:///a\rfile:///b%20c\r"), two);
}

TEST(CopiedFiles, mayEndInZeroBytes) {
    EXPECT_EQ(urisInCopiedFiles(std::string_view("copy\nfile:///a\nfile:///b%20c\0", 29)), two);
    EXPECT_EQ(urisInCopiedFiles(std::string_view("copy\nfile:///a\nfile:///b%20c\n\0", 30)), two);
}

TEST(CopiedFiles, haveTheirHeadingsAtTheBeginningOnly) {
    EXPECT_EQ(urisInCopiedFiles("copy\nfile:///a\ncut\nfile:///b"), (Uris{"file:///a", "cut", "file:///b"}));
}

TEST(CopiedFiles, takeALongerWordForNoHeading) {
    EXPECT_EQ(urisInCopiedFiles("copying\nfile:///a"), (Uris{"copying", "file:///a"}));
    EXPECT_EQ(urisInCopiedFiles("Copy\nfile:///a"), (Uris{"Copy", "file:///a"}));
}

TEST(CopiedFiles, areNoneUnderAHeadingAlone) {
    for (const std::string_view text :
         {"", "copy", "copy\n", "cut", "x-special/nautilus-clipboard\ncopy\n", "\n"})
        EXPECT_EQ(urisInCopiedFiles(text), Uris{}) << text;
}

TEST(OwnHost, isLeftOutInAnyCase) {
    for (const std::string_view uri :
         {"file://machine/a/b", "file://Machine/a/b", "file://MACHINE/a/b", "FILE://machine/a/b"})
        EXPECT_EQ(withoutOwnHost(uri, "machine"), "file:///a/b") << uri;
    EXPECT_EQ(withoutOwnHost("file://machine/a/b", "MaChine"), "file:///a/b");
    EXPECT_EQ(withoutOwnHost("file://machine.example.org/a", "machine.example.org"), "file:///a");
    EXPECT_EQ(withoutOwnHost("file://machine/", "machine"), "file:///");
    EXPECT_EQ(withoutOwnHost("file://machine//a", "machine"), "file:////a");
}

TEST(OwnHost, isLeftOutAndNothingElse) {
    EXPECT_EQ(withoutOwnHost("file://machine/Machine/%4D?q#F", "machine"), "file:///Machine/%4D?q#F");
}

TEST(OwnHost, isNoOtherHost) {
    for (const std::string_view uri :
         {"file://other/a", "file://machine2/a", "file://machin/a", "file://machine.local/a",
          "file://machine:1/a", "file://user@machine/a", "file://localhost/a"})
        EXPECT_EQ(withoutOwnHost(uri, "machine"), uri);
}

TEST(OwnHost, isNotNeeded) {
    for (const std::string_view uri : {"file:///a", "file:/a", "file:///machine/a"})
        EXPECT_EQ(withoutOwnHost(uri, "machine"), uri);
}

TEST(OwnHost, isKeptWithoutAPath) {
    for (const std::string_view uri : {"file://machine", "file://machine?/a", "file://machine#/a"})
        EXPECT_EQ(withoutOwnHost(uri, "machine"), uri);
}

TEST(OwnHost, isKeptInOtherSchemes) {
    for (const std::string_view uri : {"http://machine/a", "files://machine/a", "//machine/a", "machine/a",
                                       "file:machine/a", "file:/machine/a", "", "f", "file:/", "file://"})
        EXPECT_EQ(withoutOwnHost(uri, "machine"), uri);
}

TEST(OwnHost, isNoneWithoutAName) {
    for (const std::string_view uri : {"file:///a", "FILE:///a"})
        EXPECT_EQ(withoutOwnHost(uri, ""), uri);
    EXPECT_EQ(withoutOwnHost("file://host/a", ""), "file://host/a");
}

} // namespace
} // namespace tavel
