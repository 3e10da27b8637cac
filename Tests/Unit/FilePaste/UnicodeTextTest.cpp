#include "TavelClipboardAgent/FilePaste/UnicodeText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ios>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel::unicode {
namespace {

using Range = std::pair<char32_t, char32_t>; // first and last, both included

constexpr char32_t lastScalar = 0x10FFFF;

constexpr Range blanks[] = {{0x9, 0x9},       {0x20, 0x20},     {0xA0, 0xA0},     {0x1680, 0x1680},
                            {0x2000, 0x200B}, {0x202F, 0x202F}, {0x205F, 0x205F}, {0x3000, 0x3000}};

constexpr Range newlines[] = {{0xA, 0xD}, {0x85, 0x85}, {0x2028, 0x2029}};

/// The categories Cc and Cf of Unicode 15.
constexpr Range controls[] = {{0x0, 0x1F},        {0x7F, 0x9F},       {0xAD, 0xAD},       {0x600, 0x605},
                              {0x61C, 0x61C},     {0x6DD, 0x6DD},     {0x70F, 0x70F},     {0x890, 0x891},
                              {0x8E2, 0x8E2},     {0x180E, 0x180E},   {0x200B, 0x200F},   {0x202A, 0x202E},
                              {0x2060, 0x2064},   {0x2066, 0x206F},   {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},
                              {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3},
                              {0x1D173, 0x1D17A}, {0xE0001, 0xE0001}, {0xE0020, 0xE007F}};

bool isIn(std::span<const Range> ranges, char32_t scalar) {
    return std::ranges::any_of(
        ranges, [scalar](const Range& range) { return scalar >= range.first && scalar <= range.second; });
}

bool isSurrogate(char32_t value) {
    return value >= 0xD800 && value <= 0xDFFF;
}

/// The scalars in which the set and the table differ.
std::vector<char32_t> differences(bool (*isInSet)(char32_t), std::span<const Range> table) {
    std::vector<char32_t> found;
    for (char32_t scalar = 0; scalar <= lastScalar; ++scalar) {
        if (!isSurrogate(scalar) && isInSet(scalar) != isIn(table, scalar))
            found.push_back(scalar);
    }
    return found;
}

TEST(UnicodeText, knowsTheBlanks) {
    EXPECT_EQ(differences(isBlank, blanks), std::vector<char32_t>());
}

TEST(UnicodeText, knowsTheNewlines) {
    EXPECT_EQ(differences(isNewline, newlines), std::vector<char32_t>());
}

TEST(UnicodeText, knowsTheControls) {
    EXPECT_EQ(differences(isControl, controls), std::vector<char32_t>());
}

TEST(UnicodeText, keepsEveryScalarInUtf8) {
    std::u32string all;
    for (char32_t scalar = 0; scalar <= lastScalar; ++scalar) {
        if (!isSurrogate(scalar))
            all += scalar;
    }
    const std::string text = toUtf8(all);
    EXPECT_EQ(text.size(), 0x80U + 2U * 0x780 + 3U * (0xF800 - 0x800) + 4U * 0x100000);
    EXPECT_TRUE(fromUtf8(text) == all);
}

TEST(UnicodeText, isReadFromUtf8) {
    EXPECT_EQ(fromUtf8(""), U"");
    EXPECT_EQ(fromUtf8("aé語😀"), U"aé語😀");
    EXPECT_EQ(fromUtf8(std::string_view("a\0b", 3)), std::u32string_view(U"a\0b", 3));
    EXPECT_EQ(toUtf8(U"aé語😀"), "aé語😀");
    EXPECT_EQ(toUtf8(U""), "");
}

TEST(UnicodeText, isNotReadFromInvalidUtf8) {
    for (const std::string_view broken :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2x", "\xE0\x9F\xBF", "\xE2\x80", "\xED\xA0\x80",
          "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x9F\x98", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
          "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"}) {
        EXPECT_EQ(fromUtf8(broken), std::nullopt) << testing::PrintToString(broken);
        EXPECT_EQ(fromUtf8("a" + std::string(broken) + "b"), std::nullopt) << testing::PrintToString(broken);
    }
}

TEST(UnicodeText, isMeasuredInUtf16) {
    EXPECT_EQ(lengthInUtf16(U""), 0U);
    EXPECT_EQ(lengthInUtf16(U"aé語"), 3U);
    EXPECT_EQ(lengthInUtf16(U"\uFFFF"), 1U);
    EXPECT_EQ(lengthInUtf16(U"\U00010000"), 2U);
    EXPECT_EQ(lengthInUtf16(U"a😀\U0010FFFF"), 5U);
}

TEST(UnicodeText, mapsEachLetterToOneUpperCaseLetter) {
    for (const auto& [lower, upper] : {std::pair<char32_t, char32_t>{U'a', U'A'},
                                       {U'z', U'Z'},
                                       {U'A', U'A'},
                                       {U'é', U'É'},
                                       {U'ı', U'I'},
                                       {U'ÿ', U'Ÿ'},
                                       {U'ﬁ', U'ﬁ'},
                                       {U'я', U'Я'},
                                       {U'1', U'1'},
                                       {U'¹', U'¹'},
                                       {U'$', U'$'},
                                       {U'語', U'語'},
                                       {0x10428, 0x10400},
                                       {0x10FFFF, 0x10FFFF}})
        EXPECT_EQ(upperCase(lower), upper) << std::hex << static_cast<unsigned>(lower);
}

TEST(UnicodeText, isCutBetweenCharacters) {
    EXPECT_EQ(firstCharacters(U"", 1), U"");
    EXPECT_EQ(firstCharacters(U"a", 1), U"a");
    EXPECT_EQ(firstCharacters(U"ab", 1), U"a");
    EXPECT_EQ(firstCharacters(U"abc", 2), U"ab");
    EXPECT_EQ(firstCharacters(U"abc", 3), U"abc");
    EXPECT_EQ(firstCharacters(U"abc", 1000), U"abc");
    EXPECT_EQ(firstCharacters(U"e\u0301e\u0301", 1), U"e\u0301");
    EXPECT_EQ(firstCharacters(U"🇫🇷🇩🇪🇮🇹", 2), U"🇫🇷🇩🇪");
    EXPECT_EQ(firstCharacters(U"👍🏽👍", 1), U"👍🏽");
    EXPECT_EQ(firstCharacters(U"👩\u200D👧x", 1), U"👩\u200D👧");
    EXPECT_EQ(firstCharacters(U"\u1112\u1161\u11ABx", 1), U"\u1112\u1161\u11AB");
    EXPECT_EQ(firstCharacters(U"\r\nx", 1), U"\r\n");
}

TEST(UnicodeText, isTrimmedAtBothEnds) {
    EXPECT_EQ(trimmed(U"", isBlank), U"");
    EXPECT_EQ(trimmed(U" \t ", isBlank), U"");
    EXPECT_EQ(trimmed(U" a b ", isBlank), U"a b");
    EXPECT_EQ(trimmed(U"\n a", isBlank), U"\n a");
    EXPECT_EQ(trimmed(U"\na\r\n", isNewline), U"a");
}

} // namespace
} // namespace tavel::unicode
