#include "TavelClipboardAgent/main/Protocol/Output.h"

#include "Support/Process.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Unit/Fixtures/Pipe.h"
#include "Tests/Unit/Fixtures/Signals.h"
#include "Tests/Unit/Fixtures/TemporaryFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tavel {
namespace {

constexpr std::chrono::seconds deadline(30);

AgentMessage message(const std::string& text) {
    return event::Log{"warning", text};
}

/// `escapedText` is the text as JSON writes it.
std::string lineWith(const std::string& escapedText) {
    return R"({"event":"log","level":"warning","message":")" + escapedText + "\"}\n";
}

TEST(Output, writesEachMessageAsOneLine) {
    const TemporaryFile file;
    Output output(file.descriptor());
    output.emit(message("a\nb"));
    ASSERT_TRUE(output.waitUntilWritten(deadline));
    EXPECT_EQ(file.contentFrom(0), lineWith(R"(a\nb)"));
    output.emit(message("c"));
    ASSERT_TRUE(output.waitUntilWritten(deadline));
    EXPECT_EQ(file.contentFrom(0), lineWith(R"(a\nb)") + lineWith("c"));
}

TEST(Output, writesNothingOfAMessageThatIsNotValid) {
    const TemporaryFile file;
    Output output(file.descriptor());
    output.emit(message("caf\xE9"));
    EXPECT_EQ(file.contentFrom(0), "");
    output.emit(message("café"));
    ASSERT_TRUE(output.waitUntilWritten(deadline));
    EXPECT_EQ(file.contentFrom(0), lineWith("café"));
}

TEST(Output, neverMixesTheLinesOfTwoThreads) {
    // Longer than a pipe's capacity, so that lines would interleave without the lock.
    constexpr std::size_t length = 100'000;
    constexpr int rounds = 50;
    Pipe pipe;
    Output output(pipe.writer());
    auto received = std::async(std::launch::async, [&pipe] { return pipe.drain(); });
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b'}) {
        threads.emplace_back([&output, letter] {
            for (int round = 0; round < rounds; ++round)
                output.emit(message(std::string(length, letter)));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_TRUE(output.waitUntilWritten(deadline));
    pipe.closeWriter();

    const std::string text = received.get();
    std::array<int, 2> lines{};
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start);
        ASSERT_NE(end, std::string::npos);
        const std::string line = text.substr(start, end + 1 - start);
        const bool isSecond = line.find("bb") != std::string::npos;
        ASSERT_TRUE(line == lineWith(std::string(length, isSecond ? 'b' : 'a')));
        ++lines.at(isSecond ? 1 : 0);
        start = end + 1;
    }
    EXPECT_EQ(lines, (std::array{rounds, rounds}));
}

TEST(Output, dropsWhatCannotBeWritten) {
    const Pipe pipe;
    Output output(pipe.reader());
    output.emit(message("lost"));
    output.emit(message("lost too"));
    EXPECT_TRUE(output.waitUntilWritten(deadline));
}

TEST(Output, neverWaitsForAReader) {
    constexpr std::size_t length = 2'000'000; // more than the pipe holds when it is enlarged
    Pipe pipe;
    Output output(pipe.writer());
    for (const char letter : {'a', 'b', 'c'})
        output.emit(message(std::string(length, letter)));
    EXPECT_EQ(output.queuedLines(), 3U);
    EXPECT_FALSE(output.hasWritten(1));
    EXPECT_FALSE(output.waitUntilWritten(std::chrono::milliseconds(1)));

    auto received = std::async(std::launch::async, [&pipe] { return pipe.drain(); });
    ASSERT_TRUE(output.waitUntilWritten(deadline));
    EXPECT_TRUE(output.hasWritten(3));
    pipe.closeWriter();
    EXPECT_TRUE(received.get() == lineWith(std::string(length, 'a')) + lineWith(std::string(length, 'b')) +
                                      lineWith(std::string(length, 'c')));
}

TEST(Output, tellsAReaderThatIsSlowFromNone) {
    Pipe pipe;
    Output output(pipe.writer());
    output.emit(message(std::string(6'000'000, 'a')));
    std::array<char, 65536> piece{};
    const std::uint64_t before = output.progress();
    const auto isMoving = [&] { return output.progress() > before + 20; };
    for (int reads = 0; reads < 30; ++reads)
        ASSERT_GT(read(pipe.reader(), piece.data(), piece.size()), 0);
    waitUntil(isMoving, deadline);
    EXPECT_FALSE(output.hasWritten(1));
    auto rest = std::async(std::launch::async, [&pipe] { return pipe.drain(); });
    ASSERT_TRUE(output.waitUntilWritten(deadline));
    pipe.closeWriter();
}

TEST(Output, writesWhatWaitsBeforeItsEnd) {
    const TemporaryFile file;
    {
        Output output(file.descriptor());
        output.emit(message("a"));
        output.emit(message("b"));
    }
    EXPECT_EQ(file.contentFrom(0), lineWith("a") + lineWith("b"));
}

void emitToNobody() {
    Pipe pipe;
    pipe.closeReader();
    Output output(pipe.writer());
    output.emit(message("lost"));
}

TEST(Output, endsTheProcessWhenNobodyReads) {
    EXPECT_EXIT(emitToNobody(), testing::KilledBySignal(SIGPIPE), "");
}

TEST(Output, endsTheProcessWhenNobodyReadsThoughALibraryIgnoresTheSignal) {
    const SignalHandler ignore(SIGPIPE, SIG_IGN);
    EXPECT_EXIT(emitToNobody(), testing::KilledBySignal(SIGPIPE), "");
}

void emitToNobodyWithTheSignalBlocked() {
    blockBrokenPipeSignal();
    emitToNobody();
}

TEST(Output, endsTheProcessWhenNobodyReadsThoughTheSignalIsBlocked) {
    EXPECT_EXIT(emitToNobodyWithTheSignalBlocked(), testing::KilledBySignal(SIGPIPE), "");
}

} // namespace
} // namespace tavel
