#include "Tests/Unit/Agent/Decoding.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavel {
namespace {

using command::ConfigureFilePrompt;
using command::DiscardPending;
using command::Ping;
using command::Quit;
using command::Unknown;
using command::WriteFiles;
using command::WriteImageData;
using command::WriteText;

/// Values other than strings.
constexpr std::array<std::string_view, 9> notStrings{"7",    "0",  "-1.5", "true",    "false",
                                                     "null", "{}", "[]",   R"(["a"])"};

/// Values other than numbers and booleans.
constexpr std::array<std::string_view, 7> notNumbers{R"("7")", R"("")", R"("true")", "null",
                                                     "{}",     "[]",    "[7]"};

std::string member(std::string_view key, std::string_view value) {
    return R"(,")" + std::string(key) + R"(":)" + std::string(value);
}

std::optional<std::string> textOf(const std::optional<Bytes>& bytes) {
    return bytes ? std::optional<std::string>(bytes->view()) : std::nullopt;
}

std::optional<std::uint64_t> requestIDWith(std::string_view value) {
    const auto ping = decodeLineAs<Ping>(R"({"command":"ping","request_id":)" + std::string(value) + "}");
    return ping ? std::optional(ping->requestID) : std::nullopt;
}

std::optional<bool> renamePromptWith(std::string_view members) {
    const auto command = decodeLineAs<ConfigureFilePrompt>(commandLine("configure_file_prompt", members));
    return command ? std::optional(command->renamePrompt) : std::nullopt;
}

WriteText writeTextWith(std::string_view members) {
    const auto command = decodeLineAs<WriteText>(commandLine("write_text", members));
    EXPECT_TRUE(command) << members;
    return command.value_or(WriteText{});
}

WriteFiles writeFilesWith(std::string_view members) {
    const auto command = decodeLineAs<WriteFiles>(commandLine("write_files", members));
    EXPECT_TRUE(command) << members;
    return command.value_or(WriteFiles{});
}

using Paths = std::vector<std::string>;

TEST(CommandDecoder, knowsEveryCommandByItsName) {
    EXPECT_TRUE(decodeLineAs<ConfigureFilePrompt>(commandLine("configure_file_prompt")));
    EXPECT_TRUE(decodeLineAs<Ping>(commandLine("ping")));
    EXPECT_TRUE(decodeLineAs<DiscardPending>(commandLine("discard_pending")));
    EXPECT_TRUE(decodeLineAs<Quit>(commandLine("quit")));
    EXPECT_TRUE(decodeLineAs<WriteText>(commandLine("write_text")));
    EXPECT_TRUE(decodeLineAs<WriteImageData>(commandLine("write_image_data")));
    EXPECT_TRUE(decodeLineAs<WriteFiles>(commandLine("write_files")));
}

TEST(CommandDecoder, takesAnyOtherNameForAnUnknownCommand) {
    for (const std::string_view name : {"", "Ping", "PING", " ping", "ping ", "pin", "pingg", "write-text",
                                        "é", R"(ping\u0000)", R"(\n)", "configureFilePrompt"})
        EXPECT_TRUE(decodeLineAs<Unknown>(commandLine(name))) << name;
}

TEST(CommandDecoder, carriesTheRequestIdentifierInEveryCommand) {
    for (const std::string_view name : {"configure_file_prompt", "ping", "discard_pending", "quit",
                                        "write_text", "write_image_data", "write_files", "unheard of"}) {
        const auto command = decodeLine(commandLine(name));
        ASSERT_TRUE(command) << name;
        EXPECT_EQ(std::visit([](const auto& one) { return one.requestID; }, *command), 7U) << name;
    }
}

TEST(CommandDecoder, dropsALineWithoutANameForItsCommand) {
    EXPECT_TRUE(isDropped(R"({"request_id":7})"));
    for (const std::string_view value : notStrings)
        EXPECT_TRUE(isDropped(R"({"request_id":7,"command":)" + std::string(value) + "}")) << value;
}

TEST(CommandDecoder, dropsALineWithoutANumberForItsRequest) {
    EXPECT_TRUE(isDropped(R"({"command":"ping"})"));
    for (const std::string_view value : notNumbers)
        EXPECT_EQ(requestIDWith(value), std::nullopt) << value;
}

TEST(CommandDecoder, readsTheRequestIdentifierAsAnUnsignedInteger) {
    EXPECT_EQ(requestIDWith("0"), 0U);
    EXPECT_EQ(requestIDWith("-0"), 0U);
    EXPECT_EQ(requestIDWith("18446744073709551615"), UINT64_MAX);
    EXPECT_EQ(requestIDWith("18446744073709551623"), 7U);
    EXPECT_EQ(requestIDWith("-1"), UINT64_MAX);
    EXPECT_EQ(requestIDWith("7.99"), 7U);
    EXPECT_EQ(requestIDWith("7e2"), 700U);
    EXPECT_EQ(requestIDWith("1e400"), 0U);
    EXPECT_EQ(requestIDWith("9007199254740993"), 9007199254740993U);
}

TEST(CommandDecoder, countsABooleanAsANumber) {
    EXPECT_EQ(requestIDWith("true"), 1U);
    EXPECT_EQ(requestIDWith("false"), 0U);
    EXPECT_EQ(writeFilesWith(member("expected_sequence", "true")).expectedSequence, 1U);
    EXPECT_EQ(writeFilesWith(member("expected_sequence", "false")).expectedSequence, 0U);
}

TEST(CommandDecoder, readsTheRenamePromptFromABooleanOrZeroOrOne) {
    for (const std::string_view value : {"true", "1", "1.0", "10e-1", "1e0"})
        EXPECT_EQ(renamePromptWith(member("rename_prompt", value)), true) << value;
    for (const std::string_view value : {"false", "0", "-0", "0.0", "0e9"})
        EXPECT_EQ(renamePromptWith(member("rename_prompt", value)), false) << value;
}

TEST(CommandDecoder, readsTheRenamePromptAsFalseFromAnythingElse) {
    EXPECT_EQ(renamePromptWith(""), false);
    for (const std::string_view value :
         {"2", "-1", "1.5", "0.1", "1e400", R"("true")", R"("1")", "null", "{}", "[true]"})
        EXPECT_EQ(renamePromptWith(member("rename_prompt", value)), false) << value;
}

TEST(CommandDecoder, readsTheTextAndItsMarker) {
    const WriteText command = writeTextWith(R"(,"text_b64":"aGk=","marker":"m é")");
    EXPECT_EQ(textOf(command.text), "hi");
    EXPECT_EQ(command.marker, "m é");
}

TEST(CommandDecoder, tellsEmptyStringsFromAbsentOnes) {
    const WriteText empty = writeTextWith(R"(,"text_b64":"","marker":"")");
    EXPECT_EQ(textOf(empty.text), "");
    EXPECT_EQ(empty.marker, "");
    const WriteText absent = writeTextWith("");
    EXPECT_FALSE(absent.text);
    EXPECT_EQ(absent.marker, std::nullopt);
}

TEST(CommandDecoder, takesAStringOfAnotherTypeForAbsent) {
    for (const std::string_view value : notStrings) {
        EXPECT_FALSE(writeTextWith(member("text_b64", value)).text) << value;
        EXPECT_FALSE(writeTextWith(member("marker", value)).marker) << value;
        EXPECT_FALSE(writeFilesWith(member("marker", value)).marker) << value;
        EXPECT_FALSE(writeFilesWith(member("kind", value)).kind) << value;
        const auto image =
            decodeLineAs<WriteImageData>(commandLine("write_image_data", member("image_b64", value)));
        ASSERT_TRUE(image) << value;
        EXPECT_FALSE(image->image) << value;
    }
}

TEST(CommandDecoder, takesPayloadsThatAreNoBase64ForAbsent) {
    for (const std::string_view base64 :
         {R"("a")", R"("====")", R"("aGk!")", R"("aG k")", R"("a=Gk")", R"("aGk\n")", R"("aGk\\")"})
        EXPECT_FALSE(writeTextWith(member("text_b64", base64)).text) << base64;
    EXPECT_EQ(textOf(writeTextWith(member("text_b64", R"("aG\u006b")")).text), "hi");
}

TEST(CommandDecoder, readsTheImage) {
    const auto image =
        decodeLineAs<WriteImageData>(commandLine("write_image_data", R"(,"image_b64":"iVBO\/w")"));
    ASSERT_TRUE(image);
    EXPECT_EQ(textOf(image->image), "\x89PN\xFF");
}

TEST(CommandDecoder, readsEveryFieldOfFiles) {
    const WriteFiles command =
        writeFilesWith(R"(,"kind":"files","paths":["/a","\/b \u00e9"],"marker":"m","expected_sequence":41)");
    EXPECT_EQ(command.kind, "files");
    EXPECT_EQ(command.paths, (Paths{"/a", "/b é"}));
    EXPECT_EQ(command.marker, "m");
    EXPECT_EQ(command.expectedSequence, 41U);
}

TEST(CommandDecoder, hasDefaultsForEveryFieldOfFiles) {
    const WriteFiles command = writeFilesWith("");
    EXPECT_EQ(command.kind, std::nullopt);
    EXPECT_EQ(command.paths, Paths());
    EXPECT_EQ(command.marker, std::nullopt);
    EXPECT_EQ(command.expectedSequence, std::nullopt);
}

TEST(CommandDecoder, readsTheExpectedSequenceLikeTheRequestIdentifier) {
    EXPECT_EQ(writeFilesWith(member("expected_sequence", "0")).expectedSequence, 0U);
    EXPECT_EQ(writeFilesWith(member("expected_sequence", "41.7")).expectedSequence, 41U);
    EXPECT_EQ(writeFilesWith(member("expected_sequence", "-1")).expectedSequence, UINT64_MAX);
    for (const std::string_view value : notNumbers)
        EXPECT_EQ(writeFilesWith(member("expected_sequence", value)).expectedSequence, std::nullopt) << value;
}

TEST(CommandDecoder, takesPathsThatAreNoArrayForNone) {
    for (const std::string_view value :
         {R"("/a")", "7", "true", "null", "{}", R"({"paths":["/a"]})", R"({"0":"/a"})"})
        EXPECT_EQ(writeFilesWith(member("paths", value)).paths, Paths()) << value;
}

TEST(CommandDecoder, takesPathsWithAnythingButStringsForNone) {
    for (const std::string_view value :
         {"[]", "[7]", R"(["/a",7])", R"([7,"/a"])", R"(["/a",null,"/b"])", R"(["/a",true])", R"([["/a"]])",
          R"(["/a",["/b"]])", R"(["/a",["/b"],"/c"])", R"(["/a",[],"/b"])", R"(["/a",{},"/b"])",
          R"([{"paths":["/a"]}])", R"(["/a",[["/b"]],"/c","/d"])"})
        EXPECT_EQ(writeFilesWith(member("paths", value)).paths, Paths()) << value;
}

TEST(CommandDecoder, keepsPathsApartThatLookAlike) {
    EXPECT_EQ(writeFilesWith(R"(,"paths":["","\\","\"","[","/a","/a"])").paths,
              (Paths{"", "\\", "\"", "[", "/a", "/a"}));
}

TEST(CommandDecoder, readsManyPaths) {
    Paths expected;
    std::string list;
    for (int i = 0; i < 10'001; ++i) {
        expected.push_back("/" + std::to_string(i));
        list += (list.empty() ? "\"\\/" : ",\"\\/") + std::to_string(i) + '"';
    }
    EXPECT_TRUE(writeFilesWith(member("paths", "[" + list + "]")).paths == expected);
}

TEST(CommandDecoder, takesTheLastOfSeveralValues) {
    EXPECT_TRUE(decodeLineAs<Quit>(R"({"command":"ping","request_id":7,"command":"quit"})"));
    EXPECT_EQ(decodeLineAs<Ping>(R"({"request_id":1,"command":"ping","request_id":2})")->requestID, 2U);
    EXPECT_EQ(writeTextWith(R"(,"marker":"a","marker":"b")").marker, "b");
    EXPECT_EQ(textOf(writeTextWith(R"(,"text_b64":"YQ","text_b64":"Yg")").text), "b");
    EXPECT_EQ(writeFilesWith(R"(,"paths":["/a"],"paths":["/b","/c"])").paths, (Paths{"/b", "/c"}));
    EXPECT_EQ(writeFilesWith(R"(,"paths":["/a"],"paths":[])").paths, Paths());
    EXPECT_EQ(renamePromptWith(R"(,"rename_prompt":true,"rename_prompt":false)"), false);
}

TEST(CommandDecoder, takesTheLastOfSeveralValuesWhateverItsType) {
    for (const std::string_view last : {"null", "7", "{}", "[]", R"(["a"])"}) {
        EXPECT_FALSE(writeTextWith(R"(,"marker":"a")" + member("marker", last)).marker) << last;
        EXPECT_EQ(writeTextWith(member("marker", last) + R"(,"marker":"a")").marker, "a") << last;
        EXPECT_FALSE(writeTextWith(R"(,"text_b64":"YQ")" + member("text_b64", last)).text) << last;
    }
    for (const std::string_view last : {"null", R"("/a")", "7", "{}", "[7]", R"([["/a"]])"}) {
        EXPECT_EQ(writeFilesWith(R"(,"paths":["/a"])" + member("paths", last)).paths, Paths()) << last;
        EXPECT_EQ(writeFilesWith(member("paths", last) + R"(,"paths":["/a"])").paths, Paths{"/a"}) << last;
    }
    EXPECT_EQ(renamePromptWith(R"(,"rename_prompt":true,"rename_prompt":[])"), false);
    EXPECT_FALSE(writeFilesWith(R"(,"expected_sequence":1,"expected_sequence":{})").expectedSequence);
    EXPECT_TRUE(isDropped(R"({"command":"ping","request_id":7,"command":{}})"));
    EXPECT_TRUE(isDropped(R"({"command":"ping","request_id":7,"request_id":"7"})"));
}

TEST(CommandDecoder, knowsAKeyByItsEscapedName) {
    EXPECT_TRUE(decodeLineAs<Ping>(R"({"comm\u0061nd":"p\u0069ng","\u0072equest_id":7})"));
    EXPECT_EQ(writeTextWith(R"(,"m\u0061rker":"a")").marker, "a");
    EXPECT_EQ(writeTextWith(R"(,"marker":"a","mark\u0065r":"b")").marker, "b");
    EXPECT_EQ(writeFilesWith(R"(,"\u0070\u0061\u0074\u0068\u0073":["\/a"])").paths, Paths{"/a"});
}

TEST(CommandDecoder, knowsKeysExactly) {
    EXPECT_FALSE(
        writeTextWith(R"(,"Marker":"a"," marker":"a","marker ":"a","marker\u0000":"a","":"a")").marker);
}

TEST(CommandDecoder, ignoresTheKeysOfOtherCommands) {
    EXPECT_TRUE(
        decodeLineAs<Ping>(commandLine("ping", R"(,"paths":7,"marker":{},"rename_prompt":"x","other":1)")));
}

TEST(CommandDecoder, doesNotLookForFieldsInsideOtherValues) {
    const auto command = decodeLineAs<WriteText>(commandLine(
        "write_text", R"(,"x":{"command":"quit","request_id":9,"marker":"in"},"y":[{"marker":"in"}])"));
    ASSERT_TRUE(command);
    EXPECT_EQ(command->requestID, 7U);
    EXPECT_FALSE(command->marker);
    EXPECT_TRUE(isDropped(R"({"x":{"command":"ping","request_id":7}})"));
}

} // namespace
} // namespace tavel
