#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"

#include "Tests/Unit/Agent/Decoding.h"
#include "Tests/Unit/Agent/TestLine.h"
#include "Tests/Unit/Fixtures/SmallStack.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tavel {
namespace {

using command::Ping;
using command::WriteText;

const std::string ping = commandLine("ping");

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (; times > 0; --times)
        result += text;
    return result;
}

/// A command with a member that nests `levels` arrays, or objects. The command object adds one level.
std::string nestedArrays(std::size_t levels) {
    return commandLine("ping", R"(,"x":)" + repeated("[", levels) + repeated("]", levels));
}

std::string nestedObjects(std::size_t levels) {
    return commandLine("ping", R"(,"x":)" + repeated(R"({"y":)", levels) + "0" + repeated("}", levels));
}

TEST(CommandDecoder, dropsWhatIsNoObject) {
    for (const std::string_view text :
         {"", " ", "\t \r", "[]", "7", "-", "\"ping\"", "null", "true", R"(["command","ping"])",
          R"([{"command":"ping","request_id":7}])", "ping", "{", "}", "{}", ":", ","})
        EXPECT_TRUE(isDropped(text)) << text;
}

TEST(CommandDecoder, allowsWhitespaceWhereJsonDoes) {
    EXPECT_TRUE(decodeLineAs<Ping>(" \t\r\n{ \"command\" \t:\r\n \"ping\" , \"request_id\"\t: 7\r } \n\t "));
}

TEST(CommandDecoder, dropsOtherWhitespace) {
    for (const std::string_view space : {"\v", "\f", "\xC2\xA0", "\xE2\x80\xA8", "\x01"}) {
        EXPECT_TRUE(isDropped(std::string(space) + ping));
        EXPECT_TRUE(isDropped(ping + std::string(space)));
        EXPECT_TRUE(isDropped(R"({"command":"ping","request_id":)" + std::string(space) + "7}"));
        EXPECT_TRUE(isDropped(R"({"command":"ping","request_id":7)" + std::string(space) + "}"));
        EXPECT_TRUE(isDropped(R"({"command":"ping")" + std::string(space) + R"(,"request_id":7})"));
    }
}

TEST(CommandDecoder, dropsALineWithSomethingBehindTheObject) {
    for (const std::string_view behind :
         {"{}", "}", "]", ",", "x", "0", "null", R"("")", "\"", " {}", "\t}", " //", "#", "\xEF\xBB\xBF"})
        EXPECT_TRUE(isDropped(ping + std::string(behind))) << behind;
    EXPECT_TRUE(isDropped(ping + ping));
    EXPECT_TRUE(isDropped(ping + std::string(1, '\0')));
}

TEST(CommandDecoder, skipsOneByteOrderMarkInFront) {
    EXPECT_TRUE(decodeLineAs<Ping>("\xEF\xBB\xBF" + ping));
    EXPECT_TRUE(isDropped("\xEF\xBB\xBF\xEF\xBB\xBF" + ping));
    EXPECT_TRUE(isDropped(" \xEF\xBB\xBF" + ping));
    EXPECT_TRUE(isDropped("\xEF\xBB" + ping));
    EXPECT_TRUE(isDropped("\xEF\xBB\xBF"));
    EXPECT_TRUE(isDropped("\xFE\xFF" + ping));
}

TEST(CommandDecoder, readsEscapesBehindAByteOrderMark) {
    const auto command =
        decodeLineAs<WriteText>("\xEF\xBB\xBF" + commandLine("write_text", R"(,"marker":"a\nb\u00e9")"));
    ASSERT_TRUE(command);
    EXPECT_EQ(command->marker, "a\nbé");
}

TEST(CommandDecoder, dropsALineWithAnUnreadValueThatIsMalformed) {
    for (const std::string_view value : {"tru",
                                         "truee",
                                         "True",
                                         "nul",
                                         "nulll",
                                         "NULL",
                                         "fals",
                                         "01",
                                         "1.",
                                         ".5",
                                         "+1",
                                         "-",
                                         "1e",
                                         "0x1",
                                         "NaN",
                                         "Infinity",
                                         "1 2",
                                         "'a'",
                                         "a",
                                         "[1,]",
                                         "[,1]",
                                         "[1 2]",
                                         "[",
                                         "]",
                                         "[1}",
                                         "{]",
                                         R"({"a"})",
                                         R"({"a":})",
                                         R"({"a":1,})",
                                         "{,}",
                                         "{1:2}",
                                         "{a:1}",
                                         R"({"a" 1})",
                                         R"({"a":1 "b":2})",
                                         R"({"a"::1})",
                                         "[[]",
                                         "{}}",
                                         "/**/1",
                                         "1//",
                                         "\"",
                                         R"("\")",
                                         R"("\x")",
                                         R"("\u12")",
                                         R"("\ud800")",
                                         R"("\udc00")",
                                         "\"\t\"",
                                         "\"\n\"",
                                         "\"\x01\"",
                                         "\"\xFF\"",
                                         "\"\xC0\x80\"",
                                         "\"\xED\xA0\x80\"",
                                         "\xC3\xA9",
                                         R"("a"b)",
                                         R"("a""b")",
                                         R"(1"a")",
                                         "[]1",
                                         "{}1",
                                         "true false",
                                         "nullnull",
                                         ""}) {
        EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":)" + std::string(value)))) << value;
        EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":[0,)" + std::string(value) + "]"))) << value;
        EXPECT_TRUE(isDropped(commandLine("ping", R"(,"paths":["a",)" + std::string(value) + "]"))) << value;
        EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":{"y":)" + std::string(value) + "}"))) << value;
    }
}

TEST(CommandDecoder, dropsALineWithAMalformedKey) {
    for (const std::string_view key :
         {R"("\x")", R"("\u12")", R"("\ud800")", "\"\xFF\"", "\"\t\"", "7", "null", "[]", "x", ""})
        EXPECT_TRUE(isDropped(commandLine("ping", "," + std::string(key) + ":1"))) << key;
    EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":{"\x":1})")));
    EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":[{"\ud800":1}])")));
}

TEST(CommandDecoder, dropsALineWithCommasOutOfPlace) {
    EXPECT_TRUE(isDropped(R"({"command":"ping","request_id":7,})"));
    EXPECT_TRUE(isDropped(R"({,"command":"ping","request_id":7})"));
    EXPECT_TRUE(isDropped(R"({"command":"ping",,"request_id":7})"));
    EXPECT_TRUE(isDropped(R"({"command":"ping" "request_id":7})"));
    EXPECT_TRUE(isDropped(R"({"command":"ping";"request_id":7})"));
}

TEST(CommandDecoder, dropsALineWithAColonBehindAStringThatIsNoKey) {
    // A value that looks like a key: a decoder that skips it as one leaves what follows unchecked.
    for (const std::string_view members :
         {R"("x":"a":]})", R"("x":"a":1 2 3]})", R"("x":"a":garbage 01 ]})", R"("x":"a":{}]})",
          R"("x":["a":1]]})", R"("x":["a":1},2]})", R"("x":{"y":["a":nonsense]]}})", R"("paths":["/a":5]]})",
          R"("marker":"m":tru]})", R"("x":"a":1})", R"("x":1:2})", R"("x":[1:2]})"})
        EXPECT_TRUE(isDropped(R"({"command":"ping","request_id":7,)" + std::string(members))) << members;
}

TEST(CommandDecoder, dropsALineThatIsCut) {
    const std::string whole = commandLine(
        "write_files", R"(,"kind":"files","paths":["\/a","\u00e9"],"x":{"y":[1,true,null,{}]},"marker":"m")");
    ASSERT_FALSE(isDropped(whole));
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_TRUE(isDropped(whole.substr(0, length))) << length;
}

TEST(CommandDecoder, acceptsNumbersOfAnySizeInUnreadFields) {
    for (const std::string& value :
         {std::string("18446744073709551616"), std::string("-9223372036854775809"), std::string("1e400"),
          std::string("-1e-400"), repeated("9", 1000), "0." + repeated("0", 500) + "1",
          std::string("1e99999999999999999999")}) {
        const std::string member = R"(,"x":)" + value;
        EXPECT_TRUE(decodeLineAs<Ping>(commandLine("ping", member))) << value;
        const std::string nested = R"(,"x":[)" + value + R"(])";
        EXPECT_TRUE(decodeLineAs<Ping>(commandLine("ping", nested))) << value;
        const std::string object = R"(,"x":{"y":)" + value + "}";
        EXPECT_TRUE(decodeLineAs<Ping>(commandLine("ping", object))) << value;
    }
}

TEST(CommandDecoder, acceptsAnEmptyKey) {
    EXPECT_TRUE(decodeLineAs<Ping>(commandLine("ping", R"(,"":"","x":{"":[]})")));
}

TEST(CommandDecoder, acceptsValuesNestedToTheLimit) {
    EXPECT_TRUE(decodeLineAs<Ping>(nestedArrays(511)));
    EXPECT_TRUE(decodeLineAs<Ping>(nestedObjects(511)));
    EXPECT_TRUE(
        decodeLineAs<Ping>(commandLine("ping", R"(,"paths":)" + repeated("[", 511) + repeated("]", 511))));
}

TEST(CommandDecoder, dropsALineWithDeeperNesting) {
    EXPECT_TRUE(isDropped(nestedArrays(512)));
    EXPECT_TRUE(isDropped(nestedObjects(512)));
    EXPECT_TRUE(isDropped(commandLine("ping", R"(,"paths":)" + repeated("[", 512) + repeated("]", 512))));
}

TEST(CommandDecoder, countsArraysAndObjectsAlike) {
    const auto mixed = [](std::size_t pairs, std::string_view core) {
        return commandLine("ping", R"(,"x":)" + repeated(R"([{"y":)", pairs) + std::string(core) +
                                       repeated("}]", pairs));
    };
    EXPECT_TRUE(decodeLineAs<Ping>(mixed(255, "[]")));
    EXPECT_TRUE(isDropped(mixed(255, "[[]]")));
    EXPECT_TRUE(isDropped(mixed(256, "0")));
}

TEST(CommandDecoder, survivesAnyDepth) {
    EXPECT_TRUE(isDropped(nestedArrays(200'000)));
    EXPECT_TRUE(isDropped(nestedObjects(200'000)));
    EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":)" + repeated("[", 200'000))));
}

TEST(CommandDecoder, needsNoMoreStackThanABackgroundJobHasOnAMac) {
    runOnSmallestStack([] {
        EXPECT_TRUE(decodeLineAs<Ping>(nestedArrays(511)));
        EXPECT_TRUE(decodeLineAs<Ping>(nestedObjects(511)));
        EXPECT_TRUE(isDropped(nestedObjects(512)));
        EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":)" + repeated(R"({"y":)", 511) + "nul")));
        EXPECT_TRUE(isDropped(commandLine("ping", R"(,"x":)" + repeated(R"([{"y":)", 100'000))));
    });
}

TEST(CommandDecoder, doesNotCountNeighboursAsDepth) {
    EXPECT_TRUE(decodeLineAs<Ping>(commandLine("ping", R"(,"x":[[])" + repeated(",[{}]", 2000) + "]")));
}

TEST(CommandDecoder, goesOnAfterAMalformedLine) {
    CommandDecoder decoder;
    for (const std::string_view bad : {"{", "", "nonsense", R"({"command":"ping","request_id":7)", "\xFF"}) {
        TestLine malformed(bad);
        EXPECT_FALSE(decoder.decode(malformed.line()));
        TestLine good(ping);
        EXPECT_TRUE(decoder.decode(good.line()));
    }
}

TEST(CommandDecoder, goesOnAfterAVeryLongLine) {
    CommandDecoder decoder;
    for (int round = 0; round < 3; ++round) {
        TestLine large(commandLine("write_text", R"(,"text_b64":")" + std::string(3'000'000, 'A') + '"'));
        EXPECT_TRUE(decoder.decode(large.line()));
        TestLine small(ping);
        EXPECT_TRUE(decoder.decode(small.line()));
    }
}

} // namespace
} // namespace tavel
