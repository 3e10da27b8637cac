#include "Linux/X11/Keyboard/PostedKeys.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <cstddef>
#include <optional>

namespace tavel {

namespace {

/// The code of the left Control key on every PC keyboard, for layouts without that symbol.
constexpr xcb_keycode_t usualLeftControl = 37;

std::optional<xcb_keycode_t> codeOf(const KeyboardMap& map, std::int64_t keyCode, std::uint8_t group) {
    switch (keyCode) {
    case keyCode::leftCommand:
        return map.codeOf({keySymbol::leftControl}, group).value_or(usualLeftControl);
    case keyCode::rightCommand:
        return map.codeOf({keySymbol::rightControl}, group);
    case keyCode::v:
        return map.codeOf({keySymbol::v, keySymbol::capitalV}, group);
    default:
        return std::nullopt;
    }
}

} // namespace

std::vector<xcb_keycode_t> codesOf(const KeyboardMap& map, std::int64_t keyCode) {
    switch (keyCode) {
    case keyCode::leftCommand:
        return map.codesOf({keySymbol::leftControl});
    case keyCode::rightCommand:
        return map.codesOf({keySymbol::rightControl});
    case keyCode::v:
        return map.codesOf({keySymbol::v, keySymbol::capitalV});
    default:
        return {};
    }
}

bool isPasteKey(const KeyboardMap& map, xcb_keycode_t code, std::uint8_t group) {
    return std::ranges::count(map.codesOf({keySymbol::v, keySymbol::capitalV}, group), code) > 0;
}

std::vector<PostedKey> postedKeys(std::span<const KeyEvent> events, const KeyboardMap& map,
                                  std::uint8_t group) {
    std::vector<PostedKey> keys;
    for (const KeyEvent& event : events) {
        if (event.type != KeyEventType::keyDown && event.type != KeyEventType::keyUp)
            continue;
        if (const auto code = codeOf(map, event.keyCode, group))
            keys.push_back({*code, event.type == KeyEventType::keyDown});
    }
    return keys;
}

std::vector<PostedKey> eachOf(const KeySet& keys, bool isDown) {
    std::vector<PostedKey> all;
    for (std::size_t code = 0; code < keys.size(); ++code) {
        if (keys[code])
            all.push_back({static_cast<xcb_keycode_t>(code), isDown});
    }
    return all;
}

std::vector<PostedKey> typedAlone(std::span<const PostedKey> keys, const KeySet& down,
                                  const KeySet& modifiersDown) {
    KeySet released = modifiersDown;
    for (const PostedKey& key : keys)
        released.set(key.code, released[key.code] || down[key.code]);
    std::vector<PostedKey> all = eachOf(released, false);
    const std::vector<PostedKey> restored = eachOf(modifiersDown, true);
    all.insert(all.end(), keys.begin(), keys.end());
    all.insert(all.end(), restored.begin(), restored.end());
    return all;
}

void sendKeys(xcb_connection_t* connection, std::span<const PostedKey> keys) {
    for (const PostedKey& key : keys)
        xcb_test_fake_input(connection, key.isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key.code,
                            XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

} // namespace tavel
