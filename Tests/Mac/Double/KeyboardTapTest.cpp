#include "Mac/MacKeyboardTap.h"
#include "Tests/Mac/Double/DoubledMac.h"

#include <optional>
#include <vector>

namespace tavel {

using namespace doubles;

namespace {

constexpr std::uint32_t flagsChanged = 12;
constexpr std::uint32_t leftMouseDown = 1;
constexpr auto hidSystemState = static_cast<CGEventSourceStateID>(1);
constexpr std::int64_t ourMark = 0x7461766C;

class DoubledKeyboardTap : public DoubledMac {
protected:
    bool create(KeyVerdict verdict = KeyVerdict::pass) {
        return tap_->create([this, verdict](const KeyEvent& event) {
            seen_.push_back(event);
            return verdict;
        });
    }

    std::optional<MacKeyboardTap> tap_{std::in_place};
    std::vector<KeyEvent> seen_;
};

} // namespace

TEST_F(DoubledKeyboardTap, isAppendedToTheSessionsTapsForPressesAndReleases) {
    ASSERT_TRUE(create());
    ASSERT_EQ(quartz().requests.size(), 1U);
    const TapRequest& request = quartz().requests.front();
    EXPECT_EQ(request.location, kCGSessionEventTap);
    EXPECT_EQ(request.placement, kCGTailAppendEventTap);
    EXPECT_EQ(request.options, kCGEventTapOptionDefault);
    EXPECT_EQ(request.mask, 0xC00U);
    EXPECT_EQ(enabledTaps(), 1);
}

TEST_F(DoubledKeyboardTap, servesKeysAlsoWhileAMenuIsOpen) {
    ASSERT_TRUE(create());
    for (CFRunLoopMode mode : {kCFRunLoopDefaultMode, eventTrackingMode})
        EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}, mode), Passage::passed);
    EXPECT_EQ(seen_.size(), 2U);
}

TEST_F(DoubledKeyboardTap, canBeTriedAgainAfterARefusal) {
    quartz().refusesTaps = true;
    EXPECT_FALSE(create());
    EXPECT_FALSE(create());
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed);
    EXPECT_TRUE(seen_.empty());
    quartz().refusesTaps = false;
    EXPECT_TRUE(create());
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed);
    EXPECT_EQ(seen_.size(), 1U);
}

TEST_F(DoubledKeyboardTap, leavesNoTapWithoutARunLoopSource) {
    refusesSources = true;
    EXPECT_FALSE(create());
    EXPECT_EQ(livingTaps(), 0);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed) << "no key is held up";
    refusesSources = false;
    EXPECT_TRUE(create());
    EXPECT_EQ(livingTaps(), 1);
}

TEST_F(DoubledKeyboardTap, canBeSwitchedBeforeThereIsATap) {
    tap_->setEnabled(true);
    tap_->setEnabled(false);
    EXPECT_EQ(livingTaps(), 0);
}

TEST_F(DoubledKeyboardTap, reportsKeyCodeFlagsAndUserData) {
    ASSERT_TRUE(create());
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0x100108, ourMark}), Passage::passed);
    EXPECT_EQ(passTaps({kCGEventKeyUp, 0x7F, 0xFFFF'0000'0000'0001, -1}), Passage::passed);
    ASSERT_EQ(seen_.size(), 2U);
    EXPECT_EQ(seen_[0].type, KeyEventType::keyDown);
    EXPECT_EQ(seen_[0].keyCode, 9);
    EXPECT_EQ(seen_[0].flags, 0x100108U);
    EXPECT_EQ(seen_[0].userData, ourMark);
    EXPECT_EQ(seen_[1].type, KeyEventType::keyUp);
    EXPECT_EQ(seen_[1].keyCode, 0x7F);
    EXPECT_EQ(seen_[1].flags, 0xFFFF'0000'0000'0001U);
    EXPECT_EQ(seen_[1].userData, -1);
}

TEST_F(DoubledKeyboardTap, tellsARepeatFromAPress) {
    ASSERT_TRUE(create());
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0, 0}), Passage::passed);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0, 1}), Passage::passed);
    ASSERT_EQ(seen_.size(), 2U);
    EXPECT_FALSE(seen_[0].isRepeat);
    EXPECT_TRUE(seen_[1].isRepeat);
}

/// The double ends the program if the event was released, retained or replaced.
TEST_F(DoubledKeyboardTap, passesOrSwallowsEventsAsTheHandlerSays) {
    ASSERT_TRUE(create(KeyVerdict::swallow));
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::swallowed);
    EXPECT_EQ(passTaps({kCGEventKeyUp, 9, 0, 0}), Passage::swallowed);
    EXPECT_EQ(seen_.size(), 2U);
    tap_.emplace();
    ASSERT_TRUE(create(KeyVerdict::pass));
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed);
    EXPECT_EQ(passTaps({kCGEventKeyUp, 9, 0, 0}), Passage::passed);
    EXPECT_EQ(seen_.size(), 4U);
}

TEST_F(DoubledKeyboardTap, passesOtherEventsWithoutAskingTheHandler) {
    ASSERT_TRUE(create(KeyVerdict::swallow));
    for (const std::uint32_t type : {0U, leftMouseDown, 9U, flagsChanged, 22U, 0x7FFFFFFFU, 0xFFFFFFFDU})
        EXPECT_EQ(askTaps({type, 9, 0, 0}), Passage::passed) << type;
    EXPECT_TRUE(seen_.empty());
}

TEST_F(DoubledKeyboardTap, reportsThatTheSystemDisabledIt) {
    ASSERT_TRUE(create(KeyVerdict::swallow));
    disableTaps(kCGEventTapDisabledByTimeout);
    EXPECT_EQ(enabledTaps(), 0);
    tap_->setEnabled(true);
    disableTaps(kCGEventTapDisabledByUserInput);
    ASSERT_EQ(seen_.size(), 2U);
    EXPECT_EQ(seen_[0].type, KeyEventType::tapDisabledByTimeout);
    EXPECT_EQ(seen_[1].type, KeyEventType::tapDisabledByUserInput);
    EXPECT_EQ(seen_[0].keyCode, 0);
    EXPECT_EQ(seen_[0].flags, 0U);
}

TEST_F(DoubledKeyboardTap, mayBeEnabledAgainByItsHandler) {
    ASSERT_TRUE(tap_->create([this](const KeyEvent& event) {
        seen_.push_back(event);
        tap_->setEnabled(true);
        return KeyVerdict::pass;
    }));
    disableTaps(kCGEventTapDisabledByTimeout);
    EXPECT_EQ(enabledTaps(), 1);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed);
    EXPECT_EQ(seen_.size(), 2U);
}

TEST_F(DoubledKeyboardTap, seesKeysOnlyWhileItIsEnabled) {
    ASSERT_TRUE(create(KeyVerdict::swallow));
    tap_->setEnabled(false);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed);
    EXPECT_TRUE(seen_.empty());
    tap_->setEnabled(true);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::swallowed);
    EXPECT_EQ(seen_.size(), 1U);
}

TEST_F(DoubledKeyboardTap, seesNoKeysAfterItsDestruction) {
    ASSERT_TRUE(create(KeyVerdict::swallow));
    tap_.reset();
    EXPECT_EQ(livingTaps(), 0);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed);
    EXPECT_TRUE(seen_.empty());
}

TEST_F(DoubledKeyboardTap, asksForThePermissionWithAnotherTapThatItDropsAtOnce) {
    EXPECT_TRUE(tap_->canLosePermission());
    ASSERT_TRUE(create(KeyVerdict::swallow));
    EXPECT_TRUE(tap_->isPermitted());
    ASSERT_EQ(quartz().requests.size(), 2U);
    const TapRequest& own = quartz().requests.front();
    const TapRequest& probe = quartz().requests.back();
    EXPECT_EQ(probe.location, own.location);
    EXPECT_EQ(probe.placement, own.placement);
    EXPECT_EQ(probe.options, own.options);
    EXPECT_EQ(probe.mask, own.mask);
    EXPECT_EQ(livingTaps(), 1);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::swallowed);
    EXPECT_EQ(seen_.size(), 1U);
}

TEST_F(DoubledKeyboardTap, tellsThatThePermissionIsMissing) {
    quartz().refusesTaps = true;
    EXPECT_FALSE(tap_->isPermitted());
    quartz().refusesTaps = false;
    ASSERT_TRUE(create());
    quartz().refusesTaps = true;
    EXPECT_FALSE(tap_->isPermitted());
    EXPECT_EQ(livingTaps(), 1) << "it is left to the owner";
}

TEST_F(DoubledKeyboardTap, canBeRemovedAndMadeAgain) {
    tap_->remove();
    ASSERT_TRUE(create(KeyVerdict::swallow));
    tap_->remove();
    EXPECT_EQ(livingTaps(), 0);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::passed);
    tap_->setEnabled(true);
    EXPECT_TRUE(seen_.empty());
    ASSERT_TRUE(create(KeyVerdict::swallow));
    EXPECT_EQ(livingTaps(), 1);
    EXPECT_EQ(passTaps({kCGEventKeyDown, 9, 0, 0}), Passage::swallowed);
    EXPECT_EQ(seen_.size(), 1U);
}

TEST_F(DoubledKeyboardTap, postsAPasteInOrderWhateverTheUserHolds) {
    quartz().heldModifiers = keyFlag::shift | keyFlag::option;
    constexpr std::uint64_t command = keyFlag::command;
    tap_->post(std::vector<KeyEvent>{{KeyEventType::keyDown, keyCode::leftCommand, command, ourMark},
                                     {KeyEventType::keyDown, keyCode::v, command, ourMark},
                                     {KeyEventType::keyUp, keyCode::v, command, ourMark},
                                     {KeyEventType::keyUp, keyCode::leftCommand, 0, ourMark}});
    EXPECT_EQ(quartz().posted,
              (std::vector<PostedEvent>{{kCGHIDEventTap, {flagsChanged, 55, command, ourMark}},
                                        {kCGHIDEventTap, {kCGEventKeyDown, 9, command, ourMark}},
                                        {kCGHIDEventTap, {kCGEventKeyUp, 9, command, ourMark}},
                                        {kCGHIDEventTap, {flagsChanged, 55, 0, ourMark}}}));
    EXPECT_TRUE(quartz().requests.empty()) << "no tap is needed for it";
}

TEST_F(DoubledKeyboardTap, skipsEventsThatCannotBePosted) {
    quartz().keysWithoutEvent = {9};
    tap_->post(std::vector<KeyEvent>{{KeyEventType::keyDown, 9, 0, 1},
                                     {KeyEventType::keyDown, 0x10007, 0, 2},
                                     {KeyEventType::keyDown, -1, 0, 3},
                                     {KeyEventType::keyDown, 0x1'0000'0007, 0, 3},
                                     {KeyEventType::tapDisabledByTimeout, 7, 0, 4},
                                     {KeyEventType::tapDisabledByUserInput, 7, 0, 5},
                                     {KeyEventType::keyUp, 0xFFFF, 0, 6}});
    EXPECT_EQ(quartz().posted, (std::vector<PostedEvent>{{kCGHIDEventTap, {kCGEventKeyUp, 0xFFFF, 0, 6}}}));
}

TEST_F(DoubledKeyboardTap, asksTheSessionWhetherAKeyIsDown) {
    quartz().keysDown[kCGEventSourceStateCombinedSessionState] = {55, 0xFFFF};
    quartz().keysDown[hidSystemState] = {54};
    EXPECT_TRUE(tap_->isKeyDown(55));
    EXPECT_TRUE(tap_->isKeyDown(0xFFFF));
    EXPECT_FALSE(tap_->isKeyDown(54));
    EXPECT_FALSE(tap_->isKeyDown(9));
    EXPECT_FALSE(tap_->isKeyDown(0x10000 + 55));
    EXPECT_FALSE(tap_->isKeyDown(-1));
}

} // namespace tavel
