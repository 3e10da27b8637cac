#include "Support/Text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

/// The value in the bit pattern of UTF-8, also if it is no code point.
std::string encoded(std::uint32_t codePoint) {
    const auto octet = [](std::uint32_t value) {
        return static_cast<char>(static_cast<unsigned char>(value));
    };
    const auto continuation = [&](unsigned shift) { return octet(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80)
        return {octet(codePoint)};
    if (codePoint < 0x800)
        return {octet(0xC0 | codePoint >> 6), continuation(0)};
    if (codePoint < 0x10000)
        return {octet(0xE0 | codePoint >> 12), continuation(6), continuation(0)};
    return {octet(0xF0 | codePoint >> 18), continuation(12), continuation(6), continuation(0)};
}

bool isBetween(unsigned char octet, unsigned low, unsigned high) {
    return octet >= low && octet <= high;
}

/// The length of the sequence at the front by table 3-7 of the Unicode Standard, row by row; 0 if no row
/// matches.
std::size_t sequenceLength(std::string_view text) {
    const auto at = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : static_cast<unsigned char>(0);
    };
    const auto tail = [at](std::size_t i) { return isBetween(at(i), 0x80, 0xBF); };
    const unsigned char first = at(0);
    if (first <= 0x7F)
        return 1;
    if (isBetween(first, 0xC2, 0xDF))
        return tail(1) ? 2 : 0;
    if (isBetween(first, 0xE0, 0xEF)) {
        const bool second = first == 0xE0   ? isBetween(at(1), 0xA0, 0xBF)
                            : first == 0xED ? isBetween(at(1), 0x80, 0x9F)
                                            : tail(1);
        return second && tail(2) ? 3 : 0;
    }
    if (isBetween(first, 0xF0, 0xF4)) {
        const bool second = first == 0xF0   ? isBetween(at(1), 0x90, 0xBF)
                            : first == 0xF4 ? isBetween(at(1), 0x80, 0x8F)
                                            : tail(1);
        return second && tail(2) && tail(3) ? 4 : 0;
    }
    return 0;
}

bool matchesTable(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

TEST(Utf8, acceptsTheEmptyText) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8(std::string_view()));
}

TEST(Utf8, acceptsEveryCharacter) {
    std::string all;
    for (std::uint32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint < 0xD800 || codePoint > 0xDFFF)
            all += encoded(codePoint);
    }
    EXPECT_TRUE(isUtf8(all));
}

TEST(Utf8, refusesEverySurrogate) {
    for (std::uint32_t codePoint = 0xD800; codePoint <= 0xDFFF; ++codePoint)
        ASSERT_FALSE(isUtf8(encoded(codePoint))) << std::hex << codePoint;
    EXPECT_FALSE(isUtf8(encoded(0xD83D) + encoded(0xDE00))); // a surrogate pair, as in CESU-8
}

TEST(Utf8, refusesWhatIsAboveTheLastCharacter) {
    EXPECT_TRUE(isUtf8(encoded(0x10FFFF)));
    EXPECT_FALSE(isUtf8(encoded(0x110000)));
    EXPECT_FALSE(isUtf8(encoded(0x13FFFF)));
    EXPECT_FALSE(isUtf8("\xF5\x80\x80\x80"));
    EXPECT_FALSE(isUtf8("\xF8\x88\x80\x80\x80"));
    EXPECT_FALSE(isUtf8("\xFC\x84\x80\x80\x80\x80"));
}

TEST(Utf8, refusesOverlongForms) {
    for (const std::string_view text : {"\xC0\x80", "\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xE0\x9F\xBF",
                                        "\xF0\x80\x80\xAF", "\xF0\x8F\xBF\xBF"})
        EXPECT_FALSE(isUtf8(text));
}

TEST(Utf8, refusesACutSequenceAtTheEndAndBeforeMoreText) {
    for (const std::uint32_t codePoint : {0xE9U, 0x20ACU, 0x1F600U}) {
        const std::string whole = encoded(codePoint);
        for (std::size_t length = 1; length < whole.size(); ++length) {
            EXPECT_FALSE(isUtf8(whole.substr(0, length))) << std::hex << codePoint;
            EXPECT_FALSE(isUtf8(whole.substr(0, length) + "a")) << std::hex << codePoint;
            EXPECT_FALSE(isUtf8(std::string(100, 'x') + whole.substr(0, length))) << std::hex << codePoint;
        }
    }
}

TEST(Utf8, judgesEveryPairOfBytesByTheTable) {
    for (unsigned pair = 0; pair < 0x10000; ++pair) {
        const std::array bytes{static_cast<char>(static_cast<unsigned char>(pair >> 8)),
                               static_cast<char>(static_cast<unsigned char>(pair & 0xFF))};
        const std::string_view text(bytes.data(), bytes.size());
        ASSERT_EQ(isUtf8(text), matchesTable(text)) << std::hex << pair;
    }
}

TEST(Utf8, judgesLongSequencesByTheTable) {
    // Both sides of each boundary in the table.
    constexpr std::array<unsigned char, 12> borders{0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F,
                                                    0xA0, 0xBF, 0xC0, 0xC2, 0xF4, 0xFF};
    for (unsigned first = 0x80; first < 0x100; ++first) {
        for (const unsigned char second : borders) {
            for (const unsigned char third : borders) {
                for (const unsigned char fourth : borders) {
                    const std::array bytes{static_cast<char>(static_cast<unsigned char>(first)),
                                           static_cast<char>(second), static_cast<char>(third),
                                           static_cast<char>(fourth)};
                    for (const std::size_t length : {3U, 4U}) {
                        const std::string_view text(bytes.data(), length);
                        ASSERT_EQ(isUtf8(text), matchesTable(text))
                            << std::hex << first << ' ' << unsigned{second} << ' ' << unsigned{third} << ' '
                            << unsigned{fourth} << ", length " << length;
                    }
                }
            }
        }
    }
}

TEST(Utf8, findsOneWrongByteAnywhereInALongText) {
    const std::string good(300, 'a');
    for (std::size_t position = 0; position < good.size(); ++position) {
        std::string text = good;
        text[position] = '\x80';
        ASSERT_FALSE(isUtf8(text)) << "at " << position;
    }
}

TEST(AsciiLowerCase, changesNothingButAsciiCapitals) {
    const std::string_view capitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::string_view small = "abcdefghijklmnopqrstuvwxyz";
    for (int octet = 0; octet < 256; ++octet) {
        const char c = static_cast<char>(octet);
        const std::size_t position = capitals.find(c);
        EXPECT_EQ(asciiLowerCase(c), position == std::string_view::npos ? c : small[position]) << octet;
    }
}

TEST(EqualsIgnoringAsciiCase, comparesTheWholeTexts) {
    EXPECT_TRUE(equalsIgnoringAsciiCase("", ""));
    EXPECT_TRUE(equalsIgnoringAsciiCase("FILE:", "file:"));
    EXPECT_TRUE(equalsIgnoringAsciiCase("local[Host]", "LOCAL[hOST]"));
    EXPECT_FALSE(equalsIgnoringAsciiCase("file", "file:"));
    EXPECT_FALSE(equalsIgnoringAsciiCase("file:", "file"));
    EXPECT_FALSE(equalsIgnoringAsciiCase("[", "{")); // as far apart as a capital and its small letter
    EXPECT_FALSE(equalsIgnoringAsciiCase("\xC3\x89", "\xC3\xA9")); // É and é
}

TEST(Text, thatWasCutLosesOnlyThePartOfACharacter) {
    const std::string whole = "a\u00E9\u20AC\U0001F600"; // characters of one to four bytes
    const std::vector<std::size_t> ends{0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10};
    for (std::size_t size = 0; size <= whole.size(); ++size)
        EXPECT_EQ(withoutPartialCharacter(std::string_view(whole).substr(0, size)),
                  whole.substr(0, ends[size]))
            << size;
}

TEST(Text, thatIsNoUtf8LosesAtMostThreeBytes) {
    for (const std::string_view text : {"\x80\x80\x80\x80", "a\xF0\x80\x80\x80", "a\x80", "\xFF\x41"})
        EXPECT_EQ(withoutPartialCharacter(text), text);
    EXPECT_EQ(withoutPartialCharacter("a\xFF"), "a");
}

} // namespace
} // namespace tavel
