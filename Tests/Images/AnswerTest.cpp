#include "Tests/Images/AttackTest.h"
#include "Tests/Support/RefusedSystemCall.h"

#include <sys/resource.h>
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <thread>

namespace tavel {
namespace {

/// What the agent makes of programs that answer wrongly, late or not at all.
class ImageAnswers : public AttackTest {
protected:
    static std::unique_ptr<ProcessImageCodec> makeCodec(ImageTimeLimits limits = {}) {
        return std::make_unique<ProcessImageCodec>(
            [](const std::string& message) { ADD_FAILURE() << message; }, lockedProgram, limits);
    }
};

TEST_F(ImageAnswers, areTakenIfTheyMakeSense) {
    const Bytes order = pictureWith("answer 99");
    EXPECT_EQ(makeCodec()->encodePng(order)->size(), 1U);
    EXPECT_EQ(makeCodec()->encodeJpeg(order, 0.8)->size(), 1U);
    EXPECT_EQ(makeCodec()->hasAlpha(order), true);
    EXPECT_EQ(makeCodec()->measure(heifWith("answer 99"))->width, 1);
}

TEST_F(ImageAnswers, areRefusedIfTheyMakeNone) {
    for (int number = 0; number <= 6; ++number) {
        const std::string order = "answer " + std::to_string(number);
        EXPECT_FALSE(makeCodec()->encodePng(pictureWith(order))) << number;
        EXPECT_FALSE(makeCodec()->encodeJpeg(pictureWith(order), 0.8)) << number;
        EXPECT_FALSE(makeCodec()->hasAlpha(pictureWith(order))) << number;
        EXPECT_FALSE(makeCodec()->measure(heifWith(order))) << number;
    }
}

TEST_F(ImageAnswers, ofAProgramThatASignalEndsAreRefused) {
    for (const int number : {SIGHUP, SIGILL, SIGTRAP, SIGABRT, SIGBUS, SIGFPE, SIGKILL, SIGSEGV, SIGSYS,
                             SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ})
        EXPECT_EQ(locked("die-by " + std::to_string(number)), std::nullopt) << number;
}

TEST_F(ImageAnswers, thatComeTooLateAreNotAwaited) {
    constexpr std::chrono::milliseconds limit{500};
    EXPECT_EQ(locked("spin", limit), std::nullopt);
    EXPECT_EQ(locked("die-by " + std::to_string(SIGSTOP), limit), std::nullopt);
}

TEST_F(ImageAnswers, toHeaderQuestionsHaveLessTime) {
    constexpr ImageTimeLimits limits{std::chrono::hours(1), std::chrono::milliseconds(500)};
    EXPECT_FALSE(makeCodec(limits)->measure(heifWith("spin")));
}

TEST_F(ImageAnswers, keepAThirdCallWaitingWithinItsTime) {
    const auto codec = makeCodec({std::chrono::seconds(3), std::chrono::seconds(1)});
    std::thread first([&] { EXPECT_FALSE(codec->hasAlpha(pictureWith("spin"))); });
    std::thread second([&] { EXPECT_FALSE(codec->hasAlpha(pictureWith("spin"))); });
    while (children().size() < 2)
        std::this_thread::yield();
    EXPECT_FALSE(codec->measure(heifWith("answer 99"))) << "a third program ran";
    first.join();
    second.join();
    EXPECT_TRUE(codec->measure(heifWith("answer 99")));
}

TEST_F(ImageAnswers, areAwaitedOnKernelsWithoutProcessDescriptors) {
    refuseSystemCall(SYS_pidfd_open, ENOSYS);
    EXPECT_TRUE(makeCodec()->encodePng(pictureWith("answer 99")));
    EXPECT_EQ(locked("spin", std::chrono::milliseconds(500)), std::nullopt);
}

TEST_F(ImageAnswers, areNoneIfThereIsNoMemoryForFiles) {
    refuseSystemCall(SYS_memfd_create, ENFILE);
    EXPECT_FALSE(makeCodec()->encodePng(pictureWith("answer 99")));
}

TEST_F(ImageAnswers, areNoneIfThereIsNoRoomForAProcess) {
#ifdef TAVEL_SANITIZED
    GTEST_SKIP() << "A sanitizer starts a process itself to look for leaks.";
#endif
    refuseSystemCall(SYS_clone3, ENOSYS);
    refuseSystemCall(SYS_clone, EAGAIN);
    EXPECT_FALSE(makeCodec()->encodePng(pictureWith("answer 99")));
}

TEST_F(ImageAnswers, areNoneIfAFileMayNotBeAsLarge) {
    const rlimit small{std::size_t{64} << 20, RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(makeCodec()->encodePng(pictureWith("answer 99")));
}

} // namespace
} // namespace tavel
