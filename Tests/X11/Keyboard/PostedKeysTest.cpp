#include "Linux/X11/Keyboard/PostedKeys.h"

#include <gmock/gmock.h>

#include <array>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

KeyEvent down(std::int64_t code) {
    return {KeyEventType::keyDown, code, 0, 0};
}

KeyEvent up(std::int64_t code) {
    return {KeyEventType::keyUp, code, 0, 0};
}

KeyboardMap usualMap() {
    KeyboardMap map;
    map.add({37, {keySymbol::leftControl}});
    map.add({55, {keySymbol::v}});
    map.add({105, {keySymbol::rightControl}});
    return map;
}

TEST(PostedKeys, arePressedAndReleasedInTheSameOrder) {
    const std::array events{down(keyCode::leftCommand), down(keyCode::v), up(keyCode::v),
                            up(keyCode::leftCommand), down(keyCode::rightCommand)};
    EXPECT_THAT(postedKeys(events, usualMap(), 0),
                ElementsAre(PostedKey{37, true}, PostedKey{55, true}, PostedKey{55, false},
                            PostedKey{37, false}, PostedKey{105, true}));
}

TEST(PostedKeys, leaveOutWhatIsNoKeyHere) {
    const std::array events{down(0), KeyEvent{KeyEventType::tapDisabledByTimeout, keyCode::v, 0, 0},
                            KeyEvent{KeyEventType::tapDisabledByUserInput, keyCode::v, 0, 0}};
    EXPECT_THAT(postedKeys(events, usualMap(), 0), IsEmpty());
}

TEST(PostedKeys, leaveOutWhatTheLayoutHasNot) {
    const std::array events{down(keyCode::v), down(keyCode::rightCommand)};
    EXPECT_THAT(postedKeys(events, KeyboardMap(), 0), IsEmpty());
}

TEST(PostedKeys, takeTheUsualKeyForAControlKeyThatTheLayoutHasNot) {
    const std::array events{down(keyCode::leftCommand)};
    EXPECT_THAT(postedKeys(events, KeyboardMap(), 0), ElementsAre(PostedKey{37, true}));
}

TEST(PostedKeys, dependOnTheGroup) {
    KeyboardMap map;
    map.add({55, {keySymbol::v, 0x6b}});
    map.add({60, {0x2e, keySymbol::v}});
    const std::array events{down(keyCode::v)};
    EXPECT_THAT(postedKeys(events, map, 0), ElementsAre(PostedKey{55, true}));
    EXPECT_THAT(postedKeys(events, map, 1), ElementsAre(PostedKey{60, true}));
}

TEST(PostedKeys, knowEveryKeyThatStandsForOne) {
    KeyboardMap map = usualMap();
    map.add({66, {keySymbol::leftControl}});
    map.add({120, {keySymbol::capitalV}});
    EXPECT_THAT(codesOf(map, keyCode::leftCommand), ElementsAre(37, 66));
    EXPECT_THAT(codesOf(map, keyCode::rightCommand), ElementsAre(105));
    EXPECT_THAT(codesOf(map, keyCode::v), ElementsAre(55, 120));
    EXPECT_THAT(codesOf(map, 0), IsEmpty());
}

} // namespace

} // namespace tavel
