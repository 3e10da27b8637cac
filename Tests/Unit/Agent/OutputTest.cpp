#include "TavelClipboardAgent/main/Protocol/Output.h"

#include "Support/Process.h"
#include "Tests/Unit/Fixtures/Pipe.h"
#include "Tests/Unit/Fixtures/Signals.h"
#include "Tests/Unit/Fixtures/TemporaryFile.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tavel {
namespace {

AgentMessage message(const std::string& text) {
    return event::Log{"warning", text};
}

/// `escapedText` is the text as JSON writes it.
std::string lineWith(const std::string& escapedText) {
    return R"({"event":"log","level":"warning","message":")" + escapedText + "\"}\n";
}

TEST(Output, writesEachMessageAsOneLineAtOnce) {
    const TemporaryFile file;
    Output output(file.descriptor());
    output.emit(message("a\nb"));
    EXPECT_EQ(file.contentFrom(0), lineWith(R"(a\nb)"));
    output.emit(message("c"));
    EXPECT_EQ(file.contentFrom(0), lineWith(R"(a\nb)") + lineWith("c"));
}

TEST(Output, writesNothingOfAMessageThatIsNotValid) {
    const TemporaryFile file;
    Output output(file.descriptor());
    output.emit(message("caf\xE9"));
    EXPECT_EQ(file.contentFrom(0), "");
    output.emit(message("café"));
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
    output.emit(message("lost too")); // the lock is free again
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
