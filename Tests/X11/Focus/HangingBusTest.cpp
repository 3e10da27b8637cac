#include "Tests/X11/Focus/FocusDesktop.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace tavel {

namespace {

/// Enough for a second's work on a busy machine, but short enough to detect a hang.
constexpr std::chrono::seconds bounded{10};

void expectGivenUp(FocusDesktop& desktop) {
    const auto begin = std::chrono::steady_clock::now();
    desktop.probe().follow(true);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, bounded);
    EXPECT_FALSE(desktop.probe().isTrusted());
    EXPECT_EQ(desktop.probe().focusedRole(getpid()), std::nullopt);
}

/// Stops a process while this object exists.
class Stopped {
public:
    explicit Stopped(pid_t process) : process_(process) { kill(process_, SIGSTOP); }
    ~Stopped() { kill(process_, SIGCONT); }
    Stopped(const Stopped&) = delete;
    Stopped& operator=(const Stopped&) = delete;

private:
    pid_t process_;
};

/// A socket that accepts connections and never answers.
class SilentSocket {
public:
    SilentSocket(const std::string& path) : number_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        if (bind(number_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
            listen(number_, SOMAXCONN) != 0)
            throw std::runtime_error("There is no socket at " + path);
    }
    ~SilentSocket() { close(number_); }
    SilentSocket(const SilentSocket&) = delete;
    SilentSocket& operator=(const SilentSocket&) = delete;

private:
    int number_;
};

TEST(HangingBus, thatTakesConnectionsAndSaysNothingIsGivenUp) {
    FocusDesktop desktop;
    const SilentSocket bus(desktop.directory().runtimeDirectory() / "bus");
    expectGivenUp(desktop);
    expectGivenUp(desktop);
}

TEST(HangingBus, ofTheSessionIsGivenUp) {
    FocusDesktop desktop;
    TestAccessibilityBus& buses = desktop.startBuses();
    {
        const Stopped stopped(buses.session());
        expectGivenUp(desktop);
    }
    desktop.probe().follow(true);
    EXPECT_TRUE(desktop.probe().isTrusted());
}

TEST(HangingBus, ofAccessibilityIsGivenUp) {
    FocusDesktop desktop;
    TestAccessibilityBus& buses = desktop.startBuses();
    {
        const Stopped stopped(buses.process());
        expectGivenUp(desktop);
    }
    desktop.probe().follow(true);
    EXPECT_TRUE(desktop.probe().isTrusted());
}

TEST(HangingBus, whoseLauncherHangsIsGivenUp) {
    FocusDesktop desktop;
    TestAccessibilityBus& buses = desktop.startBuses();
    const Stopped stopped(buses.launcher());
    expectGivenUp(desktop);
}

TEST(HangingBus, whoseRegistryHangsIsGivenUp) {
    FocusDesktop desktop;
    TestAccessibilityBus& buses = desktop.startBuses();
    const Stopped stopped(buses.registry());
    expectGivenUp(desktop);
}

TEST(HangingBus, doesNotHoldUpTheEndOfFollowing) {
    FocusDesktop desktop;
    TestAccessibilityBus& buses = desktop.startBuses();
    desktop.probe().follow(true);
    ASSERT_TRUE(desktop.probe().isTrusted());
    const Stopped stopped(buses.process());
    EXPECT_EQ(desktop.probe().focusedRole(getpid()), std::nullopt);
    const auto begin = std::chrono::steady_clock::now();
    desktop.probe().follow(false);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, bounded);
    EXPECT_FALSE(desktop.probe().isTrusted());
}

} // namespace

} // namespace tavel
