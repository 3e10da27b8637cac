#include "Support/Base64.h"
#include "Tests/Unit/Agent/CommandContent.h"
#include "Tests/Unit/Agent/Decoding.h"
#include "Tests/Unit/Fixtures/PieceFeeder.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

constexpr std::size_t longestPayload = 600;
constexpr std::size_t searchedBytes = 160;

using Contents = std::vector<std::optional<CommandContent>>;

/// The commands of the lines, as they arrive in pieces of that size. Counts the payloads.
Contents inPieces(const std::string& lines, std::size_t pieceSize, int& payloads) {
    const PieceFeeder feeder(lines, pieceSize);
    LineReader reader(feeder.descriptor(), longestPayload, searchedBytes);
    CommandDecoder decoder;
    Contents contents;
    while (const auto line = reader.next()) {
        payloads += line->payload ? 1 : 0;
        const auto command = decoder.decode(*line);
        contents.push_back(command ? std::optional(contentOf(*command)) : std::nullopt);
    }
    return contents;
}

/// The command of a line that is held whole.
std::optional<CommandContent> inWhole(std::string_view line) {
    const auto command = decodeLine(line);
    return command ? std::optional(contentOf(*command)) : std::nullopt;
}

/// Expects the same command as from the whole line, whatever the pieces. Returns how often there was a
/// payload.
int expectTheSame(const std::string& line) {
    const Contents expected{inWhole(line)};
    int payloads = 0;
    for (const std::size_t pieceSize : {1U, 3U, 17U, 64U, 90U, 1000U})
        EXPECT_EQ(inPieces(line + "\n", pieceSize, payloads), expected) << line << " by " << pieceSize;
    return payloads;
}

std::string base64(std::size_t characters) {
    return std::string(characters, 'Q');
}

std::string writeText(std::string_view value) {
    return commandLine("write_text", R"(,"marker":"m","text_b64":)" + std::string(value));
}

TEST(CommandPayload, isTheTextOrTheImageOfACommand) {
    EXPECT_GT(expectTheSame(writeText('"' + base64(400) + '"')), 0);
    EXPECT_GT(expectTheSame(commandLine("write_image_data", R"(,"image_b64":")" + base64(400) + '"')), 0);
}

TEST(CommandPayload, mayComeBeforeTheCommand) {
    EXPECT_GT(expectTheSame(R"({"text_b64":")" + base64(400) + R"(","command":"write_text","request_id":7})"),
              0);
}

TEST(CommandPayload, countsOnlyIfItIsTheLastValueOfItsKey) {
    const std::string payload = R"("text_b64":")" + base64(400) + '"';
    for (const std::string& members :
         {payload + R"(,"text_b64":"aGk=")", R"("text_b64":"aGk=",)" + payload, payload + "," + payload,
          payload + R"(,"text_b64":null)", payload + R"(,"image_b64":")" + base64(150) + '"'})
        EXPECT_GT(expectTheSame(commandLine("write_text", "," + members)), 0);
}

TEST(CommandPayload, isNoneIfItIsNoBase64) {
    for (const std::string_view wrong :
         {"*", "=", "===", " ", R"(\u0041)", R"(\n)", R"(\x)", R"(\)", "\x01", "\xFF", "\xC3\xA9", "\t"}) {
        const std::string before = base64(400);
        EXPECT_EQ(expectTheSame(writeText('"' + before + std::string(wrong) + base64(101) + '"')), 0);
    }
    EXPECT_EQ(expectTheSame(writeText('"' + base64(400) + R"(\u003d")")), 0);
    EXPECT_EQ(expectTheSame(writeText('"' + base64(401) + '"')), 0);
}

TEST(CommandPayload, isAStringLikeAnyOtherElsewhere) {
    const std::string text = base64(402) + R"(\/=)"; // has its padding, and bits that no byte takes up
    const std::string value = '"' + text + '"';
    for (const std::string& line :
         {commandLine("write_files", R"(,"marker":)" + value),
          commandLine("write_files", R"(,"kind":)" + value),
          commandLine("write_files", R"(,"paths":["/a",)" + value + R"(,"/b"])"),
          commandLine("write_files", R"(,"paths":)" + value),
          commandLine("write_files", R"(,"expected_sequence":)" + value),
          commandLine("ping", R"(,"rename_prompt":)" + value), commandLine("ping", "," + value + ":1"),
          commandLine("ping", R"(,"x":)" + value), commandLine("ping", R"(,"x":[{"y":[)" + value + "]}]"),
          commandLine("ping", R"(,"x":{)" + value + ":{}}"), commandLine("ping", R"(,"text_b64":)" + value),
          R"({"request_id":7,"command":)" + value + "}", R"({"command":"ping","request_id":)" + value + "}"})
        EXPECT_GT(expectTheSame(line), 0) << line;
}

TEST(CommandPayload, doesNotMakeAMalformedLineWellFormed) {
    const std::string value = '"' + base64(400) + '"';
    for (const std::string& line :
         {value, "[" + value + "]", "{" + value + "}", commandLine("ping", "," + value),
          commandLine("ping", R"(,"x":)" + value + value), commandLine("ping", R"(,"x":)" + value + "1"),
          commandLine("ping", R"(,"x":)" + value + ":1"), commandLine("ping", R"(,"x":\)" + value),
          commandLine("ping", R"(,"x":\")" + base64(400) + R"(\")"),
          commandLine("ping", R"(,"x":)" + value) + "}", R"({"command":"ping","request_id":7,"x":)" + value,
          "\xFF" + commandLine("ping", R"(,"x":)" + value)})
        static_cast<void>(expectTheSame(line));
}

TEST(CommandPayload, mayBeNestedDeeply) {
    for (const std::size_t levels : {511U, 512U}) {
        const std::string line = commandLine("ping", R"(,"x":)" + std::string(levels, '[') + '"' +
                                                         base64(3000) + '"' + std::string(levels, ']'));
        static_cast<void>(expectTheSame(line));
    }
    EXPECT_GT(expectTheSame(commandLine("ping", R"(,"text_b64":")" + base64(400) + R"(","x":)" +
                                                    std::string(511, '[') + std::string(511, ']'))),
              0);
}

TEST(CommandPayload, followsAByteOrderMark) {
    EXPECT_GT(expectTheSame("\xEF\xBB\xBF" + writeText('"' + base64(400) + '"')), 0);
}

TEST(CommandPayload, isTooLongWheneverItsWholeTextIs) {
    for (const std::size_t size :
         {longestPayload - 1, longestPayload, longestPayload + 1, longestPayload * 9}) {
        std::string text;
        appendBase64(text, std::string(size, 'x'));
        int payloads = 0;
        // An escape at the end makes it an ordinary string.
        for (const std::string& value : {text, text.substr(0, text.size() - 1) + R"(\u0041)"}) {
            const auto contents = inPieces(writeText('"' + value + '"') + "\n", 50, payloads);
            ASSERT_EQ(contents.size(), 1U);
            const auto& payload = contents.front()->texts.front();
            ASSERT_TRUE(payload);
            EXPECT_EQ(payload->size() > longestPayload, size > longestPayload) << size;
        }
    }
}

TEST(CommandPayload, givesTheSameCommandAsTheWholeLineDoesInRandomPieces) {
    Random random(7);
    const std::vector<std::string> tokens{"{",
                                          "}",
                                          "[",
                                          "]",
                                          ":",
                                          ",",
                                          "\"",
                                          "\\",
                                          R"(\/)",
                                          "=",
                                          "==",
                                          "A",
                                          "+",
                                          "/",
                                          "*",
                                          R"(\u0041)",
                                          R"(\")",
                                          "\r",
                                          "\n",
                                          "\xFF",
                                          "\xC3\xA9",
                                          R"("text_b64":)",
                                          R"("marker":)",
                                          R"("paths":)",
                                          R"(,"x":)",
                                          "null"};
    constexpr int rounds = 2000;
    int payloads = 0;
    int commands = 0;
    for (int round = 0; round < rounds; ++round) {
        std::string content;
        for (std::size_t lines = 1 + random.below(3); lines > 0; --lines) {
            std::string text;
            const std::string bytes = random.bytes(60 + random.below(400));
            if (random.below(2) == 0)
                appendBase64(text, bytes);
            else
                appendEscapedBase64(text, bytes);
            std::string line = random.below(2) == 0
                                   ? writeText('"' + text + '"')
                                   : commandLine("write_files", R"(,"marker":")" + text + '"');
            for (std::size_t changes = random.below(3); changes > 0; --changes)
                line.insert(random.below(line.size() + 1), random.oneOf(std::span(tokens)));
            content += line + "\n";
        }
        Contents expected;
        for (std::string_view rest = content; !rest.empty();) {
            std::string_view line = rest.substr(0, rest.find('\n'));
            rest.remove_prefix(line.size() + 1);
            if (line.ends_with('\r'))
                line.remove_suffix(1);
            expected.push_back(inWhole(line));
            commands += expected.back() ? 1 : 0;
        }
        ASSERT_EQ(inPieces(content, 1 + random.below(300), payloads), expected) << content;
    }
    EXPECT_GT(payloads, rounds / 4);
    EXPECT_GT(commands, rounds / 2);
}

} // namespace
} // namespace tavel
