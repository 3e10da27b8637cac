#include "Support/JsonString.h"

#include "Tests/Unit/Fixtures/PrintJson.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavel {
namespace {

std::optional<std::string> unescaped(std::string text) {
    const auto result = unescapeJsonString(text);
    return result ? std::optional<std::string>(*result) : std::nullopt;
}

TEST(JsonString, replacesEachShortEscape) {
    EXPECT_EQ(unescaped(R"(\"\\\/\b\f\n\r\t)"), "\"\\/\b\f\n\r\t");
}

TEST(JsonString, leavesTextWithoutEscapesAsItIs) {
    for (const std::string_view text : {"", "a", "plain text / with é and 😀", "\x7F"})
        EXPECT_EQ(unescaped(std::string(text)), text);
}

TEST(JsonString, refusesEveryOtherShortEscape) {
    constexpr std::string_view known = R"("\/bfnrtu)";
    for (unsigned value = 0; value < 256; ++value) {
        const char c = static_cast<char>(static_cast<unsigned char>(value));
        if (known.find(c) != std::string_view::npos)
            continue;
        EXPECT_EQ(unescaped(std::string(R"(a\)") + c + "0000"), std::nullopt) << value;
    }
}

TEST(JsonString, readsEveryCharacterOfTheBasicPlane) {
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        constexpr std::string_view lower = "0123456789abcdef";
        constexpr std::string_view upper = "0123456789ABCDEF";
        const std::string_view digits = unit % 2 == 0 ? lower : upper;
        const std::string escape{
            '\\', 'u', digits[unit >> 12], digits[unit >> 8 & 15], digits[unit >> 4 & 15], digits[unit & 15]};
        if (unit >= 0xD800 && unit <= 0xDFFF) {
            ASSERT_EQ(unescaped(escape), std::nullopt) << escape;
            continue;
        }
        ASSERT_EQ(unescaped(escape), nlohmann::json::parse('"' + escape + '"').get<std::string>()) << escape;
    }
}

TEST(JsonString, joinsSurrogatePairs) {
    EXPECT_EQ(unescaped(R"(\uD83D\uDE00)"), "😀");
    EXPECT_EQ(unescaped(R"(\ud83d\ude00)"), "😀");
    EXPECT_EQ(unescaped(R"(\uD800\uDC00)"), "\U00010000");
    EXPECT_EQ(unescaped(R"(\uDBFF\uDFFF)"), "\U0010FFFF");
    EXPECT_EQ(unescaped(R"(a\uD83D\uDE00\uD83D\uDE01b)"), "a😀😁b");
}

TEST(JsonString, refusesHalfASurrogatePair) {
    for (const std::string_view text :
         {R"(\uD83D)", R"(\uD83Dx)", R"(\uD83D\n)", R"(\uD83D\u0041)", R"(\uD83D\uD83D)", R"(\uD83D\uDBFF)",
          R"(\uD83D\uE000)", R"(\uDE00)", R"(\uDE00\uD83D)", R"(\uDC00\uDC00)", R"(\uDFFFx)",
          R"(\uD83D \uDE00)", R"(\uD83D\\uDE00)", R"(\uD83D/uDE00)", R"(\uD83D\UDE00)"})
        EXPECT_EQ(unescaped(std::string(text)), std::nullopt) << text;
}

TEST(JsonString, refusesCutEscapes) {
    const std::string whole = R"(\uD83D\uDE00)";
    for (std::size_t length = 1; length < whole.size(); ++length)
        EXPECT_EQ(unescaped(whole.substr(0, length)), std::nullopt) << length;
    for (const std::string_view text : {"\\", R"(a\)", R"(\\\)", R"(\u)", R"(\u1)", R"(\u12)", R"(\u123)"})
        EXPECT_EQ(unescaped(std::string(text)), std::nullopt) << text;
}

TEST(JsonString, refusesWhatAreNoFourHexDigits) {
    for (const std::string_view text : {R"(\u00G0)", R"(\u 123)", R"(\u+123)", R"(\u-123)", R"(\u0x12)",
                                        R"(\u12 4)", R"(\u{41})", R"(\u00/0)", R"(\u00:0)", R"(\u00@0)",
                                        R"(\u00`0)", R"(\u00g0)", R"(\uD83D\uDE0)", R"(\uD83D\uDEG0)"})
        EXPECT_EQ(unescaped(std::string(text)), std::nullopt) << text;
}

TEST(JsonString, readsAnEscapedZeroByte) {
    EXPECT_EQ(unescaped(R"(a\u0000b)"), std::string("a\0b", 3));
}

TEST(JsonString, doesNotReadEscapesTwice) {
    EXPECT_EQ(unescaped(R"(\\u0041\\n\u005cn)"), R"(\u0041\n\n)");
}

TEST(JsonString, givesAPrefixOfTheSameBytes) {
    std::string text = R"(long: \u20AC\uD83D\uDE00 \t end)";
    const auto result = unescapeJsonString(text);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->data(), text.data());
    EXPECT_EQ(*result, "long: €😀 \t end");
    EXPECT_EQ(text.substr(0, result->size()), *result);
}

TEST(JsonString, readsAnEscapeAtEveryOffset) {
    for (std::size_t before = 0; before < 70; ++before) {
        std::string text(before, 'x');
        std::string expected = text;
        text += R"(\ntail\u00e9)";
        expected += "\ntailé";
        EXPECT_EQ(unescaped(text), expected) << before;
    }
}

/// Pieces that form valid and invalid escapes when combined. None has a quote, which would end the string.
constexpr std::array<std::string_view, 24> pieces{
    "\\",        R"(\\)",     R"(\/)",     R"(\n)",     R"(\u)",
    R"(\u00e9)", R"(\u0000)", R"(\uD83D)", R"(\uDE00)", R"(\uD83D\uDE00)",
    R"(\uD8)",   R"(\x)",     "u",         "D",         "0",
    "n",         "é",         "😀",        "/",         "plain",
    R"(\b)",     R"(\uFFFF)", "7",         "e"};

TEST(JsonString, judgesRandomStringsAsAnotherReaderDoes) {
    Random random(1);
    int accepted = 0;
    constexpr int rounds = 20'000;
    for (int round = 0; round < rounds; ++round) {
        std::string text;
        for (std::size_t left = random.below(6); left > 0; --left)
            text += random.oneOf(std::span(pieces));
        const auto parsed = nlohmann::json::parse('"' + text + '"', nullptr, false);
        const auto expected = parsed.is_string() ? std::optional(parsed.get<std::string>()) : std::nullopt;
        ASSERT_EQ(unescaped(text), expected) << text;
        accepted += expected ? 1 : 0;
    }
    EXPECT_GT(accepted, rounds / 10);
    EXPECT_LT(accepted, rounds - rounds / 10);
}

TEST(JsonString, readsWhatAnotherWriterWrote) {
    Random random(2);
    for (int round = 0; round < 2000; ++round) {
        std::string original;
        for (std::size_t left = random.below(40); left > 0; --left) {
            constexpr std::array<std::string_view, 10> samples{"a",    "\"", "\\", "/",  "\n",
                                                               "\x01", "é",  "€",  "😀", " "};
            original += random.oneOf(std::span(samples));
        }
        for (const bool ascii : {false, true}) {
            const std::string written = nlohmann::json(original).dump(-1, ' ', ascii);
            ASSERT_EQ(unescaped(written.substr(1, written.size() - 2)), original) << written;
        }
    }
}

} // namespace
} // namespace tavel
