#include "Support/JsonWriter.h"

#include "Tests/Unit/Fixtures/PrintJson.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

/// The object's text without its line feed. Fails the test unless there is exactly one.
std::string textOf(JsonObject& object) {
    std::string line = object.takeLine();
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    line.pop_back();
    return line;
}

std::string textOf(std::string_view value) {
    JsonObject object;
    object.add("k", value);
    return textOf(object);
}

TEST(JsonWriter, writesAnEmptyObject) {
    JsonObject object;
    EXPECT_EQ(object.takeLine(), "{}\n");
}

TEST(JsonWriter, writesCompactly) {
    JsonObject object;
    const std::vector<std::string> values{"a", "b"};
    object.add("text", "a b").add("yes", true).add("no", false).add("number", 7).add("list", values);
    EXPECT_EQ(textOf(object), R"({"text":"a b","yes":true,"no":false,"number":7,"list":["a","b"]})");
}

TEST(JsonWriter, escapesEveryControlCharacter) {
    constexpr std::array<std::string_view, 32> expected{
        R"(\u0000)", R"(\u0001)", R"(\u0002)", R"(\u0003)", R"(\u0004)", R"(\u0005)", R"(\u0006)",
        R"(\u0007)", R"(\b)",     R"(\t)",     R"(\n)",     R"(\u000b)", R"(\f)",     R"(\r)",
        R"(\u000e)", R"(\u000f)", R"(\u0010)", R"(\u0011)", R"(\u0012)", R"(\u0013)", R"(\u0014)",
        R"(\u0015)", R"(\u0016)", R"(\u0017)", R"(\u0018)", R"(\u0019)", R"(\u001a)", R"(\u001b)",
        R"(\u001c)", R"(\u001d)", R"(\u001e)", R"(\u001f)"};
    for (std::size_t value = 0; value < expected.size(); ++value) {
        const std::string text = std::string("a") + static_cast<char>(value) + "b";
        EXPECT_EQ(textOf(text), R"({"k":"a)" + std::string(expected[value]) + R"(b"})") << value;
    }
}

TEST(JsonWriter, escapesQuotesBackslashesAndSlashes) {
    EXPECT_EQ(textOf(R"(/a"b\c/)"), R"({"k":"\/a\"b\\c\/"})");
}

TEST(JsonWriter, writesEverythingElseAsItIs) {
    EXPECT_EQ(textOf("\x7F é € 😀 \xC2\x80 '<>&"), "{\"k\":\"\x7F é € 😀 \xC2\x80 '<>&\"}");
}

TEST(JsonWriter, writesIntegersToTheirExtremes) {
    JsonObject object;
    object.add("a", std::numeric_limits<std::int64_t>::min())
        .add("b", std::numeric_limits<std::int64_t>::max());
    object.add("c", std::numeric_limits<std::uint64_t>::max()).add("d", std::uint64_t{0}).add("e", -1);
    EXPECT_EQ(textOf(object), R"({"a":-9223372036854775808,"b":9223372036854775807,)"
                              R"("c":18446744073709551615,"d":0,"e":-1})");
}

TEST(JsonWriter, writesArraysOfNoneOneAndMore) {
    JsonObject object;
    object.add("none", std::span<const std::string>());
    object.add("one", std::vector<std::string>{"/a"});
    object.add("more", std::vector<std::string>{"", "[", "\"", ""});
    EXPECT_EQ(textOf(object), R"({"none":[],"one":["\/a"],"more":["","[","\"",""]})");
}

TEST(JsonWriter, writesBase64WithoutPaddingAndWithEscapedSlashes) {
    JsonObject object;
    object.addBase64("a", "").addBase64("b", "a").addBase64("c", "\xFF\xFF\xFF").addBase64("d", "\xFB\xEF");
    EXPECT_EQ(textOf(object), R"({"a":"","b":"YQ","c":"\/\/\/\/","d":"++8"})");
}

TEST(JsonWriter, staysValidForUtf8) {
    JsonObject object;
    const std::vector<std::string> values{"é", "😀"};
    object.add("a", "€").add("b", values).addBase64("c", "\xFF");
    EXPECT_TRUE(object.isValid());
}

TEST(JsonWriter, isInvalidForGoodOnceAStringIsNotUtf8) {
    JsonObject object;
    object.add("a", "\xFF").add("b", "good");
    EXPECT_FALSE(object.isValid());
}

TEST(JsonWriter, isInvalidForOneBadStringInAnArray) {
    JsonObject object;
    object.add("a", std::vector<std::string>{"good", "/caf\xE9", "good"});
    EXPECT_FALSE(object.isValid());
}

TEST(JsonWriter, isReadBackByAnotherReader) {
    Random random(1);
    constexpr std::array<std::string_view, 12> samples{"a", "\"", "\\", "/", "\n",   "\x1F",
                                                       "é", "€",  "😀", " ", "\x7F", "u"};
    const auto randomText = [&] {
        std::string text;
        for (std::size_t left = random.below(20); left > 0; --left)
            text += random.oneOf(std::span(samples));
        return text;
    };
    for (int round = 0; round < 2000; ++round) {
        const std::string text = randomText();
        const std::vector<std::string> list{randomText(), text, randomText()};
        const std::string bytes = random.bytes(random.below(20));
        const auto number = static_cast<std::int64_t>(random.below(std::numeric_limits<std::size_t>::max()));
        JsonObject object;
        object.add("text", text).add("list", list).addBase64("bytes", bytes).add("number", number);
        object.add("flag", number % 2 == 0);
        ASSERT_TRUE(object.isValid());
        const auto parsed = nlohmann::json::parse(textOf(object));
        ASSERT_EQ(parsed.size(), 5U);
        ASSERT_EQ(parsed.at("text"), text);
        ASSERT_EQ(parsed.at("list"), list);
        ASSERT_EQ(parsed.at("number"), number);
        ASSERT_EQ(parsed.at("flag"), number % 2 == 0);
        ASSERT_EQ(parsed.at("bytes").get<std::string>().size(), (bytes.size() * 8 + 5) / 6);
    }
}

} // namespace
} // namespace tavel
