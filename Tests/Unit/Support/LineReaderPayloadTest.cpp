#include "Support/Base64.h"
#include "Support/Files.h"
#include "Support/LineReader.h"
#include "Tests/Unit/Fixtures/PieceFeeder.h"
#include "Tests/Unit/Fixtures/Pipe.h"
#include "Tests/Unit/Fixtures/TemporaryFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

constexpr std::size_t mostKeptBytes = 3000;
constexpr std::size_t searchedBytes = 100;

/// A line with its payload put back, and that payload.
struct WholeLine {
    std::string text;
    std::optional<std::string> payload;

    bool operator==(const WholeLine&) const = default;
};

WholeLine wholeLine(const LineReader::Line& line) {
    const std::string text(line.text.data(), line.text.size());
    if (!line.payload)
        return {text, std::nullopt};
    const auto& [offset, content] = *line.payload;
    EXPECT_EQ(text.substr(offset - 1, 2), R"("")");
    return {text.substr(0, offset) + content.text() + text.substr(offset), std::string(content.bytes.view())};
}

using WholeLines = std::vector<WholeLine>;

WholeLines wholeLinesFrom(int descriptor) {
    LineReader reader(descriptor, mostKeptBytes, searchedBytes);
    WholeLines lines;
    while (const auto line = reader.next())
        lines.push_back(wholeLine(*line));
    return lines;
}

/// Expects these lines, whatever the size of the pieces in which the content arrives.
void expectWholeLines(const std::string& content, const WholeLines& expected) {
    for (std::size_t pieceSize = 1; pieceSize <= searchedBytes; ++pieceSize) {
        const PieceFeeder feeder(content, pieceSize);
        ASSERT_EQ(wholeLinesFrom(feeder.descriptor()), expected) << "in pieces of " << pieceSize;
    }
}

std::string encoded(std::string_view bytes) {
    std::string text;
    appendBase64(text, bytes);
    return text;
}

const std::string picture(300, '\x5A');

std::string pictureLine(std::string_view behind = "") {
    return R"({"a":")" + encoded(picture) + '"' + std::string(behind) + "}";
}

TEST(LineReaderPayload, isTheLongStringOfBase64InALine) {
    expectWholeLines(pictureLine(R"(,"b":"x")") + "\n", {{pictureLine(R"(,"b":"x")"), picture}});
}

TEST(LineReaderPayload, leavesItsQuotationMarksInTheLine) {
    const PieceFeeder feeder(pictureLine() + "\n", 50);
    LineReader reader(feeder.descriptor(), mostKeptBytes, searchedBytes);
    const auto line = reader.next();
    ASSERT_TRUE(line && line->payload);
    EXPECT_EQ(std::string(line->text.data(), line->text.size()), R"({"a":""})");
    EXPECT_EQ(line->payload->offset, 6U);
}

TEST(LineReaderPayload, isFoundOnlyInALongLine) {
    const std::string line = R"({"a":")" + std::string(searchedBytes - 10, 'A') + "\"}";
    const TemporaryFile file(line + "\n" + line);
    for (const WholeLine& one : wholeLinesFrom(file.descriptor()))
        EXPECT_EQ(one, (WholeLine{line, std::nullopt}));
}

TEST(LineReaderPayload, endsWithCarriageReturnAndLineFeedToo) {
    expectWholeLines(pictureLine() + "\r\n" + pictureLine() + "\r\n",
                     {{pictureLine(), picture}, {pictureLine(), picture}});
}

TEST(LineReaderPayload, isFoundInLastLineWithoutATerminator) {
    expectWholeLines(pictureLine(), {{pictureLine(), picture}});
}

TEST(LineReaderPayload, isFoundInEachOfManyLines) {
    std::string content;
    WholeLines expected;
    for (int i = 0; i < 20; ++i) {
        content += pictureLine() + "\n{}\n";
        expected.push_back({pictureLine(), picture});
        expected.push_back({"{}", std::nullopt});
    }
    expectWholeLines(content, expected);
}

TEST(LineReaderPayload, mayFollowAStringWithEscapedQuotationMarks) {
    const std::string line = R"({"\"":"\\","a":")" + encoded(picture) + "\"}";
    expectWholeLines(line + "\n", {{line, picture}});
}

TEST(LineReaderPayload, isOneStringAtMost) {
    const std::string line = R"([")" + encoded(picture) + R"(",")" + encoded(picture) + R"("])";
    expectWholeLines(line + "\n", {{line, picture}});
}

TEST(LineReaderPayload, hasMoreThanAFewCharactersWhenItIsFound) {
    const std::string line = R"({"b":")" + std::string(60, '.') + R"(","a":")" + encoded(picture) + "\"}";
    const PieceFeeder feeder(line + "\n", 10);
    EXPECT_EQ(wholeLinesFrom(feeder.descriptor()), (WholeLines{{line, std::nullopt}}));
}

TEST(LineReaderPayload, staysInTheLineIfItIsNoBase64) {
    for (const std::string_view wrong :
         {"*", "=", "=A", "\x01", "\xFF", "\xC3\xA9", R"(\u0041)", R"(\n)", R"(\")"}) {
        const std::string line = R"({"a":")" + encoded(picture) + std::string(wrong) + "AAAAA\",\"b\":1}";
        expectWholeLines(line + "\n{}\n", {{line, std::nullopt}, {"{}", std::nullopt}});
    }
}

TEST(LineReaderPayload, isNoneIfTheLineEndsInTheString) {
    const std::string line = R"({"a":")" + encoded(picture);
    expectWholeLines(line + "\n{}\n", {{line, std::nullopt}, {"{}", std::nullopt}});
    expectWholeLines(line + "\r\n" + line, {{line, std::nullopt}, {line, std::nullopt}});
    expectWholeLines(line + "\\", {{line + "\\", std::nullopt}});
}

TEST(LineReaderPayload, givesALineThatEndsInTheStringAsSoonAsItIsWhole) {
    const Pipe pipe; // which stays open
    LineReader reader(pipe.reader(), mostKeptBytes, searchedBytes);
    for (const std::string_view rest : {"", "A", "AA", "AA="}) {
        const std::string begun = R"({"a":")" + std::string(400, 'A') + std::string(rest);
        ASSERT_TRUE(writeAll(pipe.writer(), begun));
        ASSERT_TRUE(writeAll(pipe.writer(), "\n"));
        const auto line = reader.next();
        ASSERT_TRUE(line);
        EXPECT_EQ(wholeLine(*line).text, begun);
    }
}

TEST(LineReaderPayload, isSkippedWithItsLine) {
    for (const std::size_t pieceSize : {7U, 50U, 100U}) {
        const PieceFeeder feeder(pictureLine() + "\n" + pictureLine() + "\n{}\n", pieceSize);
        LineReader reader(feeder.descriptor(), mostKeptBytes, searchedBytes);
        reader.skipLine();
        EXPECT_EQ(wholeLine(*reader.next()), (WholeLine{pictureLine(), picture}));
        EXPECT_EQ(wholeLine(*reader.next()).text, "{}");
    }
}

TEST(LineReaderPayload, outlivesItsLineAndTheReader) {
    Bytes bytes;
    {
        const PieceFeeder feeder(pictureLine() + "\n" + pictureLine() + "\n", 50);
        LineReader reader(feeder.descriptor(), mostKeptBytes, searchedBytes);
        bytes = reader.next()->payload->content.bytes;
        EXPECT_TRUE(reader.next());
    }
    EXPECT_EQ(bytes.view(), picture);
}

TEST(LineReaderPayload, isCutBehindTheLongestSize) {
    for (const std::size_t size : {mostKeptBytes - 1, mostKeptBytes, mostKeptBytes + 1, mostKeptBytes * 10}) {
        const PieceFeeder feeder(R"({"a":")" + encoded(std::string(size, 'x')) + "\"}\n", 1000);
        LineReader reader(feeder.descriptor(), mostKeptBytes, searchedBytes);
        const auto line = reader.next();
        ASSERT_TRUE(line && line->payload);
        const std::size_t kept = line->payload->content.bytes.size();
        EXPECT_GE(kept, std::min(size, mostKeptBytes + 1));
        EXPECT_LE(kept, std::min(size, mostKeptBytes + 3));
    }
}

TEST(LineReaderPayload, staysInTheLineIfThereAreNoAddressesForIt) {
    const PieceFeeder feeder(pictureLine() + "\n", 50);
    constexpr std::size_t tooMuch = SIZE_MAX / 4;
    LineReader reader(feeder.descriptor(), tooMuch, searchedBytes);
    EXPECT_EQ(wholeLine(*reader.next()), (WholeLine{pictureLine(), std::nullopt}));
}

} // namespace
} // namespace tavel
