#include "Support/Process.h"

#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/Pipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <thread>

namespace tavel {
namespace {

TEST(Process, knowsItsParent) {
    const auto parent = getpid();
    EXPECT_EQ(exitStatusOf([parent] { return parentProcessIdentifier() == parent ? 0 : 1; }), 0);
}

TEST(Process, seesAnotherParentWhenItsOwnHasEnded) {
    Pipe pipe;
    const auto status = exitStatusOf([&pipe] {
        const pid_t parent = getpid();
        if (fork() == 0) {
            alarm(20); // ends the process, so that the pipe closes, if no change of the parent is seen
            while (parentProcessIdentifier() == parent)
                std::this_thread::yield();
            static_cast<void>(!write(pipe.writer(), "orphan", 6));
            _exit(0);
        }
        return 0;
    });
    ASSERT_EQ(status, 0);
    pipe.closeWriter();
    EXPECT_EQ(pipe.drain(), "orphan");
}

TEST(Process, lowersItsPriorityToNiceTen) {
    if (getpriority(PRIO_PROCESS, 0) > 10)
        GTEST_SKIP() << "This process already has a lower priority, and may not raise it";
    EXPECT_EQ(exitStatusOf([] {
                  lowerSchedulingPriority();
                  return getpriority(PRIO_PROCESS, 0);
              }),
              10);
}

TEST(Process, leavesNoCoreDump) {
    EXPECT_EQ(exitStatusOf([] {
                  disableCoreDumps();
                  rlimit limit{1, 1};
                  return getrlimit(RLIMIT_CORE, &limit) == 0 && limit.rlim_cur == 0 && limit.rlim_max == 0
                             ? 0
                             : 1;
              }),
              0);
}

/// The files at the descriptors 0 to 2 of a process.
struct Standing {
    std::array<struct stat, 3> status{};
    std::array<bool, 3> open{};

    static Standing now() {
        Standing standing;
        for (int descriptor = 0; descriptor < 3; ++descriptor) {
            const auto index = static_cast<std::size_t>(descriptor);
            standing.open.at(index) = fstat(descriptor, &standing.status.at(index)) == 0;
        }
        return standing;
    }

    bool isSame(const Standing& other, std::size_t index) const {
        return open.at(index) && other.open.at(index) &&
               status.at(index).st_dev == other.status.at(index).st_dev &&
               status.at(index).st_ino == other.status.at(index).st_ino;
    }

    bool isNullDevice(std::size_t index) const {
        struct stat device {};
        return open.at(index) && stat("/dev/null", &device) == 0 && S_ISCHR(status.at(index).st_mode) &&
               status.at(index).st_rdev == device.st_rdev;
    }
};

int lowestFreeDescriptor() {
    const int descriptor = open("/", O_RDONLY);
    close(descriptor);
    return descriptor;
}

constexpr int keptOpen = 0;
constexpr int changedOne = 1;
constexpr int leftClosed = 2;
constexpr int notBothWays = 3;
constexpr int leaked = 4;

/// Puts an end of the pipe on the descriptors from 0 to 2, but closes each whose bit is set. Gives the lowest
/// free descriptor above them.
int standOnPipe(unsigned closed, const Pipe& pipe) {
    for (int descriptor = 0; descriptor < 3; ++descriptor)
        dup2(pipe.writer(), descriptor);
    const int free = lowestFreeDescriptor();
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        if ((closed >> descriptor & 1U) != 0)
            close(descriptor);
    }
    return free;
}

int reserveWithClosed(unsigned closed, const Pipe& pipe) {
    const int free = standOnPipe(closed, pipe);
    const Standing before = Standing::now();
    reserveStandardDescriptors();
    const Standing after = Standing::now();
    for (std::size_t index = 0; index < 3; ++index) {
        if (before.open.at(index)) {
            if (!after.isSame(before, index))
                return changedOne;
            continue;
        }
        if (!after.isNullDevice(index))
            return leftClosed;
        if ((fcntl(static_cast<int>(index), F_GETFL) & O_ACCMODE) != O_RDWR)
            return notBothWays;
    }
    return lowestFreeDescriptor() == free ? keptOpen : leaked;
}

TEST(Process, putsTheNullDeviceOnEveryClosedStandardDescriptor) {
    const Pipe pipe;
    for (unsigned closed = 0; closed < 8; ++closed)
        EXPECT_EQ(exitStatusOf([&] { return reserveWithClosed(closed, pipe); }), keptOpen)
            << "closed: " << closed;
}

bool isPrivate(int descriptor) {
    return descriptor > STDERR_FILENO && (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}

/// The file at a descriptor that stood at the standard number before: the same, or the null device if that
/// number was closed.
bool leadsWhere(int descriptor, const Standing& before, std::size_t index) {
    dup2(descriptor, static_cast<int>(index));
    const Standing now = Standing::now();
    return before.open.at(index) ? now.isSame(before, index) : now.isNullDevice(index);
}

constexpr int notInherited = 5;
constexpr int notPrivate = 6;
constexpr int elsewhere = 7;

int takeWithClosed(unsigned closed, const Pipe& pipe) {
    const int free = standOnPipe(closed, pipe);
    const Standing before = Standing::now();
    const StandardPipes pipes = takeStandardPipes();
    const Standing after = Standing::now();
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        if (!after.isNullDevice(static_cast<std::size_t>(descriptor)))
            return changedOne;
        if ((fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_RDWR)
            return notBothWays;
        if ((fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0)
            return notInherited;
    }
    if (!isPrivate(pipes.input) || !isPrivate(pipes.output))
        return notPrivate;
    if (!leadsWhere(pipes.input, before, STDIN_FILENO) || !leadsWhere(pipes.output, before, STDOUT_FILENO))
        return elsewhere;
    close(pipes.input);
    close(pipes.output);
    return lowestFreeDescriptor() == free ? keptOpen : leaked;
}

TEST(Process, takesItsPipesAndPutsTheNullDeviceInTheirPlace) {
    const Pipe pipe;
    for (unsigned closed = 0; closed < 8; ++closed)
        EXPECT_EQ(exitStatusOf([&] { return takeWithClosed(closed, pipe); }), keptOpen)
            << "closed: " << closed;
}

TEST(Process, keepsItsPipesWhereTheyAreWithoutADescriptorToSpare) {
    const Pipe pipe;
    EXPECT_EQ(exitStatusOf([&] {
                  for (int descriptor = 0; descriptor < 3; ++descriptor)
                      dup2(pipe.writer(), descriptor);
                  const Standing before = Standing::now();
                  const rlimit onlyThree{3, 3};
                  setrlimit(RLIMIT_NOFILE, &onlyThree);
                  const StandardPipes pipes = takeStandardPipes();
                  const Standing after = Standing::now();
                  const bool same = after.isSame(before, 0) && after.isSame(before, 1);
                  return same && pipes.input == STDIN_FILENO && pipes.output == STDOUT_FILENO ? 0 : 1;
              }),
              0);
}

/// Writes to a pipe that nobody reads. 0 if the write failed.
int writeToNobody() {
    Pipe pipe;
    pipe.closeReader();
    return write(pipe.writer(), "x", 1) < 0 && errno == EPIPE ? 0 : 1;
}

TEST(Process, survivesAWriteToNobodyOnceTheSignalIsBlocked) {
    EXPECT_EXIT(_exit(writeToNobody()), testing::KilledBySignal(SIGPIPE), "");
    EXPECT_EQ(exitStatusOf([] {
                  blockBrokenPipeSignal();
                  int ofThread = 1;
                  std::thread([&] { ofThread = writeToNobody(); }).join();
                  return ofThread + writeToNobody();
              }),
              0);
}

} // namespace
} // namespace tavel
