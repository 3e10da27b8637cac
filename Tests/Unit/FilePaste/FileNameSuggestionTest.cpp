#include "TavelClipboardAgent/FilePaste/FileNames.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace tavel {
namespace {

constexpr std::string_view timestamp = "2025-03-07-142501";

std::string suggested(std::string_view data, std::string_view ext = "txt") {
    return suggestion(data, ext, [] { return std::string(timestamp); });
}

const std::string fallback = "Texte-" + std::string(timestamp);

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(FileNameSuggestion, isTheFirstLine) {
    EXPECT_EQ(suggested("Liste de courses\nPain\nBeurre"), "Liste de courses");
    EXPECT_EQ(suggested("Liste de courses"), "Liste de courses");
    EXPECT_EQ(suggested("a"), "a");
    EXPECT_EQ(suggested("\uFEFFListe de courses\nPain"), "Liste de courses");
}

TEST(FileNameSuggestion, endsWhereTheLineDoes) {
    for (const std::string_view newline :
         {"\n", "\r", "\r\n", "\v", "\f", "\u0085", "\u2028", "\u2029", "\n\n"}) {
        EXPECT_EQ(suggested("Liste" + std::string(newline) + "Pain"), "Liste");
        EXPECT_EQ(suggested("Liste" + std::string(newline)), "Liste");
        EXPECT_EQ(suggested("Liste " + std::string(newline) + "a\nb\rc\u2028d"), "Liste");
    }
    EXPECT_EQ(suggested("a\u2028b\nc"), "a") << "whichever end comes first";
    EXPECT_EQ(suggested("a\nb\u2028c"), "a");
}

TEST(FileNameSuggestion, isNotALaterLine) {
    for (const std::string_view newline : {"\n", "\r", "\r\n", "\v", "\f", "\u0085", "\u2028", "\u2029"}) {
        EXPECT_EQ(suggested(std::string(newline) + "Liste"), fallback);
        EXPECT_EQ(suggested("\uFEFF" + std::string(newline) + "Liste"), fallback);
        EXPECT_EQ(suggested("  " + std::string(newline) + "Liste"), fallback);
    }
}

TEST(FileNameSuggestion, holdsNoByteOrderMark) {
    EXPECT_EQ(suggested("\uFEFFa"), "a");
    EXPECT_EQ(suggested("\uFEFF\uFEFFa\uFEFFb\uFEFF"), "ab");
    EXPECT_EQ(suggested("\uFEFF"), fallback);
    EXPECT_EQ(suggested(repeated("\uFEFF", 100) + "a"), "a") << "they do not count";
}

TEST(FileNameSuggestion, hasNoBlanksAround) {
    EXPECT_EQ(suggested(" \t a b\u3000\u00A0 "), "a b");
    EXPECT_EQ(suggested("\u200Ba\u200B"), "a");
}

TEST(FileNameSuggestion, holdsNoForbiddenCharacter) {
    EXPECT_EQ(suggested("a/b:c"), "abc");
    EXPECT_EQ(suggested("<a>b:\"/\\|?*c"), "abc");
    EXPECT_EQ(suggested("/ a /"), "a") << "they go before the blanks do";
    EXPECT_EQ(suggested("C:ON"), fallback) << "and before the name is judged";
    EXPECT_EQ(suggested("https://example.com/page"), "httpsexample.compage");
}

TEST(FileNameSuggestion, hasAtMost60Characters) {
    EXPECT_EQ(suggested(std::string(60, 'x')), std::string(60, 'x'));
    EXPECT_EQ(suggested(std::string(61, 'x')), std::string(60, 'x'));
    EXPECT_EQ(suggested(std::string(59, 'x') + "yz"), std::string(59, 'x') + "y");
    EXPECT_EQ(suggested(std::string(60, 'x') + "\n"), std::string(60, 'x'));
}

TEST(FileNameSuggestion, isCutBeforeCharactersAreRemoved) {
    EXPECT_EQ(suggested(std::string(10, '/') + std::string(70, 'x')), std::string(50, 'x'));
    EXPECT_EQ(suggested(std::string(10, ' ') + std::string(70, 'x')), std::string(50, 'x'));
    EXPECT_EQ(suggested(std::string(59, 'x') + " y"), std::string(59, 'x'));
    EXPECT_EQ(suggested(std::string(60, ' ') + "x"), fallback);
    EXPECT_EQ(suggested(std::string(60, '/') + "x"), fallback);
    EXPECT_EQ(suggested(std::string(59, 'x') + ".y"), fallback) << "which ends in a dot now";
    EXPECT_EQ(suggested(std::string(60, 'x') + "\x01"), std::string(60, 'x')) << "the control is beyond it";
}

TEST(FileNameSuggestion, countsGraphemeClusters) {
    for (const std::string_view one : {"é", "e\u0301", "e\u0301\u0323", "語", "😀", "👍🏽", "🇫🇷", "❤\uFE0F",
                                       "한", "\u1112\u1161\u11AB", "नि", "1\uFE0F\u20E3"}) {
        const std::string fifty(50, 'x');
        const std::string ten = repeated(one, 10);
        EXPECT_EQ(suggested(fifty + ten), fifty + ten) << one;
        EXPECT_EQ(suggested(fifty + ten + one.data()), fifty + ten) << one;
        EXPECT_EQ(suggested(fifty + ten + "y"), fifty + ten) << one;
        EXPECT_EQ(suggested("x" + ten + fifty), "x" + ten + std::string(49, 'x')) << one;
    }
}

TEST(FileNameSuggestion, splitsNoGraphemeCluster) {
    EXPECT_EQ(suggested(repeated("e\u0301", 60)), repeated("e\u0301", 60));
    EXPECT_EQ(suggested(repeated("e\u0301", 61)), repeated("e\u0301", 60));
    EXPECT_EQ(suggested(repeated("😀", 61)), repeated("😀", 60));
    EXPECT_EQ(suggested(std::string(59, 'x') + "🇫🇷🇩🇪"), std::string(59, 'x') + "🇫🇷");
}

TEST(FileNameSuggestion, countsAJoinedEmojiAsOneCharacterAndRefusesIt) {
    constexpr std::string_view family = "👩\u200D👩\u200D👧";
    EXPECT_EQ(suggested(std::string(60, 'x') + family.data()), std::string(60, 'x'));
    EXPECT_EQ(suggested(std::string(59, 'x') + family.data()), fallback) << "it is not cut behind the first";
    EXPECT_EQ(suggested(family), fallback);
}

TEST(FileNameSuggestion, isTheKindOfContentWhenTheTextGivesNoName) {
    for (const std::string_view text :
         {"",      " ",    "\t\u3000", "/",        "<>:\"/\\|?*", "/ /",       "a.",
          "a. ",   "a./",  ".",        "CON",      "con",         "CON.old",   "com1",
          " nul ", "a\tb", "a\x01",    "a\u200Bb", "a\u202Eb",    "👩\u200D🚀"})
        EXPECT_EQ(suggested(text), fallback) << text;
    EXPECT_EQ(suggested(std::string_view("a\0b", 3)), fallback);
}

TEST(FileNameSuggestion, isTheKindOfContentWhenTheTextIsTooLongForAName) {
    EXPECT_EQ(suggested(repeated("🇫🇷", 60)), fallback) << "60 characters, and 240 UTF-16 units";
    EXPECT_EQ(suggested(repeated("🇫🇷", 44) + "x"), fallback);
}

TEST(FileNameSuggestion, isShortenedToANameOf255Bytes) {
    const std::string keystroke = "ที่"; // a Thai letter, a vowel above it and a tone above that: 9 bytes
    EXPECT_EQ(suggested(repeated(keystroke, 58)), repeated(keystroke, 27)) << "243 bytes and the extension";
    const std::string letters = repeated("นี", 59); // 354 bytes
    EXPECT_EQ(suggested("abcde" + letters.substr(0, 246)), "abcde" + letters.substr(0, 246)) << "255 bytes";
    EXPECT_EQ(suggested("abcdef" + letters.substr(0, 246)), "abcdef" + letters.substr(0, 240)) << "one more";
    EXPECT_EQ(suggested(repeated("🇫🇷", 44)), repeated("🇫🇷", 31));
}

TEST(FileNameSuggestion, isValidWhereItWasShortened) {
    const std::string bytes243 = repeated("นี", 40) + "语";
    EXPECT_EQ(suggested(bytes243 + "       \u3000นี"), bytes243) << "without the blanks at its new end";
    EXPECT_EQ(suggested(bytes243 + "1234567.นี"), fallback) << "which would end in a dot";
    EXPECT_EQ(suggested("e" + repeated("\u0301", 125)), "e" + repeated("\u0301", 125)) << "255 bytes";
    EXPECT_EQ(suggested("e" + repeated("\u0301", 126)), fallback) << "one character, which is not split";
}

TEST(FileNameSuggestion, isTheKindOfContentWhenTheTextIsNotUtf8) {
    EXPECT_EQ(suggested("\xFF"), fallback);
    EXPECT_EQ(suggested("abc\xC3"), fallback);
    EXPECT_EQ(suggested("Liste\nPain\xFF"), fallback) << "in whichever line";
    EXPECT_EQ(suggested("Liste\xED\xA0\x80"), fallback);
}

TEST(FileNameSuggestion, isTheKindOfContentForEverythingElse) {
    EXPECT_EQ(suggested("%PDF-", "pdf"), "Document-" + std::string(timestamp));
    for (const std::string_view ext : {"jpg", "png", "gif", "svg", "webp", "tiff"})
        EXPECT_EQ(suggested("Liste de courses", ext), "Image-" + std::string(timestamp)) << ext;
}

TEST(FileNameSuggestion, asksForTheTimeOnlyWhenItIsNeeded) {
    int asked = 0;
    const auto clock = [&asked] {
        ++asked;
        return std::string("now");
    };
    EXPECT_EQ(suggestion("Liste", "txt", clock), "Liste");
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(suggestion("", "txt", clock), "Texte-now");
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(suggestion("Liste", "pdf", clock), "Document-now");
    EXPECT_EQ(asked, 2);
}

TEST(FileNameSuggestion, handlesLinesOf4Mebibytes) {
    constexpr std::size_t size = std::size_t{4} << 20;
    EXPECT_EQ(suggested(std::string(size, 'x')), std::string(60, 'x'));
    EXPECT_EQ(suggested(repeated("é", size / 2)), repeated("é", 60));
    EXPECT_EQ(suggested(repeated("\uFEFF", size / 3) + "a"), "a");
    EXPECT_EQ(suggested("e" + repeated("\u0301", size / 2)), fallback);
    EXPECT_EQ(suggested("Liste" + std::string(size, '\n')), "Liste");
    EXPECT_EQ(suggested(std::string(size, ' ')), fallback);
}

} // namespace
} // namespace tavel
