#include "Mac/Utf16.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using namespace std::string_literals;

/// The character in UTF-16 as the Unicode Standard's table 3-5 has it.
std::u16string unitsOf(char32_t character) {
    if (character < 0x10000)
        return {static_cast<char16_t>(character)};
    const char32_t bits = character - 0x10000;
    return {static_cast<char16_t>(0xD800 | bits >> 10), static_cast<char16_t>(0xDC00 | (bits & 0x3FF))};
}

TEST(Utf16, knownTextsAreConvertedBothWays) {
    const std::string text = "z\xC3\x9F\xE6\xB0\xB4\xF0\x9F\x8D\x8C"; // of one, two, three and four bytes
    const std::u16string units = u"z\u00df\u6c34\U0001f34c";
    EXPECT_EQ(utf16FromUtf8(text), units);
    EXPECT_EQ(utf8FromUtf16(units), text);
    EXPECT_EQ(units.size(), 5U);
}

TEST(Utf16, everyCharacterComesBack) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character == 0xD800)
            character = 0xE000; // there are no characters between
        const std::u16string units = unitsOf(character);
        ASSERT_EQ(utf16FromUtf8(utf8FromUtf16(units)), units) << std::hex << static_cast<unsigned>(character);
    }
}

TEST(Utf16, theEmptyTextIsEmpty) {
    EXPECT_EQ(utf16FromUtf8(""), u"");
    EXPECT_EQ(utf8FromUtf16(u""), "");
}

TEST(Utf16, byteOrderMarksAreCharacters) {
    const std::string text = "\xEF\xBB\xBF\xEF\xBB\xBFtext\xEF\xBB\xBF";
    const std::u16string units = u"\uFEFF\uFEFFtext\uFEFF";
    EXPECT_EQ(utf16FromUtf8(text), units);
    EXPECT_EQ(utf8FromUtf16(units), text);
    EXPECT_EQ(utf8FromUtf16(u"\uFFFE"), "\xEF\xBF\xBE");
}

TEST(Utf16, zeroCharactersAreCharacters) {
    EXPECT_EQ(utf16FromUtf8("\0a\0"s), u"\0a\0"s);
    EXPECT_EQ(utf8FromUtf16(u"\0a\0"s), "\0a\0"s);
}

TEST(Utf16, textThatIsNotUtf8IsRefused) {
    for (const std::string& bytes : {"\xFF"s, "caf\xE9"s, "\xC3"s, "\x80"s, "\xC0\x80"s, "\xED\xA0\x80"s,
                                     "\xED\xBF\xBF"s, "\xF4\x90\x80\x80"s, "good\xF0\x9F\x8D"s})
        EXPECT_EQ(utf16FromUtf8(bytes), std::nullopt) << testing::PrintToString(bytes);
}

TEST(Utf16, anUnpairedSurrogateBecomesAReplacementCharacter) {
    const std::vector<std::pair<std::u16string, std::string>> texts{
        {u"\xD800"s, "\uFFFD"},
        {u"\xDBFF"s, "\uFFFD"},
        {u"\xDC00"s, "\uFFFD"},
        {u"\xDFFF"s, "\uFFFD"},
        {u"\xD83Cx"s, "\uFFFDx"},
        {u"x\xD83C"s, "x\uFFFD"},
        {u"\xDF4C\xD83C"s, "\uFFFD\uFFFD"},
        {u"\xD83C\xD83C\xDF4C"s, "\uFFFD\U0001F34C"},
        {u"\xD83C\xDF4C\xDF4C"s, "\U0001F34C\uFFFD"},
    };
    for (const auto& [units, text] : texts)
        EXPECT_EQ(utf8FromUtf16(units), text) << testing::PrintToString(units);
}

} // namespace
} // namespace tavel
