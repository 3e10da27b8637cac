#include "Linux/Base/ParentWatch.h"

#include "Tests/Base/TestedEventLoop.h"
#include "Tests/Support/RefusedSystemCall.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/Pipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <functional>
#include <memory>
#include <string>

namespace tavel {

namespace {

using namespace std::chrono_literals;

/// Runs `child` in a process whose parent, a process of its own as well, runs `parent` and ends then. Gives
/// what the child returns, or the reason why it failed.
std::string resultOfChild(const std::function<std::string(pid_t parent)>& child,
                          const std::function<void()>& parent) {
    Pipe pipe;
    const auto status = exitStatusOf([&] {
        const pid_t parentNumber = getpid();
        if (fork() != 0) {
            parent();
            return 0;
        }
        alarm(60); // ends the process, so that the pipe closes, if it waits for what does not come
        std::string result;
        try {
            result = child(parentNumber);
        } catch (const std::exception& error) {
            result = error.what();
        }
        return write(pipe.writer(), result.data(), result.size()) < 0 ? 1 : 0;
    });
    pipe.closeWriter();
    return status == 0 ? pipe.drain() : "The parent failed.";
}

/// Counts the calls of `lost` that the loop makes.
class WatchedParent {
public:
    bool start(std::int32_t processIdentifier) {
        return watch_.start(processIdentifier, [this] { ++losses_; });
    }

    int losses() const { return losses_; }

    int lossesAfterPasses() {
        for (int pass = 0; pass < 3; ++pass)
            loop_->runOnce(0ms);
        return losses_;
    }

    int lossesAfterTheFirst() {
        runUntil(*loop_, [this] { return losses_ > 0; });
        return lossesAfterPasses();
    }

private:
    std::unique_ptr<EventLoop> loop_ = makeTestedEventLoop();
    ParentWatch watch_{*loop_};
    int losses_ = 0;
};

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        count += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
    return count;
}

/// Watches this process's own parent, which lives. 0 if the watch is refused and leaves nothing behind.
int watchRefused() {
    WatchedParent watched;
    const int before = openDescriptors();
    const bool isWatched = watched.start(getppid());
    return !isWatched && openDescriptors() == before && watched.lossesAfterPasses() == 0 ? 0 : 1;
}

} // namespace

TEST(ParentWatch, tellsOnceThatTheParentHasEndedAndNotBefore) {
    Pipe watching;
    EXPECT_EQ(resultOfChild(
                  [&](pid_t parent) {
                      WatchedParent watched;
                      std::string result = watched.start(parent) ? "watched " : "refused ";
                      result += std::to_string(watched.lossesAfterPasses()) + ' ';
                      if (write(watching.writer(), "x", 1) != 1)
                          return std::string("The parent cannot be told to end.");
                      return result + std::to_string(watched.lossesAfterTheFirst());
                  },
                  [&] {
                      char told = 0;
                      static_cast<void>(!read(watching.reader(), &told, 1));
                  }),
              "watched 0 1");
}

TEST(ParentWatch, tellsOfAParentThatEndedBefore) {
    EXPECT_EQ(resultOfChild(
                  [](pid_t parent) {
                      while (kill(parent, 0) == 0) // until the test has collected its exit status
                          usleep(1000);
                      WatchedParent watched;
                      std::string result = watched.start(parent) ? "watched " : "refused ";
                      result += std::to_string(watched.losses()) + ' ';
                      return result + std::to_string(watched.lossesAfterTheFirst());
                  },
                  [] {}),
              "watched 0 1");
}

TEST(ParentWatch, tellsOfAProcessThatLivesAndIsNotTheParent) {
    WatchedParent watched;
    EXPECT_TRUE(watched.start(getpid()));
    EXPECT_EQ(watched.losses(), 0) << "not during the call";
    EXPECT_EQ(watched.lossesAfterTheFirst(), 1);
}

TEST(ParentWatch, leavesItsDescriptorToNoOtherProgram) {
    EXPECT_EQ(exitStatusOf([] {
                  const int free = open("/", O_RDONLY);
                  close(free);
                  WatchedParent watched;
                  return watched.start(getppid()) && fcntl(free, F_GETFD) == FD_CLOEXEC ? 0 : 1;
              }),
              0);
}

TEST(ParentWatch, isRefusedWhereTheKernelHasNoSuchCall) {
    for (const int error : {ENOSYS, EPERM}) {
        EXPECT_EQ(exitStatusOf([error] {
                      refuseSystemCall(SYS_pidfd_open, error);
                      return watchRefused();
                  }),
                  0)
            << error;
    }
}

TEST(ParentWatch, isRefusedWithoutADescriptorToSpare) {
    EXPECT_EQ(exitStatusOf([] {
                  const auto loop = makeTestedEventLoop();
                  ParentWatch watch(*loop);
                  rlimit usual{};
                  getrlimit(RLIMIT_NOFILE, &usual);
                  const rlimit none{0, usual.rlim_max};
                  setrlimit(RLIMIT_NOFILE, &none);
                  const bool isWatched = watch.start(getppid(), [] {});
                  setrlimit(RLIMIT_NOFILE, &usual); // the sanitizers' checks need descriptors
                  return isWatched ? 1 : 0;
              }),
              0);
}

TEST(ParentWatch, isRefusedForAParentOutsideOfTheNamespace) {
    WatchedParent watched;
    EXPECT_FALSE(watched.start(0));
}

} // namespace tavel
