#include "Tests/X11/Keyboard/TappedDesktop.h"

#include <gmock/gmock.h>

#include <utility>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TapLayout : public TappedDesktop {
protected:
    /// `window` must be the active one.
    void expectSwallows(xcb_window_t window, std::uint8_t key) {
        seen_.clear();
        desktop_.type({pcKey::leftControl, key});
        awaitEvents(2);
        settle(window);
        EXPECT_THAT(seenTypes(), ElementsAre(KeyEventType::keyDown, KeyEventType::keyUp));
        EXPECT_EQ(seen_.front().keyCode, keyCode::v);
        EXPECT_EQ(seen_.front().flags, keyFlag::command);
        EXPECT_EQ(desktop_.pressesOf(window, key), 0);
    }
};

TEST_F(TapLayout, aChangeMovesTheGrab) {
    const auto window = startInFileManager();
    desktop_.useLayout("dvorak");
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::dvorakV); });
    EXPECT_FALSE(desktop_.isGrabbed(window, pcKey::v));
    expectSwallows(window, pcKey::dvorakV);
    desktop_.type({pcKey::leftControl, pcKey::v});
    settle(window);
    EXPECT_EQ(desktop_.received(window, pcKey::v).size(), 2);

    desktop_.useLayout("us");
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
    EXPECT_FALSE(desktop_.isGrabbed(window, pcKey::dvorakV));
}

TEST_F(TapLayout, oneWithoutAVHasNoGrab) {
    const auto window = startInFileManager();
    desktop_.useLayout("ru");
    runUntil([&] { return !desktop_.isGrabbed(window, pcKey::v); });
    desktop_.useLayout("us,ru");
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
}

TEST_F(TapLayout, theKeyIsSeenWhileAnotherGroupIsInUse) {
    const auto window = startInFileManager();
    desktop_.useLayout("us,ru");
    desktop_.useGroup(1);
    expectSwallows(window, pcKey::v);
    desktop_.useGroup(0);
    expectSwallows(window, pcKey::v);
}

TEST_F(TapLayout, theKeysOfAllGroupsAreGrabbed) {
    const auto window = startInFileManager();
    desktop_.useLayout("us,us -variant ,dvorak");
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::dvorakV); });
    EXPECT_TRUE(desktop_.isGrabbed(window, pcKey::v));
    expectSwallows(window, pcKey::v);
    desktop_.useGroup(1);
    expectSwallows(window, pcKey::dvorakV);
}

TEST_F(TapLayout, aKeyThatGivesVInAnotherGroupPassesUnseen) {
    const auto window = startInFileManager();
    desktop_.useLayout("us,us -variant ,dvorak");
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::dvorakV); });
    for (const auto& [group, other] : {std::pair{0, pcKey::dvorakV}, std::pair{1, pcKey::v}}) {
        desktop_.useGroup(static_cast<std::uint8_t>(group));
        desktop_.type({pcKey::leftControl, other});
        settle(window);
        EXPECT_THAT(desktop_.received(window, other),
                    ElementsAre(ReceivedKey{other, true}, ReceivedKey{other, false}));
        EXPECT_THAT(seen_, IsEmpty());
    }
}

TEST_F(TapLayout, isLookedAtAnewWhenTheTapIsEnabled) {
    const auto window = startInFileManager();
    tap_->setEnabled(false);
    desktop_.useLayout("dvorak");
    tap_->setEnabled(true);
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::dvorakV); });
    EXPECT_FALSE(desktop_.isGrabbed(window, pcKey::v));
}

TEST_F(TapLayout, ofTheStartIsKnown) {
    desktop_.useLayout("dvorak");
    tap_ = makeTap();
    ASSERT_TRUE(tap_->create([](const KeyEvent&) { return KeyVerdict::pass; }));
    const auto window = desktop_.open("Nemo");
    desktop_.activate(window);
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::dvorakV); });
    EXPECT_FALSE(desktop_.isGrabbed(window, pcKey::v));
}

} // namespace

} // namespace tavel
