#include "Linux/X11/Keyboard/KeyGrabs.h"

#include "Linux/X11/X11Reply.h"

#include <utility>

namespace tavel {

namespace {

template <typename Action>
void forEach(const KeyCombinations& combinations, const Action& action) {
    for (const xcb_keycode_t key : combinations.keys) {
        for (const std::uint16_t modifiers : combinations.modifiers)
            action(key, modifiers);
    }
}

void ungrab(xcb_connection_t* connection, xcb_window_t window, const KeyCombinations& combinations) {
    forEach(combinations, [&](xcb_keycode_t key, std::uint16_t modifiers) {
        xcb_ungrab_key(connection, key, window, modifiers);
    });
}

} // namespace

bool canGrab(xcb_connection_t* connection, xcb_window_t window, const KeyCombinations& combinations) {
    std::vector<xcb_void_cookie_t> cookies;
    forEach(combinations, [&](xcb_keycode_t key, std::uint16_t modifiers) {
        cookies.push_back(xcb_grab_key_checked(connection, 0, window, modifiers, key, XCB_GRAB_MODE_ASYNC,
                                               XCB_GRAB_MODE_SYNC));
    });
    bool succeeded = true;
    for (const xcb_void_cookie_t cookie : cookies) {
        const X11Reply<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
        succeeded = succeeded && error == nullptr;
    }
    ungrab(connection, window, combinations);
    // A press during the test grab has frozen the keyboard; this replays it to its window.
    xcb_allow_events(connection, XCB_ALLOW_REPLAY_KEYBOARD, XCB_CURRENT_TIME);
    xcb_flush(connection);
    return succeeded && xcb_connection_has_error(connection) == 0;
}

void KeyGrabs::setEnabled(bool enabled) {
    const std::lock_guard lock(mutex_);
    enabled_ = enabled;
    if (enabled)
        return;
    sendUngrabs();
    window_ = XCB_WINDOW_NONE;
    sendGrabs();
    xcb_flush(connection_);
}

bool KeyGrabs::isEnabled() const {
    const std::lock_guard lock(mutex_);
    return enabled_;
}

void KeyGrabs::grab(xcb_window_t window, KeyCombinations combinations) {
    const std::lock_guard lock(mutex_);
    if (!enabled_)
        return;
    // Grabs that stay are requested again without a gap: another program may have released its own.
    if (window != window_ || combinations != combinations_)
        sendUngrabs();
    window_ = window;
    combinations_ = std::move(combinations);
    sendGrabs();
    xcb_flush(connection_);
}

void KeyGrabs::hold(xcb_window_t window, xcb_keycode_t key) {
    const std::lock_guard lock(mutex_);
    sendUngrabs();
    holdWindow_ = window;
    holdKey_ = key;
    sendGrabs();
}

void KeyGrabs::endHold() {
    const std::lock_guard lock(mutex_);
    sendUngrabs();
    holdWindow_ = XCB_WINDOW_NONE;
    sendGrabs();
    xcb_flush(connection_);
}

void KeyGrabs::sendUngrabbed(const std::function<void()>& send) {
    const std::lock_guard lock(mutex_);
    sendUngrabs();
    send();
    sendGrabs();
    xcb_flush(connection_);
}

/// Errors arrive as events, which the connection's reader ignores.
void KeyGrabs::sendGrabs() const {
    if (window_ != XCB_WINDOW_NONE)
        forEach(combinations_, [this](xcb_keycode_t key, std::uint16_t modifiers) {
            xcb_grab_key(connection_, 0, window_, modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_SYNC);
        });
    if (holdWindow_ != XCB_WINDOW_NONE)
        xcb_grab_key(connection_, 0, holdWindow_, XCB_MOD_MASK_ANY, holdKey_, XCB_GRAB_MODE_ASYNC,
                     XCB_GRAB_MODE_SYNC);
}

void KeyGrabs::sendUngrabs() const {
    if (holdWindow_ != XCB_WINDOW_NONE)
        xcb_ungrab_key(connection_, holdKey_, holdWindow_, XCB_MOD_MASK_ANY);
    if (window_ != XCB_WINDOW_NONE)
        ungrab(connection_, window_, combinations_);
}

} // namespace tavel
