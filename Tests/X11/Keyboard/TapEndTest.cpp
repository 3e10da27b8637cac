#include "Tests/X11/Keyboard/TappedDesktop.h"

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>

namespace tavel {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// The /proc directory of the tap's thread; nullopt without one.
std::optional<fs::path> tapThread() {
    std::error_code ended; // another thread may end during the iteration
    for (const auto& task : fs::directory_iterator("/proc/self/task", ended)) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        if (name == "keyboard-tap")
            return task.path();
    }
    return std::nullopt;
}

std::string statusOf(const fs::path& thread, const std::string& name) {
    std::ifstream lines(thread / "status");
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ":"))
            return line.substr(name.size() + 1);
    }
    throw std::runtime_error("no " + name + " of the thread");
}

class TapEnd : public TappedDesktop {
protected:
    static std::int64_t wakeUps() { return std::stoll(statusOf(*tapThread(), "voluntary_ctxt_switches")); }

    /// Repeats the action until the tap's thread sleeps all through it. At first the thread may still be
    /// busy.
    void awaitSleepDuring(const std::function<void()>& doings) {
        runUntil([&] {
            const std::int64_t before = wakeUps();
            doings();
            return wakeUps() == before;
        });
    }

    /// Types other keys for at least a second. `window` must be the active one.
    void typeForASecond(xcb_window_t window) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (std::chrono::steady_clock::now() < end) {
            desktop_.type({pcKey::leftControl, pcKey::leftShift, pcKey::v});
            settle(window);
        }
    }
};

TEST_F(TapEnd, thereIsNoTapWithoutAServer) {
    X11KeyboardTap tap(":54321", loop_, deadline_);
    EXPECT_FALSE(tap.create([](const KeyEvent&) { return KeyVerdict::swallow; }));
    EXPECT_EQ(tap.refusal(), "the X server does not answer");
    EXPECT_FALSE(tap.isKeyDown(keyCode::v));
    tap.setEnabled(false);
    tap.post(std::array{KeyEvent{}});
    EXPECT_FALSE(tapThread());
}

TEST_F(TapEnd, theThreadEndsWithTheServer) {
    startInFileManager();
    ASSERT_TRUE(tapThread());
    desktop_.server().stop();
    runUntil([] { return !tapThread(); });
    EXPECT_FALSE(tap_->isKeyDown(keyCode::v));
    tap_->post(std::array{KeyEvent{KeyEventType::keyDown, keyCode::v, 0, 0}});
    tap_->setEnabled(false);
    tap_->setEnabled(true);
    runPosted();
    EXPECT_THAT(seen_, IsEmpty());
    tap_.reset();
}

TEST_F(TapEnd, theServerMayEndWhileAKeyIsHeld) {
    startInFileManager();
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    awaitEvents(1);
    desktop_.server().stop();
    runUntil([] { return !tapThread(); });
}

TEST_F(TapEnd, theServerMayEndWhileADecisionIsMade) {
    startInFileManager();
    decide_ = [this](const KeyEvent&) {
        desktop_.server().stop();
        EXPECT_FALSE(tap_->isKeyDown(keyCode::v));
        return KeyVerdict::swallow;
    };
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    runUntil([] { return !tapThread(); });
    EXPECT_EQ(seen_.front().type, KeyEventType::keyDown);
}

TEST_F(TapEnd, aKeyThatIsNotDecidedPassesWhenTheTapIsDestroyed) {
    const auto window = startInFileManager();
    desktop_.type({pcKey::leftControl, pcKey::v});
    tap_.reset();
    EXPECT_FALSE(tapThread());
    settle(window);
    EXPECT_THAT(seen_, IsEmpty());
    EXPECT_THAT(desktop_.received(window, pcKey::v),
                ElementsAre(ReceivedKey{pcKey::v, true}, ReceivedKey{pcKey::v, false}));
    EXPECT_FALSE(desktop_.isGrabbed(window, pcKey::v));
}

TEST_F(TapEnd, noKeyIsLostHoweverTheTapIsDestroyed) {
    const auto window = startInFileManager();
    for (std::size_t count = 2; count <= 100; count += 2) {
        desktop_.type({pcKey::leftControl, pcKey::v});
        tap_.reset();
        settle(window);
        ASSERT_EQ(desktop_.received(window, pcKey::v).size(), count);
        tap_ = makeTap();
        ASSERT_TRUE(tap_->create([](const KeyEvent&) { return KeyVerdict::swallow; }));
        runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
    }
}

TEST_F(TapEnd, nothingIsReportedAfterTheTapIsDestroyed) {
    const auto window = startInFileManager();
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    awaitEvents(1);
    desktop_.release(pcKey::v);
    desktop_.release(pcKey::leftControl);
    tap_.reset();
    settle(window);
    EXPECT_EQ(seen_.size(), 1);
}

TEST_F(TapEnd, theHandlerIsLetGoOnTheMainThread) {
    auto token = std::make_shared<int>();
    const std::weak_ptr<int> weakToken = token;
    tap_ = makeTap();
    ASSERT_TRUE(tap_->create([token = std::move(token)](const KeyEvent&) { return KeyVerdict::pass; }));
    EXPECT_FALSE(weakToken.expired());
    tap_.reset();
    EXPECT_TRUE(weakToken.expired());
}

TEST_F(TapEnd, theThreadSleepsWhileOtherKeysAreTyped) {
    const auto window = startInFileManager();
    awaitSleepDuring([&] { typeForASecond(window); });
}

TEST_F(TapEnd, theThreadOfADisabledTapSleepsWhateverHappens) {
    const auto window = startInFileManager();
    tap_->setEnabled(false);
    runUntil([&] { return !desktop_.isGrabbed(window, pcKey::v); });
    const auto second = desktop_.open("Thunar");
    awaitSleepDuring([&] {
        desktop_.activate(second);
        desktop_.type({pcKey::leftControl, pcKey::v});
        desktop_.useLayout("dvorak");
        desktop_.activate(window);
        typeForASecond(window);
    });
}

TEST_F(TapEnd, theThreadTakesNoSignals) {
    startInFileManager();
    const std::uint64_t blocked = std::stoull(statusOf(*tapThread(), "SigBlk"), nullptr, 16);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGCHLD, SIGPIPE, SIGALRM, SIGUSR1})
        EXPECT_TRUE(blocked >> (signal - 1) & 1) << signal;
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGTERM), 0) << "the main thread takes them as before";
}

} // namespace

} // namespace tavel
