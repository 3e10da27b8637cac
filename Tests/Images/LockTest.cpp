#include "Tests/Images/AttackTest.h"

#include <gmock/gmock.h>
#include <sys/prctl.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace tavel {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ImageLock : public AttackTest {
protected:
    /// Starts a conversion that never ends, and returns that file of /proc about its process.
    static std::string ofLockedProcess(const std::string& name) {
        constexpr std::chrono::seconds enough{3};
        std::thread conversion([&] { EXPECT_FALSE(locked("spin", enough)); });
        std::string content;
        while (content.find("Seccomp:\t2") == std::string::npos) {
            const auto processes = children();
            std::ifstream status("/proc/" + (processes.empty() ? "none" : processes.front()) + "/status");
            content.assign(std::istreambuf_iterator<char>(status), {});
        }
        std::ifstream file("/proc/" + children().front() + "/" + name);
        content.assign(std::istreambuf_iterator<char>(file), {});
        conversion.join();
        return content;
    }
};

class StoppedByTheLock : public ImageLock, public testing::WithParamInterface<const char*> {};

TEST_P(StoppedByTheLock, andPossibleWithoutIt) {
    static constexpr char secret[] = "secret";
    prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY); // some systems let only ancestors read a process
    const std::string order = GetParam() + (" " + std::to_string(reinterpret_cast<std::uintptr_t>(&secret)));
    EXPECT_EQ(unlocked(order), true);
    EXPECT_EQ(locked(order), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(ImageLock, StoppedByTheLock,
                         testing::Values("open-file", "connect", "fork", "execute", "write-to-standard-error",
                                         "read-agent", "open-agent", "signal-agent", "map-code",
                                         "turn-data-into-code"));

TEST_F(ImageLock, boundsTheMemory) {
#ifdef TAVEL_SANITIZED
    GTEST_SKIP() << "A sanitizer reserves more than any bound for itself.";
#endif
    const std::string order = "allocate " + std::to_string(std::uint64_t{8} << 30);
    EXPECT_EQ(unlocked(order), true);
    EXPECT_EQ(locked(order), std::nullopt);
}

TEST_F(ImageLock, leavesWhatDecodersDo) {
    EXPECT_EQ(locked("complain"), true);
    EXPECT_EQ(locked("start-thread"), true);
    EXPECT_EQ(locked("allocate 1000000000"), true);
}

TEST_F(ImageLock, isTheKernelsOwn) {
    const std::string status = ofLockedProcess("status");
    EXPECT_THAT(status, HasSubstr("\nSeccomp:\t2\n"));
    EXPECT_THAT(status, HasSubstr("\nNoNewPrivs:\t1\n"));
}

/// The soft and the hard limit of that name, as /proc/PID/limits has them.
std::string limitOf(const std::string& limits, const std::string& name) {
    std::istringstream line(limits.substr(limits.find("\n" + name) + 1 + name.size()));
    std::string soft;
    std::string hard;
    line >> soft >> hard;
    return soft + " " + hard;
}

TEST_F(ImageLock, setsLimits) {
    const std::string limits = ofLockedProcess("limits");
    EXPECT_EQ(limitOf(limits, "Max cpu time"), "60 60");
    EXPECT_EQ(limitOf(limits, "Max file size"), "0 0");
    EXPECT_EQ(limitOf(limits, "Max core file size"), "0 0");
#ifndef TAVEL_SANITIZED // a sanitizer opens pipes to itself, and reserves more addresses
    EXPECT_EQ(limitOf(limits, "Max address space"), "4294967296 4294967296");
    EXPECT_EQ(limitOf(limits, "Max open files"), "0 0");
#endif
}

TEST_F(ImageLock, findsNothingInherited) {
    const int left = dup(STDOUT_FILENO); // not closed on exec
    setenv("TAVEL_TEST_VARIABLE", "x", 1);
    setenv("LD_LIBRARY_PATH", "/nowhere", 1);
    std::signal(SIGUSR1, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    ProcessImageCodec codec([](const std::string& message) { ADD_FAILURE() << message; }, unlockedProgram);
    const auto report = codec.encodePng(pictureWith("report"));
    close(left);
    ASSERT_TRUE(report);
    std::istringstream lines{std::string(report->view())};
    std::vector<std::string> open;
    std::vector<std::string> variables;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("/") && !line.starts_with("/proc/"))
            open.push_back(line);
        else if (line.starts_with("variable ") && line.find("SAN_OPTIONS") == std::string::npos)
            variables.push_back(line);
        else if (line.starts_with("SigBlk") || line.starts_with("SigIgn"))
            EXPECT_THAT(line, testing::EndsWith("0000000")) << "of the signals that a program can use";
        else
            EXPECT_THAT(line, Not(StartsWith("pipe:")));
    }
    EXPECT_THAT(open, testing::ElementsAre("/dev/null", "/dev/null", "/dev/null"));
    EXPECT_THAT(variables, testing::UnorderedElementsAre("variable LD_LIBRARY_PATH=/nowhere"));
}

} // namespace
} // namespace tavel
