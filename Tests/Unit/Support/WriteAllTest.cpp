#include "Support/Files.h"
#include "Tests/Unit/Fixtures/Pipe.h"
#include "Tests/Unit/Fixtures/Random.h"
#include "Tests/Unit/Fixtures/Signals.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <future>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace tavel {
namespace {

/// Reads on another thread until the write end of the pipe is closed.
std::future<std::string> drainElsewhere(const Pipe& pipe) {
    return std::async(std::launch::async, [&pipe] { return pipe.drain(); });
}

void makeSmall(const Pipe& pipe) {
#ifdef F_SETPIPE_SZ
    ASSERT_GE(fcntl(pipe.writer(), F_SETPIPE_SZ, 4096), 4096);
#else
    static_cast<void>(pipe); // the pipes of other systems cannot be made smaller
#endif
}

/// Fills the pipe, which must be non-blocking. Returns what was written.
std::string fill(const Pipe& pipe) {
    std::string taken;
    while (write(pipe.writer(), "x", 1) == 1)
        taken += 'x';
    return taken;
}

TEST(WriteAll, writesNothingForNothing) {
    Pipe pipe;
    EXPECT_TRUE(writeAll(pipe.writer(), ""));
    pipe.closeWriter();
    EXPECT_EQ(pipe.drain(), "");
}

TEST(WriteAll, writesZeroBytes) {
    Pipe pipe;
    EXPECT_TRUE(writeAll(pipe.writer(), std::string_view("a\0b\n", 4)));
    pipe.closeWriter();
    EXPECT_EQ(pipe.drain(), std::string("a\0b\n", 4));
}

TEST(WriteAll, fillsASmallPipeManyTimesOver) {
    const std::string content = Random(1).bytes(1'000'000);
    Pipe pipe;
    makeSmall(pipe);
    auto received = drainElsewhere(pipe);
    EXPECT_TRUE(writeAll(pipe.writer(), content));
    pipe.closeWriter();
    EXPECT_TRUE(received.get() == content);
}

TEST(WriteAll, waitsForADescriptorInNonBlockingMode) {
    const std::string content = Random(2).bytes(1'000'000);
    Pipe pipe;
    makeSmall(pipe);
    Pipe::setNonBlocking(pipe.writer());
    const std::string before = fill(pipe); // so that the first write has to wait
    auto received = drainElsewhere(pipe);
    EXPECT_TRUE(writeAll(pipe.writer(), content));
    pipe.closeWriter();
    EXPECT_TRUE(received.get() == before + content);
}

TEST(WriteAll, goesOnWhenASignalInterruptsIt) {
    // Blocking, and with the small non-blocking pipe: write(2) is interrupted in one, poll(2) in the other.
    for (const bool nonBlocking : {false, true}) {
        const Interruptions interruptions;
        Pipe pipe;
        Pipe::setNonBlocking(pipe.writer());
        const std::string before = fill(pipe);
        if (!nonBlocking) {
            ASSERT_EQ(fcntl(pipe.writer(), F_SETFL, 0), 0);
        }

        std::atomic<bool> done = false;
        bool written = false;
        std::thread writer([&] {
            written = writeAll(pipe.writer(), "content");
            done = true;
        });
        // Nothing reads yet, so the writer can only be interrupted.
        constexpr int times = 100;
        Interruptions::interrupt(writer, times, done);
        EXPECT_FALSE(done);
        auto received = drainElsewhere(pipe);
        writer.join();
        pipe.closeWriter();
        EXPECT_TRUE(written);
        EXPECT_GE(Interruptions::count(), times);
        EXPECT_EQ(received.get(), before + "content");
    }
}

TEST(WriteAll, tellsThatTheDescriptorIsClosed) {
    int closed = -1;
    {
        const Pipe pipe;
        closed = pipe.writer();
    }
    errno = 0;
    EXPECT_FALSE(writeAll(closed, "content"));
    EXPECT_EQ(errno, EBADF);
}

TEST(WriteAll, tellsThatNobodyReads) {
    const SignalHandler ignore(SIGPIPE, SIG_IGN);
    Pipe pipe;
    pipe.closeReader();
    errno = 0;
    EXPECT_FALSE(writeAll(pipe.writer(), "content"));
    EXPECT_EQ(errno, EPIPE);
}

TEST(WriteAll, tellsThatTheReaderWentWhileItWaited) {
    const SignalHandler ignore(SIGPIPE, SIG_IGN);
    Pipe pipe;
    Pipe::setNonBlocking(pipe.writer());
    fill(pipe);
    auto outcome = std::async(std::launch::async, [&pipe] {
        errno = 0;
        const bool written = writeAll(pipe.writer(), "content");
        return std::pair(written, errno);
    });
    pipe.closeReader();
    EXPECT_EQ(outcome.get(), std::pair(false, EPIPE));
}

} // namespace
} // namespace tavel
