#include "Tests/X11/Keyboard/TappedDesktop.h"

#include <gmock/gmock.h>

#include <array>
#include <thread>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

KeyEvent down(std::int64_t code) {
    return {KeyEventType::keyDown, code, keyFlag::command, 7};
}

KeyEvent up(std::int64_t code) {
    return {KeyEventType::keyUp, code, keyFlag::command, 7};
}

const std::array paste{down(keyCode::leftCommand), down(keyCode::v), up(keyCode::v),
                       up(keyCode::leftCommand)};

class TapPost : public TappedDesktop {
protected:
    std::vector<ReceivedKey> awaitReceived(xcb_window_t window, std::size_t count) {
        runUntil([&] { return desktop_.received(window).size() >= count; });
        return desktop_.received(window);
    }

    /// Posts the shortcut and returns the modifiers of V's press as the program sees them.
    std::uint16_t modifiersOfPostedV(xcb_window_t window) {
        const std::size_t before = desktop_.received(window, pcKey::v).size();
        tap_->post(paste);
        runUntil([&] { return desktop_.received(window, pcKey::v).size() >= before + 2; });
        const ReceivedKey press = desktop_.received(window, pcKey::v)[before];
        EXPECT_TRUE(press.isDown);
        return press.state;
    }

    /// The modifiers of a key that the user types now.
    std::uint16_t modifiersNow(xcb_window_t window) {
        settle(window);
        return desktop_.received(window, pcKey::a).back().state;
    }
};

TEST_F(TapPost, theProgramGetsTheKeysInTheirOrder) {
    const auto window = startInFileManager();
    tap_->post(paste);
    EXPECT_THAT(awaitReceived(window, 4),
                ElementsAre(ReceivedKey{pcKey::leftControl, true}, ReceivedKey{pcKey::v, true},
                            ReceivedKey{pcKey::v, false}, ReceivedKey{pcKey::leftControl, false}));
}

TEST_F(TapPost, theHandlerNeverSeesThePostedKeys) {
    const auto window = startInFileManager();
    for (std::size_t time = 0; time < 200; ++time)
        tap_->post(paste);
    EXPECT_EQ(awaitReceived(window, 800).size(), 800);
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 200);

    desktop_.type({pcKey::leftControl, pcKey::v});
    awaitEvents(2);
    settle(window);
    EXPECT_THAT(seenTypes(), ElementsAre(KeyEventType::keyDown, KeyEventType::keyUp))
        << "of the user's own key, which is grabbed as before";
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 200);
}

TEST_F(TapPost, theRightControlKeyIsTyped) {
    const auto window = startInFileManager();
    const std::array events{down(keyCode::rightCommand), down(keyCode::v), up(keyCode::v),
                            up(keyCode::rightCommand)};
    tap_->post(events);
    EXPECT_THAT(awaitReceived(window, 4),
                ElementsAre(ReceivedKey{pcKey::rightControl, true}, ReceivedKey{pcKey::v, true},
                            ReceivedKey{pcKey::v, false}, ReceivedKey{pcKey::rightControl, false}));
}

TEST_F(TapPost, whatIsNoKeyHereIsLeftOut) {
    const auto window = startInFileManager();
    const std::array events{down(0), down(keyCode::v), up(0), up(keyCode::v)};
    tap_->post(events);
    settle(window);
    EXPECT_THAT(desktop_.received(window),
                ElementsAre(ReceivedKey{pcKey::v, true}, ReceivedKey{pcKey::v, false},
                            ReceivedKey{pcKey::a, true}, ReceivedKey{pcKey::a, false}));
}

TEST_F(TapPost, theKeyOfTheGroupInUseIsTyped) {
    const auto window = startInFileManager();
    desktop_.useLayout("us,us -variant ,dvorak");
    const std::array events{down(keyCode::v), up(keyCode::v)};
    tap_->post(events);
    EXPECT_THAT(awaitReceived(window, 2),
                ElementsAre(ReceivedKey{pcKey::v, true}, ReceivedKey{pcKey::v, false}));
    desktop_.useGroup(1);
    tap_->post(events);
    EXPECT_EQ(awaitReceived(window, 4).back(), (ReceivedKey{pcKey::dvorakV, false}));
}

TEST_F(TapPost, worksInAnyWindowAndWhileTheTapIsDisabled) {
    startInFileManager();
    const auto other = desktop_.open("Gedit");
    desktop_.activate(other);
    tap_->post(paste);
    EXPECT_EQ(awaitReceived(other, 4).size(), 4);
    tap_->setEnabled(false);
    desktop_.useLayout("dvorak");
    tap_->post(paste);
    EXPECT_EQ(awaitReceived(other, 8)[5], (ReceivedKey{pcKey::dvorakV, true}));
    EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(TapPost, modifiersThatAreHeldDoNotCountAndStayHeld) {
    const auto window = startInFileManager();
    for (const std::uint8_t key :
         {pcKey::leftShift, pcKey::leftAlt, pcKey::leftSuper, pcKey::leftControl, pcKey::rightControl}) {
        desktop_.press(key);
        const std::uint16_t held = modifiersNow(window);
        EXPECT_NE(held, 0);
        EXPECT_EQ(modifiersOfPostedV(window), XCB_MOD_MASK_CONTROL) << int{key};
        EXPECT_EQ(modifiersNow(window), held) << int{key};
        desktop_.release(key);
        EXPECT_EQ(modifiersNow(window), 0) << int{key};
    }
}

TEST_F(TapPost, modifiersThatAreHeldOnTheKeyboardAreReleasedWithIt) {
    const auto window = startInFileManager();
    for (int time = 0; time < 2; ++time) {
        desktop_.pressOnDevice(pcKey::leftShift);
        EXPECT_EQ(modifiersOfPostedV(window), XCB_MOD_MASK_CONTROL);
        EXPECT_EQ(modifiersNow(window), XCB_MOD_MASK_SHIFT);
        desktop_.releaseOnDevice(pcKey::leftShift);
        EXPECT_EQ(modifiersNow(window), 0);
    }
}

TEST_F(TapPost, aModifierThatTheUserReleasesMeanwhileIsNotLeftDown) {
    const auto window = startInFileManager();
    for (int time = 0; time < 200; ++time) {
        desktop_.pressOnDevice(pcKey::leftShift);
        std::thread user([&] { desktop_.releaseOnDevice(pcKey::leftShift); });
        tap_->post(paste);
        user.join();
        tap_->isKeyDown(keyCode::v); // a round trip: the server has carried out what was posted
        ASSERT_EQ(modifiersNow(window), 0) << "at attempt " << time;
    }
}

TEST_F(TapPost, locksStayAsTheyAre) {
    const auto window = startInFileManager();
    constexpr std::uint16_t locks = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2;
    desktop_.type({pcKey::numLock});
    desktop_.press(pcKey::capsLock);
    EXPECT_EQ(modifiersOfPostedV(window), XCB_MOD_MASK_CONTROL | locks);
    desktop_.release(pcKey::capsLock);
    EXPECT_EQ(modifiersNow(window), locks);
}

TEST_F(TapPost, aKeyThatIsHeldIsTypedAnew) {
    const auto window = startInFileManager();
    desktop_.press(pcKey::v);
    tap_->post(paste);
    desktop_.release(pcKey::v);
    settle(window);
    EXPECT_THAT(desktop_.received(window, pcKey::v),
                ElementsAre(ReceivedKey{pcKey::v, true}, ReceivedKey{pcKey::v, false},
                            ReceivedKey{pcKey::v, true}, ReceivedKey{pcKey::v, false}));
}

TEST_F(TapPost, aKeyIsDownUntilItIsReleased) {
    startInFileManager();
    const std::array keys{std::pair{keyCode::leftCommand, pcKey::leftControl},
                          std::pair{keyCode::rightCommand, pcKey::rightControl},
                          std::pair{keyCode::v, pcKey::v}};
    for (const auto& [code, key] : keys) {
        desktop_.press(key);
        for (const auto& [otherCode, otherKey] : keys)
            EXPECT_EQ(tap_->isKeyDown(otherCode), code == otherCode);
        desktop_.release(key);
        EXPECT_FALSE(tap_->isKeyDown(code));
    }
    EXPECT_FALSE(tap_->isKeyDown(0));
}

TEST_F(TapPost, keysAreSeenThoughTheAnswerOfAnotherQuestionBringsThem) {
    startInFileManager();
    for (std::size_t count = 2; count <= 100; count += 2) {
        desktop_.type({pcKey::leftControl, pcKey::v});
        runUntil([&] {
            tap_->isKeyDown(keyCode::v);
            return seen_.size() >= count;
        });
    }
    EXPECT_EQ(seen_.size(), 100);
}

TEST_F(TapPost, aSwallowedKeyIsDownUntilItIsReleased) {
    startInFileManager();
    std::vector<bool> downAtEvent;
    decide_ = [&](const KeyEvent&) {
        downAtEvent.push_back(tap_->isKeyDown(keyCode::v));
        return KeyVerdict::swallow;
    };
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    awaitEvents(1);
    EXPECT_TRUE(tap_->isKeyDown(keyCode::v));
    EXPECT_TRUE(tap_->isKeyDown(keyCode::leftCommand));
    desktop_.release(pcKey::v);
    desktop_.release(pcKey::leftControl);
    awaitEvents(2);
    EXPECT_FALSE(downAtEvent.back());
    EXPECT_FALSE(tap_->isKeyDown(keyCode::v));
}

} // namespace

} // namespace tavel
