#include "Linux/Base/PipeWriting.h"

#include "Linux/Base/Descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

namespace tavel {

namespace {

/// A pipe whose reader has gone.
Descriptor brokenPipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    return Descriptor(ends[1]);
}

bool isPending(int signal) {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, signal) == 1;
}

TEST(PipeWriting, toAReaderThatHasGoneRaisesNoSignal) {
    ASSERT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL) << "which ends the process";
    const Descriptor pipe = brokenPipe();
    EXPECT_EQ(writeWithoutSignal(pipe.number(), "text", 4), -1);
    EXPECT_EQ(errno, EPIPE);
    EXPECT_FALSE(isPending(SIGPIPE));
}

TEST(PipeWriting, leavesASignalThatWaitedBefore) {
    sigset_t set;
    sigset_t before;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, &before);
    raise(SIGPIPE);
    const Descriptor pipe = brokenPipe();
    EXPECT_EQ(writeWithoutSignal(pipe.number(), "text", 4), -1);
    EXPECT_EQ(errno, EPIPE);
    EXPECT_TRUE(isPending(SIGPIPE));
    constexpr timespec now{};
    EXPECT_EQ(sigtimedwait(&set, nullptr, &now), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace

} // namespace tavel
