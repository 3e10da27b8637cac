#include "TavelClipboardAgent/FilePaste/FileNames.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace tavel {
namespace {

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

bool isValid(std::string_view stem, std::string_view ext = "pdf") {
    return validName(stem, ext).has_value();
}

/// Whether the stem is valid and stays unchanged.
bool isKept(std::string_view stem) {
    return validName(stem, "pdf") == std::string(stem) + ".pdf";
}

TEST(FileNames, areStemAndExtension) {
    EXPECT_EQ(validName("Rapport", "pdf"), "Rapport.pdf");
    EXPECT_EQ(validName("photo.png", "txt"), "photo.png.txt");
    EXPECT_EQ(validName("Été à la plage", "jpg"), "Été à la plage.jpg");
}

TEST(FileNames, haveNoWhiteSpaceAroundTheStem) {
    EXPECT_EQ(validName("  Rapport  ", "pdf"), "Rapport.pdf");
    EXPECT_EQ(validName(" a b ", "pdf"), "a b.pdf") << "only around it";
    for (const std::string_view space :
         {"\t", "\n", "\v", "\f", "\r", "\r\n", " ", "\u0085", "\u00A0", "\u1680", "\u2000", "\u2005",
          "\u200A", "\u200B", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"}) {
        const std::string around(space);
        EXPECT_EQ(validName(around + "a" + around, "pdf"), "a.pdf") << around;
        EXPECT_EQ(validName(around + around + "a", "pdf"), "a.pdf") << around;
    }
    EXPECT_EQ(validName(" \u3000\n\u200Ba\u00A0\t \r\n", "pdf"), "a.pdf") << "in any mixture";
}

TEST(FileNames, keepWhatOnlyLooksLikeWhiteSpace) {
    for (const std::string_view other : {"\u2800", "\u3164", "\u115F"})
        EXPECT_TRUE(isKept(std::string(other) + "a" + std::string(other))) << other;
    for (const std::string_view control : {"\uFEFF", "\u180E", "\u200C", "\u2060"}) {
        EXPECT_FALSE(isValid(std::string(control) + "a")) << control;
        EXPECT_FALSE(isValid("a" + std::string(control))) << control;
    }
}

TEST(FileNames, areNotEmpty) {
    for (const std::string_view stem : {"", " ", "   ", "\n", "\t\r\n ", "\u3000", "\u200B", "\u2028"})
        EXPECT_FALSE(isValid(stem)) << stem;
}

TEST(FileNames, doNotEndInADotBeforeTheExtension) {
    for (const std::string_view stem : {".", "..", "a.", "a..", "a. ", "a.\n", " a. "})
        EXPECT_FALSE(isValid(stem)) << stem;
    for (const std::string_view stem : {".a", "..a", "a.b", "a..b", ". a"})
        EXPECT_TRUE(isKept(stem)) << stem;
}

TEST(FileNames, haveOneOfTheKnownExtensions) {
    for (const std::string_view ext : {"pdf", "jpg", "png", "gif", "svg", "webp", "tiff", "txt"})
        EXPECT_EQ(validName("a", ext), "a." + std::string(ext));
    for (const std::string_view ext : {"jpeg", "PDF", "Pdf", "", ".txt", "txt ", " txt", "tif", "tx", "txtx",
                                       "exe", "html", "heic", "bmp"})
        EXPECT_FALSE(isValid("a", ext)) << ext;
    EXPECT_FALSE(isValid("a", std::string_view("txt\0", 4)));
}

TEST(FileNames, holdNoCharacterThatSomeSystemForbids) {
    for (const char c : std::string_view("<>:\"/\\|?*")) {
        EXPECT_FALSE(isValid(std::string("a") + c + "b")) << c;
        EXPECT_FALSE(isValid(std::string(1, c))) << c;
        EXPECT_FALSE(isValid(std::string("a") + c)) << c;
        EXPECT_FALSE(isValid(c + std::string("a"))) << c;
    }
    for (const char c : std::string_view("!#$%&'()+,-;=@[]^_`{}~ 0aZ"))
        EXPECT_TRUE(isKept(std::string("a") + c + "b")) << c;
    for (const std::string_view lookalike : {"／", "：", "∗", "＜", "‹"})
        EXPECT_TRUE(isKept(lookalike)) << lookalike;
}

TEST(FileNames, holdNoControlCharacter) {
    for (const std::string_view control :
         {std::string_view("\0", 1),      std::string_view("\x01"),      std::string_view("\t"),
          std::string_view("\n"),         std::string_view("\r"),        std::string_view("\x1F"),
          std::string_view("\x7F"),       std::string_view("\u0080"),    std::string_view("\u0085"),
          std::string_view("\u009F"),     std::string_view("\u00AD"),    std::string_view("\u0600"),
          std::string_view("\u061C"),     std::string_view("\u180E"),    std::string_view("\u200B"),
          std::string_view("\u200D"),     std::string_view("\u200E"),    std::string_view("\u202A"),
          std::string_view("\u202E"),     std::string_view("\u2060"),    std::string_view("\u2066"),
          std::string_view("\uFEFF"),     std::string_view("\uFFF9"),    std::string_view("\U0001D173"),
          std::string_view("\U000E0001"), std::string_view("\U000E007F")})
        EXPECT_FALSE(isValid("a" + std::string(control) + "b")) << testing::PrintToString(control);
    EXPECT_FALSE(isValid("👩\u200D🚀")) << "an emoji joined from two";
}

TEST(FileNames, mayHoldLineSeparators) {
    EXPECT_TRUE(isKept("a\u2028b"));
    EXPECT_TRUE(isKept("a\u2029b"));
    EXPECT_TRUE(isKept("a\u00A0b"));
    EXPECT_TRUE(isKept("a\u3000b"));
}

TEST(FileNames, mayHoldEveryOtherCharacter) {
    for (const std::string_view other : {"é", "e\u0301", "語", "한글", "😀", "👍🏽", "🇫🇷", "❤\uFE0F",
                                         "\uE000", "\uFFFD", "\uFFFE", "\U0010FFFF", "\u0378", "¹", "ı"})
        EXPECT_TRUE(isKept(other)) << other;
}

TEST(FileNames, haveAtMost179Utf16Units) {
    EXPECT_TRUE(isValid(std::string(176, 'x'), "pdf"));
    EXPECT_FALSE(isValid(std::string(177, 'x'), "pdf"));
    EXPECT_TRUE(isValid(std::string(175, 'x'), "webp"));
    EXPECT_FALSE(isValid(std::string(176, 'x'), "webp"));
    EXPECT_TRUE(isValid(std::string(175, 'x'), "tiff"));
    EXPECT_FALSE(isValid(std::string(176, 'x'), "tiff"));
}

TEST(FileNames, areMeasuredNeitherInBytesNorInCharacters) {
    EXPECT_TRUE(isValid(repeated("語", 176)));
    EXPECT_FALSE(isValid(repeated("語", 177)));
    EXPECT_TRUE(isValid(repeated("😀", 88)));
    EXPECT_FALSE(isValid(repeated("😀", 88) + "x"));
    EXPECT_TRUE(isValid(repeated("😀", 87) + "xx"));
    EXPECT_FALSE(isValid(repeated("😀", 89)));
    EXPECT_TRUE(isValid(repeated("e\u0301", 88)));
    EXPECT_FALSE(isValid(repeated("e\u0301", 89)));
    EXPECT_TRUE(isValid(repeated("\uFFFF", 176))) << "the last character of one unit";
    EXPECT_FALSE(isValid(repeated("\U00010000", 89))) << "the first one of two";
}

TEST(FileNames, areStorableWithAtMost255Bytes) {
    const std::string bytes249 = repeated("語", 83);
    EXPECT_EQ(storableName(bytes249 + "é", "pdf"), bytes249 + "é.pdf");
    EXPECT_EQ(storableName(bytes249 + "éa", "pdf"), std::nullopt);
    EXPECT_TRUE(isValid(bytes249 + "éa"));
    EXPECT_EQ(storableName(" " + bytes249 + "é ", "pdf"), bytes249 + "é.pdf") << "measured after trimming";
    EXPECT_EQ(storableName(bytes249 + "a", "webp"), bytes249 + "a.webp");
    EXPECT_EQ(storableName(bytes249 + "ab", "webp"), std::nullopt);
    EXPECT_EQ(storableName("a/b", "pdf"), std::nullopt) << "and only if they are valid";
}

TEST(FileNames, areMeasuredAfterTrimming) {
    EXPECT_TRUE(isValid(std::string(1000, ' ') + std::string(176, 'x') + std::string(1000, '\n')));
}

TEST(FileNames, areNoDeviceNamesInAnyCaseOrWithAnyExtension) {
    for (const std::string_view name :
         {"con",    "CON",    "Con",    "cOn",    "PRN",    "prn",     "AUX",     "aux",     "NUL",  "nul",
          "clock$", "CLOCK$", "Clock$", "conin$", "CONIN$", "conout$", "CONOUT$", "ConOut$", "com1", "COM1",
          "Com2",   "com3",   "com4",   "com5",   "com6",   "com7",    "com8",    "COM9",    "lpt1", "LPT2",
          "lpt3",   "lpt4",   "lpt5",   "lpt6",   "lpt7",   "lpt8",    "LPT9",    "COM¹",    "COM²", "COM³",
          "com¹",   "com²",   "com³",   "LPT¹",   "lpt²",   "LPT³",    "conın$",  "CONıN$"}) {
        EXPECT_FALSE(isValid(name)) << name;
        EXPECT_FALSE(isValid(" " + std::string(name) + "\n")) << name;
        EXPECT_FALSE(isValid(std::string(name) + ".old")) << name;
        EXPECT_FALSE(isValid(std::string(name) + ".a.b")) << name;
        EXPECT_FALSE(isValid(std::string(name) + "..a")) << name;
    }
}

TEST(FileNames, mayContainADeviceName) {
    for (const std::string_view name :
         {"COM0",    "COM10", "COM11", "COM",    "LPT",     "LPT0",  "lpt10",  "CONSOLE", "COM1x",
          "xCON",    "xCOM1", "CO",    "CON1",   "CLOCK",   "CONIN", "CONOUT", "CLOCK$$", "COM⁴",
          "COM⁰",    "COM１", "COM①",  "a.CON",  "a.con.b", ".con",  ".COM1",  "..nul",   "CON_",
          "CON-old", "C ON",  "ÇON",   "ＣＯＮ", "NULL",    "AUX1",  "PRNT"})
        EXPECT_TRUE(isKept(name)) << name;
}

TEST(FileNames, areNoPortNamesWithALineSeparatorBehind) {
    for (const std::string_view newline : {"\u2028", "\u2029"}) {
        const std::string end(newline);
        for (const std::string_view port : {"COM1", "lpt9", "com³"}) {
            EXPECT_FALSE(isValid(port.data() + end)) << port << ", where it is white space";
            EXPECT_FALSE(isValid(port.data() + end + ".old")) << port;
            EXPECT_TRUE(isKept(port.data() + end + end + ".old")) << port;
            EXPECT_TRUE(isKept(port.data() + end + "x")) << port;
        }
        EXPECT_TRUE(isKept("CON" + end + ".old")) << "which is no port";
        EXPECT_TRUE(isKept("COM0" + end + ".old"));
    }
    EXPECT_TRUE(isKept("COM1 .old"));
}

TEST(FileNames, areUtf8) {
    for (const std::string_view broken :
         {"\xFF", "\x80", "\xC3", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE2\x80", "\xED\xA0\x80",
          "\xED\xBF\xBF", "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
        EXPECT_FALSE(isValid("a" + std::string(broken) + "b"));
        EXPECT_FALSE(isValid("ab" + std::string(broken)));
        EXPECT_FALSE(isValid(std::string(broken)));
    }
}

TEST(FileNames, mayBeEnteredAtAnyLength) {
    const std::size_t huge = std::size_t{4} << 20;
    EXPECT_FALSE(isValid(std::string(huge, 'x')));
    EXPECT_FALSE(isValid(std::string(huge, ' ')));
    EXPECT_EQ(validName(std::string(huge, ' ') + "a", "pdf"), "a.pdf");
}

} // namespace
} // namespace tavel
