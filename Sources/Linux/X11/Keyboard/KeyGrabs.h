#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace tavel {

/// Keys with modifiers: each of the keys with each of the sets of modifiers.
struct KeyCombinations {
    std::vector<xcb_keycode_t> keys;
    std::vector<std::uint16_t> modifiers;

    bool operator==(const KeyCombinations&) const = default;
};

/// Whether nobody else has grabbed one of the combinations on that window, which is usually the root window:
/// who has it there gets the keys first. Some round trips. A press that happens meanwhile is not lost.
bool canGrab(xcb_connection_t* connection, xcb_window_t window, const KeyCombinations& combinations);

/// The combinations that are grabbed on one window at a time. A press of one of them freezes the keyboard
/// until this connection allows it to go on. What another program has grabbed on that window before stays
/// with it, and so does everything if there is no such window: the keys then pass. Any thread; nothing here
/// waits for the server.
class KeyGrabs {
public:
    explicit KeyGrabs(xcb_connection_t* connection) : connection_(connection) {}

    /// When switched off, nothing is grabbed, at once and for as long as that lasts.
    void setEnabled(bool enabled);
    bool isEnabled() const;

    /// Grabs these on that window instead of what was grabbed before; on none if it is XCB_WINDOW_NONE.
    void grab(xcb_window_t window, KeyCombinations combinations);

    /// Sends what `send` requests while nothing is grabbed. The server takes it all in this order, and
    /// whoever waits for the grabs sees no gap. `send` must not wait for the server.
    void sendUngrabbed(const std::function<void()>& send);

private:
    void sendGrabs() const;
    void sendUngrabs() const;

    xcb_connection_t* const connection_;
    mutable std::mutex mutex_;
    bool enabled_ = false;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    KeyCombinations combinations_;
};

} // namespace tavel
