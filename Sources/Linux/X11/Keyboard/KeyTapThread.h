#pragma once

#include "Linux/X11/ActiveWindow.h"
#include "Linux/X11/Keyboard/KeyDecision.h"
#include "Linux/X11/Keyboard/KeyGrabs.h"
#include "Linux/X11/Keyboard/KeyboardConnection.h"
#include "Platform/KeyboardTap.h"

#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace tavel {

/// The thread that keeps Control+V grabbed on the active window while that is a file manager's, and answers
/// the server for every press of it: within a tenth of a second, whatever other threads do, for the user's
/// keyboard waits. Sleeps when nothing happens, and ends when the server is lost.
///
/// After a swallowed press the keyboard goes on, but the key stays grabbed until it is released, and its
/// repeats and its release come here.
class KeyTapThread {
public:
    /// Called on this thread, which must not be made to wait.
    struct Listener {
        /// A press to decide upon. The decision may be given up before anybody has taken it on.
        std::function<void(const std::shared_ptr<KeyDecision>&, const KeyEvent&)> decide;

        /// A repeat or the release of a key that was swallowed.
        std::function<void(const KeyEvent&)> report;
    };

    /// Starts, switched off. A decision may take `decisionTime`. Throws std::system_error when the system has
    /// no thread or descriptor left.
    KeyTapThread(KeyboardConnection& connection, std::chrono::milliseconds decisionTime, Listener listener);

    /// Ends the thread. Nothing is called any more, and no key is kept back.
    ~KeyTapThread();
    KeyTapThread(const KeyTapThread&) = delete;
    KeyTapThread& operator=(const KeyTapThread&) = delete;

    /// Main thread. When switched on, the layout and the active window are looked at anew.
    void setEnabled(bool enabled);

    KeyGrabs& grabs() { return grabs_; }

    /// To be called by another thread after it has waited for the connection: the answer may have brought
    /// events along. Any thread.
    void wake() const;

private:
    /// A key that was swallowed and not released yet, and the window on which it was grabbed.
    struct HeldKey {
        xcb_window_t window = XCB_WINDOW_NONE;
        xcb_keycode_t code = 0;
        std::uint16_t modifiers = 0;
    };

    void start();
    void run() noexcept;
    void waitForNews() const;
    void handleEvents();
    void handle(const xcb_generic_event_t& event);
    void refresh();
    void letGo();
    void synchronize() const;

    void pressed(const xcb_key_press_event_t& key);
    void released(const xcb_key_release_event_t& key);
    KeyVerdict askFor(const xcb_key_press_event_t& key);
    void allow(std::uint8_t mode, const xcb_key_press_event_t& key);
    void hold(const xcb_key_press_event_t& key);
    void checkHold();
    void endHold(std::uint16_t modifiers);

    KeyboardConnection& connection_;
    const std::chrono::milliseconds decisionTime_;
    const Listener listener_;
    KeyGrabs grabs_;
    const int wakeUp_;
    std::atomic<bool> mustRefresh_ = false;

    std::mutex mutex_;
    bool stopping_ = false;
    std::shared_ptr<KeyDecision> pending_;

    // The thread's own:
    ActiveWindow activeWindow_;
    KeyCombinations combinations_;
    bool keyboardChanged_ = false;
    bool windowChanged_ = false;
    std::optional<HeldKey> held_;

    std::thread thread_;
};

} // namespace tavel
