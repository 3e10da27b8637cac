#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace tavel {

/// Every combination of one of the keys with one of the sets of modifiers.
struct KeyCombinations {
    std::vector<xcb_keycode_t> keys;
    std::vector<std::uint16_t> modifiers;

    bool operator==(const KeyCombinations&) const = default;
};

/// Whether no other program has grabbed one of the combinations on the window. Usually called for the root
/// window, whose grabs get the keys first. Takes several round trips. No press is lost meanwhile.
bool canGrab(xcb_connection_t* connection, xcb_window_t window, const KeyCombinations& combinations);

/// Grabs of key combinations on one window at a time. A press of one of them freezes the keyboard until this
/// connection allows events again. Combinations that another program has already grabbed there stay with it;
/// on a window that does not exist, nothing is grabbed. Any thread. Never waits for the server.
class KeyGrabs {
public:
    explicit KeyGrabs(xcb_connection_t* connection) : connection_(connection) {}

    /// Switching off releases all grabs at once. While off, `grab` does nothing.
    void setEnabled(bool enabled);
    bool isEnabled() const;

    /// Replaces the previous grabs by the combinations on this window; XCB_WINDOW_NONE means no grabs.
    void grab(xcb_window_t window, KeyCombinations combinations);

    /// Also grabs the key with any modifiers on that window, enabled or not, until `endHold`.
    void hold(xcb_window_t window, xcb_keycode_t key);
    void endHold();

    /// Makes the requests of `send` between a release of the grabs and their renewal. The lock keeps other
    /// threads from changing the grabs in between. `send` must not wait for the server.
    void sendUngrabbed(const std::function<void()>& send);

private:
    void sendGrabs() const;
    void sendUngrabs() const;

    xcb_connection_t* const connection_;
    mutable std::mutex mutex_;
    bool enabled_ = false;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    KeyCombinations combinations_;
    xcb_window_t holdWindow_ = XCB_WINDOW_NONE; // none: no key is held
    xcb_keycode_t holdKey_ = 0;
};

} // namespace tavel
