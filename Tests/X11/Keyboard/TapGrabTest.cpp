#include "Linux/X11/X11Reply.h"
#include "Tests/X11/Keyboard/TappedDesktop.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto down = KeyEventType::keyDown;
constexpr auto up = KeyEventType::keyUp;

class TapGrab : public TappedDesktop {
protected:
    /// Throws if Control+V is not swallowed. `window` must be the active one.
    void expectSwallows(xcb_window_t window) {
        const std::size_t before = seen_.size();
        const std::size_t pressesBefore = desktop_.pressesOf(window, pcKey::v);
        desktop_.type({pcKey::leftControl, pcKey::v});
        awaitEvents(before + 2);
        settle(window);
        EXPECT_EQ(seen_.size(), before + 2);
        EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), pressesBefore);
    }

    /// `window` must be the active one.
    void expectPasses(xcb_window_t window) {
        const std::size_t before = seen_.size();
        const std::size_t receivedBefore = desktop_.received(window, pcKey::v).size();
        desktop_.type({pcKey::leftControl, pcKey::v});
        settle(window);
        EXPECT_EQ(seen_.size(), before);
        EXPECT_EQ(desktop_.received(window, pcKey::v).size(), receivedBefore + 2);
    }

    /// Returns when a repeat has been reported, after which the press is fully handled.
    void pressUntilItRepeats() {
        desktop_.repeatKeys(true);
        desktop_.press(pcKey::leftControl);
        desktop_.press(pcKey::v);
        awaitEvents(2);
    }

    void releaseAll() {
        desktop_.release(pcKey::v);
        desktop_.release(pcKey::leftControl);
        desktop_.repeatKeys(false);
    }

    bool otherGrabs(xcb_window_t window, std::uint16_t modifiers) {
        const X11Reply<xcb_generic_error_t> error(xcb_request_check(
            desktop_.connection(), xcb_grab_key_checked(desktop_.connection(), 0, window, modifiers, pcKey::v,
                                                        XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        return error == nullptr;
    }

    void otherUngrabs(xcb_window_t window, std::uint16_t modifiers) {
        xcb_ungrab_key(desktop_.connection(), pcKey::v, window, modifiers);
        desktop_.synchronize();
    }
};

TEST_F(TapGrab, followsTheActiveWindow) {
    const auto first = startInFileManager();
    const auto second = switchToFileManager();
    EXPECT_FALSE(desktop_.isGrabbed(first, pcKey::v));
    expectSwallows(second);

    desktop_.activate(first);
    runUntil([&] { return desktop_.isGrabbed(first, pcKey::v); });
    EXPECT_FALSE(desktop_.isGrabbed(second, pcKey::v));
    expectSwallows(first);
}

TEST_F(TapGrab, isOnTheWindowThatWasActiveBefore) {
    const auto window = desktop_.open("org.gnome.Nautilus");
    desktop_.activate(window);
    startInFileManager();
    desktop_.activate(window);
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });

    tap_.reset();
    runUntil([&] { return !desktop_.isGrabbed(window, pcKey::v); });
    tap_ = makeTap();
    ASSERT_TRUE(tap_->create([](const KeyEvent&) { return KeyVerdict::pass; }));
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
}

TEST_F(TapGrab, isNeverOnOtherProgramsWindows) {
    const auto other = desktop_.open("Gedit");
    desktop_.activate(other);
    const auto fileManager = startInFileManager();
    EXPECT_FALSE(desktop_.isGrabbed(other, pcKey::v));
    desktop_.activate(other);
    runUntil([&] { return !desktop_.isGrabbed(fileManager, pcKey::v); });
    EXPECT_FALSE(desktop_.isGrabbed(other, pcKey::v));
    expectPasses(other);

    desktop_.activate(fileManager);
    runUntil([&] { return desktop_.isGrabbed(fileManager, pcKey::v); });
    expectSwallows(fileManager);
}

TEST_F(TapGrab, isNowhereWhenNoWindowIsActive) {
    const auto window = startInFileManager();
    desktop_.activate(XCB_WINDOW_NONE);
    runUntil([&] { return !desktop_.isGrabbed(window, pcKey::v); });
    desktop_.activate(window);
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
}

TEST_F(TapGrab, isOfControlWithTheLocksOnly) {
    const auto window = startInFileManager();
    constexpr unsigned int control = XCB_MOD_MASK_CONTROL;
    constexpr unsigned int capsLock = XCB_MOD_MASK_LOCK;
    constexpr unsigned int numLock = XCB_MOD_MASK_2;
    for (const unsigned int modifiers :
         {control, control | capsLock, control | numLock, control | capsLock | numLock})
        EXPECT_TRUE(desktop_.isGrabbed(window, pcKey::v, modifiers)) << modifiers;
    for (const unsigned int modifiers :
         {0U, capsLock, control | XCB_MOD_MASK_SHIFT, control | XCB_MOD_MASK_1, unsigned{XCB_MOD_MASK_4}})
        EXPECT_FALSE(desktop_.isGrabbed(window, pcKey::v, modifiers)) << modifiers;
    EXPECT_FALSE(desktop_.isGrabbed(desktop_.root(), pcKey::v)) << "which only was tried";
}

TEST_F(TapGrab, isRefusedWhileAnotherProgramHasTheKeyOnTheScreen) {
    constexpr std::uint16_t control = XCB_MOD_MASK_CONTROL;
    constexpr std::uint16_t controlWithCapsLock = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_LOCK;
    for (const std::uint16_t modifiers : {control, controlWithCapsLock}) {
        ASSERT_TRUE(otherGrabs(desktop_.root(), modifiers));
        tap_ = makeTap();
        const auto handler = [](const KeyEvent&) { return KeyVerdict::pass; };
        EXPECT_FALSE(tap_->create(handler));
        EXPECT_FALSE(tap_->create(handler)) << "a second time";
        EXPECT_EQ(tap_->refusal(), "another program has grabbed Ctrl+V for the whole screen");
        EXPECT_FALSE(tap_->isKeyDown(keyCode::v));
        tap_->setEnabled(true);
        otherUngrabs(desktop_.root(), modifiers);
        EXPECT_FALSE(desktop_.isGrabbed(desktop_.root(), pcKey::v)) << "nothing is left of the trial";

        EXPECT_TRUE(tap_->create(handler));
        EXPECT_EQ(tap_->refusal(), "");
        tap_.reset();
    }
}

TEST_F(TapGrab, endsWhileTheTapIsDisabled) {
    const auto window = startInFileManager();
    tap_->setEnabled(false);
    runUntil([&] { return !desktop_.isGrabbed(window, pcKey::v); });
    expectPasses(window);
    const auto second = desktop_.open("Caja");
    desktop_.activate(second);
    expectPasses(second);

    tap_->setEnabled(true);
    runUntil([&] { return desktop_.isGrabbed(second, pcKey::v); });
    EXPECT_FALSE(desktop_.isGrabbed(window, pcKey::v));
    expectSwallows(second);
}

TEST_F(TapGrab, canBeSwitchedAnyNumberOfTimes) {
    const auto window = startInFileManager();
    for (int time = 0; time < 100; ++time) {
        tap_->setEnabled(false);
        tap_->setEnabled(false);
        tap_->setEnabled(true);
        tap_->setEnabled(true);
    }
    tap_->isKeyDown(keyCode::v); // a round trip: the server has carried out the last setEnabled(false)
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
    expectSwallows(window);
}

TEST_F(TapGrab, aHeldKeyStaysWithATapThatIsDisabled) {
    const auto window = startInFileManager();
    pressUntilItRepeats();
    tap_->setEnabled(false);
    awaitEvents(seen_.size() + 3);
    releaseAll();
    runUntil([&] { return seen_.back().type == up && !desktop_.isGrabbed(window, pcKey::v); });
    settle(window);
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 0);
    expectPasses(window);
}

TEST_F(TapGrab, aKeyThatIsNotDecidedPassesWhenTheTapIsDisabled) {
    const auto window = startInFileManager();
    desktop_.type({pcKey::leftControl, pcKey::v});
    tap_->setEnabled(false);
    settle(window);
    EXPECT_THAT(seen_, IsEmpty());
    EXPECT_EQ(desktop_.received(window, pcKey::v).size(), 2);
}

TEST_F(TapGrab, aKeyWhoseWindowGoesIsReportedUntilItsRelease) {
    const auto window = startInFileManager();
    for (const bool closes : {false, true}) {
        seen_.clear();
        const auto doomed = switchToFileManager();
        pressUntilItRepeats();
        closes ? desktop_.close(doomed) : desktop_.hide(doomed);
        releaseAll();
        runUntil([&] { return seen_.back().type == up; });
        desktop_.activate(window);
        runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
        settle(window);
        EXPECT_EQ(std::ranges::count(seen_, up, &KeyEvent::type), 1);
        expectSwallows(window);
    }
}

TEST_F(TapGrab, aHeldKeyIsSwallowedInAnotherFileManagersWindow) {
    startInFileManager();
    pressUntilItRepeats();
    const auto second = switchToFileManager();
    awaitEvents(seen_.size() + 3);
    releaseAll();
    runUntil([&] { return seen_.back().type == up; });
    EXPECT_EQ(std::ranges::count(seen_, false, &KeyEvent::isRepeat), 2) << "the press and the release";
    expectSwallows(second);
}

TEST_F(TapGrab, aKeyWhoseWindowIsGoneWhenItIsSwallowedIsReportedAsReleased) {
    const auto window = startInFileManager();
    const auto doomed = switchToFileManager();
    decide_ = [&](const KeyEvent& event) {
        if (event.type == down)
            desktop_.close(doomed);
        return KeyVerdict::swallow;
    };
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    awaitEvents(1);
    desktop_.release(pcKey::v);
    desktop_.release(pcKey::leftControl);
    awaitEvents(2);
    EXPECT_THAT(seenTypes(), ElementsAre(down, up));
    decide_ = [](const KeyEvent&) { return KeyVerdict::swallow; };
    desktop_.activate(window);
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
    expectSwallows(window);
}

TEST_F(TapGrab, ofASecondTapComesToNothingWhereAnotherHasTheWindow) {
    const auto window = startInFileManager();
    const auto second = makeTap();
    std::vector<KeyEvent> seenBySecond;
    ASSERT_TRUE(second->create([&](const KeyEvent& event) {
        seenBySecond.push_back(event);
        return KeyVerdict::swallow;
    }));
    expectSwallows(window);
    EXPECT_THAT(seenBySecond, IsEmpty());

    // After the end of the first tap, the second one grabs the next window that is activated, also this one.
    tap_.reset();
    desktop_.activate(window);
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
    desktop_.type({pcKey::leftControl, pcKey::v});
    runUntil([&] { return seenBySecond.size() >= 2; });
}

TEST_F(TapGrab, keysThatAProgramMakesUpAreNoKeys) {
    const auto window = startInFileManager();
    xcb_key_press_event_t fake{};
    fake.response_type = XCB_KEY_PRESS;
    fake.detail = pcKey::v;
    fake.state = XCB_MOD_MASK_CONTROL;
    fake.root = desktop_.root();
    fake.event = window;
    fake.same_screen = 1;
    for (int time = 0; time < 10; ++time)
        xcb_send_event(desktop_.connection(), 0, desktop_.root(), XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&fake));
    desktop_.synchronize();
    expectSwallows(window);
    EXPECT_THAT(seenTypes(), ElementsAre(down, up)) << "of the real key";
}

} // namespace

} // namespace tavel
