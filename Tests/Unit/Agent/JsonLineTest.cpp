#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"
#include "Tests/Unit/Agent/Decoding.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// The characters of which a line may consist.
namespace tavel {
namespace {

void expectDropped(const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        EXPECT_TRUE(isDropped(line)) << line;
}

/// Expects that each line is a ping with the identifier 7.
void expectAnswered(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        const auto command = decodeLineAs<command::Ping>(line);
        ASSERT_TRUE(command) << line;
        EXPECT_EQ(command->requestID, 7U) << line;
    }
}

/// A ping that is valid if `value` is a JSON value.
std::string pingWith(const std::string& value) {
    return R"({"command":"ping","request_id":7,"unread":)" + value + "}";
}

/// A ping that is valid if `key` is a JSON string.
std::string pingWithName(const std::string& key) {
    return R"({"command":"ping","request_id":7,)" + key + ":0}";
}

TEST(JsonLine, isDroppedWithAControlCharacterInAString) {
    std::vector<std::string> lines;
    for (char control = 0x01; control < 0x20; ++control) {
        if (control == '\n')
            continue;
        lines.push_back(pingWith("\"a" + std::string(1, control) + "b\""));
        lines.push_back(pingWithName("\"a" + std::string(1, control) + "b\""));
    }
    expectDropped(lines);
}

TEST(JsonLine, isDroppedWithAZeroByte) {
    const std::string zero(1, '\0');
    expectDropped({zero, pingWith("\"a" + zero + "b\""), pingWith("1" + zero), pingWith("0") + zero,
                   zero + pingWith("0"), "{" + zero + pingWith("0").substr(1)});
}

TEST(JsonLine, isDroppedWithMalformedUtf8) {
    const std::vector<std::string> malformed{
        "\xFF", "\xC0\x80", "\xC1\xBF", "\xE0\x80\xAF", "\xED\xA0\x80",     "\xED\xBF\xBF",
        "\xC3", "\xE2\x82", "\x80",     "\xF0\x9F\x98", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};
    std::vector<std::string> lines;
    for (const std::string& bytes : malformed) {
        lines.push_back(pingWith("\"" + bytes + "\""));
        lines.push_back(pingWithName("\"" + bytes + "\""));
        lines.push_back(pingWith("0") + bytes);
        lines.push_back(bytes + pingWith("0"));
    }
    expectDropped(lines);
}

TEST(JsonLine, isDroppedWithHalfASurrogatePair) {
    std::vector<std::string> lines;
    for (const std::string half :
         {R"(\ud800)", R"(\udbff)", R"(\udc00)", R"(\uDFFF)", R"(\ud800x)", R"(\ud800\n)", R"(\ud800\ud800)",
          R"(\udc00\ud800)", R"(\ud800\u0041)", R"(\ud83d\ude00\ud83d)"}) {
        lines.push_back(pingWith("\"" + half + "\""));
        lines.push_back(pingWith(R"([{"a":")" + half + R"("}])"));
        lines.push_back(pingWithName("\"" + half + "\""));
        lines.push_back(R"({"command":")" + half + R"(","request_id":7})");
    }
    expectDropped(lines);
}

TEST(JsonLine, isDroppedWithAnUnknownEscape) {
    expectDropped({pingWith(R"("\x41")"), pingWith(R"("\a")"), pingWith(R"("\'")"), pingWith(R"("\0")"),
                   pingWith(R"("\U0041")"), pingWith(R"("\u")"), pingWith(R"("\u004")"),
                   pingWith(R"("\u004g")"), pingWith(R"("\u 041")"), pingWith(R"("\u+041")"),
                   pingWith(R"("\")"), pingWith(R"("\\\")"), pingWithName(R"("\q")")});
}

TEST(JsonLine, mayEscapeAnyCharacterOfKeysAndValues) {
    expectAnswered({R"({"\u0063ommand":"ping","request_id":7})",
                    R"({"command":"\u0070\u0069\u006e\u0067","request_id":7})",
                    R"({"command":"p\u0069ng","request\u005Fid":7})",
                    R"({"command":"ping","request\u005fid":7})",
                    pingWith(R"("\"\\\/\b\f\n\r\t\u0000\u001f\uFFFF")"), pingWith(R"("\ud83d\ude00")"),
                    pingWith(R"("\uD83D\uDE00")"), pingWithName(R"("\"\\\/\b\f\n\r\t\u0000")"),
                    pingWithName(R"("\ud83d\ude00")"), pingWith(R"("\\\\")"), pingWithName(R"("\\")")});
}

TEST(JsonLine, mayHoldAnyCharacterInStrings) {
    expectAnswered({pingWith("\"\x7F\""), pingWith("\"\u00E9\u2028\u2029\uFFFF\U0001F600\U0010FFFF\""),
                    pingWith("\"//\""), pingWith("\"{[,:]}\""), pingWithName("\"\u00E9{[,:]}\""),
                    pingWith("\"\""), pingWithName("\"\""), pingWith("\"it's\"")});
}

} // namespace
} // namespace tavel
