#include "Support/LineReader.h"

#include "Support/Files.h"
#include "Tests/Unit/Fixtures/PieceFeeder.h"
#include "Tests/Unit/Fixtures/Pipe.h"
#include "Tests/Unit/Fixtures/Random.h"
#include "Tests/Unit/Fixtures/Signals.h"
#include "Tests/Unit/Fixtures/TemporaryFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <optional>
#include <semaphore>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace tavel {
namespace {

constexpr std::size_t longestPayload = 1'000'000;

std::string textOf(const LineReader::Line& line) {
    // The address sanitizer fails this unless the bytes behind the line may be read.
    const volatile char* const behind = line.text.data() + line.text.size();
    char seen = 0;
    for (std::size_t i = 0; i < LineReader::padding; ++i)
        seen = static_cast<char>(seen | behind[i]);
    static_cast<void>(seen);
    return {line.text.data(), line.text.size()};
}

std::vector<std::string> linesFrom(int descriptor) {
    LineReader reader(descriptor, longestPayload);
    std::vector<std::string> lines;
    while (const auto line = reader.next()) {
        lines.push_back(textOf(*line));
    }
    EXPECT_FALSE(reader.next()); // also when called again
    return lines;
}

std::vector<std::string> linesOf(std::string_view content) {
    const TemporaryFile file(content);
    return linesFrom(file.descriptor());
}

std::vector<std::string> naiveLinesOf(std::string_view content) {
    std::vector<std::string> lines;
    while (!content.empty()) {
        const std::size_t feed = content.find('\n');
        std::string_view line = content.substr(0, feed);
        content.remove_prefix(feed == std::string_view::npos ? content.size() : feed + 1);
        if (feed != std::string_view::npos && line.ends_with('\r'))
            line.remove_suffix(1);
        lines.emplace_back(line);
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST(LineReader, findsNoLineInNothing) {
    EXPECT_EQ(linesOf(""), Lines());
}

TEST(LineReader, endsLinesAtLineFeeds) {
    EXPECT_EQ(linesOf("a\nbc\n"), (Lines{"a", "bc"}));
}

TEST(LineReader, takesACarriageReturnOffWithTheLineFeed) {
    EXPECT_EQ(linesOf("a\r\nbc\r\n\r\n"), (Lines{"a", "bc", ""}));
}

TEST(LineReader, takesOneCarriageReturnOffAndNoMore) {
    EXPECT_EQ(linesOf("a\r\r\n\r\r\n"), (Lines{"a\r", "\r"}));
}

TEST(LineReader, doesNotEndALineAtACarriageReturnAlone) {
    EXPECT_EQ(linesOf("a\rb\n\rc\n"), (Lines{"a\rb", "\rc"}));
}

TEST(LineReader, givesEmptyLines) {
    EXPECT_EQ(linesOf("\n\n\na\n\n"), (Lines{"", "", "", "a", ""}));
}

TEST(LineReader, givesALastLineWithoutATerminator) {
    EXPECT_EQ(linesOf("a\nb"), (Lines{"a", "b"}));
    EXPECT_EQ(linesOf("x"), Lines{"x"});
}

TEST(LineReader, leavesACarriageReturnAtTheVeryEnd) {
    EXPECT_EQ(linesOf("x\r"), Lines{"x\r"});
    EXPECT_EQ(linesOf("\r"), Lines{"\r"});
}

TEST(LineReader, givesAnEmptyLineBetweenLinesWithTerminatorsOfBothKinds) {
    EXPECT_EQ(linesOf("a\r\n\nb\n"), (Lines{"a", "", "b"}));
}

TEST(LineReader, givesLinesWithZeroBytes) {
    const std::string content("a\0b\n\0\n\0", 7);
    EXPECT_EQ(linesOf(content), naiveLinesOf(content));
    EXPECT_EQ(linesOf(content).front(), std::string("a\0b", 3));
}

TEST(LineReader, readsOneByteAtATime) {
    const std::string content = "{\"a\":1}\n\r\nlong\rer\r\n\nlast\r";
    const PieceFeeder feeder(content, 1);
    EXPECT_EQ(linesFrom(feeder.descriptor()), naiveLinesOf(content));
}

TEST(LineReader, readsALineFeedApartFromItsCarriageReturn) {
    const PieceFeeder feeder("abc\r\ndef\r\n", 4); // the second piece begins with the line feed
    EXPECT_EQ(linesFrom(feeder.descriptor()), (Lines{"abc", "def"}));
}

TEST(LineReader, givesEachLineAsSoonAsItIsWhole) {
    // The pipe holds nothing behind the line, so a reader that needs more input would wait forever.
    const Pipe pipe;
    LineReader reader(pipe.reader(), longestPayload);
    for (const std::string_view text : {"first", "", "third"}) {
        ASSERT_TRUE(writeAll(pipe.writer(), std::string(text) + "\n"));
        const auto line = reader.next();
        ASSERT_TRUE(line);
        EXPECT_EQ(textOf(*line), text);
    }
}

TEST(LineReader, givesLinesAroundTheSizesAtWhichItsBufferGrows) {
    constexpr std::size_t kibibyte = 1024;
    for (const std::size_t edge :
         {16 * kibibyte, 48 * kibibyte, 64 * kibibyte, 112 * kibibyte, 128 * kibibyte, 240 * kibibyte,
          256 * kibibyte, 512 * kibibyte, 1024 * kibibyte}) {
        for (std::size_t size = edge - 2; size <= edge + 2; ++size) {
            // Different letters, so that a wrongly assembled line differs.
            std::string content;
            for (std::size_t i = 0; i < size; ++i)
                content += static_cast<char>('a' + i % 23);
            content += "\nafter\r\n" + std::string(size / 2, 'y') + "\nend";
            ASSERT_TRUE(linesOf(content) == naiveLinesOf(content)) << size;
        }
    }
}

TEST(LineReader, givesManyShortLines) {
    std::string content;
    for (int i = 0; i < 100'000; ++i)
        content += std::to_string(i) + (i % 3 == 0 ? "\r\n" : "\n");
    EXPECT_TRUE(linesOf(content) == naiveLinesOf(content));
}

TEST(LineReader, givesRandomLinesInRandomPieces) {
    Random random(1);
    for (int round = 0; round < 40; ++round) {
        std::string content;
        for (std::size_t left = random.below(60); left > 0; --left) {
            const std::size_t size = random.below(10) == 0 ? random.below(200'000) : random.below(300);
            content += std::string(size, static_cast<char>('a' + left % 26));
            constexpr std::array<std::string_view, 4> terminators{"\n", "\r\n", "\n\n", "\r"};
            content += random.oneOf(std::span(terminators));
        }
        const PieceFeeder feeder(content, 1 + random.below(round % 2 == 0 ? 200 : 8000));
        ASSERT_TRUE(linesFrom(feeder.descriptor()) == naiveLinesOf(content)) << "round " << round;
    }
}

TEST(LineReader, lendsALineThatMayBeChanged) {
    for (const std::size_t size : {std::size_t{10}, std::size_t{100'000}}) {
        const TemporaryFile file(std::string(size, 'x') + "\nnext\r\nlast");
        LineReader reader(file.descriptor(), longestPayload);
        const auto line = reader.next();
        ASSERT_TRUE(line);
        for (char& c : line->text)
            c = '\n';
        const auto next = reader.next();
        ASSERT_TRUE(next);
        EXPECT_EQ(textOf(*next), "next");
        const auto last = reader.next();
        ASSERT_TRUE(last);
        EXPECT_EQ(textOf(*last), "last");
    }
}

TEST(LineReader, skipsTheNextLineWhateverItsLength) {
    for (const std::size_t length : {0U, 1U, 65'535U, 65'536U, 1'000'000U, 9'000'000U}) {
        const std::string line(length, 'a');
        const TemporaryFile file("first\n" + line + "\nthird\n\n" + line + "\n" + line);
        LineReader reader(file.descriptor(), longestPayload);
        EXPECT_EQ(textOf(*reader.next()), "first");
        reader.skipLine();
        EXPECT_EQ(textOf(*reader.next()), "third");
        EXPECT_EQ(textOf(*reader.next()), "");
        EXPECT_TRUE(textOf(*reader.next()) == line);
        reader.skipLine();
        EXPECT_FALSE(reader.next());
        reader.skipLine();
        EXPECT_FALSE(reader.next());
    }
}

TEST(LineReader, takesAReadErrorForTheEnd) {
    const Pipe pipe;
    LineReader reader(pipe.writer(), longestPayload); // cannot be read from
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.next());
}

TEST(LineReader, givesWhatCameBeforeAReadError) {
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    ASSERT_TRUE(writeAll(ends[1], "whole\npart"));
    // A peer that closes with unread data resets the connection.
    ASSERT_TRUE(writeAll(ends[0], "unread"));
    close(ends[1]);
    EXPECT_EQ(linesFrom(ends[0]), (Lines{"whole", "part"}));
    close(ends[0]);
}

TEST(LineReader, waitsOnADescriptorInNonBlockingMode) {
    const Pipe pipe;
    Pipe::setNonBlocking(pipe.reader());
    constexpr int rounds = 200;
    std::binary_semaphore wanted(0);
    std::thread writer([&] {
        for (int round = 0; round < rounds; ++round) {
            wanted.acquire(); // the pipe is empty, and the reader is about to read it
            EXPECT_TRUE(writeAll(pipe.writer(), std::to_string(round)));
            EXPECT_TRUE(writeAll(pipe.writer(), "\n"));
        }
    });
    LineReader reader(pipe.reader(), longestPayload);
    int received = 0;
    for (; received < rounds; ++received) {
        wanted.release();
        const auto line = reader.next();
        if (!line || textOf(*line) != std::to_string(received))
            break;
    }
    EXPECT_EQ(received, rounds);
    for (int round = received + 1; round < rounds; ++round)
        wanted.release(); // lets the writer end even after a failure
    writer.join();
}

TEST(LineReader, goesOnWhenASignalInterruptsIt) {
    for (const bool nonBlocking : {false, true}) {
        const Interruptions interruptions;
        const Pipe pipe;
        if (nonBlocking)
            Pipe::setNonBlocking(pipe.reader());
        std::atomic<bool> done = false;
        std::string text;
        std::thread thread([&] {
            LineReader reader(pipe.reader(), longestPayload);
            const auto line = reader.next();
            text = line ? textOf(*line) : "nothing";
            done = true;
        });
        // Nothing is written yet, so the reader can only be interrupted.
        constexpr int times = 100;
        Interruptions::interrupt(thread, times, done);
        EXPECT_FALSE(done);
        EXPECT_TRUE(writeAll(pipe.writer(), "line\n"));
        thread.join();
        EXPECT_EQ(text, "line");
    }
}

} // namespace
} // namespace tavel
