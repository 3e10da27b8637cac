#include "Console/HumanText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavel {

namespace {

using testing::EndsWith;
using testing::StartsWith;

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i)
        result.append(text);
    return result;
}

TEST(HumanSize, SaysSmallSizesExactly) {
    EXPECT_EQ(humanSize(0), "0 bytes");
    EXPECT_EQ(humanSize(1), "1 byte");
    EXPECT_EQ(humanSize(1023), "1023 bytes");
}

TEST(HumanSize, RoundsLargeSizes) {
    EXPECT_EQ(humanSize(1024), "1.0 KiB");
    EXPECT_EQ(humanSize(1536), "1.5 KiB");
    EXPECT_EQ(humanSize(4'194'304), "4.0 MiB");
    EXPECT_EQ(humanSize(std::uint64_t{5} << 30), "5.0 GiB");
    EXPECT_EQ(humanSize(std::uint64_t{5} << 40), "5120.0 GiB");
}

TEST(HumanSize, NeverShows1024OfAUnit) {
    EXPECT_EQ(humanSize(1'048'575), "1.0 MiB");
    EXPECT_EQ(humanSize(1'048'000), "1023.4 KiB");
    EXPECT_EQ(humanSize((std::uint64_t{1} << 30) - 1), "1.0 GiB");
}

TEST(Counted, TakesThePluralExceptForOne) {
    EXPECT_EQ(counted(0, "file"), "0 files");
    EXPECT_EQ(counted(1, "file"), "1 file");
    EXPECT_EQ(counted(2, "file"), "2 files");
}

TEST(VisibleText, LeavesOrdinaryTextAlone) {
    EXPECT_EQ(visibleText(""), "");
    EXPECT_EQ(visibleText("déjà vu, 日本語 \"x\" ☕"), "déjà vu, 日本語 \"x\" ☕");
    EXPECT_EQ(visibleText("👩\u200D👧"), "👩\u200D👧"); // the joiner is part of the emoji
}

TEST(VisibleText, EscapesControlSequences) {
    EXPECT_EQ(visibleText("\x1b[31mred\x1b]0;title\a"), "\\e[31mred\\e]0;title\\u{07}");
    EXPECT_EQ(visibleText("a\nb\r\tc"), "a\\nb\\r\\tc");
    EXPECT_EQ(visibleText("\b\x7f"), "\\u{08}\\u{7f}");
    EXPECT_EQ(visibleText("\u009B31m"), "\\u{9b}31m"); // the control sequence introducer as one character
}

TEST(VisibleText, EscapesInvisibleAndAmbiguousCharacters) {
    EXPECT_EQ(visibleText("a\u202Etxt.exe\u202C"), "a\\u{202e}txt.exe\\u{202c}");
    EXPECT_EQ(visibleText("a\u2028b\u2029c\uFEFFd"), "a\\u{2028}b\\u{2029}c\\u{feff}d");
    EXPECT_EQ(visibleText("\\n"), "\\\\n"); // differs from an escaped line feed
}

TEST(VisibleText, EscapesBytesThatAreNoText) {
    EXPECT_EQ(visibleText("a\xFFz"), "a\\xffz");
    EXPECT_EQ(visibleText("\xC3"), "\\xc3");                   // cut short
    EXPECT_EQ(visibleText("\xED\xA0\x80"), "\\xed\\xa0\\x80"); // half a surrogate pair
    EXPECT_EQ(visibleText(std::string_view("a\0b", 3)), "a\\0b");
}

TEST(VisibleText, HoldsNoControlByteWhateverCameIn) {
    std::string everything;
    for (int byte = 0; byte < 256; ++byte)
        everything += static_cast<char>(byte);
    for (const char c : visibleText(everything)) {
        EXPECT_GE(static_cast<unsigned char>(c), 0x20);
        EXPECT_LT(static_cast<unsigned char>(c), 0x7F);
    }
}

TEST(QuotedText, ShowsShortTextWhole) {
    EXPECT_EQ(quotedText(""), "\"\"");
    EXPECT_EQ(quotedText("a b"), "\"a b\"");
    EXPECT_EQ(quotedText(repeated("é", longestQuotation)), '"' + repeated("é", longestQuotation) + '"');
}

TEST(QuotedText, ShortensLongText) {
    EXPECT_EQ(quotedText(repeated("é", longestQuotation + 1)),
              '"' + repeated("é", longestQuotation) + "\"... and 1 more character");
    EXPECT_THAT(quotedText(repeated("x", 4'194'304)), EndsWith("\"... and 4194104 more characters"));
}

TEST(QuotedText, KeepsALetterWithItsAccents) {
    // The accent is the first character beyond the limit.
    const std::string text = repeated("x", longestQuotation - 1) + "e\u0301" + "tail";
    EXPECT_EQ(quotedText(text), '"' + repeated("x", longestQuotation - 1) + "\"... and 6 more characters");
}

TEST(QuotedText, EndsEvenWhereNoLetterDoes) {
    const std::string text = "e" + repeated("\u0301", 2 * longestQuotation);
    EXPECT_THAT(quotedText(text), EndsWith("\"... and 201 more characters"));
    EXPECT_THAT(quotedText(text), StartsWith("\"e\u0301"));
}

TEST(QuotedText, CountsBytesThatAreNoTextOneByOne) {
    EXPECT_EQ(quotedText(repeated("\xFF", longestQuotation + 3)),
              '"' + repeated("\\xff", longestQuotation) + "\"... and 3 more characters");
}

} // namespace

} // namespace tavel
