#pragma once

#include "Linux/X11/Keyboard/KeyboardMap.h"
#include "Platform/KeyboardTap.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <span>
#include <vector>

namespace tavel {

/// The X server's keys that stand for the home platform's key; any of them may be the one that is pressed.
/// None for a key that the tap has nothing to do with.
std::vector<xcb_keycode_t> codesOf(const KeyboardMap& map, std::int64_t keyCode);

/// A press or a release of a key of the X server's.
struct PostedKey {
    xcb_keycode_t code = 0;
    bool isDown = false;

    bool operator==(const PostedKey&) const = default;
};

/// The presses and releases that the events stand for, while that group is the keyboard's. What has no key
/// is left out.
std::vector<PostedKey> postedKeys(std::span<const KeyEvent> events, const KeyboardMap& map,
                                  std::uint8_t group);

/// Requests that the server types them. Does not wait, nor flush.
void sendKeys(xcb_connection_t* connection, std::span<const PostedKey> keys);

} // namespace tavel
