#pragma once

#include "Linux/X11/Keyboard/KeyModifiers.h"
#include "Linux/X11/Keyboard/KeyboardMap.h"
#include "Platform/KeyboardTap.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <span>
#include <vector>

namespace tavel {

/// The X server's keys for a key code of the home platform; the user may press any of them. Empty for a key
/// that the tap does not handle.
std::vector<xcb_keycode_t> codesOf(const KeyboardMap& map, std::int64_t keyCode);

/// Whether the key gives v while `group` is the keyboard's group.
bool isPasteKey(const KeyboardMap& map, xcb_keycode_t code, std::uint8_t group);

/// A press or a release of a key of the X server.
struct PostedKey {
    xcb_keycode_t code = 0;
    bool isDown = false;

    bool operator==(const PostedKey&) const = default;
};

/// The presses and releases for the events while `group` is the keyboard's group. Leaves out events without a
/// key.
std::vector<PostedKey> postedKeys(std::span<const KeyEvent> events, const KeyboardMap& map,
                                  std::uint8_t group);

/// A press of each of the keys, or a release.
std::vector<PostedKey> eachOf(const KeySet& keys, bool isDown);

/// The keys so that programs see them with no other modifiers than their own: the modifier keys in
/// `modifiersDown` are released before and pressed again afterwards. Each of the keys is released first if it
/// is in `down`, because the server ignores a press of such a key.
std::vector<PostedKey> typedAlone(std::span<const PostedKey> keys, const KeySet& down,
                                  const KeySet& modifiersDown);

/// Requests the key events with XTEST. Neither waits nor flushes.
void sendKeys(xcb_connection_t* connection, std::span<const PostedKey> keys);

} // namespace tavel
