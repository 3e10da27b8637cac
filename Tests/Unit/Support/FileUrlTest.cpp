#include "Support/FileUrl.h"

#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {
namespace {

/// No path with this beginning exists, so no URL gets the slash of a directory.
const std::string nowhere = "/no-such-directory-of-any-machine/";

TEST(FileUrl, escapesEveryByteButThoseOfTheSet) {
    constexpr std::string_view unescaped = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                           "!$&'()*+,-./:=@_~";
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (unsigned value = 0; value < 256; ++value) {
        const char c = static_cast<char>(static_cast<unsigned char>(value));
        std::string expected = "file://" + nowhere + "x";
        if (unescaped.find(c) != std::string_view::npos)
            expected += c;
        else
            expected += {'%', digits[value / 16], digits[value % 16]};
        EXPECT_EQ(fileUrlFromPath(nowhere + "x" + c + "y"), expected + "y") << value;
    }
}

TEST(FileUrl, givesBackEveryPathByteButZero) {
    for (unsigned value = 1; value < 0x80; ++value) {
        const std::string path = nowhere + "x" + static_cast<char>(value) + "y";
        EXPECT_EQ(pathFromFileUrl(fileUrlFromPath(path)), path) << value;
    }
    // Bytes from 0x80 on are UTF-8 only in sequences: each lead byte with each continuation byte.
    for (unsigned lead = 0xC2; lead <= 0xDF; ++lead) {
        for (unsigned tail = 0x80; tail <= 0xBF; ++tail) {
            const std::string path = nowhere + static_cast<char>(static_cast<unsigned char>(lead)) +
                                     static_cast<char>(static_cast<unsigned char>(tail));
            EXPECT_EQ(pathFromFileUrl(fileUrlFromPath(path)), path) << lead << ' ' << tail;
        }
    }
}

TEST(FileUrl, writesNonAsciiLettersAsTheirUtf8Bytes) {
    EXPECT_EQ(fileUrlFromPath(nowhere + "é 😀"), "file://" + nowhere + "%C3%A9%20%F0%9F%98%80");
}

TEST(FileUrl, givesADirectoryASlash) {
    const ScratchDirectory scratch;
    std::filesystem::create_directory(scratch / "directory");
    const std::string directory = (scratch / "directory").string();
    EXPECT_EQ(fileUrlFromPath(directory), "file://" + directory + "/");
    EXPECT_EQ(fileUrlFromPath(directory + "/"), "file://" + directory + "/");
    EXPECT_EQ(pathFromFileUrl(fileUrlFromPath(directory)), directory);
}

TEST(FileUrl, givesALinkToADirectoryASlash) {
    const ScratchDirectory scratch;
    std::filesystem::create_directory(scratch / "directory");
    std::filesystem::create_directory_symlink(scratch / "directory", scratch / "link");
    const std::string link = (scratch / "link").string();
    EXPECT_EQ(fileUrlFromPath(link), "file://" + link + "/");
}

TEST(FileUrl, givesAFileAndWhatDoesNotExistNoSlash) {
    const ScratchDirectory scratch;
    const std::string file = scratch.makeFile("file").string();
    EXPECT_EQ(fileUrlFromPath(file), "file://" + file);
    EXPECT_EQ(fileUrlFromPath(file + "-missing"), "file://" + file + "-missing");
}

TEST(FileUrl, writesTheRootAsOneSlash) {
    EXPECT_EQ(fileUrlFromPath("/"), "file:///");
}

TEST(FileUrl, readsTheFormsOfTheAuthority) {
    for (const std::string_view url : {"file:///a/b", "file:/a/b", "file://localhost/a/b", "FILE:///a/b",
                                       "File://LocalHost/a/b", "fIlE://LOCALHOST/a/b"})
        EXPECT_EQ(pathFromFileUrl(url), "/a/b") << url;
}

TEST(FileUrl, refusesAnotherMachinesFile) {
    for (const std::string_view url :
         {"file://server/a", "file://127.0.0.1/a", "file://localhost:80/a", "file://user@localhost/a",
          "file://localhos/a", "file://localhostt/a", "file://.localhost/a", "file://%6Cocalhost/a"})
        EXPECT_EQ(pathFromFileUrl(url), std::nullopt) << url;
}

TEST(FileUrl, refusesAnotherScheme) {
    for (const std::string_view url :
         {"", "file", "fil:///a", "files:///a", "http:///a", "http://localhost/a", "xfile:///a", " file:///a",
          "/a", "a", "//localhost/a", "file%3A///a"})
        EXPECT_EQ(pathFromFileUrl(url), std::nullopt) << url;
}

TEST(FileUrl, refusesAPathThatIsNotAbsolute) {
    for (const std::string_view url : {"file:", "file:a", "file:./a", "file://", "file://localhost",
                                       "file:%2Fa", "file:?a", "file:#/a", "file://?/a", "file://#/a"})
        EXPECT_EQ(pathFromFileUrl(url), std::nullopt) << url;
}

TEST(FileUrl, readsEscapesInBothCases) {
    EXPECT_EQ(pathFromFileUrl("file:///%C3%A9%c3%a9"), "/éé");
    EXPECT_EQ(pathFromFileUrl("file:///a%20b%2Fc%25d"), "/a b/c%d");
}

TEST(FileUrl, decodesEachEscapeOnce) {
    EXPECT_EQ(pathFromFileUrl("file:///a%2541"), "/a%41");
}

TEST(FileUrl, takesAPlusSignForAPlusSign) {
    EXPECT_EQ(pathFromFileUrl("file:///a+b"), "/a+b");
}

TEST(FileUrl, refusesMalformedEscapes) {
    for (const std::string_view url :
         {"file:///%", "file:///a%4", "file:///%4/", "file:///%G0", "file:///%0G", "file:///%%41",
          "file:///%-1", "file:///% 1", "file:///%\xC3\xA9"})
        EXPECT_EQ(pathFromFileUrl(url), std::nullopt) << url;
}

TEST(FileUrl, refusesAZeroByte) {
    EXPECT_EQ(pathFromFileUrl("file:///a%00b"), std::nullopt);
    EXPECT_EQ(pathFromFileUrl("file:///a%00"), std::nullopt);
    EXPECT_EQ(pathFromFileUrl(std::string_view("file:///a\0b", 11)), std::nullopt);
}

TEST(FileUrl, refusesAPathThatIsNotUtf8) {
    for (const std::string_view url : {"file:///%FF", "file:///\xFF", "file:///%C3", "file:///%C3x",
                                       "file:///%C0%80", "file:///%ED%A0%80", "file:///a/%A9/b"})
        EXPECT_EQ(pathFromFileUrl(url), std::nullopt) << url;
}

TEST(FileUrl, leavesQueryAndFragmentOut) {
    for (const std::string_view url :
         {"file:///a/b?query", "file:///a/b#fragment", "file:///a/b?q#f", "file:///a/b#f?q", "file:///a/b?%",
          "file:///a/b#%FF", "file:///a/b/?/c"})
        EXPECT_EQ(pathFromFileUrl(url), "/a/b") << url;
    EXPECT_EQ(pathFromFileUrl("file:///a%3Fb%23c"), "/a?b#c");
}

TEST(FileUrl, leavesTrailingSlashesOut) {
    for (const std::string_view url : {"file:///a/b/", "file:///a/b//", "file:///a/b%2F", "file:/a/b///"})
        EXPECT_EQ(pathFromFileUrl(url), "/a/b") << url;
}

TEST(FileUrl, readsTheRoot) {
    for (const std::string_view url : {"file:///", "file:/", "file://localhost/", "file:////", "file:///?q"})
        EXPECT_EQ(pathFromFileUrl(url), "/") << url;
}

} // namespace
} // namespace tavel
